#pragma once

#include "Transfer.h"

#include <QtCore/QAbstractItemModel>

#include <functional>

namespace Korvo::Desktop {

/// Transfers with their files in flight below them.
///
/// A transfer is addressed by a number that it keeps while others come and go.
class TransferModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Role {
        NumberRole = Qt::UserRole, ///< of the transfer, or of the transfer that a file belongs to
        PercentRole,               ///< negative when nobody can tell
        DetailRole                 ///< the line below the title
    };

    using QAbstractItemModel::QAbstractItemModel;

    /// Puts a transfer on top; its number.
    int add(const Transfer &transfer);
    /// Changes everything about a transfer but its files.
    void change(int number, const std::function<void(Transfer &)> &change);
    void setFiles(int number, const QVector<FileInFlight> &files);
    void setFilePercent(int number, const QString &key, int percent);
    void removeEnded();

    const Transfer *find(int number) const;
    QList<int> numbers() const;
    int numberOf(const std::function<bool(const Transfer &)> &isIt) const;
    bool any(const std::function<bool(const Transfer &)> &isIt) const { return numberOf(isIt) != 0; }

    static QString detail(const Transfer &transfer);

    QModelIndex index(int row, int column = 0, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    struct Row
    {
        int number;
        Transfer transfer;
    };

    int rowOf(int number) const;
    QVariant fileData(const Row &row, const FileInFlight &file, int role) const;

    QVector<Row> rows;
    int lastNumber = 0;
};

} // namespace Korvo::Desktop
