#include "support/Arguments.h"

#include <stdexcept>

namespace Korvo::Bench {

Arguments::Arguments(int count, char **values, int first)
{
    for (int at = first; at < count; at += 2) {
        const std::string name = values[at];
        if (name.rfind("--", 0) != 0 || at + 1 == count)
            throw std::invalid_argument("expected --name value, found " + name);
        named[name.substr(2)] = values[at + 1];
    }
}

std::string Arguments::text(const std::string &name, const std::string &fallback) const
{
    const auto found = named.find(name);
    return found == named.end() ? fallback : found->second;
}

int Arguments::number(const std::string &name, int fallback) const
{
    return has(name) ? std::stoi(text(name)) : fallback;
}

std::string Arguments::required(const std::string &name) const
{
    if (!has(name))
        throw std::invalid_argument("--" + name + " is missing");
    return text(name);
}

} // namespace Korvo::Bench
