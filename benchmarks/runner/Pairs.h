#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <functional>

namespace Korvo::Bench {

double median(QVector<double> values);

/// Figures of several rounds of one kind of run.
class Rounds
{
public:
    void add(const QJsonObject &figures) { rounds.append(figures); }

    double medianOf(const QString &figure) const;
    double largestOf(const QString &figure) const;
    double valueOf(int round, const QString &figure) const { return rounds.at(round).value(figure).toDouble(); }
    int count() const { return rounds.size(); }

private:
    QVector<QJsonObject> rounds;
};

/// Two kinds of runs, one after the other in every round, so that what slows the machine down meets both.
struct Pairs
{
    using Run = std::function<QJsonObject(int round)>;

    static Pairs run(int rounds, const Run &ours, const Run &theirs);

    double medianRatio(const QString &figure) const;
    /// "1.71 to 1.80"
    QString spread(const QString &figure) const;

    Rounds library;
    Rounds peer;

private:
    QVector<double> ratios(const QString &figure) const;
};

} // namespace Korvo::Bench
