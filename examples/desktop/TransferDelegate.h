#pragma once

#include <QtWidgets/QStyledItemDelegate>

namespace Korvo::Desktop {

class TransferModel;

/// Draws a transfer as title, bar and a line of detail, and a file in flight as a slim bar below it.
class TransferDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    TransferDelegate(const TransferModel &shownModel, QObject *parent);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    void paintTransfer(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintFile(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;

    const TransferModel &model;
};

} // namespace Korvo::Desktop
