#include "ProjectsPage.h"

#include "Widgets.h"

#include <QtCore/QSortFilterProxyModel>
#include <QtWidgets/QAction>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QStackedLayout>
#include <QtWidgets/QTableView>
#include <QtWidgets/QVBoxLayout>

namespace Korvo::Desktop {

namespace {

constexpr int ROW_HEIGHT = 32;
constexpr int NARROWEST_COLUMN = 110;

} // namespace

ProjectsPage::ProjectsPage(ProjectTableModel &shownModel, QWidget *parent)
    : QWidget(parent)
    , model(shownModel)
    , filtered(new QSortFilterProxyModel(this))
    , clearFilterAction(new QAction(tr("&Show all projects"), this))
    , count(named(quietLabel(), "projectCount"))
    , filterField(named(new QLineEdit, "projectFilter"))
    , busy(named(new QProgressBar, "projectsBusy"))
    , stack(new QStackedLayout)
    , empty(named(new EmptyState(Symbol::OpenFolder, {}, {}), "projectsEmpty"))
    , view(named(new QTableView, "projectTable"))
{
    setUpTable();
    filterField->setPlaceholderText(tr("Filter by name (Ctrl+F)"));
    filterField->setAccessibleName(tr("Filter projects by name"));
    filterField->setClearButtonEnabled(true);
    filterField->setMaximumWidth(320);
    busy->setRange(0, 0);
    busy->setTextVisible(false);
    busy->setMaximumWidth(120);
    count->setWordWrap(false);
    auto *const row = new QHBoxLayout;
    row->addWidget(headingLabel(tr("Projects")));
    row->addSpacing(6);
    row->addWidget(count);
    row->addWidget(busy);
    row->addStretch();
    row->addWidget(filterField, 1);
    stack->addWidget(empty);
    stack->addWidget(view);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 10, 12, 6);
    layout->addLayout(row);
    layout->addLayout(stack, 1);
    connectModels();
    updateView();
}

void ProjectsPage::setUpTable()
{
    filtered->setSourceModel(&model);
    filtered->setSortRole(ProjectTableModel::SortRole);
    filtered->setFilterKeyColumn(ProjectTableModel::Name);
    filtered->setFilterCaseSensitivity(Qt::CaseInsensitive);
    filtered->setSortCaseSensitivity(Qt::CaseInsensitive);
    filtered->setSortLocaleAware(true);
    view->setModel(filtered);
    view->setSortingEnabled(true);
    view->sortByColumn(ProjectTableModel::Created, Qt::DescendingOrder);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setShowGrid(false);
    view->setAlternatingRowColors(true);
    view->setTabKeyNavigation(false);
    view->setWordWrap(false);
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
    view->setAccessibleName(tr("Projects"));
    view->verticalHeader()->hide();
    view->verticalHeader()->setDefaultSectionSize(ROW_HEIGHT);
    QHeaderView *const header = view->horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionResizeMode(ProjectTableModel::Name, QHeaderView::Stretch);
    for (const int column : {ProjectTableModel::Created, ProjectTableModel::Size, ProjectTableModel::ImportedByWeb})
        header->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    header->setMinimumSectionSize(NARROWEST_COLUMN);
}

void ProjectsPage::connectModels()
{
    connect(filterField, &QLineEdit::textChanged, filtered, &QSortFilterProxyModel::setFilterFixedString);
    // The words of an empty page hold the filter.
    connect(filterField, &QLineEdit::textChanged, this, &ProjectsPage::updateView);
    connect(clearFilterAction, &QAction::triggered, filterField, &QLineEdit::clear);
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(filtered, signal, this, &ProjectsPage::updateView);
    connect(filtered, &QAbstractItemModel::layoutChanged, this, &ProjectsPage::updateView);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &ProjectsPage::selectionChanged);
    connect(view, &QTableView::activated, this, &ProjectsPage::activated);
}

void ProjectsPage::setContextActions(const QList<QAction *> &actions)
{
    view->addActions(actions);
}

void ProjectsPage::setState(State newState, const QString &title, const QString &hint, QAction *remedy)
{
    state = newState;
    stateTitle = title;
    stateHint = hint;
    stateRemedy = remedy;
    updateView();
}

void ProjectsPage::updateView()
{
    const bool hasRows = filtered->rowCount() > 0;
    const bool isKnown = state != State::LoggedOut && model.rowCount() > 0;
    filterField->setEnabled(isKnown);
    count->setText(isKnown ? tr("%n project(s)", nullptr, model.rowCount()) : QString());
    busy->setVisible(state == State::Loading);
    if (isKnown && hasRows) {
        stack->setCurrentWidget(view);
        return;
    }
    stack->setCurrentWidget(empty);
    if (isKnown) {
        empty->setTexts(tr("No project matches \"%1\"").arg(filterField->text()), {});
        empty->setAction(clearFilterAction);
    } else if (state == State::Listed) {
        empty->setTexts(
            tr("No projects yet – drop a folder here"),
            tr("A project folder holds the database, the description, pictures and videos of an inspection."));
        empty->setAction(uploadAction);
    } else if (state == State::Loading) {
        empty->setTexts(tr("Loading projects…"), {});
        empty->setAction(nullptr);
    } else {
        empty->setTexts(stateTitle, stateHint);
        empty->setAction(stateRemedy);
    }
}

std::optional<Web::ProjectInfo> ProjectsPage::selected() const
{
    const QModelIndexList rows = view->selectionModel()->selectedRows();
    if (rows.isEmpty() || !view->isVisibleTo(this))
        return std::nullopt;
    return model.project(filtered->mapToSource(rows.first()).row());
}

} // namespace Korvo::Desktop
