#include "Network.h"

#include "CommandLine.h"
#include "Credentials.h"
#include "Text.h"

#include <QtCore/QFile>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>

namespace Korvo::Cli {

namespace {

void setProxy(const CommonOptions &options)
{
    const QString user = qEnvironmentVariable("KORVOWEB_PROXY_USER");
    const QString password = takeSecretFromEnvironment("KORVOWEB_PROXY_PASSWORD");
    if (options.proxyPort == 0) {
        QNetworkProxyFactory::setUseSystemConfiguration(true);
        return;
    }
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, options.proxyHost, options.proxyPort, user, password));
}

Outcome refuse(const QString &file, const QString &reason)
{
    return {ExitCode::LocalFile, QStringLiteral("--ca: ") + shownName(file) + QStringLiteral(": ") + reason, {}};
}

// Added to the system's: those stay trusted. Errors in certificates are never passed over.
Outcome addAuthorities(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return refuse(path, file.errorString());
    const QList<QSslCertificate> authorities = QSslCertificate::fromDevice(&file, QSsl::Pem);
    if (authorities.isEmpty())
        return refuse(path, QStringLiteral("holds no certificate in PEM form"));
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(authorities);
    QSslConfiguration::setDefaultConfiguration(configuration);
    return {};
}

} // namespace

Outcome setUpNetwork(const CommonOptions &options)
{
    setProxy(options);
    return options.authorityFile.isEmpty() ? Outcome() : addAuthorities(options.authorityFile);
}

} // namespace Korvo::Cli
