#include "request/Base64.h"

#include <QtCore/QByteArray>
#include <QtCore/QtEndian>

#include <cstring>

namespace Korvo::Web {

namespace {

constexpr char ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int PAIRS = 64 * 64;

struct PairTable
{
    char text[PAIRS][2];
};

constexpr PairTable makePairs()
{
    PairTable table{};
    for (int bits = 0; bits < PAIRS; ++bits) {
        table.text[bits][0] = ALPHABET[bits >> 6];
        table.text[bits][1] = ALPHABET[bits & 63];
    }
    return table;
}

// Two characters at a time: the content of files makes up nearly all that is sent, and the worker does nothing else
// while it encodes.
constexpr PairTable TABLE = makePairs();

void writePair(unsigned bits, char *target)
{
    std::memcpy(target, TABLE.text[bits & (PAIRS - 1)], 2);
}

// Six bytes, in the upper bits.
void writeEight(quint64 bits, char *target)
{
    writePair(unsigned(bits >> 52), target);
    writePair(unsigned(bits >> 40), target + 2);
    writePair(unsigned(bits >> 28), target + 4);
    writePair(unsigned(bits >> 16), target + 6);
}

void writeFour(unsigned bits, char *target)
{
    writePair(bits >> 12, target);
    writePair(bits, target + 2);
}

// One or two bytes.
void writePadded(const uchar *from, int bytes, char *target)
{
    writeFour(unsigned(from[0]) << 16 | (bytes == 2 ? unsigned(from[1]) << 8 : 0), target);
    target[3] = '=';
    if (bytes == 1)
        target[2] = '=';
}

} // namespace

int base64Length(int bytes)
{
    return bytes / 3 * 4 + (bytes % 3 ? 4 : 0);
}

void writeBase64(const QByteArray &bytes, char *target)
{
    const auto *from = reinterpret_cast<const uchar *>(bytes.constData());
    const uchar *const end = from + bytes.size();
    for (; end - from >= int(sizeof(quint64)); from += 6, target += 8)
        writeEight(qFromBigEndian<quint64>(from), target);
    for (; end - from >= 3; from += 3, target += 4)
        writeFour(unsigned(from[0]) << 16 | unsigned(from[1]) << 8 | from[2], target);
    if (from != end)
        writePadded(from, int(end - from), target);
}

} // namespace Korvo::Web
