#include "Symbols.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QIconEngine>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>
#include <QtGui/QPalette>

namespace Korvo::Desktop {

namespace {

// Symbols are drawn on a square of this side, with lines of this width.
constexpr qreal SIDE = 24;
constexpr qreal LINE = 1.8;

QPainterPath line(std::initializer_list<QPointF> points)
{
    QPainterPath path(*points.begin());
    for (const QPointF *point = points.begin() + 1; point != points.end(); ++point)
        path.lineTo(*point);
    return path;
}

QPainterPath arrow(bool up)
{
    const qreal tip = up ? 4 : 15;
    const qreal wing = up ? 9 : 10;
    QPainterPath path = line({{12, 4}, {12, 15}});
    path.addPath(line({{7, wing}, {12, tip}, {17, wing}}));
    path.addPath(line({{4, 16}, {4, 20}, {20, 20}, {20, 16}}));
    return path;
}

QPainterPath picture()
{
    QPainterPath path;
    path.addRoundedRect(QRectF(3, 5, 18, 14), 2, 2);
    path.addEllipse(QPointF(8.5, 10), 1.6, 1.6);
    path.addPath(line({{4, 18}, {10, 13}, {13, 16}, {16, 12}, {21, 17}}));
    return path;
}

QPainterPath table()
{
    QPainterPath path;
    path.addRoundedRect(QRectF(4, 4, 16, 16), 2, 2);
    path.addPath(line({{4, 9}, {20, 9}}));
    path.addPath(line({{4, 14.5}, {20, 14.5}}));
    path.addPath(line({{10, 9}, {10, 20}}));
    return path;
}

QPainterPath turningArrow()
{
    QPainterPath path;
    path.arcMoveTo(QRectF(4.5, 4.5, 15, 15), 30);
    path.arcTo(QRectF(4.5, 4.5, 15, 15), 30, 290);
    path.addPath(line({{19.6, 4}, {18.8, 8.6}, {14.2, 8}}));
    return path;
}

QPainterPath folder()
{
    return line({{3, 19}, {3, 5.5}, {9, 5.5}, {11, 8}, {21, 8}, {21, 19}, {3, 19}});
}

QPainterPath broom()
{
    QPainterPath path = line({{19, 4}, {12.5, 11}});
    path.addPath(line({{9, 9.5}, {14.5, 14.5}, {11, 20}, {4, 14}, {9, 9.5}}));
    path.addPath(line({{8, 17}, {10.5, 14}}));
    return path;
}

QPainterPath user()
{
    QPainterPath path;
    path.addEllipse(QPointF(12, 8), 4, 4);
    path.moveTo(4.5, 20);
    path.cubicTo(5, 12.5, 19, 12.5, 19.5, 20);
    return path;
}

QPainterPath globe()
{
    QPainterPath path;
    path.addEllipse(QPointF(12, 12), 8.5, 8.5);
    path.addEllipse(QPointF(12, 12), 3.8, 8.5);
    path.addPath(line({{3.5, 12}, {20.5, 12}}));
    return path;
}

QPainterPath warning()
{
    QPainterPath path = line({{12, 4}, {21, 19.5}, {3, 19.5}, {12, 4}});
    path.addPath(line({{12, 10}, {12, 14}}));
    path.addPath(line({{12, 16.6}, {12, 16.9}}));
    return path;
}

QPainterPath film()
{
    QPainterPath path;
    path.addRoundedRect(QRectF(3, 5, 18, 14), 2, 2);
    path.addPath(line({{10, 9}, {15, 12}, {10, 15}, {10, 9}}));
    return path;
}

QPainterPath lines()
{
    QPainterPath path = line({{5, 6.5}, {19, 6.5}});
    path.addPath(line({{5, 12}, {19, 12}}));
    path.addPath(line({{5, 17.5}, {14, 17.5}}));
    return path;
}

QPainterPath twoArrows()
{
    QPainterPath path = line({{8, 19}, {8, 5}});
    path.addPath(line({{4, 9}, {8, 5}, {12, 9}}));
    path.addPath(line({{16, 5}, {16, 19}}));
    path.addPath(line({{12, 15}, {16, 19}, {20, 15}}));
    return path;
}

QPainterPath twoLines(const QLineF &first, const QLineF &second)
{
    QPainterPath path = line({first.p1(), first.p2()});
    path.addPath(line({second.p1(), second.p2()}));
    return path;
}

QPainterPath pathOf(Symbol symbol)
{
    switch (symbol) {
    case Symbol::Upload:
        return arrow(true);
    case Symbol::Download:
        return arrow(false);
    case Symbol::Pictures:
        return picture();
    case Symbol::Data:
        return table();
    case Symbol::Refresh:
        return turningArrow();
    case Symbol::Pause:
        return twoLines({9, 6, 9, 18}, {15, 6, 15, 18});
    case Symbol::Resume:
        return line({{8, 5.5}, {18, 12}, {8, 18.5}, {8, 5.5}});
    case Symbol::Abort:
        return twoLines({6.5, 6.5, 17.5, 17.5}, {17.5, 6.5, 6.5, 17.5});
    case Symbol::OpenFolder:
        return folder();
    case Symbol::Broom:
        return broom();
    case Symbol::User:
        return user();
    case Symbol::Globe:
        return globe();
    case Symbol::Warning:
        return warning();
    case Symbol::Check:
        return line({{5, 12.5}, {10, 17.5}, {19, 7}});
    case Symbol::Film:
        return film();
    case Symbol::Log:
        return lines();
    case Symbol::Transfers:
        return twoArrows();
    }
    return {};
}

QColor colourFor(QIcon::Mode mode)
{
    const QPalette palette = QGuiApplication::palette();
    switch (mode) {
    case QIcon::Disabled:
        return palette.color(QPalette::Disabled, QPalette::ButtonText);
    case QIcon::Selected:
        return palette.color(QPalette::HighlightedText);
    case QIcon::Normal:
    case QIcon::Active:
        break;
    }
    return palette.color(QPalette::ButtonText);
}

class SymbolEngine : public QIconEngine
{
public:
    explicit SymbolEngine(Symbol drawnSymbol)
        : symbol(drawnSymbol)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        drawSymbol(*painter, rect, symbol, colourFor(mode));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, pixmap.rect(), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new SymbolEngine(symbol); }

private:
    const Symbol symbol;
};

void drawProgramIcon(QPainter &painter, qreal side)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / SIDE, side / SIDE);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xff1f6fb2));
    painter.drawRoundedRect(QRectF(1, 1, 22, 22), 5, 5);
    // A pipe seen from within.
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, 1.8));
    for (const qreal radius : {7.5, 4.6, 2.0})
        painter.drawEllipse(QPointF(12, 12), radius, radius);
}

} // namespace

QIcon symbolIcon(Symbol symbol)
{
    return QIcon(new SymbolEngine(symbol));
}

void drawSymbol(QPainter &painter, const QRectF &area, Symbol symbol, const QColor &colour)
{
    const qreal side = qMin(area.width(), area.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(area.center() - QPointF(side / 2, side / 2));
    painter.scale(side / SIDE, side / SIDE);
    painter.setPen(QPen(colour, LINE, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(pathOf(symbol));
    painter.restore();
}

QIcon programIcon()
{
    QIcon icon;
    for (const int side : {16, 32, 48, 128}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawProgramIcon(painter, side);
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace Korvo::Desktop
