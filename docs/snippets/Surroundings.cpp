#include "Host.h"

#include <NQLogging/CLogger.h>

#include <QtCore/QFile>
#include <QtCore/QMutex>
#include <QtCore/QTextStream>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>

#include <chrono>
#include <memory>
#include <thread>

using namespace std::chrono_literals;

namespace Korvo::Web::Snippets {

void Host::reportErrors()
{
    connect(&api, &KorvoWebApi::errorOccurred, this, [this](Error error) {
        switch (error) {
        case Error::None:
            return showError(tr("There is no such file on the platform."));
        case Error::Cancelled:
            return; // the user asked for it
        case Error::TimeOut:
        case Error::Network:
        case Error::UnreadableLogin:
            return showError(tr("The platform cannot be reached. Please check the network and the proxy."));
        case Error::Server:
            return showError(tr("The platform has a failure of its own. Please try again later."));
        case Error::AuthenticationRequired:
            return showLogin(tr("Please log in again."));
        case Error::FileOpen:
            return showError(tr("A file or folder cannot be read."));
        case Error::DownloadFolder:
            return showError(tr("The download folder cannot be used."));
        case Error::FileWrite:
            return showError(tr("A file cannot be written. Is the disk full?"));
        case Error::CreationDate:
        case Error::InvalidParameter:
            return showError(tr("Something is missing. The log tells what."));
        }
    });
}

void Host::useProxy()
{
    // As the system says, scripts and exceptions included ...
    QNetworkProxyFactory::setUseSystemConfiguration(true);

    // ... or as the user says. With a password, if the proxy asks for one: the library passes no question on.
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("proxy.example"), 3128,
                                                     QStringLiteral("user"), QStringLiteral("password")));
}

bool Host::trustAuthority(const QString &file)
{
    QFile pem(file);
    if (!pem.open(QIODevice::ReadOnly))
        return false;
    const QList<QSslCertificate> authorities = QSslCertificate::fromDevice(&pem, QSsl::Pem);
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(authorities); // besides those of the system
    QSslConfiguration::setDefaultConfiguration(configuration);
    return !authorities.isEmpty();
}

void Host::keepLog()
{
    using Logging::CLogger;
    using Logging::LogLevel;
    // Runs on the thread that logs: as a rule the library's own.
    const auto mutex = std::make_shared<QMutex>();
    CLogger::setSink([mutex](LogLevel level, const QString &category, const QString &message, const QList<QVariant> &) {
        const QMutexLocker lock(mutex.get());
        QFile log(QStringLiteral("korvoweb.log"));
        if (log.open(QIODevice::Append | QIODevice::Text))
            QTextStream(&log) << static_cast<int>(level) << ' ' << category << ": " << message << '\n';
    });
}

void Host::useFromAnotherThread()
{
    std::thread([this] {
        // Getters and queries may be called from everywhere, starts of transfers from the facade's thread only.
        if (api.loginStatus() == KorvoWebApi::LoginStatus::LoginStatusLoggedIn)
            api.queryRemoteProjects();
    }).join();
}

void Host::shutDown()
{
    if (api.anyUploadActive())
        api.abortUpload(currentUpload);
    // The abort is sent before this question: when its answer is there, the abort has left. No server may keep the user
    // waiting for ever, though.
    connect(&api, &KorvoWebApi::uploadStatusInfoReceived, this, &QObject::deleteLater);
    QTimer::singleShot(5s, this, &QObject::deleteLater);
    api.queryUploadProjectStatus({projectId});
}

} // namespace Korvo::Web::Snippets
