#include "api/KorvoWebApiPrivate.h"

#include "api/KorvoWebApiWorker.h"
#include "handles/FailureLog.h"

namespace Korvo::Web {

KorvoWebApiPrivate::KorvoWebApiPrivate()
    : worker(new KorvoWebApiWorker)
    , mailbox(worker, this)
    , thread(new Shared::WorkerThread)
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

// Emitted by the worker on its own thread, and again by this object on the host's.
template <class... Values>
void KorvoWebApiPrivate::relay(void (KorvoWebApiWorker::*from)(Values...), void (KorvoWebApiPrivate::*to)(Values...))
{
    const auto relayed = [this, to](Values... values) { mailbox.post([=] { (this->*to)(values...); }); };
    connect(worker, from, this, relayed, Qt::DirectConnection);
}

void KorvoWebApiPrivate::relaySignals()
{
    using From = KorvoWebApiWorker;
    using To = KorvoWebApiPrivate;
    relay(&From::uploadFileProgressChanged, &To::uploadFileProgressChanged);
    relay(&From::currentUploadFilesChanged, &To::currentUploadFilesChanged);
    relay(&From::uploadTotalProgressChanged, &To::uploadTotalProgressChanged);
    relay(&From::filesToUploadTotalChanged, &To::filesToUploadTotalChanged);
    relay(&From::completedUploadFilesChanged, &To::completedUploadFilesChanged);
    relay(&From::uploadActiveChanged, &To::uploadActiveChanged);
    relay(&From::anyUploadActiveChanged, &To::anyUploadActiveChanged);
    relay(&From::uploadFinished, &To::uploadFinished);
    relay(&From::downloadFileProgressChanged, &To::downloadFileProgressChanged);
    relay(&From::currentDownloadFilesChanged, &To::currentDownloadFilesChanged);
    relay(&From::downloadTotalProgressChanged, &To::downloadTotalProgressChanged);
    relay(&From::filesToDownloadTotalChanged, &To::filesToDownloadTotalChanged);
    relay(&From::completedDownloadFilesChanged, &To::completedDownloadFilesChanged);
    relay(&From::downloadActiveChanged, &To::downloadActiveChanged);
    relay(&From::anyDownloadActiveChanged, &To::anyDownloadActiveChanged);
    relay(&From::downloadFinished, &To::downloadFinished);
    relay(&From::currentUserChanged, &To::currentUserChanged);
    relay(&From::loginResult, &To::loginResult);
    relay(&From::loginStatusChanged, &To::loginStatusChanged);
    relay(&From::projectInfoReceived, &To::projectInfoReceived);
    relay(&From::uploadStatusInfoReceived, &To::uploadStatusInfoReceived);
    relay(&From::errorOccurred, &To::errorOccurred);
    relay(&From::queryRemoteProjectsError, &To::queryRemoteProjectsError);
    relay(&From::singleFileDownloadLinkReceived, &To::singleFileDownloadLinkReceived);
    relay(&From::allProjectsMediaDownloadLinkReceived, &To::allProjectsMediaDownloadLinkReceived);
    relay(&From::loginExpired, &To::loginExpired);
    relay(&From::tokenAuthenticationNeeded, &To::tokenAuthenticationNeeded);
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
