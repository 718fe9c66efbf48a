#pragma once

#include "ProblemModel.h"

#include <QtWidgets/QWidget>

class QListView;
class QStackedLayout;

namespace Korvo::Desktop {

/// Shows each failure with its cause and its remedy.
class ProblemView : public QWidget
{
    Q_OBJECT
public:
    explicit ProblemView(ProblemModel &shownModel, QWidget *parent = nullptr);

private:
    void copySelected();

    ProblemModel &model;
    QStackedLayout *const stack;
    QListView *const view;
};

} // namespace Korvo::Desktop
