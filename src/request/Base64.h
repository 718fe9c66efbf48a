#pragma once

class QByteArray;

namespace Korvo::Web {

/// Characters of the Base64 text of this many bytes, padding included.
int base64Length(int bytes);

/// Writes the Base64 text of @p bytes to @p target, which has room for base64Length() characters.
void writeBase64(const QByteArray &bytes, char *target);

} // namespace Korvo::Web
