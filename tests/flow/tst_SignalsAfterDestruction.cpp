#include "flow/Folders.h"
#include "flow/Session.h"
#include "support/LogCapture.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QDir>
#include <QtCore/QThread>
#include <QtTest/QtTest>

#include <chrono>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

/// Threads of this process, where the system tells them.
int threadCount()
{
    return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

} // namespace

class tst_SignalsAfterDestruction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void answersThatComeLateAreNotHeard_data();
    void answersThatComeLateAreNotHeard();
    void signalsOnTheirWayAreDropped();
    void otherFacadesAreNotDisturbed();
    void noThreadIsLeft();

private:
    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QScopedPointer<QTemporaryDir> folder;
};

void tst_SignalsAfterDestruction::initTestCase()
{
    QCOMPARE(platform.start(), QString());
    platform.addProject(QStringLiteral("stored"), QStringLiteral("stored"),
                        { QJsonObject { { QStringLiteral("key"), QStringLiteral("a") }, { QStringLiteral("size"), 3000000 } } });
}

void tst_SignalsAfterDestruction::init()
{
    log.reset(new LogCapture);
    folder.reset(new QTemporaryDir);
    QVERIFY(writeFile(folder->path(), QStringLiteral("in/a.txt"), "content"));
    QVERIFY(writeFile(folder->path(), QStringLiteral("in/b.bin"), randomBytes(5000000, 1)));
    platform.startJournal();
}

void tst_SignalsAfterDestruction::cleanup()
{
    platform.clearFaults();
    folder.reset();
    log.reset();
}

void tst_SignalsAfterDestruction::answersThatComeLateAreNotHeard_data()
{
    QTest::addColumn<QString>("route");
    for (const char *route : { "Token", "api/Projects/companykorvoservice", "api/Projects", "api/UploadProject/Init",
                               "api/bucket/listoffilesfromlocations", "api/bucket/putfile", "api/multipartupload/upload",
                               "webdav/*" })
        QTest::newRow(route) << QString::fromLatin1(route);
}

void tst_SignalsAfterDestruction::answersThatComeLateAreNotHeard()
{
    QFETCH(QString, route);
    Session session;
    const bool isLogin = route == QLatin1String("Token") || route.endsWith(QLatin1String("korvoservice"));
    if (!isLogin)
        QVERIFY(session.logIn());
    const int slow = platform.addFault({ { QStringLiteral("kind"), QStringLiteral("delay") }, { QStringLiteral("route"), route },
                                         { QStringLiteral("delayMs"), 200 }, { QStringLiteral("count"), 0 } });
    if (isLogin) {
        session->login(USER, PASSWORD);
    } else {
        session->queryRemoteProjects();
        session->uploadProject(QStringLiteral("up"), QStringLiteral("up"), folder->filePath(QStringLiteral("in")), PROJECT_DATE, 2);
        session->downloadProject(QStringLiteral("stored"), QStringLiteral("stored"), folder->filePath(QStringLiteral("out")));
    }
    QVERIFY(platform.waitForHit(slow));
    session.close();
    const int heard = session.signalsSeen().events().size();
    const int logged = log->count();
    // The late answer has been given when another facade has been served on the same route.
    Session other;
    QVERIFY(other.logIn());
    const QString end = route.section(QLatin1Char('/'), 0, -2);
    QTRY_VERIFY(!platform.journal().filter(end.isEmpty() ? route : end).isEmpty());
    QVERIFY(other.settle());
    QCOMPARE(session.signalsSeen().events().size(), heard);
    QCOMPARE(log->count(), logged);
}

// What the worker has emitted, but the host's event loop has not delivered yet.
void tst_SignalsAfterDestruction::signalsOnTheirWayAreDropped()
{
    Session session;
    QVERIFY(session.logIn());
    session->logout();
    // The getter looks across to the worker, so its change of state shows before its signal is delivered here.
    const QDeadlineTimer deadline(std::chrono::seconds(10));
    while (session->loginStatus() == KorvoWebApi::LoginStatus::LoginStatusLoggedIn && !deadline.hasExpired())
        QThread::yieldCurrentThread();
    QCOMPARE(session->loginStatus(), KorvoWebApi::LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(session.signalsSeen().events().size(), 0);
    session.close();
    const int heard = session.signalsSeen().events().size();
    QCoreApplication::processEvents();
    QCOMPARE(session.signalsSeen().events().size(), heard);
}

void tst_SignalsAfterDestruction::otherFacadesAreNotDisturbed()
{
    Session kept;
    QVERIFY(kept.logIn());
    const int hang = platform.addFault(QStringLiteral("stallInBody"), QStringLiteral("webdav/*"));
    kept->downloadProject(QStringLiteral("stored"), QStringLiteral("stored"), folder->filePath(QStringLiteral("out")));
    QVERIFY(platform.waitForHit(hang));
    for (int i = 0; i < 3; ++i) {
        Session brief;
        QVERIFY(brief.logIn());
        const QString name = QStringLiteral("brief");
        brief->uploadProject(name, name, folder->filePath(QStringLiteral("in")), PROJECT_DATE);
    }
    kept->pauseDownload(1);
    kept->resumeDownload(1);
    QVERIFY(kept.signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(kept.signalsSeen().errors(), QList<Error>());
    QCOMPARE(QFileInfo(folder->filePath(QStringLiteral("out/a"))).size(), 3000000);
}

void tst_SignalsAfterDestruction::noThreadIsLeft()
{
    QVERIFY(Session().logIn());
    const int before = threadCount();
    for (int i = 0; i < 10; ++i) {
        Session session;
        QVERIFY(session.logIn());
        session->downloadProject(QStringLiteral("stored"), QStringLiteral("stored"), folder->filePath(QStringLiteral("out")));
    }
    QTRY_VERIFY2(threadCount() <= before, qPrintable(QString::number(threadCount())));
}

QTEST_GUILESS_MAIN(tst_SignalsAfterDestruction)

#include "tst_SignalsAfterDestruction.moc"
