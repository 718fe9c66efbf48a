#include "transfer/ProjectDownload.h"

#include "FileSizeLimit.h"
#include "TransferPlatform.h"
#include "handles/BucketHandles.h"
#include "handles/DownloadFileHandle.h"
#include "support/LogCapture.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

using Files = QMap<QString, QByteArray>;

const QString COMPLETED = QStringLiteral("completed");

QString fileName(const char *name)
{
    return QString::fromUtf8(name);
}

/// A bucket, a local folder to download it into, the job between them, and a journal of what the job says.
struct DownloadScene
{
    DownloadScene();
    ~DownloadScene() { delete job; }

    /// Lists the file and serves it.
    void offer(const QByteArray &key, const QByteArray &content);
    /// The same, each answer waiting for its release behind so many bytes.
    void offerHeld(const QByteArray &key, const QByteArray &content, int bytes = 0);
    void list(const QList<ListedFile> &files) { platform.server.always(Route::LISTING, ScriptedAnswer::ok(listingOf(files))); }
    void write(const QString &relativePath, const QByteArray &content) const;
    void start(int maxDownloads = 1);

    QString path() const { return folder.filePath(QStringLiteral("down/load")); }
    /// Everything below the download folder.
    Files filesOnDisk() const;

    // Each waits for what it says, and says whether it came.
    bool isListed() const { return waitUntil([this] { return listing.isNull(); }); }
    bool completes(int times = 1) const;
    bool becomesQuiet() const { return waitUntil([this] { return isQuiet(); }); }
    bool receives(const QByteArray &key, int count = 1) const;
    bool isDeleted() const { return waitUntil([this] { return job.isNull(); }); }
    bool says(const QString &line) const { return waitUntil([&] { return journal.contains(line); }); }

    bool isQuiet() const { return platform.isQuiet(job); }
    QStringList results() const;
    QStringList totals() const { return journal.filter(QStringLiteral("total ")); }

    static constexpr int ID = 9;
    QTemporaryDir folder;
    LogCapture log;
    TransferPlatform platform;
    QPointer<ProjectDownload> job;
    QPointer<ListFilesFromLocationsRequestHandle> listing;
    QStringList journal;
    QList<ListedFile> listed;

private:
    void note(int id, const QString &text) { journal.append(id == ID ? text : QStringLiteral("wrong id: ") + text); }
};

DownloadScene::DownloadScene()
    : job(new ProjectDownload(&platform.communicator, ID))
{
    QObject::connect(job, &ProjectDownload::totalDownloadProgressChanged, job,
                     [this](int id, int completed, int total, int progress, const QStringList &files) {
                         note(id, QStringLiteral("total %1/%2 %3% [%4]")
                                      .arg(QString::number(completed), QString::number(total),
                                           QString::number(progress), files.join(QStringLiteral(", "))));
                     });
    QObject::connect(job, &ProjectDownload::fileDownloadProgressChanged, job,
                     [this](int id, const QString &file, int progress) {
                         note(id, QStringLiteral("file %1 %2%").arg(file, QString::number(progress)));
                     });
    QObject::connect(job, &ProjectDownload::downloadCompleted, job, [this](int id) { note(id, COMPLETED); });
    QObject::connect(job, &ProjectDownload::errorOccurred, job, [this](int id, Error error) {
        note(id, QStringLiteral("error ") + QString::number(int(error)));
    });
}

void DownloadScene::offer(const QByteArray &key, const QByteArray &content)
{
    listed.append({key, content.size()});
    list(listed);
    platform.serve(key, ScriptedAnswer::ok(content));
}

void DownloadScene::offerHeld(const QByteArray &key, const QByteArray &content, int bytes)
{
    offer(key, content);
    ScriptedAnswer answer = ScriptedAnswer::ok(content);
    platform.serve(key, bytes == 0 ? answer.pausedBeforeHead() : answer.pausedAt(bytes));
}

void DownloadScene::write(const QString &relativePath, const QByteArray &content) const
{
    const QString absolutePath = path() + QLatin1Char('/') + relativePath;
    QVERIFY(QDir().mkpath(QFileInfo(absolutePath).absolutePath()));
    QFile file(absolutePath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

void DownloadScene::start(int maxDownloads)
{
    QVERIFY(job->init(path(), QStringLiteral("project-id"), QStringLiteral("bucket"), maxDownloads));
    job->start();
    listing = job->findChild<ListFilesFromLocationsRequestHandle *>();
}

Files DownloadScene::filesOnDisk() const
{
    Files files;
    QDirIterator walk(path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        QFile file(walk.next());
        if (file.open(QIODevice::ReadOnly))
            files.insert(QDir(path()).relativeFilePath(file.fileName()), file.readAll());
    }
    return files;
}

bool DownloadScene::completes(int times) const
{
    return waitUntil([&] { return journal.count(COMPLETED) >= times; }) && journal.count(COMPLETED) == times;
}

bool DownloadScene::receives(const QByteArray &key, int count) const
{
    return waitUntil([&] { return platform.fileRequests(key) >= count; }) && platform.fileRequests(key) == count;
}

QStringList DownloadScene::results() const
{
    QStringList results;
    for (const QString &line : journal) {
        if (!line.startsWith(QStringLiteral("total ")) && !line.startsWith(QStringLiteral("file ")))
            results.append(line);
    }
    return results;
}

} // namespace

class tst_ProjectDownload : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The start
    void initMakesTheFolder();
    void folderThatCannotBeMadeIsReported();
    void folderIsResolvedOnce();
    void startAsksForTheWholeBucket();
    void emptyListingEndsAtOnce();
    void failedListingIsReportedFirst_data();
    void failedListingIsReportedFirst();
    void listingThatIsTooShortIsLogged_data();
    void listingThatIsTooShortIsLogged();

    // What is fetched
    void wholeBucketArrives();
    void oddKeysArrive();
    void fileIsAskedForByItsKey();
    void listingDecidesWhatIsFetched();
    void unknownKindStaysInTheTotal();
    void webCopiesOfPicturesGoToTheirFolder();
    void fileThatIsThereIsKept();
    void originalWinsAgainstItsWebCopy();
    void hostileKeysAreRefused();
    void hostileLinkIsRefused();
    void abortAtARefusedKeySendsNothing();

    // The order of reports
    void fileIsCountedWhileItIsListed();
    void thirdFileStartsWhenFirstEnds();
    void fewFilesCompleteBeforeTheyArrive();
    void noRoomForDownloadsStartsNothing();
    void progressReachesItsEndExactly();

    // Files that fail
    void failedFileIsNotCountedAndOthersGoOn_data();
    void failedFileIsNotCountedAndOthersGoOn();
    void textOfARefusalIsNotWritten();
    void cutOffFileIsFetchedAgain_data();
    void cutOffFileIsFetchedAgain();
    void fileThatStaysCutOffFails();
    void takenPlaceIsReported_data();
    void takenPlaceIsReported();
    void allPlacesTakenStillEnd();
    void failedWriteGivesTheFileUpOnce_data();
    void failedWriteGivesTheFileUpOnce();
    void fileThatCannotBeWrittenIsNoLongerFetched();
    void errorSlotsTreatAnAbortDifferently();

    // Pause, resume, abort
    void pauseTakesTheFilesBack();
    void everyOrderOfPauseAndResumeIsHarmless_data();
    void everyOrderOfPauseAndResumeIsHarmless();
    void listingInAPauseIsKept();
    void resumeBeforeTheListingSendsNothing();
    void pauseInsideAReportIsSafe();
    void pauseAtTheEndOfAFileDoesNotFetchItAgain_data();
    void pauseAtTheEndOfAFileDoesNotFetchItAgain();
    void pauseAtAFailedWriteDoesNotFetchTheFileAgain();
    void abortRemovesTheFolder();
    void abortBeforeTheListingIsFinal();
    void nothingStirsAnAbortedJob_data();
    void nothingStirsAnAbortedJob();
    void abortInsideAReportIsSafe_data();
    void abortInsideAReportIsSafe();
    void folderThatCannotBeRemovedIsLogged();
    void deletionInFlightIsSilent();
    void retiringJobLetsItsFilesArrive();
};

// The start

void tst_ProjectDownload::initMakesTheFolder()
{
    DownloadScene scene;
    QVERIFY(scene.job->init(scene.path(), QStringLiteral("id"), QStringLiteral("bucket"), 1));
    QVERIFY(QFileInfo(scene.path()).isDir());
    QVERIFY(scene.job->init(scene.path(), QStringLiteral("id"), QStringLiteral("bucket"), 1));
    QCOMPARE(scene.journal, QStringList());
    QCOMPARE(scene.platform.server.requestCount(), 0);
}

void tst_ProjectDownload::folderThatCannotBeMadeIsReported()
{
    DownloadScene scene;
    scene.write(fileName("taken"), "abc");
    const QString below = scene.path() + QStringLiteral("/taken/down");
    QVERIFY(!scene.job->init(below, QStringLiteral("id"), QStringLiteral("bucket-1"), 1));
    QCOMPARE(scene.journal, QStringList{QStringLiteral("error 8")});
    QCOMPARE(scene.log.messages(),
             QStringList{QStringLiteral("Couldn't create download path: \"") + below + QStringLiteral("\"\nFor bucket: bucket-1")});
    QCOMPARE(scene.log.entries().first().level, 1);
    QCOMPARE(scene.log.entries().first().category, QStringLiteral("KorvoWeb"));
    QCOMPARE(scene.platform.server.requestCount(), 0);
}

void tst_ProjectDownload::folderIsResolvedOnce()
{
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.offerHeld("b.txt", "abc");
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(scene.folder.path()));
    QVERIFY(scene.job->init(QStringLiteral("down/load"), QString(), QStringLiteral("bucket"), 1));
    QVERIFY(QDir::setCurrent(before));
    scene.job->start();
    QVERIFY(scene.receives("b.txt"));
    QCOMPARE(scene.filesOnDisk().value(fileName("a.txt")), QByteArray("abc"));
    scene.job->abort();
    QVERIFY(!QFileInfo::exists(scene.path()));
    QVERIFY(QFileInfo(scene.folder.path()).isDir());
}

void tst_ProjectDownload::startAsksForTheWholeBucket()
{
    DownloadScene scene;
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.platform.steps(), QStringList{QStringLiteral("bucket/listoffilesfromlocations")});
    const RecordedRequest request = scene.platform.server.lastRequest();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(textOf(request.body, "BucketName"), QByteArray("bucket"));
    QCOMPARE(textOf(request.body, "Delimiter"), QByteArray(""));
    QVERIFY(!request.body.contains("d2p1:string"));
}

void tst_ProjectDownload::emptyListingEndsAtOnce()
{
    DownloadScene scene;
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal, (QStringList{QStringLiteral("total 0/0 100% []"), COMPLETED}));
    QCOMPARE(scene.log.messages(), QStringList());
}

void tst_ProjectDownload::failedListingIsReportedFirst_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("sends");
    QTest::newRow("token refused") << 401 << 3 << 1;
    QTest::newRow("not found") << 404 << 14 << 1;
    QTest::newRow("server failed") << 500 << 2 << 6;
    QTest::newRow("not available") << 503 << 14 << 6;
}

void tst_ProjectDownload::failedListingIsReportedFirst()
{
    QFETCH(int, status);
    QFETCH(int, error);
    DownloadScene scene;
    scene.platform.server.always(Route::LISTING, ScriptedAnswer(status, "<Error/>"));
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, (QStringList{QStringLiteral("error %1").arg(error), QStringLiteral("total 0/0 100% []"), COMPLETED}));
    QTEST(scene.platform.server.requestCount(), "sends");
}

void tst_ProjectDownload::listingThatIsTooShortIsLogged_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("messages");
    QTest::newRow("one less") << 1 << QStringList();
    QTest::newRow("all") << 2 << QStringList();
    QTest::newRow("one more") << 3 << QStringList{QStringLiteral("The list of remote files is shorter than the server says.")};
}

void tst_ProjectDownload::listingThatIsTooShortIsLogged()
{
    QFETCH(int, count);
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.offer("b.txt", "abc");
    scene.platform.server.always(Route::LISTING, ScriptedAnswer::ok(listingOf(scene.listed, count)));
    scene.start();
    QVERIFY(scene.completes());
    QTEST(scene.log.messages(), "messages");
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 2/2 100% ")));
}

// What is fetched

void tst_ProjectDownload::wholeBucketArrives()
{
    const Files files{{fileName("project.xml"), "<project/>"},
                      {fileName("data.db3"), patternOf(3000000, 1)},
                      {fileName("Picture/Sec/a.jpg"), patternOf(300000, 2)},
                      {fileName("Picture/Nod/a.jpg"), patternOf(300001, 3)},
                      {fileName("Video/Sec/film.mp4"), patternOf(6000000, 4)},
                      {fileName("deep/er/est/note.txt"), "x"}};
    DownloadScene scene;
    for (auto file = files.cbegin(); file != files.cend(); ++file)
        scene.offer(file.key().toUtf8(), file.value());
    scene.start(3);
    QVERIFY(waitUntil([&] { return scene.totals().value(scene.totals().size() - 1).startsWith(QStringLiteral("total 6/6 ")); }));
    QVERIFY(scene.becomesQuiet());
    QVERIFY(scene.filesOnDisk() == files);
    QCOMPARE(scene.filesOnDisk().keys(), files.keys());
    QCOMPARE(scene.results().count(COMPLETED), scene.results().size());
    QCOMPARE(scene.log.messages(), QStringList());
}

void tst_ProjectDownload::oddKeysArrive()
{
    const QMap<QByteArray, QString> keys{{"/led.txt", fileName("led.txt")},
                                         {"x//y.txt", fileName("x/y.txt")},
                                         {"Straße Köln/a b.pdf", fileName("Straße Köln/a b.pdf")},
                                         {"100% #1 what?.txt", fileName("100% #1 what?.txt")},
                                         {"a+b=c;d,e@f!g$h'i(j)k.txt", fileName("a+b=c;d,e@f!g$h'i(j)k.txt")},
                                         {"%2e%2e%2fa.txt", fileName("%2e%2e%2fa.txt")},
                                         {"..a/b..", fileName("..a/b..")},
                                         {"x/website.txt", fileName("x/site.txt")},
                                         {QByteArray(200, 'n') + ".txt", QString(200, QLatin1Char('n')) + fileName(".txt")}};
    DownloadScene scene;
    Files expected;
    for (auto key = keys.cbegin(); key != keys.cend(); ++key) {
        scene.offer(key.key(), key.key() + " content");
        expected.insert(key.value(), key.key() + " content");
    }
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.results().count(COMPLETED), scene.results().size());
    QCOMPARE(scene.filesOnDisk(), expected);
}

void tst_ProjectDownload::fileIsAskedForByItsKey()
{
    DownloadScene scene;
    scene.offer("Picture/Sec/web/a b.jpg", "abc");
    scene.start();
    QVERIFY(scene.completes());
    const RecordedRequest request = scene.platform.server.lastRequest();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.url(), QByteArray("https://service.korvo.example/korvoservice/webdav/bucket/Picture/Sec/web/a%20b.jpg"
                                       "?download=true"));
    QCOMPARE(request.header("Accept-Encoding"), QByteArray("identity"));
}

void tst_ProjectDownload::listingDecidesWhatIsFetched()
{
    DownloadScene scene;
    scene.list({{"folder", 0, "0"},
                {"folder with size", 10, "0"},
                {"empty.txt", 0},
                {"x/video/sec/web/a.mp4", 10},
                {"a.txt", 3}});
    scene.platform.serve("a.txt", ScriptedAnswer::ok("abc"));
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.platform.steps(), (QStringList{QStringLiteral("bucket/listoffilesfromlocations"),
                                                  QStringLiteral("bucket/a.txt")}));
    QCOMPARE(scene.filesOnDisk(), (Files{{fileName("a.txt"), "abc"}}));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/1 100% ")));
}

void tst_ProjectDownload::unknownKindStaysInTheTotal()
{
    DownloadScene scene;
    scene.list({{"strange", 10, "2"}, {"a.txt", 3}});
    scene.platform.serve("a.txt", ScriptedAnswer::ok("abc"));
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.platform.server.requestCount(), 2);
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/2 100% ")));
    QCOMPARE(scene.log.messages(), QStringList{QStringLiteral("Remote entry is neither a file nor a folder: strange")});
}

void tst_ProjectDownload::webCopiesOfPicturesGoToTheirFolder()
{
    DownloadScene scene;
    scene.offer("picture/sec/web/a.jpg", "a");
    scene.offer("picture/nod/web/b.jpg", "b");
    scene.offer("x/Picture/Sec/Web/c.jpg", "c");
    scene.offer("video/nod/web/d.mp4", "d");
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.filesOnDisk(), (Files{{fileName("picture/sec/a.jpg"), "a"},
                                         {fileName("picture/nod/b.jpg"), "b"},
                                         {fileName("x/Picture/Sec/Web/c.jpg"), "c"},
                                         {fileName("video/nod/d.mp4"), "d"}}));
}

void tst_ProjectDownload::fileThatIsThereIsKept()
{
    DownloadScene scene;
    scene.write(fileName("same.txt"), "old");
    scene.write(fileName("other.txt"), "older");
    scene.write(fileName("picture/sec/copy.jpg"), "old");
    scene.offer("same.txt", "new");
    scene.offer("other.txt", "new");
    scene.offer("picture/sec/web/copy.jpg", "new");
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.filesOnDisk(), (Files{{fileName("same.txt"), "old"},
                                         {fileName("other.txt"), "new"},
                                         {fileName("picture/sec/copy.jpg"), "old"}}));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/1 100% ")));
    QCOMPARE(scene.platform.server.requestCount(), 2);
}

void tst_ProjectDownload::originalWinsAgainstItsWebCopy()
{
    DownloadScene scene;
    scene.offer("picture/sec/web/a.jpg", "copy");
    scene.offer("picture/sec/a.jpg", "original");
    scene.offer("picture/nod/b.jpg", "original");
    scene.offer("picture/nod/web/b.jpg", "copy");
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.filesOnDisk(), (Files{{fileName("picture/sec/a.jpg"), "original"},
                                         {fileName("picture/nod/b.jpg"), "original"}}));
    QCOMPARE(scene.totals().last().left(15), QStringLiteral("total 2/2 100% "));
    const QString text = QStringLiteral("Skipped a remote file, another one has the same local name: ");
    QCOMPARE(scene.log.messages(), (QStringList{text + fileName("picture/sec/web/a.jpg"), text + fileName("picture/nod/web/b.jpg")}));
}

void tst_ProjectDownload::hostileKeysAreRefused()
{
    DownloadScene scene;
    const QList<QByteArray> hostile{"../outside.txt", "a/../../outside.txt", "x/web/../../../outside.txt", "..", ""};
    for (const QByteArray &key : hostile)
        scene.offer(key, "evil");
    scene.offer("good.txt", "good");
    scene.start(2);
    QVERIFY(scene.completes(2));
    QCOMPARE(scene.journal.mid(0, hostile.size()), QVector<QString>(hostile.size(), QStringLiteral("error 8")).toList());
    QCOMPARE(scene.results().size(), hostile.size() + 2);
    QCOMPARE(scene.filesOnDisk(), (Files{{fileName("good.txt"), "good"}}));
    QCOMPARE(scene.platform.server.requestCount(), 2);
    QCOMPARE(QDir(scene.folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{fileName("down")});
    QCOMPARE(scene.totals().last().left(15), QStringLiteral("total 1/1 100% "));
    QCOMPARE(scene.log.count(), hostile.size());
    QCOMPARE(scene.log.messages().first(),
             QStringLiteral("Refused a remote file, its name leads out of the download path: ../outside.txt"));
}

void tst_ProjectDownload::hostileLinkIsRefused()
{
    DownloadScene scene;
    QVERIFY(QDir().mkpath(scene.path()));
    QVERIFY(QFile::link(scene.folder.path(), scene.path() + QStringLiteral("/link")));
    scene.offer("link/outside.txt", "evil");
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, (QStringList{QStringLiteral("error 8"), QStringLiteral("total 0/0 100% []"), COMPLETED}));
    QVERIFY(!QFile::exists(scene.folder.filePath(QStringLiteral("outside.txt"))));
}

void tst_ProjectDownload::abortAtARefusedKeySendsNothing()
{
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.offer("../outside.txt", "evil");
    scene.offer("../outside2.txt", "evil");
    connect(scene.job, &ProjectDownload::errorOccurred, scene.job, &ProjectDownload::abort);
    scene.start();
    QVERIFY(scene.isListed());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal, QStringList{QStringLiteral("error 8")});
    QCOMPARE(scene.platform.server.requestCount(), 1);
    QVERIFY(!QFileInfo::exists(scene.path()));
}

// The order of reports

void tst_ProjectDownload::fileIsCountedWhileItIsListed()
{
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.offer("b.txt", "abcdefghi");
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, (QStringList{QStringLiteral("file a.txt 100%"), QStringLiteral("total 0/2 25% [a.txt]"),
                                         QStringLiteral("total 1/2 25% [a.txt]"), QStringLiteral("file b.txt 100%"),
                                         QStringLiteral("total 1/2 100% [b.txt]"), QStringLiteral("total 2/2 100% [b.txt]"),
                                         COMPLETED}));
}

void tst_ProjectDownload::thirdFileStartsWhenFirstEnds()
{
    DownloadScene scene;
    for (const char *key : {"a.txt", "b.txt", "c.txt"})
        scene.offerHeld(key, "abc");
    const QByteArray folder = Route::FILES;
    scene.start(2);
    QVERIFY(scene.receives("a.txt"));
    QVERIFY(scene.receives("b.txt"));
    QCOMPARE(scene.platform.fileRequests("c.txt"), 0);
    scene.platform.server.release(folder + "a.txt");
    QVERIFY(scene.receives("c.txt"));
    QCOMPARE(scene.results(), QStringList());
    scene.platform.server.release(folder + "b.txt");
    QVERIFY(scene.completes(1));
    QCOMPARE(scene.journal.mid(scene.journal.size() - 3),
             (QStringList{QStringLiteral("total 2/3 66% [b.txt, c.txt]"), QStringLiteral("total 2/3 66% [c.txt]"), COMPLETED}));
    scene.platform.server.release();
    QVERIFY(scene.completes(2));
    QCOMPARE(scene.journal.mid(scene.journal.size() - 2), (QStringList{QStringLiteral("total 3/3 100% [c.txt]"), COMPLETED}));
    QCOMPARE(scene.filesOnDisk().size(), 3);
}

void tst_ProjectDownload::fewFilesCompleteBeforeTheyArrive()
{
    DownloadScene scene;
    scene.offerHeld("a.txt", "abc");
    scene.start(5);
    QVERIFY(scene.completes(1));
    QCOMPARE(scene.journal, (QStringList{QStringLiteral("total 0/1 0% [a.txt]"), COMPLETED}));
    QVERIFY(scene.receives("a.txt"));
    scene.platform.server.release();
    QVERIFY(scene.completes(2));
    QCOMPARE(scene.filesOnDisk(), (Files{{fileName("a.txt"), "abc"}}));
}

void tst_ProjectDownload::noRoomForDownloadsStartsNothing()
{
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.start(0);
    QVERIFY(scene.isListed());
    scene.job->resume();
    QVERIFY(scene.isQuiet());
    QCOMPARE(scene.journal, QStringList());
    QCOMPARE(scene.platform.server.requestCount(), 1);
}

void tst_ProjectDownload::progressReachesItsEndExactly()
{
    DownloadScene scene;
    scene.offer("big.db3", patternOf(2000000));
    scene.offer("small.txt", patternOf(1234));
    scene.start(2);
    QVERIFY(waitUntil([&] { return scene.journal.contains(QStringLiteral("total 2/2 100% [big.db3]"))
                                || scene.journal.contains(QStringLiteral("total 2/2 100% [small.txt]")); }));
    QCOMPARE(scene.journal.filter(QStringLiteral("file big.db3 ")).last(), QStringLiteral("file big.db3 100%"));
    QCOMPARE(scene.journal.filter(QStringLiteral("file small.txt ")).last(), QStringLiteral("file small.txt 100%"));
    QVERIFY(scene.journal.filter(QStringLiteral("file big.db3 ")).size() > 2);
}

// Files that fail

void tst_ProjectDownload::failedFileIsNotCountedAndOthersGoOn_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("sends");
    QTest::newRow("token refused") << 401 << 3 << 1;
    QTest::newRow("not found") << 404 << 14 << 1;
    QTest::newRow("not allowed") << 403 << 14 << 6;
    QTest::newRow("server failed") << 500 << 2 << 6;
    QTest::newRow("not available") << 503 << 14 << 6;
    QTest::newRow("led elsewhere") << 302 << 14 << 6;
    QTest::newRow("not modified") << 304 << 14 << 6;
}

void tst_ProjectDownload::failedFileIsNotCountedAndOthersGoOn()
{
    QFETCH(int, status);
    QFETCH(int, error);
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.offer("b.txt", "abc");
    scene.offer("c.txt", "abc");
    scene.platform.serve("b.txt", ScriptedAnswer(status).withHeader("Location", "https://service.korvo.example/elsewhere"));
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    const QString errorLine = QStringLiteral("error %1").arg(error);
    QCOMPARE(scene.results(), (QStringList{errorLine, COMPLETED}));
    QCOMPARE(scene.journal.at(scene.journal.indexOf(errorLine) + 1), QStringLiteral("total 1/3 33% [b.txt]"));
    QCOMPARE(scene.totals().last(), QStringLiteral("total 2/3 66% [c.txt]"));
    QTEST(scene.platform.fileRequests("b.txt"), "sends");
    QCOMPARE(scene.filesOnDisk().value(fileName("b.txt")), QByteArray());
    QCOMPARE(scene.platform.server.requestCount("/elsewhere"), 0);
}

void tst_ProjectDownload::textOfARefusalIsNotWritten()
{
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.platform.serve("a.txt", ScriptedAnswer(404, "<html>not here</html>"));
    scene.offer("b.txt", "abc");
    scene.platform.serveOnce("b.txt", ScriptedAnswer(503, "<html>not now, try again later, says the server</html>"));
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.filesOnDisk(), (Files{{fileName("a.txt"), QByteArray()}, {fileName("b.txt"), "abc"}}));
    QCOMPARE(scene.journal.filter(QStringLiteral("file a.txt")), QStringList());
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/2 ")));
}

void tst_ProjectDownload::cutOffFileIsFetchedAgain_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    const QByteArray content = patternOf(300000, 5);
    QTest::newRow("closed behind the head") << ScriptedAnswer::ok(content).closedAt(0);
    QTest::newRow("closed inside the body") << ScriptedAnswer::ok(content).closedAt(200000);
    QTest::newRow("closed before the last byte") << ScriptedAnswer::ok(content).closedAt(299999);
    QTest::newRow("too short, without a length") << ScriptedAnswer::ok(content.left(200000)).withoutLength();
    QTest::newRow("other content, then cut off") << ScriptedAnswer::ok(patternOf(300000, 6)).closedAt(250000);
}

void tst_ProjectDownload::cutOffFileIsFetchedAgain()
{
    QFETCH(ScriptedAnswer, answer);
    DownloadScene scene;
    const QByteArray content = patternOf(300000, 5);
    scene.offer("a.db3", content);
    scene.platform.serveOnce("a.db3", answer);
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.filesOnDisk() == (Files{{fileName("a.db3"), content}}));
    QCOMPARE(scene.results(), QStringList{COMPLETED});
    QCOMPARE(scene.totals().last(), QStringLiteral("total 1/1 100% [a.db3]"));
    QVERIFY(scene.journal.contains(QStringLiteral("file a.db3 0%")));
    QVERIFY(scene.journal.contains(QStringLiteral("total 0/1 0% [a.db3]")));
}

void tst_ProjectDownload::fileThatStaysCutOffFails()
{
    DownloadScene scene;
    const QByteArray content = patternOf(300000);
    scene.offer("a.db3", content);
    scene.offer("b.txt", "abc");
    scene.platform.serve("a.db3", ScriptedAnswer::ok(content).closedAt(100000));
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error 14"), COMPLETED}));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/2 ")));
    QVERIFY(scene.filesOnDisk().value(fileName("a.db3")).size() < content.size());
    QCOMPARE(scene.filesOnDisk().value(fileName("b.txt")), QByteArray("abc"));
}

void tst_ProjectDownload::takenPlaceIsReported_data()
{
    QTest::addColumn<QString>("taken"); // a file here, or a folder if it ends with a separator
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<int>("error");
    QTest::newRow("a folder where the file goes") << "x/a.txt/" << QByteArray("x/a.txt") << 6;
    QTest::newRow("a file where a folder goes") << "x" << QByteArray("x/a.txt") << 8;
    QTest::newRow("a file where a folder of folders goes") << "x" << QByteArray("x/y/z/a.txt") << 8;
    QTest::newRow("name that is too long") << "other" << QByteArray(300, 'n') << 6;
    QTest::newRow("folder whose name is too long") << "other" << QByteArray(300, 'n') + "/a.txt" << 8;
}

void tst_ProjectDownload::takenPlaceIsReported()
{
    QFETCH(QString, taken);
    QFETCH(QByteArray, key);
    QFETCH(int, error);
    DownloadScene scene;
    if (taken.endsWith(QLatin1Char('/')))
        QVERIFY(QDir().mkpath(scene.path() + QLatin1Char('/') + taken));
    else
        scene.write(taken, "in the way");
    scene.offer(key, "abc");
    scene.offer("good.txt", "good");
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error %1").arg(error), COMPLETED}));
    QCOMPARE(scene.platform.fileRequests(key), 0);
    QCOMPARE(scene.filesOnDisk().value(fileName("good.txt")), QByteArray("good"));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 1/2 ")));
    QCOMPARE(scene.log.count(), 1);
}

void tst_ProjectDownload::allPlacesTakenStillEnd()
{
    DownloadScene scene;
    scene.write(fileName("x"), "in the way");
    scene.offer("x/a.txt", "abc");
    scene.offer("x/b.txt", "abc");
    scene.start();
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, (QStringList{QStringLiteral("error 8"), QStringLiteral("error 8"),
                                         QStringLiteral("total 0/2 0% []"), COMPLETED}));
}

void tst_ProjectDownload::failedWriteGivesTheFileUpOnce_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("limit");
    QTest::newRow("in the middle") << 1000000 << 300000;
    QTest::newRow("in a later chunk of the last buffer") << 200000 << 190000;
    QTest::newRow("at the flush") << 9000 << 4096;
}

void tst_ProjectDownload::failedWriteGivesTheFileUpOnce()
{
    QFETCH(int, bytes);
    QFETCH(int, limit);
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.offer("big.db3", patternOf(bytes));
    scene.offer("c.txt", "abc");
    const FileSizeLimit fullDisk{quint64(limit)};
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error 10"), COMPLETED}));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 2/3 ")));
    QCOMPARE(scene.filesOnDisk().value(fileName("c.txt")), QByteArray("abc"));
    QCOMPARE(scene.log.messages(), QStringList{QStringLiteral("Error while writing to file: \"") + scene.path()
                                               + QStringLiteral("/big.db3\" ")});
    QCOMPARE(scene.platform.fileRequests("big.db3"), 1);
}

// Whoever hears of the end may take its time; until then nothing more comes, and nothing more is said of the file.
void tst_ProjectDownload::fileThatCannotBeWrittenIsNoLongerFetched()
{
    DownloadScene scene;
    scene.offerHeld("big.db3", patternOf(1000000), 300000);
    bool wasInFlight = false;
    bool isInFlight = true;
    connect(scene.job, &ProjectDownload::errorOccurred, scene.job, [&] { wasInFlight = !scene.isQuiet(); });
    connect(scene.job, &ProjectDownload::downloadCompleted, scene.job, [&] { isInFlight = !scene.isQuiet(); });
    const FileSizeLimit fullDisk{100000};
    scene.start();
    QVERIFY(scene.completes());
    QVERIFY(wasInFlight);
    QVERIFY(!isInFlight);
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error 10"), COMPLETED}));
}

void tst_ProjectDownload::errorSlotsTreatAnAbortDifferently()
{
    DownloadScene scene;
    DownloadFileResponse failed;
    failed.setOutcome(QNetworkReply::InternalServerError);
    scene.job->handleResponse(DownloadFileResponse());
    QCOMPARE(scene.journal, QStringList());
    scene.job->handleResponse(failed);
    scene.job->handleError(Error::FileWrite);
    QCOMPARE(scene.journal, (QStringList{QStringLiteral("error 2"), QStringLiteral("error 10")}));
    QVERIFY(scene.job->init(scene.path(), QString(), QStringLiteral("bucket"), 1));
    scene.job->abort();
    scene.job->handleResponse(failed);
    scene.job->handleError(Error::FileWrite);
    QCOMPARE(scene.journal.mid(2), QStringList{QStringLiteral("error 10")});
}

// Pause, resume, abort

void tst_ProjectDownload::pauseTakesTheFilesBack()
{
    DownloadScene scene;
    const QByteArray first = patternOf(500000, 1);
    const QByteArray second = patternOf(400000, 2);
    scene.offerHeld("a.db3", first, 300000);
    scene.offerHeld("b.db3", second, 200000);
    scene.offer("c.txt", patternOf(100000, 3));
    scene.start(2);
    QVERIFY(scene.receives("a.db3"));
    QVERIFY(scene.receives("b.db3"));
    QVERIFY(waitUntil([&] { return scene.totals().value(scene.totals().size() - 1) == QStringLiteral("total 0/3 50% [a.db3, b.db3]"); }));
    const int reported = scene.journal.size();
    scene.job->pause();
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal.size(), reported); // a pause is no news
    scene.platform.serve("a.db3", ScriptedAnswer::ok(first));
    scene.platform.serve("b.db3", ScriptedAnswer::ok(second));
    scene.job->resume();
    QVERIFY(scene.completes(2));
    QVERIFY(scene.becomesQuiet());
    QVERIFY(scene.filesOnDisk() == (Files{{fileName("a.db3"), first}, {fileName("b.db3"), second},
                                          {fileName("c.txt"), patternOf(100000, 3)}}));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 3/3 100% ")));
    QCOMPARE(scene.platform.fileRequests("a.db3"), 2);
    QCOMPARE(scene.platform.fileRequests("b.db3"), 2);
    QCOMPARE(scene.platform.fileRequests("c.txt"), 1);
    QStringList behindThePause = scene.platform.steps().mid(3, 2);
    behindThePause.sort();
    QCOMPARE(behindThePause, (QStringList{QStringLiteral("bucket/a.db3"), QStringLiteral("bucket/b.db3")}));
}

void tst_ProjectDownload::everyOrderOfPauseAndResumeIsHarmless_data()
{
    QTest::addColumn<QString>("operations");
    for (const char *operations : {"r", "rr", "pr", "ppr", "prr", "prpr", "rpr", "prprpr", "rrpprrppr"})
        QTest::newRow(operations) << QString::fromLatin1(operations);
}

namespace {

/// Does to the job what each letter says: p pause, r resume, a abort.
void perform(ProjectDownload *job, const QString &operations)
{
    for (const QChar operation : operations) {
        switch (operation.unicode()) {
        case 'p': job->pause(); break;
        case 'r': job->resume(); break;
        case 'a': job->abort(); break;
        default: qFatal("unknown operation");
        }
    }
}

} // namespace

void tst_ProjectDownload::everyOrderOfPauseAndResumeIsHarmless()
{
    QFETCH(QString, operations);
    DownloadScene scene;
    const QByteArray content = patternOf(300000);
    scene.offer("a.txt", "abc");
    scene.offerHeld("b.db3", content, 150000);
    scene.offer("c.txt", "abc");
    scene.start();
    QVERIFY(scene.receives("b.db3"));
    QVERIFY(scene.says(QStringLiteral("file b.db3 50%")));
    perform(scene.job, operations);
    scene.platform.serve("b.db3", ScriptedAnswer::ok(content));
    QVERIFY(waitUntil([&] {
        scene.platform.server.release(); // what was asked for between two pauses is held as well
        return scene.totals().value(scene.totals().size() - 1).startsWith(QStringLiteral("total 3/3 "));
    }));
    QVERIFY(scene.becomesQuiet());
    QVERIFY(scene.filesOnDisk() == (Files{{fileName("a.txt"), "abc"}, {fileName("b.db3"), content}, {fileName("c.txt"), "abc"}}));
    QVERIFY(scene.totals().last().startsWith(QStringLiteral("total 3/3 100% ")));
    QCOMPARE(scene.results(), QStringList{COMPLETED});
}

void tst_ProjectDownload::listingInAPauseIsKept()
{
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.platform.server.always(Route::LISTING, ScriptedAnswer::held(listingOf(scene.listed)));
    scene.start();
    scene.job->pause();
    QVERIFY(waitUntil([&] { return scene.platform.server.requestCount() == 1; }));
    scene.platform.server.release();
    QVERIFY(scene.isListed());
    QVERIFY(scene.isQuiet());
    QCOMPARE(scene.journal, QStringList());
    scene.job->resume();
    QVERIFY(scene.completes());
    QCOMPARE(scene.platform.server.requestCount(Route::LISTING), 1);
    QCOMPARE(scene.filesOnDisk(), (Files{{fileName("a.txt"), "abc"}}));
}

void tst_ProjectDownload::resumeBeforeTheListingSendsNothing()
{
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.platform.server.always(Route::LISTING, ScriptedAnswer::held(listingOf(scene.listed)));
    scene.start();
    QVERIFY(waitUntil([&] { return scene.platform.server.requestCount() == 1; }));
    perform(scene.job, QStringLiteral("rrpprprr"));
    QCOMPARE(scene.journal, QStringList());
    scene.platform.server.release();
    QVERIFY(scene.completes());
    QCOMPARE(scene.platform.server.requestCount(), 2);
    QCOMPARE(scene.results(), QStringList{COMPLETED});
}

void tst_ProjectDownload::pauseInsideAReportIsSafe()
{
    DownloadScene scene;
    const QByteArray content = patternOf(1000000);
    scene.offer("a.db3", content);
    scene.offer("b.txt", "abc");
    int pauses = 0;
    connect(scene.job, &ProjectDownload::fileDownloadProgressChanged, scene.job, [&] {
        if (++pauses <= 3)
            scene.job->pause();
    });
    scene.start(2);
    for (int i = 0; i < 4; ++i) {
        QVERIFY(waitUntil([&] { return scene.isQuiet() && scene.listing.isNull(); }));
        scene.job->resume();
    }
    QVERIFY(waitUntil([&] { return scene.totals().last().startsWith(QStringLiteral("total 2/2 100% ")); }));
    QVERIFY(scene.becomesQuiet());
    QVERIFY(scene.filesOnDisk() == (Files{{fileName("a.db3"), content}, {fileName("b.txt"), "abc"}}));
}

void tst_ProjectDownload::pauseAtTheEndOfAFileDoesNotFetchItAgain_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("report"); // beginning of the line that is answered with a pause
    QTest::addColumn<QString>("end");
    QTest::newRow("arrived") << 200 << "total 1/2" << "total 2/2 100% ";
    QTest::newRow("failed, its error") << 404 << "error 14" << "total 1/2 ";
    QTest::newRow("failed, its total") << 404 << "total 0/2" << "total 1/2 ";
}

void tst_ProjectDownload::pauseAtTheEndOfAFileDoesNotFetchItAgain()
{
    QFETCH(int, status);
    QFETCH(QString, report);
    QFETCH(QString, end);
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.offer("b.txt", "abc");
    scene.platform.serve("a.txt", ScriptedAnswer(status, "abc"));
    bool isPaused = false;
    const auto pauseAtReport = [&] {
        if (isPaused || !scene.journal.last().startsWith(report))
            return;
        isPaused = true;
        scene.job->pause();
    };
    connect(scene.job, &ProjectDownload::totalDownloadProgressChanged, scene.job, pauseAtReport);
    connect(scene.job, &ProjectDownload::errorOccurred, scene.job, pauseAtReport);
    scene.start();
    QVERIFY(waitUntil([&] { return isPaused && scene.isQuiet(); }));
    QCOMPARE(scene.platform.fileRequests("b.txt"), 0);
    scene.job->resume();
    // On a slow machine no total has been reported by the first look.
    QVERIFY(waitUntil([&] { return !scene.totals().isEmpty() && scene.totals().last().startsWith(end); }));
    QVERIFY(scene.completes());
    QCOMPARE(scene.platform.fileRequests("a.txt"), 1);
    QCOMPARE(scene.platform.fileRequests("b.txt"), 1);
}

void tst_ProjectDownload::pauseAtAFailedWriteDoesNotFetchTheFileAgain()
{
    DownloadScene scene;
    scene.offer("a.db3", patternOf(1000000));
    scene.offer("b.txt", "abc");
    connect(scene.job, &ProjectDownload::errorOccurred, scene.job, &ProjectDownload::pause);
    const FileSizeLimit fullDisk{300000};
    scene.start();
    QVERIFY(scene.says(QStringLiteral("error 10")));
    QVERIFY(scene.becomesQuiet());
    scene.job->resume();
    QVERIFY(scene.completes());
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.results(), (QStringList{QStringLiteral("error 10"), COMPLETED}));
    QCOMPARE(scene.platform.fileRequests("a.db3"), 1);
    QCOMPARE(scene.platform.fileRequests("b.txt"), 1);
}

void tst_ProjectDownload::abortRemovesTheFolder()
{
    DownloadScene scene;
    scene.write(fileName("of the user/note.txt"), "was there before");
    scene.offer("a.txt", "abc");
    scene.offerHeld("x/b.db3", patternOf(300000), 150000);
    scene.offer("c.txt", "abc");
    scene.start();
    QVERIFY(scene.receives("x/b.db3"));
    QVERIFY(scene.says(QStringLiteral("file x/b.db3 50%")));
    const int reported = scene.journal.size();
    scene.job->abort();
    QVERIFY(!QFileInfo::exists(scene.path()));
    scene.platform.server.release();
    QVERIFY(scene.becomesQuiet());
    QVERIFY(!QFileInfo::exists(scene.path()));
    QVERIFY(QFileInfo(scene.folder.filePath(QStringLiteral("down"))).isDir());
    QCOMPARE(scene.journal.size(), reported);
    QCOMPARE(scene.platform.fileRequests("c.txt"), 0);
    QCOMPARE(scene.log.messages(), QStringList());
}

void tst_ProjectDownload::abortBeforeTheListingIsFinal()
{
    DownloadScene scene;
    scene.offer("a.txt", "abc");
    scene.offer("../outside.txt", "evil"); // would be reported
    scene.platform.server.always(Route::LISTING, ScriptedAnswer::held(listingOf(scene.listed)));
    scene.start();
    QVERIFY(waitUntil([&] { return scene.platform.server.requestCount() == 1; }));
    scene.job->abort();
    QVERIFY(!QFileInfo::exists(scene.path()));
    scene.platform.server.release();
    QVERIFY(scene.isListed());
    QVERIFY(scene.isQuiet());
    QCOMPARE(scene.journal, QStringList());
    QCOMPARE(scene.platform.server.requestCount(), 1);
    QVERIFY(!QFileInfo::exists(scene.path()));
}

void tst_ProjectDownload::nothingStirsAnAbortedJob_data()
{
    QTest::addColumn<QString>("operations");
    for (const char *operations : {"aa", "ar", "apr", "par", "parpa", "aprrpa"})
        QTest::newRow(operations) << QString::fromLatin1(operations);
}

void tst_ProjectDownload::nothingStirsAnAbortedJob()
{
    QFETCH(QString, operations);
    DownloadScene scene;
    scene.offerHeld("a.db3", patternOf(300000), 150000);
    scene.offer("b.txt", "abc");
    scene.start();
    QVERIFY(scene.receives("a.db3"));
    const int reported = scene.results().size();
    perform(scene.job, operations);
    scene.platform.server.release();
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.results().size(), reported);
    QCOMPARE(scene.platform.fileRequests("a.db3"), 1);
    QCOMPARE(scene.platform.fileRequests("b.txt"), 0);
    QVERIFY(!QFileInfo::exists(scene.path()));
}

void tst_ProjectDownload::abortInsideAReportIsSafe_data()
{
    QTest::addColumn<QString>("report"); // beginning of the line that is answered with an abort
    QTest::newRow("a chunk") << "file a.db3 ";
    QTest::newRow("a chunk's total") << "total 0/3 ";
    QTest::newRow("the end of a file") << "total 1/3 ";
    QTest::newRow("the end of all") << "completed";
}

void tst_ProjectDownload::abortInsideAReportIsSafe()
{
    QFETCH(QString, report);
    DownloadScene scene;
    for (const char *key : {"a.db3", "b.db3", "c.db3"})
        scene.offer(key, patternOf(200000));
    const auto abortAtReport = [&] {
        if (scene.journal.last().startsWith(report))
            scene.job->abort();
    };
    connect(scene.job, &ProjectDownload::fileDownloadProgressChanged, scene.job, abortAtReport);
    connect(scene.job, &ProjectDownload::totalDownloadProgressChanged, scene.job, abortAtReport);
    connect(scene.job, &ProjectDownload::downloadCompleted, scene.job, abortAtReport);
    scene.start();
    QVERIFY(waitUntil([&] { return !QFileInfo::exists(scene.path()); }));
    QVERIFY(scene.becomesQuiet());
    QVERIFY(!QFileInfo::exists(scene.path()));
    QVERIFY(scene.results().size() == (report == COMPLETED ? 1 : 0));
}

void tst_ProjectDownload::folderThatCannotBeRemovedIsLogged()
{
    // Nothing in there can be removed, whoever tries.
    DownloadScene scene;
    QVERIFY(scene.job->init(QStringLiteral("/proc/self/fdinfo"), QString(), QStringLiteral("bucket"), 1));
    scene.job->abort();
    QCOMPARE(scene.log.messages(),
             QStringList{QStringLiteral("Error while trying to abort download.Couldn't remove download path.")});
    QCOMPARE(scene.log.entries().first().level, 1);
    QCOMPARE(scene.log.entries().first().category, QStringLiteral("KorvoWeb"));
    QCOMPARE(scene.journal, QStringList());
}

void tst_ProjectDownload::deletionInFlightIsSilent()
{
    DownloadScene scene;
    scene.offerHeld("a.db3", patternOf(300000), 150000);
    scene.start();
    QVERIFY(scene.receives("a.db3"));
    const QStringList journal = scene.journal;
    delete scene.job;
    scene.platform.server.release();
    QVERIFY(scene.becomesQuiet());
    QCOMPARE(scene.journal, journal);
    QVERIFY(QFileInfo(scene.path()).isDir()); // only an abort removes it
}

void tst_ProjectDownload::retiringJobLetsItsFilesArrive()
{
    DownloadScene scene;
    const QByteArray content = patternOf(300000);
    scene.offerHeld("a.db3", content, 150000);
    scene.offerHeld("b.db3", content, 150000);
    scene.start(3);
    connect(scene.job, &ProjectDownload::downloadCompleted, scene.job, &ProjectDownload::deleteWhenIdle);
    QVERIFY(scene.completes(1));
    QVERIFY(scene.receives("a.db3"));
    QVERIFY(scene.receives("b.db3"));
    scene.platform.server.release(Route::FILES + "a.db3");
    QVERIFY(waitUntil([&] { return scene.journal.filter(QStringLiteral("total 1/2 ")).size() > 0; }));
    QVERIFY(scene.job);
    scene.platform.server.release();
    QVERIFY(scene.isDeleted());
    QVERIFY(scene.filesOnDisk() == (Files{{fileName("a.db3"), content}, {fileName("b.db3"), content}}));
    QCOMPARE(scene.journal.last(), COMPLETED);
}

QTEST_GUILESS_MAIN(tst_ProjectDownload)

#include "tst_ProjectDownload.moc"
