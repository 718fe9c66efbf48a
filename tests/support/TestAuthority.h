#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>

namespace Korvo::Web::TestSupport {

/// A certificate authority that lasts for one test run, and the one certificate that it has issued. All texts are PEM.
struct TestAuthority
{
    /// Made with a fresh key, for all of @p hostNames together.
    static TestAuthority forHosts(const QList<QByteArray> &hostNames);

    QByteArray authorityCertificate;
    QByteArray hostCertificate;
    QByteArray hostKey;
};

} // namespace Korvo::Web::TestSupport
