#pragma once

#include "request/RequestMethod.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Korvo::Web {

/// Identifies the library to the web server until client credentials are known.
constexpr const char *DEFAULT_CLIENT_ID = "Vantrel";

/// "GET", "POST" or "PUT"; empty for every other value.
QString requestMethodToString(RequestMethod method);

/// Base64 text of the HMAC-SHA256 of @p message.
QByteArray hmacSha256(const QByteArray &key, const QByteArray &message);

} // namespace Korvo::Web
