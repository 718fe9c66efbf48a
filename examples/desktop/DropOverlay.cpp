#include "DropOverlay.h"

#include "Symbols.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QPainter>

namespace Korvo::Desktop {

QStringList draggedFolders(const QMimeData *data)
{
    QStringList folders;
    const QList<QUrl> urls = data->urls();
    for (const QUrl &url : urls) {
        const QFileInfo info(url.toLocalFile());
        if (!url.isLocalFile() || !info.isDir())
            return {};
        folders.append(QDir::cleanPath(info.absoluteFilePath()));
    }
    return folders;
}

DropOverlay::DropOverlay(QWidget *covered)
    : QWidget(covered)
{
    setObjectName(QStringLiteral("dropOverlay"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void DropOverlay::show(const QStringList &folders)
{
    text = folders.size() == 1 ? tr("Drop to upload \"%1\"").arg(QDir(folders.first()).dirName())
                               : tr("Drop to upload %n folder(s)", nullptr, folders.size());
    setGeometry(parentWidget()->rect());
    raise();
    QWidget::show();
}

void DropOverlay::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ground = palette().color(QPalette::Window);
    ground.setAlphaF(0.9);
    painter.fillRect(rect(), ground);
    const QColor colour = palette().color(QPalette::Link);
    painter.setPen(QPen(colour, 2, Qt::DashLine));
    painter.drawRoundedRect(QRectF(rect()).adjusted(16, 16, -16, -16), 8, 8);
    QFont font = this->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(rect().translated(0, 40), Qt::AlignCenter, text);
    drawSymbol(painter, QRectF(rect().center() - QPoint(32, 60), QSizeF(64, 64)), Symbol::Upload, colour);
}

} // namespace Korvo::Desktop
