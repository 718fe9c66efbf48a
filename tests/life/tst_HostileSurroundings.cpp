#include "flow/Folders.h"
#include "flow/Session.h"
#include "life/RandomRun.h"
#include "life/SmallDisk.h"
#include "support/LogCapture.h"
#include "unit/WithoutPrivileges.h"

#include <QtTest/QtTest>

#include <csignal>
#include <sys/file.h>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using namespace std::chrono_literals;

namespace {

constexpr int MIB = 1024 * 1024;
constexpr int MANY_FILES = 70000;
constexpr int DAY_SECONDS = 24 * 3600;

const QString FILE_ROUTE = QStringLiteral("webdav/*");
const QString PART_ROUTE = QStringLiteral("api/multipartupload/upload");
const QString PUT_FILE_ROUTE = QStringLiteral("api/bucket/putfile");

QJsonObject object(const QString &key, int size)
{
    return {{QStringLiteral("key"), key}, {QStringLiteral("size"), size}};
}

/// How long a suspend lasts; ten minutes need patience and are asked for by a script.
std::chrono::seconds suspendTime()
{
    return std::chrono::seconds(numberFrom("KORVOWEB_SUSPEND_SECONDS", 2));
}

} // namespace

/// The disk, the files, the clock and the machine do what they do on a bad day: the transfer tells its code, or goes on.
class tst_HostileSurroundings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void fullDiskIsToldAndRoomHelps();
    void fullDiskEndsADataDownload();
    void folderThatCannotBeWrittenIsTold_data();
    void folderThatCannotBeWrittenIsTold();

    void lockedFileIsSent();
    void grownFileIsSentWhole();
    void removedFileIsSentToItsEnd();
    void replacedFileIsSentAsItWas();

    void clockThatJumpsIsToldAndANewLoginHelps_data();
    void clockThatJumpsIsToldAndANewLoginHelps();
    void transfersOutlastASuspend_data();
    void transfersOutlastASuspend();

    void manyFilesAreListed();
    void manyFilesAreScanned();
    void manyFilesGoThereAndBack();
    void longOutputPathsAreWritten();
    void pathTooLongForTheSystemIsTold();

private:
    QString local(const char *path) const { return folder->filePath(QLatin1String(path)); }
    bool startLargeUpload(int *slow);
    QString storedHash(const QString &key);
    bool endOfDownloads(int number = 1) const;
    int lastValue(const QByteArray &signal) const;
    void suspend(const QString &who);

    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<Session> session;
    QString id; // of a project that no other test uses
    int number = 0;
};

void tst_HostileSurroundings::initTestCase()
{
    log.reset(new LogCapture);
    QCOMPARE(platform.start({QStringLiteral("--web-copies"), QStringLiteral("none")}), QString());
}

void tst_HostileSurroundings::init()
{
    folder.reset(new QTemporaryDir);
    session.reset(new Session);
    QVERIFY(session->logIn());
    id = QStringLiteral("p%1").arg(++number);
    QVERIFY(QDir().mkpath(local("in")) && QDir().mkpath(local("out")));
    platform.startJournal();
    log->clear();
}

void tst_HostileSurroundings::cleanup()
{
    platform.clearFaults();
    platform.setClockSkew(0);
    session.reset();
    folder.reset();
}

int tst_HostileSurroundings::lastValue(const QByteArray &signal) const
{
    const QList<QVariantList> all = session->signalsSeen().all(signal);
    return all.isEmpty() ? -1 : all.last().last().toInt();
}

bool tst_HostileSurroundings::endOfDownloads(int downloads) const
{
    return session->signalsSeen().waitFor("downloadActiveChanged", 2 * downloads, 60s) && session->settle();
}

void tst_HostileSurroundings::fullDiskIsToldAndRoomHelps()
{
    platform.addProject(id, id,
                        {object(QStringLiteral("a"), 1000), object(QStringLiteral("large"), 3 * MIB),
                         object(QStringLiteral("z"), 1000)});
    SmallDisk disk(local("out"), MIB);
    const QString target = local("out/project");
    session->api().downloadProject(id, id, target);
    QVERIFY(endOfDownloads());
    QVERIFY(session->signalsSeen().errors().contains(Error::FileWrite));
    QVERIFY(log->contains(QStringLiteral("Error while writing to file: \"") + target + QStringLiteral("/large\" ")));
    QVERIFY(lastValue("completedDownloadFilesChanged") < 3);
    QVERIFY(session->signalsSeen().count("downloadFinished") > 0);

    disk.makeRoom();
    const int errors = session->signalsSeen().errors().size();
    session->api().downloadProject(id, id, target);
    QVERIFY(endOfDownloads(2));
    QCOMPARE(session->signalsSeen().errors().size(), errors);
    const QMap<QString, QString> stored
        = platform.hashes(platform.project(id).value(QLatin1String("bucket")).toString());
    QCOMPARE(stored.size(), 3);
    for (auto file = stored.cbegin(); file != stored.cend(); ++file)
        QCOMPARE(sha256(readFile(target + QLatin1Char('/') + file.key())), file.value());
}

void tst_HostileSurroundings::fullDiskEndsADataDownload()
{
    platform.addProject(id, id);
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("hugeBody")},
                       {QStringLiteral("bytes"), 3 * MIB},
                       {QStringLiteral("route"), QStringLiteral("api/Projects/*")}});
    const SmallDisk disk(local("out"), MIB);
    session->api().downloadQuickviewProjectData(id, local("out/data.xml"));
    QVERIFY(endOfDownloads());
    QCOMPARE(session->signalsSeen().errors(), QList<Error>{Error::FileWrite});
    QCOMPARE(session->signalsSeen().count("downloadFinished"), 1);
}

void tst_HostileSurroundings::folderThatCannotBeWrittenIsTold_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QList<Error>>("errors");
    QTest::newRow("the folder itself") << QStringLiteral("out") << QList<Error>{Error::FileOpen, Error::DownloadFolder};
    QTest::newRow("a folder to be made in it") << QStringLiteral("out/new") << QList<Error>{Error::DownloadFolder};
}

void tst_HostileSurroundings::folderThatCannotBeWrittenIsTold()
{
    QFETCH(QString, target);
    QFETCH(QList<Error>, errors);
    platform.addProject(id, id, {object(QStringLiteral("a"), 10), object(QStringLiteral("sub/b"), 10)});
    const QFile::Permissions readable
        = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    QVERIFY(QFile::setPermissions(folder->path(), readable | QFile::WriteOwner));
    QVERIFY(QFile::setPermissions(local("out"), readable));
    {
        const WithoutPrivileges nobody;
        session->api().downloadProject(id, id, folder->filePath(target));
        QVERIFY(endOfDownloads());
    }
    QCOMPARE(session->signalsSeen().errors(), errors);
    QVERIFY(session->signalsSeen().count("downloadFinished") > 0);
    QCOMPARE(treeOf(local("out")).size(), 0);
}

// Stands in the middle of a file of three parts.
bool tst_HostileSurroundings::startLargeUpload(int *slow)
{
    if (!writeFile(local("in"), QStringLiteral("large.bin"), randomBytes(9 * MIB, 1)))
        return false;
    *slow = platform.addFault({{QStringLiteral("kind"), QStringLiteral("delay")},
                               {QStringLiteral("route"), PART_ROUTE},
                               {QStringLiteral("delayMs"), 300}});
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE);
    return platform.waitForHit(*slow);
}

QString tst_HostileSurroundings::storedHash(const QString &key)
{
    return platform.hashes(platform.project(id).value(QLatin1String("bucket")).toString()).value(key);
}

// Locks are advice here; another system may refuse to read, which is told as a file that cannot be opened.
void tst_HostileSurroundings::lockedFileIsSent()
{
    QVERIFY(writeFile(local("in"), QStringLiteral("small.bin"), "small"));
    QVERIFY(writeFile(local("in"), QStringLiteral("large.bin"), randomBytes(5 * MIB, 1)));
    QFile small(local("in/small.bin"));
    QFile large(local("in/large.bin"));
    QVERIFY(small.open(QIODevice::ReadWrite) && large.open(QIODevice::ReadWrite));
    QVERIFY(flock(small.handle(), LOCK_EX) == 0 && flock(large.handle(), LOCK_EX) == 0);
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(storedHash(QStringLiteral("/small.bin")), sha256("small"));
    QCOMPARE(storedHash(QStringLiteral("/large.bin")), sha256(randomBytes(5 * MIB, 1)));
}

void tst_HostileSurroundings::grownFileIsSentWhole()
{
    int slow = 0;
    QVERIFY(startLargeUpload(&slow));
    QFile file(local("in/large.bin"));
    QVERIFY(file.open(QIODevice::Append));
    const QByteArray more = randomBytes(5 * MIB, 2);
    QCOMPARE(file.write(more), qint64(more.size()));
    file.close();
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(storedHash(QStringLiteral("/large.bin")), sha256(randomBytes(9 * MIB, 1) + more));
    for (const QVariantList &arguments : session->signalsSeen().all("uploadTotalProgressChanged"))
        QVERIFY(arguments.last().toInt() >= 0 && arguments.last().toInt() <= 100);
}

void tst_HostileSurroundings::removedFileIsSentToItsEnd()
{
    int slow = 0;
    QVERIFY(startLargeUpload(&slow));
    QVERIFY(QFile::remove(local("in/large.bin")));
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(storedHash(QStringLiteral("/large.bin")), sha256(randomBytes(9 * MIB, 1)));
}

void tst_HostileSurroundings::replacedFileIsSentAsItWas()
{
    int slow = 0;
    QVERIFY(startLargeUpload(&slow));
    QVERIFY(writeFile(folder->path(), QStringLiteral("other.bin"), randomBytes(6 * MIB, 3)));
    QVERIFY(QFile::remove(local("in/large.bin")) && QFile::rename(local("other.bin"), local("in/large.bin")));
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QCOMPARE(storedHash(QStringLiteral("/large.bin")), sha256(randomBytes(9 * MIB, 1)));
}

void tst_HostileSurroundings::clockThatJumpsIsToldAndANewLoginHelps_data()
{
    QTest::addColumn<int>("seconds");
    QTest::newRow("a day ahead") << DAY_SECONDS;
    QTest::newRow("a day back") << -DAY_SECONDS;
}

// Requests signed with a date that is a day off are refused.
void tst_HostileSurroundings::clockThatJumpsIsToldAndANewLoginHelps()
{
    QFETCH(int, seconds);
    QVERIFY(writeFile(local("in"), QStringLiteral("small.bin"), "small"));
    int slow = 0;
    QVERIFY(startLargeUpload(&slow));
    platform.setClockSkew(seconds);
    QVERIFY(session->signalsSeen().waitFor("errorOccurred"));
    QCOMPARE(session->signalsSeen().count("uploadFinished"), 0);
    QVERIFY(!session->api().anyUploadActive());
    QCOMPARE(session->signalsSeen().errors(), QList<Error>{Error::AuthenticationRequired});

    QVERIFY(session->logIn());
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(storedHash(QStringLiteral("/large.bin")), sha256(randomBytes(9 * MIB, 1)));
}

void tst_HostileSurroundings::transfersOutlastASuspend_data()
{
    QTest::addColumn<QString>("who");
    QTest::newRow("the server") << QStringLiteral("server");
    QTest::newRow("this machine") << QStringLiteral("host");
}

// A host that stands still cannot wake itself.
void tst_HostileSurroundings::suspend(const QString &who)
{
    const qint64 process = who == QLatin1String("server") ? platform.processId() : QCoreApplication::applicationPid();
    QProcess shell;
    shell.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("kill -STOP $0; sleep $1; kill -CONT $0"),
                                       QString::number(process), QString::number(suspendTime().count())});
    QVERIFY(shell.waitForStarted());
    QVERIFY(eventually([&] { return shell.state() == QProcess::NotRunning; }, suspendTime() + 60s));
    QCOMPARE(shell.exitCode(), 0);
}

void tst_HostileSurroundings::transfersOutlastASuspend()
{
    QFETCH(QString, who);
    QJsonArray objects;
    for (int i = 0; i < 3; ++i)
        objects.append(object(QStringLiteral("f%1").arg(i), 4 * MIB));
    platform.addProject(QStringLiteral("down") + id, QStringLiteral("down"), objects);
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("tunnelBandwidth")},
                       {QStringLiteral("count"), 0},
                       {QStringLiteral("bytesPerSecond"), 8 * MIB}});
    session->api().downloadProject(QStringLiteral("down") + id, QStringLiteral("down"), local("out"), 3);
    int slow = 0;
    QVERIFY(startLargeUpload(&slow));
    suspend(who);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished", 1, 120s));
    QVERIFY(eventually([&] { return lastValue("completedDownloadFilesChanged") == 3; }, 120s));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(storedHash(QStringLiteral("/large.bin")), sha256(randomBytes(9 * MIB, 1)));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(QFileInfo(folder->filePath(QStringLiteral("out/f%1").arg(i))).size(), qint64(4 * MIB));
}

// All but a few are there already.
void tst_HostileSurroundings::manyFilesAreListed()
{
    QString entries;
    QVERIFY(QDir().mkpath(local("out/sub")));
    for (int i = 0; i < MANY_FILES; ++i) {
        const QString key = QStringLiteral("sub/file %1.txt").arg(i);
        entries += QStringLiteral(
                       "<ObjectModel><FileName>f</FileName><Key>%1</Key><Size>1</Size><Type>1</Type></ObjectModel>")
                       .arg(key);
        QFile file(local("out/") + key);
        if (i % 10000 != 0)
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("x") == 1);
    }
    QJsonArray objects;
    for (int i = 0; i < MANY_FILES; i += 10000)
        objects.append(object(QStringLiteral("sub/file %1.txt").arg(i), 1));
    platform.addProject(id, id, objects);
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("status")},
                       {QStringLiteral("status"), 200},
                       {QStringLiteral("body"), QString(QStringLiteral("<L>") + entries + QStringLiteral("</L>"))},
                       {QStringLiteral("route"), QStringLiteral("api/bucket/listoffilesfromlocations")}});
    session->api().downloadProject(id, id, local("out"), 4);
    QVERIFY(eventually([&] { return lastValue("completedDownloadFilesChanged") == 7; }, 60s));
    QCOMPARE(lastValue("filesToDownloadTotalChanged"), 7);
    QCOMPARE(QDir(local("out/sub")).entryList(QDir::Files).size(), MANY_FILES);
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
}

// All but a few are left out.
void tst_HostileSurroundings::manyFilesAreScanned()
{
    for (int i = 0; i < MANY_FILES; ++i) {
        const QString name = QStringLiteral("in/file %1").arg(i) + QLatin1String(i % 10000 == 0 ? ".txt" : ".xml_bak");
        QFile file(folder->filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("x") == 1);
    }
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE, 4);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished", 1, 60s));
    QCOMPARE(lastValue("completedUploadFilesChanged"), 7);
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
}

// As many as the script asks for; it takes its time.
void tst_HostileSurroundings::manyFilesGoThereAndBack()
{
    const int files = numberFrom("KORVOWEB_FILES", 200);
    for (int i = 0; i < files; ++i)
        QVERIFY(writeFile(local("in"), QStringLiteral("%1/file %2.txt").arg(i % 100).arg(i), QByteArray::number(i)));
    session->api().uploadProject(id, id, local("in"), PROJECT_DATE, 6);
    QVERIFY(session->signalsSeen().waitFor("uploadFinished", 1, 2h));
    session->api().downloadProject(id, id, local("out"), 6);
    QVERIFY(eventually([&] { return lastValue("completedDownloadFilesChanged") == files; }, 2h));
    QCOMPARE(difference(treeOf(local("in")), treeOf(local("out"))), QString());
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    std::fprintf(stderr, "%d files went there and came back\n", files);
}

void tst_HostileSurroundings::longOutputPathsAreWritten()
{
    const QString part = QString(140, QLatin1Char('x'));
    const QString path = local("out/") + part + QLatin1Char('/') + part + QStringLiteral("/data.xml");
    QVERIFY(path.size() >= 300);
    platform.addProject(id, id, {object(QStringLiteral("Video/Sec/a.mp4"), 10)});
    session->api().downloadQuickviewProjectData(id, path);
    QVERIFY(endOfDownloads());
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QVERIFY(readFile(path).contains("<QuickviewProject>"));
}

void tst_HostileSurroundings::pathTooLongForTheSystemIsTold()
{
    QString deep = QStringLiteral("out");
    while (deep.size() < 4200)
        deep += QLatin1Char('/') + QString(200, QLatin1Char('x'));
    platform.addProject(id, id, {object(QStringLiteral("a"), 10)});
    session->api().downloadProject(id, id, folder->filePath(deep));
    session->api().downloadQuickviewProjectData(id, folder->filePath(deep) + QStringLiteral("/data.xml"));
    QVERIFY(endOfDownloads(2));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>({Error::DownloadFolder, Error::DownloadFolder}));
}

int main(int argc, char **argv)
{
    haveMountsOfOnesOwn();
    QCoreApplication application(argc, argv);
    tst_HostileSurroundings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_HostileSurroundings.moc"
