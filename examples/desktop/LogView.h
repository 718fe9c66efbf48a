#pragma once

#include "LogModel.h"

#include <QtWidgets/QWidget>

class QStackedLayout;
class QTableView;

namespace Korvo::Desktop {

/// The library's log, with a filter.
class LogView : public QWidget
{
    Q_OBJECT
public:
    explicit LogView(LogModel &shownModel, QWidget *parent = nullptr);

private:
    QWidget *tablePage();
    QWidget *toolRow();

    LogModel &model;
    QStackedLayout *const stack;
    QTableView *const view;
};

} // namespace Korvo::Desktop
