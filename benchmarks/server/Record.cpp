#include "server/Record.h"

#include "Text.h"

#include <algorithm>
#include <fstream>

namespace Korvo::Bench {
namespace {

bool differsEachTime(const std::string &header)
{
    static const std::vector<std::string> NAMES = {"authorization:", "date:", "x-korvoservice-messagetoken:"};
    const std::string name = LocalPlatform::lowered(header.substr(0, header.find(':') + 1));
    return std::find(NAMES.begin(), NAMES.end(), name) != NAMES.end();
}

// Clients are free in the order of headers and in the letter case of their names.
std::string comparable(const std::string &header)
{
    const std::size_t colon = header.find(':');
    const std::string name = LocalPlatform::lowered(header.substr(0, colon));
    return differsEachTime(header) ? name + ": (given)" : name + header.substr(colon);
}

} // namespace

void Record::add(std::string_view head, const std::string &bodyHash, const std::string &answerHash)
{
    std::vector<std::string> headers;
    std::string requestLine;
    for (std::string line : LocalPlatform::split(head, '\n')) {
        line.resize(std::min(line.size(), line.find('\r')));
        if (requestLine.empty())
            requestLine = line;
        else if (!line.empty())
            headers.push_back(comparable(line));
    }
    std::sort(headers.begin(), headers.end());
    std::string entry = requestLine + " | body " + bodyHash + " | answer " + answerHash;
    for (const std::string &header : headers)
        entry += " | " + header;
    const std::lock_guard guard(mutex);
    lines.push_back(entry);
}

void Record::save()
{
    if (!isWanted())
        return;
    const std::lock_guard guard(mutex);
    std::sort(lines.begin(), lines.end());
    std::ofstream file(path);
    for (const std::string &line : lines)
        file << line << '\n';
}

} // namespace Korvo::Bench
