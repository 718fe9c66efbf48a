#pragma once

#include <QtCore/QStringList>
#include <QtWidgets/QWidget>

class QMimeData;

namespace Korvo::Desktop {

/// The local folders of what is dragged; empty unless there are only folders.
QStringList draggedFolders(const QMimeData *data);

/// Lies over a window while folders are dragged across it.
class DropOverlay : public QWidget
{
    Q_OBJECT
public:
    explicit DropOverlay(QWidget *covered);

    void show(const QStringList &folders);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString text;
};

} // namespace Korvo::Desktop
