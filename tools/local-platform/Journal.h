#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

namespace LocalPlatform {

/// One line of JSON for each request, in a file and, as far as the memory of it reaches, over the control route.
/// Whoever adds an entry sees to it that no password, token, secret or signature is in it.
class Journal
{
public:
    explicit Journal(const std::string &file);

    void add(nlohmann::json entry);

    /// Entries with a number above @p number, oldest first.
    nlohmann::json since(std::int64_t number) const;

    void countRefusal(const nlohmann::json &refusal);
    nlohmann::json refusals() const;

private:
    mutable std::mutex mutex; ///< guards all below
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> output;
    std::deque<nlohmann::json> entries;
    std::int64_t lastNumber = 0;
    std::int64_t refusalCount = 0;
    nlohmann::json lastRefusal;
};

} // namespace LocalPlatform
