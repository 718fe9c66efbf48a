#include "NetworkSettings.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QSettings>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>

namespace Korvo::Desktop {

namespace {

struct NetworkTexts
{
    Q_DECLARE_TR_FUNCTIONS(NetworkTexts)
};

// Kept from the first call on: authorities that were added are taken back by going back to this.
const QSslConfiguration &systemConfiguration()
{
    static const QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    return configuration;
}

QString trustOnly(const QList<QSslCertificate> &added)
{
    QSslConfiguration configuration = systemConfiguration();
    configuration.addCaCertificates(added);
    QSslConfiguration::setDefaultConfiguration(configuration);
    return {};
}

// Errors in certificates are never passed over: an authority of one's own is trusted by name, or not at all.
QString trustAuthorities(const QString &path)
{
    if (path.isEmpty())
        return trustOnly({});
    QFile file(path);
    const QString shown = QDir::toNativeSeparators(path);
    if (!file.open(QIODevice::ReadOnly))
        return NetworkTexts::tr("The authority file %1 cannot be read: %2").arg(shown, file.errorString());
    const QList<QSslCertificate> authorities = QSslCertificate::fromDevice(&file, QSsl::Pem);
    if (authorities.isEmpty())
        return NetworkTexts::tr("The authority file %1 holds no certificate in PEM form.").arg(shown);
    return trustOnly(authorities);
}

} // namespace

NetworkSettings NetworkSettings::load()
{
    QSettings stored;
    stored.beginGroup(QStringLiteral("network"));
    NetworkSettings settings;
    settings.proxyKind = static_cast<ProxyKind>(
        qBound(0, stored.value(QStringLiteral("proxy")).toInt(), static_cast<int>(ProxyKind::Http)));
    settings.proxyHost = stored.value(QStringLiteral("host")).toString();
    settings.proxyPort = static_cast<quint16>(stored.value(QStringLiteral("port")).toUInt());
    settings.proxyUser = stored.value(QStringLiteral("user")).toString();
    settings.authorityFile = stored.value(QStringLiteral("authorityFile")).toString();
    return settings;
}

void NetworkSettings::save() const
{
    QSettings stored;
    stored.beginGroup(QStringLiteral("network"));
    stored.setValue(QStringLiteral("proxy"), static_cast<int>(proxyKind));
    stored.setValue(QStringLiteral("host"), proxyHost);
    stored.setValue(QStringLiteral("port"), proxyPort);
    stored.setValue(QStringLiteral("user"), proxyUser);
    stored.setValue(QStringLiteral("authorityFile"), authorityFile);
}

QString NetworkSettings::apply() const
{
    if (proxyKind == ProxyKind::Http && (proxyHost.isEmpty() || proxyPort == 0))
        return NetworkTexts::tr("A proxy needs a host and a port.");
    const QString complaint = trustAuthorities(authorityFile);
    if (!complaint.isEmpty())
        return complaint;
    if (proxyKind == ProxyKind::System) {
        QNetworkProxyFactory::setUseSystemConfiguration(true);
        return {};
    }
    QNetworkProxyFactory::setUseSystemConfiguration(false);
    QNetworkProxy::setApplicationProxy(
        proxyKind == ProxyKind::None
            ? QNetworkProxy(QNetworkProxy::NoProxy)
            : QNetworkProxy(QNetworkProxy::HttpProxy, proxyHost, proxyPort, proxyUser, proxyPassword));
    return {};
}

} // namespace Korvo::Desktop
