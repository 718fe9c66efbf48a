#include "SignatureCheck.h"

#include "Crypto.h"
#include "Refusal.h"
#include "Text.h"

#include <cstdlib>
#include <functional>

namespace LocalPlatform {
namespace {

constexpr std::int64_t DATE_TOLERANCE = 15 * 60;

// A token older than the dates that are accepted cannot come again.
constexpr std::int64_t TOKEN_MEMORY = 3 * DATE_TOLERANCE;

const std::string SCHEME = "KorvoService ";

std::string headerOf(const httplib::Request &request, const char *name)
{
    if (request.get_header_value_count(name) != 1)
        throw Refusal(401, std::string("expected one header ") + name, name);
    return request.get_header_value(name);
}

/// "{8-4-4-4-12}", lower-case hexadecimal.
bool isMessageToken(const std::string &token)
{
    constexpr std::string_view PATTERN = "{hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh}";
    if (token.size() != PATTERN.size())
        return false;
    for (std::size_t i = 0; i < token.size(); ++i) {
        const bool hex = (token[i] >= '0' && token[i] <= '9') || (token[i] >= 'a' && token[i] <= 'f');
        if (PATTERN[i] == 'h' ? !hex : token[i] != PATTERN[i])
            return false;
    }
    return true;
}

std::string checkedToken(const httplib::Request &request)
{
    const std::string token = headerOf(request, "X-KorvoService-MessageToken");
    if (!isMessageToken(token))
        throw Refusal(401, "the message token has the wrong form", "X-KorvoService-MessageToken");
    return token;
}

std::int64_t checkedDate(const std::string &text)
{
    const auto date = parsedMailDate(text);
    if (!date)
        throw Refusal(401, "the date has the wrong form", "Date");
    return *date;
}

std::size_t fingerprintOf(const httplib::Request &request)
{
    const std::hash<std::string> hash;
    const std::string head = request.method + "\n" + request.target + "\n" + request.get_header_value("Date") + "\n" +
                             request.get_header_value("Authorization");
    return hash(head) * 31 + hash(request.body);
}

} // namespace

SignatureCheck::Verdict SignatureCheck::verify(const httplib::Request &request, const std::string &path, std::int64_t now)
{
    const std::string date = headerOf(request, "Date");
    const std::string token = checkedToken(request);
    const std::string clientId = headerOf(request, "X-KorvoService-ClientId");
    const std::string authorization = headerOf(request, "Authorization");
    const auto company = accounts.companyOfClient(clientId);
    if (!company)
        throw Refusal(401, "unknown client id", "X-KorvoService-ClientId");
    if (std::llabs(checkedDate(date) - now) > DATE_TOLERANCE)
        throw Refusal(401, "the date is more than 15 minutes off", "Date");
    const std::string lines = request.method + "\n" + date + "\n" + token + "\n" + clientId + "\n" + path;
    const std::string expected = SCHEME + base64Encoded(hmacSha256(company->secretKey, lines));
    if (!equalInConstantTime(authorization, expected))
        throw Refusal(401, "the signature does not fit", "Authorization");
    return {*company, registerToken(token, fingerprintOf(request), now)};
}

void SignatureCheck::verifyHeadersOnly(const httplib::Request &request) const
{
    checkedDate(headerOf(request, "Date"));
    checkedToken(request);
    headerOf(request, "X-KorvoService-ClientId");
    if (request.has_header("Authorization"))
        throw Refusal(400, "this request is not signed", "Authorization");
}

bool SignatureCheck::registerToken(const std::string &token, std::size_t fingerprint, std::int64_t now)
{
    const std::lock_guard guard(mutex);
    if (now >= nextSweep) {
        for (auto it = tokens.begin(); it != tokens.end();)
            it = it->second.at < now - TOKEN_MEMORY ? tokens.erase(it) : std::next(it);
        nextSweep = now + DATE_TOLERANCE;
    }
    const auto [entry, isNew] = tokens.emplace(token, Seen{fingerprint, now});
    if (!isNew && entry->second.fingerprint != fingerprint)
        throw Refusal(401, "the message token was used for another request", "X-KorvoService-MessageToken");
    return !isNew;
}

} // namespace LocalPlatform
