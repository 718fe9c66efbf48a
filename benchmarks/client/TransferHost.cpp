#include "client/TransferHost.h"

#include <QtCore/QDateTime>

#include <stdexcept>

namespace Korvo::Bench {

using Web::KorvoWebApi;

namespace {

const QString USER = QStringLiteral("inspector@korvo.example");
const QString PASSWORD = QStringLiteral("Camera");
const QString UPLOAD_PROJECT = QStringLiteral("bench-project");
const QString DOWNLOAD_PROJECT = QStringLiteral("bench");
const QDateTime CREATION_DATE(QDate(2026, 3, 3), QTime(14, 5, 9), Qt::UTC);

} // namespace

TransferHost::TransferHost()
{
    connect(&api, &KorvoWebApi::errorOccurred, this,
            [this](Web::Error error) { fail(QStringLiteral("the library reports error %1").arg(int(error))); });
    connect(&api, &KorvoWebApi::loginResult, this, [this](const QString &, KorvoWebApi::LoginResult result) {
        if (result == KorvoWebApi::LoginResult::LoginResultSuccess)
            loop.quit();
        else
            fail(QStringLiteral("not logged in"));
    });
    connect(&api, &KorvoWebApi::uploadFinished, &loop, &QEventLoop::quit);
    connect(&api, &KorvoWebApi::uploadStatusInfoReceived, &loop, &QEventLoop::quit);
    connect(&api, &KorvoWebApi::filesToUploadTotalChanged, this,
            [this](unsigned int, int total) { filesTotal = total; });
    connect(&api, &KorvoWebApi::filesToDownloadTotalChanged, this,
            [this](unsigned int, int total) { filesTotal = total; });
    connect(&api, &KorvoWebApi::completedDownloadFilesChanged, this,
            [this](unsigned int, int completed) { noteCompleted(completed); });
    const auto noteFiles = [this](unsigned int, const QStringList &files) { noteInFlight(files.size()); };
    connect(&api, &KorvoWebApi::currentUploadFilesChanged, this, noteFiles);
    connect(&api, &KorvoWebApi::currentDownloadFilesChanged, this, noteFiles);
}

void TransferHost::run()
{
    if (failure.isEmpty())
        loop.exec();
    if (!failure.isEmpty())
        throw std::runtime_error(failure.toStdString());
}

void TransferHost::fail(const QString &reason)
{
    failure = reason;
    loop.quit();
}

void TransferHost::noteInFlight(int count)
{
    if (count <= mostInFlight)
        return;
    mostInFlight = count;
    Q_EMIT underWay(count);
}

void TransferHost::noteCompleted(int completed)
{
    if (filesTotal > 0 && completed == filesTotal)
        loop.quit();
}

void TransferHost::logIn()
{
    api.login(USER, PASSWORD);
    run();
}

void TransferHost::upload(const QString &folder, int inFlight)
{
    api.uploadProject(UPLOAD_PROJECT, QStringLiteral("bench"), folder, CREATION_DATE, inFlight);
    run();
}

void TransferHost::settle()
{
    api.queryUploadProjectStatus({UPLOAD_PROJECT});
    run();
}

void TransferHost::download(const QString &workload, const QString &folder, int inFlight)
{
    api.downloadProject(DOWNLOAD_PROJECT, workload, folder, inFlight);
    run();
}

} // namespace Korvo::Bench
