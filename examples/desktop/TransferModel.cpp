#include "TransferModel.h"

#include "ErrorText.h"

#include <algorithm>

namespace Korvo::Desktop {

namespace {

constexpr int UNKNOWN_PERCENT = -1;

int percentOf(const Transfer &transfer)
{
    const bool silent = transfer.kind == Transfer::Kind::SingleFile || transfer.filesTotal < 0;
    if (transfer.stage == Transfer::Stage::Done)
        return 100;
    return silent && !transfer.hasEnded() && transfer.stage != Transfer::Stage::Paused ? UNKNOWN_PERCENT
                                                                                       : transfer.percent;
}

} // namespace

int TransferModel::add(const Transfer &transfer)
{
    beginInsertRows({}, 0, 0);
    rows.prepend({++lastNumber, transfer});
    endInsertRows();
    return lastNumber;
}

void TransferModel::change(int number, const std::function<void(Transfer &)> &change)
{
    const int row = rowOf(number);
    if (row < 0)
        return;
    change(rows[row].transfer);
    Q_EMIT dataChanged(index(row), index(row));
}

void TransferModel::setFiles(int number, const QVector<FileInFlight> &files)
{
    const int row = rowOf(number);
    if (row < 0)
        return;
    QVector<FileInFlight> &current = rows[row].transfer.files;
    const auto holds = [](const QVector<FileInFlight> &list, const QString &key) {
        return std::any_of(list.begin(), list.end(), [&](const FileInFlight &file) { return file.key == key; });
    };
    for (int i = current.size() - 1; i >= 0; --i) {
        if (holds(files, current.at(i).key))
            continue;
        beginRemoveRows(index(row), i, i);
        current.remove(i);
        endRemoveRows();
    }
    for (const FileInFlight &file : files) {
        if (holds(current, file.key))
            continue;
        beginInsertRows(index(row), current.size(), current.size());
        current.append(file);
        endInsertRows();
    }
}

void TransferModel::setFilePercent(int number, const QString &key, int percent)
{
    const int row = rowOf(number);
    if (row < 0)
        return;
    QVector<FileInFlight> &files = rows[row].transfer.files;
    for (int i = 0; i < files.size(); ++i) {
        if (files.at(i).key != key || files.at(i).percent == percent)
            continue;
        files[i].percent = percent;
        const QModelIndex changed = index(i, 0, index(row));
        Q_EMIT dataChanged(changed, changed);
    }
}

void TransferModel::removeEnded()
{
    for (int row = rows.size() - 1; row >= 0; --row) {
        if (!rows.at(row).transfer.hasEnded())
            continue;
        beginRemoveRows({}, row, row);
        rows.remove(row);
        endRemoveRows();
    }
}

const Transfer *TransferModel::find(int number) const
{
    const int row = rowOf(number);
    return row < 0 ? nullptr : &rows.at(row).transfer;
}

QList<int> TransferModel::numbers() const
{
    QList<int> list;
    for (const Row &row : rows)
        list.append(row.number);
    return list;
}

int TransferModel::numberOf(const std::function<bool(const Transfer &)> &isIt) const
{
    for (const Row &row : rows) {
        if (isIt(row.transfer))
            return row.number;
    }
    return 0;
}

int TransferModel::rowOf(int number) const
{
    for (int row = 0; row < rows.size(); ++row) {
        if (rows.at(row).number == number)
            return row;
    }
    return -1;
}

// A file carries the number of its transfer, a transfer carries none: rows move, numbers do not.
QModelIndex TransferModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    const quintptr owner = parent.isValid() ? quintptr(rows.at(parent.row()).number) : 0;
    return createIndex(row, column, owner);
}

QModelIndex TransferModel::parent(const QModelIndex &child) const
{
    if (!child.isValid() || child.internalId() == 0)
        return {};
    const int row = rowOf(int(child.internalId()));
    return row < 0 ? QModelIndex() : createIndex(row, 0, quintptr(0));
}

int TransferModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return rows.size();
    const bool isTransfer = parent.internalId() == 0 && parent.column() == 0 && parent.row() < rows.size();
    return isTransfer ? rows.at(parent.row()).transfer.files.size() : 0;
}

int TransferModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant TransferModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const QModelIndex owner = index.parent();
    if (owner.isValid()) {
        const Row &row = rows.at(owner.row());
        return fileData(row, row.transfer.files.at(index.row()), role);
    }
    const Row &row = rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return row.transfer.title;
    case NumberRole:
        return row.number;
    case PercentRole:
        return percentOf(row.transfer);
    case DetailRole:
        return detail(row.transfer);
    case Qt::AccessibleTextRole:
        return QString(row.transfer.title + QLatin1String(", ") + detail(row.transfer));
    default:
        return {};
    }
}

QVariant TransferModel::fileData(const Row &row, const FileInFlight &file, int role) const
{
    switch (role) {
    case Qt::DisplayRole:
        return file.name;
    case NumberRole:
        return row.number;
    case PercentRole:
        return file.percent;
    case Qt::AccessibleTextRole:
        return tr("%1, %2 %").arg(file.name, QString::number(file.percent));
    default:
        return {};
    }
}

QString TransferModel::detail(const Transfer &transfer)
{
    const QString files = transfer.filesTotal < 0
                              ? QString()
                              : tr("%1 of %n file(s)", nullptr, transfer.filesTotal).arg(transfer.filesCompleted)
                                    + QStringLiteral(" · ");
    switch (transfer.stage) {
    case Transfer::Stage::Starting:
        return tr("Starting…");
    case Transfer::Stage::Running:
        return transfer.filesTotal < 0 ? tr("On its way…") : files + tr("%1 %").arg(transfer.percent);
    case Transfer::Stage::Paused:
        return files + tr("paused");
    case Transfer::Stage::LastFiles:
        return files + tr("last files, %1 %").arg(transfer.percent);
    case Transfer::Stage::Confirming:
        return files + tr("waiting for the platform's confirmation…");
    case Transfer::Stage::Aborting:
        return tr("Aborting…");
    case Transfer::Stage::Done:
        break;
    case Transfer::Stage::Incomplete:
        return files + tr("not complete, try again");
    case Transfer::Stage::Failed:
        return tr("Failed: %1").arg(explain(transfer.error).title);
    case Transfer::Stage::Aborted:
        return transfer.note.isEmpty() ? tr("Aborted") : tr("Aborted. %1").arg(transfer.note);
    }
    const QString end = transfer.isUpload() ? tr("Uploaded") : tr("Downloaded");
    const QString count
        = transfer.filesTotal < 0 ? QString() : QStringLiteral(" · ") + tr("%n file(s)", nullptr, transfer.filesTotal);
    return end + count + (transfer.note.isEmpty() ? QString() : QStringLiteral(" · ") + transfer.note);
}

} // namespace Korvo::Desktop
