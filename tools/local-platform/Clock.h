#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace LocalPlatform {

/// The platform's own clock: the machine's, moved by a settable skew. Times are seconds since 1970, UTC.
class Clock
{
public:
    std::int64_t now() const;
    std::int64_t skewSeconds() const { return skew; }
    void setSkewSeconds(std::int64_t seconds) { skew = seconds; }

private:
    std::atomic<std::int64_t> skew{0};
};

/// "Tue, 03 Mar 2026 14:05:09 GMT"
std::string mailDate(std::int64_t time);

/// The exact form of mailDate() only.
std::optional<std::int64_t> parsedMailDate(std::string_view text);

/// "2026-03-03T14:05:09Z"
std::string isoDate(std::int64_t time);

/// "2026-03-03T14:05:09.123Z", the machine's clock.
std::string isoNowWithMilliseconds();

/// "yyyy-MM-ddThh:mm:ss", optionally with a "Z": the digits without zone. Nothing for anything else.
std::optional<std::string> parsedIsoDigits(std::string_view text);

} // namespace LocalPlatform
