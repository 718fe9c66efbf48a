#include "ProblemView.h"

#include "Appearance.h"
#include "Widgets.h"

#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>
#include <QtWidgets/QAction>
#include <QtWidgets/QListView>
#include <QtWidgets/QStackedLayout>
#include <QtWidgets/QStyledItemDelegate>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QVBoxLayout>

namespace Korvo::Desktop {

namespace {

constexpr int MARGIN = 12;
constexpr int SYMBOL_SIDE = 22;
constexpr int TEXT_FLAGS = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap;

/// Draws a failure: title, when and what, cause, and the remedy with a mark of its own.
class ProblemDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const int width = option.widget ? static_cast<const QListView *>(option.widget)->viewport()->width() : 600;
        return {width, layOut(nullptr, option, QRect(0, 0, width, 0), index) + 2 * MARGIN};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        painter->save();
        if (option.state & QStyle::State_Selected) {
            QColor colour = option.palette.color(QPalette::Highlight);
            colour.setAlphaF(0.18);
            painter->fillRect(option.rect, colour);
        }
        const QPoint corner = option.rect.topLeft() + QPoint(MARGIN, MARGIN);
        drawSymbol(*painter, QRectF(corner, QSizeF(SYMBOL_SIDE, SYMBOL_SIDE)), Symbol::Warning,
                   toneColour(Tone::Bad, option.palette));
        layOut(painter, option, option.rect.adjusted(0, MARGIN, 0, 0), index);
        QColor line = option.palette.color(QPalette::Text);
        line.setAlphaF(0.12);
        painter->setPen(line);
        painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
        painter->restore();
    }

private:
    // Draws, if there is a painter, and tells the height.
    int layOut(QPainter *painter, const QStyleOptionViewItem &option, const QRect &area, const QModelIndex &index) const
    {
        QRect rest = area.adjusted(2 * MARGIN + SYMBOL_SIDE, 0, -MARGIN, 0);
        QFont bold = option.font;
        bold.setBold(true);
        const QColor text = option.palette.color(QPalette::Text);
        const QColor quiet = toneColour(Tone::Quiet, option.palette);
        const auto add = [&](const QFont &font, const QColor &colour, const QString &words, int gap) {
            const int height = QFontMetrics(font).boundingRect(0, 0, rest.width(), 10000, TEXT_FLAGS, words).height();
            if (painter) {
                painter->setFont(font);
                painter->setPen(colour);
                painter->drawText(QRect(rest.left(), rest.top(), rest.width(), height), TEXT_FLAGS, words);
            }
            rest.setTop(rest.top() + height + gap);
        };
        add(bold, text, index.data(ProblemModel::TitleRole).toString(), 2);
        add(option.font, quiet, index.data(ProblemModel::HeadRole).toString(), 5);
        add(option.font, text, index.data(ProblemModel::CauseRole).toString(), 3);
        add(option.font, toneColour(Tone::Good, option.palette),
            QStringLiteral("→ ") + index.data(ProblemModel::RemedyRole).toString(), 0);
        return rest.top() - area.top();
    }
};

} // namespace

ProblemView::ProblemView(ProblemModel &shownModel, QWidget *parent)
    : QWidget(parent)
    , model(shownModel)
    , stack(new QStackedLayout(this))
    , view(named(new QListView, "problemView"))
{
    view->setModel(&model);
    view->setItemDelegate(new ProblemDelegate(view));
    view->setFrameShape(QFrame::NoFrame);
    view->setResizeMode(QListView::Adjust);
    view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->setAccessibleName(tr("Problems"));
    auto *const bar = new QToolBar;
    bar->setIconSize({18, 18});
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    QAction *const copy = bar->addAction(symbolIcon(Symbol::Log), tr("&Copy"), this, &ProblemView::copySelected);
    QAction *const clear = bar->addAction(symbolIcon(Symbol::Broom), tr("C&lear"), &model, &ProblemModel::clear);
    for (QAction *const action : {copy, clear})
        bar->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
    clear->setObjectName(QStringLiteral("clearProblems"));
    auto *const page = new QWidget;
    auto *const layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addWidget(view);
    stack->addWidget(new EmptyState(Symbol::Check, tr("No problems"), tr("What fails is explained here.")));
    stack->addWidget(page);
    const auto updateStack = [this] { stack->setCurrentIndex(model.rowCount() == 0 ? 0 : 1); };
    connect(&model, &QAbstractItemModel::rowsInserted, this, updateStack);
    connect(&model, &QAbstractItemModel::modelReset, this, updateStack);
}

void ProblemView::copySelected()
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = model.index(row);
        if (!view->selectionModel()->hasSelection() || view->selectionModel()->isSelected(index))
            texts.append(index.data(Qt::DisplayRole).toString());
    }
    QGuiApplication::clipboard()->setText(texts.join(QStringLiteral("\n\n")));
}

} // namespace Korvo::Desktop
