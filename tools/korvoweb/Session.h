#pragma once

#include "Outcome.h"

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QObject>

namespace Korvo::Cli {

class Credentials;
class LibraryLog;
class Output;

/// Logs in, second factor included, and again when somebody needs it.
class Session : public QObject
{
    Q_OBJECT
public:
    Session(Web::KorvoWebApi &usedApi, Credentials &usedCredentials, Output &usedOutput, const LibraryLog &usedLog);

    void logIn();
    /// Logs in again; renewed() follows in any case. Nothing may be begun meanwhile: the library has no credentials then.
    void renew();
    /// A failure that comes now may belong to the renewal.
    bool isRenewing() const { return state == State::Renewing; }

Q_SIGNALS:
    void loggedIn();
    /// The first login did not come about.
    void failed(const Korvo::Cli::Outcome &outcome);
    /// The login ends in ten minutes.
    void expiring();
    void renewed();
    void signOfLife();

private:
    void handleError(Web::Error error);
    void handleSecondFactor();
    void handleResult(Web::KorvoWebApi::LoginResult result);
    void handleExpiry();
    void giveUp(const Outcome &outcome);
    void announce();
    Outcome refusal(Web::KorvoWebApi::LoginResult result) const;

    enum class State { LoggedOut, LoggingIn, LoggedIn, Renewing };

    Web::KorvoWebApi &api;
    Credentials &credentials;
    Output &output;
    const LibraryLog &log;
    State state = State::LoggedOut;
    Web::Error lastError = Web::Error::None;
    QString code; // the library reads it until the login has ended
};

} // namespace Korvo::Cli
