#include "Text.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace LocalPlatform {
namespace {

constexpr char BASE64_ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned char FILLER = 'A'; // stands for zero bits
constexpr std::uint32_t NOT_BASE64 = 0xff000000;

using DecodeTable = std::array<std::uint32_t, 256>;

DecodeTable makeDecodeTable(int shift)
{
    DecodeTable table;
    table.fill(NOT_BASE64);
    for (std::uint32_t value = 0; value < 64; ++value)
        table[static_cast<unsigned char>(BASE64_ALPHABET[value])] = value << shift;
    return table;
}

const DecodeTable FIRST = makeDecodeTable(18);
const DecodeTable SECOND = makeDecodeTable(12);
const DecodeTable THIRD = makeDecodeTable(6);
const DecodeTable FOURTH = makeDecodeTable(0);

int hexValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return -1;
}

bool isUnreserved(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '.' || c == '_' || c == '~';
}

std::size_t paddingOf(std::string_view text)
{
    return endsWith(text, "==") ? 2 : endsWith(text, "=") ? 1 : 0;
}

/// Decodes so many groups of four. All values seen come back joined: one that is not Base64 marks the whole.
std::uint32_t decodeQuads(const unsigned char *from, std::size_t count, unsigned char *to)
{
    std::uint32_t seen = 0;
    for (; count > 0; --count, from += 4, to += 3) {
        const std::uint32_t group = FIRST[from[0]] | SECOND[from[1]] | THIRD[from[2]] | FOURTH[from[3]];
        seen |= group;
        to[0] = static_cast<unsigned char>(group >> 16);
        to[1] = static_cast<unsigned char>(group >> 8);
        to[2] = static_cast<unsigned char>(group);
    }
    return seen;
}

/// Length of the UTF-8 sequence at @p at, 0 when there is none.
std::size_t sequenceLength(std::string_view text, std::size_t at)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
    const unsigned char lead = byte(0);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xc2 ? 0 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : lead < 0xf5 ? 4 : 0;
    if (length == 0 || at + length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xc0) != 0x80)
            return 0;
    const bool overlong = (lead == 0xe0 && byte(1) < 0xa0) || (lead == 0xf0 && byte(1) < 0x90);
    const bool outside = (lead == 0xed && byte(1) > 0x9f) || (lead == 0xf4 && byte(1) > 0x8f);
    return overlong || outside ? 0 : length;
}

std::string escaped(std::string_view text, bool quoteControls)
{
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else if (quoteControls && static_cast<unsigned char>(c) < 0x20)
            out += "&#" + std::to_string(static_cast<int>(c)) + ";";
        else
            out += c;
    }
    return out;
}

} // namespace

bool startsWith(std::string_view text, std::string_view prefix)
{
    return text.substr(0, prefix.size()) == prefix;
}

bool endsWith(std::string_view text, std::string_view suffix)
{
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

std::string lowered(std::string_view text)
{
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), [](unsigned char c) { return c < 0x80 ? static_cast<char>(std::tolower(c)) : static_cast<char>(c); });
    return out;
}

std::vector<std::string> split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator, start)) {
        parts.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    parts.emplace_back(text.substr(start));
    return parts;
}

std::string lastPart(std::string_view path)
{
    const std::size_t slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string xmlEscaped(std::string_view text)
{
    return escaped(text, true);
}

std::string htmlEscaped(std::string_view text)
{
    return escaped(text, false);
}

std::optional<std::string> percentDecoded(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? hexValue(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? hexValue(text[i + 2]) : -1;
        if (high < 0 || low < 0)
            return std::nullopt;
        out += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return out;
}

std::string percentEncoded(std::string_view text, std::string_view kept)
{
    constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string out;
    for (const char c : text) {
        if (isUnreserved(c) || kept.find(c) != std::string_view::npos) {
            out += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        out += {'%', DIGITS[byte >> 4], DIGITS[byte & 15]};
    }
    return out;
}

Query parsedQuery(std::string_view query)
{
    Query items;
    if (query.empty())
        return items;
    for (const std::string &item : split(query, '&')) {
        const std::size_t equals = item.find('=');
        const std::string value = equals == std::string::npos ? std::string() : item.substr(equals + 1);
        items.emplace_back(item.substr(0, equals), percentDecoded(value).value_or(value));
    }
    return items;
}

std::optional<std::string> queryValue(const Query &query, std::string_view key)
{
    for (const auto &[name, value] : query)
        if (name == key)
            return value;
    return std::nullopt;
}

std::optional<std::int64_t> parsedDecimal(std::string_view text)
{
    if (text.empty() || text.size() > 18)
        return std::nullopt;
    std::int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

std::string base64Encoded(std::string_view bytes)
{
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (std::size_t k = 0; k < 4; ++k)
            out += k <= count ? BASE64_ALPHABET[group >> (18 - 6 * k) & 63] : '=';
    }
    return out;
}

std::optional<std::string> base64Decoded(std::string_view text)
{
    if (text.size() % 4 != 0)
        return std::nullopt;
    const std::size_t padding = paddingOf(text);
    const std::size_t whole = text.size() / 4 - (padding > 0 ? 1 : 0);
    std::string out(text.size() / 4 * 3, '\0');
    auto *to = reinterpret_cast<unsigned char *>(out.data());
    const auto *from = reinterpret_cast<const unsigned char *>(text.data());
    std::uint32_t seen = decodeQuads(from, whole, to);
    if (padding > 0) {
        from += whole * 4;
        const unsigned char last[4] = {from[0], from[1], padding == 2 ? FILLER : from[2], FILLER};
        seen |= decodeQuads(last, 1, to + whole * 3);
    }
    out.resize(out.size() - padding);
    return seen & NOT_BASE64 ? std::nullopt : std::optional(std::move(out));
}

std::string hexEncoded(std::string_view bytes)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string out;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out += {DIGITS[byte >> 4], DIGITS[byte & 15]};
    }
    return out;
}

bool isValidUtf8(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = sequenceLength(text, at);
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

std::string printable(std::string_view text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = sequenceLength(text, at);
        out += length == 0 ? std::string("?") : std::string(text.substr(at, length));
        at += length == 0 ? 1 : length;
    }
    return out;
}

} // namespace LocalPlatform
