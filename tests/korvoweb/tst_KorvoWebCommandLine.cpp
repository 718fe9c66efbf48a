#include "CommandRunner.h"
#include "Golden.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

using namespace Korvo::Cli::Test;

namespace {

QString contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString source(const QString &name)
{
    return contentOf(QStringLiteral(KORVOWEB_SOURCES "/") + name);
}

// "5 network" to its explanation.
using ExitCodes = QMap<QString, QString>;

ExitCodes codesIn(const QString &text, const QString &pattern)
{
    ExitCodes codes;
    auto matches = QRegularExpression(pattern, QRegularExpression::MultilineOption).globalMatch(text);
    while (matches.hasNext()) {
        const auto match = matches.next();
        codes.insert(match.captured(1) + QLatin1Char(' ') + match.captured(2), match.captured(3).simplified());
    }
    return codes;
}

ExitCodes codesInHelp()
{
    QString help = run({QStringLiteral("--help")}).out;
    help = help.mid(help.indexOf(QLatin1String("Exit codes:")));
    help.replace(QRegularExpression(QStringLiteral("\n {20,}")), QStringLiteral(" ")); // continued lines
    return codesIn(help, QStringLiteral("^  (\\d+) +([a-z-]+) +(.*)$"));
}

ExitCodes codesInManual()
{
    QString manual = source(QStringLiteral("korvoweb.1"));
    manual = manual.mid(manual.indexOf(QLatin1String(".SH EXIT STATUS")));
    manual.replace(QLatin1String("\\-"), QLatin1String("-"));
    return codesIn(manual, QStringLiteral("^\\.B (\\d+) ([a-z-]+)\n(.*)$"));
}

ExitCodes codesInDocument()
{
    return codesIn(contentOf(QStringLiteral(KORVOWEB_DOCUMENTS "/korvoweb.md")),
                   QStringLiteral("^\\| (\\d+) \\| ([a-z-]+) \\| (.*) \\|$"));
}

QStringList commandNames()
{
    return {QStringLiteral("login"),     QStringLiteral("projects"), QStringLiteral("upload"), QStringLiteral("download"),
            QStringLiteral("status"),    QStringLiteral("quickview"), QStringLiteral("link"),  QStringLiteral("links"),
            QStringLiteral("get"),       QStringLiteral("reset-password")};
}

QStringList optionsIn(const QString &help)
{
    QStringList options;
    auto matches = QRegularExpression(QStringLiteral("^  (--[a-z-]+)"), QRegularExpression::MultilineOption).globalMatch(help);
    while (matches.hasNext())
        options.append(matches.next().captured(1));
    return options;
}

QStringList upload(const QStringList &more)
{
    return QStringList{QStringLiteral("upload"), QStringLiteral("/nowhere")} + more;
}

} // namespace

class tst_KorvoWebCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void helpReadsAsItShould()
    {
        const Result result = run({QStringLiteral("--help")});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.err, QString());
        QCOMPARE(differenceToGolden(QStringLiteral("help.txt"), result.out), QString());
        QCOMPARE(run({QStringLiteral("-h")}).out, result.out);
    }

    void everyCommandHasHelpWithAnExample()
    {
        for (const QString &name : commandNames()) {
            const Result result = run({name, QStringLiteral("--help")});
            QCOMPARE(result.exitCode, 0);
            QVERIFY2(result.out.startsWith(QStringLiteral("Usage: korvoweb ") + name), qPrintable(result.all()));
            QVERIFY2(result.out.contains(QLatin1String("\nExample:\n  korvoweb ")), qPrintable(result.all()));
            QVERIFY2(result.out.contains(QLatin1String("\nExit codes:\n")), qPrintable(result.all()));
        }
        QCOMPARE(differenceToGolden(QStringLiteral("help-upload.txt"), run({QStringLiteral("upload"), QStringLiteral("--help")}).out),
                 QString());
    }

    void helpFitsEightyColumns()
    {
        for (const QString &line : run({QStringLiteral("--help")}).lines())
            QVERIFY2(line.size() <= 80, qPrintable(line));
    }

    void versionIsTheProjects()
    {
        const Result result = run({QStringLiteral("--version")});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, QStringLiteral("korvoweb " KORVOWEB_VERSION "\n"));
        QVERIFY(source(QStringLiteral("korvoweb.1")).contains(QLatin1String("NQKorvoWeb " KORVOWEB_VERSION)));
    }

    void exitCodesAreTheSameEverywhere()
    {
        const ExitCodes help = codesInHelp();
        QCOMPARE(help.size(), 11);
        QCOMPARE(codesInManual(), help);
        QCOMPARE(codesInDocument(), help);
    }

    void everyCommandAndOptionIsInManualDocumentAndCompletions()
    {
        const QString manual = source(QStringLiteral("korvoweb.1")).replace(QLatin1String("\\-"), QLatin1String("-"));
        const QStringList texts{manual, source(QStringLiteral("completions/korvoweb.bash")),
                                source(QStringLiteral("completions/korvoweb.ps1")),
                                contentOf(QStringLiteral(KORVOWEB_DOCUMENTS "/korvoweb.md"))};
        for (const QString &name : commandNames()) {
            const QStringList options = optionsIn(run({name, QStringLiteral("--help")}).out);
            QVERIFY(options.size() >= 11);
            for (const QString &text : texts) {
                for (const QString &word : options + QStringList{name})
                    QVERIFY2(text.contains(QRegularExpression(QRegularExpression::escape(word) + QStringLiteral("\\b"))), qPrintable(word));
            }
        }
    }

    void bashCompletes_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("expected");
        QTest::newRow("command") << QByteArray("re") << "reset-password";
        QTest::newRow("several") << QByteArray("link") << "link links";
        QTest::newRow("after an option with a value") << QByteArray("--user upload pro") << "projects";
        QTest::newRow("kind") << QByteArray("upload . --kind q") << "qz quickview";
        QTest::newRow("own options") << QByteArray("upload . --man") << "--manhole-media";
        QTest::newRow("not the options of others") << QByteArray("status --man") << "";
        QTest::newRow("common options") << QByteArray("links --st") << "--stall-timeout";
        QTest::newRow("data") << QByteArray("quickview s") << "survey";
    }

    void bashCompletes()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, expected);
        QProcess bash;
        bash.start(QStringLiteral("bash"),
                   QStringList{QStringLiteral("-c"),
                    QStringLiteral("compopt() { :; }; . \"$1\"; shift; COMP_WORDS=(korvoweb \"$@\"); "
                                   "COMP_CWORD=$#; _korvoweb; echo \"${COMPREPLY[*]}\""),
                    QStringLiteral("bash"), QStringLiteral(KORVOWEB_SOURCES "/completions/korvoweb.bash")}
                   + words(line.constData()));
        QVERIFY(bash.waitForFinished());
        QCOMPARE(QString::fromUtf8(bash.readAllStandardError()), QString());
        QCOMPARE(QString::fromUtf8(bash.readAllStandardOutput()).trimmed(), expected);
    }

    void refusesABadCommandLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("complaint");
        const QStringList good = words("--id 1 --name N --created 2026-11-21");
        QTest::newRow("nothing") << QStringList() << "a command is missing; see korvoweb --help";
        QTest::newRow("no such command") << words("frobnicate") << "\"frobnicate\" is no command; see korvoweb --help";
        QTest::newRow("no such option") << words("login --frobnicate") << "unknown option --frobnicate; see korvoweb --help";
        QTest::newRow("option of another command") << words("login --jobs 2") << "unknown option --jobs; see korvoweb --help";
        QTest::newRow("too few") << words("download 1 2") << "FOLDER is missing; see korvoweb download --help";
        QTest::newRow("too many") << words("projects now") << "one word too many: \"now\"";
        QTest::newRow("empty word") << QStringList{QStringLiteral("status"), QString()} << "ID... is empty";
        QTest::newRow("no id") << upload(words("--name N --created 2026-11-21")) << "--id is missing: the id of the project";
        QTest::newRow("no name") << upload(words("--id 1 --created 2026-11-21")) << "--name is missing: the name shown to users";
        QTest::newRow("no date") << upload(words("--id 1 --name N"))
                                 << "--created is missing: the creation date, 2026-11-21 or 2026-11-21T10:30:00";
        QTest::newRow("bad date") << upload(words("--id 1 --name N --created 2026-13-01"))
                                  << "\"2026-13-01\" is no date; write 2026-11-21 or 2026-11-21T10:30:00";
        QTest::newRow("date of another land") << upload(words("--id 1 --name N --created 21.11.2026"))
                                              << "\"21.11.2026\" is no date; write 2026-11-21 or 2026-11-21T10:30:00";
        QTest::newRow("bad kind") << upload(good + words("--kind fancy")) << "\"fancy\" is no kind: standard, qz or quickview";
        QTest::newRow("quickview without UUID") << upload(good + words("--kind quickview"))
                                                << "\"1\" is no UUID, which --kind quickview needs as --id";
        QTest::newRow("qz with id") << upload(good + words("--kind qz"))
                                    << "--id does not go with --kind qz: the id is made from the name";
        QTest::newRow("media without quickview") << upload(good + words("--manhole-media x"))
                                                 << "--manhole-media goes with --kind quickview only";
        QTest::newRow("no jobs") << upload(good + words("--jobs 0"))
                                 << "--jobs takes a number from 1 to 6: no more connections go to one server";
        QTest::newRow("too many jobs") << upload(good + words("--jobs 7"))
                                       << "--jobs takes a number from 1 to 6: no more connections go to one server";
        QTest::newRow("jobs in words") << words("download 1 2 3 --jobs two")
                                       << "--jobs takes a number from 1 to 6: no more connections go to one server";
        QTest::newRow("quickview data") << words("quickview tree 1 f")
                                        << "\"tree\" is no Quickview data: project, survey or manhole";
        QTest::newRow("link without UUID") << words("link 1 f") << "\"1\" is no UUID; \"korvoweb projects\" lists the ids";
        QTest::newRow("get another scheme")
            << words("get file:///etc/passwd f")
            << "the URL has to begin with https:// or http://, as \"korvoweb link\" prints it";
        QTest::newRow("proxy without port")
            << words("login --proxy host")
            << "--proxy takes HOST:PORT; its user and password come from KORVOWEB_PROXY_USER and KORVOWEB_PROXY_PASSWORD";
        QTest::newRow("proxy with password")
            << words("login --proxy u:secret@host:1")
            << "--proxy takes HOST:PORT; its user and password come from KORVOWEB_PROXY_USER and KORVOWEB_PROXY_PASSWORD";
        QTest::newRow("stall") << words("login --stall-timeout soon") << "--stall-timeout takes seconds, 0 to 604800";
        QTest::newRow("value missing") << words("login --user") << "Missing value after '--user'.";
        QTest::newRow("names that move the cursor") << QStringList{QStringLiteral("a\033[2Jb\nc")}
                                                    << "\"a?[2Jb?c\" is no command; see korvoweb --help";
    }

    void refusesABadCommandLine()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, complaint);
        const Result result = run(arguments);
        QCOMPARE(result.err, QStringLiteral("korvoweb: ") + complaint + QLatin1Char('\n'));
        QCOMPARE(result.out, QString());
        QCOMPARE(result.exitCode, 2);
    }

    void passwordIsNoArgumentAndIsNotRepeated()
    {
        for (const char *line : {"login --password geheim", "login --password=geheim"}) {
            const Result result = run(words(line));
            QCOMPARE(result.exitCode, 2);
            QVERIFY2(result.err.contains(QLatin1String("KORVOWEB_PASSWORD or --password-stdin")), qPrintable(result.all()));
            QVERIFY2(!result.all().contains(QLatin1String("geheim")), qPrintable(result.all()));
        }
    }

    void jsonTellsOfABadCommandLineToo()
    {
        const Result result = run({QStringLiteral("status"), QStringLiteral("--json")});
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.out,
                 QStringLiteral("{\"command\":\"status\",\"event\":\"result\",\"exitCode\":2,"
                                "\"message\":\"ID... is missing; see korvoweb status --help\",\"outcome\":\"usage\"}\n"));
    }
};

QTEST_GUILESS_MAIN(tst_KorvoWebCommandLine)
#include "tst_KorvoWebCommandLine.moc"
