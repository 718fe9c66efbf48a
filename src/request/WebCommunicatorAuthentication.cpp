#include "request/WebCommunicator.h"

#include "handles/AuthenticationHandles.h"
#include "handles/NetworkOutcome.h"
#include "request/RequestBodies.h"

#include <NQKorvoWeb/Constants.h>
#include <NQKorvoWeb/NetworkRequestBuilder.h>

#include <QtCore/QTimerEvent>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkCookieJar>
#include <QtNetwork/QNetworkReply>

#include <chrono>
#include <limits>

using namespace std::chrono_literals;

namespace Korvo::Web {

namespace {

constexpr std::chrono::milliseconds CLOCK_WAIT = 3s;
constexpr std::chrono::milliseconds CREDENTIALS_WAIT = 10s;
// A token counts as expired this long before it does, so that no request is under way when it ends.
constexpr std::chrono::seconds TOKEN_MARGIN = 10min;

bool isWebAddress(const QString &address)
{
    const QUrl url(address);
    return url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http");
}

bool isComplete(const ClientCredentialsResponse &credentials)
{
    return credentials.isSuccess() && isWebAddress(credentials.url()) && !credentials.clientId().isEmpty()
           && !credentials.secretKey().isEmpty();
}

} // namespace

Check2StepAuthenticationRequestHandle *WebCommunicator::checkTwoStepAuthentication(const QString &user)
{
    const QNetworkRequest request = builder->initializeRequest(true, Constants::Route::USER_2STEP_AUTH)
                                        .usingMethod(GET)
                                        .withParam(QStringLiteral("username"), user);
    return follow<Check2StepAuthenticationRequestHandle>(get(request));
}

LoginRequestHandle *WebCommunicator::login(const QString &user, const QString &password)
{
    return follow<LoginRequestHandle>(put(formRequest(), RequestBodies::login(user, password)));
}

LoginRequestHandle *WebCommunicator::loginWithCode(const QString &user, const QString &password, const QString &code)
{
    return follow<LoginRequestHandle>(put(formRequest(), RequestBodies::loginWithCode(user, password, code)));
}

void WebCommunicator::readServerClock()
{
    builder->initializeServiceRequest(Constants::Route::STATUS).usingMethod(GET);
    NetworkRequestBuilder requestBuilder(*builder);
    auto *const handle = follow<NoticeRequestHandle>(get(requestBuilder));
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    const QString answer = handle->waitForReply(int(CLOCK_WAIT.count()), &error);
    handle->deleteLater();
    if (error == QNetworkReply::NoError)
        applyServerDate(serverDateFrom(answer));
}

void WebCommunicator::applyServerDate(const QDateTime &serverDate)
{
    if (serverDate.isValid())
        builder->setServerTimeOffset(QDateTime::currentDateTimeUtc().secsTo(serverDate));
}

void WebCommunicator::fetchClientCredentials()
{
    auto *const handle
        = follow<ClientCredentialsRequestHandle>(get(webRequest(Constants::Route::PROJECT_COMPANY_KORVO_SERVICE, GET)));
    const ClientCredentialsResponse credentials = handle->waitForResponse(int(CREDENTIALS_WAIT.count()));
    handle->deleteLater();
    if (!isComplete(credentials))
        return;
    builder->setClientData(credentials.clientId(), credentials.secretKey());
    builder->setKorvoServiceUrl(credentials.url());
}

void WebCommunicator::storeLogin(const LoginResponse &response)
{
    loginData.reset(new LoginResponse(response));
    loggedIn = true;
    builder->setBearerToken(response.accessToken());
    armTokenTimer();
}

void WebCommunicator::logout()
{
    loggedIn = false;
    loginData.reset();
    builder->clearLoginData();
    tokenTimer.stop();
    manager->setCookieJar(new QNetworkCookieJar); // the manager takes it over
}

bool WebCommunicator::hasValidToken() const
{
    return loggedIn && millisecondsToExpiry() > 0;
}

QString WebCommunicator::companyId() const
{
    return loginData ? loginData->userCompanyId() : QString();
}

qint64 WebCommunicator::millisecondsToExpiry() const
{
    if (!loginData->expires().isValid())
        return 0;
    const QDateTime margin = QDateTime::currentDateTimeUtc().addSecs(TOKEN_MARGIN.count());
    return margin.msecsTo(loginData->expires());
}

void WebCommunicator::armTokenTimer()
{
    tokenTimer.stop();
    const qint64 interval = millisecondsToExpiry();
    // A token may outlast the longest interval that a timer takes; then the timer is armed again when it fires.
    if (interval > 0)
        tokenTimer.start(int(qMin(interval, qint64(std::numeric_limits<int>::max()))), this);
}

void WebCommunicator::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != tokenTimer.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    armTokenTimer();
    if (!tokenTimer.isActive())
        Q_EMIT loginExpired();
}

void WebCommunicator::resetPassword(const QString &user)
{
    const QNetworkRequest request
        = builder->initializeWebRequest(Constants::Route::ACCOUNT_RESET_PASSWORD).usingMethod(POST);
    QNetworkReply *const reply = post(request, RequestBodies::resetPassword(user));
    auto *const handle = follow<ResetPasswordRequestHandle>(reply);
    // The handle tells nobody how it ended; the host shall hear of a failure nevertheless.
    connect(reply, &QNetworkReply::finished, this, [this, handle] { raise(errorFor(handle->replyError())); });
}

} // namespace Korvo::Web
