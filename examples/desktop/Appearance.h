#pragma once

#include <QtGui/QColor>
#include <QtGui/QPalette>

namespace Korvo::Desktop {

enum class Appearance { System, Light, Dark };

/// Sets style and palette of the whole program.
void applyAppearance(Appearance appearance);
Appearance savedAppearance();
void saveAppearance(Appearance appearance);

QPalette lightPalette();
QPalette darkPalette();
bool isDark(const QPalette &palette);

enum class Tone { Good, Caution, Bad, Quiet };

/// A text colour that is readable on the palette's base and window.
QColor toneColour(Tone tone, const QPalette &palette);

} // namespace Korvo::Desktop
