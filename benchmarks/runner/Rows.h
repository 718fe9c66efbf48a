#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>

namespace Korvo::Bench {

/// One measured figure beside what it may be at most and what would be good.
struct Row
{
    QString work;
    double value = 0;
    double atMost = 0;
    double reachFor = 0; ///< 0: no wish beyond the limit
    QString unit;
    int digits = 2;

    QString verdict() const;
};

/// A table of rows, as text for a document.
QString rowsTable(const QVector<Row> &rows);

/// A table of texts, the first line of cells being its head.
QString textTable(const QVector<QStringList> &lines);

} // namespace Korvo::Bench
