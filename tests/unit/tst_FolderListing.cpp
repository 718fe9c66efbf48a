#include "transfer/FolderListing.h"

#include "WithoutPrivileges.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextCodec>
#include <QtTest/QTest>

#include <dirent.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

using namespace Korvo::Web;
using Korvo::Web::TestSupport::WithoutPrivileges;

namespace {

using Lister = bool (*)(const QString &, const EntryTaker &);
using Scene = bool (*)(const QByteArray &folder);

bool makeFile(const QByteArray &path, const QByteArray &content = "abc")
{
    QFile file;
    FILE *const handle = fopen(path.constData(), "w"); // QFile could not make a name that it cannot spell
    return handle && file.open(handle, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)
           && file.write(content) == content.size();
}

bool makeFolder(const QByteArray &path)
{
    return mkdir(path.constData(), 0755) == 0;
}

bool makeLink(const QByteArray &target, const QByteArray &path)
{
    return symlink(target.constData(), path.constData()) == 0;
}

bool makePipe(const QByteArray &path)
{
    return mkfifo(path.constData(), 0644) == 0;
}

// Bound by its name alone: the place for the path of a socket is short.
bool makeSocket(const QByteArray &folder, const char *name)
{
    const QString before = QDir::currentPath();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, name, sizeof(address.sun_path) - 1);
    const int socketHandle = socket(AF_UNIX, SOCK_STREAM, 0);
    const bool isMade = QDir::setCurrent(QFile::decodeName(folder))
                        && bind(socketHandle, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
    close(socketHandle);
    return QDir::setCurrent(before) && isMade;
}

/// "name size", or "name/" for a folder.
QString spelled(const FolderEntry &entry)
{
    const QString name = entry.name;
    if (entry.isFolder)
        return name + (entry.size == 0 ? QStringLiteral("/") : QStringLiteral("/ with a size"));
    return name + QLatin1Char(' ') + QString::number(entry.size);
}

} // namespace

Q_DECLARE_METATYPE(Lister)
Q_DECLARE_METATYPE(Scene)

/// Each test runs with both implementations.
class tst_FolderListing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data();
    void init();
    void cleanup();

    void entriesAreTold_data();
    void entriesAreTold();
    void namesLeadBackToTheirFiles_data();
    void namesLeadBackToTheirFiles();
    void namesAreReadInTheEncodingOfTheSystem();
    void namesThatCannotBeSpelledAreMissed();
    void hiddenNamesAreNeverMissed();
    void orderIsThatOfTheFileSystem();
    void rootOfTheFileSystemIsAFolderToo();
    void folderThatMayNotBeReadIsMissed();
    void filesThatMayNotBeAskedHaveNoSize();
    void linkThatMayNotBeFollowedIsMissed();
    void folderThatIsRemovedMeanwhileIsNoFailure();

private:
    QByteArray root() const { return QFile::encodeName(temporary->path()) + "/folder"; }
    bool list(QStringList *entries) const;

    QScopedPointer<QTemporaryDir> temporary;
};

void tst_FolderListing::initTestCase_data()
{
    QTest::addColumn<Lister>("lister");
    QTest::addColumn<bool>("tellsAll"); // of what was missed
    QTest::newRow("by Qt") << Lister(listFolderByQt) << false;
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    QTest::newRow("by the standard library") << Lister(listFolderByStandardLibrary) << true;
#endif
}

void tst_FolderListing::init()
{
    temporary.reset(new QTemporaryDir);
    QVERIFY(temporary->isValid());
    QVERIFY(makeFolder(root()));
    QVERIFY(chmod(temporary->path().toLocal8Bit().constData(), 0755) == 0);
}

void tst_FolderListing::cleanup()
{
    temporary.reset();
}

bool tst_FolderListing::list(QStringList *entries) const
{
    QFETCH_GLOBAL(Lister, lister);
    const bool isWhole
        = lister(QFile::decodeName(root()), [&](const FolderEntry &entry) { entries->append(spelled(entry)); });
    entries->sort();
    return isWhole;
}

void tst_FolderListing::entriesAreTold_data()
{
    QTest::addColumn<Scene>("scene");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, Scene scene, const QStringList &expected = {}) {
        QTest::newRow(name) << scene << expected;
    };
    row("empty folder", [](const QByteArray &) { return true; });
    row("no folder", [](const QByteArray &folder) { return rmdir(folder.constData()) == 0; });
    row("file in place of the folder",
        [](const QByteArray &folder) { return rmdir(folder.constData()) == 0 && makeFile(folder); });
    row("link to itself in place of the folder",
        [](const QByteArray &folder) { return rmdir(folder.constData()) == 0 && makeLink(folder, folder); });
    row("files of all sizes",
        [](const QByteArray &folder) {
            return makeFile(folder + "/empty", "") && makeFile(folder + "/three")
                   && makeFile(folder + "/more", QByteArray(5000, 'x'));
        },
        {QStringLiteral("empty 0"), QStringLiteral("more 5000"), QStringLiteral("three 3")});
    row("folders are not entered",
        [](const QByteArray &folder) { return makeFolder(folder + "/sub") && makeFile(folder + "/sub/inside"); },
        {QStringLiteral("sub/")});
    row("hidden entries",
        [](const QByteArray &folder) {
            return makeFile(folder + "/.hidden") && makeFolder(folder + "/.folder") && makeFile(folder + "/...")
                   && makeLink("shown.", folder + "/.link") && makeFile(folder + "/shown.");
        },
        {QStringLiteral("shown. 3")});
    row("links to a file and to a folder",
        [](const QByteArray &folder) {
            return makeFile(folder + "/file", "12345") && makeFolder(folder + "/sub") && makeLink("file", folder + "/a")
                   && makeLink(folder + "/sub", folder + "/b") && makeLink("a", folder + "/c");
        },
        {QStringLiteral("a 5"), QStringLiteral("b/"), QStringLiteral("c 5"), QStringLiteral("file 5"),
         QStringLiteral("sub/")});
    row("link that leads up", [](const QByteArray &folder) { return makeLink("..", folder + "/up"); },
        {QStringLiteral("up/")});
    row("links that lead nowhere", [](const QByteArray &folder) {
        return makeLink("gone", folder + "/a") && makeLink("b", folder + "/b")
               && makeLink("/dev/null/c", folder + "/c");
    });
    row("pipe, socket and device", [](const QByteArray &folder) {
        return makePipe(folder + "/pipe") && makeSocket(folder, "socket") && makeLink("pipe", folder + "/to a pipe")
               && makeLink("socket", folder + "/to a socket") && makeLink("/dev/null", folder + "/to a device");
    });
}

void tst_FolderListing::entriesAreTold()
{
    QFETCH(Scene, scene);
    QVERIFY(scene(root()));
    QStringList entries;
    QVERIFY(list(&entries));
    QTEST(entries, "expected");
}

void tst_FolderListing::namesLeadBackToTheirFiles_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("blanks") << QByteArray(" a  b ");
    QTest::newRow("line breaks") << QByteArray("a\nb\r\n");
    QTest::newRow("quotes") << QByteArray("\"'`");
    QTest::newRow("backslash") << QByteArray("a\\b");
    QTest::newRow("wildcards") << QByteArray("*?[a]{b}");
    QTest::newRow("marks of an address") << QByteArray("%41#?&+");
    QTest::newRow("control characters") << QByteArray("\x01\x1a\x7f");
    QTest::newRow("umlauts") << QByteArray("Übersicht ß");
    QTest::newRow("umlaut in two parts") << QByteArray("U\xcc\x88");
    QTest::newRow("beyond the first plane") << QByteArray("\xf0\x9f\x98\x80");
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbfname");
    QTest::newRow("replacement character") << QByteArray("\xef\xbf\xbd");
    QTest::newRow("long") << QByteArray(255, 'n');
    QTest::newRow("long, of umlauts") << QByteArray("ä").repeated(127);
    QTest::newRow("drive") << QByteArray("C:");
    QTest::newRow("resource") << QByteArray(":");
}

void tst_FolderListing::namesLeadBackToTheirFiles()
{
    QFETCH_GLOBAL(Lister, lister);
    QFETCH(QByteArray, name);
    for (const QByteArray &path : {root() + "/Folder", root() + "/Ordner ü"}) {
        QVERIFY(makeFolder(path));
        QVERIFY(makeFile(path + '/' + name, name));
        QStringList names;
        QVERIFY(lister(QFile::decodeName(path), [&](const FolderEntry &entry) { names.append(entry.name); }));
        QCOMPARE(names, QStringList{QFile::decodeName('/' + name).mid(1)});
        QFile file(QFile::decodeName(path) + QLatin1Char('/') + names.first());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), name);
    }
}

void tst_FolderListing::namesAreReadInTheEncodingOfTheSystem()
{
    QTextCodec *const before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const QByteArray path = root() + "/\xdf";
    const bool isMade = makeFile(path);
    QStringList entries;
    const bool isWhole = list(&entries);
    QTextCodec::setCodecForLocale(before);
    QVERIFY(isMade);
    QVERIFY(unlink(path.constData()) == 0); // QTemporaryDir would not see it
    QVERIFY(isWhole);
    QCOMPARE(entries, QStringList{QStringLiteral("ß 3")});
}

void tst_FolderListing::namesThatCannotBeSpelledAreMissed()
{
    QFETCH_GLOBAL(bool, tellsAll);
    QVERIFY(makeFile(root() + "/good"));
    for (const char *name : {"/stra\xdf"
                             "e",
                             "/\xff", "/cut off \xc3", "/surrogate \xed\xa0\x80", "/too long \xc0\xaf"}) {
        QVERIFY(makeFile(root() + name));
        QStringList entries;
        QCOMPARE(list(&entries), !tellsAll);
        QCOMPARE(entries, QStringList{QStringLiteral("good 3")});
        QVERIFY(unlink((root() + name).constData()) == 0);
    }
    QVERIFY(makeFolder(root() + "/\xff"));
    QStringList entries;
    QCOMPARE(list(&entries), !tellsAll);
    QCOMPARE(entries, QStringList{QStringLiteral("good 3")});
    QVERIFY(rmdir((root() + "/\xff").constData()) == 0); // QTemporaryDir would not see it
}

void tst_FolderListing::hiddenNamesAreNeverMissed()
{
    QVERIFY(makeFile(root() + "/.\xff"));
    QVERIFY(makePipe(root() + "/\xff"));
    QStringList entries;
    const bool isWhole = list(&entries);
    QVERIFY(unlink((root() + "/.\xff").constData()) == 0);
    QVERIFY(unlink((root() + "/\xff").constData()) == 0);
    QVERIFY(isWhole);
    QCOMPARE(entries, QStringList());
}

void tst_FolderListing::orderIsThatOfTheFileSystem()
{
    QFETCH_GLOBAL(Lister, lister);
    constexpr int ENTRIES = 60;
    for (int i = 0; i < ENTRIES; ++i) {
        const QByteArray path = root() + '/' + QByteArray::number(i * 7919 % 1009);
        QVERIFY(i % 3 == 0 ? makeFolder(path) : makeFile(path));
    }
    QByteArrayList expected;
    DIR *const folder = opendir(root().constData());
    QVERIFY(folder);
    while (const dirent *entry = readdir(folder)) {
        if (entry->d_name[0] != '.')
            expected.append(entry->d_name);
    }
    closedir(folder);
    QByteArrayList names;
    QVERIFY(lister(QFile::decodeName(root()),
                   [&](const FolderEntry &entry) { names.append(QFile::encodeName(entry.name)); }));
    QCOMPARE(names.size(), ENTRIES);
    QCOMPARE(names, expected);
}

void tst_FolderListing::rootOfTheFileSystemIsAFolderToo()
{
    QFETCH_GLOBAL(Lister, lister);
    QStringList names;
    lister(QStringLiteral("/"), [&](const FolderEntry &entry) { names.append(entry.name); });
    QVERIFY(names.contains(QStringLiteral("usr")));
}

void tst_FolderListing::folderThatMayNotBeReadIsMissed()
{
    QVERIFY(makeFile(root() + "/file"));
    QVERIFY(chmod(root().constData(), 0311) == 0);
    QStringList entries;
    bool isWhole = true;
    {
        const WithoutPrivileges nobody;
        isWhole = list(&entries);
    }
    QVERIFY(chmod(root().constData(), 0755) == 0);
    QVERIFY(!isWhole);
    QCOMPARE(entries, QStringList());
}

void tst_FolderListing::filesThatMayNotBeAskedHaveNoSize()
{
    QVERIFY(makeFile(root() + "/file"));
    QVERIFY(makeFolder(root() + "/sub"));
    QVERIFY(chmod(root().constData(), 0644) == 0);
    QStringList entries;
    bool isWhole = false;
    {
        const WithoutPrivileges nobody;
        isWhole = list(&entries);
    }
    QVERIFY(chmod(root().constData(), 0755) == 0);
    QVERIFY(isWhole);
    QCOMPARE(entries, (QStringList{QStringLiteral("file 0"), QStringLiteral("sub/")}));
}

void tst_FolderListing::linkThatMayNotBeFollowedIsMissed()
{
    QFETCH_GLOBAL(bool, tellsAll);
    const QByteArray locked = root() + "/.locked";
    QVERIFY(makeFolder(locked));
    QVERIFY(makeFile(locked + "/file"));
    QVERIFY(makeLink(".locked/file", root() + "/link"));
    QVERIFY(makeFile(root() + "/open"));
    QVERIFY(chmod(locked.constData(), 0) == 0);
    QStringList entries;
    bool isWhole = false;
    {
        const WithoutPrivileges nobody;
        isWhole = list(&entries);
    }
    QVERIFY(chmod(locked.constData(), 0755) == 0);
    QCOMPARE(isWhole, !tellsAll);
    QCOMPARE(entries, QStringList{QStringLiteral("open 3")});
}

void tst_FolderListing::folderThatIsRemovedMeanwhileIsNoFailure()
{
    QFETCH_GLOBAL(Lister, lister);
    constexpr int FILES = 2000; // more than the system hands over at once
    for (int i = 0; i < FILES; ++i)
        QVERIFY(makeFile(root() + "/a file with a long name " + QByteArray::number(i)));
    int taken = 0;
    bool isGone = true;
    const bool isWhole = lister(QFile::decodeName(root()), [&](const FolderEntry &) {
        if (++taken == 1)
            isGone = QDir(QFile::decodeName(root())).removeRecursively();
    });
    QVERIFY(isGone);
    QVERIFY(isWhole);
    QVERIFY(taken < FILES);
}

QTEST_GUILESS_MAIN(tst_FolderListing)

#include "tst_FolderListing.moc"
