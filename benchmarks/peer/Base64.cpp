#include "peer/Base64.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace Korvo::Bench {
namespace {

constexpr char DIGITS[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

using Pair = std::array<char, 2>;

/// The two digits of every 12 bits: half as many steps as with single digits.
const std::array<Pair, 4096> &pairs()
{
    static const std::array<Pair, 4096> PAIRS = [] {
        std::array<Pair, 4096> made{};
        for (std::size_t bits = 0; bits < made.size(); ++bits)
            made[bits] = {DIGITS[bits >> 6], DIGITS[bits & 63]};
        return made;
    }();
    return PAIRS;
}

} // namespace

void appendBase64(std::string *text, std::string_view bytes)
{
    const std::size_t start = text->size();
    text->resize(start + (bytes.size() + 2) / 3 * 4);
    char *out = text->data() + start;
    const auto *in = reinterpret_cast<const unsigned char *>(bytes.data());
    std::size_t left = bytes.size();
    const auto &table = pairs();
    const auto put = [&](std::uint32_t bits) {
        std::memcpy(out, table[bits >> 12].data(), 2);
        std::memcpy(out + 2, table[bits & 4095].data(), 2);
        out += 4;
    };
    for (; left >= 3; left -= 3, in += 3)
        put(std::uint32_t(in[0]) << 16 | std::uint32_t(in[1]) << 8 | in[2]);
    if (left == 0)
        return;
    put(std::uint32_t(in[0]) << 16 | (left == 2 ? std::uint32_t(in[1]) << 8 : 0));
    std::memset(out - (3 - left), '=', 3 - left);
}

} // namespace Korvo::Bench
