#include "LogView.h"

#include "Widgets.h"

#include <QtCore/QSortFilterProxyModel>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStackedLayout>
#include <QtWidgets/QTableView>
#include <QtWidgets/QVBoxLayout>

namespace Korvo::Desktop {

LogView::LogView(LogModel &shownModel, QWidget *parent)
    : QWidget(parent)
    , model(shownModel)
    , stack(new QStackedLayout(this))
    , view(named(new QTableView, "logView"))
{
    stack->addWidget(new EmptyState(Symbol::Log, tr("The log is empty"), tr("The library logs failures only.")));
    stack->addWidget(tablePage());
    const auto updateStack = [this] { stack->setCurrentIndex(model.rowCount() == 0 ? 0 : 1); };
    connect(&model, &QAbstractItemModel::rowsInserted, this, [this, updateStack] {
        updateStack();
        view->scrollToBottom();
    });
    connect(&model, &QAbstractItemModel::modelReset, this, updateStack);
}

QWidget *LogView::tablePage()
{
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setShowGrid(false);
    view->setFrameShape(QFrame::NoFrame);
    view->setWordWrap(false);
    view->setAlternatingRowColors(true);
    view->setTabKeyNavigation(false);
    view->verticalHeader()->hide();
    view->horizontalHeader()->setHighlightSections(false);
    view->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    view->horizontalHeader()->setStretchLastSection(true);
    view->setAccessibleName(tr("Log"));
    auto *const page = new QWidget;
    auto *const layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(toolRow());
    layout->addWidget(view);
    return page;
}

QWidget *LogView::toolRow()
{
    auto *const filtered = new QSortFilterProxyModel(this);
    filtered->setSourceModel(&model);
    filtered->setFilterKeyColumn(-1);
    filtered->setFilterCaseSensitivity(Qt::CaseInsensitive);
    view->setModel(filtered);
    view->setColumnWidth(LogModel::Category, 240);
    auto *const filter = named(new QLineEdit, "logFilter");
    filter->setPlaceholderText(tr("Filter the log"));
    filter->setClearButtonEnabled(true);
    filter->setAccessibleName(tr("Filter the log"));
    connect(filter, &QLineEdit::textChanged, filtered, &QSortFilterProxyModel::setFilterFixedString);
    auto *const copy = new QPushButton(symbolIcon(Symbol::Log), tr("&Copy all"));
    connect(copy, &QPushButton::clicked, this, [this] { QGuiApplication::clipboard()->setText(model.asText()); });
    auto *const clear = new QPushButton(symbolIcon(Symbol::Broom), tr("C&lear"));
    connect(clear, &QPushButton::clicked, &model, &LogModel::clear);
    auto *const row = new QWidget;
    auto *const layout = new QHBoxLayout(row);
    layout->setContentsMargins(6, 4, 6, 4);
    layout->addWidget(filter);
    layout->addWidget(copy);
    layout->addWidget(clear);
    return row;
}

} // namespace Korvo::Desktop
