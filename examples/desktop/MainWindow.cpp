#include "MainWindow.h"

#include "DownloadDialog.h"
#include "DropOverlay.h"
#include "ErrorText.h"
#include "LoginDialog.h"
#include "MediaView.h"
#include "MessageBar.h"
#include "NetworkDialog.h"
#include "QuickviewView.h"
#include "TransferPage.h"
#include "UploadDialog.h"
#include "Widgets.h"

#include <QtCore/QDir>
#include <QtCore/QMimeData>
#include <QtCore/QSettings>
#include <QtCore/QStandardPaths>
#include <QtGui/QCloseEvent>
#include <QtGui/QDragEnterEvent>
#include <QtGui/QDropEvent>
#include <QtWidgets/QAction>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QToolButton>

namespace Korvo::Desktop {

using Web::Error;
using Web::KorvoWebApi;
using Web::ProjectInfo;

namespace {

const QString UPLOAD_PARENT_KEY = QStringLiteral("upload/parent");

} // namespace

void MainWindow::connectApi()
{
    connect(&api, &KorvoWebApi::projectInfoReceived, this, &MainWindow::takeProjects);
    connect(&api, &KorvoWebApi::queryRemoteProjectsError, this, &MainWindow::takeProjectsError);
    connect(&api, &KorvoWebApi::errorOccurred, this, &MainWindow::handleError);
    connect(&api, &KorvoWebApi::loginExpired, this, &MainWindow::handleExpiry);
    connect(&api, &KorvoWebApi::loginStatusChanged, this, &MainWindow::updateAccount);
    connect(&api, &KorvoWebApi::currentUserChanged, this, &MainWindow::updateAccount);
    connect(&transfers, &Transfers::changed, this, &MainWindow::updateTabTitles);
    connect(&transfers, &Transfers::ended, this, &MainWindow::showEnd);
    connect(&transfers, &Transfers::uploadArrived, this, &MainWindow::refresh);
    connect(projectsPage, &ProjectsPage::selectionChanged, this, &MainWindow::updateActions);
    connect(projectsPage, &ProjectsPage::activated, this, &MainWindow::download);
}

void MainWindow::start()
{
    if (!isLoggedIn())
        openLogin({});
}

bool MainWindow::isLoggedIn() const
{
    return api.loginStatus() == KorvoWebApi::LoginStatus::LoginStatusLoggedIn;
}

// Login

void MainWindow::openLogin(const QString &reason)
{
    if (!loginDialog) {
        loginDialog = new LoginDialog(api, this);
        loginDialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(loginDialog, &LoginDialog::networkSettingsWanted, this, &MainWindow::openNetworkSettings);
        // It lives until the event loop runs again; should a login be asked for before, that is another dialog.
        connect(loginDialog, &QDialog::finished, this, [this] { loginDialog = nullptr; });
        connect(loginDialog, &QDialog::accepted, this, &MainWindow::handleLogin);
        connect(loginDialog, &QDialog::rejected, this, &MainWindow::updateAccount);
    }
    if (!reason.isEmpty())
        loginDialog->askAgain(api.currentUser(), reason);
    loginDialog->open();
}

void MainWindow::logInOrOut()
{
    if (isLoggedIn())
        logOut();
    else
        openLogin({});
}

// What a transfer sends without a login is refused.
void MainWindow::logOut()
{
    heldUser = api.currentUser();
    const bool wasRunning = transfers.isAnyRunning();
    transfers.pauseAll();
    api.logout();
    if (wasRunning)
        messageBar->show(tr("You are logged out."), tr("Transfers are paused and go on when you log in again."),
                         loginAction);
}

// A login can take longer than its token lasts.
void MainWindow::handleLogin()
{
    messageBar->hide();
    updateAccount();
    if (!isLoggedIn()) {
        handleExpiry();
        return;
    }
    if (heldUser == api.currentUser())
        transfers.resumeAll();
    refresh();
}

// Transfers wait meanwhile: the platform refuses what they would send with a login that has ended.
void MainWindow::handleExpiry()
{
    heldUser = api.currentUser();
    transfers.pauseAll();
    updateAccount();
    openLogin(tr("Your login has expired. Log in again to go on."));
}

void MainWindow::updateAccount()
{
    const bool loggedIn = isLoggedIn();
    const QString name = QString(api.currentUserFirstName() + QLatin1Char(' ') + api.currentUserLastName()).trimmed();
    loginAction->setText(loggedIn ? tr("&Log out") : tr("&Log in…"));
    showAccount(!loggedIn ? tr("Not logged in") : name.isEmpty() ? api.currentUser() : name);
    if (!loggedIn)
        projectsPage->setState(ProjectsPage::State::LoggedOut, tr("Log in to see your projects"), {}, loginAction);
    updateActions();
}

void MainWindow::showAccount(const QString &account)
{
    accountButton->setText(accountButton->fontMetrics().elidedText(account, Qt::ElideRight, accountWidth));
    accountButton->setToolTip(account);
}

// Projects

void MainWindow::refresh()
{
    if (!isLoggedIn())
        return;
    projectsPage->setState(ProjectsPage::State::Loading);
    api.queryRemoteProjects();
}

void MainWindow::takeProjects(const QList<ProjectInfo> &list)
{
    projectModel.setProjects(list);
    if (isLoggedIn())
        projectsPage->setState(ProjectsPage::State::Listed);
    updateActions();
}

void MainWindow::takeProjectsError(Error error)
{
    const Explanation explanation = explain(error);
    if (isLoggedIn())
        projectsPage->setState(ProjectsPage::State::Failed, tr("The projects could not be listed"),
                               explanation.title + QLatin1String(". ") + explanation.remedy, refreshAction);
    report(error, tr("List of projects"));
}

void MainWindow::updateActions()
{
    const bool loggedIn = isLoggedIn();
    const bool hasProject = loggedIn && projectsPage->selected().has_value();
    uploadAction->setEnabled(loggedIn);
    refreshAction->setEnabled(loggedIn);
    downloadAction->setEnabled(hasProject);
    mediaAction->setEnabled(hasProject);
    quickviewAction->setEnabled(hasProject);
}

// Transfers

void MainWindow::chooseUpload()
{
    QSettings settings;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Which project folder is to be uploaded?"),
                                                             settings.value(UPLOAD_PARENT_KEY, documents).toString());
    if (folder.isEmpty())
        return;
    settings.setValue(UPLOAD_PARENT_KEY, QFileInfo(folder).absolutePath());
    offerUploads({folder});
}

void MainWindow::offerUploads(const QStringList &folders)
{
    const bool oneIsOpen = !foldersToOffer.isEmpty();
    foldersToOffer.append(folders);
    if (!oneIsOpen && !foldersToOffer.isEmpty())
        offerUpload(foldersToOffer.first());
}

// One dialog after the other, each for a folder.
void MainWindow::offerUpload(const QString &folder)
{
    auto *const dialog = new UploadDialog(folder, projectModel.projects(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &UploadDialog::finished, this, [this, dialog](int result) {
        if (result == QDialog::Accepted) {
            showTab(transferPage);
            transfers.startUpload(dialog->order());
        }
        foldersToOffer.removeFirst();
        if (!foldersToOffer.isEmpty())
            offerUpload(foldersToOffer.first());
    });
    dialog->open();
}

void MainWindow::download()
{
    const auto project = projectsPage->selected();
    if (!project || !isLoggedIn())
        return;
    auto *const dialog = new DownloadDialog(*project, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &DownloadDialog::accepted, this, [this, dialog] {
        showTab(transferPage);
        transfers.startDownload(dialog->order());
    });
    dialog->open();
}

void MainWindow::showMedia()
{
    const auto project = projectsPage->selected();
    if (!project)
        return;
    if (!mediaView) {
        mediaView = new MediaView(api, this);
        connect(mediaView, &MediaView::saveWanted, &transfers, &Transfers::startSingleFile);
    }
    mediaView->showProject(*project);
}

void MainWindow::showQuickview()
{
    const auto project = projectsPage->selected();
    if (!project)
        return;
    if (!quickviewView)
        quickviewView = new QuickviewView(api, this);
    quickviewView->showProject(*project);
}

// A download that ends with files missing is a problem of its own, whatever has been told of the files.
void MainWindow::showEnd(int number)
{
    const Transfer *const transfer = transfers.list().find(number);
    if (transfer && transfer->stage == Transfer::Stage::Incomplete)
        messageBar->show(
            tr("The download of \"%1\" is not complete.").arg(transfer->title),
            tr("%1 of %n file(s) have arrived. Try it again: these are kept.", nullptr, transfer->filesTotal)
                .arg(transfer->filesCompleted),
            problemsAction);
    leaveWhenSettled();
}

// Problems

void MainWindow::handleError(Error error)
{
    bool isNews = true;
    const QString context = contextOf(error, &isNews);
    if (isNews)
        report(error, context);
}

// The library does not say what a failure is about. Everybody who waits for an answer hears of it, and forgets it when
// what comes next is about somebody else.
QString MainWindow::contextOf(Error error, bool *isNews)
{
    bool expected = false;
    const QString transfer = transfers.claimError(error, &expected);
    *isNews = !expected;
    if (expected)
        return transfer;
    if (mediaView && mediaView->isAsking())
        mediaView->takeError(error);
    if (quickviewView && quickviewView->isAsking())
        quickviewView->takeError(error);
    if (loginDialog && loginDialog->isAsking()) {
        loginDialog->takeError(error);
        return tr("Login");
    }
    if (!transfer.isEmpty())
        return transfer;
    if (quickviewView && quickviewView->isAsking())
        return tr("Quickview data of %1").arg(quickviewView->projectName());
    if (mediaView && mediaView->isAsking())
        return tr("Pictures and videos of %1").arg(mediaView->projectName());
    return tr("Platform");
}

void MainWindow::report(Error error, const QString &context)
{
    problems.add({QDateTime::currentDateTime(), error, context});
    if (tabs->currentWidget() != problemPage)
        ++unseenProblems;
    updateTabTitles();
    const Explanation explanation = explain(error);
    messageBar->show(explanation.title, context + QLatin1String(". ") + explanation.remedy, problemsAction);
}

void MainWindow::updateTabTitles()
{
    int running = 0;
    for (const int number : transfers.list().numbers())
        running += transfers.list().find(number)->hasEnded() ? 0 : 1;
    tabs->setTabText(tabs->indexOf(transferPage), running == 0 ? tr("Transfers") : tr("Transfers (%1)").arg(running));
    tabs->setTabText(tabs->indexOf(problemPage),
                     unseenProblems == 0 ? tr("Problems") : tr("Problems (%1)").arg(unseenProblems));
}

void MainWindow::showTab(QWidget *page)
{
    tabs->setCurrentWidget(page);
}

// Leaving

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (leaving || (!transfers.isAnyRunning() && !transfers.isAnySettling())) {
        event->accept();
        return;
    }
    event->ignore();
    if (transfers.isAnyRunning()) {
        askBeforeLeaving();
        return;
    }
    messageBar->show(tr("One moment."),
                     tr("The platform still has to confirm what has been sent; then the program ends. "
                        "Close the window again to leave at once."),
                     nullptr);
    leaving = true;
}

void MainWindow::askBeforeLeaving()
{
    auto *const box = named(new QMessageBox(this), "closeQuestion");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(tr("Transfers are running"));
    box->setText(tr("Leave while transfers are running?"));
    box->setInformativeText(tr("They are cut off. Files that have arrived stay; an upload can be done again later."));
    const QPushButton *const leave = named(box->addButton(tr("&Leave"), QMessageBox::DestructiveRole), "leave");
    QPushButton *const stay = named(box->addButton(tr("&Stay"), QMessageBox::RejectRole), "stay");
    box->setDefaultButton(stay);
    box->setEscapeButton(stay);
    connect(leave, &QPushButton::clicked, this, [this] {
        leaving = true;
        if (!transfers.isAnySettling())
            close();
    });
    box->open();
}

void MainWindow::leaveWhenSettled()
{
    if (leaving && !transfers.isAnySettling())
        close();
}

// Drag and drop

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    const QStringList folders = draggedFolders(event->mimeData());
    if (!isLoggedIn() || folders.isEmpty())
        return;
    event->acceptProposedAction();
    overlay->show(folders);
}

void MainWindow::dragLeaveEvent(QDragLeaveEvent *event)
{
    overlay->hide();
    QMainWindow::dragLeaveEvent(event);
}

void MainWindow::dropEvent(QDropEvent *event)
{
    overlay->hide();
    event->acceptProposedAction();
    offerUploads(draggedFolders(event->mimeData()));
}

// The rest

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        update();
}

void MainWindow::openNetworkSettings()
{
    QWidget *const parent = loginDialog ? static_cast<QWidget *>(loginDialog) : this;
    auto *const dialog = new NetworkDialog(network, parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &NetworkDialog::accepted, this, [this, dialog] { network = dialog->settings(); });
    dialog->open();
}

void MainWindow::showAbout()
{
    auto *const box = named(new QMessageBox(this), "aboutBox");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIconPixmap(programIcon().pixmap(64));
    box->setWindowTitle(tr("About Korvo Desktop"));
    box->setText(QStringLiteral("Korvo Desktop"));
    box->setInformativeText(
        tr("A sample application for NQKorvoWeb: projects of sewer inspections, to the platform and back."));
    box->open();
}

} // namespace Korvo::Desktop
