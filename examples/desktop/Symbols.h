#pragma once

#include <QtGui/QIcon>

namespace Korvo::Desktop {

enum class Symbol {
    Upload,
    Download,
    Pictures,
    Data,
    Refresh,
    Pause,
    Resume,
    Abort,
    OpenFolder,
    Broom,
    User,
    Globe,
    Warning,
    Check,
    Film,
    Log,
    Transfers
};

/// An icon drawn in the text colour of the palette in force, sharp at every size.
QIcon symbolIcon(Symbol symbol);

/// Draws the symbol into @p area in the colour given.
void drawSymbol(QPainter &painter, const QRectF &area, Symbol symbol, const QColor &colour);

/// The program's own icon.
QIcon programIcon();

} // namespace Korvo::Desktop
