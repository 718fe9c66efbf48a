#pragma once

#include <NQKorvoWeb/KorvoWebApi.h>

namespace Korvo::Web {

class LoginResponse;

/// What the host is told of a login that was answered like this.
KorvoWebApi::LoginResult loginResultFor(const LoginResponse &response);

/// The code that explains a failure which LoginResult alone does not; Error::None when it does.
Error unexplainedError(const LoginResponse &response);

/// The role that the server's text stands for; case matters, and what is not known is a Guest.
KorvoWebApi::UserRole userRoleFor(const QString &serverRole);

} // namespace Korvo::Web
