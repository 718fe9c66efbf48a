#include "MotionJpegAvi.h"

#include <QtCore/QtEndian>

#include <algorithm>

namespace Korvo::Sample {

namespace {

constexpr qint64 CHUNK_HEADER_BYTES = 8;
constexpr qint64 INDEX_ENTRY_BYTES = 16;
constexpr quint32 KEY_FRAME = 0x10;
constexpr quint32 HAS_INDEX = 0x10;

QByteArray number(quint32 value)
{
    const quint32 stored = qToLittleEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&stored), sizeof stored);
}

QByteArray number(qint64 value)
{
    return number(static_cast<quint32>(value));
}

QByteArray number(int value)
{
    return number(static_cast<quint32>(value));
}

// The format keeps two numbers of 16 bits where one of 32 would stand.
QByteArray pair(int first, int second)
{
    return number(static_cast<quint32>(first) | static_cast<quint32>(second) << 16);
}

QByteArray chunk(const char *name, const QByteArray &content)
{
    return QByteArray(name) + number(content.size()) + content;
}

QByteArray list(const char *name, const QByteArray &content)
{
    return chunk("LIST", QByteArray(name) + content);
}

qint64 padded(qint64 bytes)
{
    return bytes + (bytes & 1);
}

} // namespace

MotionJpegAvi::MotionJpegAvi(const QString &path, int width, int height)
    : file(path)
    , columns(width)
    , rows(height)
{
}

bool MotionJpegAvi::put(const QByteArray &bytes)
{
    return file.write(bytes) == bytes.size();
}

bool MotionJpegAvi::open()
{
    // The counts in the headers are known at the end only; their length does not change.
    return file.open(QIODevice::WriteOnly) && put(headers(0));
}

bool MotionJpegAvi::append(const QByteArray &jpeg)
{
    frameSizes.push_back(static_cast<quint32>(jpeg.size()));
    frameListBytes += CHUNK_HEADER_BYTES + padded(jpeg.size());
    const QByteArray padding(static_cast<int>(padded(jpeg.size()) - jpeg.size()), '\0');
    return put(chunk("00dc", jpeg) + padding);
}

qint64 MotionJpegAvi::sizeWith(qint64 jpegBytes) const
{
    const qint64 written = headers(0).size() - 4 + frameListBytes;
    const qint64 frames = static_cast<qint64>(frameSizes.size()) + 1;
    return written + CHUNK_HEADER_BYTES + padded(jpegBytes) + CHUNK_HEADER_BYTES + frames * INDEX_ENTRY_BYTES;
}

bool MotionJpegAvi::finish(qint64 totalBytes)
{
    if (!put(index()))
        return false;
    const qint64 missing = padded(totalBytes) - file.pos();
    if (missing >= CHUNK_HEADER_BYTES) {
        const QByteArray filling(static_cast<int>(missing - CHUNK_HEADER_BYTES), '\0');
        if (!put(chunk("JUNK", filling)))
            return false;
    }
    const QByteArray finalHeaders = headers(file.pos());
    return file.seek(0) && put(finalHeaders) && file.flush();
}

QByteArray MotionJpegAvi::index() const
{
    QByteArray entries;
    qint64 offset = 4;
    for (const quint32 size : frameSizes) {
        entries += "00dc" + number(KEY_FRAME) + number(offset) + number(size);
        offset += CHUNK_HEADER_BYTES + padded(size);
    }
    return chunk("idx1", entries);
}

QByteArray MotionJpegAvi::streamList() const
{
    const quint32 largest = frameSizes.empty() ? 0 : *std::max_element(frameSizes.begin(), frameSizes.end());
    const QByteArray header = QByteArray("vidsMJPG") + number(0) + number(0) + number(0) + number(1)
        + number(FRAMES_PER_SECOND) + number(0) + number(static_cast<quint32>(frameSizes.size())) + number(largest) + number(-1) + number(0)
        + pair(0, 0) + pair(columns, rows);
    const QByteArray format = number(40) + number(columns) + number(rows) + pair(1, 24) + "MJPG" + number(columns * rows * 3)
        + number(0) + number(0) + number(0) + number(0);
    return list("strl", chunk("strh", header) + chunk("strf", format));
}

QByteArray MotionJpegAvi::headers(qint64 totalBytes) const
{
    const quint32 largest = frameSizes.empty() ? 0 : *std::max_element(frameSizes.begin(), frameSizes.end());
    const QByteArray main = number(1000000 / FRAMES_PER_SECOND) + number(largest * FRAMES_PER_SECOND) + number(0)
        + number(HAS_INDEX) + number(static_cast<quint32>(frameSizes.size())) + number(0) + number(1) + number(largest)
        + number(columns) + number(rows) + QByteArray(16, '\0');
    return QByteArray("RIFF") + number(std::max<qint64>(0, totalBytes - CHUNK_HEADER_BYTES)) + "AVI "
        + list("hdrl", chunk("avih", main) + streamList())
        + "LIST" + number(frameListBytes) + "movi";
}

} // namespace Korvo::Sample
