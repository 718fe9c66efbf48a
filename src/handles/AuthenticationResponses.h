#pragma once

#include "handles/Response.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

namespace Korvo::Web {

struct LoginValues
{
    bool loggedIn = false;
    QString accessToken;
    qint32 expiresInSeconds = 0;
    QString userName;
    QString userFirstName;
    QString userLastName;
    QString userCompanyId;
    QString userRoles;
    QString persistent;
    QString issued;
    QDateTime expires;
};

/// Answer to a login.
///
/// Refused credentials are a success with Error::AuthenticationRequired: the exchange went well, the user did not get in.
class LoginResponse : public ResponseOf<LoginValues>
{
public:
    bool loggedIn() const { return values().loggedIn; }
    QString accessToken() const { return values().accessToken; }
    /// Lifetime of the token in seconds.
    qint32 expiresIn() const { return values().expiresInSeconds; }
    QString userName() const { return values().userName; }
    QString userFirstName() const { return values().userFirstName; }
    QString userLastName() const { return values().userLastName; }
    QString userCompanyId() const { return values().userCompanyId; }
    /// In the server's words.
    QString userRoles() const { return values().userRoles; }
    QString persistent() const { return values().persistent; }
    QString issued() const { return values().issued; }
    QDateTime expires() const { return values().expires; }

    /// The outcome must have been set before: a cancelled login is not read, and parsing may change the outcome.
    void parse(const QString &text);

private:
    void markUnreadable();
    void markWrongCredentials();
};

struct Check2StepAuthenticationValues
{
    bool authenticated = false;
};

/// Answer to the question whether the account asks for a second factor.
class Check2StepAuthenticationResponse : public ResponseOf<Check2StepAuthenticationValues>
{
public:
    /// True when a second factor is required.
    bool authenticated() const { return values().authenticated; }

    void parse(const QString &text);
};

struct ClientCredentialsValues
{
    QString url;
    QString clientId;
    QString secretKey;
    QString currentDate;
};

/// What signed requests to the storage service need.
class ClientCredentialsResponse : public ResponseOf<ClientCredentialsValues>
{
public:
    QString url() const { return values().url; }
    QString clientId() const { return values().clientId; }
    QString secretKey() const { return values().secretKey; }
    /// As the server wrote it.
    QString currentDate() const { return values().currentDate; }

    void parse(const QString &text);
};

/// Answer of which only the outcome matters.
class StatusResponse : public Response
{
public:
    void parse(const QString &) { }
};

/// The storage service's clock as its status answer tells it; invalid when the answer tells none.
QDateTime serverDateFrom(const QString &reply);

} // namespace Korvo::Web

Q_DECLARE_METATYPE(Korvo::Web::LoginResponse)
Q_DECLARE_METATYPE(Korvo::Web::Check2StepAuthenticationResponse)
Q_DECLARE_METATYPE(Korvo::Web::ClientCredentialsResponse)
Q_DECLARE_METATYPE(Korvo::Web::StatusResponse)
