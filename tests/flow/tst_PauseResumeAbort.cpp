#include "flow/Folders.h"
#include "flow/HostStates.h"
#include "flow/Session.h"
#include "support/LogCapture.h"

#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

#include <chrono>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using namespace std::chrono_literals;

namespace {

constexpr int MIB = 1024 * 1024;
constexpr qint64 DESTRUCTION_LIMIT_MILLISECONDS = 1000;

const QString SERVICE = QStringLiteral("service.korvo.example");
const QString INIT_ROUTE = QStringLiteral("api/UploadProject/Init");
const QString EXISTS_ROUTE = QStringLiteral("api/bucket/exists");
const QString BUCKET_ROUTE = QStringLiteral("api/bucket");
const QString LISTING_ROUTE = QStringLiteral("api/bucket/listoffilesfromlocations");
const QString PUT_FILE_ROUTE = QStringLiteral("api/bucket/putfile");
const QString BEGIN_PARTS_ROUTE = QStringLiteral("api/multipartupload/init");
const QString PART_ROUTE = QStringLiteral("api/multipartupload/upload");
const QString COMPLETE_ROUTE = QStringLiteral("api/multipartupload/complete");
const QString ABORT_PARTS_ROUTE = QStringLiteral("api/multipartupload/abort");
const QString UPLOADED_ROUTE = QStringLiteral("api/UploadProject/Uploaded");
const QString FILE_ROUTE = QStringLiteral("webdav/*");

QString put(const QString &route)
{
    return QStringLiteral("PUT ") + route;
}

int lastValue(const QList<SignalEvent> &events, const QByteArray &name)
{
    int value = -1;
    for (const SignalEvent &event : events) {
        if (event.name == name)
            value = event.arguments.last().toInt();
    }
    return value;
}

} // namespace

Q_DECLARE_METATYPE(HostState)

class tst_PauseResumeAbort : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void uploadSurvivesPausesAtAnyTime_data();
    void uploadSurvivesPausesAtAnyTime();
    void downloadSurvivesPausesAtAnyTime_data();
    void downloadSurvivesPausesAtAnyTime();
    void pausedUploadSendsNothingMore();
    void pausedDownloadFetchesNothingMore();
    void pauseBeforeTheListingHolds_data();
    void pauseBeforeTheListingHolds();
    void pausesOfOneJobLeaveTheOtherAlone();

    void abortedUploadIsToldToTheServer_data();
    void abortedUploadIsToldToTheServer();
    void abortOfPartsClearsThemAway();
    void abortReportsTheFilesInOnePiece();
    void abortedUploadCanBeRepeated();
    void finishedUploadIgnoresPauseResumeAndAbort();
    void abortedDownloadLeavesNoFolder_data();
    void abortedDownloadLeavesNoFolder();
    void abortTakesOlderFilesAlong();
    void abortedTransferIsUnknownAfterwards();

    void destructionDoesNotWaitForTheServer_data();
    void destructionDoesNotWaitForTheServer();
    void destructionFromASlotIsSafe_data();
    void destructionFromASlotIsSafe();
    void destructionAtAnyMomentIsSafe_data();
    void destructionAtAnyMomentIsSafe();

private:
    QString local(const char *name) { return folder->filePath(QLatin1String(name)); }
    Place place() { return {id, local("in"), local("out")}; }

    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<Session> session;
    QString id; // of a project that no other test uses
    int number = 0;
};

void tst_PauseResumeAbort::initTestCase()
{
    QCOMPARE(platform.start({ QStringLiteral("--web-copies"), QStringLiteral("none") }), QString());
    QJsonArray objects;
    for (int i = 0; i < 6; ++i)
        objects.append(QJsonObject { { QStringLiteral("key"), QStringLiteral("sub/f%1").arg(i) },
                                     { QStringLiteral("size"), 2 * MIB + i } });
    platform.addProject(QStringLiteral("stored"), QStringLiteral("stored"), objects);
}

void tst_PauseResumeAbort::init()
{
    log.reset(new LogCapture);
    folder.reset(new QTemporaryDir);
    session.reset(new Session);
    QVERIFY(session->logIn());
    id = QStringLiteral("p%1").arg(++number);
    QVERIFY(QDir().mkpath(local("in")));
    platform.startJournal();
}

void tst_PauseResumeAbort::cleanup()
{
    platform.clearFaults();
    session.reset();
    folder.reset();
    log.reset();
}

void tst_PauseResumeAbort::uploadSurvivesPausesAtAnyTime_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("atOnce");
    for (quint32 seed = 1; seed <= 6; ++seed)
        QTest::addRow("order %u", seed) << seed << 1 + int(seed % 3);
}

// Pause and resume in a random order, on a line slow enough for them to strike in the middle of things.
void tst_PauseResumeAbort::uploadSurvivesPausesAtAnyTime()
{
    QFETCH(quint32, seed);
    QFETCH(int, atOnce);
    QVERIFY(makeRandomTree(local("in"), seed, 8));
    QVERIFY(writeFile(local("in"), QStringLiteral("large 1.bin"), randomBytes(9 * MIB, seed)));
    QVERIFY(writeFile(local("in"), QStringLiteral("large 2.bin"), randomBytes(4 * MIB + 1, seed)));
    platform.addFault({ { QStringLiteral("kind"), QStringLiteral("tunnelBandwidth") }, { QStringLiteral("count"), 0 },
                        { QStringLiteral("host"), SERVICE }, { QStringLiteral("bytesPerSecond"), 16 * MIB } });
    QRandomGenerator random(seed);
    QTimer finger;
    connect(&finger, &QTimer::timeout, this, [&] {
        const bool pauses = random.bounded(2) == 0;
        pauses ? session->api().pauseUpload(1) : session->api().resumeUpload(1);
        finger.start(int(random.bounded(pauses ? 30 : 120)));
    });
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE, atOnce);
    finger.start(0);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished", 1, 60s));
    finger.stop();

    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    const QStringList journal = platform.journal();
    QCOMPARE(journal.count(put(PART_ROUTE)), 5);
    QCOMPARE(journal.count(put(BEGIN_PARTS_ROUTE)), 2);
    QCOMPARE(journal.count(put(COMPLETE_ROUTE)), 2);
    const QString bucket = platform.project(id).value(QLatin1String("bucket")).toString();
    const QMap<QString, QString> stored = platform.hashes(bucket);
    const Tree tree = treeOf(local("in"));
    QCOMPARE(stored.size(), tree.size());
    for (auto file = tree.cbegin(); file != tree.cend(); ++file)
        QVERIFY2(stored.values().contains(file.value().section(QLatin1Char(' '), 1)), qPrintable(file.key()));
    QCOMPARE(lastValue(session->signalsSeen().events(), "uploadTotalProgressChanged"), 100);
    QCOMPARE(lastValue(session->signalsSeen().events(), "completedUploadFilesChanged"), tree.size());
    QCOMPARE(session->signalsSeen().count("uploadFinished"), 1);
}

void tst_PauseResumeAbort::downloadSurvivesPausesAtAnyTime_data()
{
    uploadSurvivesPausesAtAnyTime_data();
}

void tst_PauseResumeAbort::downloadSurvivesPausesAtAnyTime()
{
    QFETCH(quint32, seed);
    QFETCH(int, atOnce);
    platform.addFault({ { QStringLiteral("kind"), QStringLiteral("tunnelBandwidth") }, { QStringLiteral("count"), 0 },
                        { QStringLiteral("host"), SERVICE }, { QStringLiteral("bytesPerSecond"), 16 * MIB } });
    QRandomGenerator random(seed);
    QTimer finger;
    connect(&finger, &QTimer::timeout, this, [&] {
        const bool pauses = random.bounded(2) == 0;
        pauses ? session->api().pauseDownload(1) : session->api().resumeDownload(1);
        finger.start(int(random.bounded(pauses ? 30 : 400)));
    });
    const QString name = QStringLiteral("stored");
    session->api().downloadProject(name, name, local("out"), atOnce);
    finger.start(0);
    QVERIFY(eventually([&] {
        return session->signalsSeen().count("downloadFinished") > 0
            && lastValue(session->signalsSeen().events(), "completedDownloadFilesChanged") == 6;
    }, 60s));
    finger.stop();
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(lastValue(session->signalsSeen().events(), "filesToDownloadTotalChanged"), 6);
    QCOMPARE(lastValue(session->signalsSeen().events(), "downloadTotalProgressChanged"), 100);
    const QMap<QString, QString> stored = platform.hashes(platform.project(QStringLiteral("stored"))
                                                              .value(QLatin1String("bucket")).toString());
    const Tree tree = treeOf(local("out"));
    QCOMPARE(tree.keys(), stored.keys());
    for (auto file = tree.cbegin(); file != tree.cend(); ++file)
        QCOMPARE(file.value().section(QLatin1Char(' '), 1), stored.value(file.key()));
}

void tst_PauseResumeAbort::pausedUploadSendsNothingMore()
{
    QVERIFY(writeFile(local("in"), QStringLiteral("large.bin"), randomBytes(17 * MIB, 1)));
    QVERIFY(writeFile(local("in"), QStringLiteral("small.txt"), "small"));
    const int second = platform.addFault({ { QStringLiteral("kind"), QStringLiteral("delay") },
                                           { QStringLiteral("delayMs"), 200 }, { QStringLiteral("nth"), 2 },
                                           { QStringLiteral("route"), PART_ROUTE } });
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE, 1);
    QVERIFY(platform.waitForHit(second));
    session->api().pauseUpload(1);
    // The second part runs to its end; three other exchanges later no third one has come.
    QTRY_COMPARE(platform.journal().count(put(PART_ROUTE)), 2);
    for (int i = 0; i < 3; ++i)
        QVERIFY(session->settle());
    QCOMPARE(platform.seen(second), 2);
    QVERIFY(platform.journal().count(put(PUT_FILE_ROUTE)) <= 1);
    QCOMPARE(session->signalsSeen().count("uploadFinished"), 0);
    QVERIFY(session->api().anyUploadActive());
    session->api().resumeUpload(1);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QCOMPARE(platform.journal().count(put(PART_ROUTE)), 5);
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
}

void tst_PauseResumeAbort::pausedDownloadFetchesNothingMore()
{
    const int hang = platform.addFault(QStringLiteral("stallInBody"), FILE_ROUTE, 3);
    downloadFolder(*session, place());
    QVERIFY(platform.waitForHit(hang, 3));
    session->api().pauseDownload(1);
    for (int i = 0; i < 3; ++i)
        QVERIFY(session->settle());
    QCOMPARE(platform.seen(hang), 3);
    QCOMPARE(session->signalsSeen().count("downloadFinished"), 0);
    QVERIFY(session->api().anyDownloadActive());
    session->api().resumeDownload(1);
    QVERIFY(eventually([&] { return lastValue(session->signalsSeen().events(), "completedDownloadFilesChanged") == 6; }));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(platform.seen(hang), 9);
    QCOMPARE(lastValue(session->signalsSeen().events(), "downloadTotalProgressChanged"), 100);
}

void tst_PauseResumeAbort::pauseBeforeTheListingHolds_data()
{
    QTest::addColumn<bool>("isUpload");
    QTest::newRow("upload") << true;
    QTest::newRow("download") << false;
}

void tst_PauseResumeAbort::pauseBeforeTheListingHolds()
{
    QFETCH(bool, isUpload);
    QVERIFY(writeFile(local("in"), QStringLiteral("small.txt"), "small"));
    const int slow = platform.addFault({ { QStringLiteral("kind"), QStringLiteral("delay") },
                                         { QStringLiteral("delayMs"), 200 }, { QStringLiteral("route"), LISTING_ROUTE } });
    KorvoWebApi &api = session->api();
    isUpload ? uploadFolder(*session, place()) : downloadFolder(*session, place());
    QVERIFY(platform.waitForHit(slow));
    isUpload ? api.pauseUpload(1) : api.pauseDownload(1);
    QTRY_VERIFY(platform.journal().contains(QStringLiteral("POST ") + LISTING_ROUTE));
    for (int i = 0; i < 3; ++i)
        QVERIFY(session->settle());
    const QStringList journal = platform.journal();
    QCOMPARE(journal.filter(QStringLiteral("webdav")) + journal.filter(QStringLiteral("putfile"))
                 + journal.filter(QStringLiteral("Uploaded")),
             QStringList());
    isUpload ? api.resumeUpload(1) : api.resumeDownload(1);
    QVERIFY(session->signalsSeen().waitFor(isUpload ? "uploadFinished" : "downloadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
}

void tst_PauseResumeAbort::pausesOfOneJobLeaveTheOtherAlone()
{
    QVERIFY(writeFile(local("in"), QStringLiteral("a.bin"), randomBytes(6 * MIB, 1)));
    const int slow = platform.addFault({ { QStringLiteral("kind"), QStringLiteral("delay") },
                                         { QStringLiteral("delayMs"), 200 }, { QStringLiteral("route"), BEGIN_PARTS_ROUTE } });
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE);
    QVERIFY(platform.waitForHit(slow));
    session->api().pauseUpload(1);
    session->api().uploadProject(id + QLatin1Char('b'), id, local("in"), PROJECT_DATE);
    downloadFolder(*session, place());
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().all("uploadFinished"), QList<QVariantList> { { 2u } });
    session->api().resumeUpload(1);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished", 2));
}

void tst_PauseResumeAbort::abortedUploadIsToldToTheServer_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("route");
    QTest::newRow("begin") << QStringLiteral("delay") << INIT_ROUTE;
    QTest::newRow("bucket query") << QStringLiteral("delay") << EXISTS_ROUTE;
    QTest::newRow("bucket creation") << QStringLiteral("delay") << BUCKET_ROUTE;
    QTest::newRow("listing") << QStringLiteral("noAnswer") << LISTING_ROUTE;
    QTest::newRow("file in one piece") << QStringLiteral("noAnswer") << PUT_FILE_ROUTE;
    QTest::newRow("file in one piece, on its way") << QStringLiteral("stallInRequest") << PUT_FILE_ROUTE;
    QTest::newRow("begin of parts") << QStringLiteral("noAnswer") << BEGIN_PARTS_ROUTE;
    QTest::newRow("part") << QStringLiteral("noAnswer") << PART_ROUTE;
    QTest::newRow("part, on its way") << QStringLiteral("stallInRequest") << PART_ROUTE;
    QTest::newRow("completion of parts") << QStringLiteral("noAnswer") << COMPLETE_ROUTE;
}

void tst_PauseResumeAbort::abortedUploadIsToldToTheServer()
{
    QFETCH(QString, kind);
    QFETCH(QString, route);
    QVERIFY(writeFile(local("in"), QStringLiteral("large.bin"), randomBytes(6 * MIB, 1)));
    QVERIFY(writeFile(local("in"), QStringLiteral("medium.bin"), randomBytes(2 * MIB, 2)));
    const int held = platform.addFault({ { QStringLiteral("kind"), kind }, { QStringLiteral("route"), route },
                                         { QStringLiteral("delayMs"), 100 } });
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE, 2);
    QVERIFY(platform.waitForHit(held));
    session->api().abortUpload(1);
    QVERIFY(session->signalsSeen().waitFor("anyUploadActiveChanged", 2));
    QTRY_COMPARE(platform.project(id).value(QLatin1String("status")).toInt(), 3);
    QVERIFY(session->settle());
    QCOMPARE(session->signalsSeen().all("uploadActiveChanged"), QList<QVariantList>({ { 1u, true }, { 1u, false } }));
    QCOMPARE(session->signalsSeen().count("uploadFinished"), 0);
    QVERIFY(!platform.journal().contains(QStringLiteral("POST ") + UPLOADED_ROUTE));
    QTRY_VERIFY(!session->api().anyUploadActive());
    for (const Error error : session->signalsSeen().errors())
        QCOMPARE(error, Error::Cancelled);
}

void tst_PauseResumeAbort::abortOfPartsClearsThemAway()
{
    QVERIFY(writeFile(local("in"), QStringLiteral("large.bin"), randomBytes(9 * MIB, 1)));
    const int held = platform.addFault({ { QStringLiteral("kind"), QStringLiteral("noAnswer") },
                                         { QStringLiteral("nth"), 2 }, { QStringLiteral("route"), PART_ROUTE } });
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE);
    QVERIFY(platform.waitForHit(held));
    const QString bucket = platform.project(id).value(QLatin1String("bucket")).toString();
    QCOMPARE(platform.multipartStates(bucket).values(), QStringList { QStringLiteral("open") });
    session->api().abortUpload(1);
    QTRY_COMPARE(platform.multipartStates(bucket).values(), QStringList { QStringLiteral("aborted") });
    QCOMPARE(platform.hashes(bucket).size(), 0);
}

void tst_PauseResumeAbort::abortReportsTheFilesInOnePiece()
{
    for (int i = 0; i < 3; ++i)
        QVERIFY(writeFile(local("in"), QStringLiteral("f%1").arg(i), randomBytes(1000, quint32(i))));
    const int held = platform.addFault(QStringLiteral("noAnswer"), PUT_FILE_ROUTE, 2);
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE, 2);
    QVERIFY(platform.waitForHit(held, 2));
    session->api().abortUpload(1);
    QVERIFY(session->signalsSeen().waitFor("anyUploadActiveChanged", 2));
    QVERIFY(session->settle());
    QCOMPARE(session->signalsSeen().errors(), QList<Error>({ Error::Cancelled, Error::Cancelled }));
    QCOMPARE(platform.journal().count(put(PUT_FILE_ROUTE)), 2);
    QCOMPARE(log->messages(), QStringList());
}

void tst_PauseResumeAbort::abortedUploadCanBeRepeated()
{
    QVERIFY(makeRandomTree(local("in"), 3, 10));
    QVERIFY(writeFile(local("in"), QStringLiteral("large.bin"), randomBytes(9 * MIB, 1)));
    const int held = platform.addFault(QStringLiteral("noAnswer"), PART_ROUTE);
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE, 2);
    QVERIFY(platform.waitForHit(held));
    session->api().abortUpload(1);
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE, 2);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QCOMPARE(session->signalsSeen().all("uploadFinished"), QList<QVariantList> { { 2u } });
    const QString bucket = platform.project(id).value(QLatin1String("bucket")).toString();
    QCOMPARE(platform.hashes(bucket).size(), 11);
    QTRY_COMPARE(platform.project(id).value(QLatin1String("status")).toInt(), 2);
}

void tst_PauseResumeAbort::finishedUploadIgnoresPauseResumeAndAbort()
{
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    session->api().pauseUpload(1);
    session->api().resumeUpload(1);
    session->api().abortUpload(1);
    session->api().resumeUpload(1);
    QVERIFY(session->settle());
    QCOMPARE(session->signalsSeen().count("uploadFinished"), 1);
    QCOMPARE(session->signalsSeen().count("uploadActiveChanged"), 2);
    QTRY_COMPARE(platform.journal().filter(QStringLiteral("UploadProject/Uploaded")).size(), 1);
    QCOMPARE(platform.journal().filter(QStringLiteral("Cancel")), QStringList());
    QCOMPARE(log->messages(), QStringList());
}

void tst_PauseResumeAbort::abortedDownloadLeavesNoFolder_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("route");
    QTest::addColumn<bool>("pausedBefore");
    QTest::newRow("listing") << QStringLiteral("noAnswer") << LISTING_ROUTE << false;
    QTest::newRow("no answer") << QStringLiteral("noAnswer") << FILE_ROUTE << false;
    QTest::newRow("half a file") << QStringLiteral("stallInBody") << FILE_ROUTE << false;
    QTest::newRow("paused") << QStringLiteral("stallInBody") << FILE_ROUTE << true;
}

void tst_PauseResumeAbort::abortedDownloadLeavesNoFolder()
{
    QFETCH(QString, kind);
    QFETCH(QString, route);
    QFETCH(bool, pausedBefore);
    const int held = platform.addFault(kind, route, 1);
    downloadFolder(*session, place());
    QVERIFY(platform.waitForHit(held));
    if (pausedBefore)
        session->api().pauseDownload(1);
    session->api().abortDownload(1);
    QVERIFY(session->signalsSeen().waitFor("downloadActiveChanged", 2));
    QTRY_VERIFY(!QFileInfo::exists(local("out")));
    QVERIFY(session->settle());
    QVERIFY(!QFileInfo::exists(local("out")));
    QCOMPARE(session->signalsSeen().count("downloadFinished"), 0);
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QTRY_VERIFY(!session->api().anyDownloadActive());
    QCOMPARE(log->messages(), QStringList());
    // Nothing of it is in the way of another one.
    downloadFolder(*session, place());
    QVERIFY(eventually([&] { return lastValue(session->signalsSeen().events(), "completedDownloadFilesChanged") == 6; }));
    QCOMPARE(treeOf(local("out")).size(), 6);
}

void tst_PauseResumeAbort::abortTakesOlderFilesAlong()
{
    QVERIFY(writeFile(local("out"), QStringLiteral("older/file.txt"), "was there before"));
    const int held = platform.addFault(QStringLiteral("stallInBody"), FILE_ROUTE, 1);
    downloadFolder(*session, place());
    QVERIFY(platform.waitForHit(held));
    session->api().abortDownload(1);
    QTRY_VERIFY(!QFileInfo::exists(local("out")));
    QVERIFY(QFileInfo::exists(local("in")));
}

void tst_PauseResumeAbort::abortedTransferIsUnknownAfterwards()
{
    QVERIFY(writeFile(local("in"), QStringLiteral("a"), "a"));
    const int held = platform.addFault(QStringLiteral("noAnswer"), LISTING_ROUTE, 2);
    uploadFolder(*session, place());
    downloadFolder(*session, place());
    QVERIFY(platform.waitForHit(held, 2));
    session->api().abortUpload(1);
    session->api().abortDownload(1);
    QVERIFY(session->settle());
    log->clear();
    session->api().resumeUpload(1);
    session->api().abortUpload(1);
    session->api().pauseDownload(1);
    QVERIFY(session->settle());
    QCOMPARE(log->messages(),
             QStringList({ QStringLiteral("Cannot resume upload. Invalid id, project upload not found."),
                           QStringLiteral("Cannot abort upload. Invalid id, project upload not found."),
                           QStringLiteral("Cannot pause download. Invalid id, project download not found.") }));
    for (const LogEntry &entry : log->entries())
        QCOMPARE(entry.arguments, QList<QVariant> { QVariant(1u) });
}

void tst_PauseResumeAbort::destructionDoesNotWaitForTheServer_data()
{
    QTest::addColumn<HostState>("state");
    const QVector<HostState> states = statesOnTheWire();
    for (const HostState &state : states)
        QTest::newRow(state.name) << state;
}

void tst_PauseResumeAbort::destructionDoesNotWaitForTheServer()
{
    QFETCH(HostState, state);
    QVERIFY(writeFile(local("in"), QStringLiteral("large.bin"), randomBytes(6 * MIB, 1)));
    QVERIFY(writeFile(local("in"), QStringLiteral("medium.bin"), randomBytes(2 * MIB, 2)));
    QVERIFY(writeFile(local("in"), QStringLiteral("video.mp4"), randomBytes(1000, 3)));
    const int held = platform.addFault(state.fault, state.route, 0);
    state.act(*session, place());
    QVERIFY(platform.waitForHit(held));
    const qint64 milliseconds = session->close();
    QVERIFY2(milliseconds < DESTRUCTION_LIMIT_MILLISECONDS, qPrintable(QString::number(milliseconds)));
}

void tst_PauseResumeAbort::destructionFromASlotIsSafe_data()
{
    QTest::addColumn<QByteArray>("signal");
    for (const char *signal : { "uploadActiveChanged", "anyUploadActiveChanged", "uploadFileProgressChanged",
                                "currentUploadFilesChanged", "completedUploadFilesChanged", "uploadFinished",
                                "downloadActiveChanged", "downloadFileProgressChanged", "downloadTotalProgressChanged",
                                "downloadFinished", "projectInfoReceived", "loginResult", "loginStatusChanged",
                                "currentUserChanged", "errorOccurred" })
        QTest::newRow(signal) << QByteArray(signal);
}

void tst_PauseResumeAbort::destructionFromASlotIsSafe()
{
    QFETCH(QByteArray, signal);
    QVERIFY(makeRandomTree(local("in"), 5, 10));
    bool closed = false;
    session->signalsSeen().onEvent = [&](const SignalEvent &event) {
        if (event.name != signal || closed)
            return;
        closed = true;
        session->close();
    };
    if (signal.contains("ogin") || signal == "currentUserChanged") {
        session->api().login(EXPIRING_USER, EXPIRING_PASSWORD);
    } else if (signal == "errorOccurred") {
        session->api().uploadProject({}, {}, {}, {});
    } else {
        session->api().queryRemoteProjects();
        uploadFolder(*session, place());
        downloadFolder(*session, place());
    }
    QVERIFY(eventually([&] { return closed; }));
    const int count = session->signalsSeen().events().size();
    QCoreApplication::processEvents();
    QCOMPARE(session->signalsSeen().events().size(), count);
}

void tst_PauseResumeAbort::destructionAtAnyMomentIsSafe_data()
{
    QTest::addColumn<int>("after");
    for (const int after : { 1, 2, 5, 11, 23, 47, 95, 150, 220 })
        QTest::addRow("after %d signals", after) << after;
}

void tst_PauseResumeAbort::destructionAtAnyMomentIsSafe()
{
    QFETCH(int, after);
    QVERIFY(makeRandomTree(local("in"), 6, 12));
    QVERIFY(writeFile(local("in"), QStringLiteral("large.bin"), randomBytes(9 * MIB, 1)));
    uploadFolder(*session, place());
    downloadFolder(*session, place());
    downloadData(*session, place());
    QVERIFY(eventually([&] { return session->signalsSeen().events().size() >= after; }));
    const qint64 milliseconds = session->close();
    QVERIFY2(milliseconds < DESTRUCTION_LIMIT_MILLISECONDS, qPrintable(QString::number(milliseconds)));
}

QTEST_GUILESS_MAIN(tst_PauseResumeAbort)

#include "tst_PauseResumeAbort.moc"
