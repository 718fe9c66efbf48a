#include "runner/Pairs.h"

#include <algorithm>

namespace Korvo::Bench {

double median(QVector<double> values)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const int middle = values.size() / 2;
    return values.size() % 2 == 1 ? values.at(middle) : (values.at(middle - 1) + values.at(middle)) / 2;
}

double Rounds::medianOf(const QString &figure) const
{
    QVector<double> values;
    for (int round = 0; round < count(); ++round)
        values.append(valueOf(round, figure));
    return median(values);
}

double Rounds::largestOf(const QString &figure) const
{
    double largest = 0;
    for (int round = 0; round < count(); ++round)
        largest = qMax(largest, valueOf(round, figure));
    return largest;
}

Pairs Pairs::run(int rounds, const Run &ours, const Run &theirs)
{
    Pairs pairs;
    for (int round = 0; round < rounds; ++round) {
        pairs.library.add(ours(round));
        pairs.peer.add(theirs(round));
    }
    return pairs;
}

QVector<double> Pairs::ratios(const QString &figure) const
{
    QVector<double> found;
    for (int round = 0; round < library.count(); ++round)
        found.append(library.valueOf(round, figure) / peer.valueOf(round, figure));
    return found;
}

double Pairs::medianRatio(const QString &figure) const
{
    return median(ratios(figure));
}

QString Pairs::spread(const QString &figure) const
{
    const QVector<double> found = ratios(figure);
    const auto [least, most] = std::minmax_element(found.cbegin(), found.cend());
    return QStringLiteral("%1 to %2").arg(*least, 0, 'f', 2).arg(*most, 0, 'f', 2);
}

} // namespace Korvo::Bench
