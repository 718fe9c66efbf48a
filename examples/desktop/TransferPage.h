#pragma once

#include <QtWidgets/QWidget>

class QAction;
class QTreeView;
class QStackedLayout;

namespace Korvo::Desktop {

class Transfers;
struct Transfer;

/// The list of transfers with what can be done to them.
class TransferPage : public QWidget
{
    Q_OBJECT
public:
    explicit TransferPage(Transfers &shownTransfers, QWidget *parent = nullptr);

    QList<QAction *> transferActions() const;
    void select(int number);

private:
    void makeActions();
    QWidget *listWithButtons();
    void updateActions();
    int selectedNumber() const;
    void togglePause();
    void abortSelected();
    static QString whatAbortDoes(const Transfer &transfer);
    void openFolder();

    Transfers &transfers;
    QStackedLayout *const stack;
    QTreeView *const view;
    QAction *const pauseAction;
    QAction *const abortAction;
    QAction *const retryAction;
    QAction *const openAction;
    QAction *const clearAction;
};

} // namespace Korvo::Desktop
