#include "api/LoginOutcome.h"

#include "handles/AuthenticationResponses.h"

namespace Korvo::Web {

using LoginResult = KorvoWebApi::LoginResult;
using UserRole = KorvoWebApi::UserRole;

namespace {

bool isLoggedIn(const LoginResponse &response)
{
    return response.isSuccess() && response.loggedIn() && response.error() == Error::None
           && !response.accessToken().isEmpty();
}

} // namespace

LoginResult loginResultFor(const LoginResponse &response)
{
    if (isLoggedIn(response))
        return LoginResult::LoginResultSuccess;
    if (response.isCancelled())
        return LoginResult::LoginResultCancelled;
    if (response.error() == Error::AuthenticationRequired)
        return LoginResult::LoginResultFalseCredentials;
    return LoginResult::LoginResultTimeOut; // every other failure
}

Error unexplainedError(const LoginResponse &response)
{
    const bool isPlainTimeOut = response.error() == Error::TimeOut;
    if (loginResultFor(response) != LoginResult::LoginResultTimeOut || isPlainTimeOut)
        return Error::None;
    return response.error();
}

UserRole userRoleFor(const QString &serverRole)
{
    struct RoleName
    {
        QLatin1String text;
        UserRole role;
    };
    static const RoleName ROLES[] = {
        {QLatin1String("RZ_OPERATOR"), UserRole::RzOperator},
        {QLatin1String("COMPANY_OPERATOR"), UserRole::CompanyOperator},
        {QLatin1String("SYSTEM_ADMINISTRATOR"), UserRole::SystemAdministrator},
        {QLatin1String("COMPANY_ADMINISTRATOR"), UserRole::CompanyAdministrator},
        {QLatin1String("END_USER"), UserRole::EndUser},
    };
    for (const RoleName &name : ROLES) {
        if (serverRole == name.text)
            return name.role;
    }
    return UserRole::Guest;
}

} // namespace Korvo::Web
