#pragma once

#include <QtCore/QByteArray>

#include <vector>

namespace Korvo::Sample {

struct Color
{
    int red = 0;
    int green = 0;
    int blue = 0;
};

/// A picture of 24-bit colours in memory.
class Image
{
public:
    Image(int width, int height);

    int width() const { return columns; }
    int height() const { return rows; }

    /// Colours are clamped to what a byte holds; a place outside the picture is left alone.
    void setPixel(int x, int y, const Color &color);

    /// @param quality 1 to 100
    QByteArray toJpeg(int quality) const;
    QByteArray toBmp() const;

private:
    const unsigned char *row(int y) const;

    int columns;
    int rows;
    std::vector<unsigned char> bytes; // red, green, blue; rows from the top, without padding
};

} // namespace Korvo::Sample
