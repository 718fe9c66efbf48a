#include "handles/AuthenticationResponses.h"

#include "handles/FailureLog.h"
#include "handles/SecretText.h"
#include "handles/XmlReply.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonParseError>

#include <utility>

namespace Korvo::Web {

namespace {

void logUnreadable(const QJsonParseError &parseError, const QString &text)
{
    // Log filters go by this category, although the class bears another name. Put together piece by piece: the reply
    // may hold anything, place markers included, and what it may hold of secrets has to be found without a parser.
    logFailure(QStringLiteral("Korvo::Web::CLoginResponse"),
               QLatin1String("Error during parsing Login response. \nOffset to error location in data: ")
                   + QString::number(parseError.offset) + QLatin1String("\nMessage: \n") + parseError.errorString()
                   + QLatin1String("\nJson data: \n") + withoutSecrets(text));
}

struct LoginTextField
{
    QLatin1String key;
    QString LoginValues::*value;
};

const LoginTextField LOGIN_TEXT_FIELDS[] = {
    {QLatin1String("access_token"), &LoginValues::accessToken},
    {QLatin1String("userName"), &LoginValues::userName},
    {QLatin1String("userFirstName"), &LoginValues::userFirstName},
    {QLatin1String("userLastName"), &LoginValues::userLastName},
    {QLatin1String("userCompanyId"), &LoginValues::userCompanyId},
    {QLatin1String("userRoles"), &LoginValues::userRoles},
    {QLatin1String(".persistent"), &LoginValues::persistent},
    {QLatin1String(".issued"), &LoginValues::issued},
};

LoginValues loginFrom(const QJsonObject &answer)
{
    LoginValues login;
    login.loggedIn = true;
    for (const LoginTextField &field : LOGIN_TEXT_FIELDS) {
        login.*field.value = answer.value(field.key).toString();
    }
    login.expiresInSeconds = answer.value(QLatin1String("expires_in")).toInt();
    login.expires = QDateTime::fromString(answer.value(QLatin1String(".expires")).toString(), Qt::RFC2822Date);
    return login;
}

struct CredentialsField
{
    QLatin1String element;
    QString ClientCredentialsValues::*value;
};

const CredentialsField CREDENTIALS_FIELDS[] = {
    {QLatin1String("Url"), &ClientCredentialsValues::url},
    {QLatin1String("ClientId"), &ClientCredentialsValues::clientId},
    {QLatin1String("SecretKey"), &ClientCredentialsValues::secretKey},
    {QLatin1String("CurrentDate"), &ClientCredentialsValues::currentDate},
};

} // namespace

void LoginResponse::parse(const QString &text)
{
    setValues({});
    if (isCancelled()) {
        return;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        logUnreadable(parseError, text);
        markUnreadable();
        return;
    }
    const QJsonObject answer = document.object();
    const auto refusal = answer.constFind(QLatin1String("error"));
    if (refusal == answer.constEnd()) {
        setValues(loginFrom(answer));
    } else if (refusal->toString() == QLatin1String("invalid_grant")) {
        markWrongCredentials();
    }
}

void LoginResponse::markUnreadable()
{
    ResponseData &outcome = changeableData();
    outcome.success = false;
    outcome.error = Error::UnreadableLogin;
}

void LoginResponse::markWrongCredentials()
{
    // The server refuses with status 400. To the caller that is an exchange that went well, unlike a transport failure.
    ResponseData &outcome = changeableData();
    outcome.success = true;
    outcome.error = Error::AuthenticationRequired;
}

void Check2StepAuthenticationResponse::parse(const QString &text)
{
    // The whole text counts: quotes or blanks around the word make it another answer.
    setValues({text.toLower() == QLatin1String("true")});
}

void ClientCredentialsResponse::parse(const QString &text)
{
    ClientCredentialsValues credentials;
    forEachElement(text, [&](const QStringRef &name, QXmlStreamReader &reader) {
        for (const CredentialsField &field : CREDENTIALS_FIELDS) {
            if (name == field.element) {
                credentials.*field.value = reader.readElementText();
                return;
            }
        }
    });
    setValues(std::move(credentials));
}

QDateTime serverDateFrom(const QString &reply)
{
    return QDateTime::fromString(lastText(reply, QLatin1String("CurrentDate")), Qt::ISODate);
}

} // namespace Korvo::Web
