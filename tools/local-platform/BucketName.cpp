#include "BucketName.h"

#include <algorithm>

namespace LocalPlatform {
namespace {

constexpr std::size_t ID_CHARACTERS = 9;
constexpr std::size_t LONGEST_NAME = 1024;

bool isContinuationByte(char c)
{
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

/// Counts as the clients do: a character beyond the basic plane takes two.
std::string_view firstCharacters(std::string_view text, std::size_t count)
{
    std::size_t at = 0;
    while (at < text.size() && count > 0) {
        count -= std::min<std::size_t>(count, static_cast<unsigned char>(text[at]) >= 0xf0 ? 2 : 1);
        do
            ++at;
        while (at < text.size() && isContinuationByte(text[at]));
    }
    return text.substr(0, at);
}

char foldedCharacter(char c)
{
    if (c == '_')
        return '-';
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isAllowed(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
}

} // namespace

std::string bucketNameFor(std::string_view companyId, std::string_view projectId, std::string_view folderName)
{
    std::string text(firstCharacters(companyId, ID_CHARACTERS));
    text += firstCharacters(projectId, ID_CHARACTERS);
    text += folderName;
    std::string name;
    for (const char c : text)
        if (isAllowed(foldedCharacter(c)))
            name += foldedCharacter(c);
    return name;
}

bool isBucketName(std::string_view name)
{
    return !name.empty() && name.size() <= LONGEST_NAME && std::all_of(name.begin(), name.end(), isAllowed);
}

} // namespace LocalPlatform
