#include "transfer/ProjectUpload.h"

#include "UploadScene.h"
#include "handles/UploadFileMultiPartRequestHandle.h"

#include <QtTest/QTest>

#include <atomic>

#include <sys/time.h>
#include <time.h>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

constexpr qint64 STALL_MS = 36 * 60 * 60 * Q_INT64_C(1000);

std::atomic<qint64> frozenTimeMs{-1};

/// Lets the wall clock of this process stand still at a moment of the test's choice; timers go on.
class FrozenClock
{
public:
    explicit FrozenClock(qint64 msSinceEpoch) { frozenTimeMs = msSinceEpoch; }
    ~FrozenClock() { frozenTimeMs = -1; }

private:
    Q_DISABLE_COPY(FrozenClock)
};

} // namespace

// Found before that of the C library: this is what Qt reads the wall clock with.
extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval *time, void *) noexcept
{
    const qint64 frozen = frozenTimeMs;
    if (frozen >= 0) {
        *time = {time_t(frozen / 1000), suseconds_t(frozen % 1000 * 1000)};
        return 0;
    }
    timespec now{};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    *time = {now.tv_sec, suseconds_t(now.tv_nsec / 1000)};
    return result;
}

class tst_ProjectUploadInterrupted : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Pause and resume
    void pauseStartsNoFurtherFile();
    void pausedMultipartSendsNoFurtherPart();
    void pauseBeforeTheFirstPartIsKept();
    void everyOrderOfPauseAndResumeIsHarmless_data();
    void everyOrderOfPauseAndResumeIsHarmless();
    void resendGoesOnThroughAPause();
    void failureInAPauseGivesTheFileUp();
    void pausedJobEndsWithItsLastFile();
    void pauseInsideAReportHoldsTheFile();
    void listingInAPauseIsKept();
    void resumeBeforeTheListingSendsNothing_data();
    void resumeBeforeTheListingSendsNothing();
    void nothingStirsAFinishedJob();

    // Abort
    void abortBeforeTheListingLeavesNothing();
    void listingAfterAnAbortIsDropped();
    void endDuringTheStartSendsNothingMore_data();
    void endDuringTheStartSendsNothingMore();
    void abortCutsOffAFileInOnePart();
    void abortTellsTheServerOfEachMultipart();
    void abortWithoutUploadIdIsSentToo();
    void failedAbortRequestEndsTheJobToo_data();
    void failedAbortRequestEndsTheJobToo();
    void abortReachesAPausedMultipart();
    void onlyTheFirstEndCounts_data();
    void onlyTheFirstEndCounts();
    void abortInsideAReportIsSafe_data();
    void abortInsideAReportIsSafe();
    void deletionInFlightIsSilent();

    // Stop
    void stopIsSilent();
    void stopBeforeTheListingIsSilent();

    // The sweep for stalled uploads
    void stalledMultipartStartsOver_data();
    void stalledMultipartStartsOver();
    void stalledFileGoesBeforeAllOthers();
    void stalledVideoIsNotTakenForASecondOne();
    void stalledFileIsReadAnew();
    void stalledFileThatIsGoneIsReported();
    void filesInOnePartAreNeverStalled();
    void abortOfTheStalledUploadIsNotCounted();
};

namespace {

const QByteArray PART_DONE = "<PutMultipartUploadResponse/>";
const QString BIG = QStringLiteral("big.db3");

QString fileName(const char *name)
{
    return QString::fromUtf8(name);
}

/// A scene with one file of three parts, each of which waits for its release.
struct ThreeParts : UploadScene
{
    ThreeParts()
    {
        write(BIG, content);
        platform.server.always(Route::MULTI_PART, ScriptedAnswer::held(PART_DONE));
        init();
    }

    bool isWhole() const { return platform.uploadedFiles() == QMap<QByteArray, QByteArray>{{"big.db3", content}}; }
    void releaseParts()
    {
        platform.server.always(Route::MULTI_PART, ScriptedAnswer::ok(PART_DONE));
        platform.server.release();
    }

    const QByteArray content = patternOf(2 * PART_BYTES + 100);
};

/// Does to the job what each letter says: p pause, r resume, a abort, s stop.
void perform(ProjectUpload *job, const QString &operations)
{
    for (const QChar operation : operations) {
        switch (operation.unicode()) {
        case 'p': job->pause(); break;
        case 'r': job->resume(); break;
        case 'a': job->abort(); break;
        case 's': job->stop(); break;
        default: qFatal("unknown operation");
        }
    }
}

} // namespace

// Pause and resume

void tst_ProjectUploadInterrupted::pauseStartsNoFurtherFile()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.write(fileName("b.txt"), "abc");
    scene.platform.server.enqueue(Route::PUT_FILE, ScriptedAnswer::held());
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::PUT_FILE, 1));
    scene.job->pause();
    scene.platform.server.release();
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.requestCount(Route::PUT_FILE), 1);
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/2 50% ")));
    QCOMPARE(scene.results(), QStringList());
    scene.job->resume();
    QVERIFY(scene.completes());
    QCOMPARE(scene.platform.uploadedFiles().size(), 2);
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 2/2 100% ")));
}

void tst_ProjectUploadInterrupted::pausedMultipartSendsNoFurtherPart()
{
    ThreeParts scene;
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    scene.job->pause();
    scene.platform.server.release();
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 1);
    scene.job->resume();
    QVERIFY(scene.receives(Route::MULTI_PART, 2));
    scene.releaseParts();
    QVERIFY(scene.completes());
    QVERIFY(scene.isWhole());
}

void tst_ProjectUploadInterrupted::pauseBeforeTheFirstPartIsKept()
{
    ThreeParts scene;
    scene.platform.server.enqueue(
        Route::MULTI_INIT, ScriptedAnswer::held("<InitMultipartUploadResponse><MultipartUploadId>upload-1"
                                                "</MultipartUploadId></InitMultipartUploadResponse>"));
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_INIT, 1));
    scene.job->pause();
    scene.platform.server.release();
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 0);
    scene.releaseParts();
    scene.job->resume();
    QVERIFY(scene.completes());
    QVERIFY(scene.isWhole());
    QCOMPARE(scene.requestCount(Route::MULTI_INIT), 1);
}

void tst_ProjectUploadInterrupted::everyOrderOfPauseAndResumeIsHarmless_data()
{
    QTest::addColumn<QString>("inFlight"); // while a part is on its way
    QTest::addColumn<QString>("answered"); // when its answer has been handled
    QTest::newRow("never") << "" << "";
    QTest::newRow("resume alone") << "r" << "";
    QTest::newRow("resume twice") << "rr" << "";
    QTest::newRow("pause and resume in flight") << "pr" << "";
    QTest::newRow("twice in flight") << "prpr" << "";
    QTest::newRow("resume around them") << "rprr" << "";
    QTest::newRow("pause in flight, resume behind") << "p" << "r";
    QTest::newRow("pause twice, resume twice") << "pp" << "rr";
    QTest::newRow("pause again behind") << "p" << "prpr";
    QTest::newRow("both on both sides") << "prp" << "rpr";
}

void tst_ProjectUploadInterrupted::everyOrderOfPauseAndResumeIsHarmless()
{
    QFETCH(QString, inFlight);
    QFETCH(QString, answered);
    ThreeParts scene;
    scene.start();
    for (const int part : {1, 2, 3}) {
        QVERIFY(scene.receives(Route::MULTI_PART, part));
        perform(scene.job, inFlight);
        scene.platform.server.release();
        if (!inFlight.endsWith(QLatin1Char('p')))
            continue;
        QVERIFY(scene.becomesQuiet());
        QCOMPARE(scene.requestCount(Route::MULTI_PART), part);
        QCOMPARE(scene.requestCount(Route::MULTI_COMPLETE), 0);
        perform(scene.job, answered);
    }
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QVERIFY(scene.isWhole());
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 3);
    QCOMPARE(scene.requestCount(Route::MULTI_COMPLETE), 1);
    QCOMPARE(scene.requestCount(Route::UPLOADED), 1);
    QCOMPARE(scene.results(), QStringList{QStringLiteral("completed")});
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/1 100% ")));
}

void tst_ProjectUploadInterrupted::resendGoesOnThroughAPause()
{
    ThreeParts scene;
    scene.platform.server.enqueue(Route::MULTI_PART, ScriptedAnswer(503).pausedBeforeHead());
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    scene.job->pause();
    scene.job->resume();
    scene.job->pause();
    scene.platform.server.release();
    QVERIFY(scene.receives(Route::MULTI_PART, 2)); // the same part once more
    scene.platform.server.release();
    QVERIFY(scene.becomesQuiet());
    const auto parts = scene.platform.server.requests(Route::MULTI_PART);
    QVERIFY(parts.size() == 2 && parts.first().body == parts.last().body);
    scene.releaseParts();
    scene.job->resume();
    QVERIFY(scene.completes());
    QCOMPARE(scene.results(), QStringList{QStringLiteral("completed")});
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 4);
}

void tst_ProjectUploadInterrupted::failureInAPauseGivesTheFileUp()
{
    ThreeParts scene;
    scene.platform.server.enqueue(Route::MULTI_PART, ScriptedAnswer(404).pausedBeforeHead());
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    scene.job->pause();
    scene.platform.server.release();
    QVERIFY(scene.receives(Route::MULTI_ABORT, 1));
    scene.job->resume();
    QVERIFY(scene.completes());
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error 14"), QStringLiteral("completed")}));
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 1);
    QCOMPARE(scene.requestCount(Route::MULTI_COMPLETE), 0);
}

void tst_ProjectUploadInterrupted::pausedJobEndsWithItsLastFile()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.platform.server.always(Route::PUT_FILE, ScriptedAnswer::held());
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::PUT_FILE, 1));
    scene.job->pause();
    scene.platform.server.release();
    QVERIFY(scene.completes());
    QVERIFY(scene.receives(Route::UPLOADED, 1));
}

void tst_ProjectUploadInterrupted::pauseInsideAReportHoldsTheFile()
{
    ThreeParts scene;
    scene.write(fileName("other.db3"), scene.content);
    scene.releaseParts();
    const auto pauseAtFirstReport = [&] {
        if (scene.journal.size() == 1)
            scene.job->pause();
    };
    connect(scene.job, &ProjectUpload::fileUploadProgressChanged, scene.job, pauseAtFirstReport);
    scene.init(2);
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_INIT, 1));
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 0);
    scene.job->resume();
    QVERIFY(scene.completes());
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 6);
    const auto uploaded = scene.platform.uploadedFiles();
    QVERIFY(uploaded.value("big.db3") == scene.content && uploaded.value("other.db3") == scene.content);
}

void tst_ProjectUploadInterrupted::listingInAPauseIsKept()
{
    UploadScene scene;
    scene.write(fileName("project.xml"), QByteArray(40, 'x'));
    scene.write(fileName("a.txt"), "abc");
    scene.platform.server.always(Route::LISTING, ScriptedAnswer::held(listingOf({{"project.xml", 40}})));
    scene.init();
    scene.start();
    scene.job->pause();
    QVERIFY(scene.receives(Route::LISTING, 1));
    scene.platform.server.release();
    QVERIFY(scene.isListed());
    QVERIFY(scene.isQuiet());
    QCOMPARE(scene.stepsAfterListing(), QStringList());
    QCOMPARE(scene.journal, QStringList());
    scene.job->resume();
    QVERIFY(scene.completes());
    QCOMPARE(scene.requestCount(Route::LISTING), 1);
    QCOMPARE(scene.platform.uploadedFiles().keys(), QList<QByteArray>{"a.txt"});
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/1 100% ")));
}

void tst_ProjectUploadInterrupted::resumeBeforeTheListingSendsNothing_data()
{
    QTest::addColumn<QString>("operations");
    QTest::newRow("resume") << "r";
    QTest::newRow("pause and resume") << "pr";
    QTest::newRow("many") << "rrprpprr";
}

void tst_ProjectUploadInterrupted::resumeBeforeTheListingSendsNothing()
{
    QFETCH(QString, operations);
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.platform.server.always(Route::LISTING, ScriptedAnswer::held(listingOf({})));
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::LISTING, 1));
    perform(scene.job, operations);
    QCOMPARE(scene.journal, QStringList());
    scene.platform.server.release();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.stepsAfterListing(),
             (QStringList{QStringLiteral("bucket/putfile"), QStringLiteral("UploadProject/Uploaded")}));
    QCOMPARE(scene.results(), QStringList{QStringLiteral("completed")});
}

void tst_ProjectUploadInterrupted::nothingStirsAFinishedJob()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    const QStringList steps = scene.platform.steps();
    const QStringList journal = scene.journal;
    perform(scene.job, QStringLiteral("rprasrpsa"));
    QVERIFY(scene.isQuiet());
    QCOMPARE(scene.platform.steps(), steps);
    QCOMPARE(scene.journal, journal);
    QCoreApplication::sendPostedEvents(scene.job, QEvent::DeferredDelete);
    QVERIFY(scene.job);
}

// Abort

void tst_ProjectUploadInterrupted::abortBeforeTheListingLeavesNothing()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.platform.server.always(Route::LISTING, ScriptedAnswer::held(listingOf({})));
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::LISTING, 1));
    scene.job->abort();
    QVERIFY(scene.isDeleted());
    QVERIFY(scene.becomesQuiet());
    scene.platform.server.release();
    QCOMPARE(scene.stepsAfterListing(), QStringList{QStringLiteral("UploadProject/Cancel")});
    QCOMPARE(textOf(scene.platform.server.requests(Route::CANCEL).first().body, "ProjectId"), QByteArray("project-id"));
    QCOMPARE(scene.journal, QStringList());
}

void tst_ProjectUploadInterrupted::listingAfterAnAbortIsDropped()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.platform.server.always(Route::LISTING, ScriptedAnswer::held(listingOf({})));
    scene.init();
    scene.start();
    scene.job->abort();
    scene.job->gotListFileResults(ListOfFilesFromLocationResponse());
    QCOMPARE(scene.journal, QStringList());
    QVERIFY(scene.isDeleted());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.requestCount(Route::PUT_FILE), 0);
    QCOMPARE(scene.requestCount(Route::UPLOADED), 0);
}

void tst_ProjectUploadInterrupted::endDuringTheStartSendsNothingMore_data()
{
    QTest::addColumn<QByteArray>("route");
    QTest::addColumn<QString>("operations");
    QTest::addColumn<int>("cancels");
    QTest::addColumn<QStringList>("steps"); // up to that route
    QStringList steps;
    for (const QByteArray &route : {Route::BEGIN, Route::EXISTS, Route::BUCKET}) {
        steps.append(QString::fromLatin1(route.mid(route.indexOf("/api/") + 5)));
        QTest::addRow("abort, %s", route.constData()) << route << QStringLiteral("a") << 1 << steps;
        QTest::addRow("stop, %s", route.constData()) << route << QStringLiteral("s") << 0 << steps;
    }
}

// While the job waits for an answer, its events go on.
void tst_ProjectUploadInterrupted::endDuringTheStartSendsNothingMore()
{
    QFETCH(QByteArray, route);
    QFETCH(QString, operations);
    QFETCH(int, cancels);
    QFETCH(QStringList, steps);
    UploadScene scene;
    scene.platform.server.always(Route::EXISTS, ScriptedAnswer::ok("<E><Exist>false</Exist></E>"));
    scene.platform.server.always(route, ScriptedAnswer::held("<R><BucketName>bucket</BucketName></R>"));
    connect(&scene.platform.server, &ScriptedServer::requestReceived, scene.job, [&] {
        if (scene.requestCount(route) == 0 || scene.requestCount(Route::CANCEL) > 0)
            return;
        perform(scene.job, operations);
        scene.platform.server.release();
    });
    scene.init();
    scene.start();
    QVERIFY(scene.isDeleted());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal, QStringList());
    for (int i = 0; i < cancels; ++i)
        steps.append(QStringLiteral("UploadProject/Cancel"));
    QCOMPARE(scene.platform.steps(), steps);
}

void tst_ProjectUploadInterrupted::abortCutsOffAFileInOnePart()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.write(fileName("b.txt"), "abc");
    scene.platform.server.always(Route::PUT_FILE, ScriptedAnswer::held());
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::PUT_FILE, 1));
    const int reported = scene.journal.size();
    scene.job->abort();
    // The file's own end is told like every other failure.
    QCOMPARE(scene.journal.mid(reported), QStringList{QStringLiteral("error 4")});
    QVERIFY(scene.isDeleted());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal.size(), reported + 1);
    QCOMPARE(scene.stepsAfterListing(),
             (QStringList{QStringLiteral("bucket/putfile"), QStringLiteral("UploadProject/Cancel")}));
}

void tst_ProjectUploadInterrupted::abortTellsTheServerOfEachMultipart()
{
    UploadScene scene;
    scene.write(fileName("one.db3"), patternOf(PART_BYTES + 1));
    scene.write(fileName("two.db3"), patternOf(PART_BYTES + 1));
    scene.write(fileName("three.db3"), patternOf(PART_BYTES + 1));
    scene.platform.server.always(Route::MULTI_PART, ScriptedAnswer::held(PART_DONE));
    scene.platform.server.always(Route::MULTI_ABORT, ScriptedAnswer::held("<AbortMultipartUploadResponse/>"));
    scene.init(2);
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 2));
    const int reported = scene.journal.size();
    scene.job->abort();
    QVERIFY(scene.receives(Route::MULTI_ABORT, 2));
    QVERIFY(scene.receives(Route::CANCEL, 1));
    QVERIFY(scene.job); // until the server has answered
    scene.platform.server.release();
    QVERIFY(scene.isDeleted());
    QList<QByteArray> aborted;
    for (const RecordedRequest &request : scene.platform.server.requests(Route::MULTI_ABORT))
        aborted.append(textOf(request.body, "MultipartUploadId"));
    std::sort(aborted.begin(), aborted.end());
    QCOMPARE(aborted, (QList<QByteArray>{"upload-1", "upload-2"}));
    QCOMPARE(scene.journal.size(), reported);
    QCOMPARE(scene.requestCount(Route::MULTI_INIT), 2);
    QCOMPARE(scene.requestCount(Route::UPLOADED), 0);
}

void tst_ProjectUploadInterrupted::abortWithoutUploadIdIsSentToo()
{
    ThreeParts scene;
    scene.platform.server.always(Route::MULTI_INIT, ScriptedAnswer::held());
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_INIT, 1));
    scene.job->abort();
    QVERIFY(scene.isDeleted());
    QCOMPARE(scene.requestCount(Route::MULTI_ABORT), 1);
    QCOMPARE(textOf(scene.platform.server.requests(Route::MULTI_ABORT).first().body, "MultipartUploadId"), QByteArray(""));
    QCOMPARE(scene.results(), QStringList());
}

void tst_ProjectUploadInterrupted::failedAbortRequestEndsTheJobToo_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("not found") << 404 << QByteArray();
    QTest::newRow("token refused") << 401 << QByteArray();
    QTest::newRow("server failed") << 500 << QByteArray();
    QTest::newRow("other answer") << 200 << QByteArray("<Other/>");
    QTest::newRow("answer to a part") << 200 << PART_DONE;
}

void tst_ProjectUploadInterrupted::failedAbortRequestEndsTheJobToo()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    ThreeParts scene;
    scene.platform.server.always(Route::MULTI_ABORT, ScriptedAnswer(status, body));
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    const int reported = scene.journal.size();
    scene.job->abort();
    QVERIFY(scene.isDeleted());
    QCOMPARE(scene.journal.size(), reported);
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 1);
}

void tst_ProjectUploadInterrupted::abortReachesAPausedMultipart()
{
    ThreeParts scene;
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    scene.job->pause();
    scene.platform.server.release();
    QVERIFY(scene.becomesQuiet());
    scene.job->abort();
    QVERIFY(scene.isDeleted());
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 1);
    QCOMPARE(scene.requestCount(Route::MULTI_ABORT), 1);
    QCOMPARE(scene.results(), QStringList());
}

void tst_ProjectUploadInterrupted::onlyTheFirstEndCounts_data()
{
    QTest::addColumn<QString>("operations");
    QTest::addColumn<int>("cancels");
    QTest::newRow("abort twice") << "aa" << 1;
    QTest::newRow("abort, stop") << "as" << 1;
    QTest::newRow("stop, abort") << "sa" << 0;
    QTest::newRow("stop twice") << "ss" << 0;
    QTest::newRow("abort, resume") << "ar" << 1;
    QTest::newRow("abort, pause, resume") << "apr" << 1;
    QTest::newRow("stop, pause, resume") << "spr" << 0;
    QTest::newRow("pause, abort, resume, abort") << "para" << 1;
    QTest::newRow("everything") << "prparsarpsa" << 1;
}

void tst_ProjectUploadInterrupted::onlyTheFirstEndCounts()
{
    QFETCH(QString, operations);
    QFETCH(int, cancels);
    ThreeParts scene;
    scene.write(fileName("other.db3"), "abc");
    scene.platform.server.always(Route::PUT_FILE, ScriptedAnswer::held());
    scene.init(2);
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    QVERIFY(scene.receives(Route::PUT_FILE, 1));
    perform(scene.job, operations);
    QVERIFY(scene.isDeleted());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.requestCount(Route::CANCEL), cancels);
    QCOMPARE(scene.requestCount(Route::MULTI_ABORT), 1);
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 1);
    QCOMPARE(scene.requestCount(Route::PUT_FILE), 1);
    QCOMPARE(scene.requestCount(Route::UPLOADED), 0);
    QVERIFY(!scene.journal.contains(QStringLiteral("completed")));
}

void tst_ProjectUploadInterrupted::abortInsideAReportIsSafe_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QString>("report"); // beginning of the line that is answered with an abort
    QTest::newRow("one part, its start") << 1000 << "file ";
    QTest::newRow("one part, first total") << 1000 << "total 0/";
    QTest::newRow("one part, its end") << 1000 << "total 1/";
    QTest::newRow("many parts, its start") << PART_BYTES + 1 << "file ";
    QTest::newRow("many parts, on its way") << PART_BYTES + 1 << "total 0/3 3";
    QTest::newRow("many parts, its end") << PART_BYTES + 1 << "total 1/";
}

void tst_ProjectUploadInterrupted::abortInsideAReportIsSafe()
{
    QFETCH(int, bytes);
    QFETCH(QString, report);
    UploadScene scene;
    for (const char *name : {"a.db3", "b.db3", "c.db3"})
        scene.write(fileName(name), patternOf(bytes));
    const auto abortAtReport = [&] {
        if (scene.journal.last().startsWith(report))
            scene.job->abort();
    };
    connect(scene.job, &ProjectUpload::fileUploadProgressChanged, scene.job, abortAtReport);
    connect(scene.job, &ProjectUpload::totalUploadProgressChanged, scene.job, abortAtReport);
    scene.init();
    scene.start();
    QVERIFY(scene.isDeleted());
    QVERIFY(scene.becomesQuiet());
    QVERIFY(!scene.journal.contains(QStringLiteral("completed")));
    QCOMPARE(scene.requestCount(Route::CANCEL), 1);
    QCOMPARE(scene.requestCount(Route::UPLOADED), 0);
    QVERIFY(scene.requestCount(Route::PUT_FILE) + scene.requestCount(Route::MULTI_INIT) <= 1);
}

void tst_ProjectUploadInterrupted::deletionInFlightIsSilent()
{
    ThreeParts scene;
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    const QStringList journal = scene.journal;
    delete scene.job;
    scene.platform.server.release();
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal, journal);
}

// Stop

void tst_ProjectUploadInterrupted::stopIsSilent()
{
    ThreeParts scene;
    for (const char *name : {"a.txt", "b.txt", "c.txt"})
        scene.write(fileName(name), "abc");
    scene.platform.server.always(Route::PUT_FILE, ScriptedAnswer::held());
    scene.init(10);
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    QVERIFY(scene.receives(Route::PUT_FILE, 3));
    const QStringList journal = scene.journal;
    scene.job->stop();
    QVERIFY(scene.isDeleted());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal, journal);
    QCOMPARE(scene.requestCount(Route::MULTI_ABORT), 1);
    QCOMPARE(scene.requestCount(Route::CANCEL), 0);
    QCOMPARE(scene.requestCount(Route::UPLOADED), 0);
}

void tst_ProjectUploadInterrupted::stopBeforeTheListingIsSilent()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.platform.server.always(Route::LISTING, ScriptedAnswer::held(listingOf({})));
    scene.init();
    scene.start();
    scene.job->stop();
    QVERIFY(scene.isDeleted());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal, QStringList());
    QCOMPARE(scene.requestCount(Route::CANCEL), 0);
}

// The sweep for stalled uploads

namespace {

qint64 beginOfUpload(const UploadScene &scene)
{
    const auto *const handle = scene.job->findChild<UploadFileMultiPartRequestHandle *>();
    return handle->begun().toMSecsSinceEpoch();
}

} // namespace

void tst_ProjectUploadInterrupted::stalledMultipartStartsOver_data()
{
    QTest::addColumn<qint64>("ageMs");
    QTest::addColumn<bool>("isPaused");
    QTest::addColumn<int>("uploads");
    QTest::newRow("just begun, in flight") << qint64(0) << false << 1;
    QTest::newRow("just begun, paused") << qint64(0) << true << 1;
    QTest::newRow("a moment less than 36 hours, in flight") << STALL_MS - 1 << false << 1;
    QTest::newRow("a moment less than 36 hours, paused") << STALL_MS - 1 << true << 1;
    QTest::newRow("36 hours, in flight") << STALL_MS << false << 2;
    QTest::newRow("36 hours, paused") << STALL_MS << true << 2;
    QTest::newRow("much more than 36 hours") << 10 * STALL_MS << true << 2;
}

void tst_ProjectUploadInterrupted::stalledMultipartStartsOver()
{
    QFETCH(qint64, ageMs);
    QFETCH(bool, isPaused);
    QFETCH(int, uploads);
    ThreeParts scene;
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    if (isPaused) {
        scene.job->pause();
        scene.platform.server.release();
        QVERIFY(scene.becomesQuiet());
    }
    {
        const FrozenClock clock(beginOfUpload(scene) + ageMs);
        scene.job->resume();
    }
    scene.releaseParts();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QVERIFY(scene.isWhole());
    QCOMPARE(scene.requestCount(Route::MULTI_INIT), uploads);
    QCOMPARE(scene.requestCount(Route::MULTI_ABORT), uploads - 1);
    QCOMPARE(scene.requestCount(Route::MULTI_PART), uploads == 1 ? 3 : 4);
    QCOMPARE(scene.requestCount(Route::UPLOADED), 1);
    QCOMPARE(scene.results(), QStringList{QStringLiteral("completed")});
    // What the first attempt had counted is taken back, else this would be more.
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/1 100% ")));
}

void tst_ProjectUploadInterrupted::stalledFileGoesBeforeAllOthers()
{
    UploadScene scene;
    for (const char *name : {"one.db3", "two.db3", "three.db3"})
        scene.write(fileName(name), patternOf(2 * PART_BYTES));
    scene.platform.server.always(Route::MULTI_PART, ScriptedAnswer::held(PART_DONE));
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    scene.job->pause();
    scene.platform.server.release();
    QVERIFY(scene.becomesQuiet());
    const QByteArray key = textOf(scene.platform.server.requests(Route::MULTI_INIT).first().body, "OutputFilePath");
    QCOMPARE(scene.totals().last(), QStringLiteral("total 0/3 16% [%1]").arg(QString::fromUtf8(key)));
    const int reported = scene.journal.size();
    const FrozenClock clock(beginOfUpload(scene) + STALL_MS);
    scene.job->resume();
    QCOMPARE(scene.journal.mid(reported),
             (QStringList{QStringLiteral("file %1 0%").arg(QString::fromUtf8(key)), QStringLiteral("total 0/3 0% []")}));
    QVERIFY(scene.receives(Route::MULTI_ABORT, 1));
    QVERIFY(scene.receives(Route::MULTI_INIT, 2));
    QCOMPARE(textOf(scene.platform.server.requests(Route::MULTI_ABORT).first().body, "MultipartUploadId"),
             QByteArray("upload-1"));
    QCOMPARE(textOf(scene.platform.server.requests(Route::MULTI_INIT).last().body, "OutputFilePath"), key);
}

void tst_ProjectUploadInterrupted::stalledVideoIsNotTakenForASecondOne()
{
    UploadScene scene;
    const QByteArray content = patternOf(PART_BYTES + 1);
    scene.write(fileName("film.mp4"), content);
    scene.platform.server.enqueue(Route::MULTI_PART, ScriptedAnswer::held(PART_DONE));
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    {
        const FrozenClock clock(beginOfUpload(scene) + STALL_MS);
        scene.job->resume();
    }
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.requestCount(Route::MULTI_INIT), 2);
    QCOMPARE(scene.requestCount(Route::TRANSCODE), 1);
    QCOMPARE(scene.log.messages(), QStringList());
    QVERIFY(scene.platform.uploadedFiles().value("Video/Sec/film.mp4") == content);
}

void tst_ProjectUploadInterrupted::stalledFileIsReadAnew()
{
    ThreeParts scene;
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    scene.write(BIG, "a short one now");
    {
        const FrozenClock clock(beginOfUpload(scene) + STALL_MS);
        scene.job->resume();
    }
    QVERIFY(scene.completes());
    QVERIFY((scene.platform.uploadedFiles() == QMap<QByteArray, QByteArray>{{"big.db3", "a short one now"}}));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/1 0% "))); // of the bytes that were found at first
}

void tst_ProjectUploadInterrupted::stalledFileThatIsGoneIsReported()
{
    ThreeParts scene;
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    QVERIFY(QFile::remove(scene.pathOf(BIG)));
    {
        const FrozenClock clock(beginOfUpload(scene) + STALL_MS);
        scene.job->resume();
    }
    QVERIFY(scene.completes());
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error 6"), QStringLiteral("completed")}));
}

void tst_ProjectUploadInterrupted::filesInOnePartAreNeverStalled()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.platform.server.always(Route::PUT_FILE, ScriptedAnswer::held());
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::PUT_FILE, 1));
    {
        const FrozenClock clock(QDateTime::currentMSecsSinceEpoch() + 2 * STALL_MS);
        scene.job->resume();
    }
    scene.platform.server.release();
    QVERIFY(scene.completes());
    QCOMPARE(scene.requestCount(Route::PUT_FILE), 1);
}

void tst_ProjectUploadInterrupted::abortOfTheStalledUploadIsNotCounted()
{
    ThreeParts scene;
    scene.platform.server.always(Route::MULTI_ABORT, ScriptedAnswer::held("<AbortMultipartUploadResponse/>"));
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    {
        const FrozenClock clock(beginOfUpload(scene) + STALL_MS);
        scene.job->resume();
    }
    QVERIFY(scene.receives(Route::MULTI_ABORT, 1));
    QVERIFY(scene.receives(Route::MULTI_PART, 2));
    scene.platform.server.release(Route::MULTI_ABORT);
    QVERIFY(waitUntil([&] { return scene.job->findChildren<UploadFileMultiPartRequestHandle *>().size() == 1; }));
    QCOMPARE(scene.results(), QStringList());
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 0/1 ")));
    scene.releaseParts();
    QVERIFY(scene.completes());
    QVERIFY(scene.isWhole());
}

QTEST_GUILESS_MAIN(tst_ProjectUploadInterrupted)

#include "tst_ProjectUploadInterrupted.moc"
