#include "LogModel.h"

#include <QtCore/QStringList>

namespace Korvo::Desktop {

namespace {

const QString TIME_FORMAT = QStringLiteral("HH:mm:ss.zzz");

} // namespace

void LogModel::add(const LogLine &line)
{
    if (lines.size() == mostLines) {
        beginRemoveRows({}, 0, 0);
        lines.removeFirst();
        endRemoveRows();
    }
    beginInsertRows({}, lines.size(), lines.size());
    lines.append(line);
    endInsertRows();
}

void LogModel::clear()
{
    beginResetModel();
    lines.clear();
    endResetModel();
}

QString LogModel::asText() const
{
    QStringList text;
    for (int row = 0; row < lines.size(); ++row) {
        QStringList cells;
        for (int column = 0; column < ColumnCount; ++column)
            cells.append(index(row, column).data().toString());
        text.append(cells.join(QLatin1Char('\t')));
    }
    return text.join(QLatin1Char('\n'));
}

int LogModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : lines.size();
}

int LogModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LogModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)
        || role != Qt::DisplayRole)
        return {};
    const LogLine &line = lines.at(index.row());
    switch (index.column()) {
    case Time:
        return line.time.toString(TIME_FORMAT);
    case Level:
        return line.type == QtCriticalMsg ? tr("Failure") : line.type == QtWarningMsg ? tr("Warning") : tr("Note");
    case Category:
        return line.category;
    default:
        return line.text.simplified();
    }
}

QVariant LogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Time:
        return tr("Time");
    case Level:
        return tr("Level");
    case Category:
        return tr("From");
    case Text:
        return tr("Text");
    default:
        return {};
    }
}

} // namespace Korvo::Desktop
