#include "api/KorvoWebApiWorker.h"

#include "request/WebCommunicator.h"
#include "transfer/AbstractDownload.h"
#include "transfer/ProjectUpload.h"

#include <QtCore/QMutexLocker>

namespace Korvo::Web {

KorvoWebApiWorker::KorvoWebApiWorker()
    : gate(this)
{
}

KorvoWebApiWorker::~KorvoWebApiWorker()
{
    // Jobs first: their requests are served by the communicator's manager.
    qDeleteAll(findChildren<ProjectUpload *>(QString(), Qt::FindDirectChildrenOnly));
    qDeleteAll(findChildren<AbstractDownload *>(QString(), Qt::FindDirectChildrenOnly));
}

void KorvoWebApiWorker::passCall(const CallGate::Call &call)
{
    gate.pass(call);
}

void KorvoWebApiWorker::initialize()
{
    if (communicator)
        return;
    communicator.reset(new WebCommunicator);
    connect(communicator.data(), &WebCommunicator::errorOccurred, this, &KorvoWebApiWorker::errorOccurred);
    connect(communicator.data(), &WebCommunicator::loginExpired, this, &KorvoWebApiWorker::loginExpired);
}

QString KorvoWebApiWorker::userName() const
{
    const QMutexLocker lock(&stateMutex);
    return currentUser;
}

QString KorvoWebApiWorker::userFirstName() const
{
    const QMutexLocker lock(&stateMutex);
    return firstName;
}

QString KorvoWebApiWorker::userLastName() const
{
    const QMutexLocker lock(&stateMutex);
    return lastName;
}

QString KorvoWebApiWorker::userCompanyId() const
{
    const QMutexLocker lock(&stateMutex);
    return companyId;
}

KorvoWebApi::UserRole KorvoWebApiWorker::userRole() const
{
    const QMutexLocker lock(&stateMutex);
    return role;
}

KorvoWebApi::LoginStatus KorvoWebApiWorker::loginStatus() const
{
    const QMutexLocker lock(&stateMutex);
    // There is no communicator when the worker thread could not be started.
    if (communicator && communicator->hasValidToken())
        return KorvoWebApi::LoginStatus::LoginStatusLoggedIn;
    return loggingIn ? KorvoWebApi::LoginStatus::LoginStatusLoggingIn : KorvoWebApi::LoginStatus::LoginStatusLoggedOut;
}

bool KorvoWebApiWorker::isAnyUploadActive() const
{
    const QMutexLocker lock(&stateMutex);
    return anyUploadActive;
}

bool KorvoWebApiWorker::isAnyDownloadActive() const
{
    const QMutexLocker lock(&stateMutex);
    return anyDownloadActive;
}

void KorvoWebApiWorker::setLoggingIn(bool isLoggingIn)
{
    const QMutexLocker lock(&stateMutex);
    if (loggingIn == isLoggingIn)
        return;
    loggingIn = isLoggingIn;
    Q_EMIT loginStatusChanged();
}

void KorvoWebApiWorker::setCurrentUser(const QString &user)
{
    const QMutexLocker lock(&stateMutex);
    if (currentUser == user)
        return;
    currentUser = user;
    Q_EMIT currentUserChanged(user);
}

void KorvoWebApiWorker::setAnyUploadActive(bool isActive)
{
    const QMutexLocker lock(&stateMutex);
    if (anyUploadActive == isActive)
        return;
    anyUploadActive = isActive;
    Q_EMIT anyUploadActiveChanged(isActive);
}

// Hosts poll anyDownloadActive; its change signal is never emitted.
void KorvoWebApiWorker::setAnyDownloadActive(bool isActive)
{
    const QMutexLocker lock(&stateMutex);
    anyDownloadActive = isActive;
}

} // namespace Korvo::Web
