#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Korvo::Bench {

/// An answer; a file's content is cut out of the block that all content comes from.
struct Answer
{
    int status = 200;
    std::string type = "application/xml; charset=utf-8";
    std::string text;
    std::int64_t fileBytes = -1; ///< a file instead of the text
    std::size_t fileStart = 0;
};

/// Answers @p target, path and query as they were sent, of either server. @p body holds the beginning of the body,
/// which is all that the short ones have.
Answer answerTo(std::string_view target, const std::string &body);

} // namespace Korvo::Bench
