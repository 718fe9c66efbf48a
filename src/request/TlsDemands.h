#pragma once

#include <QtNetwork/QNetworkRequest>
#include <QtNetwork/QSslConfiguration>

namespace Korvo::Web {

inline bool allowsOldVersions(QSsl::SslProtocol protocol)
{
    switch (protocol) {
    case QSsl::TlsV1_2:
    case QSsl::TlsV1_2OrLater:
    case QSsl::TlsV1_3:
    case QSsl::TlsV1_3OrLater:
        return false;
    default:
        return true;
    }
}

/// Lets the request go over TLS 1.2 or later only. Qt itself still offers 1.0, and whether the system refuses it depends on
/// how its administrator has set it up. A host that demands more than this gets more.
inline void demandModernTls(QNetworkRequest &request)
{
    QSslConfiguration configuration = request.sslConfiguration();
    if (!allowsOldVersions(configuration.protocol()))
        return;
    configuration.setProtocol(QSsl::TlsV1_2OrLater);
    request.setSslConfiguration(configuration);
}

} // namespace Korvo::Web
