#pragma once

#include "LogCollector.h"

#include <QtCore/QAbstractTableModel>
#include <QtCore/QVector>

namespace Korvo::Desktop {

/// The lines of the library's log, the oldest first.
class LogModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { Time, Level, Category, Text, ColumnCount };

    static constexpr int USUAL_LINES = 5000;

    /// @param linesToKeep  when there are more, the oldest go
    explicit LogModel(int linesToKeep = USUAL_LINES)
        : mostLines(linesToKeep)
    {
    }

    void add(const LogLine &line);
    void clear();
    QString asText() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    const int mostLines;
    QVector<LogLine> lines;
};

} // namespace Korvo::Desktop
