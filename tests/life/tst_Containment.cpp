#include "flow/Folders.h"
#include "flow/Session.h"
#include "support/HostileKeys.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"

#include <QtCore/QDirIterator>
#include <QtTest/QtTest>

#include <algorithm>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using namespace std::chrono_literals;

namespace {

const QByteArray SERVICE_PATH = "/korvoservice/";
const QByteArray LISTING_PATH = SERVICE_PATH + "api/bucket/listoffilesfromlocations";
const QByteArray EVIL = "evil";

QByteArray entry(const QString &key)
{
    return "<ObjectModel><FileName>f</FileName><Key>" + key.toHtmlEscaped().toUtf8() + "</Key><Size>"
           + QByteArray::number(EVIL.size()) + "</Size><Type>1</Type></ObjectModel>";
}

QByteArray listing(const QByteArray &entries)
{
    return "<L><Files>" + entries + "</Files></L>";
}

QByteArray listing(const QStringList &keys)
{
    QByteArray entries;
    for (const QString &key : keys)
        entries += entry(key);
    return listing(entries);
}

/// Everything below a folder but one part of it: files with their content, folders, and where links lead.
QStringList snapshot(const QString &root, const QString &leftOut)
{
    QStringList lines;
    QDirIterator entries(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QFileInfo info(entries.next());
        if (info.filePath() == leftOut || info.filePath().startsWith(leftOut + QLatin1Char('/')))
            continue;
        const QString content = info.isSymLink() ? info.symLinkTarget()
                                : info.isFile()  ? sha256(readFile(info.filePath()))
                                                 : QString();
        lines.append(info.filePath() + QLatin1Char(' ') + content);
    }
    lines.sort();
    return lines;
}

// Where absolute keys would lead; nobody else has such files.
QStringList evilFilesElsewhere()
{
    QStringList found;
    for (const char *folder : {"/", "/tmp/", "/dev/shm/", "/etc/", "/server/share/"}) {
        for (const char *name : {"evil.txt", "EVIL.TXT", "witness.txt", "evil.txt:stream", "nul.txt", "com1.db3"}) {
            const QString path = QLatin1String(folder) + QLatin1String(name);
            if (QFileInfo::exists(path))
                found.append(path);
        }
    }
    return found;
}

} // namespace

class tst_Containment : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void hostileKeysWriteNothingOutside_data();
    void hostileKeysWriteNothingOutside();
    void brokenKeysWriteNothingOutside_data();
    void brokenKeysWriteNothingOutside();
    void oddKeysArrive();

private:
    void download(ScriptedServer &server, const QByteArray &listing);
    void putLinks();
    int logged(const char *beginning) const;
    int lastValue(const QByteArray &signal) const;
    QString local(const char *path) const { return folder->filePath(QLatin1String(path)); }

    QScopedPointer<LogCapture> log;
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<Session> session;
    QString out;
};

// The folder of the process and the home of its user lie within sight, too.
void tst_Containment::init()
{
    log.reset(new LogCapture);
    folder.reset(new QTemporaryDir);
    out = local("deep/er/out");
    for (const char *witness : {"witness.txt", "deep/witness.txt", "deep/er/witness.txt", "deep/er/outside/witness.txt",
                                "home/witness.txt", "current/witness.txt", "target/witness.txt"})
        QVERIFY(writeFile(folder->path(), QLatin1String(witness), "witness"));
    QDir::setCurrent(local("current"));
    qputenv("HOME", QFile::encodeName(local("home")));
}

void tst_Containment::cleanup()
{
    session.reset();
    QDir::setCurrent(QDir::rootPath());
    folder.reset();
    log.reset();
}

void tst_Containment::putLinks()
{
    QVERIFY(QDir().mkpath(out + QStringLiteral("/deep")));
    for (const char *link : {"/link", "/deep/link", "/evil.txt.lnk"})
        QVERIFY(QFile::link(local("deep/er/outside"), out + QLatin1String(link)));
    QVERIFY(QFile::link(out, out + QStringLiteral("/loop")));
    QVERIFY(QFile::link(local("nowhere"), out + QStringLiteral("/dangling")));
    QVERIFY(QFile::link(local("deep/er/witness.txt"), out + QStringLiteral("/file")));
    QVERIFY(QFile::link(local("target"), out + QStringLiteral("/~")));
}

int tst_Containment::logged(const char *beginning) const
{
    const QStringList messages = log->messages();
    return int(std::count_if(messages.cbegin(), messages.cend(),
                             [&](const QString &message) { return message.startsWith(QLatin1String(beginning)); }));
}

int tst_Containment::lastValue(const QByteArray &signal) const
{
    const QList<QVariantList> all = session->signalsSeen().all(signal);
    return all.isEmpty() ? -1 : all.last().last().toInt();
}

// Whatever is asked for is answered, so that a file which should not be written would have content.
void tst_Containment::download(ScriptedServer &server, const QByteArray &listingAnswer)
{
    server.setDefaultAnswer(ScriptedAnswer::ok(EVIL));
    server.always(LISTING_PATH, ScriptedAnswer::ok(listingAnswer));
    session.reset(new Session);
    session->api().downloadProject(QStringLiteral("p"), QStringLiteral("p"), out);
    QVERIFY(session->signalsSeen().waitFor("downloadActiveChanged", 2, 60s));
    QVERIFY(session->settle());
}

void tst_Containment::hostileKeysWriteNothingOutside_data()
{
    QTest::addColumn<bool>("withLinks");
    QTest::newRow("empty folder") << false;
    QTest::newRow("links in the folder") << true;
}

void tst_Containment::hostileKeysWriteNothingOutside()
{
    QFETCH(bool, withLinks);
    const QStringList keys = hostileKeys(local("target"));
    QVERIFY2(keys.size() >= 300, qPrintable(QString::number(keys.size())));
    if (withLinks)
        putLinks();
    const QStringList before = snapshot(folder->path(), out);
    const QStringList elsewhere = evilFilesElsewhere();
    ScriptedServer server;
    const RouteToServer route(server);
    download(server, listing(keys));

    QCOMPARE(snapshot(folder->path(), out), before);
    QCOMPARE(evilFilesElsewhere(), elsewhere);
    // Every key was refused, passed over, told as an error, or has arrived below the folder.
    const int refused = logged("Refused a remote file, its name leads out of the download path: ");
    const int skipped = logged("Skipped a remote file, another one has the same local name: ");
    const int completed = lastValue("completedDownloadFilesChanged");
    const int failed = session->signalsSeen().errors().size() - refused;
    QCOMPARE(refused + skipped + completed + failed, keys.size());
    QVERIFY2(refused > 100 && completed > 100,
             qPrintable(QStringLiteral("%1 refused, %2 came").arg(refused).arg(completed)));
    for (const Error error : session->signalsSeen().errors())
        QVERIFY(error == Error::DownloadFolder || error == Error::FileOpen);
    std::fprintf(stderr,
                 "%d keys: %d refused, %d of the same name as another, %d not to be opened, %d stored in the folder\n",
                 keys.size(), refused, skipped, failed, completed);
}

void tst_Containment::brokenKeysWriteNothingOutside_data()
{
    QTest::addColumn<QByteArray>("key"); // as it stands in the XML
    QTest::newRow("zero by number") << QByteArray("../evil.txt&#0;.jpg");
    QTest::newRow("zero behind a good name") << QByteArray("good.txt&#0;/../../evil.txt");
    QTest::newRow("zero as it is") << QByteArray("../evil.txt\0.jpg", 16);
    QTest::newRow("dots by number") << QByteArray("&#46;&#46;/evil.txt");
    QTest::newRow("slash by number") << QByteArray("..&#47;..&#x2F;evil.txt");
    QTest::newRow("section") << QByteArray("<![CDATA[../../evil.txt]]>");
    QTest::newRow("comment between") << QByteArray("..<!-- -->/evil.txt");
    QTest::newRow("elements inside") << QByteArray("<a>../</a>evil.txt");
    QTest::newRow("overlong UTF-8") << QByteArray("..\xC0\xAF"
                                                  "evil.txt");
    QTest::newRow("single surrogate") << QByteArray("../\xED\xA0\x80/evil.txt");
    QTest::newRow("line breaks around") << QByteArray("\n../evil.txt\n");
    QTest::newRow("entity") << QByteArray("&dots;/evil.txt");
}

void tst_Containment::brokenKeysWriteNothingOutside()
{
    QFETCH(QByteArray, key);
    const QStringList before = snapshot(folder->path(), out);
    ScriptedServer server;
    const RouteToServer route(server);
    download(server, listing(entry(QStringLiteral("good.txt")) + entry(QStringLiteral("KEY")).replace("KEY", key)));
    QCOMPARE(snapshot(folder->path(), out), before);
    QCOMPARE(readFile(out + QStringLiteral("/good.txt")), EVIL);
}

// Through the local platform, which signs, stores and lists them by its own rules.
void tst_Containment::oddKeysArrive()
{
    const QStringList keys = oddKeys();
    QVERIFY(keys.size() >= 50);
    LocalPlatform platform;
    QCOMPARE(platform.start(), QString());
    QJsonArray objects;
    for (const QString &key : keys)
        objects.append(QJsonObject{{QStringLiteral("key"), key},
                                   {QStringLiteral("text"), QString(QStringLiteral("content of ") + key)}});
    platform.addProject(QStringLiteral("odd"), QStringLiteral("odd"), objects);
    session.reset(new Session);
    QVERIFY(session->logIn());
    session->api().downloadProject(QStringLiteral("odd"), QStringLiteral("odd"), out);
    QVERIFY(session->signalsSeen().waitFor("downloadFinished", 1, 60s));
    Tree expected;
    for (const QString &key : keys) {
        const QByteArray content = (QStringLiteral("content of ") + key).toUtf8();
        expected.insert(key, QString::number(content.size()) + QLatin1Char(' ') + sha256(content));
    }
    QCOMPARE(difference(expected, treeOf(out)), QString());
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(log->messages(), QStringList());
    std::fprintf(stderr, "%d odd keys arrived\n", keys.size());
}

QTEST_GUILESS_MAIN(tst_Containment)

#include "tst_Containment.moc"
