#include "Host.h"

#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtGui/QGuiApplication>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QSslConfiguration>
#include <QtQml/QQmlApplicationEngine>

using namespace Korvo;

int main(int argc, char *argv[])
{
    QGuiApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Korvo Quick"));
    QNetworkProxyFactory::setUseSystemConfiguration(true);
    // Qt trusts the system's authorities only: this adds one, such as the local platform's.
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.addCaCertificates(qEnvironmentVariable("SSL_CERT_FILE"));
    QSslConfiguration::setDefaultConfiguration(tls);

    Web::KorvoWebLibrary::initialize();
    Qml::Host::registerTypes();
    Qml::Host host;
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{QStringLiteral("host"), QVariant::fromValue(&host)}});
    engine.load(QUrl(QStringLiteral("qrc:/Main.qml")));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
