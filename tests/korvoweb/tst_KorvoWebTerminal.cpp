#include "Stage.h"
#include "Tmux.h"
#include "flow/Folders.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

#include <memory>

using namespace Korvo::Cli::Test;
using namespace Korvo::Web::TestSupport;

namespace {

constexpr int COLUMNS = 100;
constexpr int ROWS = 24;
constexpr int VIDEO_MEGABYTES = 20;
constexpr qint64 LARGE_VIDEO_BYTES = 200 * 1000 * 1000;

// Media come back in other folders; empty files and backups do not come back.
QStringList filesByName(const Tree &tree)
{
    QStringList files;
    for (auto file = tree.begin(); file != tree.end(); ++file) {
        const QString name = file.key().section(QLatin1Char('/'), -1);
        if (!file.value().startsWith(QLatin1String("0 ")) && name != QLatin1String("project.xml_bak"))
            files.append(name + QLatin1Char(' ') + file.value());
    }
    files.sort();
    return files;
}

} // namespace

class tst_KorvoWebTerminal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(stage.start());
        project = stage.makeLargeProject(QStringLiteral("Nordstadt"), VIDEO_MEGABYTES);
        QVERIFY(!project.isEmpty());
    }

    void init()
    {
        terminal = std::make_unique<Tmux>(QStringLiteral(TMUX_PROGRAM), stage.folder());
        QVERIFY(terminal->start(COLUMNS, ROWS));
    }

    void cleanup()
    {
        stage.platform.clearFaults();
        terminal.reset();
    }

    void aProjectWithALargeVideoGoesThereAndBack()
    {
        const QString folder = stage.path(QStringLiteral("sample"));
        QCOMPARE(QProcess::execute(QStringLiteral(SAMPLE_PROJECT), {QStringLiteral("--videos"), QStringLiteral("1"),
                                                                    QStringLiteral("--video-size"), QStringLiteral("5M"), folder}), 0);
        QVERIFY(writeFile(folder, QStringLiteral("Filme/lang.avi"), randomBytes(LARGE_VIDEO_BYTES, 5)));
        const QString id = Stage::newId();
        stage.platform.setFault({{"kind", "tunnelBandwidth"}, {"bytesPerSecond", 20000000}, {"count", 0}});
        type(asSecureUser(Stage::uploadArguments(folder, id)));
        answerQuestions();
        QVERIFY(terminal->waitForPattern(QStringLiteral(" of \\d+ files +[█░]+ +[1-9]\\d* %")));
        terminal->press(QStringLiteral("C-c"));
        QVERIFY(terminal->waitFor(QStringLiteral("exit=130")));
        QCOMPARE(stage.statusOf(id), 3);

        stage.platform.clearFaults();
        type(asSecureUser(Stage::uploadArguments(folder, id)));
        answerQuestions();
        QVERIFY2(terminal->waitFor(QStringLiteral("exit=0")), qPrintable(terminal->screen()));
        QCOMPARE(stage.statusOf(id), 2);

        const QString copy = stage.path(QStringLiteral("sample-copy"));
        type(asSecureUser({QStringLiteral("download"), id, QStringLiteral("Nordstadt"), copy}));
        answerQuestions();
        QVERIFY(terminal->waitFor(QStringLiteral("exit=0")));
        QCOMPARE(filesByName(treeOf(copy)), filesByName(treeOf(folder)));
    }

    void passwordAndCodeAreAskedForAndNotShown()
    {
        type({QStringLiteral("login"), QStringLiteral("--user"), Stage::SECURE_USER});
        QVERIFY(terminal->waitFor(QStringLiteral("Password for secure@korvo.example:")));
        terminal->typeLine(Stage::SECURE_PASSWORD);
        QVERIFY(terminal->waitFor(QStringLiteral("Code for secure@korvo.example:")));
        terminal->typeLine(Stage::CODE);
        QVERIFY(terminal->waitFor(QStringLiteral("exit=0")));
        QVERIFY(terminal->history().contains(QStringLiteral("name     Sepp Grün")));
        QVERIFY(!terminal->history().contains(Stage::SECURE_PASSWORD));
        QVERIFY(!terminal->history().contains(Stage::CODE));
        expectAnOrdinaryTerminal();
    }

    void ctrlCAtAQuestionGivesTheTerminalBack()
    {
        type({QStringLiteral("login"), QStringLiteral("--user"), Stage::SECURE_USER});
        QVERIFY(terminal->waitFor(QStringLiteral("Password for secure@korvo.example:")));
        terminal->press(QStringLiteral("C-c"));
        QVERIFY(terminal->waitFor(QStringLiteral("exit=130")));
        QVERIFY(terminal->history().contains(QLatin1String("korvoweb: cancelled; nothing was sent")));
        expectAnOrdinaryTerminal();
    }

    void userIsAskedForWhenNobodyIsNamed()
    {
        type({QStringLiteral("login")});
        QVERIFY(terminal->waitFor(QStringLiteral("User:")));
        terminal->typeLine(Stage::USER);
        QVERIFY(terminal->waitFor(QStringLiteral("Password for inspector@korvo.example:")));
        terminal->typeLine(Stage::PASSWORD);
        QVERIFY(terminal->waitFor(QStringLiteral("exit=0")));
    }

    void barsMoveAndPause()
    {
        startUpload();
        QVERIFY(terminal->waitForPattern(QStringLiteral("Filme/S01.mp4 +[█░]{20,} +\\d+ % +[0-9.]+ MB +[0-9.]+ .?B/s +\\d:\\d\\d left")));
        QVERIFY(terminal->waitForPattern(QStringLiteral("0 of 1 file +[█░]{20,} +\\d+ %")));
        terminal->press(QStringLiteral("p"));
        QVERIFY(terminal->waitForPattern(QStringLiteral("PAUSED \\(p\\) 0 of 1 file")));
        terminal->press(QStringLiteral("p"));
        QVERIFY(terminal->waitUntilGone(QStringLiteral("PAUSED")));
        QCOMPARE(terminal->screen().count(QLatin1String("S01.mp4 ")), 1);
        stage.platform.clearFaults();
        QVERIFY(terminal->waitFor(QStringLiteral("exit=0")));
        QVERIFY2(terminal->screen().contains(QRegularExpression(QStringLiteral("Uploaded 1 file, 20.0 MB in [0-9.]+ s"))),
                 qPrintable(terminal->screen()));
        QVERIFY2(!terminal->screen().contains(QChar(0x2588)), qPrintable(terminal->screen()));
        expectAnOrdinaryTerminal();
    }

    void barsFollowTheWindow()
    {
        startUpload();
        QVERIFY(terminal->waitForPattern(QStringLiteral("0 of 1 file +[█░]{20,} +\\d+ %")));
        terminal->resize(50, ROWS);
        QVERIFY(terminal->waitForPattern(QStringLiteral("0 of 1 file +[█░]+ +\\d+ % +[0-9.]+ MB")));
        terminal->resize(20, ROWS);
        QVERIFY(terminal->waitForPattern(QStringLiteral("0 of 1 file +\\d+ %\n")));
        terminal->resize(COLUMNS, ROWS);
        QVERIFY(terminal->waitForPattern(QStringLiteral("Filme/S01.mp4 +[█░]{20,}")));
        stage.platform.clearFaults();
        QVERIFY(terminal->waitFor(QStringLiteral("exit=0")));
    }

    void ctrlCEndsInGoodOrder()
    {
        const QString id = startUpload();
        QVERIFY(terminal->waitForPattern(QStringLiteral("0 of 1 file ")));
        terminal->press(QStringLiteral("C-c"));
        QVERIFY(terminal->waitFor(QStringLiteral("exit=130")));
        QVERIFY(terminal->history().contains(QLatin1String("press Ctrl-C again to leave at once")));
        QVERIFY(terminal->history().contains(QLatin1String("korvoweb: cancelled; the server has been told that the upload is cancelled")));
        QCOMPARE(stage.statusOf(id), 3);
        expectAnOrdinaryTerminal();
    }

    void secondCtrlCGivesTheTerminalBackToo()
    {
        stage.platform.control("POST", "faults", nlohmann::json::array({
            {{"kind", "stallInRequest"}, {"route", "api/multipartupload/upload"}, {"count", 0}},
            {{"kind", "noAnswer"}, {"route", "api/UploadProject/Statuses"}, {"count", 0}}}));
        type(withPassword(Stage::uploadArguments(project, Stage::newId())));
        QVERIFY(terminal->waitForPattern(QStringLiteral("0 of 1 file ")));
        terminal->press(QStringLiteral("C-c"));
        QVERIFY(terminal->waitFor(QStringLiteral("Ctrl-C again")));
        terminal->press(QStringLiteral("C-c"));
        QVERIFY(terminal->waitFor(QStringLiteral("exit=130")));
        QVERIFY(terminal->history().contains(QLatin1String("left at once; the server was not told")));
        expectAnOrdinaryTerminal();
    }

    void stoppedAndContinuedItGoesOn()
    {
        startUpload();
        QVERIFY(terminal->waitForPattern(QStringLiteral("0 of 1 file ")));
        terminal->press(QStringLiteral("C-z"));
        QVERIFY(terminal->waitFor(QStringLiteral("Stopped")));
        terminal->typeLine(QStringLiteral("clear; fg; echo exit=$?"));
        QVERIFY(terminal->waitForPattern(QStringLiteral("0 of 1 file ")));
        terminal->press(QStringLiteral("p"));
        QVERIFY(terminal->waitForPattern(QStringLiteral("PAUSED")));
        terminal->press(QStringLiteral("p"));
        stage.platform.clearFaults();
        QVERIFY(terminal->waitFor(QStringLiteral("exit=0")));
    }

private:
    void type(const QStringList &arguments)
    {
        QString line = QStringLiteral("clear; ") + environmentOfCommand + QStringLiteral(KORVOWEB_PROGRAM);
        for (const QString &argument : stage.withNetwork(arguments))
            line += QLatin1String(" '") + argument + QLatin1Char('\'');
        terminal->typeLine(line + QStringLiteral("; echo exit=$?"));
        environmentOfCommand.clear();
    }

    QStringList withPassword(const QStringList &arguments)
    {
        environmentOfCommand = QStringLiteral("KORVOWEB_USER='%1' KORVOWEB_PASSWORD='").arg(Stage::USER) + Stage::PASSWORD
            + QStringLiteral("' ");
        return arguments;
    }

    static QStringList asSecureUser(const QStringList &arguments)
    {
        return arguments + QStringList{QStringLiteral("--user"), Stage::SECURE_USER};
    }

    void answerQuestions()
    {
        QVERIFY(terminal->waitForPattern(QStringLiteral("Password for [^ ]+:")));
        terminal->typeLine(Stage::SECURE_PASSWORD);
        QVERIFY(terminal->waitForPattern(QStringLiteral("Code for [^ ]+:")));
        terminal->typeLine(Stage::CODE);
    }

    QString startUpload()
    {
        stage.platform.setFault({{"kind", "tunnelBandwidth"}, {"bytesPerSecond", 500000}, {"count", 0}});
        const QString id = Stage::newId();
        type(withPassword(Stage::uploadArguments(project, id)));
        return id;
    }

    // Echo and lines are as the shell left them.
    void expectAnOrdinaryTerminal()
    {
        terminal->typeLine(QStringLiteral("clear; stty -a | grep -ow -e '-*echo' -e '-*icanon' | sort | paste -sd+"));
        QVERIFY2(terminal->waitForPattern(QStringLiteral("^(echo\\+icanon|icanon\\+echo)\n")), qPrintable(terminal->screen()));
    }

    Stage stage;
    QString project;
    QString environmentOfCommand;
    std::unique_ptr<Tmux> terminal;
};

QTEST_GUILESS_MAIN(tst_KorvoWebTerminal)
#include "tst_KorvoWebTerminal.moc"
