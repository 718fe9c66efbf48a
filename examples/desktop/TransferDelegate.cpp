#include "TransferDelegate.h"

#include "Appearance.h"
#include "Symbols.h"
#include "TransferModel.h"

#include <QtGui/QPainter>
#include <QtWidgets/QApplication>

namespace Korvo::Desktop {

namespace {

constexpr int MARGIN = 10;
constexpr int SYMBOL_SIDE = 22;
constexpr int BAR_WIDTH = 220;
constexpr int BAR_HEIGHT = 8;
constexpr int FILE_BAR_HEIGHT = 5;
constexpr int PERCENT_WIDTH = 48;
constexpr int UNKNOWN_SEGMENT = 40;

using Stage = Transfer::Stage;

Symbol symbolOf(const Transfer &transfer)
{
    switch (transfer.stage) {
    case Stage::Done:
        return Symbol::Check;
    case Stage::Incomplete:
    case Stage::Failed:
        return Symbol::Warning;
    case Stage::Aborting:
    case Stage::Aborted:
        return Symbol::Abort;
    case Stage::Paused:
        return Symbol::Pause;
    default:
        return transfer.isUpload() ? Symbol::Upload : Symbol::Download;
    }
}

QColor colourOf(const Transfer &transfer, const QPalette &palette)
{
    switch (transfer.stage) {
    case Stage::Done:
        return toneColour(Tone::Good, palette);
    case Stage::Failed:
        return toneColour(Tone::Bad, palette);
    case Stage::Incomplete:
    case Stage::Paused:
        return toneColour(Tone::Caution, palette);
    case Stage::Aborting:
    case Stage::Aborted:
        return toneColour(Tone::Quiet, palette);
    default:
        return palette.color(QPalette::Highlight);
    }
}

void drawBar(QPainter &painter, const QRect &area, int percent, const QColor &colour, const QPalette &palette)
{
    const qreal radius = area.height() / 2.0;
    QColor groove = palette.color(QPalette::Text);
    groove.setAlphaF(0.14);
    painter.setPen(Qt::NoPen);
    painter.setBrush(groove);
    painter.drawRoundedRect(area, radius, radius);
    QRect filled = area;
    if (percent < 0)
        filled.setWidth(UNKNOWN_SEGMENT);
    else
        filled.setWidth(area.width() * percent / 100);
    painter.setBrush(colour);
    if (filled.width() > 0)
        painter.drawRoundedRect(filled.adjusted(0, 0, qMax(0, area.height() - filled.width()), 0), radius, radius);
}

void drawBackground(QPainter &painter, const QStyleOptionViewItem &option)
{
    if (option.state & QStyle::State_Selected) {
        QColor colour = option.palette.color(QPalette::Highlight);
        colour.setAlphaF(option.state & QStyle::State_Active ? 0.22 : 0.12);
        painter.fillRect(option.rect, colour);
    }
    if (!(option.state & QStyle::State_HasFocus))
        return;
    painter.setPen(QPen(option.palette.color(QPalette::Highlight), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(option.rect.adjusted(0, 0, -1, -1));
}

} // namespace

TransferDelegate::TransferDelegate(const TransferModel &shownModel, QObject *parent)
    : QStyledItemDelegate(parent)
    , model(shownModel)
{
}

QSize TransferDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const int line = option.fontMetrics.height();
    return {BAR_WIDTH * 2, index.parent().isValid() ? line + 6 : 2 * line + 18};
}

void TransferDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (index.parent().isValid())
        paintFile(*painter, option, index);
    else
        paintTransfer(*painter, option, index);
    painter->restore();
}

void TransferDelegate::paintTransfer(QPainter &painter, const QStyleOptionViewItem &option,
                                     const QModelIndex &index) const
{
    const Transfer *const transfer = model.find(index.data(TransferModel::NumberRole).toInt());
    if (!transfer)
        return;
    drawBackground(painter, option);
    const QRect area = option.rect.adjusted(MARGIN, 7, -MARGIN, -7);
    const QColor colour = colourOf(*transfer, option.palette);
    drawSymbol(painter, QRectF(area.left(), area.center().y() - SYMBOL_SIDE / 2, SYMBOL_SIDE, SYMBOL_SIDE),
               symbolOf(*transfer),
               transfer->hasEnded() || transfer->stage == Stage::Paused ? colour
                                                                        : option.palette.color(QPalette::Text));
    QRect text = area.adjusted(SYMBOL_SIDE + MARGIN, 0, 0, 0);
    const bool showsBar = !transfer->hasEnded();
    if (showsBar)
        text.setRight(area.right() - BAR_WIDTH - 2 * MARGIN);

    QFont bold = option.font;
    bold.setBold(true);
    painter.setFont(bold);
    painter.setPen(option.palette.color(QPalette::Text));
    const QFontMetrics metrics(bold);
    painter.drawText(text, Qt::AlignLeft | Qt::AlignTop,
                     metrics.elidedText(transfer->title, Qt::ElideRight, text.width()));

    painter.setFont(option.font);
    painter.setPen(transfer->stage == Stage::Failed || transfer->stage == Stage::Incomplete
                       ? colour
                       : toneColour(Tone::Quiet, option.palette));
    painter.drawText(text, Qt::AlignLeft | Qt::AlignBottom,
                     option.fontMetrics.elidedText(TransferModel::detail(*transfer), Qt::ElideRight, text.width()));
    if (!showsBar)
        return;
    const QRect bar(area.right() - BAR_WIDTH, area.center().y() - BAR_HEIGHT / 2, BAR_WIDTH, BAR_HEIGHT);
    drawBar(painter, bar, index.data(TransferModel::PercentRole).toInt(), colour, option.palette);
}

void TransferDelegate::paintFile(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    drawBackground(painter, option);
    const QRect area = option.rect.adjusted(MARGIN, 0, -MARGIN, 0);
    QRect text = area.adjusted(SYMBOL_SIDE + MARGIN, 0, 0, 0);
    text.setRight(area.right() - BAR_WIDTH - 2 * MARGIN);
    painter.setPen(toneColour(Tone::Quiet, option.palette));
    painter.drawText(
        text, Qt::AlignLeft | Qt::AlignVCenter,
        option.fontMetrics.elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideMiddle, text.width()));
    const int percent = index.data(TransferModel::PercentRole).toInt();
    const QRect bar(area.right() - BAR_WIDTH, area.center().y() - FILE_BAR_HEIGHT / 2, BAR_WIDTH - PERCENT_WIDTH,
                    FILE_BAR_HEIGHT);
    drawBar(painter, bar, percent, option.palette.color(QPalette::Highlight), option.palette);
    painter.setPen(toneColour(Tone::Quiet, option.palette));
    painter.drawText(QRect(area.right() - PERCENT_WIDTH, area.top(), PERCENT_WIDTH, area.height()),
                     Qt::AlignRight | Qt::AlignVCenter, tr("%1 %").arg(percent));
}

} // namespace Korvo::Desktop
