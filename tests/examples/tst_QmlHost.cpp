#include "Patience.h"
#include "QuickStage.h"
#include "flow/Folders.h"
#include "flow/LocalPlatform.h"
#include "flow/Session.h"

#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>

using namespace Korvo;
using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QString PUT_FILE_ROUTE = QStringLiteral("api/bucket/putfile");
const QString CREDENTIALS_ROUTE = QStringLiteral("api/Projects/companykorvoservice");
const QString EXPIRED = QStringLiteral("Your login has expired. Log in again to go on.");

} // namespace

class tst_QmlHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void logsInWithASecondFactor();
    void everyLoginResultHasItsWords_data();
    void everyLoginResultHasItsWords();
    void uploadsPausesResumesAndFinishes();
    void abortedUploadEnds();
    void failureIsToldInWords();
    void logoutShowsTheLoginAgain();
    void expiryShowsTheLoginAgain_data();
    void expiryShowsTheLoginAgain();
    void failuresAfterTheExpiryAreNoNews();
    void projectsAreAList();

private:
    /// Logs in and waits for the list of projects, so that no answer but those to what follows is on its way.
    bool logIn();
    bool waitForText(const char *name, const QString &text);
    bool waitForState(const QString &state);
    /// A folder of eight files, with a name that is no good as an address.
    QString makeFolder();

    LocalPlatform platform;
    QTemporaryDir folder;
    QScopedPointer<QuickStage> stage;
};

void tst_QmlHost::initTestCase()
{
    QQuickWindow::setSceneGraphBackend(QSGRendererInterface::Software);
    KorvoWebLibrary::initialize();
    Qml::Host::registerTypes();
    QCOMPARE(platform.start(), QString());
}

void tst_QmlHost::init()
{
    stage.reset(new QuickStage);
    QVERIFY(stage->window());
}

void tst_QmlHost::cleanup()
{
    const QStringList complaints = stage->complaints();
    stage.reset();
    platform.clearFaults();
    QCOMPARE(complaints, QStringList());
}

bool tst_QmlHost::logIn()
{
    const QSignalSpy lists(&stage->api(), &KorvoWebApi::projectInfoReceived);
    return stage->logIn(USER, PASSWORD)
           && eventually([&] { return stage->isSeen("path") && !lists.isEmpty(); }, PATIENCE);
}

bool tst_QmlHost::waitForText(const char *name, const QString &text)
{
    if (eventually([&] { return stage->text(name) == text; }, PATIENCE))
        return true;
    qWarning("%s: \"%s\" instead of \"%s\"", name, qPrintable(stage->text(name)), qPrintable(text));
    return false;
}

bool tst_QmlHost::waitForState(const QString &state)
{
    return eventually([&] { return stage->text("uploadState").endsWith(state); }, PATIENCE);
}

QString tst_QmlHost::makeFolder()
{
    static int number = 0;
    const QString name = QStringLiteral("50% quick #%1?").arg(++number);
    for (int i = 0; i < 8; ++i)
        writeFile(folder.filePath(name), QStringLiteral("f%1.bin").arg(i), randomBytes(20000, quint32(i)));
    return folder.filePath(name);
}

void tst_QmlHost::logsInWithASecondFactor()
{
    QVERIFY(stage->logIn(SECURE_USER, SECURE_PASSWORD));
    QVERIFY(stage->type("code", QStringLiteral("000000")));
    QVERIFY(stage->click("loginButton"));
    QVERIFY(waitForText("answer", QStringLiteral("User name, password or code is wrong.")));
    QVERIFY(stage->type("code", SECURE_CODE));
    QVERIFY(stage->click("loginButton"));
    QVERIFY(eventually([&] { return !stage->isSeen("loginButton"); }, PATIENCE));
    const QString firstName = stage->api().currentUserFirstName();
    QVERIFY(!firstName.isEmpty());
    QCOMPARE(stage->text("userLabel"), QString(firstName + QLatin1Char(' ') + stage->api().currentUserLastName()));
}

void tst_QmlHost::everyLoginResultHasItsWords_data()
{
    QTest::addColumn<KorvoWebApi::LoginResult>("result");
    QTest::addColumn<QString>("words");
    QTest::newRow("time-out") << KorvoWebApi::LoginResult::LoginResultTimeOut
                              << QStringLiteral("The platform gave no usable answer.");
    QTest::newRow("credentials") << KorvoWebApi::LoginResult::LoginResultFalseCredentials
                                 << QStringLiteral("User name, password or code is wrong.");
    QTest::newRow("cancelled") << KorvoWebApi::LoginResult::LoginResultCancelled
                               << QStringLiteral("The login was cancelled.");
}

void tst_QmlHost::everyLoginResultHasItsWords()
{
    QFETCH(KorvoWebApi::LoginResult, result);
    Q_EMIT stage->api().loginResult(QString(), result);
    QTEST(stage->text("answer"), "words");
}

void tst_QmlHost::uploadsPausesResumesAndFinishes()
{
    QVERIFY(logIn());
    const int held = platform.addFault({{QStringLiteral("kind"), QStringLiteral("delay")},
                                        {QStringLiteral("delayMs"), 300},
                                        {QStringLiteral("route"), PUT_FILE_ROUTE},
                                        {QStringLiteral("count"), 3}});
    const int before = stage->projects().count();
    QVERIFY(stage->type("path", makeFolder()));
    QVERIFY(stage->click("uploadButton"));
    QVERIFY(platform.waitForHit(held));
    QVERIFY(stage->click("pauseButton"));
    QVERIFY(waitForState(QStringLiteral("Paused")));
    QVERIFY(stage->api().anyUploadActive());
    QVERIFY(stage->click("pauseButton"));
    QVERIFY(waitForText("uploadState", QString::fromUtf8("8 of 8 files · Uploaded")));
    QTRY_COMPARE_WITH_TIMEOUT(stage->projects().count(), before + 1, PATIENCE_MILLISECONDS);
    QVERIFY(!stage->isSeen("pauseButton"));
}

void tst_QmlHost::abortedUploadEnds()
{
    QVERIFY(logIn());
    const int held = platform.addFault(QStringLiteral("noAnswer"), PUT_FILE_ROUTE, 3);
    QVERIFY(stage->type("path", makeFolder()));
    QVERIFY(stage->click("uploadButton"));
    QVERIFY(platform.waitForHit(held));
    QVERIFY(stage->click("abortButton"));
    QVERIFY(waitForState(QStringLiteral("Ended")));
    QVERIFY(!stage->isSeen("abortButton"));
}

void tst_QmlHost::failureIsToldInWords()
{
    QVERIFY(logIn());
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("status")},
                       {QStringLiteral("status"), 500},
                       {QStringLiteral("route"), QStringLiteral("api/Projects")}});
    QVERIFY(stage->click("refreshButton"));
    QVERIFY(waitForText("problem", QStringLiteral("The platform reports a failure of its own. Try again later.")));
    QVERIFY(stage->click("refreshButton"));
    QVERIFY(waitForText("problem", QString()));
}

void tst_QmlHost::logoutShowsTheLoginAgain()
{
    QVERIFY(logIn());
    QVERIFY(stage->click("logoutButton"));
    QVERIFY(eventually([&] { return stage->isSeen("loginButton"); }, PATIENCE));
    QCOMPARE(stage->text("userLabel"), QStringLiteral("Not logged in"));
    QCOMPARE(stage->text("password"), QString());
}

// A token counts as run out ten minutes before it does. The end of the login takes two seconds here.
void tst_QmlHost::expiryShowsTheLoginAgain_data()
{
    QTest::addColumn<int>("lifetime");
    QTest::newRow("before the login") << 60;
    QTest::newRow("before the login's end") << 602;
    QTest::newRow("later") << 605;
}

void tst_QmlHost::expiryShowsTheLoginAgain()
{
    QFETCH(int, lifetime);
    const QString user = QStringLiteral("%1@korvo.example").arg(lifetime);
    platform.addAccount({{QStringLiteral("email"), user},
                         {QStringLiteral("password"), QStringLiteral("Brief-1")},
                         {QStringLiteral("tokenLifetime"), lifetime}});
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("delay")},
                       {QStringLiteral("delayMs"), 2000},
                       {QStringLiteral("route"), CREDENTIALS_ROUTE}});
    const QSignalSpy results(&stage->api(), &KorvoWebApi::loginResult);
    QVERIFY(stage->logIn(user, QStringLiteral("Brief-1")));
    QVERIFY(eventually([&] { return !results.isEmpty(); }, PATIENCE));
    QCOMPARE(results.first().at(1).value<KorvoWebApi::LoginResult>(), KorvoWebApi::LoginResult::LoginResultSuccess);
    QVERIFY(waitForText("problem", EXPIRED));
    QVERIFY(stage->isSeen("loginButton"));
    QVERIFY(logIn());
    QCOMPARE(stage->text("problem"), QString());
}

void tst_QmlHost::failuresAfterTheExpiryAreNoNews()
{
    QVERIFY(logIn());
    Q_EMIT stage->api().loginExpired();
    Q_EMIT stage->api().errorOccurred(Error::AuthenticationRequired);
    QCOMPARE(stage->text("problem"), EXPIRED);
}

void tst_QmlHost::projectsAreAList()
{
    Qml::ProjectListModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    model.setProjects({ProjectInfo(QStringLiteral("Nord"), QStringLiteral("1"), QStringLiteral("Nord"),
                                   QDateTime(QDate(2026, 3, 3), QTime(14, 5)), 60200000, true)});
    const QModelIndex index = model.index(0);
    QCOMPARE(index.data(Qml::ProjectListModel::NameRole).toString(), QStringLiteral("Nord"));
    QCOMPARE(index.data(Qml::ProjectListModel::CreatedRole).toString(), QStringLiteral("03/03/2026 14:05"));
    QCOMPARE(index.data(Qml::ProjectListModel::SizeRole).toString(), QStringLiteral("60.2 MB"));
    QVERIFY(index.data(Qml::ProjectListModel::ImportedByWebRole).toBool());
}

QTEST_MAIN(tst_QmlHost)

#include "tst_QmlHost.moc"
