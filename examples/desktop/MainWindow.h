#pragma once

#include "LogModel.h"
#include "NetworkSettings.h"
#include "ProblemModel.h"
#include "ProjectTableModel.h"
#include "ProjectsPage.h"
#include "Symbols.h"
#include "Transfers.h"

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QPointer>
#include <QtWidgets/QMainWindow>

class QMenu;
class QTabWidget;
class QToolButton;

namespace Korvo::Desktop {

class DropOverlay;
class LoginDialog;
class MediaView;
class MessageBar;
class QuickviewView;
class TransferPage;

/// The program's window: projects above, transfers, problems and the log below.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    MainWindow(Web::KorvoWebApi &usedApi, const LogCollector &log, const NetworkSettings &settings,
               QWidget *parent = nullptr);

    Transfers &transferList() { return transfers; }
    /// Opens the login when nobody is logged in.
    void start();

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    // Set-up
    QAction *action(const char *name, Symbol symbol, const QString &text, const QKeySequence &shortcut,
                    void (MainWindow::*slot)());
    void makeActions();
    void makeMenus();
    void makeAppearanceMenu(QMenu *menu);
    void makeToolBar();
    void makePages();
    void connectApi();

    // Login
    void logIn();
    void logOut();
    void logInOrOut();
    void openLogin(const QString &reason);
    void handleLogin();
    void handleExpiry();
    void updateAccount();
    void showAccount(const QString &account);

    // Projects
    void refresh();
    void takeProjects(const QList<Web::ProjectInfo> &list);
    void takeProjectsError(Web::Error error);
    void updateActions();

    // Transfers
    void chooseUpload();
    void offerUploads(const QStringList &folders);
    void offerUpload(const QString &folder);
    void download();
    void showMedia();
    void showQuickview();
    void showEnd(int number);

    // Problems
    void handleError(Web::Error error);
    QString contextOf(Web::Error error, bool *isNews);
    void report(Web::Error error, const QString &context);
    void updateTabTitles();

    // Leaving
    void askBeforeLeaving();
    void leaveWhenSettled();

    void openNetworkSettings();
    void showAbout();
    void showTab(QWidget *page);

    bool isLoggedIn() const;

    Web::KorvoWebApi &api;
    NetworkSettings network;
    ProjectTableModel projectModel;
    ProblemModel problems;
    LogModel logLines;
    Transfers transfers;

    MessageBar *messageBar = nullptr;
    ProjectsPage *projectsPage = nullptr;
    TransferPage *transferPage = nullptr;
    QWidget *problemPage = nullptr;
    QWidget *logPage = nullptr;
    QTabWidget *tabs = nullptr;
    QToolButton *accountButton = nullptr;
    int accountWidth = 0; ///< of the longest text that it shows
    DropOverlay *overlay = nullptr;
    QPointer<LoginDialog> loginDialog;
    QPointer<MediaView> mediaView;
    QPointer<QuickviewView> quickviewView;

    QAction *uploadAction = nullptr;
    QAction *downloadAction = nullptr;
    QAction *mediaAction = nullptr;
    QAction *quickviewAction = nullptr;
    QAction *refreshAction = nullptr;
    QAction *loginAction = nullptr;
    QAction *networkAction = nullptr;
    QAction *problemsAction = nullptr;
    QAction *transfersAction = nullptr;
    QAction *logAction = nullptr;
    QAction *findAction = nullptr;
    QAction *quitAction = nullptr;
    QAction *aboutAction = nullptr;

    QStringList foldersToOffer;
    QString heldUser; ///< whose transfers wait for a new login
    int unseenProblems = 0;
    bool leaving = false;
};

} // namespace Korvo::Desktop
