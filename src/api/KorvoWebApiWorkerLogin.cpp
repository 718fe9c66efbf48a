#include "api/KorvoWebApiWorker.h"

#include "api/LoginOutcome.h"
#include "handles/AuthenticationHandles.h"
#include "request/WebCommunicator.h"

#include <QtCore/QMutexLocker>

namespace Korvo::Web {

void KorvoWebApiWorker::login(QString user, QString password)
{
    endPendingLogin();
    loginUser = user;
    loginPassword = password;
    setLoggingIn(true);
    auto *const handle = communicator->checkTwoStepAuthentication(user);
    pendingCheck = handle;
    connect(handle, &Check2StepAuthenticationRequestHandle::requestFinished, this,
            &KorvoWebApiWorker::handleCheck2StepsAuthenticationResponse);
    connect(handle, &RequestHandle::errorOccurred, this, &KorvoWebApiWorker::errorOccurred);
}

void KorvoWebApiWorker::loginWithToken(QString tokenCode)
{
    endPendingLogin();
    setLoggingIn(true);
    clearAccessToken();
    watchLogin(communicator->loginWithCode(loginUser, loginPassword, tokenCode));
}

void KorvoWebApiWorker::cancelLogin()
{
    if (!pendingLogin)
        return;
    const QPointer<RequestHandle> cancelled = pendingLogin;
    pendingLogin = nullptr;
    cancelled->abort();
}

// Of two logins the later one counts. An answer about the second factor that is still to come belongs to another user.
void KorvoWebApiWorker::endPendingLogin()
{
    if (pendingCheck) {
        pendingCheck->disconnect(this);
        pendingCheck->deleteLater();
        pendingCheck = nullptr;
    }
    cancelLogin();
}

void KorvoWebApiWorker::handleCheck2StepsAuthenticationResponse(Check2StepAuthenticationResponse response)
{
    if (sender())
        sender()->deleteLater();
    pendingCheck = nullptr;
    // A check that failed asks for nothing: the login itself will tell what is wrong.
    if (response.isSuccess() && response.authenticated()) {
        setLoggingIn(false);
        Q_EMIT tokenAuthenticationNeeded();
        return;
    }
    clearAccessToken();
    watchLogin(communicator->login(loginUser, loginPassword));
}

void KorvoWebApiWorker::watchLogin(RequestHandle *handle)
{
    pendingLogin = handle;
    connect(static_cast<LoginRequestHandle *>(handle), &LoginRequestHandle::requestFinished, this,
            &KorvoWebApiWorker::handleLoginResponse);
    connect(handle, &RequestHandle::errorOccurred, this, &KorvoWebApiWorker::errorOccurred);
}

void KorvoWebApiWorker::handleLoginResponse(LoginResponse response)
{
    const QPointer<QObject> handle(sender());
    const CallGate::Hold hold(gate);
    const KorvoWebApi::LoginResult result = loginResultFor(response);
    if (result == KorvoWebApi::LoginResult::LoginResultSuccess)
        acceptLogin(response);
    else
        setCurrentUser(QString());
    if (pendingLogin.data() == handle.data())
        pendingLogin = nullptr;
    setLoggingIn(false);
    if (handle)
        handle->deleteLater();
    const Error error = unexplainedError(response);
    if (error != Error::None)
        Q_EMIT errorOccurred(error);
    Q_EMIT loginResult(response.userName(), result);
}

// The clock comes first: what is signed later carries its date.
void KorvoWebApiWorker::acceptLogin(const LoginResponse &response)
{
    communicator->readServerClock();
    {
        const QMutexLocker lock(&stateMutex);
        communicator->storeLogin(response);
    }
    setCurrentUser(response.userName());
    {
        const QMutexLocker lock(&stateMutex);
        companyId = response.userCompanyId();
        firstName = response.userFirstName();
        lastName = response.userLastName();
        role = userRoleFor(response.userRoles());
    }
    communicator->fetchClientCredentials();
}

void KorvoWebApiWorker::clearAccessToken()
{
    const QMutexLocker lock(&stateMutex);
    communicator->logout();
}

void KorvoWebApiWorker::logout()
{
    const QMutexLocker lock(&stateMutex);
    communicator->logout();
    Q_EMIT loginStatusChanged();
}

void KorvoWebApiWorker::resetPassword(QString user)
{
    communicator->resetPassword(user);
}

} // namespace Korvo::Web
