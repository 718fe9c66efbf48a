#include "flow/Folders.h"
#include "flow/Session.h"
#include "support/LogCapture.h"

#include <QtCore/QElapsedTimer>
#include <QtTest/QtTest>

#include <chrono>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using namespace std::chrono_literals;
using LoginResult = KorvoWebApi::LoginResult;
using LoginStatus = KorvoWebApi::LoginStatus;

namespace {

const QString CLOCK_ROUTE = QStringLiteral("api/Status/Get");
const QString CREDENTIALS_ROUTE = QStringLiteral("api/Projects/companykorvoservice");
const QString INIT_ROUTE = QStringLiteral("api/UploadProject/Init");

} // namespace

/// The worker waits for some answers before it does anything else. Calls of the host that come meanwhile are kept.
class tst_HostCallsDuringWaits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void callsAreMadeInOrderWhenTheWaitIsOver_data();
    void callsAreMadeInOrderWhenTheWaitIsOver();
    void gettersDoNotWait();
    void silentClockHoldsTheLoginUpForThreeSeconds();
    void cancelDuringTheWaitDoesNothing();
    void logoutDuringTheWaitComesAfterTheLogin();
    void newLoginDuringTheWaitComesAfterTheLogin();
    void abortDuringTheBeginEndsTheUpload();
    void transfersGoOnDuringTheWait();

private:
    int delay(const QString &route, int milliseconds);

    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QScopedPointer<Session> session;
};

void tst_HostCallsDuringWaits::initTestCase()
{
    QCOMPARE(platform.start(), QString());
    platform.addProject(QStringLiteral("stored"), QStringLiteral("stored"),
                        { QJsonObject { { QStringLiteral("key"), QStringLiteral("a") }, { QStringLiteral("size"), 3000000 } } });
}

void tst_HostCallsDuringWaits::init()
{
    log.reset(new LogCapture);
    session.reset(new Session);
    platform.startJournal();
}

void tst_HostCallsDuringWaits::cleanup()
{
    platform.clearFaults();
    session.reset();
    log.reset();
}

int tst_HostCallsDuringWaits::delay(const QString &route, int milliseconds)
{
    return platform.addFault({ { QStringLiteral("kind"), QStringLiteral("delay") }, { QStringLiteral("route"), route },
                               { QStringLiteral("delayMs"), milliseconds } });
}

void tst_HostCallsDuringWaits::callsAreMadeInOrderWhenTheWaitIsOver_data()
{
    QTest::addColumn<QString>("route");
    QTest::newRow("clock") << CLOCK_ROUTE;
    QTest::newRow("credentials") << CREDENTIALS_ROUTE;
}

void tst_HostCallsDuringWaits::callsAreMadeInOrderWhenTheWaitIsOver()
{
    QFETCH(QString, route);
    const int slow = delay(route, 400);
    QTemporaryDir folder;
    session->api().login(USER, PASSWORD);
    QVERIFY(platform.waitForHit(slow));
    session->api().queryRemoteProjects();
    session->api().queryUploadProjectStatus({ QStringLiteral("stored") });
    QCOMPARE(session->api().downloadQuickviewProjectData(QStringLiteral("stored"), folder.filePath(QStringLiteral("a"))), 1u);
    QCOMPARE(session->api().uploadProject(QStringLiteral("new"), QStringLiteral("new"), folder.filePath(QStringLiteral("in")),
                                          PROJECT_DATE), 1u);
    QCOMPARE(session->signalsSeen().count("loginResult"), 0);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QVERIFY(session->signalsSeen().waitFor("projectInfoReceived"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());

    // Nothing was asked before the login was complete.
    const QStringList journal = platform.journal();
    const int credentials = journal.indexOf(QStringLiteral("GET ") + CREDENTIALS_ROUTE);
    QCOMPARE(credentials, 3);
    for (const char *line : { "GET api/Projects", "POST api/UploadProject/Statuses", "GET api/Projects/stored/Quickview",
                              "POST api/UploadProject/Init" })
        QVERIFY2(journal.indexOf(QLatin1String(line)) > credentials, line);
    const QByteArrayList names = session->signalsSeen().names();
    const int result = names.indexOf("loginResult");
    QVERIFY(result < names.indexOf("projectInfoReceived"));
    QVERIFY(result < names.indexOf("downloadActiveChanged"));
    QVERIFY(names.indexOf("downloadActiveChanged") < names.indexOf("anyUploadActiveChanged"));
}

void tst_HostCallsDuringWaits::gettersDoNotWait()
{
    const int slow = delay(CREDENTIALS_ROUTE, 1500);
    session->api().login(USER, PASSWORD);
    QVERIFY(platform.waitForHit(slow));
    QElapsedTimer timer;
    timer.start();
    const LoginStatus status = session->api().loginStatus();
    const QString user = session->api().currentUser();
    const bool active = session->api().anyUploadActive() || session->api().anyDownloadActive();
    QVERIFY2(timer.elapsed() < 500, qPrintable(QString::number(timer.elapsed())));
    // The token is there already, so the status says so; the end of the login is still to come.
    QCOMPARE(status, LoginStatus::LoginStatusLoggedIn);
    QCOMPARE(user, USER);
    QVERIFY(!active);
    QCOMPARE(session->signalsSeen().count("loginResult"), 0);
    QVERIFY(session->signalsSeen().waitFor("loginResult"));
}

void tst_HostCallsDuringWaits::silentClockHoldsTheLoginUpForThreeSeconds()
{
    platform.addFault(QStringLiteral("noAnswer"), CLOCK_ROUTE);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(session->logIn());
    QVERIFY2(timer.elapsed() >= 2900 && timer.elapsed() < 6000, qPrintable(QString::number(timer.elapsed())));
    // The clocks of this machine and the platform agree, so signed requests hold all the same.
    QTemporaryDir folder;
    session->api().downloadProject(QStringLiteral("stored"), QStringLiteral("stored"), folder.path());
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
}

void tst_HostCallsDuringWaits::cancelDuringTheWaitDoesNothing()
{
    const int slow = delay(CREDENTIALS_ROUTE, 300);
    session->api().login(USER, PASSWORD);
    QVERIFY(platform.waitForHit(slow));
    session->api().cancelLogin();
    QVERIFY(session->signalsSeen().waitFor("loginResult"));
    QVERIFY(session->settle());
    QCOMPARE(session->signalsSeen().all("loginResult").size(), 1);
    QCOMPARE(session->signalsSeen().all("loginResult").first().at(1).value<LoginResult>(), LoginResult::LoginResultSuccess);
    QCOMPARE(session->api().loginStatus(), LoginStatus::LoginStatusLoggedIn);
}

void tst_HostCallsDuringWaits::logoutDuringTheWaitComesAfterTheLogin()
{
    const int slow = delay(CREDENTIALS_ROUTE, 300);
    session->api().login(USER, PASSWORD);
    QVERIFY(platform.waitForHit(slow));
    session->api().logout();
    QVERIFY(session->signalsSeen().waitFor("loginResult"));
    QVERIFY(session->signalsSeen().waitFor("loginStatusChanged", 3));
    QCOMPARE(session->signalsSeen().names(),
             QByteArrayList({ "loginStatusChanged", "currentUserChanged", "loginStatusChanged", "loginResult",
                              "loginStatusChanged" }));
    QCOMPARE(session->api().loginStatus(), LoginStatus::LoginStatusLoggedOut);
}

void tst_HostCallsDuringWaits::newLoginDuringTheWaitComesAfterTheLogin()
{
    const int slow = delay(CLOCK_ROUTE, 300);
    session->api().login(USER, PASSWORD);
    QVERIFY(platform.waitForHit(slow));
    session->api().login(EXPIRING_USER, EXPIRING_PASSWORD);
    QVERIFY(session->signalsSeen().waitFor("loginResult", 2));
    QStringList users;
    for (const QVariantList &arguments : session->signalsSeen().all("loginResult")) {
        users.append(arguments.at(0).toString());
        QCOMPARE(arguments.at(1).value<LoginResult>(), LoginResult::LoginResultSuccess);
    }
    QCOMPARE(users, QStringList({ USER, EXPIRING_USER }));
    QCOMPARE(session->api().currentUser(), EXPIRING_USER);
}

void tst_HostCallsDuringWaits::abortDuringTheBeginEndsTheUpload()
{
    QVERIFY(session->logIn());
    QTemporaryDir folder;
    QVERIFY(writeFile(folder.path(), QStringLiteral("a.txt"), "content"));
    const int slow = delay(INIT_ROUTE, 300);
    session->api().uploadProject(QStringLiteral("aborted"), QStringLiteral("aborted"), folder.path(), PROJECT_DATE);
    QVERIFY(platform.waitForHit(slow));
    session->api().abortUpload(1);
    QVERIFY(session->signalsSeen().waitFor("anyUploadActiveChanged", 2));
    QTRY_COMPARE(platform.project(QStringLiteral("aborted")).value(QLatin1String("status")).toInt(), 3);
    QCOMPARE(platform.journal().filter(QStringLiteral("putfile")), QStringList());
    QCOMPARE(log->messages(), QStringList());
}

void tst_HostCallsDuringWaits::transfersGoOnDuringTheWait()
{
    QVERIFY(session->logIn());
    QTemporaryDir folder;
    const int slow = delay(INIT_ROUTE, 1500);
    const int fileSlow = delay(QStringLiteral("webdav/*"), 200);
    session->api().downloadProject(QStringLiteral("stored"), QStringLiteral("stored"), folder.filePath(QStringLiteral("out")));
    QVERIFY(platform.waitForHit(fileSlow));
    const QString name = QStringLiteral("slow");
    session->api().uploadProject(name, name, folder.filePath(QStringLiteral("in")), PROJECT_DATE);
    QVERIFY(platform.waitForHit(slow));
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().count("uploadFinished"), 0);
    QCOMPARE(QFileInfo(folder.filePath(QStringLiteral("out/a"))).size(), 3000000);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
}

QTEST_GUILESS_MAIN(tst_HostCallsDuringWaits)

#include "tst_HostCallsDuringWaits.moc"
