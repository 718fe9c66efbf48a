#include "transfer/DownloadPlan.h"

#include "support/LogCapture.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using Verdict = DownloadPlan::Verdict;
using PathRules = DownloadTarget::PathRules;

namespace {

RemoteFileEntry entryOf(const QString &key, qint64 size = 10, const QString &type = QStringLiteral("1"))
{
    RemoteFileEntry entry;
    entry.key = key;
    entry.fileName = key.mid(key.lastIndexOf(QLatin1Char('/')) + 1);
    entry.size = size;
    entry.type = type;
    return entry;
}

QStringList keysOf(const DownloadPlan &plan)
{
    QStringList keys;
    const auto files = plan.files();
    for (const RemoteFile &file : files)
        keys.append(file.key);
    return keys;
}

const QString SAME_NAME = QStringLiteral("Skipped a remote file, another one has the same local name: ");

const QString COPY = QStringLiteral("picture/sec/web/a.jpg");
const QString ORIGINAL = QStringLiteral("picture/sec/a.jpg");

} // namespace

class tst_DownloadPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void fileIsPlannedWithItsLocalPath();
    void filesKeepTheOrderOfTheListing();
    void entryIsJudged_data();
    void entryIsJudged();
    void refusedNameIsLogged();
    void unknownKindIsLogged();
    void fileThatIsThereIsSkipped();
    void secondFileOfOneLocalNameIsSkipped_data();
    void secondFileOfOneLocalNameIsSkipped();
    void namesThatDifferByLettersAreTwoFiles_data();
    void namesThatDifferByLettersAreTwoFiles();
    void originalGoesBeforeItsWebCopy();
    void webCopyThatCameFirstIsReplaced();
    void replacedCopyLeavesTheOthersInPlace();
    void originalThatIsThereReplacesTheCopyToo();
    void copyThatIsThereDoesNotStopTheOriginal();
    void originalThatIsThereStopsTheCopy();
    void fileHeldUnderItsKeyStandsInNobodysWay();
    void copyOfAVideoGivesWayToo();

private:
    DownloadPlan plan() const { return DownloadPlan(DownloadTarget(temporary->path())); }
    void makeFile(const QString &key, int bytes) const;

    QScopedPointer<QTemporaryDir> temporary;
    QScopedPointer<LogCapture> log;
};

void tst_DownloadPlan::init()
{
    temporary.reset(new QTemporaryDir);
    QVERIFY(temporary->isValid());
    log.reset(new LogCapture);
}

void tst_DownloadPlan::cleanup()
{
    log.reset();
    temporary.reset();
}

void tst_DownloadPlan::makeFile(const QString &key, int bytes) const
{
    const QString path = temporary->filePath(key);
    QVERIFY(QDir().mkpath(QFileInfo(path).absolutePath()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(QByteArray(bytes, 'x')), qint64(bytes));
}

void tst_DownloadPlan::fileIsPlannedWithItsLocalPath()
{
    DownloadPlan filled = plan();
    QCOMPARE(filled.add(entryOf(QStringLiteral("/x/a.txt"), 1234)), Verdict::Fetch);
    QCOMPARE(filled.files().size(), 1);
    const RemoteFile file = filled.files().first();
    QCOMPARE(file.key, QStringLiteral("/x/a.txt"));
    QCOMPARE(file.name, QStringLiteral("a.txt"));
    QCOMPARE(file.size, qint64(1234));
    QCOMPARE(file.localPath, temporary->path() + QStringLiteral("/x/a.txt"));
    QCOMPARE(log->messages(), QStringList());
}

void tst_DownloadPlan::filesKeepTheOrderOfTheListing()
{
    DownloadPlan filled = plan();
    const QStringList keys{QStringLiteral("z"), QStringLiteral("a"), QStringLiteral("m/b"), QStringLiteral("m/a")};
    for (const QString &key : keys)
        filled.add(entryOf(key));
    QCOMPARE(keysOf(filled), keys);
}

void tst_DownloadPlan::entryIsJudged_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<QString>("type");
    QTest::addColumn<int>("verdict");
    const auto row = [](const char *name, const char *key, qint64 size, const char *type, Verdict verdict) {
        QTest::newRow(name) << QString::fromUtf8(key) << size << QString::fromUtf8(type) << int(verdict);
    };
    row("file", "a.txt", 10, "1", Verdict::Fetch);
    row("file of one byte", "a.txt", 1, "1", Verdict::Fetch);
    row("empty file", "a.txt", 0, "1", Verdict::Skip);
    row("empty file with a hostile name", "../a.txt", 0, "1", Verdict::Skip);
    row("folder", "x", 10, "0", Verdict::Skip);
    row("folder with a hostile name", "../x", 10, "0", Verdict::Skip);
    row("other kind", "a.txt", 10, "2", Verdict::Unknown);
    row("no kind", "a.txt", 10, "", Verdict::Unknown);
    row("kind in words", "a.txt", 10, "File", Verdict::Unknown);
    row("web copy of a video", "x/video/sec/web/a.mp4", 10, "1", Verdict::Skip);
    row("web copy of a video with a hostile name", "../../video/sec/web/a.mp4", 10, "1", Verdict::Skip);
    row("original video", "video/sec/a.mp4", 10, "1", Verdict::Fetch);
    row("web copy of a picture", "picture/sec/web/a.jpg", 10, "1", Verdict::Fetch);
    row("hostile name", "../a.txt", 10, "1", Verdict::Refuse);
    row("no name", "", 10, "1", Verdict::Refuse);
    row("size that makes no sense", "a.txt", -10, "1", Verdict::Fetch);
}

void tst_DownloadPlan::entryIsJudged()
{
    QFETCH(QString, key);
    QFETCH(qint64, size);
    QFETCH(QString, type);
    QFETCH(int, verdict);
    DownloadPlan filled = plan();
    QCOMPARE(int(filled.add(entryOf(key, size, type))), verdict);
    QCOMPARE(filled.files().size(), verdict == int(Verdict::Fetch) ? 1 : 0);
    QCOMPARE(filled.replacedCopies(), 0);
}

void tst_DownloadPlan::refusedNameIsLogged()
{
    plan().add(entryOf(QStringLiteral("../../etc/passwd")));
    QCOMPARE(log->messages(), QStringList{QStringLiteral(
                                  "Refused a remote file, its name leads out of the download path: ../../etc/passwd")});
    QCOMPARE(log->entries().first().level, 1);
    QCOMPARE(log->entries().first().category, QStringLiteral("KorvoWeb"));
}

void tst_DownloadPlan::unknownKindIsLogged()
{
    plan().add(entryOf(QStringLiteral("a.txt"), 10, QStringLiteral("7")));
    QCOMPARE(log->messages(), QStringList{QStringLiteral("Remote entry is neither a file nor a folder: a.txt")});
}

void tst_DownloadPlan::fileThatIsThereIsSkipped()
{
    makeFile(QStringLiteral("same.txt"), 10);
    makeFile(QStringLiteral("shorter.txt"), 9);
    makeFile(QStringLiteral("longer.txt"), 11);
    DownloadPlan filled = plan();
    QCOMPARE(filled.add(entryOf(QStringLiteral("same.txt"))), Verdict::Skip);
    QCOMPARE(filled.add(entryOf(QStringLiteral("shorter.txt"))), Verdict::Fetch);
    QCOMPARE(filled.add(entryOf(QStringLiteral("longer.txt"))), Verdict::Fetch);
}

void tst_DownloadPlan::secondFileOfOneLocalNameIsSkipped_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::newRow("same key") << "x/a.txt" << "x/a.txt";
    QTest::newRow("leading separator") << "x/a.txt" << "/x/a.txt";
    QTest::newRow("empty part") << "x//a.txt" << "x/a.txt";
    QTest::newRow("detour") << "x/a.txt" << "y/../x/a.txt";
    QTest::newRow("trailing separator") << "x/a.txt/" << "x/a.txt";
    QTest::newRow("two copies") << "picture/sec/web/a.jpg" << "/picture/sec/web/a.jpg";
    QTest::newRow("media folder in a name") << "x/website" << "x/site";
}

void tst_DownloadPlan::secondFileOfOneLocalNameIsSkipped()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    DownloadPlan filled = plan();
    QCOMPARE(filled.add(entryOf(first)), Verdict::Fetch);
    QCOMPARE(filled.add(entryOf(second)), Verdict::Skip);
    QCOMPARE(keysOf(filled), QStringList{first});
    QCOMPARE(log->messages(), QStringList{SAME_NAME + second});
}

void tst_DownloadPlan::namesThatDifferByLettersAreTwoFiles_data()
{
    QTest::addColumn<int>("rules");
    QTest::addColumn<int>("verdict");
    QTest::newRow("posix") << int(PathRules::Posix) << int(Verdict::Fetch);
    QTest::newRow("windows") << int(PathRules::Windows) << int(Verdict::Skip);
}

void tst_DownloadPlan::namesThatDifferByLettersAreTwoFiles()
{
    QFETCH(int, rules);
    DownloadPlan filled(DownloadTarget(temporary->path(), PathRules(rules)));
    filled.add(entryOf(QStringLiteral("x/Ä.txt")));
    QTEST(int(filled.add(entryOf(QStringLiteral("X/ä.TXT")))), "verdict");
}

void tst_DownloadPlan::originalGoesBeforeItsWebCopy()
{
    DownloadPlan filled = plan();
    QCOMPARE(filled.add(entryOf(ORIGINAL)), Verdict::Fetch);
    QCOMPARE(filled.add(entryOf(COPY, 5)), Verdict::Skip);
    QCOMPARE(keysOf(filled), QStringList{ORIGINAL});
    QCOMPARE(filled.replacedCopies(), 0);
    QCOMPARE(log->messages(), QStringList{SAME_NAME + COPY});
}

void tst_DownloadPlan::webCopyThatCameFirstIsReplaced()
{
    DownloadPlan filled = plan();
    QCOMPARE(filled.add(entryOf(COPY, 5)), Verdict::Fetch);
    QCOMPARE(filled.add(entryOf(ORIGINAL)), Verdict::Fetch);
    QCOMPARE(filled.add(entryOf(QLatin1Char('/') + ORIGINAL)), Verdict::Skip);
    QCOMPARE(keysOf(filled), QStringList{ORIGINAL});
    QCOMPARE(filled.replacedCopies(), 1);
    QCOMPARE(log->messages(), (QStringList{SAME_NAME + COPY, SAME_NAME + QLatin1Char('/') + ORIGINAL}));
}

void tst_DownloadPlan::replacedCopyLeavesTheOthersInPlace()
{
    DownloadPlan filled = plan();
    filled.add(entryOf(QStringLiteral("first")));
    filled.add(entryOf(COPY));
    filled.add(entryOf(QStringLiteral("second")));
    filled.add(entryOf(QStringLiteral("picture/nod/web/b.jpg")));
    filled.add(entryOf(ORIGINAL));
    filled.add(entryOf(QStringLiteral("picture/nod/b.jpg")));
    QCOMPARE(keysOf(filled), (QStringList{QStringLiteral("first"), QStringLiteral("second"), ORIGINAL,
                                          QStringLiteral("picture/nod/b.jpg")}));
    QCOMPARE(filled.replacedCopies(), 2);
}

void tst_DownloadPlan::originalThatIsThereReplacesTheCopyToo()
{
    makeFile(ORIGINAL, 10);
    DownloadPlan filled = plan();
    QCOMPARE(filled.add(entryOf(COPY, 5)), Verdict::Fetch);
    QCOMPARE(filled.add(entryOf(ORIGINAL, 10)), Verdict::Skip);
    QCOMPARE(keysOf(filled), QStringList());
    QCOMPARE(filled.replacedCopies(), 1);
}

void tst_DownloadPlan::copyThatIsThereDoesNotStopTheOriginal()
{
    makeFile(ORIGINAL, 5); // where the copy was stored
    DownloadPlan filled = plan();
    QCOMPARE(filled.add(entryOf(COPY, 5)), Verdict::Skip);
    QCOMPARE(filled.add(entryOf(ORIGINAL, 10)), Verdict::Fetch);
    QCOMPARE(keysOf(filled), QStringList{ORIGINAL});
    QCOMPARE(filled.replacedCopies(), 0);
}

void tst_DownloadPlan::originalThatIsThereStopsTheCopy()
{
    makeFile(ORIGINAL, 10);
    DownloadPlan filled = plan();
    QCOMPARE(filled.add(entryOf(ORIGINAL, 10)), Verdict::Skip);
    QCOMPARE(filled.add(entryOf(COPY, 5)), Verdict::Skip);
    QCOMPARE(keysOf(filled), QStringList());
}

void tst_DownloadPlan::fileHeldUnderItsKeyStandsInNobodysWay()
{
    makeFile(QStringLiteral("docs/website.txt"), 10);
    DownloadPlan filled = plan();
    QCOMPARE(filled.add(entryOf(QStringLiteral("docs/website.txt"))), Verdict::Skip);
    QCOMPARE(filled.add(entryOf(QStringLiteral("docs/site.txt"))), Verdict::Fetch);
    QCOMPARE(keysOf(filled), QStringList{QStringLiteral("docs/site.txt")});
    QCOMPARE(log->messages(), QStringList());
}

void tst_DownloadPlan::copyOfAVideoGivesWayToo()
{
    DownloadPlan filled = plan();
    filled.add(entryOf(QStringLiteral("video/nod/web/a.mp4"), 5));
    filled.add(entryOf(QStringLiteral("video/nod/a.mp4")));
    QCOMPARE(keysOf(filled), QStringList{QStringLiteral("video/nod/a.mp4")});
    QCOMPARE(filled.replacedCopies(), 1);
}

QTEST_GUILESS_MAIN(tst_DownloadPlan)

#include "tst_DownloadPlan.moc"
