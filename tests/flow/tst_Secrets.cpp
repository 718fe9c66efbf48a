#include "flow/Folders.h"
#include "flow/Session.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"

#include <QtCore/QMutex>
#include <QtTest/QtTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QByteArray TOKEN = "token-9f8e7d6c5b4a";
const QByteArray SECRET = "secret-0a1b2c3d4e5f";
const QByteArray CLIENT = "client-42";

QMutex messagesMutex; // guards messages
QStringList messages;

void keepMessage(QtMsgType, const QMessageLogContext &context, const QString &text)
{
    const QMutexLocker locker(&messagesMutex);
    messages.append(QString::fromUtf8(context.category) + QLatin1Char(' ') + text);
}

QByteArray loginAnswer()
{
    return R"({"access_token": ")" + TOKEN + R"(", "userName": "ida", ".expires": "Fri, 01 Jan 2100 00:00:00 GMT"})";
}

QByteArray credentialsAnswer()
{
    return "<C><ClientId>" + CLIENT + "</ClientId><SecretKey>" + SECRET
        + "</SecretKey><Url>https://service.korvo.example/korvoservice/</Url></C>";
}

} // namespace

/// Everything that is logged during whole runs, by the library and by Qt, is searched for what nobody may read.
class tst_Secrets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void wholeRunKeepsPasswordAndCode();
    void tokenSecretAndSignaturesStayUnseen_data();
    void tokenSecretAndSignaturesStayUnseen();
    void brokenLoginAnswerIsLoggedWithoutItsToken_data();
    void brokenLoginAnswerIsLoggedWithoutItsToken();
    void signatureOfALinkStaysUnseen_data();
    void signatureOfALinkStaysUnseen();

private:
    QString everythingLogged() const;

    QScopedPointer<LogCapture> log;
    QtMessageHandler formerHandler = nullptr;
};

void tst_Secrets::init()
{
    messages.clear();
    formerHandler = qInstallMessageHandler(keepMessage);
    log.reset(new LogCapture);
}

void tst_Secrets::cleanup()
{
    qInstallMessageHandler(formerHandler);
    log.reset();
}

QString tst_Secrets::everythingLogged() const
{
    const QMutexLocker locker(&messagesMutex);
    QString text = messages.join(QLatin1Char('\n'));
    for (const LogEntry &entry : log->entries()) {
        text += QLatin1Char('\n') + entry.category + QLatin1Char(' ') + entry.message;
        for (const QVariant &argument : entry.arguments)
            text += QLatin1Char(' ') + argument.toString();
    }
    return text;
}

// Every kind of thing that can go wrong is made to go wrong.
void tst_Secrets::wholeRunKeepsPasswordAndCode()
{
    LocalPlatform platform;
    QCOMPARE(platform.start(), QString());
    QTemporaryDir folder;
    QVERIFY(makeRandomTree(folder.filePath(QStringLiteral("in")), 1, 10));
    QVERIFY(writeFile(folder.path(), QStringLiteral("in/large.bin"), randomBytes(5000000, 1)));
    for (const char *kind : { "", "status", "garbage", "resetInBody", "emptyBody", "expiredToken" }) {
        platform.clearFaults();
        Session session;
        session->login(SECURE_USER, SECURE_PASSWORD);
        QVERIFY(session.signalsSeen().waitFor("tokenAuthenticationNeeded"));
        const QString wrong = QStringLiteral("code-98765");
        session->loginWithToken(wrong);
        QVERIFY(session.signalsSeen().waitFor("loginResult"));
        session->loginWithToken(SECURE_CODE);
        QVERIFY(session.signalsSeen().waitFor("loginResult", 2));
        if (*kind != '\0')
            platform.addFault(QLatin1String(kind), QString(), 0);
        session->queryRemoteProjects();
        session->uploadProject(QStringLiteral("p"), QStringLiteral("p"), folder.filePath(QStringLiteral("in")), PROJECT_DATE, 3);
        session->downloadProject(QStringLiteral("p"), QStringLiteral("p"), folder.filePath(QStringLiteral("out")), 3);
        session->downloadQuickviewProjectData(QStringLiteral("p"), folder.filePath(QStringLiteral("data")));
        QVERIFY(session.signalsSeen().waitFor("downloadFinished", 2));
        QVERIFY(eventually([&] { return !session->anyUploadActive() && !session->anyDownloadActive(); }));
        session->login(SECURE_USER, QStringLiteral("other-password-1"));
        session->resetPassword(SECURE_USER);
        QVERIFY(session.settle());
    }
    const QString logged = everythingLogged();
    QVERIFY(!log->entries().isEmpty());
    for (const QString &secret : { SECURE_PASSWORD, SECURE_CODE, QStringLiteral("code-98765"), QStringLiteral("other-password-1"),
                                   QStringLiteral("Bearer"), QStringLiteral("KorvoService ") })
        QVERIFY2(!logged.contains(secret), qPrintable(secret));
    // Nor does the platform's own journal tell them.
    for (const QString &secret : { SECURE_PASSWORD, SECURE_CODE, QStringLiteral("other-password-1") })
        QVERIFY2(!platform.journalFile().contains(secret.toUtf8()), qPrintable(secret));
}

void tst_Secrets::tokenSecretAndSignaturesStayUnseen_data()
{
    QTest::addColumn<int>("status");
    for (const int status : { 200, 302, 400, 401, 403, 404, 500, 503 })
        QTest::addRow("%d", status) << status;
}

void tst_Secrets::tokenSecretAndSignaturesStayUnseen()
{
    QFETCH(int, status);
    ScriptedServer server;
    const RouteToServer route(server);
    server.setDefaultAnswer(ScriptedAnswer(status, "<html>" + TOKEN + SECRET + "</html>"));
    server.always("/api/Users/CheckTwoStepAuthentication", ScriptedAnswer::ok("false"));
    server.always("/Token", ScriptedAnswer::ok(loginAnswer()));
    server.always("/api/Projects/companykorvoservice", ScriptedAnswer::ok(credentialsAnswer()));
    QTemporaryDir folder;
    QVERIFY(writeFile(folder.path(), QStringLiteral("in/a.txt"), "x"));
    {
        Session session;
        QVERIFY(session.logIn());
        session->queryRemoteProjects();
        session->startAllProjectsMediaDownload(QStringLiteral("p"));
        session->downloadProject(QStringLiteral("p"), QStringLiteral("p"), folder.filePath(QStringLiteral("out")));
        session->downloadQuickviewSurveyData(QStringLiteral("p"), folder.filePath(QStringLiteral("data")));
        session->uploadProject(QStringLiteral("p"), QStringLiteral("p"), folder.filePath(QStringLiteral("in")), PROJECT_DATE);
        QVERIFY(session.signalsSeen().waitFor("downloadFinished", 2));
        QVERIFY(eventually([&] { return !session->anyUploadActive(); }));
    }
    QByteArrayList secrets { TOKEN, SECRET };
    int signedRequests = 0;
    for (const RecordedRequest &request : server.requests()) {
        const QByteArray value = request.header("Authorization");
        if (value.startsWith("KorvoService ")) {
            secrets.append(value.mid(int(qstrlen("KorvoService "))));
            ++signedRequests;
        }
    }
    QVERIFY(signedRequests > 0);
    const QString logged = everythingLogged();
    for (const QByteArray &secret : secrets)
        QVERIFY2(!logged.contains(QString::fromLatin1(secret)), secret.constData());
}

void tst_Secrets::brokenLoginAnswerIsLoggedWithoutItsToken_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("cut behind the token") << QByteArray(R"({"access_token": ")" + TOKEN + R"(", "userName": "i)");
    QTest::newRow("cut in the token") << QByteArray(R"({"access_token": ")" + TOKEN);
    QTest::newRow("text around it") << QByteArray("warning: slow server\n" + loginAnswer());
    QTest::newRow("escaped") << QByteArray(R"("{\"access_token\": \")" + TOKEN + R"(\", \"x\": 1}" oops)");
    QTest::newRow("form") << QByteArray("access_token=" + TOKEN + "&token_type=bearer");
}

void tst_Secrets::brokenLoginAnswerIsLoggedWithoutItsToken()
{
    QFETCH(QByteArray, answer);
    ScriptedServer server;
    const RouteToServer route(server);
    server.always("/Token", ScriptedAnswer::ok(answer));
    Session session;
    QVERIFY(!session.logIn());
    const QString logged = everythingLogged();
    QVERIFY(logged.contains(QStringLiteral("Error during parsing Login response.")));
    QVERIFY2(!logged.contains(QString::fromLatin1(TOKEN)), qPrintable(logged));
}

void tst_Secrets::signatureOfALinkStaysUnseen_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::newRow("not there") << ScriptedAnswer(404, "no such file");
    QTest::newRow("refused") << ScriptedAnswer(403);
    QTest::newRow("failed") << ScriptedAnswer(500);
    QTest::newRow("dropped") << ScriptedAnswer::dropped();
    QTest::newRow("cut off") << ScriptedAnswer::ok("half a file").announcing(100);
    QTest::newRow("leads in a circle") << ScriptedAnswer::redirect("https://web.korvo.example/file?sig=" + SECRET);
    QTest::newRow("leads to nowhere") << ScriptedAnswer::redirect("https://elsewhere.example/file?sig=" + SECRET);
    QTest::newRow("leads to a less safe place")
        << ScriptedAnswer::redirect("http://web.korvo.example/file?sig=" + SECRET);
    QTest::newRow("arrives") << ScriptedAnswer::ok("the file");
}

// Such a link is a key by itself: whoever reads it can fetch the file.
void tst_Secrets::signatureOfALinkStaysUnseen()
{
    QFETCH(ScriptedAnswer, answer);
    ScriptedServer server;
    const RouteToServer route(server);
    server.setDefaultAnswer(answer);
    QTemporaryDir folder;
    Session session;
    const QString link = QStringLiteral("https://web.korvo.example/file?sig=") + QString::fromLatin1(SECRET);
    for (const QString &output : {folder.filePath(QStringLiteral("out")), folder.path()}) {
        session->downloadSingleProjectFile(output, link);
        session->downloadSingleProjectFile(output, link + QLatin1Char(' '));
        session->downloadSingleProjectFile(output, QString(link).replace(QLatin1String("https"), QLatin1String("ftp")));
    }
    QVERIFY(session.signalsSeen().waitFor("downloadFinished", 6));
    QVERIFY(server.requestCount() > 0);
    const QString logged = everythingLogged();
    QVERIFY2(!logged.contains(QString::fromLatin1(SECRET)), qPrintable(logged));
}

QTEST_GUILESS_MAIN(tst_Secrets)

#include "tst_Secrets.moc"
