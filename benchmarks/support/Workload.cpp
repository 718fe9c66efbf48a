#include "support/Workload.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

namespace Korvo::Bench {
namespace {

constexpr std::size_t BLOCK_BYTES = 8 * 1024 * 1024;
constexpr std::size_t START_STEP = 4096;
constexpr int FILES_A_FOLDER = 1000;

std::string padded(int number)
{
    const std::string digits = std::to_string(number);
    return std::string(6 - std::min<std::size_t>(6, digits.size()), '0') + digits;
}

std::string randomBlock()
{
    std::mt19937_64 random(20260303);
    std::string block(BLOCK_BYTES, '\0');
    for (char &byte : block)
        byte = static_cast<char>(random());
    return block;
}

std::int64_t numberIn(std::string_view text)
{
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

void writeContent(std::ofstream &file, std::string_view key, std::int64_t bytes)
{
    const std::string &block = contentBlock();
    std::size_t at = contentStart(key);
    while (bytes > 0) {
        const auto count = std::min<std::int64_t>(bytes, static_cast<std::int64_t>(block.size() - at));
        file.write(block.data() + at, count);
        bytes -= count;
        at = 0;
    }
}

template <class Fill>
void writeFiles(const Workload &workload, const std::string &folder, Fill fill)
{
    for (int number = 0; number < workload.files; ++number) {
        const std::string key = keyOf(number);
        const std::filesystem::path path = std::filesystem::path(folder) / key;
        if (number % FILES_A_FOLDER == 0)
            std::filesystem::create_directories(path.parent_path());
        std::ofstream file(path, std::ios::binary);
        fill(file, key);
        file.close();
        if (!file)
            throw std::runtime_error("cannot write " + path.string());
    }
}

} // namespace

Workload Workload::atEndOf(std::string_view text)
{
    const std::size_t times = text.rfind('x');
    if (times == std::string_view::npos)
        return {};
    const std::string_view before = text.substr(0, times);
    const std::size_t start = before.find_last_not_of("0123456789") + 1;
    return {static_cast<int>(numberIn(before.substr(start))), numberIn(text.substr(times + 1))};
}

std::string Workload::text() const
{
    return std::to_string(files) + 'x' + std::to_string(bytes);
}

std::string keyOf(int number)
{
    const int section = number / FILES_A_FOLDER;
    return "Data/Main inspection of March 2026/Section " + padded(section) + " from manhole " + padded(section)
           + " to manhole " + padded(section + 1) + "/record " + padded(number) + ".bin";
}

const std::string &contentBlock()
{
    static const std::string BLOCK = randomBlock();
    return BLOCK;
}

std::size_t contentStart(std::string_view key)
{
    std::size_t hash = 0;
    for (const char c : key)
        hash = hash * 131 + static_cast<unsigned char>(c);
    return hash % (BLOCK_BYTES / START_STEP) * START_STEP;
}

void writeFolder(const Workload &workload, const std::string &folder)
{
    writeFiles(workload, folder,
               [&](std::ofstream &file, const std::string &key) { writeContent(file, key, workload.bytes); });
}

void writeSparseFolder(const Workload &workload, const std::string &folder)
{
    writeFiles(workload, folder, [](std::ofstream &, const std::string &) {});
    for (int number = 0; number < workload.files; ++number)
        std::filesystem::resize_file(std::filesystem::path(folder) / keyOf(number),
                                     static_cast<std::uintmax_t>(workload.bytes));
}

} // namespace Korvo::Bench
