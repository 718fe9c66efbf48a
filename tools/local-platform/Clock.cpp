#include "Clock.h"

#include "Text.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace LocalPlatform {
namespace {

// English whatever the locale, hence no strftime.
constexpr const char *DAYS[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char *MONTHS[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::tm brokenDown(std::int64_t time)
{
    const std::time_t seconds = static_cast<std::time_t>(time);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    return parts;
}

int monthIndex(std::string_view name)
{
    for (int i = 0; i < 12; ++i)
        if (name == MONTHS[i])
            return i;
    return -1;
}

bool isDigitPattern(std::string_view text, std::string_view pattern)
{
    if (text.size() != pattern.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (pattern[i] == '0' ? !digit : text[i] != pattern[i])
            return false;
    }
    return true;
}

int number(std::string_view text)
{
    return static_cast<int>(parsedDecimal(text).value_or(0));
}

} // namespace

std::int64_t Clock::now() const
{
    return static_cast<std::int64_t>(std::time(nullptr)) + skew;
}

std::string mailDate(std::int64_t time)
{
    const std::tm t = brokenDown(time);
    char text[64];
    std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d GMT", DAYS[t.tm_wday], t.tm_mday, MONTHS[t.tm_mon],
                  t.tm_year + 1900, t.tm_hour, t.tm_min, t.tm_sec);
    return text;
}

std::optional<std::int64_t> parsedMailDate(std::string_view text)
{
    if (text.size() != 29 || !isDigitPattern(text.substr(12, 13), "0000 00:00:00"))
        return std::nullopt;
    std::tm t{};
    t.tm_mday = number(text.substr(5, 2));
    t.tm_mon = monthIndex(text.substr(8, 3));
    t.tm_year = number(text.substr(12, 4)) - 1900;
    t.tm_hour = number(text.substr(17, 2));
    t.tm_min = number(text.substr(20, 2));
    t.tm_sec = number(text.substr(23, 2));
    if (t.tm_mon < 0 || t.tm_mday < 1)
        return std::nullopt;
    const std::int64_t time = timegm(&t);
    // Written back it must be the same: that also checks weekday, separators and day of month.
    return mailDate(time) == text ? std::optional(time) : std::nullopt;
}

std::string isoDate(std::int64_t time)
{
    const std::tm t = brokenDown(time);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour,
                  t.tm_min, t.tm_sec);
    return text;
}

std::string isoNowWithMilliseconds()
{
    using namespace std::chrono;
    const auto sinceEpoch = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    std::string text = isoDate(sinceEpoch / 1000);
    char fraction[8];
    std::snprintf(fraction, sizeof fraction, ".%03dZ", static_cast<int>(sinceEpoch % 1000));
    text.replace(text.size() - 1, 1, fraction);
    return text;
}

std::optional<std::string> parsedIsoDigits(std::string_view text)
{
    if (endsWith(text, "Z"))
        text.remove_suffix(1);
    if (!isDigitPattern(text, "0000-00-00T00:00:00"))
        return std::nullopt;
    std::tm t{};
    t.tm_year = number(text.substr(0, 4)) - 1900;
    t.tm_mon = number(text.substr(5, 2)) - 1;
    t.tm_mday = number(text.substr(8, 2));
    t.tm_hour = number(text.substr(11, 2));
    t.tm_min = number(text.substr(14, 2));
    t.tm_sec = number(text.substr(17, 2));
    const std::string digits(text);
    return isoDate(timegm(&t)) == digits + "Z" ? std::optional(digits) : std::nullopt;
}

} // namespace LocalPlatform
