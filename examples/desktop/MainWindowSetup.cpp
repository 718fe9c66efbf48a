#include "MainWindow.h"

#include "Appearance.h"
#include "DropOverlay.h"
#include "LogCollector.h"
#include "LogView.h"
#include "MessageBar.h"
#include "ProblemView.h"
#include "TransferPage.h"
#include "Widgets.h"

#include <QtWidgets/QAction>
#include <QtWidgets/QActionGroup>
#include <QtWidgets/QLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QTableView>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>

namespace Korvo::Desktop {

using Web::KorvoWebApi;

namespace {

constexpr QSize FIRST_SIZE(1000, 700);
constexpr QSize ICON_SIZE(20, 20);
constexpr int ACCOUNT_CHARACTERS = 18;

} // namespace

MainWindow::MainWindow(KorvoWebApi &usedApi, const LogCollector &log, const NetworkSettings &settings, QWidget *parent)
    : QMainWindow(parent)
    , api(usedApi)
    , network(settings)
    , transfers(usedApi)
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(QStringLiteral("Korvo Desktop"));
    setWindowIcon(programIcon());
    setAcceptDrops(true);
    resize(FIRST_SIZE);
    makeActions();
    makePages();
    makeMenus();
    makeToolBar();
    overlay = new DropOverlay(this);
    connectApi();
    connect(&log, &LogCollector::logged, &logLines, &LogModel::add);
    updateAccount();
    updateTabTitles();
}

QAction *MainWindow::action(const char *name, Symbol symbol, const QString &text, const QKeySequence &shortcut,
                            void (MainWindow::*slot)())
{
    auto *const made = named(new QAction(symbolIcon(symbol), text, this), name);
    made->setShortcut(shortcut);
    connect(made, &QAction::triggered, this, slot);
    return made;
}

void MainWindow::makeActions()
{
    uploadAction = action("uploadAction", Symbol::Upload, tr("&Upload folder…"), Qt::CTRL + Qt::Key_N,
                          &MainWindow::chooseUpload);
    downloadAction
        = action("downloadAction", Symbol::Download, tr("&Download…"), Qt::CTRL + Qt::Key_D, &MainWindow::download);
    mediaAction = action("mediaAction", Symbol::Pictures, tr("&Pictures and videos"), Qt::CTRL + Qt::Key_M,
                         &MainWindow::showMedia);
    quickviewAction = action("quickviewAction", Symbol::Data, tr("&Quickview data"), Qt::CTRL + Qt::Key_I,
                             &MainWindow::showQuickview);
    refreshAction
        = action("refreshAction", Symbol::Refresh, tr("&Refresh"), QKeySequence::Refresh, &MainWindow::refresh);
    loginAction = action("loginAction", Symbol::User, tr("&Log in…"), Qt::CTRL + Qt::Key_L, &MainWindow::logInOrOut);
    networkAction = action("networkAction", Symbol::Globe, tr("&Network settings…"), Qt::CTRL + Qt::Key_Comma,
                           &MainWindow::openNetworkSettings);
    aboutAction = action("aboutAction", Symbol::Check, tr("&About Korvo Desktop"), {}, &MainWindow::showAbout);
    aboutAction->setIcon({});
    quitAction = new QAction(tr("E&xit"), this);
    quitAction->setShortcut(Qt::CTRL + Qt::Key_Q);
    connect(quitAction, &QAction::triggered, this, &QWidget::close);
    findAction = new QAction(tr("&Find a project"), this);
    findAction->setShortcut(QKeySequence::Find);
    transfersAction = new QAction(tr("&Transfers"), this);
    problemsAction = named(new QAction(tr("&Problems"), this), "problemsAction");
    logAction = new QAction(tr("&Log"), this);
    transfersAction->setShortcut(Qt::CTRL + Qt::Key_1);
    problemsAction->setShortcut(Qt::CTRL + Qt::Key_2);
    logAction->setShortcut(Qt::CTRL + Qt::Key_3);
}

void MainWindow::makePages()
{
    messageBar = new MessageBar;
    projectsPage = new ProjectsPage(projectModel);
    projectsPage->setUploadAction(uploadAction);
    projectsPage->setContextActions({downloadAction, mediaAction, quickviewAction});
    transferPage = new TransferPage(transfers);
    problemPage = new ProblemView(problems);
    logPage = new LogView(logLines);
    tabs = named(new QTabWidget, "lowerTabs");
    tabs->setDocumentMode(true);
    tabs->addTab(transferPage, symbolIcon(Symbol::Transfers), {});
    tabs->addTab(problemPage, symbolIcon(Symbol::Warning), {});
    tabs->addTab(logPage, symbolIcon(Symbol::Log), tr("Log"));
    connect(tabs, &QTabWidget::currentChanged, this, [this] {
        if (tabs->currentWidget() == problemPage)
            unseenProblems = 0;
        updateTabTitles();
    });
    auto *const splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(projectsPage);
    splitter->addWidget(tabs);
    splitter->setSizes({FIRST_SIZE.height() / 2, FIRST_SIZE.height() / 2});
    splitter->setChildrenCollapsible(false);
    auto *const page = new QWidget;
    auto *const layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(messageBar);
    layout->addWidget(splitter, 1);
    setCentralWidget(page);
    connect(findAction, &QAction::triggered, projectsPage->filter(), [this] {
        projectsPage->filter()->setFocus(Qt::ShortcutFocusReason);
        projectsPage->filter()->selectAll();
    });
    const auto showsTab = [this](QAction *trigger, QWidget *shown) {
        connect(trigger, &QAction::triggered, this, [this, shown] {
            showTab(shown);
            shown->setFocus(Qt::ShortcutFocusReason);
        });
    };
    showsTab(transfersAction, transferPage);
    showsTab(problemsAction, problemPage);
    showsTab(logAction, logPage);
}

void MainWindow::makeMenus()
{
    QMenu *const project = menuBar()->addMenu(tr("&Project"));
    project->addActions({uploadAction, downloadAction, mediaAction, quickviewAction});
    project->addSeparator();
    project->addAction(refreshAction);
    project->addSeparator();
    project->addAction(quitAction);
    menuBar()->addMenu(tr("&Transfer"))->addActions(transferPage->transferActions());
    QMenu *const view = menuBar()->addMenu(tr("&View"));
    view->addActions({findAction, transfersAction, problemsAction, logAction});
    view->addSeparator();
    makeAppearanceMenu(view->addMenu(tr("&Appearance")));
    QMenu *const account = menuBar()->addMenu(tr("&Account"));
    account->addActions({loginAction, networkAction});
    menuBar()->addMenu(tr("&Help"))->addAction(aboutAction);
}

void MainWindow::makeAppearanceMenu(QMenu *menu)
{
    auto *const group = new QActionGroup(menu);
    const auto add = [&](const QString &text, Appearance appearance) {
        QAction *const choice = menu->addAction(text);
        choice->setCheckable(true);
        choice->setChecked(savedAppearance() == appearance);
        group->addAction(choice);
        connect(choice, &QAction::triggered, this, [appearance] {
            saveAppearance(appearance);
            applyAppearance(appearance);
        });
    };
    add(tr("As the &system"), Appearance::System);
    add(tr("&Light"), Appearance::Light);
    add(tr("&Dark"), Appearance::Dark);
}

void MainWindow::makeToolBar()
{
    QToolBar *const bar = addToolBar(tr("Tools"));
    bar->setObjectName(QStringLiteral("toolBar"));
    bar->setMovable(false);
    bar->setIconSize(ICON_SIZE);
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    const QList<QAction *> shown{uploadAction, downloadAction, mediaAction, quickviewAction, refreshAction};
    bar->addActions(shown);
    bar->layout()->setContentsMargins(8, 4, 8, 4);
    bar->layout()->setSpacing(6);
    for (QAction *const tool : shown)
        bar->widgetForAction(tool)->setFocusPolicy(Qt::TabFocus);
    auto *const gap = new QWidget;
    gap->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(gap);
    accountButton = named(new QToolButton, "accountButton");
    accountButton->setIcon(symbolIcon(Symbol::User));
    accountButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    accountButton->setPopupMode(QToolButton::InstantPopup);
    accountButton->setFocusPolicy(Qt::TabFocus);
    accountButton->setAccessibleName(tr("Account"));
    accountButton->addActions({loginAction, networkAction});
    bar->addWidget(accountButton);
    // Room for all of it at once: what does not fit goes to the bar's extension, and a text that gets shorter does not bring
    // it back.
    accountButton->setText(QString(ACCOUNT_CHARACTERS, QLatin1Char('n')));
    accountWidth = accountButton->fontMetrics().horizontalAdvance(accountButton->text());
    accountButton->setFixedWidth(accountButton->sizeHint().width());
    setMinimumWidth(bar->sizeHint().width());
}

} // namespace Korvo::Desktop
