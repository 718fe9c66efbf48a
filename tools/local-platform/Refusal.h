#pragma once

#include <stdexcept>
#include <string>

namespace LocalPlatform {

/// A request that the platform does not carry out: the status to answer and what was wrong with it.
class Refusal : public std::runtime_error
{
public:
    Refusal(int answerStatus, const std::string &reason, std::string wrongElement = {})
        : std::runtime_error(reason), status(answerStatus), element(std::move(wrongElement))
    {
    }

    const int status;
    const std::string element;
};

} // namespace LocalPlatform
