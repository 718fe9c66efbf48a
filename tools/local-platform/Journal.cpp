#include "Journal.h"

#include "Clock.h"

#include <stdexcept>

namespace LocalPlatform {
namespace {

constexpr std::size_t ENTRIES_KEPT = 50000;

} // namespace

Journal::Journal(const std::string &file) : output(std::fopen(file.c_str(), "ae"), &std::fclose)
{
    if (!output)
        throw std::runtime_error("cannot write the journal " + file);
}

void Journal::add(nlohmann::json entry)
{
    const std::lock_guard guard(mutex);
    entry["number"] = ++lastNumber;
    entry["time"] = isoNowWithMilliseconds();
    const std::string line = entry.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    std::fwrite(line.data(), 1, line.size(), output.get());
    std::fflush(output.get());
    entries.push_back(std::move(entry));
    if (entries.size() > ENTRIES_KEPT)
        entries.pop_front();
}

nlohmann::json Journal::since(std::int64_t number) const
{
    nlohmann::json list = nlohmann::json::array();
    const std::lock_guard guard(mutex);
    for (const nlohmann::json &entry : entries)
        if (entry["number"].get<std::int64_t>() > number)
            list.push_back(entry);
    return list;
}

void Journal::countRefusal(const nlohmann::json &refusal)
{
    const std::lock_guard guard(mutex);
    ++refusalCount;
    lastRefusal = refusal;
}

nlohmann::json Journal::refusals() const
{
    const std::lock_guard guard(mutex);
    return {{"count", refusalCount}, {"last", lastRefusal}};
}

} // namespace LocalPlatform
