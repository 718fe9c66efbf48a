#include "Golden.h"
#include "Stage.h"
#include "flow/Folders.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

#include <sys/stat.h>

using namespace Korvo::Cli::Test;
using namespace Korvo::Web::TestSupport;

namespace {

constexpr int UNANSWERED_SECONDS = 10;

QJsonObject lastObject(const Result &result)
{
    return QJsonDocument::fromJson(result.lines().value(result.lines().size() - 1).toUtf8()).object();
}

// Who runs the tests as root can read everything but what the kernel only lets be written.
bool makeUnreadable(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.close();
    file.setPermissions(QFile::Permissions());
    if (!QFile(path).open(QIODevice::ReadOnly))
        return true;
    return file.remove() && QFile::link(QStringLiteral("/proc/sys/vm/compact_memory"), path);
}

} // namespace

class tst_KorvoWebFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(stage.start());
        project = stage.makeProject(QStringLiteral("Nordstadt"));
        QVERIFY(!project.isEmpty());
    }

    void cleanup()
    {
        stage.platform.clearFaults();
    }

    // Credentials

    void credentialsThatAreRefused()
    {
        const QStringList line = stage.withNetwork({QStringLiteral("login")});
        expect(run(line, stage.environment(Stage::USER, QStringLiteral("wrong"))), 3, "the platform refuses user or password");
        const QStringList withCode = stage.withNetwork(words("login --code-stdin"));
        expect(run(withCode, stage.environment(Stage::SECURE_USER, Stage::SECURE_PASSWORD), "654321\n"), 3,
               "the platform refuses user, password or code");
    }

    void credentialsThatAreMissing()
    {
        expect(run({QStringLiteral("login")}), 3, "no user name; give --user NAME, or set KORVOWEB_USER");
        expect(run(words("login --user x")), 3,
               "no password; set KORVOWEB_PASSWORD, give --password-stdin, or use a terminal");
        expect(run(words("login --user x --password-stdin")), 3,
               "standard input holds no password; it has to be its first line");
    }

    void secondFactorThatCannotBeAskedFor()
    {
        const QProcessEnvironment environment = stage.environment(Stage::SECURE_USER, Stage::SECURE_PASSWORD);
        const QString expected
            = QStringLiteral("the account asks for a second factor; use a terminal, or --code-stdin with the code");
        expect(run(stage.withNetwork({QStringLiteral("login")}), environment), 4, expected);
        expect(run(stage.withNetwork(words("login --code-stdin")), environment), 4, expected);
    }

    // Network and server

    void aProxyThatIsNotThere()
    {
        QStringList line = words("login --proxy 127.0.0.1:1 --ca") + QStringList{QString::fromStdString(stage.platform.authority())};
        expect(run(line, stage.environment()), 5,
               "no readable answer to the login; check the network, --proxy and --ca (Proxy connection refused)");
    }

    void aCertificateThatIsNotTrusted()
    {
        const QString expected = QStringLiteral("no secure connection: the certificate is not trusted, or something stands "
                                                "between; check --ca, --proxy and the clock");
        const QString proxy = QStringLiteral("127.0.0.1:%1").arg(stage.platform.proxyPort());
        expect(run({QStringLiteral("login"), QStringLiteral("--proxy"), proxy}, stage.environment()), 5, expected);
        for (const char *kind : {"certificateWrongHost", "certificateExpired", "certificateSelfSigned"}) {
            stage.platform.setFault({{"kind", kind}, {"host", "web.korvo.example"}, {"count", 0}});
            expect(stage.run({QStringLiteral("login")}), 5, expected);
        }
    }

    void aServerThatFails()
    {
        stage.platform.setFault({{"kind", "status"}, {"status", 500}, {"count", 0}, {"route", "api/Projects"}});
        const Result result = stage.run(words("projects --json"));
        QCOMPARE(result.exitCode, 6);
        QVERIFY2(result.err.startsWith(QLatin1String("korvoweb: the server reports a failure of its own; try again later")),
                 qPrintable(result.err));
        QCOMPARE(lastObject(result).value(QLatin1String("error")).toString(), QStringLiteral("Server"));
    }

    void aLoginThatIsNotAcceptedAnyMore()
    {
        stage.platform.setFault({{"kind", "expiredToken"}, {"route", "api/Projects"}});
        expect(stage.run({QStringLiteral("projects")}), 3, "the server does not accept the login (any more); try again");
    }

    void aServerThatNeverAnswers()
    {
        stage.platform.setFault({{"kind", "noAnswer"}, {"route", "api/Projects"}, {"count", 0}});
        expect(stage.run(words("projects --stall-timeout 1")), 5,
               "given up after 1 s without progress (--stall-timeout); check the network");
    }

    void aStandstillIsAnnounced()
    {
        stage.platform.setFault({{"kind", "noAnswer"}, {"route", "api/Projects"}, {"count", 0}});
        QElapsedTimer clock;
        clock.start();
        const Result result = stage.run(words("projects --stall-timeout 11"));
        QCOMPARE(result.exitCode, 5);
        QCOMPARE(result.out, QStringLiteral("No progress for 10 s; korvoweb gives up after 11 s, see --stall-timeout\n"));
        QVERIFY(clock.elapsed() >= UNANSWERED_SECONDS * 1000);
    }

    void whatThePlatformDoesNotHave()
    {
        const QString id = Stage::newId();
        const QString expected = QStringLiteral("the platform has nothing by that name");
        expect(stage.run({QStringLiteral("link"), id, QStringLiteral("x.jpg")}), 8, expected);
        expect(stage.run({QStringLiteral("links"), id}), 8, expected);
        const QString folder = stage.path(QStringLiteral("nothing"));
        const Result result = stage.run({QStringLiteral("download"), id, QStringLiteral("none"), folder, QStringLiteral("--quiet")});
        expect(result, 8, expected);
        QVERIFY(!QFileInfo::exists(folder));
    }

    void aProjectWithoutFiles()
    {
        const QString id = Stage::newId();
        stage.addProject(id, QStringLiteral("Bare"), nlohmann::json::array());
        const QString folder = stage.path(QStringLiteral("bare"));
        const Result result = stage.run({QStringLiteral("download"), id, QStringLiteral("Bare"), folder, QStringLiteral("--quiet")});
        expect(result, 8, "the platform lists no file there; give ID and BUCKET as \"korvoweb projects\" prints them");
        QVERIFY(!QFileInfo::exists(folder));
    }

    // Local files

    void foldersThatCannotBeUploaded_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("complaint");
        QTest::newRow("missing") << "missing" << "there is no folder <FOLDER>/missing";
        QTest::newRow("a file") << "Nordstadt/project.xml"
                                << "<FOLDER>/Nordstadt/project.xml is not a folder; give the project's folder, not a file in it";
        QTest::newRow("empty") << "hollow" << "<FOLDER>/hollow holds no file to upload";
        QTest::newRow("unreadable") << "closed" << "<FOLDER>/closed/a.txt cannot be read; check its rights; nothing was sent";
        QTest::newRow("no text") << "broken" << "<FOLDER>/broken/?.txt has a name that is no valid text; rename it; nothing was sent";
    }

    void foldersThatCannotBeUploaded()
    {
        QFETCH(QString, folder);
        QFETCH(QString, complaint);
        QVERIFY(QDir().mkpath(stage.path(QStringLiteral("hollow/in/there"))) && QDir().mkpath(stage.path(QStringLiteral("closed")))
                && QDir().mkpath(stage.path(QStringLiteral("broken"))));
        QVERIFY(QFile::exists(stage.path(QStringLiteral("closed/a.txt"))) || makeUnreadable(stage.path(QStringLiteral("closed/a.txt"))));
        const QByteArray notText = stage.path(QStringLiteral("broken/")).toUtf8() + "\xff.txt";
        FILE *file = std::fopen(notText.constData(), "w");
        QVERIFY(file);
        std::fclose(file);
        stage.newRequests();
        const Result result = stage.run(Stage::uploadArguments(stage.path(folder), Stage::newId()));
        QCOMPARE(result.exitCode, 7);
        QString err = steady(result.err, stage.folder());
        err.replace(QChar(QChar::ReplacementCharacter), QLatin1Char('?'));
        QCOMPARE(err, QStringLiteral("korvoweb: ") + complaint + QLatin1Char('\n'));
        QCOMPARE(stage.newRequests(), QStringList());
        std::remove(notText.constData()); // nobody else can
    }

    void whatIsNoFileIsLeftOutAndSaid()
    {
        const QString root = stage.path(QStringLiteral("odd"));
        QVERIFY(writeFile(root, QStringLiteral("a.txt"), "a"));
        QVERIFY(QFile::link(QStringLiteral("/nowhere/at/all"), root + QStringLiteral("/dangling")));
        QCOMPARE(::mkfifo(QFile::encodeName(root + QStringLiteral("/fifo")).constData(), 0600), 0);
        QVERIFY(QFile::link(root, root + QStringLiteral("/loop")));
        const Result result = stage.run(Stage::uploadArguments(root, Stage::newId()));
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(steady(result.err, stage.folder()),
                 QStringLiteral("korvoweb: <FOLDER>/odd/dangling is left out: it is no regular file\n"
                                "korvoweb: <FOLDER>/odd/fifo is left out: it is no regular file\n"));
        QVERIFY(result.out.contains(QLatin1String("1 file, 1 B")));
    }

    void manholeMediaThatCannotBeUsed()
    {
        const QStringList line = Stage::uploadArguments(project, Stage::newId()) + words("--kind quickview --manhole-media");
        expect(stage.run(line + QStringList{stage.path(QStringLiteral("no-list"))}), 7,
               "--manhole-media: <FOLDER>/no-list: No such file or directory");
        QVERIFY(writeFile(stage.folder(), QStringLiteral("list"), "Bilder/S02.jpg\n"));
        expect(stage.run(line + QStringList{stage.path(QStringLiteral("list"))}), 7,
               "--manhole-media: the folder holds no Bilder/S02.jpg; nothing was sent");
    }

    void authoritiesThatCannotBeUsed()
    {
        QVERIFY(writeFile(stage.folder(), QStringLiteral("not-pem"), "hello"));
        expect(run({QStringLiteral("login"), QStringLiteral("--ca"), stage.path(QStringLiteral("not-pem"))}, stage.environment()), 7,
               "--ca: <FOLDER>/not-pem: holds no certificate in PEM form");
        expect(run({QStringLiteral("login"), QStringLiteral("--ca"), stage.path(QStringLiteral("no-pem"))}, stage.environment()), 7,
               "--ca: <FOLDER>/no-pem: No such file or directory");
    }

    void foldersThatAreNotForDownloads()
    {
        const QStringList line = words("download 1 2");
        stage.newRequests();
        expect(stage.run(line + QStringList{project}), 7, "<FOLDER>/Nordstadt is not empty; give a new or empty folder");
        expect(stage.run(line + QStringList{project + QStringLiteral("/project.xml")}), 7,
               "<FOLDER>/Nordstadt/project.xml is not a folder; give a new or empty one");
        QVERIFY(writeFile(stage.folder(), QStringLiteral("hidden/.keep"), "x"));
        expect(stage.run(line + QStringList{stage.path(QStringLiteral("hidden"))}), 7,
               "<FOLDER>/hidden is not empty; give a new or empty folder");
        QCOMPARE(stage.newRequests(), QStringList());
    }

    void aFolderThatCannotBeMade()
    {
        const QString id = upload();
        const Result result = stage.run({QStringLiteral("download"), id, QStringLiteral("Nordstadt"),
                                         project + QStringLiteral("/project.xml/below"), QStringLiteral("--quiet")});
        QCOMPARE(result.exitCode, 7);
        QVERIFY2(result.err.contains(QLatin1String("a folder cannot be made")), qPrintable(result.err));
    }

    void filesThatAreNotReplaced()
    {
        const QString fifo = stage.path(QStringLiteral("pipe"));
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
        expect(stage.run({QStringLiteral("get"), QStringLiteral("https://web.korvo.example/x"), fifo}), 7,
               "<FOLDER>/pipe is no regular file; give another name");
        expect(stage.run({QStringLiteral("get"), QStringLiteral("https://web.korvo.example/x"), project}), 7,
               "<FOLDER>/Nordstadt is a folder; give the name of a file");
    }

    void aFileIsReplacedOnlyByAWholeOne()
    {
        const QString id = upload();
        const QString link = stage.run({QStringLiteral("link"), id, QStringLiteral("S01.mp4")}).lines().value(0);
        QVERIFY(writeFile(stage.folder(), QStringLiteral("kept/S01.mp4"), "what was there before"));
        stage.platform.setFault({{"kind", "cutBody"}, {"bytes", 1000000}, {"count", 0}});
        const Result result = stage.run({QStringLiteral("get"), link, stage.path(QStringLiteral("kept/S01.mp4"))});
        QCOMPARE(result.exitCode, 5);
        QVERIFY2(result.err.endsWith(QLatin1String("; nothing of the file is kept\n")), qPrintable(result.err));
        QCOMPARE(treeOf(stage.path(QStringLiteral("kept"))).keys(), QStringList{QStringLiteral("S01.mp4")});
        QCOMPARE(readFile(stage.path(QStringLiteral("kept/S01.mp4"))), QByteArray("what was there before"));
    }

    // Transfers

    void aFileThatFailsLeavesADownloadPartlyDone()
    {
        const QString id = Stage::newId();
        stage.addProject(id, QStringLiteral("Partly"), {{{"key", "a.txt"}, {"text", "a"}}, {{"key", "b.bin"}, {"size", 200000}},
                                                        {{"key", "../out.txt"}, {"text", "x"}}});
        stage.platform.setFault({{"kind", "cutBody"}, {"route", "webdav/*"}, {"bytes", 1000}, {"count", 0}});
        const QString folder = stage.path(QStringLiteral("partly"));
        const Result result = stage.run({QStringLiteral("download"), id, QStringLiteral("Partly"), folder, QStringLiteral("--json")});
        QCOMPARE(result.exitCode, 9);
        const QJsonObject last = lastObject(result);
        QCOMPARE(last.value(QLatin1String("outcome")).toString(), QStringLiteral("partly-done"));
        QCOMPARE(last.value(QLatin1String("filesCompleted")).toInt(), 1);
        QCOMPARE(last.value(QLatin1String("filesTotal")).toInt(), 2);
        QCOMPARE(last.value(QLatin1String("notWhole")).toVariant().toStringList(), QStringList{QStringLiteral("b.bin")});
        QVERIFY2(result.err.startsWith(QLatin1String("korvoweb: 1 of 2 files arrived, 2 failures, the first: ")), qPrintable(result.err));
        QVERIFY2(result.err.endsWith(QLatin1String("; not whole: b.bin\n")), qPrintable(result.err));
        QVERIFY(!QFileInfo::exists(stage.path(QStringLiteral("out.txt"))));
    }

    void aFailingFileEndsTheUploadAndSaysSo()
    {
        stage.platform.setFault({{"kind", "status"}, {"status", 503}, {"route", "api/bucket/putfile"}, {"count", 0}});
        const Result result = stage.run(Stage::uploadArguments(project, Stage::newId()) + words("--quiet"));
        QCOMPARE(result.exitCode, 5);
        QVERIFY2(result.err.endsWith(QLatin1String("; the upload is not complete on the server, run it again\n")), qPrintable(result.err));
    }

    void anEndThatIsNotConfirmedIsSaid()
    {
        stage.platform.setFault({{"kind", "status"}, {"status", 500}, {"route", "api/UploadProject/Uploaded"}, {"count", 0}});
        const Result result = stage.run(Stage::uploadArguments(project, Stage::newId()) + words("--quiet"));
        QCOMPARE(result.exitCode, 6);
        QVERIFY2(result.err.endsWith(QLatin1String("; every file has arrived, but the server did not confirm the end: look at "
                                                   "\"korvoweb status\"\n")),
                 qPrintable(result.err));
    }

    void aStalledUploadIsAbortedAndTheServerIsTold()
    {
        stage.platform.setFault({{"kind", "stallInRequest"}, {"route", "api/multipartupload/upload"}, {"count", 0}});
        const QString id = Stage::newId();
        stage.newRequests();
        const Result result = stage.run(Stage::uploadArguments(project, id) + words("--quiet --stall-timeout 1"));
        expect(result, 5, "given up after 1 s without progress (--stall-timeout); check the network; the server has been told "
                          "that the upload is cancelled");
        QVERIFY(stage.newRequests().contains(QStringLiteral("api/UploadProject/Cancel")));
        QCOMPARE(stage.statusOf(id), 3);
    }

    void aStalledDownloadKeepsWholeFilesOnly()
    {
        const QString id = Stage::newId();
        stage.addProject(id, QStringLiteral("Slow"), {{{"key", "a.txt"}, {"text", "a"}}, {{"key", "b.bin"}, {"size", 200000}}});
        stage.platform.setFault({{"kind", "stallInBody"}, {"route", "webdav/*"}, {"bytes", 1000}, {"count", 0}});
        const QString folder = stage.path(QStringLiteral("slow"));
        const Result result = stage.run({QStringLiteral("download"), id, QStringLiteral("Slow"), folder, QStringLiteral("--quiet"),
                                         QStringLiteral("--stall-timeout"), QStringLiteral("1")});
        expect(result, 5, "given up after 1 s without progress (--stall-timeout); check the network; 1 file of 2 arrived and stay "
                          "in <FOLDER>/slow");
        QCOMPARE(treeOf(folder).keys(), QStringList{QStringLiteral("a.txt")});
    }

    void outputThatIsFull()
    {
        for (const QString &command : words("projects login --help")) {
            QProcess bash;
            QStringList line{QStringLiteral("-c"), QStringLiteral("\"$@\" > /dev/full"), QStringLiteral("bash"),
                             QStringLiteral(KORVOWEB_PROGRAM)};
            bash.setProcessEnvironment(stage.environment());
            bash.start(QStringLiteral("bash"), line + stage.withNetwork({command}));
            QVERIFY(bash.waitForFinished());
            QCOMPARE(bash.exitCode(), 10);
        }
    }

    void aReaderThatLeavesEndsTheUpload()
    {
        stage.platform.setFault({{"kind", "tunnelBandwidth"}, {"bytesPerSecond", 2000000}, {"count", 0}});
        const QString id = Stage::newId();
        QProcess bash;
        bash.setProcessEnvironment(stage.environment());
        bash.start(QStringLiteral("bash"), QStringList{QStringLiteral("-c"), QStringLiteral("\"$@\" | head -n 2; exit ${PIPESTATUS[0]}"),
                                                       QStringLiteral("bash"), QStringLiteral(KORVOWEB_PROGRAM)}
                                               + stage.withNetwork(Stage::uploadArguments(project, id) + words("--json")));
        QVERIFY(bash.waitForFinished());
        QCOMPARE(bash.exitCode(), 10);
        QCOMPARE(QString::fromUtf8(bash.readAllStandardError()),
                 QStringLiteral("korvoweb: standard output takes no more; make its reader wait, or room on the disk; the server "
                                "has been told that the upload is cancelled\n"));
        QCOMPARE(stage.statusOf(id), 3);
    }

    // The last one: the platform does not come back.
    void aServerThatIsKilledEndsTheUpload()
    {
        stage.platform.setFault({{"kind", "tunnelBandwidth"}, {"bytesPerSecond", 2000000}, {"count", 0}});
        const QStringList line = stage.withNetwork(Stage::uploadArguments(project, Stage::newId())
                                                   + words("--json --stall-timeout 5"));
        RunningCommand command(line, stage.environment());
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"file\"")));
        stage.platform.killNow();
        const Result result = command.finish();
        QCOMPARE(result.exitCode, 5);
        QCOMPARE(result.err.count(QLatin1Char('\n')), 1);
        QVERIFY2(result.err.contains(QLatin1String("the upload is not complete on the server, run it again"))
                     || result.err.contains(QLatin1String("the server could not be told")),
                 qPrintable(result.err));
        QCOMPARE(lastObject(result).value(QLatin1String("outcome")).toString(), QStringLiteral("network"));
    }

private:
    void expect(const Result &result, int exitCode, const char *text) { expect(result, exitCode, QString::fromUtf8(text)); }

    // One line on standard error, and nothing else anywhere.
    void expect(const Result &result, int exitCode, const QString &text)
    {
        QCOMPARE(steady(result.all(), stage.folder()), QStringLiteral("exit %1\n\nkorvoweb: %2\n").arg(QString::number(exitCode), text));
    }

    QString upload()
    {
        const QString id = Stage::newId();
        const Result result = stage.run(Stage::uploadArguments(project, id));
        return result.exitCode == 0 ? id : QString();
    }

    Stage stage;
    QString project;
};

QTEST_GUILESS_MAIN(tst_KorvoWebFailures)
#include "tst_KorvoWebFailures.moc"
