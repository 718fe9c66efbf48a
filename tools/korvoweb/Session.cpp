#include "Session.h"

#include "Credentials.h"
#include "Failure.h"
#include "Output.h"
#include "Text.h"

namespace Korvo::Cli {

using Web::KorvoWebApi;

Session::Session(KorvoWebApi &usedApi, Credentials &usedCredentials, Output &usedOutput, const LibraryLog &usedLog)
    : api(usedApi)
    , credentials(usedCredentials)
    , output(usedOutput)
    , log(usedLog)
{
    connect(&api, &KorvoWebApi::errorOccurred, this, &Session::handleError);
    connect(&api, &KorvoWebApi::tokenAuthenticationNeeded, this, &Session::handleSecondFactor);
    connect(&api, &KorvoWebApi::loginResult, this,
            [this](const QString &, KorvoWebApi::LoginResult result) { handleResult(result); });
    connect(&api, &KorvoWebApi::loginExpired, this, &Session::handleExpiry);
}

void Session::logIn()
{
    state = State::LoggingIn;
    api.login(credentials.user(), credentials.password());
}

void Session::handleError(Web::Error error)
{
    if (state == State::LoggingIn)
        lastError = error;
}

void Session::handleSecondFactor()
{
    Q_EMIT signOfLife();
    output.event(QStringLiteral("secondFactor"));
    const Answer answer = credentials.secondFactor();
    if (answer.isGiven()) {
        code = answer.text;
        api.loginWithToken(code);
    } else if (answer.state == Answer::State::Interrupted) {
        giveUp({ExitCode::Cancelled, QStringLiteral("cancelled; nothing was sent"), {}});
    } else {
        giveUp({ExitCode::SecondFactor,
                QStringLiteral("the account asks for a second factor; use a terminal, or --code-stdin with the code"), {}});
    }
    Q_EMIT signOfLife();
}

void Session::handleResult(KorvoWebApi::LoginResult result)
{
    if (result != KorvoWebApi::LoginResult::LoginResultSuccess) {
        giveUp(refusal(result));
        return;
    }
    const bool isFirst = state == State::LoggingIn;
    state = State::LoggedIn;
    announce();
    if (isFirst)
        Q_EMIT loggedIn();
    else
        Q_EMIT renewed();
}

void Session::announce()
{
    output.event(QStringLiteral("loggedIn"), {{QStringLiteral("user"), api.currentUser()}});
}

void Session::handleExpiry()
{
    if (state != State::LoggedIn)
        return;
    output.event(QStringLiteral("loginExpired"));
    Q_EMIT expiring();
}

void Session::renew()
{
    state = State::Renewing;
    api.login(credentials.user(), credentials.password());
}

// Whoever wanted the renewal goes on without it: the old login still lives for a while.
void Session::giveUp(const Outcome &outcome)
{
    if (state == State::Renewing) {
        state = State::LoggedOut;
        output.warn(QStringLiteral("the login could not be renewed: ") + outcome.message);
        Q_EMIT renewed();
        return;
    }
    state = State::LoggedOut;
    Q_EMIT failed(outcome);
}

Outcome Session::refusal(KorvoWebApi::LoginResult result) const
{
    switch (result) {
    case KorvoWebApi::LoginResult::LoginResultFalseCredentials:
        return {ExitCode::Credentials,
                code.isEmpty() ? QStringLiteral("the platform refuses user or password")
                               : QStringLiteral("the platform refuses user, password or code"),
                {}};
    case KorvoWebApi::LoginResult::LoginResultCancelled:
        return {ExitCode::Cancelled, QStringLiteral("cancelled; nothing was sent"), {}};
    case KorvoWebApi::LoginResult::LoginResultTimeOut:
    case KorvoWebApi::LoginResult::LoginResultSuccess:
        break;
    }
    return failureOf(lastError == Web::Error::None ? Web::Error::TimeOut : lastError, log);
}

} // namespace Korvo::Cli
