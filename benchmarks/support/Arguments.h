#pragma once

#include <map>
#include <string>

namespace Korvo::Bench {

/// Arguments of the form "--name value".
class Arguments
{
public:
    /// Throws std::invalid_argument when something else is there.
    Arguments(int count, char **values, int first = 1);

    std::string text(const std::string &name, const std::string &fallback = {}) const;
    int number(const std::string &name, int fallback) const;
    /// Throws std::invalid_argument when it is missing.
    std::string required(const std::string &name) const;
    bool has(const std::string &name) const { return named.count(name) > 0; }

private:
    std::map<std::string, std::string> named;
};

} // namespace Korvo::Bench
