#include "flow/Folders.h"
#include "flow/Session.h"
#include "support/LogCapture.h"

#include <QtTest/QtTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QString STATUS_ROUTE = QStringLiteral("api/UploadProject/Statuses");

/// "id: status" of each entry of the last answer.
QStringList lastStatuses(Session &session)
{
    QStringList lines;
    const QVariantList arguments = session.signalsSeen().all("uploadStatusInfoReceived").last();
    for (const UploadStatusInfo &info : arguments.first().value<QList<UploadStatusInfo>>())
        lines.append(info.projectId + QStringLiteral(": ") + QString::number(info.status));
    return lines;
}

} // namespace

class tst_UploadStatus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void statusFollowsTheUpload();
    void abortedUploadIsCancelled();
    void noIdsNoStatuses();
    void failureIsToldBeforeAnEmptyList_data();
    void failureIsToldBeforeAnEmptyList();
    void oddAnswersAreRead_data();
    void oddAnswersAreRead();

private:
    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QScopedPointer<Session> session;
};

void tst_UploadStatus::initTestCase()
{
    QCOMPARE(platform.start(), QString());
}

void tst_UploadStatus::init()
{
    log.reset(new LogCapture);
    session.reset(new Session);
    QVERIFY(session->logIn());
}

void tst_UploadStatus::cleanup()
{
    platform.clearFaults();
    session.reset();
    log.reset();
}

void tst_UploadStatus::statusFollowsTheUpload()
{
    QTemporaryDir folder;
    QVERIFY(writeFile(folder.path(), QStringLiteral("a.txt"), "content"));
    const int hang = platform.addFault(QStringLiteral("noAnswer"), QStringLiteral("api/bucket/putfile"));
    session->api().uploadProject(QStringLiteral("upload-1"), QStringLiteral("one"), folder.path(), PROJECT_DATE);
    QVERIFY(platform.waitForHit(hang));
    const QStringList ids { QStringLiteral("upload-1"), QString::fromUtf8("nirgends \"%1\" \\ ä") };
    session->api().queryUploadProjectStatus(ids);
    QVERIFY(session->signalsSeen().waitFor("uploadStatusInfoReceived"));
    QCOMPARE(lastStatuses(*session), QStringList({ ids.at(0) + QStringLiteral(": 1"), ids.at(1) + QStringLiteral(": 0") }));

    session.reset(new Session);
    QVERIFY(session->logIn());
    session->api().uploadProject(QStringLiteral("upload-1"), QStringLiteral("one"), folder.path(), PROJECT_DATE);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QTRY_COMPARE(platform.project(QStringLiteral("upload-1")).value(QLatin1String("status")).toInt(), 2);
    session->api().queryUploadProjectStatus({ ids.at(0) });
    QVERIFY(session->signalsSeen().waitFor("uploadStatusInfoReceived"));
    QCOMPARE(lastStatuses(*session), QStringList { ids.at(0) + QStringLiteral(": 2") });
}

void tst_UploadStatus::abortedUploadIsCancelled()
{
    QTemporaryDir folder;
    QVERIFY(writeFile(folder.path(), QStringLiteral("a.txt"), "content"));
    const int hang = platform.addFault(QStringLiteral("noAnswer"), QStringLiteral("api/bucket/putfile"));
    session->api().uploadProject(QStringLiteral("upload-2"), QStringLiteral("two"), folder.path(), PROJECT_DATE);
    QVERIFY(platform.waitForHit(hang));
    session->api().abortUpload(1);
    QTRY_COMPARE(platform.project(QStringLiteral("upload-2")).value(QLatin1String("status")).toInt(), 3);
    session->api().queryUploadProjectStatus({ QStringLiteral("upload-2") });
    QVERIFY(session->signalsSeen().waitFor("uploadStatusInfoReceived"));
    QCOMPARE(lastStatuses(*session), QStringList { QStringLiteral("upload-2: 3") });
}

void tst_UploadStatus::noIdsNoStatuses()
{
    session->api().queryUploadProjectStatus({});
    QVERIFY(session->signalsSeen().waitFor("uploadStatusInfoReceived"));
    QCOMPARE(lastStatuses(*session), QStringList());
    QCOMPARE(session->signalsSeen().names(), QByteArrayList { "uploadStatusInfoReceived" });
}

void tst_UploadStatus::failureIsToldBeforeAnEmptyList_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("error");
    QTest::newRow("401") << 401 << int(Error::AuthenticationRequired);
    QTest::newRow("500") << 500 << int(Error::Server);
    QTest::newRow("503") << 503 << int(Error::Network);
}

void tst_UploadStatus::failureIsToldBeforeAnEmptyList()
{
    QFETCH(int, status);
    QFETCH(int, error);
    platform.addFault({ { QStringLiteral("kind"), QStringLiteral("status") }, { QStringLiteral("status"), status },
                        { QStringLiteral("route"), STATUS_ROUTE } });
    session->api().queryUploadProjectStatus({ QStringLiteral("x") });
    QVERIFY(session->signalsSeen().waitFor("uploadStatusInfoReceived"));
    QCOMPARE(session->signalsSeen().names(), QByteArrayList({ "errorOccurred", "uploadStatusInfoReceived" }));
    QCOMPARE(session->signalsSeen().errors(), QList<Error> { Error(error) });
    QCOMPARE(lastStatuses(*session), QStringList());
}

void tst_UploadStatus::oddAnswersAreRead_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QStringList>("statuses");
    QTest::newRow("no status") << QByteArray(R"([{"projectId": "x"}])") << QStringList { QStringLiteral("x: 0") };
    QTest::newRow("no id") << QByteArray(R"([{"status": 7}])") << QStringList { QStringLiteral(": 7") };
    QTest::newRow("object") << QByteArray(R"({"status": 7})") << QStringList();
    QTest::newRow("not JSON") << QByteArray("<nothing/>") << QStringList();
    QTest::newRow("empty") << QByteArray() << QStringList();
    QTest::newRow("entry of another type") << QByteArray(R"([1, {"status": 7, "projectId": "x"}])")
                                           << QStringList({ QStringLiteral(": 0"), QStringLiteral("x: 7") });
}

void tst_UploadStatus::oddAnswersAreRead()
{
    QFETCH(QByteArray, answer);
    platform.addFault({ { QStringLiteral("kind"), QStringLiteral("status") }, { QStringLiteral("status"), 200 },
                        { QStringLiteral("body"), QString::fromUtf8(answer) }, { QStringLiteral("route"), STATUS_ROUTE } });
    session->api().queryUploadProjectStatus({ QStringLiteral("x") });
    QVERIFY(session->signalsSeen().waitFor("uploadStatusInfoReceived"));
    QTEST(lastStatuses(*session), "statuses");
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
}

QTEST_GUILESS_MAIN(tst_UploadStatus)

#include "tst_UploadStatus.moc"
