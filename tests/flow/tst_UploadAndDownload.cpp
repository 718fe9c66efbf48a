#include "flow/Folders.h"
#include "flow/Session.h"
#include "support/LogCapture.h"

#include <QtTest/QtTest>

#include <algorithm>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

constexpr int MIB = 1024 * 1024;

const QString PUT_FILE = QStringLiteral("PUT api/bucket/putfile");
const QString PUT_PART = QStringLiteral("PUT api/multipartupload/upload");

QString numbered(const char *name, int number)
{
    return QLatin1String(name) + QString::number(number);
}

QList<int> intsOf(const QList<SignalEvent> &events, const QByteArray &name)
{
    QList<int> values;
    for (const SignalEvent &event : events) {
        if (event.name == name)
            values.append(event.arguments.last().toInt());
    }
    return values;
}

QSet<int> distinct(const QList<int> &values)
{
    return QSet<int>(values.cbegin(), values.cend());
}

bool isAscending(const QList<int> &values)
{
    return std::is_sorted(values.cbegin(), values.cend());
}

/// Percentages of each file, by name, in order of arrival.
QMap<QString, QList<int>> fileProgress(const QList<SignalEvent> &events, const QByteArray &name)
{
    QMap<QString, QList<int>> progress;
    for (const SignalEvent &event : events) {
        if (event.name == name)
            progress[event.arguments.at(1).toString()].append(event.arguments.at(2).toInt());
    }
    return progress;
}

int mostAtOnce(const QList<SignalEvent> &events, const QByteArray &name)
{
    int most = 0;
    for (const SignalEvent &event : events) {
        if (event.name == name)
            most = qMax(most, event.arguments.at(1).toStringList().size());
    }
    return most;
}

/// Each total report is these four signals in a row.
QString brokenReport(const QList<SignalEvent> &events, const QByteArrayList &report)
{
    for (int i = 0; i < events.size(); ++i) {
        const int place = report.indexOf(events.at(i).name);
        if (place > 0 && (i == 0 || events.at(i - 1).name != report.at(place - 1)))
            return QString::fromLatin1(events.at(i).name) + QStringLiteral(" came alone");
    }
    return {};
}

const QByteArrayList UPLOAD_REPORT { "currentUploadFilesChanged", "uploadTotalProgressChanged",
                                     "filesToUploadTotalChanged", "completedUploadFilesChanged" };
const QByteArrayList DOWNLOAD_REPORT { "currentDownloadFilesChanged", "downloadTotalProgressChanged",
                                       "filesToDownloadTotalChanged", "completedDownloadFilesChanged" };

#ifdef Q_OS_LINUX
/// The most memory this process has held so far, in MiB.
int peakMemory()
{
    for (const QByteArray &line : readFile(QStringLiteral("/proc/self/status")).split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).simplified().split(' ').first().toInt() / 1024;
    }
    return 0;
}
#endif

} // namespace

class tst_UploadAndDownload : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void folderComesBackByteForByte_data();
    void folderComesBackByteForByte();
    void sizesAroundOnePartComeBack_data();
    void sizesAroundOnePartComeBack();
    void partsAreSentByTheSizeOfTheFile();
    void uploadTellsItsWayInOrder();
    void downloadTellsItsWayInOrder();
    void downloadIsWholeWhenCompletedEqualsTotal();
    void secondUploadSendsTheProjectFileOnlyWhenItChanged();
    void backupFilesStayAtHome();
    void secondDownloadKeepsTheFilesThatAreThere();
    void changedFileIsFetchedAgain();
    void videosAreTranscodedUnlessTheyDocument();
    void originalGoesBeforeItsWebCopy_data();
    void originalGoesBeforeItsWebCopy();
    void projectIsListedAfterItsUpload();
    void importToolProjectKeepsItsIdByName();
    void uploadOfNothingFinishesAtOnce();
    void missingFolderFinishesAtOnce();
    void emptyBucketIsDownloadedAtOnce();
    void twoUploadsAtOnceShareOneFlag();
    void twoFacadesDoNotMixTheirParts();
    void uploadAndDownloadAtOnce();
    void pathsMayEndWithASeparator();
    void memoryDoesNotGrowWithTheFile();

private:
    bool upload(const QString &id, const QString &path, int atOnce = 1);
    bool download(const QString &id, const QString &path, int atOnce = 1);
    QMap<QString, QString> remoteHashes(const QString &id);
    QString local(const QString &name) { return folder->filePath(name); }

    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<Session> session;
    QString id; // of a project that no other test uses
    int number = 0;
};

void tst_UploadAndDownload::initTestCase()
{
    QCOMPARE(platform.start(), QString());
}

void tst_UploadAndDownload::init()
{
    log.reset(new LogCapture);
    folder.reset(new QTemporaryDir);
    session.reset(new Session);
    QVERIFY(session->logIn());
    id = numbered("p", ++number);
    QVERIFY(QDir().mkpath(local(QStringLiteral("in"))));
    platform.post(QStringLiteral("transcoding"), QJsonObject { { QStringLiteral("webCopies"), QStringLiteral("none") } });
    platform.startJournal();
}

void tst_UploadAndDownload::cleanup()
{
    platform.clearFaults();
    session.reset();
    folder.reset();
    log.reset();
}

bool tst_UploadAndDownload::upload(const QString &projectId, const QString &path, int atOnce)
{
    const int before = session->signalsSeen().count("uploadFinished");
    session->api().uploadProject(projectId, projectId, path, PROJECT_DATE, atOnce);
    return session->signalsSeen().waitFor("uploadFinished", before + 1, std::chrono::seconds(60));
}

/// A download counts as ended when as many files have come as were to come.
bool tst_UploadAndDownload::download(const QString &projectId, const QString &path, int atOnce)
{
    const unsigned int downloadId = session->api().downloadProject(projectId, projectId, path, atOnce);
    return eventually([&] {
        const QList<SignalEvent> events = session->signalsSeen().ofTransfer("ownload", downloadId);
        const QList<int> completed = intsOf(events, "completedDownloadFilesChanged");
        const QList<int> total = intsOf(events, "filesToDownloadTotalChanged");
        return !intsOf(events, "downloadFinished").isEmpty() && !completed.isEmpty() && completed.last() == total.last();
    }, std::chrono::seconds(60));
}

QMap<QString, QString> tst_UploadAndDownload::remoteHashes(const QString &projectId)
{
    return platform.hashes(platform.project(projectId).value(QLatin1String("bucket")).toString());
}

void tst_UploadAndDownload::folderComesBackByteForByte_data()
{
    QTest::addColumn<int>("atOnce");
    QTest::addColumn<quint32>("seed");
    QTest::newRow("one at once") << 1 << 1u;
    QTest::newRow("two at once") << 2 << 2u;
    QTest::newRow("four at once") << 4 << 3u;
    QTest::newRow("more than there are") << 100 << 4u;
}

void tst_UploadAndDownload::folderComesBackByteForByte()
{
    QFETCH(int, atOnce);
    QFETCH(quint32, seed);
    QVERIFY(makeRandomTree(local(QStringLiteral("in")), seed, 40));
    const Tree tree = treeOf(local(QStringLiteral("in")));
    QVERIFY(upload(id, local(QStringLiteral("in")), atOnce));
    QVERIFY(download(id, local(QStringLiteral("out")), atOnce));
    QCOMPARE(difference(treeAfterRoundTrip(tree), treeOf(local(QStringLiteral("out")))), QString());
    QCOMPARE(difference(tree, treeOf(local(QStringLiteral("in")))), QString());
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(log->messages(), QStringList());
    QCOMPARE(platform.refusals(), 0);
    QTRY_VERIFY(!session->api().anyUploadActive());
    QVERIFY(eventually([&] { return !session->api().anyDownloadActive(); }));
}

void tst_UploadAndDownload::sizesAroundOnePartComeBack_data()
{
    QTest::addColumn<int>("size");
    for (const int size : { 0, 1, 4 * MIB - 1, 4 * MIB, 4 * MIB + 1, 8 * MIB, 9 * MIB })
        QTest::newRow(numbered("", size).toLatin1().constData()) << size;
}

void tst_UploadAndDownload::sizesAroundOnePartComeBack()
{
    QFETCH(int, size);
    QVERIFY(writeFile(local(QStringLiteral("in")), QStringLiteral("sub/data.bin"), randomBytes(size, quint32(size))));
    const Tree tree = treeOf(local(QStringLiteral("in")));
    QVERIFY(upload(id, local(QStringLiteral("in"))));
    QVERIFY(download(id, local(QStringLiteral("out"))));
    QCOMPARE(difference(treeAfterRoundTrip(tree), treeOf(local(QStringLiteral("out")))), QString());
    QCOMPARE(remoteHashes(id).value(QStringLiteral("/sub/data.bin")), tree.first().section(QLatin1Char(' '), 1));
    const QList<int> total = intsOf(session->signalsSeen().events(), "uploadTotalProgressChanged");
    QCOMPARE(total.last(), 100);
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
}

void tst_UploadAndDownload::partsAreSentByTheSizeOfTheFile()
{
    QVERIFY(writeFile(local(QStringLiteral("in")), QStringLiteral("a"), QByteArray(4 * MIB, 'a')));
    QVERIFY(upload(id, local(QStringLiteral("in"))));
    QCOMPARE(platform.journal().count(PUT_FILE), 1);
    QCOMPARE(platform.journal().filter(QStringLiteral("multipart")), QStringList());

    QVERIFY(writeFile(local(QStringLiteral("in")), QStringLiteral("a"), QByteArray(8 * MIB + 1, 'a')));
    platform.startJournal();
    QVERIFY(upload(id, local(QStringLiteral("in"))));
    QCOMPARE(platform.journal().filter(QStringLiteral("multipart")),
             QStringList({ QStringLiteral("PUT api/multipartupload/init"), PUT_PART, PUT_PART, PUT_PART,
                           QStringLiteral("PUT api/multipartupload/complete") }));
    QCOMPARE(platform.journal().count(PUT_FILE), 0);
}

void tst_UploadAndDownload::uploadTellsItsWayInOrder()
{
    const QString root = local(QStringLiteral("in"));
    QVERIFY(writeFile(root, QStringLiteral("large.bin"), randomBytes(9 * MIB, 1)));
    for (int i = 0; i < 5; ++i)
        QVERIFY(writeFile(root, numbered("small", i), randomBytes(200000, quint32(i))));
    QVERIFY(upload(id, root, 2));
    QVERIFY(session->signalsSeen().waitFor("anyUploadActiveChanged", 2));
    const QList<SignalEvent> all = session->signalsSeen().events();
    const QByteArrayList names = session->signalsSeen().names();
    QCOMPARE(names.mid(0, 3), QByteArrayList({ "anyUploadActiveChanged", "uploadActiveChanged", "uploadFileProgressChanged" }));
    QCOMPARE(names.mid(names.size() - 3),
             QByteArrayList({ "uploadActiveChanged", "uploadFinished", "anyUploadActiveChanged" }));
    QCOMPARE(session->signalsSeen().all("anyUploadActiveChanged"), QList<QVariantList>({ { true }, { false } }));
    QCOMPARE(session->signalsSeen().all("uploadActiveChanged"), QList<QVariantList>({ { 1u, true }, { 1u, false } }));
    QCOMPARE(brokenReport(all, UPLOAD_REPORT), QString());

    const QMap<QString, QList<int>> files = fileProgress(all, "uploadFileProgressChanged");
    QCOMPARE(files.size(), 6);
    for (auto file = files.cbegin(); file != files.cend(); ++file) {
        QVERIFY2(file.key().startsWith(root + QLatin1Char('/')), qPrintable(file.key()));
        QCOMPARE(file->first(), 0);
        QCOMPARE(file->last(), 100);
        QVERIFY(isAscending(*file));
    }
    const QList<int> completed = intsOf(all, "completedUploadFilesChanged");
    QVERIFY(isAscending(completed));
    QCOMPARE(distinct(completed), QSet<int>({ 0, 1, 2, 3, 4, 5, 6 }));
    QCOMPARE(distinct(intsOf(all, "filesToUploadTotalChanged")), QSet<int> { 6 });
    QVERIFY(isAscending(intsOf(all, "uploadTotalProgressChanged")));
    QCOMPARE(intsOf(all, "uploadTotalProgressChanged").last(), 100);
    QCOMPARE(mostAtOnce(all, "currentUploadFilesChanged"), 2);
    // The finished file is still among the current ones when its end is told.
    QCOMPARE(session->signalsSeen().all("currentUploadFilesChanged").last().at(1).toStringList().size(), 1);
}

void tst_UploadAndDownload::downloadTellsItsWayInOrder()
{
    QJsonArray objects;
    for (int i = 0; i < 5; ++i)
        objects.append(QJsonObject { { QStringLiteral("key"), numbered("sub/f", i) }, { QStringLiteral("size"), 400000 + i } });
    platform.addProject(id, id, objects);
    QVERIFY(download(id, local(QStringLiteral("out")), 1));
    QVERIFY(session->signalsSeen().waitFor("downloadActiveChanged", 2));
    const QList<SignalEvent> all = session->signalsSeen().events();
    const QByteArrayList names = session->signalsSeen().names();
    QCOMPARE(names.first(), QByteArray("downloadActiveChanged"));
    QCOMPARE(names.mid(names.size() - 2), QByteArrayList({ "downloadFinished", "downloadActiveChanged" }));
    QCOMPARE(names.count("downloadFinished"), 1);
    QCOMPARE(names.count("anyDownloadActiveChanged"), 0);
    QCOMPARE(brokenReport(all, DOWNLOAD_REPORT), QString());

    const QMap<QString, QList<int>> files = fileProgress(all, "downloadFileProgressChanged");
    QCOMPARE(files.keys(), QStringList({ QStringLiteral("sub/f0"), QStringLiteral("sub/f1"), QStringLiteral("sub/f2"),
                                         QStringLiteral("sub/f3"), QStringLiteral("sub/f4") }));
    for (const QList<int> &progress : files) {
        QVERIFY(isAscending(progress));
        QCOMPARE(progress.last(), 100);
    }
    QVERIFY(isAscending(intsOf(all, "downloadTotalProgressChanged")));
    QCOMPARE(distinct(intsOf(all, "completedDownloadFilesChanged")), QSet<int>({ 0, 1, 2, 3, 4, 5 }));
    QCOMPARE(distinct(intsOf(all, "filesToDownloadTotalChanged")), QSet<int> { 5 });
    QCOMPARE(mostAtOnce(all, "currentDownloadFilesChanged"), 1);
}

// With several files at once the end is told as soon as none is left to start, and again with the last ones.
void tst_UploadAndDownload::downloadIsWholeWhenCompletedEqualsTotal()
{
    QJsonArray objects;
    for (int i = 0; i < 3; ++i)
        objects.append(QJsonObject { { QStringLiteral("key"), numbered("f", i) }, { QStringLiteral("size"), 300000 } });
    platform.addProject(id, id, objects);
    const int hang = platform.addFault(QStringLiteral("stallInBody"), QStringLiteral("webdav/*"), 1);
    session->api().downloadProject(id, id, local(QStringLiteral("out")), 2);
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QVERIFY(platform.waitForHit(hang));
    // The first end: two files are whole, the third hangs. The job goes on, although it counts as ended.
    QVERIFY(eventually([&] { return !session->api().anyDownloadActive(); }));
    QVERIFY(eventually([&] { return intsOf(session->signalsSeen().events(), "completedDownloadFilesChanged").last() == 2; }));
    QCOMPARE(session->signalsSeen().count("downloadFinished"), 1);
    session->close();
    QCOMPARE(QFileInfo(local(QStringLiteral("out/f1"))).size(), 300000);
    QCOMPARE(QFileInfo(local(QStringLiteral("out/f2"))).size(), 300000);

    session.reset(new Session);
    QVERIFY(session->logIn());
    QVERIFY(download(id, local(QStringLiteral("out2")), 2));
    QVERIFY(session->signalsSeen().count("downloadFinished") >= 1);
    QCOMPARE(treeOf(local(QStringLiteral("out2"))).size(), 3);
}

void tst_UploadAndDownload::secondUploadSendsTheProjectFileOnlyWhenItChanged()
{
    const QString root = local(QStringLiteral("in"));
    QVERIFY(writeFile(root, QStringLiteral("project.xml"), "<project/>"));
    QVERIFY(writeFile(root, QStringLiteral("Project.xml"), "<project/>"));
    QVERIFY(upload(id, root));
    QCOMPARE(platform.journal().count(PUT_FILE), 2);
    platform.startJournal();
    QVERIFY(upload(id, root));
    QCOMPARE(platform.journal().count(PUT_FILE), 1);
    QVERIFY(writeFile(root, QStringLiteral("project.xml"), "<project>grown</project>"));
    platform.startJournal();
    QVERIFY(upload(id, root));
    QCOMPARE(platform.journal().count(PUT_FILE), 2);
    QCOMPARE(remoteHashes(id).value(QStringLiteral("/project.xml")), sha256("<project>grown</project>"));
}

void tst_UploadAndDownload::backupFilesStayAtHome()
{
    const QString root = local(QStringLiteral("in"));
    for (const char *name : { "data.xml_bak", "data.xml_bak.2", "data.db3", "data.db3.xml_bak", ".hidden", "notes.txt" })
        QVERIFY(writeFile(root, QLatin1String(name), "x"));
    QVERIFY(upload(id, root));
    QCOMPARE(remoteHashes(id).keys(),
             QStringList({ QStringLiteral("/data.db3"), QStringLiteral("/data.db3.xml_bak"), QStringLiteral("/notes.txt") }));
}

void tst_UploadAndDownload::secondDownloadKeepsTheFilesThatAreThere()
{
    QVERIFY(makeRandomTree(local(QStringLiteral("in")), 9, 20));
    QVERIFY(upload(id, local(QStringLiteral("in")), 4));
    QVERIFY(download(id, local(QStringLiteral("out")), 4));
    const Tree tree = treeOf(local(QStringLiteral("out")));
    platform.startJournal();
    session->signalsSeen().clear();
    session->api().downloadProject(id, id, local(QStringLiteral("out")), 4);
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(platform.journal().filter(QStringLiteral("webdav")), QStringList());
    QCOMPARE(intsOf(session->signalsSeen().events(), "filesToDownloadTotalChanged"), QList<int> { 0 });
    QCOMPARE(intsOf(session->signalsSeen().events(), "downloadTotalProgressChanged"), QList<int> { 100 });
    QCOMPARE(difference(tree, treeOf(local(QStringLiteral("out")))), QString());
}

void tst_UploadAndDownload::changedFileIsFetchedAgain()
{
    QVERIFY(makeRandomTree(local(QStringLiteral("in")), 10, 12));
    QVERIFY(writeFile(local(QStringLiteral("in")), QStringLiteral("changed.txt"), "longer than the other"));
    QVERIFY(upload(id, local(QStringLiteral("in")), 4));
    QVERIFY(download(id, local(QStringLiteral("out")), 4));
    const Tree tree = treeOf(local(QStringLiteral("out")));
    QVERIFY(writeFile(local(QStringLiteral("out")), QStringLiteral("changed.txt"), "the other"));
    platform.startJournal();
    QVERIFY(download(id, local(QStringLiteral("out"))));
    QCOMPARE(platform.journal().filter(QStringLiteral("webdav")).size(), 1);
    QCOMPARE(difference(tree, treeOf(local(QStringLiteral("out")))), QString());
}

void tst_UploadAndDownload::videosAreTranscodedUnlessTheyDocument()
{
    const QString root = local(QStringLiteral("in"));
    QVERIFY(writeFile(root, QStringLiteral("Clip.MP4"), randomBytes(1000, 1)));
    QVERIFY(writeFile(root, QStringLiteral("archive.tar.mp4"), randomBytes(5 * MIB, 2)));
    QVERIFY(writeFile(root, QStringLiteral("picture.jpg"), randomBytes(1000, 3)));
    QVERIFY(writeFile(root, QStringLiteral("notes.txt"), "x"));
    QVERIFY(upload(id, root, 2));
    QTRY_COMPARE(platform.journal().count(QStringLiteral("PUT api/job/putforeachpresets")), 2);
    QCOMPARE(remoteHashes(id).keys(),
             QStringList({ QStringLiteral("/notes.txt"), QStringLiteral("Picture/Sec/picture.jpg"),
                           QStringLiteral("Video/Sec/Clip.MP4"), QStringLiteral("Video/Sec/archive.tar.mp4") }));
    QCOMPARE(platform.refusals(), 0);
}

void tst_UploadAndDownload::originalGoesBeforeItsWebCopy_data()
{
    QTest::addColumn<QString>("original");
    QTest::addColumn<QString>("copy");
    QTest::newRow("picture, copy listed behind") << QStringLiteral("Picture/Sec/a.jpg") << QStringLiteral("Picture/Sec/web/a.jpg");
    QTest::newRow("picture, copy listed first") << QStringLiteral("Picture/Sec/x.jpg") << QStringLiteral("Picture/Sec/web/x.jpg");
    QTest::newRow("video, copy listed behind") << QStringLiteral("Video/Sec/a.mp4") << QStringLiteral("Video/Sec/web/a.mp4");
    QTest::newRow("video, copy listed first") << QStringLiteral("Video/Sec/x.mp4") << QStringLiteral("Video/Sec/web/x.mp4");
    QTest::newRow("video of a node, copy listed first") << QStringLiteral("Video/Nod/x.mp4")
                                                        << QStringLiteral("Video/Nod/web/x.mp4");
}

void tst_UploadAndDownload::originalGoesBeforeItsWebCopy()
{
    QFETCH(QString, original);
    QFETCH(QString, copy);
    const QString key = QStringLiteral("key");
    const QString text = QStringLiteral("text");
    platform.addProject(id, id, { QJsonObject { { key, original }, { text, QStringLiteral("original") } },
                                  QJsonObject { { key, copy }, { text, QStringLiteral("copy") } } });
    QVERIFY(download(id, local(QStringLiteral("out")), 4));
    QCOMPARE(treeOf(local(QStringLiteral("out"))).keys(), QStringList { original });
    QCOMPARE(readFile(local(QStringLiteral("out/") + original)), QByteArray("original"));
    // A second download finds it in its place.
    platform.startJournal();
    session->signalsSeen().clear();
    QVERIFY(download(id, local(QStringLiteral("out")), 4));
    QCOMPARE(platform.journal().filter(QStringLiteral("webdav")), QStringList());
    QCOMPARE(readFile(local(QStringLiteral("out/") + original)), QByteArray("original"));
}

void tst_UploadAndDownload::projectIsListedAfterItsUpload()
{
    const QString name = QString::fromUtf8("Kanal Süd & Nord 50%");
    QVERIFY(writeFile(local(QStringLiteral("in")), QStringLiteral("a.txt"), "hello"));
    session->api().uploadProject(id, name, local(QStringLiteral("in")), PROJECT_DATE);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    session->api().queryRemoteProjects();
    QVERIFY(session->signalsSeen().waitFor("projectInfoReceived"));
    const auto projects = session->signalsSeen().all("projectInfoReceived").first().first().value<QList<ProjectInfo>>();
    QCOMPARE(projects.last().projectId(), id);
    QCOMPARE(projects.last().projectName(), name);
    QCOMPARE(projects.last().diskUsage(), 5ull);
    // Listed names are those to download with.
    session->api().downloadProject(projects.last().projectId(), projects.last().projectFolderName(), local(QStringLiteral("out")));
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(readFile(local(QStringLiteral("out/a.txt"))), QByteArray("hello"));
}

void tst_UploadAndDownload::importToolProjectKeepsItsIdByName()
{
    const QString root = local(QStringLiteral("in"));
    QVERIFY(writeFile(root, QStringLiteral("a.txt"), "hello"));
    const QString name = QString::fromUtf8("Kanal Süd");
    session->api().uploadQZProject(name, root, PROJECT_DATE);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished", 1));
    session->api().uploadQZProject(name, root, PROJECT_DATE);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished", 2));
    const QString derived = QStringLiteral("f68dd686-6a93-2ed9-3c5e-3d496e8bf459");
    QTRY_COMPARE(platform.project(derived).value(QLatin1String("importType")).toString(), QStringLiteral("OrvandeImport"));
    int named = 0;
    const QJsonArray projects = platform.state().value(QLatin1String("projects")).toArray();
    for (const QJsonValue &project : projects)
        named += project[QLatin1String("name")].toString() == name ? 1 : 0;
    QCOMPARE(named, 1);
}

void tst_UploadAndDownload::uploadOfNothingFinishesAtOnce()
{
    QVERIFY(upload(id, local(QStringLiteral("in"))));
    QVERIFY(session->signalsSeen().waitFor("anyUploadActiveChanged", 2));
    QCOMPARE(session->signalsSeen().names(),
             QByteArrayList({ "anyUploadActiveChanged", "uploadActiveChanged", "uploadActiveChanged", "uploadFinished",
                              "anyUploadActiveChanged" }));
    QTRY_COMPARE(platform.project(id).value(QLatin1String("status")).toInt(), 2);
}

void tst_UploadAndDownload::missingFolderFinishesAtOnce()
{
    QVERIFY(upload(id, local(QStringLiteral("nowhere"))));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(remoteHashes(id).size(), 0);
}

void tst_UploadAndDownload::emptyBucketIsDownloadedAtOnce()
{
    platform.addProject(id, id);
    QVERIFY(download(id, local(QStringLiteral("out/new"))));
    QVERIFY(session->signalsSeen().waitFor("downloadActiveChanged", 2));
    QCOMPARE(session->signalsSeen().names(),
             QByteArrayList { "downloadActiveChanged" } + DOWNLOAD_REPORT
                 + QByteArrayList({ "downloadFinished", "downloadActiveChanged" }));
    QCOMPARE(intsOf(session->signalsSeen().events(), "downloadTotalProgressChanged"), QList<int> { 100 });
    QVERIFY(QFileInfo(local(QStringLiteral("out/new"))).isDir());
}

void tst_UploadAndDownload::twoUploadsAtOnceShareOneFlag()
{
    QVERIFY(writeFile(local(QStringLiteral("in")), QStringLiteral("a"), randomBytes(100, 1)));
    QVERIFY(writeFile(local(QStringLiteral("in2")), QStringLiteral("b"), randomBytes(100, 2)));
    const int hang = platform.addFault(QStringLiteral("noAnswer"), QStringLiteral("api/bucket/putfile"), 1);
    session->api().uploadProject(id, id, local(QStringLiteral("in")), PROJECT_DATE);
    QVERIFY(platform.waitForHit(hang));
    session->api().uploadProject(id + QLatin1Char('b'), id, local(QStringLiteral("in2")), PROJECT_DATE);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QVERIFY(session->settle());
    QVERIFY(session->api().anyUploadActive());
    QCOMPARE(session->signalsSeen().all("uploadFinished"), QList<QVariantList> { { 2u } });
    QCOMPARE(session->signalsSeen().all("anyUploadActiveChanged"), QList<QVariantList> { { true } });
    // A third one ends after the first has been given up: only then the flag falls, behind the last end.
    session->api().abortUpload(1);
    QVERIFY(session->signalsSeen().waitFor("anyUploadActiveChanged", 2));
    session->signalsSeen().clear();
    session->api().uploadProject(id, id, local(QStringLiteral("in")), PROJECT_DATE);
    session->api().uploadProject(id + QLatin1Char('b'), id, local(QStringLiteral("in2")), PROJECT_DATE);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished", 2));
    QVERIFY(session->signalsSeen().waitFor("anyUploadActiveChanged", 2));
    const QByteArrayList names = session->signalsSeen().names();
    QCOMPARE(names.mid(names.size() - 2), QByteArrayList({ "uploadFinished", "anyUploadActiveChanged" }));
    QCOMPARE(names.count("anyUploadActiveChanged"), 2);
    QTRY_VERIFY(!session->api().anyUploadActive());
}

// Parts are read into memory that all uploads of a worker share, and each facade has a worker of its own.
void tst_UploadAndDownload::twoFacadesDoNotMixTheirParts()
{
    Session other;
    QVERIFY(other.logIn());
    const QString otherId = id + QLatin1Char('b');
    QVERIFY(writeFile(local(QStringLiteral("in/")), QStringLiteral("a.bin"), QByteArray(21 * MIB, 'a')));
    QVERIFY(writeFile(local(QStringLiteral("in/")), QStringLiteral("c.bin"), QByteArray(21 * MIB, 'c')));
    QVERIFY(writeFile(local(QStringLiteral("other/")), QStringLiteral("b.bin"), QByteArray(21 * MIB, 'b')));
    session->api().uploadProject(id, id, local(QStringLiteral("in/")), PROJECT_DATE, 2);
    other->uploadProject(otherId, otherId, local(QStringLiteral("other/")), PROJECT_DATE);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished", 1, std::chrono::seconds(60)));
    QVERIFY(other.signalsSeen().waitFor("uploadFinished", 1, std::chrono::seconds(60)));
    QVERIFY(download(id, local(QStringLiteral("out"))));
    QVERIFY(download(otherId, local(QStringLiteral("other out"))));
    QCOMPARE(difference(treeOf(local(QStringLiteral("in"))), treeOf(local(QStringLiteral("out")))), QString());
    QCOMPARE(difference(treeOf(local(QStringLiteral("other"))), treeOf(local(QStringLiteral("other out")))), QString());
}

void tst_UploadAndDownload::uploadAndDownloadAtOnce()
{
    QVERIFY(makeRandomTree(local(QStringLiteral("in")), 11, 25));
    QVERIFY(upload(id, local(QStringLiteral("in")), 4));
    const Tree tree = treeOf(local(QStringLiteral("in")));
    session->api().uploadProject(id + QLatin1Char('b'), id + QLatin1Char('b'), local(QStringLiteral("in")), PROJECT_DATE, 3);
    QVERIFY(download(id, local(QStringLiteral("out")), 3));
    QVERIFY(session->signalsSeen().waitFor("uploadFinished", 2));
    QVERIFY(download(id + QLatin1Char('b'), local(QStringLiteral("out2")), 3));
    QCOMPARE(difference(treeAfterRoundTrip(tree), treeOf(local(QStringLiteral("out")))), QString());
    QCOMPARE(difference(treeAfterRoundTrip(tree), treeOf(local(QStringLiteral("out2")))), QString());
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
}

void tst_UploadAndDownload::pathsMayEndWithASeparator()
{
    QVERIFY(writeFile(local(QStringLiteral("in")), QStringLiteral("sub/a.txt"), "hello"));
    QVERIFY(upload(id, local(QStringLiteral("in/"))));
    QCOMPARE(remoteHashes(id).keys(), QStringList { QStringLiteral("sub/a.txt") });
    QVERIFY(download(id, local(QStringLiteral("out/"))));
    QCOMPARE(treeOf(local(QStringLiteral("out"))).keys(), QStringList { QStringLiteral("sub/a.txt") });
}

void tst_UploadAndDownload::memoryDoesNotGrowWithTheFile()
{
#ifdef Q_OS_LINUX
    constexpr int FILE_MIB = 160;
    // A first round fills what is filled once: caches, pools, buffers.
    QVERIFY(writeFile(local(QStringLiteral("in")), QStringLiteral("large.bin"), QByteArray(9 * MIB, 'x')));
    QVERIFY(upload(id, local(QStringLiteral("in"))));
    QVERIFY(download(id, local(QStringLiteral("warm"))));
    const int before = peakMemory();

    QFile sparse(local(QStringLiteral("in/large.bin")));
    QVERIFY(sparse.open(QIODevice::ReadWrite));
    QVERIFY(sparse.resize(qint64(FILE_MIB) * MIB));
    sparse.close();
    session->signalsSeen().clear();
    QVERIFY(upload(id, local(QStringLiteral("in"))));
    session->signalsSeen().clear();
    QVERIFY(download(id, local(QStringLiteral("out"))));
    QCOMPARE(QFileInfo(local(QStringLiteral("out/large.bin"))).size(), qint64(FILE_MIB) * MIB);
    const int growth = peakMemory() - before;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    qInfo("grown by %d MiB", growth); // the sanitizer keeps what is freed
#else
    constexpr int GROWTH_LIMIT_MIB = 64;
    QVERIFY2(growth < GROWTH_LIMIT_MIB, qPrintable(numbered("MiB: ", growth)));
#endif
#endif
}

QTEST_GUILESS_MAIN(tst_UploadAndDownload)

#include "tst_UploadAndDownload.moc"
