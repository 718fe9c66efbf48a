#include "flow/Session.h"
#include "support/LogCapture.h"

#include <QtTest/QtTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QString PROJECTS_ROUTE = QStringLiteral("api/Projects");

} // namespace

class tst_ListProjects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void companyWithoutProjectsHasAnEmptyList();
    void projectsComeWithAllTheyHave();
    void companySeesItsOwnProjectsOnly();
    void failedQueryIsToldByItsOwnSignal_data();
    void failedQueryIsToldByItsOwnSignal();
    void nonsenseIsAnEmptyList_data();
    void nonsenseIsAnEmptyList();
    void withoutLoginThereIsNoList();
    void expiredTokenIsAskedFor();
    void twoQueriesHaveTwoAnswers();

private:
    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QScopedPointer<Session> session;
};

void tst_ListProjects::initTestCase()
{
    QCOMPARE(platform.start(), QString());
}

void tst_ListProjects::init()
{
    log.reset(new LogCapture);
    session.reset(new Session);
    QVERIFY(session->logIn());
}

void tst_ListProjects::cleanup()
{
    platform.clearFaults();
    session.reset();
    log.reset();
}

void tst_ListProjects::companyWithoutProjectsHasAnEmptyList()
{
    session->api().queryRemoteProjects();
    QVERIFY(session->signalsSeen().waitFor("projectInfoReceived"));
    QCOMPARE(session->signalsSeen().names(), QByteArrayList { "projectInfoReceived" });
    QCOMPARE(session->signalsSeen().events().first().arguments.first().value<QList<ProjectInfo>>().size(), 0);
}

void tst_ListProjects::projectsComeWithAllTheyHave()
{
    const QJsonArray objects { QJsonObject { { QStringLiteral("key"), QStringLiteral("a") }, { QStringLiteral("size"), 70000 } },
                               QJsonObject { { QStringLiteral("key"), QStringLiteral("b") }, { QStringLiteral("size"), 1 } } };
    const QString name = QString::fromUtf8("Kanal Süd (2026) 50% ẞ");
    platform.addProject(QStringLiteral("first-project"), name, objects);
    platform.addProject(QStringLiteral("second-project"), QStringLiteral("Nord"));
    session->api().queryRemoteProjects();
    QVERIFY(session->signalsSeen().waitFor("projectInfoReceived"));
    const auto projects = session->signalsSeen().events().first().arguments.first().value<QList<ProjectInfo>>();
    QCOMPARE(projects.size(), 2);
    QCOMPARE(projects.at(0).projectId(), QStringLiteral("first-project"));
    QCOMPARE(projects.at(0).projectName(), name);
    QCOMPARE(projects.at(0).projectFolderName(), name);
    QCOMPARE(projects.at(0).diskUsage(), 70001ull);
    QCOMPARE(projects.at(0).creationDate(), QDateTime(QDate(2026, 3, 3), QTime(14, 5, 9)));
    QVERIFY(projects.at(0).isImportedByWeb());
    QCOMPARE(projects.at(1).projectId(), QStringLiteral("second-project"));
    QCOMPARE(projects.at(1).diskUsage(), 0ull);
    QCOMPARE(log->messages(), QStringList());
}

void tst_ListProjects::companySeesItsOwnProjectsOnly()
{
    platform.addAccount({ { QStringLiteral("email"), QStringLiteral("other@korvo.example") },
                          { QStringLiteral("password"), QStringLiteral("other-1") },
                          { QStringLiteral("companyId"), QStringLiteral("other-company") } });
    Session other;
    QVERIFY(other.logIn(QStringLiteral("other@korvo.example"), QStringLiteral("other-1")));
    other->queryRemoteProjects();
    QVERIFY(other.signalsSeen().waitFor("projectInfoReceived"));
    QCOMPARE(other.signalsSeen().events().first().arguments.first().value<QList<ProjectInfo>>().size(), 0);
}

void tst_ListProjects::failedQueryIsToldByItsOwnSignal_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("error");
    QTest::newRow("500") << 500 << int(Error::Server);
    QTest::newRow("503") << 503 << int(Error::Network);
    QTest::newRow("401") << 401 << int(Error::AuthenticationRequired);
    QTest::newRow("403") << 403 << int(Error::Network);
    QTest::newRow("404") << 404 << int(Error::Network);
}

void tst_ListProjects::failedQueryIsToldByItsOwnSignal()
{
    QFETCH(int, status);
    QFETCH(int, error);
    const int fault = platform.addFault({ { QStringLiteral("kind"), QStringLiteral("status") },
                                          { QStringLiteral("status"), status }, { QStringLiteral("count"), 0 },
                                          { QStringLiteral("route"), PROJECTS_ROUTE } });
    session->api().queryRemoteProjects();
    QVERIFY(session->signalsSeen().waitFor("queryRemoteProjectsError"));
    QVERIFY(session->settle());
    QCOMPARE(session->signalsSeen().names(), QByteArrayList({ "queryRemoteProjectsError", "uploadStatusInfoReceived" }));
    QCOMPARE(int(session->signalsSeen().events().first().arguments.first().value<Error>()), error);
    // The web server is asked once; only the storage service is asked again.
    QCOMPARE(platform.hits(fault), 1);
}

void tst_ListProjects::nonsenseIsAnEmptyList_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : { "garbage", "emptyBody", "hugeBody" })
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void tst_ListProjects::nonsenseIsAnEmptyList()
{
    QFETCH(QString, kind);
    platform.addFault(kind, PROJECTS_ROUTE);
    session->api().queryRemoteProjects();
    QVERIFY(session->signalsSeen().waitFor("projectInfoReceived"));
    QCOMPARE(session->signalsSeen().names(), QByteArrayList { "projectInfoReceived" });
    QCOMPARE(session->signalsSeen().events().first().arguments.first().value<QList<ProjectInfo>>().size(), 0);
}

void tst_ListProjects::withoutLoginThereIsNoList()
{
    Session stranger;
    stranger->queryRemoteProjects();
    QVERIFY(stranger.signalsSeen().waitFor("queryRemoteProjectsError"));
    QCOMPARE(stranger.signalsSeen().names(), QByteArrayList { "queryRemoteProjectsError" });
}

void tst_ListProjects::expiredTokenIsAskedFor()
{
    platform.addFault(QStringLiteral("expiredToken"), PROJECTS_ROUTE);
    session->api().queryRemoteProjects();
    QVERIFY(session->signalsSeen().waitFor("queryRemoteProjectsError"));
    QCOMPARE(int(session->signalsSeen().events().first().arguments.first().value<Error>()),
             int(Error::AuthenticationRequired));
}

void tst_ListProjects::twoQueriesHaveTwoAnswers()
{
    session->api().queryRemoteProjects();
    session->api().queryRemoteProjects();
    QVERIFY(session->signalsSeen().waitFor("projectInfoReceived", 2));
    QCOMPARE(session->signalsSeen().names(), QByteArrayList({ "projectInfoReceived", "projectInfoReceived" }));
}

QTEST_GUILESS_MAIN(tst_ListProjects)

#include "tst_ListProjects.moc"
