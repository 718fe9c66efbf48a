#include "Text.h"

#include "Console.h"

#include <QtCore/QVector>

#include <algorithm>
#include <iterator>

namespace Korvo::Cli {

namespace {

constexpr double KILO = 1e3;
constexpr double MEGA = 1e6;
constexpr double GIGA = 1e9;

struct Range
{
    uint first;
    uint last;
};

// Letters that take two columns: the blocks of East Asia, and pictographs.
constexpr Range WIDE[] = {{0x1100, 0x115F}, {0x2E80, 0x303E}, {0x3041, 0xA4CF}, {0xA960, 0xA97F}, {0xAC00, 0xD7A3},
                          {0xF900, 0xFAFF}, {0xFE30, 0xFE6F}, {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F},
                          {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

bool isWide(uint letter)
{
    return std::any_of(std::begin(WIDE), std::end(WIDE),
                       [letter](Range range) { return letter >= range.first && letter <= range.last; });
}

bool isUnseen(uint letter)
{
    switch (QChar::category(letter)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
        return true;
    default:
        return false;
    }
}

// Controls, and the invisible letters that turn the direction of writing or end the line.
bool isDangerous(uint letter)
{
    switch (QChar::category(letter)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

int widthOf(uint letter)
{
    if (isUnseen(letter))
        return 0;
    return isWide(letter) ? 2 : 1;
}

QString decimal(double value, const QString &unit)
{
    return QString::number(value, 'f', 1) + QLatin1Char(' ') + unit;
}

} // namespace

QString shownName(const QString &name)
{
    constexpr uint LAST_ASCII = 0x7E;
    const bool unicode = Console::showsUnicode();
    QVector<uint> letters = name.toUcs4();
    for (uint &letter : letters) {
        if (isDangerous(letter) || (!unicode && letter > LAST_ASCII))
            letter = '?';
    }
    return QString::fromUcs4(letters.constData(), letters.size());
}

int displayWidth(const QString &text)
{
    int width = 0;
    for (const uint letter : text.toUcs4())
        width += widthOf(letter);
    return width;
}

QString fitted(const QString &text, int width)
{
    const int textWidth = displayWidth(text);
    if (textWidth <= width)
        return text + QString(width - textWidth, QLatin1Char(' '));
    const QString mark = Console::showsUnicode() ? QString(QChar(0x2026)) : QStringLiteral("~");
    QVector<uint> letters = text.toUcs4();
    int left = textWidth;
    while (!letters.isEmpty() && left > width - 1) {
        left -= widthOf(letters.first());
        letters.removeFirst();
    }
    const QString rest = QString::fromUcs4(letters.constData(), letters.size());
    return (width > 0 ? mark : QString()) + rest + QString(std::max(0, width - 1 - left), QLatin1Char(' '));
}

QString sizeText(qint64 bytes)
{
    const auto value = static_cast<double>(bytes);
    if (value < KILO)
        return QString::number(bytes) + QStringLiteral(" B");
    if (value < MEGA)
        return decimal(value / KILO, QStringLiteral("kB"));
    return value < GIGA ? decimal(value / MEGA, QStringLiteral("MB")) : decimal(value / GIGA, QStringLiteral("GB"));
}

QString rateText(double bytesPerSecond)
{
    return sizeText(static_cast<qint64>(bytesPerSecond)) + QStringLiteral("/s");
}

QString durationText(qint64 milliseconds)
{
    const qint64 seconds = (milliseconds + 500) / 1000;
    const QString tail = QStringLiteral("%1:%2").arg(seconds / 60 % 60, seconds < 3600 ? 1 : 2, 10, QLatin1Char('0'))
                             .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    return seconds < 3600 ? tail : QString::number(seconds / 3600) + QLatin1Char(':') + tail;
}

QString secondsText(qint64 milliseconds)
{
    return decimal(static_cast<double>(milliseconds) / KILO, QStringLiteral("s"));
}

QString fileCount(int count)
{
    return QString::number(count) + (count == 1 ? QStringLiteral(" file") : QStringLiteral(" files"));
}

} // namespace Korvo::Cli
