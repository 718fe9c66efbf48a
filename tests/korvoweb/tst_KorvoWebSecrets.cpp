#include "Stage.h"

#include <QtCore/QFile>
#include <QtTest/QtTest>

using namespace Korvo::Cli::Test;

namespace {

const QString PROXY_PASSWORD = QStringLiteral("Proxy-Secret-7");

QByteArray processFile(qint64 process, const QString &name)
{
    QFile file(QStringLiteral("/proc/%1/%2").arg(process).arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class tst_KorvoWebSecrets : public QObject
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

    void noSecretIsSeenInTheProcess()
    {
        stage.platform.setFault({{"kind", "tunnelBandwidth"}, {"bytesPerSecond", 2000000}, {"count", 0}});
        RunningCommand command(line({QStringLiteral("--code-stdin")}), environment());
        command.write("123456\n");
        QVERIFY(command.waitForOutput(QStringLiteral("\"event\":\"file\"")));
        const QByteArray seen = processFile(command.id(), QStringLiteral("cmdline")) + processFile(command.id(), QStringLiteral("environ"));
        QVERIFY(seen.contains("upload") && seen.contains("KORVOWEB_PASSWORD="));
        expectNoSecretIn(QString::fromUtf8(seen));
        command.interrupt();
        QCOMPARE(command.finish().exitCode, 130);
    }

    void noSecretIsInOutputOrLog_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("route");
        QTest::newRow("all is well") << "" << "";
        QTest::newRow("login refused") << "status" << "Token";
        QTest::newRow("login answered with nonsense") << "garbage" << "Token";
        QTest::newRow("credentials cut off") << "truncatedBody" << "api/Projects/companykorvoservice";
        QTest::newRow("login cut off") << "truncatedBody" << "Token";
        QTest::newRow("begin fails") << "status" << "api/UploadProject/Init";
        QTest::newRow("file refused") << "status" << "api/bucket/putfile";
        QTest::newRow("part reset") << "resetInRequest" << "api/multipartupload/upload";
    }

    void noSecretIsInOutputOrLog()
    {
        QFETCH(QString, fault);
        QFETCH(QString, route);
        if (!fault.isEmpty())
            stage.platform.setFault({{"kind", fault.toStdString()}, {"route", route.toStdString()}, {"count", 0}});
        const Result result = run(line({QStringLiteral("--code-stdin"), QStringLiteral("--verbose")}), environment(), "123456\n");
        QVERIFY2((result.exitCode == 0) == fault.isEmpty(), qPrintable(result.all()));
        expectNoSecretIn(result.all());
    }

    void verboseTellsWhatTheLibraryLogs()
    {
        stage.platform.setFault({{"kind", "status"}, {"route", "api/Projects"}, {"count", 0}});
        const Result quiet = stage.run({QStringLiteral("projects")});
        QCOMPARE(quiet.err.count(QLatin1Char('\n')), 1);
        const Result verbose = stage.run({QStringLiteral("projects"), QStringLiteral("--verbose")});
        QVERIFY2(verbose.err.contains(QLatin1String("log 1 Korvo::Web::UserProjectsRequestHandle: Network Error: ")), qPrintable(verbose.err));
        QVERIFY(verbose.err.endsWith(quiet.err));
    }

private:
    QStringList line(const QStringList &more) const
    {
        return stage.withNetwork(Stage::uploadArguments(project, QStringLiteral("6f9d0c52-7a6a-4f7e-9a57-0d2f1f2b8f11"))
                                 + QStringList{QStringLiteral("--json")} + more);
    }

    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = stage.environment(Stage::SECURE_USER, Stage::SECURE_PASSWORD);
        environment.insert(QStringLiteral("KORVOWEB_PROXY_USER"), QStringLiteral("proxy-user"));
        environment.insert(QStringLiteral("KORVOWEB_PROXY_PASSWORD"), PROXY_PASSWORD);
        return environment;
    }

    static void expectNoSecretIn(const QString &text)
    {
        for (const QString &secret : {Stage::SECURE_PASSWORD, Stage::CODE, PROXY_PASSWORD, QStringLiteral("Bearer "),
                                      QStringLiteral("access_token\":\"e"), QStringLiteral("SecretKey>")})
            QVERIFY2(!text.contains(secret), qPrintable(secret + QStringLiteral(" is in:\n") + text));
    }

    Stage stage;
    QString project;
};

QTEST_GUILESS_MAIN(tst_KorvoWebSecrets)
#include "tst_KorvoWebSecrets.moc"
