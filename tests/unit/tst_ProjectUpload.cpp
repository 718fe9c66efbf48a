#include "transfer/ProjectUpload.h"

#include "UploadScene.h"
#include "WithoutPrivileges.h"
#include "handles/ProjectHandles.h"
#include "handles/UploadFileRequestHandle.h"

#include <QtCore/QRegularExpression>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QStringList START_STEPS{QStringLiteral("UploadProject/Init"), QStringLiteral("bucket/exists"),
                              QStringLiteral("bucket/listoffilesfromlocations")};
const QString UPLOADED = QStringLiteral("UploadProject/Uploaded");
const QString PUT_FILE = QStringLiteral("bucket/putfile");
const QString COMPLETED = QStringLiteral("completed");

QString fileName(const char *name)
{
    return QString::fromUtf8(name);
}

// Whether the percentages of these lines of a journal never fall.
bool isRising(const QStringList &lines)
{
    static const QRegularExpression percent(QStringLiteral(" (-?\\d+)%"));
    int last = 0;
    for (const QString &line : lines) {
        const int value = percent.match(line).captured(1).toInt();
        if (value < last)
            return false;
        last = value;
    }
    return true;
}

} // namespace

using Spoiler = bool (*)(const QString &path);
Q_DECLARE_METATYPE(Spoiler)

class tst_ProjectUpload : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The start
    void startAsksBeginThenBucketThenListing();
    void missingBucketIsCreated();
    void bucketThatAnswersWithItsNameExists();
    void beginWithoutBucketEndsTheStart_data();
    void beginWithoutBucketEndsTheStart();
    void silentServerEndsTheStart();
    void creationDateIsCheckedBehindTheBucket_data();
    void creationDateIsCheckedBehindTheBucket();
    void jobStoppedByItsErrorIsGone();
    void failedListingCountsAsEmpty();
    void laterEntryOfTheListingWins_data();
    void laterEntryOfTheListingWins();

    // What is sent
    void wholeFolderArrives();
    void keysOfMediaFollowTheSetOfNodes();
    void projectPathWithoutSeparatorKeepsItInTheKeys();
    void fourMebibytesGoInOnePart_data();
    void fourMebibytesGoInOnePart();
    void mediaWithOneNameAreLogged();
    void videosAreTranscodedWhenTheyHaveArrived();
    void documentingVideosAreNotTranscoded_data();
    void documentingVideosAreNotTranscoded();
    void finishNoticeCarriesTheImportType_data();
    void finishNoticeCarriesTheImportType();
    void failedFinishNoticeIsRaised();

    // The order of reports
    void emptyFolderFinishesAtOnce_data();
    void emptyFolderFinishesAtOnce();
    void noRoomForUploadsStartsNothing();
    void fileShowsUpBeforeItsDataMoves();
    void finishedFileIsCountedWhileItIsListed();
    void emptyFilesCountAsDone();
    void noMoreThanAskedForAreInFlight();
    void progressReachesItsEndExactly();
    void beginSlotRunsTheScheduler();

    // Files that fail
    void failedFileIsNotCountedAndOthersGoOn_data();
    void failedFileIsNotCountedAndOthersGoOn();
    void failedMultipartIsGivenUp_data();
    void failedMultipartIsGivenUp();
    void resentFileArrives();
    void failedVideoIsNotTranscoded();
    void unreadableFileIsReportedAndOthersGoOn_data();
    void unreadableFileIsReportedAndOthersGoOn();
    void sizeOnDiskDecidesAtTheStartOfTheFile();
    void lockedFilesAndFoldersAreReported();
    void fileThatShrinksBetweenPartsIsGivenUp();
    void allFilesUnreadableStillEnd();
    void errorSlotsReportFailuresOnly();
    void stopInsideAnErrorIsSilent();
};

// The start

void tst_ProjectUpload::startAsksBeginThenBucketThenListing()
{
    UploadScene scene;
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.platform.steps(), START_STEPS + QStringList{UPLOADED});
    const auto requests = scene.platform.server.requests();
    QCOMPARE(requests.at(0).method, QByteArray("POST"));
    QCOMPARE(textOf(requests.at(0).body, "ProjectId"), QByteArray("project-id"));
    QCOMPARE(textOf(requests.at(0).body, "ProjectName"), QByteArray("Project name"));
    QCOMPARE(textOf(requests.at(0).body, "CreationDate"), QByteArray("2024-05-17T08:30:00Z"));
    QCOMPARE(textOf(requests.at(1).body, "BucketName"), QByteArray("bucket"));
    QCOMPARE(textOf(requests.at(1).body, "RelativePath"), QByteArray(""));
    QCOMPARE(textOf(requests.at(2).body, "BucketName"), QByteArray("bucket"));
    QCOMPARE(textOf(requests.at(2).body, "Delimiter"), QByteArray(""));
    QVERIFY(!requests.at(2).body.contains("d2p1:string"));
}

void tst_ProjectUpload::missingBucketIsCreated()
{
    UploadScene scene;
    scene.platform.server.always(Route::BEGIN, ScriptedAnswer::ok("<B><BucketName>Bucket-A</BucketName></B>"));
    scene.platform.server.always(Route::EXISTS, ScriptedAnswer::ok("<E><Exist>false</Exist></E>"));
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.platform.steps().mid(0, 4), (QStringList{START_STEPS.at(0), START_STEPS.at(1),
                                                            QStringLiteral("bucket"), START_STEPS.at(2)}));
    const RecordedRequest creation = scene.platform.server.requests(Route::BUCKET).first();
    QCOMPARE(creation.method, QByteArray("PUT"));
    QCOMPARE(textOf(creation.body, "BucketName"), QByteArray("bucket-a"));
    QCOMPARE(textOf(scene.platform.server.requests(Route::LISTING).first().body, "BucketName"), QByteArray("Bucket-A"));
}

void tst_ProjectUpload::bucketThatAnswersWithItsNameExists()
{
    UploadScene scene;
    scene.platform.server.always(Route::EXISTS, ScriptedAnswer::ok("<E><Name>bucket</Name></E>"));
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.requestCount(Route::BUCKET), 0);
}

void tst_ProjectUpload::beginWithoutBucketEndsTheStart_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("error");
    QTest::newRow("answer without a name") << 200 << QByteArray("<Begin/>") << 14;
    QTest::newRow("empty name") << 200 << QByteArray("<Begin><BucketName></BucketName></Begin>") << 14;
    QTest::newRow("empty answer") << 200 << QByteArray() << 14;
    QTest::newRow("not XML") << 200 << QByteArray("bucket") << 14;
    QTest::newRow("token refused") << 401 << QByteArray("<Error/>") << 3;
    QTest::newRow("server failed") << 500 << QByteArray("<Error/>") << 2;
    QTest::newRow("not found") << 404 << QByteArray("<Error/>") << 14;
    QTest::newRow("not available") << 503 << QByteArray() << 14;
    QTest::newRow("led elsewhere") << 302 << QByteArray() << 14;
}

void tst_ProjectUpload::beginWithoutBucketEndsTheStart()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(int, error);
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.platform.server.always(Route::BEGIN, ScriptedAnswer(status, body));
    scene.init();
    scene.start();
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal, QStringList{QStringLiteral("error %1").arg(error)});
    QCOMPARE(scene.platform.steps(), QStringList{START_STEPS.first()});
}

// Three uploads at once, because each of the three waits lasts ten seconds: one loop runs inside the other.
void tst_ProjectUpload::silentServerEndsTheStart()
{
    TransferPlatform platform;
    platform.server.always(Route::BEGIN, [](const RecordedRequest &request) {
        const QByteArray project = textOf(request.body, "ProjectId");
        const QByteArray answer = "<Begin><BucketName>" + project + "</BucketName></Begin>";
        return project == "begin" ? ScriptedAnswer::held(answer) : ScriptedAnswer::ok(answer);
    });
    platform.server.always(Route::EXISTS, [](const RecordedRequest &request) {
        return textOf(request.body, "BucketName") == "query" ? ScriptedAnswer::held() : ScriptedAnswer::ok();
    });
    platform.server.always(Route::BUCKET, ScriptedAnswer::held());

    QStringList errors;
    const auto startJob = [&](const QString &project) {
        ProjectUpload job(&platform.communicator, 1);
        connect(&job, &ProjectUpload::errorOccurred, this,
                [&](int, Error error) { errors.append(project + QLatin1Char(' ') + QString::number(int(error))); });
        job.init(project, QStringLiteral("name"), QStringLiteral("/"), QDateTime::currentDateTime(), ImportType::Standard,
                 1, {});
        job.start();
    };
    // The next one starts when the one before has come to its wait.
    connect(&platform.server, &ScriptedServer::requestReceived, this, [&] {
        if (platform.server.requestCount() == 1)
            startJob(QStringLiteral("query"));
        else if (platform.server.requestCount(Route::EXISTS) == 1 && platform.server.requestCount(Route::BEGIN) == 2)
            startJob(QStringLiteral("creation"));
    });
    startJob(QStringLiteral("begin"));

    errors.sort();
    QCOMPARE(errors, (QStringList{QStringLiteral("begin 1"), QStringLiteral("creation 1"), QStringLiteral("query 1")}));
    QCOMPARE(platform.server.requestCount(Route::BEGIN), 3);
    QCOMPARE(platform.server.requestCount(Route::EXISTS), 2);
    QCOMPARE(platform.server.requestCount(Route::BUCKET), 1);
    QCOMPARE(platform.server.requestCount(), 6);
}

void tst_ProjectUpload::creationDateIsCheckedBehindTheBucket_data()
{
    QTest::addColumn<QDateTime>("date");
    QTest::newRow("null") << QDateTime();
    QTest::newRow("not valid, but not null") << QDateTime(QDate(2024, 2, 30), QTime(12, 0));
}

void tst_ProjectUpload::creationDateIsCheckedBehindTheBucket()
{
    QFETCH(QDateTime, date);
    UploadScene scene;
    scene.platform.server.always(Route::EXISTS, ScriptedAnswer::ok("<E><Exist>false</Exist></E>"));
    scene.creationDate = date;
    scene.init();
    scene.start();
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.platform.steps(), START_STEPS.mid(0, 2) + QStringList{QStringLiteral("bucket")});
    QCOMPARE(scene.journal, QStringList{QStringLiteral("error 7")});
    QCOMPARE(scene.log.messages(), QStringList{QStringLiteral("Project creation date cannot be null.")});
    QCOMPARE(scene.log.entries().first().level, 1);
    QCOMPARE(scene.log.entries().first().category, QStringLiteral("KorvoWeb"));
}

void tst_ProjectUpload::jobStoppedByItsErrorIsGone()
{
    UploadScene scene;
    scene.platform.server.always(Route::BEGIN, ScriptedAnswer(500));
    connect(scene.job, &ProjectUpload::errorOccurred, scene.job, &ProjectUpload::stop);
    scene.init();
    scene.start();
    QVERIFY(scene.isDeleted());
    QCOMPARE(scene.journal, QStringList{QStringLiteral("error 2")});
    QCOMPARE(scene.platform.steps(), START_STEPS.mid(0, 1));
}

void tst_ProjectUpload::failedListingCountsAsEmpty()
{
    UploadScene scene;
    scene.write(fileName("project.xml"), QByteArray(40, 'x'));
    scene.platform.server.always(Route::LISTING, ScriptedAnswer(500, listingOf({})));
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.requestCount(Route::LISTING), 1);
    QCOMPARE(scene.requestCount(Route::PUT_FILE), 1);
    QCOMPARE(scene.results(), QStringList{COMPLETED});
}

void tst_ProjectUpload::laterEntryOfTheListingWins_data()
{
    QTest::addColumn<qint64>("firstSize");
    QTest::addColumn<qint64>("lastSize");
    QTest::addColumn<int>("sent");
    QTest::newRow("last one has the size") << qint64(39) << qint64(40) << 0;
    QTest::newRow("first one has the size") << qint64(40) << qint64(39) << 1;
}

void tst_ProjectUpload::laterEntryOfTheListingWins()
{
    QFETCH(qint64, firstSize);
    QFETCH(qint64, lastSize);
    UploadScene scene;
    scene.write(fileName("project.xml"), QByteArray(40, 'x'));
    scene.platform.server.always(
        Route::LISTING, ScriptedAnswer::ok(listingOf({{"old/project.xml", firstSize}, {"project.xml", lastSize}})));
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QTEST(scene.requestCount(Route::PUT_FILE), "sent");
}

// What is sent

void tst_ProjectUpload::wholeFolderArrives()
{
    const QMap<QString, QPair<QByteArray, QByteArray>> files{
        {fileName("data.db3"), {"data.db3", patternOf(300000, 1)}},
        {fileName("project.xml"), {"project.xml", "<project/>"}},
        {fileName("empty.txt"), {"empty.txt", QByteArray()}},
        {fileName("deep/er/Größe 1.pdf"), {"deep/er/Größe 1.pdf", patternOf(777, 2)}},
        {fileName("deep/photo.JPG"), {"Picture/Sec/photo.JPG", patternOf(5000, 3)}},
        {fileName("films/long.mp4"), {"Video/Sec/long.mp4", patternOf(2 * PART_BYTES + 1234, 4)}},
        {fileName("films/node.mov"), {"Video/Nod/node.mov", patternOf(PART_BYTES + 1, 5)}}};
    UploadScene scene;
    QMap<QByteArray, QByteArray> expected;
    for (auto file = files.cbegin(); file != files.cend(); ++file) {
        scene.write(file.key(), file->second);
        expected.insert(file->first, file->second);
    }
    scene.init(3, {fileName("films/node.mov")});
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.platform.uploadedFiles().keys(), expected.keys());
    QVERIFY(scene.platform.uploadedFiles() == expected);
    QCOMPARE(scene.results(), QStringList{COMPLETED});
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 7/7 100% ")));
    QCOMPARE(scene.log.messages(), QStringList());
    for (const RecordedRequest &request : scene.platform.server.requests(Route::PUT_FILE)) {
        QCOMPARE(textOf(request.body, "BucketName"), QByteArray("bucket"));
        QCOMPARE(textOf(request.body, "ProjectFolderName"), QByteArray(""));
    }
}

void tst_ProjectUpload::keysOfMediaFollowTheSetOfNodes()
{
    UploadScene scene;
    scene.write(fileName("sub/dir/a.jpg"), "1");
    scene.write(fileName("sub/b.jpg"), "2");
    scene.write(fileName("sub/c.mpg"), "3");
    scene.write(fileName("sub/d.avi"), "4");
    scene.write(fileName("sub/e.txt"), "5");
    scene.init(1, {fileName("sub/dir/a.jpg"), fileName("sub/c.mpg"), fileName("sub/e.txt")});
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.platform.uploadedFiles().keys(),
             (QList<QByteArray>{"Picture/Nod/a.jpg", "Picture/Sec/b.jpg", "Video/Nod/c.mpg", "Video/Sec/d.avi", "sub/e.txt"}));
}

void tst_ProjectUpload::projectPathWithoutSeparatorKeepsItInTheKeys()
{
    UploadScene scene;
    scene.write(fileName("sub/a.txt"), "1");
    scene.write(fileName("sub/n.jpg"), "2");
    scene.job->init(QStringLiteral("id"), QStringLiteral("name"), scene.root(), scene.creationDate, ImportType::Standard,
                    1, {fileName("sub/n.jpg")});
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.platform.uploadedFiles().keys(), (QList<QByteArray>{"/sub/a.txt", "Picture/Nod/n.jpg"}));
}

void tst_ProjectUpload::fourMebibytesGoInOnePart_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QStringList>("steps");
    const QString init = QStringLiteral("multipartupload/init");
    const QString part = QStringLiteral("multipartupload/upload");
    const QString complete = QStringLiteral("multipartupload/complete");
    QTest::newRow("a byte less") << 4194303 << QStringList{PUT_FILE, UPLOADED};
    QTest::newRow("just so many") << 4194304 << QStringList{PUT_FILE, UPLOADED};
    QTest::newRow("a byte more") << 4194305 << QStringList{init, part, part, complete, UPLOADED};
    QTest::newRow("two parts to the byte") << 8388608 << QStringList{init, part, part, complete, UPLOADED};
}

void tst_ProjectUpload::fourMebibytesGoInOnePart()
{
    QFETCH(int, bytes);
    UploadScene scene;
    const QByteArray content = patternOf(bytes);
    scene.write(fileName("data.db3"), content);
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QTEST(scene.stepsAfterListing(), "steps");
    QVERIFY(scene.platform.uploadedFiles() == (QMap<QByteArray, QByteArray>{{"data.db3", content}}));
}

void tst_ProjectUpload::mediaWithOneNameAreLogged()
{
    UploadScene scene;
    scene.write(fileName("one/a.jpg"), "1");
    scene.write(fileName("two/a.jpg"), "2");
    scene.write(fileName("one/a.txt"), "3");
    scene.write(fileName("two/a.txt"), "4");
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.requestCount(Route::PUT_FILE), 4);
    QCOMPARE(scene.log.count(), 1);
    const QString text = QStringLiteral("Two media files have the same remote name, the later one replaces the earlier one: ");
    QVERIFY(scene.log.messages().contains(text + scene.pathOf(fileName("one/a.jpg")))
            || scene.log.messages().contains(text + scene.pathOf(fileName("two/a.jpg"))));
}

void tst_ProjectUpload::videosAreTranscodedWhenTheyHaveArrived()
{
    UploadScene scene;
    scene.write(fileName("v/clip.one.mp4"), "1");
    scene.write(fileName("v/long.avi"), patternOf(PART_BYTES + 1));
    scene.write(fileName("v/photo.jpg"), "2");
    scene.write(fileName("v/notes.txt"), "3");
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QMap<QByteArray, QByteArray> jobs;
    for (const RecordedRequest &request : scene.platform.server.requests(Route::TRANSCODE)) {
        QCOMPARE(textOf(request.body, "BucketName"), QByteArray("bucket"));
        jobs.insert(textOf(request.body, "FileKey"), textOf(request.body, "OutputKeyWithoutExtension"));
    }
    QCOMPARE(jobs, (QMap<QByteArray, QByteArray>{{"Video/Sec/clip.one.mp4", "Video/Sec/clip.one"},
                                                 {"Video/Sec/long.avi", "Video/Sec/long"}}));
}

void tst_ProjectUpload::documentingVideosAreNotTranscoded_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isVideo");
    QTest::addColumn<int>("transcodings");
    QTest::newRow("documents") << "x/Misc/Docu/film.mp4" << true << 0;
    QTest::newRow("documents by the beginning of a name") << "Misc/Documents.mp4" << true << 0;
    QTest::newRow("in other letters") << "misc/docu/film.mp4" << true << 1;
    QTest::newRow("elsewhere") << "Misc/film.mp4" << true << 1;
    QTest::newRow("no video") << "Misc/film.mp4" << false << 0;
}

// No folder scan yields such a key, so the file is handed to the job from outside.
void tst_ProjectUpload::documentingVideosAreNotTranscoded()
{
    QFETCH(QString, key);
    QFETCH(bool, isVideo);
    UploadScene scene;
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    scene.write(fileName("film.mp4"), "1");
    auto *const handle = scene.platform.communicator.uploadFile(
        {QString(), scene.pathOf(fileName("film.mp4")), key, QStringLiteral("bucket"), isVideo});
    QSignalSpy finished(handle, &UploadFileRequestHandle::requestFinished);
    connect(handle, &UploadFileRequestHandle::requestFinished, scene.job, &ProjectUpload::fileUploadFinished);
    QVERIFY(finished.wait());
    QVERIFY(scene.becomesQuiet());
    QTEST(scene.requestCount(Route::TRANSCODE), "transcodings");
}

void tst_ProjectUpload::finishNoticeCarriesTheImportType_data()
{
    QTest::addColumn<int>("importType");
    QTest::addColumn<QByteArray>("elements");
    QTest::newRow("standard") << int(ImportType::Standard) << QByteArray("<ProjectId>project-id</ProjectId>");
    QTest::newRow("import") << int(ImportType::QZImport)
                            << QByteArray("<OrvandeImport>true</OrvandeImport><ProjectId>project-id</ProjectId>");
    QTest::newRow("quickview") << int(ImportType::Quickview)
                               << QByteArray("<ImportType>Quickview</ImportType><ProjectId>project-id</ProjectId>");
}

void tst_ProjectUpload::finishNoticeCarriesTheImportType()
{
    QFETCH(int, importType);
    QFETCH(QByteArray, elements);
    UploadScene scene;
    scene.init(1, {}, ImportType(importType));
    scene.start();
    QVERIFY(scene.receives(Route::UPLOADED, 1));
    QVERIFY(scene.becomesQuiet());
    const QByteArray body = scene.platform.server.requests(Route::UPLOADED).first().body;
    QVERIFY2(body.endsWith('>' + elements + "</UploadProcesMessageModel>"), body.constData());
    QCOMPARE(scene.requestCount(Route::UPLOADED), 1);
}

void tst_ProjectUpload::failedFinishNoticeIsRaised()
{
    UploadScene scene;
    scene.platform.server.always(Route::UPLOADED, ScriptedAnswer(500));
    scene.init();
    scene.start();
    QTRY_COMPARE(scene.journal.size(), 2);
    QCOMPARE(scene.journal, (QStringList{COMPLETED, QStringLiteral("communicator: error 2")}));
}

// The order of reports

void tst_ProjectUpload::emptyFolderFinishesAtOnce_data()
{
    QTest::addColumn<QString>("behindTheFolder");
    QTest::newRow("empty") << "";
    QTest::newRow("missing") << "/not there";
}

void tst_ProjectUpload::emptyFolderFinishesAtOnce()
{
    QFETCH(QString, behindTheFolder);
    UploadScene scene;
    scene.job->init(QStringLiteral("id"), QStringLiteral("name"), scene.root() + behindTheFolder, scene.creationDate,
                    ImportType::Standard, 1, {});
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal, QStringList{COMPLETED});
    QCOMPARE(scene.stepsAfterListing(), QStringList{UPLOADED});
}

void tst_ProjectUpload::noRoomForUploadsStartsNothing()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.init(0);
    scene.start();
    QVERIFY(scene.isListed());
    scene.job->resume();
    QVERIFY(scene.isQuiet());
    QCOMPARE(scene.platform.steps(), START_STEPS);
    QCOMPARE(scene.journal, QStringList());
}

void tst_ProjectUpload::fileShowsUpBeforeItsDataMoves()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.platform.server.always(Route::PUT_FILE, ScriptedAnswer::held());
    QStringList journalAtStart;
    scene.init();
    scene.start();
    QVERIFY(scene.isListed());
    journalAtStart = scene.journal.mid(0, 2);
    QCOMPARE(journalAtStart, (QStringList{QStringLiteral("file a.txt 0%"), QStringLiteral("total 0/1 0% []")}));
    QVERIFY(scene.receives(Route::PUT_FILE, 1));
    QTRY_COMPARE(scene.journal.last(), QStringLiteral("total 0/1 100% [a.txt]"));
    scene.platform.server.release();
    QVERIFY(scene.completes());
}

void tst_ProjectUpload::finishedFileIsCountedWhileItIsListed()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal.mid(scene.journal.size() - 3),
             (QStringList{QStringLiteral("total 0/1 100% [a.txt]"), QStringLiteral("total 1/1 100% [a.txt]"), COMPLETED}));
}

void tst_ProjectUpload::emptyFilesCountAsDone()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), QByteArray());
    scene.write(fileName("b.txt"), QByteArray());
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    for (const QString &line : scene.totals())
        QVERIFY2(line.contains(QStringLiteral(" 100% ")), qPrintable(line));
    for (const QString &line : scene.journal.filter(QStringLiteral("file ")))
        QVERIFY2(line.endsWith(QStringLiteral(" 100%")), qPrintable(line));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 2/2 ")));
}

void tst_ProjectUpload::noMoreThanAskedForAreInFlight()
{
    UploadScene scene;
    for (const char *name : {"a.txt", "b.txt", "c.txt", "d.txt", "e.txt"})
        scene.write(fileName(name), "abc");
    scene.platform.server.always(Route::PUT_FILE, ScriptedAnswer::held());
    scene.init(2);
    scene.start();
    for (const int sent : {2, 4, 5}) {
        QVERIFY(scene.receives(Route::PUT_FILE, sent));
        const auto handles = scene.job->findChildren<UploadFileRequestHandle *>();
        QCOMPARE(int(std::count_if(handles.cbegin(), handles.cend(),
                                   [](const UploadFileRequestHandle *handle) { return handle->isInFlight(); })),
                 sent == 5 ? 1 : 2);
        scene.platform.server.release();
    }
    QVERIFY(scene.completes());
    for (const QString &line : scene.totals())
        QVERIFY2(line.count(QStringLiteral(".txt")) <= 2, qPrintable(line));
    QVERIFY(scene.totals().indexOf(QRegularExpression(QStringLiteral("^total 0/5 \\d+% \\[.\\.txt, .\\.txt\\]$"))) >= 0);
}

void tst_ProjectUpload::progressReachesItsEndExactly()
{
    UploadScene scene;
    scene.write(fileName("big.db3"), patternOf(2 * PART_BYTES + 5));
    scene.write(fileName("small.txt"), patternOf(200000));
    scene.init(2);
    scene.start();
    QVERIFY(scene.completes());
    for (const char *name : {"file big.db3 ", "file small.txt "}) {
        const QStringList lines = scene.journal.filter(fileName(name));
        QVERIFY(isRising(lines));
        QVERIFY(lines.first().endsWith(QStringLiteral(" 0%")));
        QVERIFY(lines.last().endsWith(QStringLiteral(" 100%")));
    }
    QVERIFY(isRising(scene.totals()));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 2/2 100% ")));
}

void tst_ProjectUpload::beginSlotRunsTheScheduler()
{
    UploadScene scene;
    scene.write(fileName("a.txt"), "abc");
    scene.init();
    scene.start();
    scene.job->pause();
    QVERIFY(scene.isListed());
    QPointer<BeginUploadProjectRequestHandle> handle(new BeginUploadProjectRequestHandle);
    connect(handle, &BeginUploadProjectRequestHandle::requestFinished, scene.job,
            &ProjectUpload::uploadProjectBeginFinished);
    Q_EMIT handle->requestFinished(BeginUploadProjectResponse());
    QVERIFY(scene.receives(Route::PUT_FILE, 1));
    QTRY_VERIFY(!handle);
}

// Files that fail

void tst_ProjectUpload::failedFileIsNotCountedAndOthersGoOn_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("sends");
    QTest::newRow("token refused") << 401 << 3 << 1;
    QTest::newRow("not found") << 404 << 14 << 1;
    QTest::newRow("server failed") << 500 << 2 << 6;
    QTest::newRow("not available") << 503 << 14 << 6;
    QTest::newRow("not allowed") << 403 << 14 << 6;
    QTest::newRow("led elsewhere") << 302 << 14 << 6;
}

void tst_ProjectUpload::failedFileIsNotCountedAndOthersGoOn()
{
    QFETCH(int, status);
    QFETCH(int, error);
    QFETCH(int, sends);
    UploadScene scene;
    for (const char *name : {"a.txt", "b.txt", "c.txt"})
        scene.write(fileName(name), name);
    scene.platform.server.always(Route::PUT_FILE, [status](const RecordedRequest &request) {
        return textOf(request.body, "OutputFilePath") == "b.txt" ? ScriptedAnswer(status) : ScriptedAnswer::ok();
    });
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    const QString errorLine = QStringLiteral("error %1").arg(error);
    QCOMPARE(scene.results(), (QStringList{errorLine, COMPLETED}));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 2/3 ")));
    const QString behindError = scene.journal.at(scene.journal.indexOf(errorLine) + 1);
    QVERIFY2(behindError.startsWith(QStringLiteral("total ")) && behindError.endsWith(QStringLiteral("[b.txt]")),
             qPrintable(behindError));
    QCOMPARE(scene.requestCount(Route::PUT_FILE), 2 + sends);
    QCOMPARE(scene.requestCount(Route::UPLOADED), 1);
    QCOMPARE(scene.requestCount(Route::CANCEL), 0);
}

void tst_ProjectUpload::failedMultipartIsGivenUp_data()
{
    QTest::addColumn<QByteArray>("route");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("sends");
    QTest::addColumn<QByteArray>("abortedUpload"); // null when the server needs no telling
    const QByteArray known = "upload-1";
    QTest::newRow("init, not found") << Route::MULTI_INIT << 404 << QByteArray() << 14 << 1 << QByteArray("");
    QTest::newRow("init, token refused") << Route::MULTI_INIT << 401 << QByteArray() << 3 << 1 << QByteArray("");
    QTest::newRow("init, server failed") << Route::MULTI_INIT << 500 << QByteArray() << 2 << 6 << QByteArray("");
    QTest::newRow("init, other answer") << Route::MULTI_INIT << 200 << QByteArray("<Other/>") << 14 << 1 << QByteArray("");
    QTest::newRow("init, aborted") << Route::MULTI_INIT << 200 << QByteArray("<AbortMultipartUploadResponse/>") << 14 << 1
                                   << QByteArray();
    QTest::newRow("part, not found") << Route::MULTI_PART << 404 << QByteArray() << 14 << 1 << known;
    QTest::newRow("part, token refused") << Route::MULTI_PART << 401 << QByteArray() << 3 << 1 << known;
    QTest::newRow("part, server failed") << Route::MULTI_PART << 500 << QByteArray() << 2 << 6 << known;
    QTest::newRow("part, empty answer") << Route::MULTI_PART << 200 << QByteArray() << 14 << 1 << known;
    QTest::newRow("part, not found, but in the words of a success")
        << Route::MULTI_PART << 404 << QByteArray("<PutMultipartUploadResponse/>") << 14 << 1 << known;
    QTest::newRow("part, aborted") << Route::MULTI_PART << 200 << QByteArray("<AbortMultipartUploadResponse/>") << 14 << 1
                                   << QByteArray();
    QTest::newRow("complete, not found") << Route::MULTI_COMPLETE << 404 << QByteArray() << 14 << 1 << known;
    QTest::newRow("complete, server failed") << Route::MULTI_COMPLETE << 500 << QByteArray() << 2 << 6 << known;
    QTest::newRow("complete, other answer") << Route::MULTI_COMPLETE << 200 << QByteArray("done") << 14 << 1 << known;
}

void tst_ProjectUpload::failedMultipartIsGivenUp()
{
    QFETCH(QByteArray, route);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(int, error);
    QFETCH(int, sends);
    QFETCH(QByteArray, abortedUpload);
    UploadScene scene;
    scene.write(fileName("big.mp4"), patternOf(PART_BYTES + 1));
    scene.write(fileName("small.txt"), "abc");
    scene.platform.server.always(route, ScriptedAnswer(status, body));
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error %1").arg(error), COMPLETED}));
    QCOMPARE(scene.totals().last().left(10), QStringLiteral("total 1/2 "));
    QCOMPARE(scene.requestCount(route), sends);
    const auto aborts = scene.platform.server.requests(Route::MULTI_ABORT);
    QCOMPARE(aborts.size(), abortedUpload.isNull() ? 0 : 1);
    if (!aborts.isEmpty())
        QCOMPARE(textOf(aborts.first().body, "MultipartUploadId"), abortedUpload);
    QCOMPARE(scene.requestCount(Route::TRANSCODE), 0);
    QCOMPARE(scene.requestCount(Route::UPLOADED), 1);
    QTRY_VERIFY(scene.job->findChildren<RequestHandle *>().isEmpty());
}

void tst_ProjectUpload::resentFileArrives()
{
    UploadScene scene;
    const QByteArray content = patternOf(PART_BYTES + 100);
    scene.write(fileName("big.db3"), content);
    scene.write(fileName("small.txt"), "abc");
    for (const QByteArray &route : {Route::PUT_FILE, Route::MULTI_INIT, Route::MULTI_COMPLETE})
        scene.platform.server.enqueue(route, ScriptedAnswer(503));
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.results(), QStringList{COMPLETED});
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 2/2 ")));
    QCOMPARE(scene.requestCount(Route::PUT_FILE), 2);
    QCOMPARE(scene.requestCount(Route::MULTI_INIT), 2);
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 2);
    QCOMPARE(scene.requestCount(Route::MULTI_COMPLETE), 2);
}

void tst_ProjectUpload::failedVideoIsNotTranscoded()
{
    UploadScene scene;
    scene.write(fileName("short.mp4"), "abc");
    scene.platform.server.always(Route::PUT_FILE, ScriptedAnswer(404));
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.stepsAfterListing(), (QStringList{PUT_FILE, UPLOADED}));
}

namespace {

bool removeFile(const QString &path)
{
    return QFile::remove(path);
}

bool replaceByFolder(const QString &path)
{
    return QFile::remove(path) && QDir().mkpath(path);
}

// Can be opened, but its first byte cannot be read.
bool replaceByUnreadable(const QString &path)
{
    return QFile::remove(path) && QFile::link(QStringLiteral("/proc/self/mem"), path);
}

// Holds more than its size says.
bool replaceByLiar(const QString &path)
{
    return QFile::remove(path) && QFile::link(QStringLiteral("/proc/version"), path);
}

} // namespace

void tst_ProjectUpload::unreadableFileIsReportedAndOthersGoOn_data()
{
    QTest::addColumn<Spoiler>("spoil");
    QTest::newRow("vanished") << Spoiler(removeFile);
    QTest::newRow("a folder by now") << Spoiler(replaceByFolder);
    QTest::newRow("cannot be read") << Spoiler(replaceByUnreadable);
    QTest::newRow("read otherwise than announced") << Spoiler(replaceByLiar);
}

void tst_ProjectUpload::unreadableFileIsReportedAndOthersGoOn()
{
    QFETCH(Spoiler, spoil);
    UploadScene scene;
    for (const char *name : {"a.txt", "b.txt", "c.txt"})
        scene.write(fileName(name), "abc");
    scene.platform.server.enqueue(Route::PUT_FILE, ScriptedAnswer::held());
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::PUT_FILE, 1));
    const QByteArray started = scene.platform.uploadedFiles().firstKey();
    const QString spoilt = scene.pathOf(started == "a.txt" ? fileName("b.txt") : fileName("a.txt"));
    QVERIFY(spoil(spoilt));
    scene.platform.server.release();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error 6"), COMPLETED}));
    QCOMPARE(scene.totals().last().left(10), QStringLiteral("total 2/3 "));
    QCOMPARE(scene.journal.filter(QFileInfo(spoilt).fileName()), QStringList());
    QCOMPARE(scene.requestCount(Route::PUT_FILE), 2);
    QCOMPARE(scene.log.messages(),
             QStringList{QStringLiteral("Error occurred during upload. Could not open file:") + spoilt});
}

void tst_ProjectUpload::sizeOnDiskDecidesAtTheStartOfTheFile()
{
    UploadScene scene;
    const QByteArray grown = patternOf(PART_BYTES + 1, 9);
    scene.write(fileName("a.txt"), "abc");
    scene.write(fileName("b.txt"), "abc");
    scene.platform.server.enqueue(Route::PUT_FILE, ScriptedAnswer::held());
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::PUT_FILE, 1));
    const QByteArray other = scene.platform.uploadedFiles().firstKey() == "a.txt" ? "b.txt" : "a.txt";
    scene.write(QString::fromUtf8(other), grown);
    scene.platform.server.release();
    QVERIFY(scene.completes());
    QCOMPARE(scene.requestCount(Route::MULTI_PART), 2);
    QVERIFY(scene.platform.uploadedFiles().value(other) == grown);
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 2/2 ")));
}

void tst_ProjectUpload::lockedFilesAndFoldersAreReported()
{
    UploadScene scene;
    scene.write(fileName("big.db3"), patternOf(PART_BYTES + 1));
    scene.write(fileName("good.txt"), "abc");
    scene.write(fileName("locked/a.txt"), "abc");
    QVERIFY(QFile::setPermissions(scene.root(), QFile::Permissions(0x7755)));
    QVERIFY(QFile::setPermissions(scene.pathOf(fileName("big.db3")), QFile::Permissions()));
    QVERIFY(QFile::setPermissions(scene.pathOf(fileName("locked")), QFile::Permissions()));
    scene.platform.server.always(Route::LISTING, ScriptedAnswer::held(listingOf({})));
    scene.init(2);
    scene.start();
    {
        const WithoutPrivileges nobody;
        scene.job->gotListFileResults(ListOfFilesFromLocationResponse());
    }
    QVERIFY(QFile::setPermissions(scene.pathOf(fileName("locked")), QFile::Permissions(0x7700)));
    QVERIFY(scene.completes());
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error 6"), QStringLiteral("error 6"), COMPLETED}));
    QCOMPARE(scene.platform.uploadedFiles(), (QMap<QByteArray, QByteArray>{{"good.txt", "abc"}}));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/2 ")));
    QCOMPARE(scene.log.messages(),
             (QStringList{QStringLiteral("Could not read folder: \"") + scene.pathOf(fileName("locked")) + QLatin1Char('"'),
                          QStringLiteral("Couldn't open upload file: \"") + scene.pathOf(fileName("big.db3")) + QLatin1Char('"')}));
    QCOMPARE(scene.log.entries().last().category, QStringLiteral("Korvo::Web::UploadFileMultiPartRequestHandle"));
}

void tst_ProjectUpload::fileThatShrinksBetweenPartsIsGivenUp()
{
    UploadScene scene;
    scene.write(fileName("big.mp4"), patternOf(2 * PART_BYTES));
    scene.platform.server.enqueue(Route::MULTI_PART,
                                  ScriptedAnswer::held("<PutMultipartUploadResponse/>"));
    scene.init();
    scene.start();
    QVERIFY(scene.receives(Route::MULTI_PART, 1));
    scene.truncate(fileName("big.mp4"), PART_BYTES);
    scene.platform.server.release();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error 6"), COMPLETED}));
    QCOMPARE(scene.stepsAfterListing(),
             (QStringList{QStringLiteral("multipartupload/init"), QStringLiteral("multipartupload/upload"),
                          QStringLiteral("multipartupload/abort"), UPLOADED}));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 0/1 ")));
}

void tst_ProjectUpload::allFilesUnreadableStillEnd()
{
    UploadScene scene;
    for (const char *name : {"a.txt", "b.txt"})
        QVERIFY(QFile::link(QStringLiteral("/proc/self/mem"), scene.pathOf(fileName(name))));
    scene.init();
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal, (QStringList{QStringLiteral("error 6"), QStringLiteral("error 6"), COMPLETED}));
    QCOMPARE(scene.stepsAfterListing(), QStringList{UPLOADED});
}

void tst_ProjectUpload::errorSlotsReportFailuresOnly()
{
    UploadScene scene;
    UploadFileResponse single;
    UploadFileMultiPartFinishedResponse multi;
    scene.job->handleSinglePartErrors(single);
    scene.job->handleMultiPartErrors(multi);
    QCOMPARE(scene.journal, QStringList());
    single.setOutcome(QNetworkReply::InternalServerError);
    multi.setOutcome(QNetworkReply::TimeoutError);
    scene.job->handleSinglePartErrors(single);
    scene.job->handleMultiPartErrors(multi);
    QCOMPARE(scene.journal, (QStringList{QStringLiteral("error 2"), QStringLiteral("error 1")}));
}

void tst_ProjectUpload::stopInsideAnErrorIsSilent()
{
    UploadScene scene;
    for (const char *name : {"a.txt", "b.txt", "c.txt", "d.txt"})
        scene.write(fileName(name), "abc");
    scene.write(fileName("big.db3"), patternOf(PART_BYTES + 1));
    scene.platform.server.always(Route::PUT_FILE, [](const RecordedRequest &request) {
        return textOf(request.body, "OutputFilePath") == "b.txt" ? ScriptedAnswer(404) : ScriptedAnswer::held();
    });
    scene.platform.server.always(Route::MULTI_PART, ScriptedAnswer::held());
    connect(scene.job, &ProjectUpload::errorOccurred, scene.job, &ProjectUpload::stop);
    scene.init(10);
    scene.start();
    QVERIFY(scene.isDeleted());
    QTRY_VERIFY(scene.platform.isQuiet());
    QCOMPARE(scene.results(), QStringList{QStringLiteral("error 14")});
    QCOMPARE(scene.journal.last(), QStringLiteral("error 14"));
    QCOMPARE(scene.requestCount(Route::CANCEL), 0);
    QCOMPARE(scene.requestCount(Route::UPLOADED), 0);
}

QTEST_GUILESS_MAIN(tst_ProjectUpload)

#include "tst_ProjectUpload.moc"
