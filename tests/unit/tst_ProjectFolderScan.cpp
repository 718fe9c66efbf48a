#include "transfer/ProjectFolderScan.h"

#include "WithoutPrivileges.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

using namespace Korvo::Web;

class tst_ProjectFolderScan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void missingFolderHasNoFiles();
    void noPathHasNoFiles();
    void emptyFolderHasNoFiles();
    void fileInPlaceOfTheFolderHasNoFiles();
    void everyFileOfEveryFolderIsFound();
    void filesAreDescribedAsTheyAreOnDisk();
    void hiddenFilesAndFoldersAreLeftOut();
    void namesDecideWhatIsLeftOut_data();
    void namesDecideWhatIsLeftOut();
    void projectFileInASubfolderIsComparedToo();
    void otherFilesAreSentWhateverTheListingHolds();
    void relativePathFollowsTheProjectPath_data();
    void relativePathFollowsTheProjectPath();
    void relativeProjectPathIsCutAsAnAbsoluteOne();
    void folderThatLeadsBackUpIsSkipped();
    void linkedFolderNextToItIsScanned();
    void brokenLinksAreLeftOut();
    void folderThatCannotBeReadIsTold();
    void fileThatCannotBeNamedIsToldByItsFolder();
    void folderOfTooLongAPathIsTold();
    void pipesAreLeftOutAlsoBehindALink();
    void ownOrderOfTheFileSystemIsKeptAroundSubfolders();
    void secondRunFindsTheSame();
    void deepFoldersAreScanned();

private:
    QString root() const { return temporary->path() + QStringLiteral("/project"); }
    void write(const QString &relativePath, int bytes = 3) const;
    QStringList scanned(const QString &path, const QMap<QString, RemoteFileEntry> &remote = {}) const;

    QScopedPointer<QTemporaryDir> temporary;
};

namespace {

QMap<QString, RemoteFileEntry> listingOf(const QString &fileName, qint64 size)
{
    RemoteFileEntry entry;
    entry.fileName = fileName;
    entry.key = QStringLiteral("somewhere/") + fileName;
    entry.size = size;
    return {{fileName, entry}};
}

} // namespace

void tst_ProjectFolderScan::init()
{
    temporary.reset(new QTemporaryDir);
    QVERIFY(temporary->isValid());
    QVERIFY(QDir().mkpath(root()));
}

void tst_ProjectFolderScan::cleanup()
{
    temporary.reset();
}

void tst_ProjectFolderScan::write(const QString &relativePath, int bytes) const
{
    const QString path = root() + QLatin1Char('/') + relativePath;
    QVERIFY(QDir().mkpath(QFileInfo(path).absolutePath()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(QByteArray(bytes, 'x')), qint64(bytes));
}

QStringList tst_ProjectFolderScan::scanned(const QString &path, const QMap<QString, RemoteFileEntry> &remote) const
{
    QStringList paths;
    const auto files = ProjectFolderScan(path, remote).run();
    for (const LocalUploadFile &file : files)
        paths.append(file.relativePath());
    paths.sort();
    return paths;
}

void tst_ProjectFolderScan::missingFolderHasNoFiles()
{
    QCOMPARE(scanned(root() + QStringLiteral("/not there")), QStringList());
}

void tst_ProjectFolderScan::noPathHasNoFiles()
{
    QCOMPARE(scanned(QString()), QStringList());
}

void tst_ProjectFolderScan::emptyFolderHasNoFiles()
{
    QVERIFY(QDir(root()).mkpath(QStringLiteral("a/b/c")));
    QCOMPARE(scanned(root()), QStringList());
}

void tst_ProjectFolderScan::fileInPlaceOfTheFolderHasNoFiles()
{
    write(QStringLiteral("file"));
    QCOMPARE(scanned(root() + QStringLiteral("/file")), QStringList());
}

void tst_ProjectFolderScan::everyFileOfEveryFolderIsFound()
{
    const QStringList files{QStringLiteral("/a & b #1 100%.txt"), QStringLiteral("/empty"), QStringLiteral("/x/one.db3"),
                            QStringLiteral("/x/y/z/Länge.jpg"), QStringLiteral("/x/y/zz.mp4"),
                            QStringLiteral("/zz/") + QString(200, QLatin1Char('n')) + QStringLiteral(".txt")};
    for (const QString &file : files)
        write(file, file == QStringLiteral("/empty") ? 0 : 3);
    QCOMPARE(scanned(root()), files);
}

void tst_ProjectFolderScan::filesAreDescribedAsTheyAreOnDisk()
{
    write(QStringLiteral("video/Clip.MOV"), 4321);
    const QFileInfo disk(root() + QStringLiteral("/video/Clip.MOV"));
    const auto files = ProjectFolderScan(root(), {}).run();
    QCOMPARE(int(files.size()), 1);
    QCOMPARE(files.front().absolutePath(), disk.absoluteFilePath());
    QCOMPARE(files.front().relativePath(), QStringLiteral("/video/Clip.MOV"));
    QCOMPARE(files.front().size, Q_UINT64_C(4321));
    QCOMPARE(files.front().lastModified(), disk.lastModified());
    QVERIFY(files.front().isVideo);
}

void tst_ProjectFolderScan::hiddenFilesAndFoldersAreLeftOut()
{
#ifdef Q_OS_WIN
    write(QStringLiteral("shown.txt")); // a leading dot hides nothing there
#else
    write(QStringLiteral(".hidden.db3"));
    write(QStringLiteral(".folder/inside.txt"));
    write(QStringLiteral("shown.txt"));
#endif
    QCOMPARE(scanned(root()), QStringList{QStringLiteral("/shown.txt")});
}

void tst_ProjectFolderScan::namesDecideWhatIsLeftOut_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("bytes");
    QTest::addColumn<bool>("isSent");
    QTest::newRow("project description of the listed size") << "project.xml" << 40 << false;
    QTest::newRow("project description, longer") << "project.xml" << 41 << true;
    QTest::newRow("project description, shorter") << "project.xml" << 39 << true;
    QTest::newRow("project description in other letters") << "Project.xml" << 40 << true;
    QTest::newRow("its name as an ending") << "my project.xml" << 40 << true;
    QTest::newRow("its name as a beginning") << "project.xml2" << 40 << true;
    QTest::newRow("backup") << "data.xml_bak" << 3 << false;
    QTest::newRow("backup mark inside") << "data.xml_bak.old" << 3 << false;
    QTest::newRow("backup mark alone") << "a.xml_bak" << 0 << false;
    QTest::newRow("backup mark in other letters") << "data.XML_BAK" << 3 << true;
    QTest::newRow("other backup") << "data.xml.bak" << 3 << true;
    QTest::newRow("database") << "data.db3" << 3 << true;
    QTest::newRow("database mark beats backup mark") << "data.db3.xml_bak" << 3 << true;
    QTest::newRow("database mark behind the backup mark") << "data.xml_bak.db3" << 3 << true;
    QTest::newRow("database mark in other letters does not") << "data.DB3.xml_bak" << 3 << false;
    QTest::newRow("temporary file of a database") << "data.db3-journal" << 3 << true;
    QTest::newRow("anything else") << "picture.jpg" << 3 << true;
}

void tst_ProjectFolderScan::namesDecideWhatIsLeftOut()
{
    QFETCH(QString, name);
    QFETCH(int, bytes);
    QFETCH(bool, isSent);
    write(name, bytes);
    const QStringList expected = isSent ? QStringList{QLatin1Char('/') + name} : QStringList();
    QCOMPARE(scanned(root(), listingOf(QStringLiteral("project.xml"), 40)), expected);
}

void tst_ProjectFolderScan::projectFileInASubfolderIsComparedToo()
{
    write(QStringLiteral("sub/project.xml"), 40);
    QCOMPARE(scanned(root(), listingOf(QStringLiteral("project.xml"), 40)), QStringList());
    QCOMPARE(scanned(root()), QStringList{QStringLiteral("/sub/project.xml")});
}

void tst_ProjectFolderScan::otherFilesAreSentWhateverTheListingHolds()
{
    write(QStringLiteral("data.db3"), 40);
    write(QStringLiteral("a.jpg"), 40);
    auto listing = listingOf(QStringLiteral("data.db3"), 40);
    const QString picture = QStringLiteral("a.jpg");
    listing.insert(picture, listingOf(picture, 40).value(picture));
    QCOMPARE(scanned(root(), listing), (QStringList{QStringLiteral("/a.jpg"), QStringLiteral("/data.db3")}));
}

void tst_ProjectFolderScan::relativePathFollowsTheProjectPath_data()
{
    QTest::addColumn<QString>("written"); // behind the temporary folder
    QTest::addColumn<QString>("expected");
    QTest::newRow("without trailing separator") << "/project" << "/sub/a.txt";
    QTest::newRow("with trailing separator") << "/project/" << "sub/a.txt";
    QTest::newRow("with two separators inside") << "//project" << "/sub/a.txt";
    QTest::newRow("with a detour") << "/project/../project" << "/sub/a.txt";
    QTest::newRow("with a dot") << "/./project" << "/sub/a.txt";
    QTest::newRow("with a dot at its end") << "/project/." << "/sub/a.txt";
}

void tst_ProjectFolderScan::relativePathFollowsTheProjectPath()
{
    QFETCH(QString, written);
    QFETCH(QString, expected);
    write(QStringLiteral("sub/a.txt"));
    QCOMPARE(scanned(temporary->path() + written), QStringList{expected});
}

void tst_ProjectFolderScan::relativeProjectPathIsCutAsAnAbsoluteOne()
{
    write(QStringLiteral("sub/a.txt"));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(temporary->path()));
    const QStringList found = scanned(QStringLiteral("project"));
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(found, QStringList{QStringLiteral("/sub/a.txt")});
}

void tst_ProjectFolderScan::folderThatLeadsBackUpIsSkipped()
{
    write(QStringLiteral("sub/deeper/a.txt"));
    QVERIFY(QFile::link(root(), root() + QStringLiteral("/sub/deeper/up")));
    QVERIFY(QFile::link(root() + QStringLiteral("/sub"), root() + QStringLiteral("/sub/self")));
    QCOMPARE(scanned(root()), QStringList{QStringLiteral("/sub/deeper/a.txt")});
}

void tst_ProjectFolderScan::linkedFolderNextToItIsScanned()
{
    write(QStringLiteral("real/a.txt"));
    QVERIFY(QFile::link(root() + QStringLiteral("/real"), root() + QStringLiteral("/linked")));
    QCOMPARE(scanned(root()), (QStringList{QStringLiteral("/linked/a.txt"), QStringLiteral("/real/a.txt")}));
}

void tst_ProjectFolderScan::brokenLinksAreLeftOut()
{
    write(QStringLiteral("a.txt"));
    QVERIFY(QFile::link(root() + QStringLiteral("/gone"), root() + QStringLiteral("/broken.txt")));
    QCOMPARE(scanned(root()), QStringList{QStringLiteral("/a.txt")});
}

void tst_ProjectFolderScan::folderThatCannotBeReadIsTold()
{
    write(QStringLiteral("a.txt"));
    write(QStringLiteral("locked/b.txt"));
    write(QStringLiteral("open/c.txt"));
    const QString locked = root() + QStringLiteral("/locked");
    QVERIFY(QFile::setPermissions(temporary->path(), QFile::Permissions(0x7755)));
    QVERIFY(QFile::setPermissions(locked, QFile::Permissions()));
    ProjectFolderScan scan(root(), {});
    std::deque<LocalUploadFile> files;
    {
        const Korvo::Web::TestSupport::WithoutPrivileges nobody;
        files = scan.run();
    }
    QVERIFY(QFile::setPermissions(locked, QFile::Permissions(0x7700)));
    QCOMPARE(int(files.size()), 2);
    QCOMPARE(scan.unreadableFolders(), QStringList{locked});
}

void tst_ProjectFolderScan::fileThatCannotBeNamedIsToldByItsFolder()
{
    write(QStringLiteral("sub/a.txt"));
    write(QStringLiteral("z.txt"));
    const QByteArray unnamed = QFile::encodeName(root()) + "/sub/\xff.txt";
    FILE *const file = fopen(unnamed.constData(), "w");
    QVERIFY(file);
    fclose(file);
    ProjectFolderScan scan(root(), {});
    const auto files = scan.run();
    QVERIFY(unlink(unnamed.constData()) == 0); // QTemporaryDir would not see it
    QCOMPARE(int(files.size()), 2);
    QCOMPARE(scan.unreadableFolders(), QStringList{root() + QStringLiteral("/sub")});
}

void tst_ProjectFolderScan::folderOfTooLongAPathIsTold()
{
    constexpr int DEPTH = 20;
    const QString name(250, QLatin1Char('n'));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(root()));
    // Step by step: no path may be that long.
    int made = 0;
    while (made < DEPTH && mkdir(QFile::encodeName(name).constData(), 0755) == 0
           && chdir(QFile::encodeName(name).constData()) == 0)
        ++made;
    ProjectFolderScan scan(root(), {});
    const auto files = scan.run();
    for (int i = 0; i < made; ++i)
        QVERIFY(chdir("..") == 0 && rmdir(QFile::encodeName(name).constData()) == 0);
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(made, DEPTH);
    QVERIFY(files.empty());
    QCOMPARE(scan.unreadableFolders().size(), 1);
    QVERIFY(scan.unreadableFolders().first().size() > 4000);
}

void tst_ProjectFolderScan::pipesAreLeftOutAlsoBehindALink()
{
    write(QStringLiteral("a.txt"));
    QVERIFY(mkfifo(QFile::encodeName(root() + QStringLiteral("/pipe.txt")).constData(), 0644) == 0);
    QVERIFY(QFile::link(root() + QStringLiteral("/pipe.txt"), root() + QStringLiteral("/link.txt")));
    QCOMPARE(scanned(root()), QStringList{QStringLiteral("/a.txt")});
}

void tst_ProjectFolderScan::ownOrderOfTheFileSystemIsKeptAroundSubfolders()
{
    for (int i = 0; i < 30; ++i)
        write(i % 4 == 0 ? QStringLiteral("%1/inside.txt").arg(i) : QStringLiteral("%1").arg(i));
    QStringList expected;
    QDirIterator entries(root(), QDir::AllEntries | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        const QString path = entries.next();
        expected.append(entries.fileInfo().isDir() ? path + QStringLiteral("/inside.txt") : path);
    }
    QStringList paths;
    const auto files = ProjectFolderScan(root(), {}).run();
    for (const LocalUploadFile &file : files)
        paths.append(file.absolutePath());
    QCOMPARE(paths.size(), 30);
    QCOMPARE(paths, expected);
}

void tst_ProjectFolderScan::secondRunFindsTheSame()
{
    write(QStringLiteral("a.txt"));
    ProjectFolderScan scan(root(), {});
    QCOMPARE(int(scan.run().size()), 1);
    QCOMPARE(int(scan.run().size()), 1);
}

void tst_ProjectFolderScan::deepFoldersAreScanned()
{
    constexpr int DEPTH = 60;
    QString folder;
    for (int i = 0; i < DEPTH; ++i)
        folder += QStringLiteral("folder/");
    write(folder + QStringLiteral("a.txt"));
    QCOMPARE(scanned(root()), QStringList{QLatin1Char('/') + folder + QStringLiteral("a.txt")});
}

QTEST_GUILESS_MAIN(tst_ProjectFolderScan)

#include "tst_ProjectFolderScan.moc"
