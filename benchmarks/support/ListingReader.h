#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace Korvo::Bench {

struct ListedFile
{
    std::string fileName;
    std::string key;
    std::time_t modified = 0;
    std::int64_t size = 0;
    std::string type;
    std::string directory;
};

/// Reads a listing with expat into plain structs; throws std::runtime_error when it is broken.
std::vector<ListedFile> readListing(std::string_view xml);

} // namespace Korvo::Bench
