#include "api/KorvoWebApiPrivate.h"

#include "api/KorvoWebApiWorker.h"
#include "handles/FailureLog.h"

namespace Korvo::Web {

KorvoWebApiPrivate::KorvoWebApiPrivate()
    : thread(new Shared::WorkerThread)
    , worker(new KorvoWebApiWorker)
{
    worker->moveToThread(thread.data());
    relaySignals();
    startWorker();
}

KorvoWebApiPrivate::~KorvoWebApiPrivate()
{
    if (!thread->isRunning()) {
        delete worker;
        return;
    }
    // The worker goes when its thread's loop has ended, never while it still stands in a wait of its own.
    connect(thread.data(), &QThread::finished, worker, &QObject::deleteLater);
    thread->quit();
    thread->wait();
}

void KorvoWebApiPrivate::relaySignals()
{
    using From = KorvoWebApiWorker;
    using To = KorvoWebApiPrivate;
    connect(worker, &From::uploadFileProgressChanged, this, &To::uploadFileProgressChanged);
    connect(worker, &From::currentUploadFilesChanged, this, &To::currentUploadFilesChanged);
    connect(worker, &From::uploadTotalProgressChanged, this, &To::uploadTotalProgressChanged);
    connect(worker, &From::filesToUploadTotalChanged, this, &To::filesToUploadTotalChanged);
    connect(worker, &From::completedUploadFilesChanged, this, &To::completedUploadFilesChanged);
    connect(worker, &From::uploadActiveChanged, this, &To::uploadActiveChanged);
    connect(worker, &From::anyUploadActiveChanged, this, &To::anyUploadActiveChanged);
    connect(worker, &From::uploadFinished, this, &To::uploadFinished);
    connect(worker, &From::downloadFileProgressChanged, this, &To::downloadFileProgressChanged);
    connect(worker, &From::currentDownloadFilesChanged, this, &To::currentDownloadFilesChanged);
    connect(worker, &From::downloadTotalProgressChanged, this, &To::downloadTotalProgressChanged);
    connect(worker, &From::filesToDownloadTotalChanged, this, &To::filesToDownloadTotalChanged);
    connect(worker, &From::completedDownloadFilesChanged, this, &To::completedDownloadFilesChanged);
    connect(worker, &From::downloadActiveChanged, this, &To::downloadActiveChanged);
    connect(worker, &From::anyDownloadActiveChanged, this, &To::anyDownloadActiveChanged);
    connect(worker, &From::downloadFinished, this, &To::downloadFinished);
    connect(worker, &From::currentUserChanged, this, &To::currentUserChanged);
    connect(worker, &From::loginResult, this, &To::loginResult);
    connect(worker, &From::loginStatusChanged, this, &To::loginStatusChanged);
    connect(worker, &From::projectInfoReceived, this, &To::projectInfoReceived);
    connect(worker, &From::uploadStatusInfoReceived, this, &To::uploadStatusInfoReceived);
    connect(worker, &From::errorOccurred, this, &To::errorOccurred);
    connect(worker, &From::queryRemoteProjectsError, this, &To::queryRemoteProjectsError);
    connect(worker, &From::singleFileDownloadLinkReceived, this, &To::singleFileDownloadLinkReceived);
    connect(worker, &From::allProjectsMediaDownloadLinkReceived, this, &To::allProjectsMediaDownloadLinkReceived);
    connect(worker, &From::loginExpired, this, &To::loginExpired);
    connect(worker, &From::tokenAuthenticationNeeded, this, &To::tokenAuthenticationNeeded);
}

void KorvoWebApiPrivate::startWorker()
{
    if (!thread->blockingStart()) {
        logFailure(LOG_CATEGORY, QStringLiteral("Failed to start WebApi worker thread."));
        // A blocking call to a thread that does not run would never return.
        if (!thread->isRunning())
            return;
    }
    QMetaObject::invokeMethod(worker, "initialize", Qt::BlockingQueuedConnection);
}

void KorvoWebApiPrivate::post(const std::function<void()> &call)
{
    QMetaObject::invokeMethod(worker, [target = worker, call] { target->passCall(call); });
}

void KorvoWebApiPrivate::login(const QString &user, const QString &password)
{
    post([target = worker, user, password] { target->login(user, password); });
}

void KorvoWebApiPrivate::cancelLogin()
{
    post([target = worker] { target->cancelLogin(); });
}

void KorvoWebApiPrivate::logout()
{
    post([target = worker] { target->logout(); });
}

void KorvoWebApiPrivate::resetPassword(const QString &user)
{
    post([target = worker, user] { target->resetPassword(user); });
}

// Copied, although the caller promises to keep the text: a host that forgets must not crash.
void KorvoWebApiPrivate::loginWithToken(const QString &tokenCode)
{
    post([target = worker, tokenCode] { target->loginWithToken(tokenCode); });
}

QString KorvoWebApiPrivate::currentUser() const
{
    return worker->userName();
}

QString KorvoWebApiPrivate::currentUserFirstName() const
{
    return worker->userFirstName();
}

QString KorvoWebApiPrivate::currentUserLastName() const
{
    return worker->userLastName();
}

QString KorvoWebApiPrivate::currentUserCompanyId() const
{
    return worker->userCompanyId();
}

KorvoWebApi::UserRole KorvoWebApiPrivate::currentUserRole() const
{
    return worker->userRole();
}

KorvoWebApi::LoginStatus KorvoWebApiPrivate::loginStatus() const
{
    return worker->loginStatus();
}

bool KorvoWebApiPrivate::anyUploadActive() const
{
    return worker->isAnyUploadActive();
}

bool KorvoWebApiPrivate::anyDownloadActive() const
{
    return worker->isAnyDownloadActive();
}

void KorvoWebApiPrivate::queryRemoteProjects()
{
    post([target = worker] { target->queryRemoteProjects(); });
}

void KorvoWebApiPrivate::queryUploadProjectStatus(const QList<QString> &projectIds)
{
    post([target = worker, projectIds] { target->queryUploadProjectStatus(projectIds); });
}

void KorvoWebApiPrivate::startSingleProjectFileDownload(const QUuid &projectId, const QString &fileName)
{
    post([target = worker, id = projectId.toString(QUuid::WithoutBraces), fileName] {
        target->startSingleProjectFileDownload(id, fileName);
    });
}

void KorvoWebApiPrivate::startAllProjectsMediaDownload(const QString &projectId)
{
    post([target = worker, projectId] { target->startAllProjectsMediaDownload(projectId); });
}

} // namespace Korvo::Web
