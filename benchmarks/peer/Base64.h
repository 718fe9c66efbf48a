#pragma once

#include <string>
#include <string_view>

namespace Korvo::Bench {

/// Appends the Base64 text of @p bytes.
void appendBase64(std::string *text, std::string_view bytes);

} // namespace Korvo::Bench
