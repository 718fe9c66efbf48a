#include "Appearance.h"

#include <QtCore/QSettings>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>
#include <QtWidgets/QStyleFactory>

namespace Korvo::Desktop {

namespace {

const QString KEY = QStringLiteral("appearance");

struct Colours
{
    QRgb window, base, alternate, text, quiet, button, highlight, link;
};

constexpr QRgb WHITE = 0xffffffff;

QPalette paletteOf(const Colours &colours)
{
    QPalette palette(QColor(colours.button), QColor(colours.window));
    palette.setColor(QPalette::WindowText, colours.text);
    palette.setColor(QPalette::Base, colours.base);
    palette.setColor(QPalette::AlternateBase, colours.alternate);
    palette.setColor(QPalette::Text, colours.text);
    palette.setColor(QPalette::ButtonText, colours.text);
    palette.setColor(QPalette::ToolTipBase, colours.base);
    palette.setColor(QPalette::ToolTipText, colours.text);
    palette.setColor(QPalette::PlaceholderText, colours.quiet);
    palette.setColor(QPalette::Highlight, colours.highlight);
    palette.setColor(QPalette::HighlightedText, WHITE);
    palette.setColor(QPalette::Link, colours.link);
    palette.setColor(QPalette::LinkVisited, colours.link);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, colours.quiet);
    palette.setColor(QPalette::Disabled, QPalette::Base, colours.window);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, colours.alternate);
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, colours.quiet);
    return palette;
}

} // namespace

QPalette lightPalette()
{
    return paletteOf({0xfff3f5f7, 0xffffffff, 0xfff6f8fa, 0xff1d262e, 0xff586470, 0xfffafbfc, 0xff1f6fb2, 0xff155f9e});
}

QPalette darkPalette()
{
    return paletteOf({0xff23282e, 0xff1b1f24, 0xff20252b, 0xffe4e9ee, 0xff95a1ad, 0xff2e353d, 0xff2d6fae, 0xff79b8f3});
}

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

QColor toneColour(Tone tone, const QPalette &palette)
{
    const bool dark = isDark(palette);
    switch (tone) {
    case Tone::Good:
        return dark ? 0xff6fcf86 : 0xff1c7c3c;
    case Tone::Caution:
        return dark ? 0xffe6b450 : 0xff8a5a00;
    case Tone::Bad:
        return dark ? 0xffff8f86 : 0xffb3261e;
    case Tone::Quiet:
        break;
    }
    return palette.color(QPalette::PlaceholderText).alpha() == 255 ? palette.color(QPalette::PlaceholderText)
                                                                   : palette.color(QPalette::Disabled, QPalette::Text);
}

void applyAppearance(Appearance appearance)
{
    static const QString systemStyle = QApplication::style()->objectName();
    if (appearance == Appearance::System) {
        QApplication::setStyle(QStyleFactory::create(systemStyle));
        QApplication::setPalette(QApplication::style()->standardPalette());
        return;
    }
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(appearance == Appearance::Dark ? darkPalette() : lightPalette());
}

Appearance savedAppearance()
{
    return static_cast<Appearance>(qBound(0, QSettings().value(KEY).toInt(), static_cast<int>(Appearance::Dark)));
}

void saveAppearance(Appearance appearance)
{
    QSettings().setValue(KEY, static_cast<int>(appearance));
}

} // namespace Korvo::Desktop
