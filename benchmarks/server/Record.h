#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace Korvo::Bench {

/// What was asked for and with which bytes, in a form in which two clients can be compared.
class Record
{
public:
    /// @p file is written by save(); empty: nothing is recorded.
    explicit Record(std::string file)
        : path(std::move(file))
    {
    }

    bool isWanted() const { return !path.empty(); }
    /// @p head with its request line; date, token and signature are left out of it, for they differ each time.
    void add(std::string_view head, const std::string &bodyHash, const std::string &answerHash);
    void save();

private:
    std::string path;
    std::mutex mutex; ///< guards lines
    std::vector<std::string> lines;
};

} // namespace Korvo::Bench
