#include "runner/Rows.h"

#include <QtCore/QStringList>

namespace Korvo::Bench {
namespace {

QString number(const Row &row, double value)
{
    return value == 0 ? QStringLiteral("-") : QString::number(value, 'f', row.digits) + QLatin1Char(' ') + row.unit;
}

} // namespace

QString Row::verdict() const
{
    if (value > atMost)
        return QStringLiteral("**above the limit**");
    return reachFor == 0 || value <= reachFor ? QStringLiteral("as wished") : QStringLiteral("within the limit");
}

QString textTable(const QVector<QStringList> &lines)
{
    QString text;
    for (int line = 0; line < lines.size(); ++line) {
        text += QStringLiteral("| ") + lines.at(line).join(QStringLiteral(" | ")) + QStringLiteral(" |\n");
        if (line == 0)
            text += QLatin1Char('|') + QStringLiteral("---|").repeated(lines.at(line).size()) + QLatin1Char('\n');
    }
    return text;
}

QString rowsTable(const QVector<Row> &rows)
{
    QVector<QStringList> lines{{QStringLiteral("Work"), QStringLiteral("Measured"), QStringLiteral("At most"),
                                QStringLiteral("Wished for"), QString()}};
    for (const Row &row : rows)
        lines.append(
            {row.work, number(row, row.value), number(row, row.atMost), number(row, row.reachFor), row.verdict()});
    return textTable(lines);
}

} // namespace Korvo::Bench
