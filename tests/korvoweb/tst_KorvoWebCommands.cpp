#include "Golden.h"
#include "Stage.h"
#include "flow/Folders.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

using namespace Korvo::Cli::Test;
using namespace Korvo::Web::TestSupport;

namespace {

const QString ID = QStringLiteral("6f9d0c52-7a6a-4f7e-9a57-0d2f1f2b8f11");

QJsonObject lastObject(const Result &result)
{
    return QJsonDocument::fromJson(result.lines().value(result.lines().size() - 1).toUtf8()).object();
}

// Each kind of event once, in the order of its first coming.
QStringList eventKinds(const Result &result)
{
    QStringList kinds;
    for (const QString &line : result.lines())
        kinds.append(QJsonDocument::fromJson(line.toUtf8()).object().value(QLatin1String("event")).toString());
    kinds.removeDuplicates();
    return kinds;
}

} // namespace

class tst_KorvoWebCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(stage.start());
        project = stage.makeProject(QStringLiteral("Nordstadt"));
        QVERIFY(!project.isEmpty());
    }

    void loginPrintsWhoItIs()
    {
        const Result result = stage.run({QStringLiteral("login")});
        QCOMPARE(result.all(), QStringLiteral("exit 0\nuser     inspector@korvo.example\nname     Ida Weiß\n"
                                              "company  korvo-company-01\nrole     CompanyOperator\n\n"));
        QCOMPARE(differenceToGolden(QStringLiteral("login.json"), stage.run(words("login --json")).out), QString());
    }

    void secondFactorComesFromInput()
    {
        const QStringList line = stage.withNetwork(words("login --code-stdin --quiet"));
        const QProcessEnvironment environment = stage.environment(Stage::SECURE_USER, Stage::SECURE_PASSWORD);
        QCOMPARE(run(line, environment, "123456\n").exitCode, 0);
        // Without a line end at the end, and with that of another system.
        QCOMPARE(run(line, environment, "123456").exitCode, 0);
        QCOMPARE(run(line, environment, "123456\r\n").exitCode, 0);
    }

    void passwordAndSecondFactorComeFromInput()
    {
        QProcessEnvironment environment = stage.environment(Stage::SECURE_USER, QStringLiteral("not this one"));
        const QStringList line = stage.withNetwork(words("login --password-stdin --code-stdin --json"));
        const Result result = run(line, environment, "Second-Factor-1\n123456\n");
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(eventKinds(result), words("secondFactor loggedIn result"));
    }

    void uploadAndDownloadBringEveryFileBack()
    {
        const Result upload = stage.run(Stage::uploadArguments(project, ID) + words("--jobs 2"));
        QCOMPARE(upload.err, QString());
        QCOMPARE(upload.exitCode, 0);
        QCOMPARE(differenceToGolden(QStringLiteral("upload.txt"), steady(upload.out, stage.folder())), QString());
        QCOMPARE(stage.statusOf(ID), 2);

        const QString copy = stage.path(QStringLiteral("copy"));
        const Result download = stage.run({QStringLiteral("download"), ID, QStringLiteral("Nordstadt"), copy});
        QCOMPARE(download.err, QString());
        QCOMPARE(download.exitCode, 0);
        QCOMPARE(differenceToGolden(QStringLiteral("download.txt"), steady(download.out, stage.folder())), QString());
        QCOMPARE(difference(treeAfterRoundTrip(treeOf(project)), treeOf(copy)), QString());
    }

    void theServerKnowsOfTheEndWhenTheProgramEnds()
    {
        const QString id = Stage::newId();
        stage.newRequests();
        QCOMPARE(stage.run(Stage::uploadArguments(project, id)).exitCode, 0);
        const QStringList requests = stage.newRequests();
        QVERIFY(requests.contains(QStringLiteral("api/UploadProject/Uploaded")));
        QCOMPARE(stage.statusOf(id), 2);
    }

    void uploadTellsEveryEventInJson()
    {
        const Result result = stage.run(Stage::uploadArguments(project, ID) + words("--json --jobs 1"));
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(eventKinds(result), words("loggedIn file progress uploaded result"));
        const QString last = result.lines().value(result.lines().size() - 1);
        QCOMPARE(differenceToGolden(QStringLiteral("upload.json"), steady(last) + QLatin1Char('\n')), QString());
        const Result quiet = stage.run(Stage::uploadArguments(project, ID) + words("--json --quiet"));
        QCOMPARE(eventKinds(quiet), words("result"));
    }

    void downloadTellsEveryEventInJson()
    {
        const Result result = stage.run({QStringLiteral("download"), ID, QStringLiteral("Nordstadt"),
                                         stage.path(QStringLiteral("copy2")), QStringLiteral("--json")});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(eventKinds(result), words("loggedIn file progress result"));
        const QString last = result.lines().value(result.lines().size() - 1);
        QCOMPARE(differenceToGolden(QStringLiteral("download.json"), steady(last, stage.folder()) + QLatin1Char('\n')), QString());
    }

    void downloadsWithEveryNumberOfJobs()
    {
        for (int jobs = 1; jobs <= 6; ++jobs) {
            const QString folder = stage.path(QStringLiteral("jobs%1").arg(jobs));
            const Result result = stage.run({QStringLiteral("download"), ID, QStringLiteral("Nordstadt"), folder,
                                             QStringLiteral("--jobs"), QString::number(jobs), QStringLiteral("--quiet")});
            QCOMPARE(result.all(), QStringLiteral("exit 0\n\n"));
            QCOMPARE(treeOf(folder), treeOf(stage.path(QStringLiteral("copy2"))));
        }
    }

    void downloadsIntoAnEmptyFolder()
    {
        const QString folder = stage.path(QStringLiteral("empty"));
        QVERIFY(QDir().mkpath(folder));
        QCOMPARE(stage.run({QStringLiteral("download"), ID, QStringLiteral("Nordstadt"), folder}).exitCode, 0);
        QCOMPARE(treeOf(folder), treeOf(stage.path(QStringLiteral("copy2"))));
    }

    void projectsAreListedInOrder()
    {
        stage.addProject(QStringLiteral("00000000-0000-0000-0000-000000000001"), QStringLiteral("Ältere Straße"),
                         {{{"key", "a.txt"}, {"size", 1234}}});
        const Result result = stage.run({QStringLiteral("projects")});
        QVERIFY(result.lines().size() >= 3);
        QCOMPARE(result.lines().first().simplified(), QStringLiteral("ID CREATED SIZE BUCKET NAME"));
        QVERIFY2(result.out.contains(QRegularExpression(
                     QStringLiteral("00000000-0000-0000-0000-000000000001  \\S+ +1.2 kB +Ältere Straße +Ältere Straße\n"))),
                 qPrintable(result.out));
        const QJsonArray list = lastObject(stage.run(words("projects --json"))).value(QLatin1String("projects")).toArray();
        QCOMPARE(list.size(), result.lines().size() - 1);
        QStringList names;
        for (const QJsonValue &entry : list)
            names.append(entry[QLatin1String("name")].toString());
        QStringList sorted = names;
        sorted.sort();
        QCOMPARE(names, sorted);
    }

    void hostileNamesCannotMoveTheCursor()
    {
        stage.addProject(QStringLiteral("00000000-0000-0000-0000-000000000002"), QStringLiteral("a\u009B2J\u202Eb"),
                         nlohmann::json::array());
        const QString out = stage.run({QStringLiteral("projects")}).out;
        QVERIFY2(out.contains(QLatin1String("a?2J?b")), qPrintable(out));
        QVERIFY(!out.contains(QChar(0x9B)) && !out.contains(QChar(0x202E)));
    }

    void otherLettersBecomeQuestionMarksWhereTheyCannotBeShown()
    {
        QProcessEnvironment environment = stage.environment();
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
        const Result result = run(stage.withNetwork({QStringLiteral("projects")}), environment);
        QCOMPARE(result.exitCode, 0);
        QVERIFY2(result.out.contains(QLatin1String("?ltere Stra?e")), qPrintable(result.out));
        // Names of files are not harmed by it.
        const QString folder = stage.path(QStringLiteral("plain-locale"));
        const QStringList download{QStringLiteral("download"), ID, QStringLiteral("Nordstadt"), folder};
        QCOMPARE(run(stage.withNetwork(download), environment).exitCode, 0);
        QCOMPARE(treeOf(folder), treeOf(stage.path(QStringLiteral("copy2"))));
    }

    void statusIsTheServersNumber()
    {
        const QString unknown = Stage::newId();
        const Result result = stage.run({QStringLiteral("status"), ID, unknown});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.lines(), QStringList({QStringLiteral("ID                                    STATUS"),
                                              ID + QStringLiteral("  2"), unknown + QStringLiteral("  0")}));
        QCOMPARE(differenceToGolden(QStringLiteral("status.json"),
                                    stage.run({QStringLiteral("status"), ID, QStringLiteral("--json"), QStringLiteral("--quiet")}).out),
                 QString());
    }

    void datesAreTakenForUtc_data()
    {
        QTest::addColumn<QString>("given");
        QTest::addColumn<QString>("sent");
        QTest::newRow("day") << "2026-11-21" << "2026-11-21T00:00:00";
        QTest::newRow("clock") << "2026-11-21T10:30:05" << "2026-11-21T10:30:05";
        QTest::newRow("UTC") << "2026-11-21T10:30:05Z" << "2026-11-21T10:30:05";
        QTest::newRow("offset") << "2026-11-21T01:30:05+02:00" << "2026-11-20T23:30:05";
    }

    void datesAreTakenForUtc()
    {
        QFETCH(QString, given);
        QFETCH(QString, sent);
        const QString id = Stage::newId();
        QStringList arguments = Stage::uploadArguments(stage.makeLargeProject(QStringLiteral("tiny"), 0), id);
        arguments.last() = given;
        QProcessEnvironment environment = stage.environment();
        environment.insert(QStringLiteral("TZ"), QStringLiteral("Asia/Tokyo"));
        QCOMPARE(run(stage.withNetwork(arguments), environment).exitCode, 0);
        const Result list = stage.run(words("projects --json"));
        const QJsonArray projects = lastObject(list).value(QLatin1String("projects")).toArray();
        for (const QJsonValue &entry : projects) {
            if (entry[QLatin1String("id")].toString() == id)
                QCOMPARE(entry[QLatin1String("created")].toString(), sent);
        }
        QVERIFY(list.out.contains(id));
    }

    void qzMakesItsOwnIdAndTellsIt()
    {
        const Result result = stage.run({QStringLiteral("upload"), project, QStringLiteral("--kind"), QStringLiteral("qz"),
                                         QStringLiteral("--name"), QStringLiteral("Altstadt"), QStringLiteral("--created"),
                                         QStringLiteral("2026-11-21"), QStringLiteral("--json"), QStringLiteral("--quiet")});
        QCOMPARE(result.exitCode, 0);
        const QString id = lastObject(result).value(QLatin1String("projectId")).toString();
        QVERIFY2(!id.isEmpty(), qPrintable(result.all()));
        QCOMPARE(stage.statusOf(id), 2);
    }

    void mediaOfManholesGoToTheirFolder()
    {
        const QString list = stage.path(QStringLiteral("manholes.txt"));
        QVERIFY(writeFile(stage.folder(), QStringLiteral("manholes.txt"), "./Bilder/S01.jpg\r\n\n"));
        const QString id = Stage::newId();
        const Result result = stage.run(Stage::uploadArguments(project, id)
                                        + QStringList{QStringLiteral("--kind"), QStringLiteral("quickview"),
                                                      QStringLiteral("--manhole-media"), list});
        QCOMPARE(result.exitCode, 0);
        const QString copy = stage.path(QStringLiteral("quickview-copy"));
        QCOMPARE(stage.run({QStringLiteral("download"), id, QStringLiteral("Nordstadt"), copy}).exitCode, 0);
        QVERIFY(treeOf(copy).contains(QStringLiteral("Picture/Nod/S01.jpg")));
        QVERIFY(!treeOf(copy).contains(QStringLiteral("Picture/Sec/S01.jpg")));
    }

    void quickviewDataReplacesTheFileWhole()
    {
        for (const QString &data : words("project survey manhole")) {
            QVERIFY(writeFile(stage.folder(), QStringLiteral("quickview.data"), "what was there before"));
            const Result result = stage.run({QStringLiteral("quickview"), data, ID, stage.path(QStringLiteral("quickview.data"))});
            QVERIFY2(result.exitCode == 0 && result.err.isEmpty(), qPrintable(result.all()));
            QVERIFY(readFile(stage.path(QStringLiteral("quickview.data"))) != "what was there before");
            QVERIFY2(steady(result.out, stage.folder()).endsWith(QLatin1String(" in <TIME>: <FOLDER>/quickview.data\n")),
                     qPrintable(result.out));
        }
    }

    void aLinkLeadsToTheFile()
    {
        const Result link = stage.run({QStringLiteral("link"), ID, QStringLiteral("S01.jpg")});
        QCOMPARE(link.exitCode, 0);
        QCOMPARE(link.lines().size(), 1);
        QCOMPARE(differenceToGolden(QStringLiteral("link.txt"), steady(link.out)), QString());

        const QString file = stage.path(QStringLiteral("new/folder/S01.jpg"));
        // No credentials are needed for it.
        const Result get = run(stage.withNetwork({QStringLiteral("get"), link.lines().first(), file}));
        QCOMPARE(get.exitCode, 0);
        QCOMPARE(readFile(file), readFile(project + QStringLiteral("/Bilder/S01.jpg")));
        QCOMPARE(QDir(stage.path(QStringLiteral("new/folder"))).entryList(QDir::Files), QStringList{QStringLiteral("S01.jpg")});
    }

    void linksAreListed()
    {
        const Result result = stage.run({QStringLiteral("links"), ID});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(differenceToGolden(QStringLiteral("links.txt"), steady(result.out)), QString());
        const Result json = stage.run({QStringLiteral("links"), ID, QStringLiteral("--json"), QStringLiteral("--quiet")});
        QCOMPARE(differenceToGolden(QStringLiteral("links.json"), steady(json.out)), QString());
    }

    void resetPasswordAsksThePlatform()
    {
        const Result result = stage.run(words("reset-password inspector@korvo.example --stall-timeout 1"));
        QCOMPARE(result.all(), QStringLiteral("exit 0\nThe platform was asked to send inspector@korvo.example a new password and "
                                              "did not object. It does not confirm it.\n\n"));
        const auto resets = stage.platform.control("GET", "resets");
        QCOMPARE(resets.back()["user"].get<std::string>(), std::string("inspector@korvo.example"));
    }

    void aLoginThatRunsOutIsRenewedDuringAnUpload()
    {
        // The library takes a login for invalid ten minutes before its end.
        stage.platform.control("POST", "accounts", {{"email", "short@korvo.example"}, {"password", "Short-Lived-2"},
                                                    {"tokenLifetime", 603}, {"companyId", "korvo-company-01"}});
        stage.platform.setFault({{"kind", "tunnelBandwidth"}, {"bytesPerSecond", 1000000}, {"count", 0}});
        const QString folder = stage.makeLargeProject(QStringLiteral("long"), 9);
        const QStringList line = stage.withNetwork(Stage::uploadArguments(folder, Stage::newId()) + words("--json"));
        RunningCommand command(line, stage.environment(QStringLiteral("short@korvo.example"), QStringLiteral("Short-Lived-2")));
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"loginExpired\"")));
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"loggedIn\""), 2));
        stage.platform.clearFaults();
        const Result result = command.finish();
        QVERIFY2(result.exitCode == 0, qPrintable(result.all()));
    }

private:
    Stage stage;
    QString project;
};

QTEST_GUILESS_MAIN(tst_KorvoWebCommands)
#include "tst_KorvoWebCommands.moc"
