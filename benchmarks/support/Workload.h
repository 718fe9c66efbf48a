#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Korvo::Bench {

/// So many files of one size. Written "8x67108864", also as the end of a bucket's name.
struct Workload
{
    int files = 0;
    std::int64_t bytes = 0;

    /// No files when the text does not end in a workload.
    static Workload atEndOf(std::string_view text);
    std::string text() const;
    std::int64_t totalBytes() const { return files * bytes; }
};

/// Key, and path relative to the project folder, of the file with this number: a thousand files a folder.
std::string keyOf(int number);

/// The bytes that stand for all content: whatever lies in a file is cut out of them.
const std::string &contentBlock();

/// Where in the block the file with this key begins, so that no two are alike.
std::size_t contentStart(std::string_view key);

/// Writes the workload as a project folder.
void writeFolder(const Workload &workload, const std::string &folder);
/// The same with files that hold nothing but their length.
void writeSparseFolder(const Workload &workload, const std::string &folder);

} // namespace Korvo::Bench
