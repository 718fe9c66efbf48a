#include "faults/Outcome.h"

namespace Korvo::Web::Faults {

namespace {

QString listed(const QStringList &texts)
{
    return texts.isEmpty() ? QStringLiteral("nothing") : texts.join(QStringLiteral(", "));
}

QStringList counted(const QMap<QString, int> &times)
{
    QStringList texts;
    for (auto entry = times.cbegin(); entry != times.cend(); ++entry) {
        if (entry.value() > 0)
            texts.append(QStringLiteral("%1 x %2").arg(entry.key()).arg(entry.value()));
    }
    return texts;
}

void compare(QStringList &words, const char *what, const QStringList &expected, const QStringList &seen)
{
    if (expected != seen)
        words.append(
            QStringLiteral("%1: expected %2; seen %3").arg(QLatin1String(what), listed(expected), listed(seen)));
}

} // namespace

QString numberInWords(int number)
{
    return number > 1 ? QStringLiteral("several") : QString::number(number);
}

QString partsLine(int number, const QString &state)
{
    const QString numberText = state == QLatin1String("open") ? QStringLiteral("some") : numberInWords(number);
    return numberText + QStringLiteral(" in parts ") + state;
}

QStringList differences(const Outcome &expected, const Outcome &seen)
{
    QStringList words;
    compare(words, "signals", expected.heard, seen.heard);
    compare(words, "log", expected.log, seen.log);
    compare(words, "requests", counted(expected.sent), counted(seen.sent));
    compare(words, "on disk", expected.disk, seen.disk);
    compare(words, "on the platform", expected.stored, seen.stored);
    compare(words, "state", {expected.state}, {seen.state});
    return words;
}

} // namespace Korvo::Web::Faults
