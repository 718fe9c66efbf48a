#include "TransferPage.h"

#include "TransferDelegate.h"
#include "Transfers.h"
#include "Widgets.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QUrl>
#include <QtGui/QDesktopServices>
#include <QtWidgets/QAction>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStackedLayout>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QVBoxLayout>

namespace Korvo::Desktop {

TransferPage::TransferPage(Transfers &shownTransfers, QWidget *parent)
    : QWidget(parent)
    , transfers(shownTransfers)
    , stack(new QStackedLayout(this))
    , view(named(new QTreeView, "transferView"))
    , pauseAction(named(new QAction(this), "pauseAction"))
    , abortAction(named(new QAction(symbolIcon(Symbol::Abort), tr("&Abort"), this), "abortAction"))
    , retryAction(named(new QAction(symbolIcon(Symbol::Refresh), tr("&Try again"), this), "retryAction"))
    , openAction(named(new QAction(symbolIcon(Symbol::OpenFolder), tr("&Open folder"), this), "openAction"))
    , clearAction(named(new QAction(symbolIcon(Symbol::Broom), tr("&Clear finished"), this), "clearAction"))
{
    makeActions();
    stack->addWidget(new EmptyState(Symbol::Transfers, tr("Nothing is on its way"),
                                    tr("Drop a project folder on this window to upload it, or select a project to "
                                       "download it.")));
    stack->addWidget(listWithButtons());
    TransferModel &model = transfers.list();
    const auto updateStack = [this, &model] { stack->setCurrentIndex(model.rowCount() == 0 ? 0 : 1); };
    connect(&model, &QAbstractItemModel::rowsInserted, this, [this, updateStack](const QModelIndex &owner, int row) {
        updateStack();
        if (owner.isValid())
            view->expand(owner);
        else
            view->setCurrentIndex(view->model()->index(row, 0));
    });
    connect(&model, &QAbstractItemModel::rowsRemoved, this, updateStack);
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this, &TransferPage::updateActions);
    connect(&transfers, &Transfers::changed, this, &TransferPage::updateActions);
    connect(&model, &QAbstractItemModel::dataChanged, this, &TransferPage::updateActions);
    updateActions();
}

void TransferPage::makeActions()
{
    pauseAction->setShortcut(Qt::CTRL + Qt::Key_P);
    abortAction->setShortcut(Qt::CTRL + Qt::Key_Backspace);
    retryAction->setShortcut(Qt::CTRL + Qt::Key_T);
    openAction->setShortcut(Qt::CTRL + Qt::Key_O);
    clearAction->setShortcut(Qt::CTRL + Qt::SHIFT + Qt::Key_Backspace);
    connect(pauseAction, &QAction::triggered, this, &TransferPage::togglePause);
    connect(abortAction, &QAction::triggered, this, &TransferPage::abortSelected);
    connect(retryAction, &QAction::triggered, this, [this] { transfers.retry(selectedNumber()); });
    connect(openAction, &QAction::triggered, this, &TransferPage::openFolder);
    connect(clearAction, &QAction::triggered, this, [this] {
        transfers.list().removeEnded();
        updateActions();
    });
}

QList<QAction *> TransferPage::transferActions() const
{
    return {pauseAction, abortAction, retryAction, openAction, clearAction};
}

QWidget *TransferPage::listWithButtons()
{
    view->setModel(&transfers.list());
    view->setItemDelegate(new TransferDelegate(transfers.list(), view));
    view->setHeaderHidden(true);
    view->setRootIsDecorated(false);
    view->setItemsExpandable(false);
    view->setIndentation(0);
    view->setUniformRowHeights(false);
    view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->setFrameShape(QFrame::NoFrame);
    view->setAccessibleName(tr("Transfers"));
    auto *const bar = new QToolBar;
    bar->setIconSize({18, 18});
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addActions(transferActions());
    for (QAction *const action : transferActions())
        bar->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
    auto *const page = new QWidget;
    auto *const layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addWidget(view);
    return page;
}

int TransferPage::selectedNumber() const
{
    return view->currentIndex().data(TransferModel::NumberRole).toInt();
}

void TransferPage::select(int number)
{
    const TransferModel &model = transfers.list();
    view->setCurrentIndex(model.index(model.numbers().indexOf(number)));
}

void TransferPage::updateActions()
{
    const Transfer *const transfer = transfers.list().find(selectedNumber());
    const bool isPaused = transfer && transfer->stage == Transfer::Stage::Paused;
    pauseAction->setText(isPaused ? tr("&Resume") : tr("&Pause"));
    pauseAction->setIcon(symbolIcon(isPaused ? Symbol::Resume : Symbol::Pause));
    pauseAction->setEnabled(isPaused || (transfer && transfer->canPause()));
    abortAction->setEnabled(transfer && transfer->canAbort());
    retryAction->setEnabled(transfer && transfer->canRetry());
    openAction->setEnabled(transfer && QFileInfo::exists(transfer->folder));
    clearAction->setEnabled(transfers.list().any([](const Transfer &any) { return any.hasEnded(); }));
}

void TransferPage::togglePause()
{
    const int number = selectedNumber();
    const Transfer *const transfer = transfers.list().find(number);
    if (!transfer)
        return;
    if (transfer->stage == Transfer::Stage::Paused)
        transfers.resume(number);
    else
        transfers.pause(number);
}

// The box does not stop the world: the transfer may end while the user thinks, and abort() knows that.
void TransferPage::abortSelected()
{
    const int number = selectedNumber();
    const Transfer *const transfer = transfers.list().find(number);
    if (!transfer)
        return;
    auto *const box = named(new QMessageBox(this), "abortQuestion");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(transfer->isUpload() ? tr("Abort the upload?") : tr("Abort the download?"));
    box->setText(transfer->isUpload() ? tr("Abort the upload of \"%1\"?").arg(transfer->title)
                                      : tr("Abort the download of \"%1\"?").arg(transfer->title));
    box->setInformativeText(whatAbortDoes(*transfer));
    const QString order = transfer->kind == Transfer::Kind::Download ? tr("&Abort and remove folder") : tr("&Abort");
    QPushButton *const abort = named(box->addButton(order, QMessageBox::DestructiveRole), "abortConfirmed");
    QPushButton *const keep = named(box->addButton(tr("&Continue"), QMessageBox::RejectRole), "abortDeclined");
    box->setDefaultButton(keep);
    box->setEscapeButton(keep);
    connect(abort, &QPushButton::clicked, this, [this, number] { transfers.abort(number); });
    box->open();
}

QString TransferPage::whatAbortDoes(const Transfer &transfer)
{
    const QString path = QDir::toNativeSeparators(transfer.folder);
    switch (transfer.kind) {
    case Transfer::Kind::Upload:
        break;
    case Transfer::Kind::Download:
        return tr("The download folder is removed with everything in it, files that were there before included:\n%1\n\n"
                  "To keep what has arrived, pause the download instead.")
            .arg(path);
    case Transfer::Kind::SingleFile:
        return tr("The file is removed:\n%1").arg(path);
    }
    return tr("The platform is told that the upload is cancelled. The local folder stays as it is.");
}

void TransferPage::openFolder()
{
    const Transfer *const transfer = transfers.list().find(selectedNumber());
    if (!transfer)
        return;
    const QFileInfo info(transfer->folder);
    QDesktopServices::openUrl(QUrl::fromLocalFile(info.isDir() ? info.absoluteFilePath() : info.absolutePath()));
}

} // namespace Korvo::Desktop
