#pragma once

#include "ProjectTableModel.h"

#include <QtWidgets/QWidget>

#include <optional>

class QAction;
class QLabel;
class QLineEdit;
class QProgressBar;
class QSortFilterProxyModel;
class QStackedLayout;
class QTableView;

namespace Korvo::Desktop {

class EmptyState;

/// The table of projects with its filter, and what stands there instead while there is none.
class ProjectsPage : public QWidget
{
    Q_OBJECT
public:
    explicit ProjectsPage(ProjectTableModel &shownModel, QWidget *parent = nullptr);

    enum class State { LoggedOut, Loading, Failed, Listed };

    /// @p hint tells why a list failed; @p remedy is what the button of an empty page does.
    void setState(State newState, const QString &title = {}, const QString &hint = {}, QAction *remedy = nullptr);
    void setUploadAction(QAction *action) { uploadAction = action; }
    void setContextActions(const QList<QAction *> &actions);

    std::optional<Web::ProjectInfo> selected() const;
    QLineEdit *filter() const { return filterField; }
    QTableView *table() const { return view; }

Q_SIGNALS:
    void selectionChanged();
    void activated();

private:
    void setUpTable();
    void connectModels();
    void updateView();

    ProjectTableModel &model;
    QSortFilterProxyModel *const filtered;
    State state = State::LoggedOut;
    QString stateTitle;
    QString stateHint;
    QAction *stateRemedy = nullptr;
    QAction *uploadAction = nullptr;
    QAction *const clearFilterAction;
    QLabel *const count;
    QLineEdit *const filterField;
    QProgressBar *const busy;
    QStackedLayout *const stack;
    EmptyState *const empty;
    QTableView *const view;
};

} // namespace Korvo::Desktop
