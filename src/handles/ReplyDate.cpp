#include "handles/ReplyDate.h"

#include <QtCore/QString>

namespace Korvo::Web {

namespace {

constexpr char SHAPE[] = "0000-00-00T00:00:00"; // a zero stands for any digit
constexpr int SHAPE_LENGTH = sizeof SHAPE - 1;
constexpr int MAX_FRACTION_DIGITS = 3;

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

bool beginsWithClockReading(const QString &text)
{
    if (text.size() < SHAPE_LENGTH)
        return false;
    for (int i = 0; i < SHAPE_LENGTH; ++i) {
        const bool fits = SHAPE[i] == '0' ? isDigit(text.at(i)) : text.at(i) == QLatin1Char(SHAPE[i]);
        if (!fits)
            return false;
    }
    return true;
}

int number(const QString &text, int start, int digits)
{
    int value = 0;
    for (int i = start; i < start + digits; ++i)
        value = value * 10 + (text.at(i).unicode() - '0');
    return value;
}

/// What the clock reading at the beginning of the text says; null when there is no such day or time.
QDateTime readingOf(const QString &text, int milliseconds, Qt::TimeSpec spec)
{
    const QDate date(number(text, 0, 4), number(text, 5, 2), number(text, 8, 2));
    const QTime time(number(text, 11, 2), number(text, 14, 2), number(text, 17, 2), milliseconds);
    return time.isValid() ? QDateTime(date, time, spec) : QDateTime(); // an invalid time would count as midnight
}

/// Milliseconds behind the clock reading of a text that ends with "Z"; -1 when it is better left to Qt.
int millisecondsOf(const QString &text)
{
    const int digits = text.size() - SHAPE_LENGTH - 2; // between "." and "Z"
    if (digits == -1)
        return 0;
    if (digits < 1 || digits > MAX_FRACTION_DIGITS || text.at(SHAPE_LENGTH) != QLatin1Char('.'))
        return -1;
    int value = 0;
    for (int i = 1; i <= MAX_FRACTION_DIGITS; ++i) {
        const QChar digit = i <= digits ? text.at(SHAPE_LENGTH + i) : QLatin1Char('0');
        if (!isDigit(digit))
            return -1;
        value = value * 10 + (digit.unicode() - '0');
    }
    return value;
}

QDateTime plainUtcDate(const QString &text)
{
    if (!text.endsWith(QLatin1Char('Z')) || !beginsWithClockReading(text))
        return {};
    const int milliseconds = millisecondsOf(text);
    return milliseconds < 0 ? QDateTime() : readingOf(text, milliseconds, Qt::UTC);
}

} // namespace

QDateTime projectDateFrom(const QString &text)
{
    if (beginsWithClockReading(text)) {
        if (text.size() > SHAPE_LENGTH) // a fraction or a zone: users of the list can tell by the missing date
            return {};
        const QDateTime date = readingOf(text, 0, Qt::LocalTime);
        if (date.isValid())
            return date;
    }
    return QDateTime::fromString(text, QStringLiteral("yyyy-MM-ddThh:mm:ss"));
}

QDateTime isoDateFrom(const QString &text)
{
    const QDateTime date = plainUtcDate(text);
    return date.isValid() ? date : QDateTime::fromString(text, Qt::ISODate);
}

} // namespace Korvo::Web
