#include "Image.h"

#include <QtCore/QtEndian>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

namespace Korvo::Sample {

namespace {

constexpr int CHANNELS = 3;
constexpr int BMP_HEADER_BYTES = 14 + 40;

unsigned char channel(int value)
{
    return static_cast<unsigned char>(std::clamp(value, 0, 255));
}

void appendNumber(QByteArray &bytes, quint32 value)
{
    const quint32 stored = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char *>(&stored), sizeof stored);
}

void appendShortNumber(QByteArray &bytes, quint16 value)
{
    const quint16 stored = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char *>(&stored), sizeof stored);
}

QByteArray bmpHeader(int width, int height, int pixelBytes)
{
    QByteArray header("BM");
    appendNumber(header, static_cast<quint32>(BMP_HEADER_BYTES + pixelBytes));
    appendNumber(header, 0);
    appendNumber(header, BMP_HEADER_BYTES);
    appendNumber(header, 40);
    appendNumber(header, static_cast<quint32>(width));
    appendNumber(header, static_cast<quint32>(height));
    appendShortNumber(header, 1);
    appendShortNumber(header, CHANNELS * 8);
    appendNumber(header, 0);
    appendNumber(header, static_cast<quint32>(pixelBytes));
    header.append(QByteArray(16, '\0'));
    return header;
}

} // namespace

Image::Image(int width, int height)
    : columns(width)
    , rows(height)
    , bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * CHANNELS)
{
}

const unsigned char *Image::row(int y) const
{
    return bytes.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) * CHANNELS;
}

void Image::setPixel(int x, int y, const Color &color)
{
    if (x < 0 || y < 0 || x >= columns || y >= rows)
        return;
    const auto first = static_cast<std::size_t>(y * columns + x) * CHANNELS;
    bytes[first] = channel(color.red);
    bytes[first + 1] = channel(color.green);
    bytes[first + 2] = channel(color.blue);
}

QByteArray Image::toJpeg(int quality) const
{
    jpeg_error_mgr errors;
    jpeg_compress_struct encoder;
    encoder.err = jpeg_std_error(&errors);
    jpeg_create_compress(&encoder);

    unsigned char *encoded = nullptr;
    unsigned long encodedBytes = 0;
    jpeg_mem_dest(&encoder, &encoded, &encodedBytes);
    encoder.image_width = static_cast<JDIMENSION>(columns);
    encoder.image_height = static_cast<JDIMENSION>(rows);
    encoder.input_components = CHANNELS;
    encoder.in_color_space = JCS_RGB;
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, quality, TRUE);
    encoder.dct_method = JDCT_ISLOW; // the one method that gives the same bytes on every processor

    jpeg_start_compress(&encoder, TRUE);
    while (encoder.next_scanline < encoder.image_height) {
        JSAMPROW line = const_cast<JSAMPROW>(row(static_cast<int>(encoder.next_scanline)));
        jpeg_write_scanlines(&encoder, &line, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);

    const QByteArray result(reinterpret_cast<const char *>(encoded), static_cast<int>(encodedBytes));
    std::free(encoded);
    return result;
}

QByteArray Image::toBmp() const
{
    const int rowBytes = (columns * CHANNELS + 3) / 4 * 4;
    QByteArray result = bmpHeader(columns, rows, rowBytes * rows);
    for (int y = rows - 1; y >= 0; --y) {
        QByteArray line(rowBytes, '\0');
        const unsigned char *source = row(y);
        for (int x = 0; x < columns * CHANNELS; x += CHANNELS)
            std::reverse_copy(source + x, source + x + CHANNELS, line.begin() + x);
        result += line;
    }
    return result;
}

} // namespace Korvo::Sample
