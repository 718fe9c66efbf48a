#include "DesktopStage.h"
#include "Language.h"
#include "LogModel.h"
#include "MediaModel.h"
#include "Patience.h"
#include "flow/Folders.h"
#include "flow/Session.h"

#include <QtCore/QBuffer>
#include <QtGui/QImage>
#include <QtNetwork/QNetworkProxy>
#include <QtTest/QtTest>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QTableView>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QTreeWidget>

using namespace Korvo;
using namespace Korvo::Desktop;
using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

using Stage = Transfer::Stage;

namespace {

constexpr int MIB = 1024 * 1024;
const QString PUT_FILE_ROUTE = QStringLiteral("api/bucket/putfile");
const QString FILE_ROUTE = QStringLiteral("webdav/*");
const QString UPLOADED_ROUTE = QStringLiteral("api/UploadProject/Uploaded");

QByteArray jpeg(const QColor &colour)
{
    QImage picture(640, 480, QImage::Format_RGB32);
    picture.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPEG");
    return bytes;
}

QJsonObject object(const char *key, const QByteArray &bytes)
{
    return {{QStringLiteral("key"), QString::fromLatin1(key)},
            {QStringLiteral("base64"), QString::fromLatin1(bytes.toBase64())}};
}

bool holds(const QAbstractItemModel &model, int column, const QString &text)
{
    for (int row = 0; row < model.rowCount(); ++row) {
        if (model.index(row, column).data().toString().contains(text))
            return true;
    }
    return false;
}

/// A label that stands alone shows the "&" of its shortcut.
QStringList labelsThatLeadNowhere(const QWidget &dialog)
{
    QStringList texts;
    const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
    for (const QLabel *const label : labels) {
        if (label->text().contains(QLatin1Char('&')) && !label->buddy())
            texts.append(label->text());
    }
    return texts;
}

} // namespace

class tst_DesktopHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void logsInWithASecondFactor();
    void longAccountNameStaysInSight();
    void wrongPasswordIsExplained();
    void forgottenPasswordIsAskedFor();
    void cancelledLoginStaysOut();
    void networkSettingsLeadToThePlatform();
    void companyWithoutProjectsIsToldWhatToDo();
    void droppedFolderIsUploadedPausedAndResumed();
    void contentOfAnUploadReachesThePlatform_data();
    void contentOfAnUploadReachesThePlatform();
    void projectsAreSortedAndFiltered();
    void failedListCanBeAskedForAgain();
    void projectIsDownloadedWhole();
    void abortedDownloadAsksAndRemovesItsFolder();
    void abortedUploadIsToldToThePlatform();
    void failureIsExplainedAndCanBeTriedAgain();
    void expiredLoginIsAskedForAgain();
    void tokenThatIsOfNoUseIsAskedForAgain();
    void picturesAreShownSmall();
    void quickviewDataAreShown();
    void closingAsksWhileSomethingRuns();
    void closingWaitsForTheNotice();
    void onlyFoldersCanBeDropped();
    void everythingIsReachedByKeyboard();
    void germanIsSpoken();

private:
    QString local(const char *name) { return folder->filePath(QString::fromLatin1(name)); }
    bool logIn() { return stage->logIn(USER, PASSWORD); }
    /// A project that is there already, with one file that can be held up.
    void addProject();
    QString bucketOf(const QString &projectName);

    LocalPlatform platform;
    NetworkSettings toPlatform;
    QScopedPointer<FreshSettings> settings;
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<DesktopStage> stage;
    QString projectName;
};

void tst_DesktopHost::initTestCase()
{
    QVERIFY(installLanguage(*qApp, QLocale(QLocale::English, QLocale::UnitedKingdom)));
    settings.reset(new FreshSettings);
    QCOMPARE(NetworkSettings().apply(),
             QString()); // what the system trusts is remembered before the platform is trusted
    QCOMPARE(platform.start(), QString());
    toPlatform.proxyKind = NetworkSettings::ProxyKind::Http;
    toPlatform.proxyHost = QNetworkProxy::applicationProxy().hostName();
    toPlatform.proxyPort = QNetworkProxy::applicationProxy().port();
    toPlatform.authorityFile = platform.authorityFile();
}

void tst_DesktopHost::init()
{
    settings.reset(new FreshSettings);
    folder.reset(new QTemporaryDir);
    stage.reset(new DesktopStage);
    projectName = QStringLiteral("Kanal %1").arg(QString::fromLatin1(QTest::currentTestFunction()));
}

void tst_DesktopHost::cleanup()
{
    stage.reset();
    folder.reset();
    platform.clearFaults();
}

void tst_DesktopHost::addProject()
{
    platform.addProject(QUuid::createUuid().toString(QUuid::WithoutBraces), projectName,
                        {object("a.txt", QByteArray(200000, 'a')), object("b.txt", QByteArray(300000, 'b')),
                         object("Picture/Sec/red.jpg", jpeg(Qt::red)), object("Picture/Sec/broken.jpg", "no picture"),
                         object("Video/Sec/flow.mp4", "no video")});
}

QString tst_DesktopHost::bucketOf(const QString &name)
{
    const QJsonArray projects = platform.state().value(QLatin1String("projects")).toArray();
    for (const QJsonValue &project : projects) {
        if (project[QLatin1String("name")].toString() == name)
            return project[QLatin1String("bucket")].toString();
    }
    return {};
}

void tst_DesktopHost::logsInWithASecondFactor()
{
    QVERIFY(stage->type("userName", SECURE_USER));
    QVERIFY(stage->type("password", SECURE_PASSWORD));
    QVERIFY(stage->press(Qt::Key_Return));
    QVERIFY(stage->type("code", QStringLiteral("999999")));
    QVERIFY(stage->press(Qt::Key_Return));
    QVERIFY(stage->read("codeComplaint").startsWith(QStringLiteral("The login was refused")));
    QVERIFY(stage->type("code", SECURE_CODE));
    QVERIFY(stage->press(Qt::Key_Return));
    QVERIFY(stage->waitUntilGone("loginDialog"));
    QCOMPARE(stage->api().loginStatus(), KorvoWebApi::LoginStatus::LoginStatusLoggedIn);
    QVERIFY(stage->read("accountButton").contains(stage->api().currentUserLastName()));
    QCOMPARE(QSettings().value(QStringLiteral("login/user")).toString(), SECURE_USER);
    QVERIFY(!QSettings().allKeys().join(QString()).contains(QStringLiteral("password"), Qt::CaseInsensitive));
}

void tst_DesktopHost::longAccountNameStaysInSight()
{
    const QString user = QString(60, QLatin1Char('m')) + QStringLiteral("@korvo.example");
    platform.addAccount({{QStringLiteral("email"), user},
                         {QStringLiteral("password"), QStringLiteral("Long-1")},
                         {QStringLiteral("firstName"), QString()},
                         {QStringLiteral("lastName"), QString()}});
    QVERIFY(stage->logIn(user, QStringLiteral("Long-1")));
    const auto *const button = stage->see<QToolButton>("accountButton");
    QVERIFY(button);
    QVERIFY(button->text().startsWith(QStringLiteral("mmm")));
    QCOMPARE(button->toolTip(), user);
}

void tst_DesktopHost::wrongPasswordIsExplained()
{
    QVERIFY(stage->type("userName", USER));
    QVERIFY(stage->type("password", QStringLiteral("wrong")));
    QVERIFY(stage->click("loginButton"));
    QVERIFY(stage->read("loginComplaint").startsWith(QStringLiteral("The login was refused")));
    QVERIFY(stage->logIn(USER, PASSWORD));
}

void tst_DesktopHost::forgottenPasswordIsAskedFor()
{
    QVERIFY(stage->type("userName", USER));
    QVERIFY(stage->click("forgottenPassword"));
    QVERIFY(stage->read("loginNotice").contains(USER));
    QTRY_COMPARE_WITH_TIMEOUT(platform.get(QStringLiteral("resets")).toArray().last()[QLatin1String("user")].toString(),
                              USER, PATIENCE_MILLISECONDS);
}

void tst_DesktopHost::cancelledLoginStaysOut()
{
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("delay")},
                       {QStringLiteral("delayMs"), 3000},
                       {QStringLiteral("route"), QStringLiteral("api/Users/CheckTwoStepAuthentication")}});
    const QSignalSpy results(&stage->api(), &KorvoWebApi::loginResult);
    QVERIFY(stage->type("userName", USER));
    QVERIFY(stage->type("password", PASSWORD));
    QVERIFY(stage->click("loginButton"));
    QVERIFY(stage->click("cancelLogin"));
    QVERIFY(stage->isSeen("loginButton"));
    // The check cannot be cancelled, so the login goes through and is taken back.
    QTRY_COMPARE_WITH_TIMEOUT(results.count(), 1, PATIENCE_MILLISECONDS);
    QTRY_COMPARE_WITH_TIMEOUT(stage->api().loginStatus(), KorvoWebApi::LoginStatus::LoginStatusLoggedOut,
                              PATIENCE_MILLISECONDS);
    QVERIFY(stage->isSeen("loginDialog"));
    QVERIFY(logIn());
}

void tst_DesktopHost::networkSettingsLeadToThePlatform()
{
    NetworkSettings nowhere;
    nowhere.proxyKind = NetworkSettings::ProxyKind::Http;
    nowhere.proxyHost = QStringLiteral("127.0.0.1");
    nowhere.proxyPort = 1;
    QCOMPARE(nowhere.apply(), QString());
    stage.reset();
    stage.reset(new DesktopStage);
    QVERIFY(stage->type("userName", USER));
    QVERIFY(stage->type("password", PASSWORD));
    QVERIFY(stage->click("loginButton"));
    QVERIFY(stage->read("loginComplaint").contains(QStringLiteral("network settings")));
    QVERIFY(stage->click("loginNetwork"));
    auto *const kind = stage->see<QComboBox>("proxyKind");
    QVERIFY(kind);
    QCOMPARE(labelsThatLeadNowhere(*kind->window()), QStringList());
    kind->setFocus();
    QTest::keyClick(kind, Qt::Key_End);
    QVERIFY(stage->type("proxyHost", toPlatform.proxyHost));
    stage->see<QSpinBox>("proxyPort")->setValue(toPlatform.proxyPort);
    QVERIFY(stage->type("authorityFile", local("nowhere.pem")));
    QVERIFY(stage->press(Qt::Key_Return));
    QVERIFY(stage->read("networkComplaint").contains(QStringLiteral("cannot be read")));
    QVERIFY(stage->type("authorityFile", toPlatform.authorityFile));
    QVERIFY(stage->press(Qt::Key_Return));
    QVERIFY(stage->waitUntilGone("networkDialog"));
    QVERIFY(logIn());
    QCOMPARE(NetworkSettings::load().authorityFile, toPlatform.authorityFile);
}

void tst_DesktopHost::companyWithoutProjectsIsToldWhatToDo()
{
    platform.addAccount({{QStringLiteral("email"), QStringLiteral("new@korvo.example")},
                         {QStringLiteral("password"), QStringLiteral("New-1")},
                         {QStringLiteral("companyId"), QStringLiteral("new-company")},
                         {QStringLiteral("company"), QStringLiteral("New")}});
    QVERIFY(stage->logIn(QStringLiteral("new@korvo.example"), QStringLiteral("New-1")));
    QTRY_COMPARE_WITH_TIMEOUT(stage->read("projectsEmpty/emptyTitle"),
                              QString::fromUtf8("No projects yet – drop a folder here"), PATIENCE_MILLISECONDS);
    QVERIFY(stage->isSeen("projectsEmpty/emptyButton"));
}

void tst_DesktopHost::droppedFolderIsUploadedPausedAndResumed()
{
    const QString path = local(projectName.toLatin1().constData());
    for (int i = 0; i < 12; ++i)
        QVERIFY(writeFile(path, QStringLiteral("Docs/f%1.bin").arg(i), randomBytes(20000, quint32(i))));
    QVERIFY(writeFile(path, QStringLiteral("large.bin"), randomBytes(9 * MIB, 99)));
    QVERIFY(logIn());
    const int held = platform.addFault({{QStringLiteral("kind"), QStringLiteral("delay")},
                                        {QStringLiteral("delayMs"), 1000},
                                        {QStringLiteral("route"), PUT_FILE_ROUTE},
                                        {QStringLiteral("count"), 0}});
    QVERIFY(stage->drop(path));
    QTRY_VERIFY_WITH_TIMEOUT(stage->read("folderSummary").startsWith(QStringLiteral("13 files, 9.7 MB")),
                             PATIENCE_MILLISECONDS);
    QCOMPARE(stage->read("projectName"), projectName);
    QVERIFY(stage->press(Qt::Key_Return));
    QVERIFY(stage->waitUntilGone("uploadDialog"));
    QVERIFY(platform.waitForHit(held));
    QVERIFY(stage->press(Qt::Key_P, Qt::ControlModifier));
    QCOMPARE(stage->transfer().stage, Stage::Paused);
    QVERIFY(TransferModel::detail(stage->transfer()).endsWith(QStringLiteral("paused")));
    // What is on its way runs to its end; nothing new is begun.
    QTRY_VERIFY_WITH_TIMEOUT(stage->transfer().files.size() <= 1, PATIENCE_MILLISECONDS);
    const int sent = platform.seen(held);
    QVERIFY(sent < 12);
    platform.clearFaults();
    QVERIFY(stage->press(Qt::Key_P, Qt::ControlModifier));
    QVERIFY(stage->waitFor(Stage::Done));
    QCOMPARE(stage->transfer().filesCompleted, 13);
    QCOMPARE(platform.hashes(bucketOf(projectName)).size(), 13);
    // The table has the project at once, and its size.
    QTRY_VERIFY_WITH_TIMEOUT(stage->select(projectName), PATIENCE_MILLISECONDS);
    const auto *const table = stage->see<QTableView>("projectTable");
    const QModelIndex size = table->selectionModel()->selectedRows(ProjectTableModel::Size).first();
    QCOMPARE(size.data().toString(), QStringLiteral("9.7 MB"));
}

void tst_DesktopHost::contentOfAnUploadReachesThePlatform_data()
{
    QTest::addColumn<int>("content");
    QTest::addColumn<QString>("importType");
    QTest::addColumn<QStringList>("keys");
    const QStringList sections{QStringLiteral("Picture/Sec/a.jpg"), QStringLiteral("Picture/Sec/b.jpg")};
    QTest::newRow("standard") << 0 << QString() << sections;
    QTest::newRow("import tool") << 1 << QStringLiteral("OrvandeImport") << sections;
    QTest::newRow("Quickview") << 2 << QStringLiteral("Quickview")
                               << QStringList{QStringLiteral("Picture/Nod/b.jpg"), QStringLiteral("Picture/Sec/a.jpg")};
}

void tst_DesktopHost::contentOfAnUploadReachesThePlatform()
{
    QFETCH(int, content);
    const QString path = local(QTest::currentDataTag());
    for (const char *name : {"a.jpg", "b.jpg"})
        QVERIFY(writeFile(path, QString::fromLatin1(name), name));
    QVERIFY(logIn());
    QVERIFY(stage->drop(path));
    auto *const choice = stage->see<QComboBox>("uploadContent");
    QVERIFY(choice);
    QCOMPARE(labelsThatLeadNowhere(*choice->window()), QStringList());
    choice->setFocus();
    for (int i = 0; i < content; ++i)
        QTest::keyClick(choice, Qt::Key_Down);
    QCOMPARE(stage->see<QSpinBox>("filesAtOnce")->value(), content == 0 ? 3 : 1);
    QCOMPARE(stage->see<QComboBox>("uploadTarget")->isEnabled(), content != 1);
    QCOMPARE(stage->see<QPushButton>("manholeMedia")->isEnabled(), content == 2);
    if (content == 2) {
        QVERIFY(stage->click("manholeMedia"));
        auto *const dialog = stage->see<QFileDialog>("fileDialog");
        QVERIFY(dialog);
        dialog->selectFile(QStringLiteral("b.jpg"));
        QTest::keyClick(dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")), Qt::Key_Return);
        QVERIFY(stage->waitUntilGone("fileDialog"));
        QCOMPARE(stage->read("manholeMedia"), QString::fromUtf8("1 file…"));
    }
    QVERIFY(stage->click("startUpload"));
    QVERIFY(stage->waitFor(Stage::Done));
    const QJsonObject project = platform.project(stage->transfer().projectId);
    QTEST(project.value(QLatin1String("importType")).toString(), "importType");
    QCOMPARE(project.value(QLatin1String("name")).toString(), QString::fromLatin1(QTest::currentDataTag()));
    QTEST(QStringList(platform.hashes(project.value(QLatin1String("bucket")).toString()).keys()), "keys");
}

void tst_DesktopHost::projectsAreSortedAndFiltered()
{
    platform.addProject(QStringLiteral("sort-1"), QStringLiteral("zz-small"), {object("a", "1")});
    platform.addProject(QStringLiteral("sort-2"), QStringLiteral("zz-large"), {object("a", QByteArray(5000, 'x'))});
    QVERIFY(logIn());
    auto *const table = stage->see<QTableView>("projectTable");
    QVERIFY(table);
    QVERIFY(stage->press(Qt::Key_F, Qt::ControlModifier));
    QVERIFY(stage->type("projectFilter", QStringLiteral("ZZ-")));
    QCOMPARE(table->model()->rowCount(), 2);
    const QHeaderView *const header = table->horizontalHeader();
    const QPoint size(header->sectionViewportPosition(ProjectTableModel::Size) + 10, header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, size);
    const QString first = table->model()->index(0, 0).data().toString();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, size);
    QCOMPARE(QStringList({first, table->model()->index(0, 0).data().toString()}),
             QStringList({QStringLiteral("zz-small"), QStringLiteral("zz-large")}));
    QVERIFY(stage->type("projectFilter", QStringLiteral("nothing like it")));
    QCOMPARE(stage->read("projectsEmpty/emptyTitle"), QStringLiteral("No project matches \"nothing like it\""));
    QVERIFY(stage->click("projectsEmpty/emptyButton"));
    QVERIFY(stage->see<QTableView>("projectTable")->model()->rowCount() >= 2);
}

void tst_DesktopHost::failedListCanBeAskedForAgain()
{
    platform.addAccount({{QStringLiteral("email"), QStringLiteral("list@korvo.example")},
                         {QStringLiteral("password"), QStringLiteral("List-1")},
                         {QStringLiteral("companyId"), QStringLiteral("list-company")},
                         {QStringLiteral("company"), QStringLiteral("List")}});
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("status")},
                       {QStringLiteral("status"), 500},
                       {QStringLiteral("route"), QStringLiteral("api/Projects")}});
    QVERIFY(stage->logIn(QStringLiteral("list@korvo.example"), QStringLiteral("List-1")));
    QTRY_COMPARE_WITH_TIMEOUT(stage->read("projectsEmpty/emptyTitle"),
                              QStringLiteral("The projects could not be listed"), PATIENCE_MILLISECONDS);
    QVERIFY(stage->read("messageTitle").contains(QStringLiteral("failure of its own")));
    QVERIFY(stage->click("projectsEmpty/emptyButton"));
    QTRY_COMPARE_WITH_TIMEOUT(stage->read("projectsEmpty/emptyTitle"),
                              QString::fromUtf8("No projects yet – drop a folder here"), PATIENCE_MILLISECONDS);
}

void tst_DesktopHost::projectIsDownloadedWhole()
{
    addProject();
    QVERIFY(logIn());
    QVERIFY(stage->select(projectName));
    QVERIFY(stage->press(Qt::Key_D, Qt::ControlModifier));
    QCOMPARE(labelsThatLeadNowhere(*stage->see<QWidget>("downloadDialog")), QStringList());
    QVERIFY(stage->press(Qt::Key_Escape));
    QVERIFY(stage->waitUntilGone("downloadDialog"));
    QVERIFY(stage->download(local("out")));
    QVERIFY(stage->waitFor(Stage::Done));
    QCOMPARE(stage->transfer().filesCompleted, 5);
    QCOMPARE(treeOf(local("out")).size(), 5);
    QCOMPARE(readFile(local("out/b.txt")), QByteArray(300000, 'b'));
}

void tst_DesktopHost::abortedDownloadAsksAndRemovesItsFolder()
{
    addProject();
    QVERIFY(logIn());
    QVERIFY(stage->select(projectName));
    const int held = platform.addFault(QStringLiteral("stallInBody"), FILE_ROUTE, 0);
    QVERIFY(stage->download(local("out")));
    QVERIFY(platform.waitForHit(held));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(local("out")), PATIENCE_MILLISECONDS);
    QVERIFY(stage->press(Qt::Key_Backspace, Qt::ControlModifier));
    const auto *const question = stage->see<QMessageBox>("abortQuestion");
    QVERIFY(question);
    QVERIFY(question->informativeText().contains(local("out")));
    QVERIFY(stage->press(Qt::Key_Escape));
    QVERIFY(stage->waitUntilGone("abortQuestion"));
    QVERIFY(!stage->transfer().hasEnded());
    QVERIFY(QFileInfo::exists(local("out")));
    QVERIFY(stage->press(Qt::Key_Backspace, Qt::ControlModifier));
    QVERIFY(stage->click("abortConfirmed"));
    QVERIFY(stage->waitFor(Stage::Aborted));
    QVERIFY(!QFileInfo::exists(local("out")));
    QVERIFY(TransferModel::detail(stage->transfer()).contains(QStringLiteral("has been removed")));
}

void tst_DesktopHost::abortedUploadIsToldToThePlatform()
{
    const QString path = local("aborted upload");
    QVERIFY(writeFile(path, QStringLiteral("a.bin"), randomBytes(20000, 1)));
    QVERIFY(logIn());
    const int held = platform.addFault(QStringLiteral("noAnswer"), PUT_FILE_ROUTE);
    QVERIFY(stage->upload(path));
    QVERIFY(platform.waitForHit(held));
    QVERIFY(stage->press(Qt::Key_Backspace, Qt::ControlModifier));
    QVERIFY(stage->click("abortConfirmed"));
    QVERIFY(stage->waitFor(Stage::Aborted));
    const QString projectId = stage->transfer().projectId;
    const auto status = [&] { return platform.project(projectId).value(QLatin1String("status")).toInt(); };
    QTRY_COMPARE_WITH_TIMEOUT(status(), 3, PATIENCE_MILLISECONDS);
    // A file that the abort has cut off is no problem to be shown.
    QVERIFY(!stage->isSeen("messageBar"));
}

void tst_DesktopHost::failureIsExplainedAndCanBeTriedAgain()
{
    const QString path = local("failing");
    QVERIFY(writeFile(path, QStringLiteral("a.bin"), randomBytes(20000, 1)));
    QVERIFY(logIn());
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("status")},
                       {QStringLiteral("status"), 500},
                       {QStringLiteral("route"), PUT_FILE_ROUTE},
                       {QStringLiteral("count"), 0}});
    QVERIFY(stage->upload(path));
    QVERIFY(stage->waitFor(Stage::Failed));
    QCOMPARE(stage->transfer().error, Error::Server);
    QCOMPARE(stage->read("messageTitle"), QStringLiteral("The platform reports a failure of its own"));
    const auto *const tabs = stage->see<QTabWidget>("lowerTabs");
    QVERIFY(tabs->tabText(1).contains(QLatin1Char('1')));
    QVERIFY(stage->click("messageButton"));
    const auto *const problems = stage->see<QListView>("problemView");
    QVERIFY(problems);
    QVERIFY(
        problems->model()->index(0, 0).data().toString().contains(QStringLiteral("If it stays, tell the operator")));
    QCOMPARE(tabs->tabText(1), QStringLiteral("Problems"));
    // The library's own words are in the log.
    QVERIFY(stage->press(Qt::Key_3, Qt::ControlModifier));
    const auto *const log = stage->see<QTableView>("logView");
    QVERIFY(log);
    QVERIFY(holds(*log->model(), LogModel::Text, QStringLiteral("InternalServerError")));
    platform.clearFaults();
    QVERIFY(stage->press(Qt::Key_1, Qt::ControlModifier));
    QVERIFY(stage->press(Qt::Key_T, Qt::ControlModifier));
    QVERIFY(stage->waitFor(Stage::Done));
    QCOMPARE(stage->transfers().rowCount(), 2);
}

void tst_DesktopHost::expiredLoginIsAskedForAgain()
{
    const QString path = local("expiring");
    QVERIFY(writeFile(path, QStringLiteral("a.bin"), randomBytes(20000, 1)));
    QVERIFY(writeFile(path, QStringLiteral("b.bin"), randomBytes(20000, 2)));
    const int held = platform.addFault({{QStringLiteral("kind"), QStringLiteral("delay")},
                                        {QStringLiteral("delayMs"), 1500},
                                        {QStringLiteral("route"), PUT_FILE_ROUTE},
                                        {QStringLiteral("count"), 0}});
    QVERIFY(logIn());
    QVERIFY(stage->drop(path));
    stage->see<QSpinBox>("filesAtOnce")->setValue(1);
    QVERIFY(stage->click("startUpload"));
    QVERIFY(platform.waitForHit(held));
    // The token is gone, and that is told as it is when its time is up.
    stage->api().logout();
    Q_EMIT stage->api().loginExpired();
    QVERIFY(stage->read("loginReason").contains(QStringLiteral("expired")));
    QCOMPARE(stage->transfer().stage, Stage::Paused);
    platform.clearFaults();
    QCOMPARE(stage->read("userName"), USER);
    QVERIFY(stage->see<QLineEdit>("userName")->isReadOnly());
    QVERIFY(stage->type("password", PASSWORD));
    QVERIFY(stage->click("loginButton"));
    QVERIFY(stage->waitUntilGone("loginDialog"));
    QVERIFY(stage->waitFor(Stage::Done));
    QCOMPARE(stage->transfer().filesCompleted, 2);
}

// It counts as run out ten minutes before it does.
void tst_DesktopHost::tokenThatIsOfNoUseIsAskedForAgain()
{
    const QString user = QStringLiteral("brief@korvo.example");
    platform.addAccount({{QStringLiteral("email"), user},
                         {QStringLiteral("password"), QStringLiteral("Brief-1")},
                         {QStringLiteral("tokenLifetime"), 60}});
    QVERIFY(stage->type("userName", user));
    QVERIFY(stage->type("password", QStringLiteral("Brief-1")));
    QVERIFY(stage->click("loginButton"));
    QVERIFY(stage->read("loginReason").contains(QStringLiteral("expired")));
    QCOMPARE(stage->read("userName"), user);
}

void tst_DesktopHost::picturesAreShownSmall()
{
    addProject();
    QVERIFY(logIn());
    QVERIFY(stage->select(projectName));
    QVERIFY(stage->press(Qt::Key_M, Qt::ControlModifier));
    auto *const list = stage->see<QListView>("mediaList");
    QVERIFY(list);
    QCOMPARE(list->model()->rowCount(), 3);
    const auto stateOf = [list](const QString &name) {
        for (int row = 0; row < list->model()->rowCount(); ++row) {
            if (list->model()->index(row, 0).data().toString() == name)
                return list->model()->index(row, 0).data(MediaModel::StateRole).toInt();
        }
        return -1;
    };
    QTRY_COMPARE_WITH_TIMEOUT(stateOf(QStringLiteral("red.jpg")), int(MediaModel::State::Shown), PATIENCE_MILLISECONDS);
    QTRY_COMPARE_WITH_TIMEOUT(stateOf(QStringLiteral("broken.jpg")), int(MediaModel::State::Failed),
                              PATIENCE_MILLISECONDS);
    QCOMPARE(stateOf(QStringLiteral("flow.mp4")), int(MediaModel::State::Video));
    for (int row = 0; row < 3; ++row) {
        if (list->model()->index(row, 0).data().toString() == QLatin1String("red.jpg"))
            list->setCurrentIndex(list->model()->index(row, 0));
    }
    QVERIFY(stage->click("saveMedia"));
    auto *const dialog = stage->see<QFileDialog>("fileDialog");
    QVERIFY(dialog);
    dialog->setDirectory(folder->path());
    dialog->selectFile(QStringLiteral("saved.jpg"));
    QTest::keyClick(dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")), Qt::Key_Return);
    QVERIFY(stage->waitFor(Stage::Done));
    QCOMPARE(readFile(local("saved.jpg")), jpeg(Qt::red));
}

void tst_DesktopHost::quickviewDataAreShown()
{
    addProject();
    QVERIFY(logIn());
    QVERIFY(stage->select(projectName));
    QVERIFY(stage->press(Qt::Key_I, Qt::ControlModifier));
    const auto *const tabs = stage->see<QTabWidget>("quickviewTabs");
    QVERIFY(tabs);
    const auto *const tree = tabs->widget(0)->findChild<QTreeWidget *>();
    QTRY_COMPARE_WITH_TIMEOUT(tree->topLevelItemCount(), 1, PATIENCE_MILLISECONDS);
    QCOMPARE(tree->topLevelItem(0)->text(0), QStringLiteral("QuickviewProject"));
    const auto *const surveys = tabs->widget(1)->findChild<QTreeWidget *>();
    QTRY_VERIFY_WITH_TIMEOUT(surveys->topLevelItemCount() == 1 && surveys->topLevelItem(0)->childCount() == 3,
                             PATIENCE_MILLISECONDS);
    // Data of a window of their own are no transfers of the user's.
    QCOMPARE(stage->transfers().rowCount(), 0);
}

void tst_DesktopHost::closingAsksWhileSomethingRuns()
{
    addProject();
    QVERIFY(logIn());
    QVERIFY(stage->select(projectName));
    const int held = platform.addFault(QStringLiteral("stallInBody"), FILE_ROUTE, 0);
    QVERIFY(stage->download(local("out")));
    QVERIFY(platform.waitForHit(held));
    QVERIFY(!stage->window().close());
    QVERIFY(stage->click("stay"));
    QVERIFY(stage->waitUntilGone("closeQuestion"));
    QVERIFY(stage->window().isVisible());
    QVERIFY(!stage->window().close());
    QVERIFY(stage->click("leave"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage->window().isVisible(), PATIENCE_MILLISECONDS);
    QVERIFY(QFileInfo::exists(local("out")));
}

void tst_DesktopHost::closingWaitsForTheNotice()
{
    const QString path = local("confirmed");
    QVERIFY(writeFile(path, QStringLiteral("a.bin"), "a"));
    QVERIFY(logIn());
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("delay")},
                       {QStringLiteral("delayMs"), 1500},
                       {QStringLiteral("route"), UPLOADED_ROUTE}});
    QVERIFY(stage->upload(path));
    QVERIFY(stage->waitFor(Stage::Confirming));
    const QString projectId = stage->transfer().projectId;
    QVERIFY(!stage->window().close());
    QVERIFY(stage->window().isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!stage->window().isVisible(), PATIENCE_MILLISECONDS);
    QCOMPARE(platform.project(projectId).value(QLatin1String("status")).toInt(), 2);
}

void tst_DesktopHost::onlyFoldersCanBeDropped()
{
    QVERIFY(writeFile(folder->path(), QStringLiteral("file.txt"), "x"));
    QVERIFY(!stage->drop(folder->path())); // not logged in
    QVERIFY(logIn());
    QVERIFY(!stage->drop(local("file.txt")));
    QVERIFY(!stage->isSeen("uploadDialog"));
}

void tst_DesktopHost::everythingIsReachedByKeyboard()
{
    addProject();
    QVERIFY(logIn());
    QVERIFY(stage->select(projectName));
    QSet<QString> shortcuts;
    const QList<QMenu *> menus = stage->window().menuBar()->findChildren<QMenu *>();
    QVERIFY(menus.size() >= 5);
    for (const QMenu *const menu : menus) {
        if (menu->title().isEmpty()) // what does not fit into the bar
            continue;
        QVERIFY2(menu->title().contains(QLatin1Char('&')), qPrintable(menu->title()));
        QSet<QChar> mnemonics;
        for (const QAction *const action : menu->actions()) {
            if (action->isSeparator())
                continue;
            const int mark = action->text().indexOf(QLatin1Char('&'));
            QVERIFY2(mark >= 0, qPrintable(action->text()));
            const QChar mnemonic = action->text().at(mark + 1).toLower();
            QVERIFY2(!mnemonics.contains(mnemonic), qPrintable(menu->title() + action->text()));
            mnemonics.insert(mnemonic);
            if (action->shortcut().isEmpty())
                continue;
            QVERIFY2(!shortcuts.contains(action->shortcut().toString()), qPrintable(action->text()));
            shortcuts.insert(action->shortcut().toString());
        }
    }
    QVERIFY(shortcuts.size() >= 15);
    // One turn with Tab comes by all that takes part in the work.
    QSet<QString> reached;
    for (int i = 0; i < 40; ++i) {
        stage->press(Qt::Key_Tab);
        if (const QWidget *const widget = QApplication::focusWidget())
            reached.insert(widget->objectName());
    }
    for (const char *name : {"projectFilter", "projectTable", "accountButton"})
        QVERIFY2(reached.contains(QString::fromLatin1(name)), name);
}

void tst_DesktopHost::germanIsSpoken()
{
    QVERIFY(installLanguage(*qApp, QLocale(QLocale::German, QLocale::Germany)));
    stage.reset();
    stage.reset(new DesktopStage);
    QCOMPARE(stage->read("loginButton"), QStringLiteral("&Anmelden"));
    QCOMPARE(stage->read("forgottenPassword"), QStringLiteral("Passwort &vergessen"));
}

QTEST_MAIN(tst_DesktopHost)

#include "tst_DesktopHost.moc"
