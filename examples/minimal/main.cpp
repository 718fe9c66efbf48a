// Logs in, lists the projects, uploads a folder: minimal USER PASSWORD FOLDER
#include <NQKorvoWeb/KorvoWebApi.h>
#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDebug>
#include <QtCore/QDir>
#include <QtCore/QTextStream>
#include <QtCore/QUuid>
#include <QtNetwork/QSslConfiguration>

using namespace Korvo::Web;

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        qCritical("usage: minimal USER PASSWORD FOLDER");
        return 2;
    }

    // Qt trusts the system's authorities only: this adds one, such as the local platform's.
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.addCaCertificates(qEnvironmentVariable("SSL_CERT_FILE"));
    QSslConfiguration::setDefaultConfiguration(tls);
    KorvoWebLibrary::initialize();
    KorvoWebApi api;
    QString code;
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    QObject::connect(&api, &KorvoWebApi::tokenAuthenticationNeeded, [&] {
        qInfo("Code of the second factor:");
        code = QTextStream(stdin).readLine();
        api.loginWithToken(code);
    });
    QObject::connect(&api, &KorvoWebApi::loginResult, [&](const QString &, KorvoWebApi::LoginResult result) {
        if (result != KorvoWebApi::LoginResult::LoginResultSuccess)
            return QCoreApplication::exit(1);
        api.queryRemoteProjects();
    });
    QObject::connect(&api, &KorvoWebApi::projectInfoReceived, [&](const QList<ProjectInfo> &projects) {
        for (const ProjectInfo &project : projects)
            qInfo().noquote() << project.projectName() << project.projectId();
        const QString folder = arguments.at(3);
        api.uploadProject(id, QDir(folder).dirName(), folder, QDateTime::currentDateTimeUtc());
    });
    QObject::connect(&api, &KorvoWebApi::uploadTotalProgressChanged,
                     [](unsigned int, int percent) { qInfo() << percent << "%"; });
    // The notice of the finished upload is on its way: stay until the platform answers.
    QObject::connect(&api, &KorvoWebApi::uploadFinished, [&] { api.queryUploadProjectStatus({id}); });
    QObject::connect(&api, &KorvoWebApi::uploadStatusInfoReceived, [] { QCoreApplication::quit(); });
    const auto giveUp = [](Error error) {
        qWarning() << "failed with code" << static_cast<int>(error);
        QCoreApplication::exit(1);
    };
    QObject::connect(&api, &KorvoWebApi::errorOccurred, giveUp);
    QObject::connect(&api, &KorvoWebApi::queryRemoteProjectsError, giveUp);
    api.login(arguments.at(1), arguments.at(2));
    return application.exec();
}
