#include "transfer/DownloadTarget.h"

#include "support/HostileKeys.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Korvo::Web;
using PathRules = DownloadTarget::PathRules;

namespace {

const QString REFUSED; // what localPath() answers
const QString ROOT = QStringLiteral("/downloads/project");

QString under(const QString &root, const QString &relative)
{
    return root + QLatin1Char('/') + relative;
}

void makeFile(const QString &path, int bytes)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).absolutePath()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(QByteArray(bytes, 'x')), qint64(bytes));
}

} // namespace

class tst_DownloadTarget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void keyNeverLeavesTheFolder_data();
    void keyNeverLeavesTheFolder();
    void generatedKeysNeverLeaveTheFolder_data();
    void generatedKeysNeverLeaveTheFolder();
    void folderMayBeWrittenInManyWays_data();
    void folderMayBeWrittenInManyWays();
    void relativeFolderMeansTheCurrentOne();
    void fileSystemRootIsAFolderToo();

    void webFolderIsTakenOutOfTheLocalForm_data();
    void webFolderIsTakenOutOfTheLocalForm();
    void webCopiesAreKnownByTheirKey_data();
    void webCopiesAreKnownByTheirKey();
    void copiesInPlaceOfTheirOriginalAreKnown_data();
    void copiesInPlaceOfTheirOriginalAreKnown();

    void linkedParentThatLeadsOutIsRefused();
    void linkedFileThatLeadsOutIsRefused();
    void brokenLinksAreRefused();
    void linkedParentInsideIsFollowed();
    void linkedDownloadFolderIsFollowed();
    void missingDownloadFolderIsNoReasonToRefuse();

    void fileOfTheListedSizeIsHeld();
    void pictureCopyIsLookedForUnderItsLocalForm();
    void otherFilesAreLookedForUnderTheirKey();
    void nothingOutsideIsHeld();
    void identityFollowsTheRules();

private:
    QString root() const { return temporary->path() + QStringLiteral("/project"); }
    QString outside() const { return temporary->path() + QStringLiteral("/outside"); }

    QScopedPointer<QTemporaryDir> temporary;
};

void tst_DownloadTarget::init()
{
    temporary.reset(new QTemporaryDir);
    QVERIFY(temporary->isValid());
    QVERIFY(QDir().mkpath(root()));
    QVERIFY(QDir().mkpath(outside()));
}

void tst_DownloadTarget::cleanup()
{
    temporary.reset();
}

namespace {

// A row for each set of rules: what follows the folder, or nothing when the key is refused.
void row(const char *name, const QString &key, const char *posix, const char *windows)
{
    const auto expected = [](const char *relative) { return relative ? under(ROOT, QString::fromUtf8(relative)) : REFUSED; };
    QTest::addRow("%s, posix", name) << key << int(PathRules::Posix) << expected(posix);
    QTest::addRow("%s, windows", name) << key << int(PathRules::Windows) << expected(windows);
}

void row(const char *name, const char *key, const char *posix, const char *windows)
{
    row(name, QString::fromUtf8(key), posix, windows);
}

void addEscapes()
{
    row("parent", "..", nullptr, nullptr);
    row("parent with separator", "../", nullptr, nullptr);
    row("parent behind a separator", "/..", nullptr, nullptr);
    row("parent behind many separators", "////..", nullptr, nullptr);
    row("file in the parent", "../a.txt", nullptr, nullptr);
    row("file in the parent of a folder that is not there", "x/../../a.txt", nullptr, nullptr);
    row("detour of many folders", "a/b/c/../../../../a.txt", nullptr, nullptr);
    row("many parents", "../../../../../../../../etc/passwd", nullptr, nullptr);
    row("many parents behind a separator", "/../../../../etc/passwd", nullptr, nullptr);
    row("dots between parents", "./.././../a.txt", nullptr, nullptr);
    row("empty parts between parents", "..//..//a.txt", nullptr, nullptr);
    row("sibling whose name begins alike", "../project2/a.txt", nullptr, nullptr);
    row("sibling whose name is longer by a separator less", "../projecta.txt", nullptr, nullptr);
    row("parent put together by the local form", "a/web../../a.txt", nullptr, nullptr);
    row("parent at the start put together by the local form", "/web../a.txt", nullptr, nullptr);
    row("parent between two media folders", "/web/../..", nullptr, nullptr);
    row("parent put together by two media folders", "x/web/web../../../a.txt", nullptr, nullptr);
    row("web copy of a picture in the parent", "picture/sec/web/../../../../a.jpg", nullptr, nullptr);
    row("the folder itself by its name", "../project", nullptr, nullptr);
    row("the folder itself by its name with separator", "../project/", nullptr, nullptr);
    row("the folder itself by a detour", "a/..", nullptr, nullptr);
    row("the folder itself by a dot", ".", nullptr, nullptr);
    row("the folder itself by a separator", "/", nullptr, nullptr);
    row("the folder itself by the local form", "/web", nullptr, nullptr);
    row("nothing", "", nullptr, nullptr);
    row("zero character at the end", QStringLiteral("a.txt") + QChar(QChar::Null), nullptr, nullptr);
    row("zero character before an extension", QStringLiteral("a.db3") + QChar(QChar::Null) + QStringLiteral(".jpg"),
        nullptr, nullptr);
    row("zero character alone", QString(QChar(QChar::Null)), nullptr, nullptr);
    row("zero character between dots", QStringLiteral(".") + QChar(QChar::Null) + QStringLiteral("./a"), nullptr, nullptr);
}

void addWindowsEscapes()
{
    row("parent behind a backslash", "a\\..\\..\\a.txt", "a\\..\\..\\a.txt", nullptr);
    row("parent with backslash", "..\\a.txt", "..\\a.txt", nullptr);
    row("parent with both separators", "a/..\\../a.txt", "a/..\\../a.txt", nullptr);
    row("parent behind a leading backslash", "\\..\\a.txt", "\\..\\a.txt", nullptr);
    row("backslash alone", "\\", "\\", nullptr);
    row("drive", "C:\\Windows\\a.txt", "C:\\Windows\\a.txt", nullptr);
    row("drive with slashes", "C:/Windows/a.txt", "C:/Windows/a.txt", nullptr);
    row("file relative to a drive", "C:a.txt", "C:a.txt", nullptr);
    row("drive alone", "C:", "C:", nullptr);
    row("drive in the middle", "x/C:/a.txt", "x/C:/a.txt", nullptr);
    row("long path prefix", "\\\\?\\C:\\a.txt", "\\\\?\\C:\\a.txt", nullptr);
    row("stream of a file", "a.txt:hidden", "a.txt:hidden", nullptr);
    row("stream with type", "a.txt::$DATA", "a.txt::$DATA", nullptr);
    row("stream of a folder", "x:$I30:$INDEX_ALLOCATION/a.txt", "x:$I30:$INDEX_ALLOCATION/a.txt", nullptr);
    row("resource", ":/a.txt", ":/a.txt", nullptr);
    row("address", "file:///etc/passwd", "file:/etc/passwd", nullptr);
    row("part of dots", ".../a.txt", ".../a.txt", nullptr);
    row("parent with a blank", ".. /a.txt", ".. /a.txt", nullptr);
    row("parent behind a blank", " ../a.txt", " ../a.txt", nullptr);
    row("folder that ends with a dot", "x./a.txt", "x./a.txt", nullptr);
    row("folder that ends with a blank", "x /a.txt", "x /a.txt", nullptr);
    row("file that ends with a dot", "a.txt.", "a.txt.", nullptr);
    row("file that ends with a blank", "a.txt ", "a.txt ", nullptr);
}

void addDevices()
{
    row("console", "CON", "CON", nullptr);
    row("console in small letters", "x/con", "x/con", nullptr);
    row("console with extension", "con.txt", "con.txt", nullptr);
    row("console with two extensions", "CoN.tar.gz", "CoN.tar.gz", nullptr);
    row("console with blank and extension", "con .txt", "con .txt", nullptr);
    row("console as a folder", "con/a.txt", "con/a.txt", nullptr);
    row("console with a line break in its extension", "con.a\nb", "con.a\nb", nullptr);
    row("console input", "CONIN$", "CONIN$", nullptr);
    row("console output", "conout$.txt", "conout$.txt", nullptr);
    row("printer", "prn.jpg", "prn.jpg", nullptr);
    row("auxiliary device", "AUX.db3", "AUX.db3", nullptr);
    row("null device", "sub\\NUL", "sub\\NUL", nullptr);
    row("serial port", "COM1", "COM1", nullptr);
    row("serial port in small letters", "com9.xml", "com9.xml", nullptr);
    row("serial port with a raised digit", "COM²", "COM²", nullptr);
    row("parallel port", "LPT1.txt", "LPT1.txt", nullptr);
    row("parallel port with a raised digit", "lpt³.txt", "lpt³.txt", nullptr);
    row("device put together by the local form", "x/webcon", "x/con", nullptr);
}

void addLegalKeys()
{
    row("plain name", "a.txt", "a.txt", "a.txt");
    row("leading separator", "/project.xml", "project.xml", "project.xml");
    row("many leading separators", "///a.txt", "a.txt", "a.txt");
    row("absolute path", "/etc/passwd", "etc/passwd", "etc/passwd");
    row("host name", "//server/share/a.txt", "server/share/a.txt", "server/share/a.txt");
    row("trailing separator", "x/", "x", "x");
    row("empty parts", "x//y///a.txt", "x/y/a.txt", "x/y/a.txt");
    row("dots as parts", "./x/./a.txt", "x/a.txt", "x/a.txt");
    row("detour inside", "x/../a.txt", "a.txt", "a.txt");
    row("out and in again", "../project/a.txt", "a.txt", "a.txt");
    row("backslash as separator", "x\\y\\a.txt", "x\\y\\a.txt", "x/y/a.txt");
    row("name that begins with two dots", "..a/b", "..a/b", "..a/b");
    row("name with two dots inside", "a..b/c..d", "a..b/c..d", "a..b/c..d");
    row("hidden name", ".hidden", ".hidden", ".hidden");
    row("umlauts and blanks", "Übersicht Köln/Straße 1.pdf", "Übersicht Köln/Straße 1.pdf", "Übersicht Köln/Straße 1.pdf");
    row("other scripts", "管道/видео.mp4", "管道/видео.mp4", "管道/видео.mp4");
    row("characters of addresses", "a & b #1 100% ?=+.txt", "a & b #1 100% ?=+.txt", "a & b #1 100% ?=+.txt");
    row("encoded parent is a name", "%2e%2e/a.txt", "%2e%2e/a.txt", "%2e%2e/a.txt");
    row("encoded separator is a name", "..%2fa.txt", "..%2fa.txt", "..%2fa.txt");
    row("wide separator is a name", "..／a.txt", "..／a.txt", "..／a.txt");
    row("home folder is a name", "~/a.txt", "~/a.txt", "~/a.txt");
    row("variable is a name", "$HOME/%TEMP%/a.txt", "$HOME/%TEMP%/a.txt", "$HOME/%TEMP%/a.txt");
    row("line break is a name", "a\nb.txt", "a\nb.txt", "a\nb.txt");
    row("quotation marks are a name", "a\"b'c.txt", "a\"b'c.txt", "a\"b'c.txt");
    row("blank at the start", " a.txt", " a.txt", " a.txt");
    row("name that begins like a device", "console.txt", "console.txt", "console.txt");
    row("name that ends like a device", "falcon", "falcon", "falcon");
    row("port of two digits", "COM10", "COM10", "COM10");
    row("port without digit", "com", "com", "com");
    row("device as an extension", "a.nul", "a.nul", "a.nul");
    row("name of 255 characters", QString(255, QLatin1Char('n')), QByteArray(255, 'n'), QByteArray(255, 'n'));
    row("web copy of a picture", "Picture/Sec/web/a.jpg", "Picture/Sec/a.jpg", "Picture/Sec/a.jpg");
    row("web copy in other letters keeps its folder", "x/Picture/Sec/Web/a.jpg", "x/Picture/Sec/Web/a.jpg",
        "x/Picture/Sec/Web/a.jpg");
}

} // namespace

void tst_DownloadTarget::keyNeverLeavesTheFolder_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("rules");
    QTest::addColumn<QString>("expected");
    addEscapes();
    addWindowsEscapes();
    addDevices();
    addLegalKeys();
}

void tst_DownloadTarget::keyNeverLeavesTheFolder()
{
    QFETCH(QString, key);
    QFETCH(int, rules);
    QTEST(DownloadTarget(ROOT, PathRules(rules)).localPath(key), "expected");
}

void tst_DownloadTarget::generatedKeysNeverLeaveTheFolder_data()
{
    QTest::addColumn<int>("rules");
    QTest::newRow("posix") << int(PathRules::Posix);
    QTest::newRow("windows") << int(PathRules::Windows);
}

// Whatever is let through lies below the folder, under names that mean nothing else to the system.
void tst_DownloadTarget::generatedKeysNeverLeaveTheFolder()
{
    QFETCH(int, rules);
    static const QRegularExpression unsafe(QStringLiteral("(^|/)\\.\\.?(/|$)"));
    static const QRegularExpression unsafeOnWindows(
        QStringLiteral("[:\\\\]|[. ](/|$)|(^|/)(con|nul|com[1-9]|lpt[1-9])(\\.[^/]*)?(/|$)"),
        QRegularExpression::CaseInsensitiveOption);
    const DownloadTarget target(ROOT, PathRules(rules));
    const QStringList keys = TestSupport::hostileKeys(QStringLiteral("/downloads/target"));
    QVERIFY(keys.size() >= 300);
    int refused = 0;
    for (const QString &key : keys) {
        const QString path = target.localPath(key);
        if (path == REFUSED) {
            ++refused;
            continue;
        }
        QVERIFY2(path.startsWith(ROOT + QLatin1Char('/')), qPrintable(key));
        const QString relative = path.mid(ROOT.size() + 1);
        QVERIFY2(!relative.contains(unsafe), qPrintable(key));
        QVERIFY2(PathRules(rules) == PathRules::Posix || !relative.contains(unsafeOnWindows), qPrintable(key));
    }
    QVERIFY(refused > 100 && refused < keys.size() - 20);
}

void tst_DownloadTarget::folderMayBeWrittenInManyWays_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("plain") << "/downloads/project";
    QTest::newRow("trailing separator") << "/downloads/project/";
    QTest::newRow("two separators") << "//downloads//project";
    QTest::newRow("detour") << "/downloads/x/../project";
    QTest::newRow("dot") << "/downloads/./project/.";
}

void tst_DownloadTarget::folderMayBeWrittenInManyWays()
{
    QFETCH(QString, folder);
    const DownloadTarget target(folder, PathRules::Posix);
    QCOMPARE(target.localPath(QStringLiteral("x/a.txt")), under(ROOT, QStringLiteral("x/a.txt")));
    QCOMPARE(target.localPath(QStringLiteral("../a.txt")), REFUSED);
}

void tst_DownloadTarget::relativeFolderMeansTheCurrentOne()
{
    const DownloadTarget target(QStringLiteral("somewhere"));
    QCOMPARE(target.localPath(QStringLiteral("a.txt")), under(QDir::currentPath(), QStringLiteral("somewhere/a.txt")));
    QCOMPARE(target.localPath(QStringLiteral("../a.txt")), REFUSED);
}

void tst_DownloadTarget::fileSystemRootIsAFolderToo()
{
    const DownloadTarget target(QStringLiteral("/"), PathRules::Posix);
    QCOMPARE(target.localPath(QStringLiteral("not there/a.txt")), QStringLiteral("/not there/a.txt"));
    QCOMPARE(target.localPath(QStringLiteral(".")), REFUSED);
}

void tst_DownloadTarget::webFolderIsTakenOutOfTheLocalForm_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected"); // "|" stands for the separator of the system
    QTest::newRow("picture") << "picture/sec/web/a.jpg" << "picture/sec|/a.jpg";
    QTest::newRow("at the start") << "/web/a.jpg" << "|/a.jpg";
    QTest::newRow("at the end") << "x/web" << "x|";
    QTest::newRow("twice") << "x/web/web/a" << "x||/a";
    QTest::newRow("beginning of a name") << "x/website/a" << "x|site/a";
    QTest::newRow("without separator before it") << "web/a" << "web/a";
    QTest::newRow("other letters") << "x/Web/a/WEB/b" << "x/Web/a/WEB/b";
    QTest::newRow("not there") << "x/a.jpg" << "x/a.jpg";
}

void tst_DownloadTarget::webFolderIsTakenOutOfTheLocalForm()
{
    QFETCH(QString, key);
    QFETCH(QString, expected);
    QCOMPARE(DownloadTarget::localForm(key), expected.replace(QLatin1Char('|'), QDir::separator()));
}

void tst_DownloadTarget::webCopiesAreKnownByTheirKey_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isVideo");
    QTest::addColumn<bool>("isPicture");
    QTest::newRow("video") << "video/sec/web/a.mp4" << true << false;
    QTest::newRow("video in a folder") << "x/video/sec/web/a.mp4" << true << false;
    QTest::newRow("video in other letters") << "Video/Sec/web/a.mp4" << false << false;
    QTest::newRow("video of a node") << "video/nod/web/a.mp4" << false << false;
    QTest::newRow("original of a video") << "video/sec/a.mp4" << false << false;
    QTest::newRow("picture of a section") << "picture/sec/web/a.jpg" << false << true;
    QTest::newRow("picture of a node") << "picture/nod/web/a.jpg" << false << true;
    QTest::newRow("picture in other letters") << "x/Picture/Sec/Web/a.jpg" << false << true;
    QTest::newRow("picture of a node in other letters") << "PICTURE/NOD/WEB/a.jpg" << false << true;
    QTest::newRow("name that goes on") << "picture/sec/website.jpg" << false << true;
    QTest::newRow("original of a picture") << "Picture/Sec/a.jpg" << false << false;
    QTest::newRow("folder of another kind") << "picture/web/a.jpg" << false << false;
}

void tst_DownloadTarget::webCopiesAreKnownByTheirKey()
{
    QFETCH(QString, key);
    QTEST(DownloadTarget::isVideoWebCopy(key), "isVideo");
    QTEST(DownloadTarget::isPictureWebCopy(key), "isPicture");
}

void tst_DownloadTarget::copiesInPlaceOfTheirOriginalAreKnown_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isInPlace");
    QTest::newRow("picture") << "picture/sec/web/a.jpg" << true;
    QTest::newRow("video of a node") << "video/nod/web/a.mp4" << true;
    QTest::newRow("at the start") << "/web/a.txt" << true;
    QTest::newRow("beginning of a name") << "docs/website/a.txt" << false;
    QTest::newRow("in other letters") << "video/nod/Web/a.mp4" << false;
    QTest::newRow("original") << "video/nod/a.mp4" << false;
}

void tst_DownloadTarget::copiesInPlaceOfTheirOriginalAreKnown()
{
    QFETCH(QString, key);
    QTEST(DownloadTarget::isInPlaceOfItsOriginal(key), "isInPlace");
}

void tst_DownloadTarget::linkedParentThatLeadsOutIsRefused()
{
    QVERIFY(QFile::link(outside(), under(root(), QStringLiteral("link"))));
    QVERIFY(QDir(outside()).mkpath(QStringLiteral("deep")));
    const DownloadTarget target(root());
    QCOMPARE(target.localPath(QStringLiteral("link/a.txt")), REFUSED);
    QCOMPARE(target.localPath(QStringLiteral("link/b.txt")), REFUSED); // remembered as what it is
    QCOMPARE(target.localPath(QStringLiteral("link/deep/a.txt")), REFUSED);
    QCOMPARE(target.localPath(QStringLiteral("link/not there/deeper/a.txt")), REFUSED);
    QCOMPARE(target.localPath(QStringLiteral("link")), REFUSED);
    QCOMPARE(target.localPath(QStringLiteral("linked/a.txt")), under(root(), QStringLiteral("linked/a.txt")));
    QCOMPARE(target.localPath(QStringLiteral("link/../a.txt")), under(root(), QStringLiteral("a.txt")));
}

void tst_DownloadTarget::linkedFileThatLeadsOutIsRefused()
{
    makeFile(under(outside(), QStringLiteral("secret.txt")), 3);
    QVERIFY(QFile::link(under(outside(), QStringLiteral("secret.txt")), under(root(), QStringLiteral("a.txt"))));
    const DownloadTarget target(root());
    QCOMPARE(target.localPath(QStringLiteral("good.txt")), under(root(), QStringLiteral("good.txt")));
    QCOMPARE(target.localPath(QStringLiteral("a.txt")), REFUSED); // in the same folder
}

void tst_DownloadTarget::brokenLinksAreRefused()
{
    QVERIFY(QFile::link(under(outside(), QStringLiteral("not yet.txt")), under(root(), QStringLiteral("a.txt"))));
    QVERIFY(QFile::link(under(outside(), QStringLiteral("not yet")), under(root(), QStringLiteral("folder"))));
    const DownloadTarget target(root());
    QCOMPARE(target.localPath(QStringLiteral("a.txt")), REFUSED);
    QCOMPARE(target.localPath(QStringLiteral("folder/a.txt")), REFUSED);
    QCOMPARE(target.localPath(QStringLiteral("folder/x/y/a.txt")), REFUSED);
}

void tst_DownloadTarget::linkedParentInsideIsFollowed()
{
    QVERIFY(QDir(root()).mkpath(QStringLiteral("real")));
    QVERIFY(QFile::link(under(root(), QStringLiteral("real")), under(root(), QStringLiteral("link"))));
    QVERIFY(QFile::link(root(), under(root(), QStringLiteral("real/up"))));
    const DownloadTarget target(root());
    QCOMPARE(target.localPath(QStringLiteral("link/a.txt")), under(root(), QStringLiteral("link/a.txt")));
    QCOMPARE(target.localPath(QStringLiteral("link/up/a.txt")), under(root(), QStringLiteral("link/up/a.txt")));
}

void tst_DownloadTarget::linkedDownloadFolderIsFollowed()
{
    const QString link = temporary->path() + QStringLiteral("/link to project");
    QVERIFY(QFile::link(root(), link));
    QVERIFY(QFile::link(outside(), under(root(), QStringLiteral("out"))));
    const DownloadTarget target(link);
    QCOMPARE(target.localPath(QStringLiteral("x/a.txt")), under(link, QStringLiteral("x/a.txt")));
    QCOMPARE(target.localPath(QStringLiteral("out/a.txt")), REFUSED);
}

void tst_DownloadTarget::missingDownloadFolderIsNoReasonToRefuse()
{
    const QString missing = under(root(), QStringLiteral("not/there"));
    QCOMPARE(DownloadTarget(missing).localPath(QStringLiteral("x/a.txt")), under(missing, QStringLiteral("x/a.txt")));
}

void tst_DownloadTarget::fileOfTheListedSizeIsHeld()
{
    makeFile(under(root(), QStringLiteral("x/a.txt")), 12);
    const DownloadTarget target(root());
    QVERIFY(target.holds(QStringLiteral("x/a.txt"), 12));
    QVERIFY(target.holds(QStringLiteral("/x//a.txt"), 12));
    QVERIFY(!target.holds(QStringLiteral("x/a.txt"), 11));
    QVERIFY(!target.holds(QStringLiteral("x/b.txt"), 12));
    QVERIFY(!target.holds(QStringLiteral("x"), QFileInfo(under(root(), QStringLiteral("x"))).size()));
}

void tst_DownloadTarget::pictureCopyIsLookedForUnderItsLocalForm()
{
    makeFile(under(root(), QStringLiteral("picture/sec/a.jpg")), 12);
    makeFile(under(root(), QStringLiteral("picture/sec/web/b.jpg")), 12);
    const DownloadTarget target(root());
    QVERIFY(target.holds(QStringLiteral("picture/sec/web/a.jpg"), 12));
    QVERIFY(!target.holds(QStringLiteral("picture/sec/web/b.jpg"), 12));
}

void tst_DownloadTarget::otherFilesAreLookedForUnderTheirKey()
{
    makeFile(under(root(), QStringLiteral("docs/website/a.txt")), 12);
    makeFile(under(root(), QStringLiteral("docs/site/b.txt")), 12);
    const DownloadTarget target(root());
    QVERIFY(target.holds(QStringLiteral("docs/website/a.txt"), 12));
    QVERIFY(!target.holds(QStringLiteral("docs/website/b.txt"), 12));
    QCOMPARE(target.heldPath(QStringLiteral("docs/website/a.txt"), 12), under(root(), QStringLiteral("docs/website/a.txt")));
    QCOMPARE(target.heldPath(QStringLiteral("docs/website/a.txt"), 13), QString());
}

void tst_DownloadTarget::nothingOutsideIsHeld()
{
    makeFile(under(outside(), QStringLiteral("a.txt")), 12);
    QVERIFY(!DownloadTarget(root()).holds(QStringLiteral("../outside/a.txt"), 12));
    QVERIFY(!DownloadTarget(root()).holds(QString(), 12));
}

void tst_DownloadTarget::identityFollowsTheRules()
{
    const DownloadTarget posix(ROOT, PathRules::Posix);
    const DownloadTarget windows(ROOT, PathRules::Windows);
    const QString lower = under(ROOT, QStringLiteral("straße ü.txt"));
    const QString upper = under(ROOT, QStringLiteral("Straße Ü.TXT"));
    QVERIFY(posix.identity(lower) != posix.identity(upper));
    QCOMPARE(windows.identity(lower), windows.identity(upper));
    QCOMPARE(posix.identity(lower), posix.identity(lower));
}

QTEST_GUILESS_MAIN(tst_DownloadTarget)

#include "tst_DownloadTarget.moc"
