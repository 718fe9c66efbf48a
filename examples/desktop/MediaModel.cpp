#include "MediaModel.h"

#include "Appearance.h"
#include "Symbols.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>
#include <QtGui/QPixmap>

namespace Korvo::Desktop {

const QSize MediaModel::THUMBNAIL_SIZE(160, 120);

namespace {

MediaModel::State firstState(const Web::SingleMediaFileLinkData &link)
{
    return link.type == QLatin1String("video") ? MediaModel::State::Video : MediaModel::State::Waiting;
}

// What is shown until there is a picture, or instead of one.
QPixmap tile(Symbol symbol)
{
    constexpr int SYMBOL_SIDE = 40;
    const QPalette palette = QGuiApplication::palette();
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap pixmap(MediaModel::THUMBNAIL_SIZE * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ground = palette.color(QPalette::Text);
    ground.setAlphaF(0.08);
    const QRectF area(QPointF(0, 0), MediaModel::THUMBNAIL_SIZE);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(area, 4, 4);
    QRectF middle(0, 0, SYMBOL_SIDE, SYMBOL_SIDE);
    middle.moveCenter(area.center());
    drawSymbol(painter, middle, symbol, toneColour(Tone::Quiet, palette));
    return pixmap;
}

QPixmap framed(const QImage &thumbnail)
{
    const qreal ratio = thumbnail.devicePixelRatio();
    QPixmap pixmap(MediaModel::THUMBNAIL_SIZE * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    const QSizeF size = QSizeF(thumbnail.size()) / ratio;
    const QPointF corner((MediaModel::THUMBNAIL_SIZE.width() - size.width()) / 2,
                         (MediaModel::THUMBNAIL_SIZE.height() - size.height()) / 2);
    painter.drawImage(corner, thumbnail);
    return pixmap;
}

} // namespace

void MediaModel::setLinks(const QList<Web::SingleMediaFileLinkData> &newLinks)
{
    beginResetModel();
    rows.clear();
    for (const Web::SingleMediaFileLinkData &link : newLinks)
        rows.append({link, firstState(link), {}});
    endResetModel();
}

void MediaModel::setThumbnail(int row, const QImage &thumbnail)
{
    rows[row].thumbnail = thumbnail;
    rows[row].state = State::Shown;
    Q_EMIT dataChanged(index(row), index(row));
}

void MediaModel::setFailed(int row)
{
    rows[row].state = State::Failed;
    Q_EMIT dataChanged(index(row), index(row));
}

int MediaModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : rows.size();
}

QVariant MediaModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Row &row = rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return row.link.name;
    case StateRole:
        return static_cast<int>(row.state);
    case LinkRole:
        return row.link.url;
    case Qt::DecorationRole:
        break;
    default:
        return {};
    }
    switch (row.state) {
    case State::Shown:
        return framed(row.thumbnail);
    case State::Video:
        return tile(Symbol::Film);
    case State::Failed:
        return tile(Symbol::Warning);
    case State::Waiting:
        break;
    }
    return tile(Symbol::Pictures);
}

} // namespace Korvo::Desktop
