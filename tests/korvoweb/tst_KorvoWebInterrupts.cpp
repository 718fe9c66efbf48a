#include "Golden.h"
#include "Stage.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

using namespace Korvo::Cli::Test;

namespace {

constexpr int VIDEO_MEGABYTES = 20;

QString lastLine(const Result &result)
{
    return result.lines().value(result.lines().size() - 1);
}

} // namespace

class tst_KorvoWebInterrupts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(stage.start());
        project = stage.makeLargeProject(QStringLiteral("Nordstadt"), VIDEO_MEGABYTES);
        QVERIFY(!project.isEmpty());
    }

    void cleanup()
    {
        stage.platform.clearFaults();
    }

    void anInterruptedUploadIsAbortedAndTheServerIsTold()
    {
        slowDown();
        const QString id = Stage::newId();
        RunningCommand command(json(Stage::uploadArguments(project, id)), stage.environment());
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"file\"")));
        stage.newRequests();
        command.interrupt();
        const Result result = command.finish();
        QCOMPARE(result.exitCode, 130);
        QCOMPARE(result.err, QStringLiteral("korvoweb: cancelled; the server has been told that the upload is cancelled\n"));
        QVERIFY(lastLine(result).contains(QLatin1String("\"serverWasTold\":true")));
        QVERIFY(stage.newRequests().contains(QStringLiteral("api/UploadProject/Cancel")));
        QCOMPARE(stage.statusOf(id), 3);
    }

    void aRequestToEndIsAnInterruptToo()
    {
        slowDown();
        RunningCommand command(json(Stage::uploadArguments(project, Stage::newId())), stage.environment());
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"file\"")));
        QProcess::execute(QStringLiteral("kill"), {QStringLiteral("-TERM"), QString::number(command.id())});
        QCOMPARE(command.finish().exitCode, 130);
    }

    void theSameUploadGoesThroughAfterwards()
    {
        slowDown();
        const QString id = Stage::newId();
        RunningCommand command(json(Stage::uploadArguments(project, id)), stage.environment());
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"file\"")));
        command.interrupt();
        QCOMPARE(command.finish().exitCode, 130);
        stage.platform.clearFaults();
        QCOMPARE(stage.run(Stage::uploadArguments(project, id)).exitCode, 0);
        QCOMPARE(stage.statusOf(id), 2);
    }

    void aSecondInterruptLeavesAtOnce()
    {
        stage.platform.control("POST", "faults", nlohmann::json::array({
            {{"kind", "stallInRequest"}, {"route", "api/multipartupload/upload"}, {"count", 0}},
            {{"kind", "noAnswer"}, {"route", "api/UploadProject/Statuses"}, {"count", 0}}}));
        RunningCommand command(json(Stage::uploadArguments(project, Stage::newId())), stage.environment());
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"file\"")));
        command.interrupt();
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"cancelling\"")));
        command.interrupt();
        const Result result = command.finish();
        QCOMPARE(result.exitCode, 130);
        QCOMPARE(result.err, QStringLiteral("\nkorvoweb: left at once; the server was not told, and unfinished files may lie around\n"));
    }

    void aServerThatCannotBeToldDoesNotHoldItUp()
    {
        stage.platform.control("POST", "faults", nlohmann::json::array({
            {{"kind", "stallInRequest"}, {"route", "api/multipartupload/upload"}, {"count", 0}},
            {{"kind", "noAnswer"}, {"route", "api/UploadProject/Statuses"}, {"count", 0}}}));
        const Result result = stage.run(json(Stage::uploadArguments(project, Stage::newId()))
                                        + QStringList{QStringLiteral("--stall-timeout"), QStringLiteral("1")});
        QCOMPARE(result.exitCode, 5);
        QVERIFY2(result.err.endsWith(QLatin1String("; the server could not be told: it may keep the unfinished upload\n")),
                 qPrintable(result.err));
    }

    void anInterruptedDownloadRemovesItsFolder()
    {
        const QString id = addProject();
        slowDown();
        for (const char *jobs : {"1", "2", "6"}) {
            const QString folder = stage.path(QStringLiteral("interrupted"));
            const QStringList line{QStringLiteral("download"), id, QStringLiteral("Large"), folder, QStringLiteral("--jobs"),
                                   QString::fromLatin1(jobs)};
            RunningCommand command(json(line), stage.environment());
            QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"file\"")));
            QVERIFY(QFileInfo::exists(folder));
            command.interrupt();
            const Result result = command.finish();
            QCOMPARE(result.exitCode, 130);
            QCOMPARE(steady(result.err, stage.folder()), QStringLiteral("korvoweb: cancelled; <FOLDER>/interrupted has been removed\n"));
            QVERIFY(!QFileInfo::exists(folder));
        }
    }

    void anInterruptedGetKeepsNothing()
    {
        const QString id = addProject();
        const QString link = stage.run({QStringLiteral("link"), id, QStringLiteral("a.mp4")}).lines().value(0);
        QVERIFY(!link.isEmpty());
        slowDown();
        RunningCommand command(json({QStringLiteral("get"), link, stage.path(QStringLiteral("get/a.mp4"))}), stage.environment());
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"received\"")));
        command.interrupt();
        const Result result = command.finish();
        QCOMPARE(result.exitCode, 130);
        QCOMPARE(result.err, QStringLiteral("korvoweb: cancelled; nothing of the file is kept\n"));
        QCOMPARE(QDir(stage.path(QStringLiteral("get"))).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    void aLoginThatHangsCanBeInterrupted()
    {
        stage.platform.setFault({{"kind", "noAnswer"}, {"route", "Token"}, {"count", 0}});
        stage.newRequests();
        RunningCommand command(stage.withNetwork({QStringLiteral("login")}), stage.environment());
        QVERIFY(stage.waitForRequest(QStringLiteral("api/Users/CheckTwoStepAuthentication")));
        command.interrupt();
        const Result result = command.finish();
        QCOMPARE(result.all(), QStringLiteral("exit 130\n\nkorvoweb: cancelled\n"));
    }

    void waitingForInputCanBeInterrupted()
    {
        stage.newRequests();
        const QStringList line = stage.withNetwork({QStringLiteral("login"), QStringLiteral("--code-stdin"), QStringLiteral("--json")});
        RunningCommand command(line, stage.environment(Stage::SECURE_USER, Stage::SECURE_PASSWORD));
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"secondFactor\"")));
        command.interrupt();
        const Result result = command.finish();
        QCOMPARE(result.exitCode, 130);
        QCOMPARE(result.err, QStringLiteral("korvoweb: cancelled; nothing was sent\n"));
    }

private:
    void slowDown()
    {
        stage.platform.setFault({{"kind", "tunnelBandwidth"}, {"bytesPerSecond", 2000000}, {"count", 0}});
    }

    QStringList json(const QStringList &arguments) const
    {
        return stage.withNetwork(arguments + QStringList{QStringLiteral("--json")});
    }

    QString addProject()
    {
        const QString id = Stage::newId();
        stage.addProject(id, QStringLiteral("Large"), {{{"key", "Video/Sec/a.mp4"}, {"size", 9000000}},
                                                       {{"key", "Video/Sec/b.mp4"}, {"size", 9000000}}});
        return id;
    }

    Stage stage;
    QString project;
};

QTEST_GUILESS_MAIN(tst_KorvoWebInterrupts)
#include "tst_KorvoWebInterrupts.moc"
