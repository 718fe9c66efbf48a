#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace LocalPlatform {

bool startsWith(std::string_view text, std::string_view prefix);
bool endsWith(std::string_view text, std::string_view suffix);
std::string lowered(std::string_view text);

/// Parts between separators, empty ones kept.
std::vector<std::string> split(std::string_view text, char separator);

/// The text after the last "/", the whole text without one.
std::string lastPart(std::string_view path);

std::string xmlEscaped(std::string_view text);
std::string htmlEscaped(std::string_view text);

/// Decodes "%xx"; anything else, "+" included, stays. Nothing if an escape is broken.
std::optional<std::string> percentDecoded(std::string_view text);

/// Encodes everything but unreserved characters and those of @p kept.
std::string percentEncoded(std::string_view text, std::string_view kept = {});

/// Key and decoded value of each item of a query.
using Query = std::vector<std::pair<std::string, std::string>>;
Query parsedQuery(std::string_view query);
std::optional<std::string> queryValue(const Query &query, std::string_view key);

/// A decimal without sign, blank or leading junk.
std::optional<std::int64_t> parsedDecimal(std::string_view text);

std::string base64Encoded(std::string_view bytes);

/// Strict: standard alphabet, padded, no blanks. Nothing if the text is anything else.
std::optional<std::string> base64Decoded(std::string_view text);

std::string hexEncoded(std::string_view bytes);

bool isValidUtf8(std::string_view text);

/// Replaces what is not UTF-8, so that the text can be put into JSON.
std::string printable(std::string_view text);

} // namespace LocalPlatform
