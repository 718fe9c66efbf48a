#pragma once

#include "Image.h"

#include <QtCore/QByteArray>

namespace Korvo::Sample {

/// Writes a line of text into a picture, as an inspection camera does: digits, capital letters, blank and "-./:".
/// @param scale  pixels per dot; a character is 5 dots wide and 7 dots high
void drawText(Image &image, int left, int top, int scale, const QByteArray &text);

} // namespace Korvo::Sample
