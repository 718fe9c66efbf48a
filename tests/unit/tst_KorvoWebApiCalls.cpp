// What each call of the facade sends, and what the host hears of the answer.
#include "api/KorvoWebApiWorker.h"
#include "flow/SignalRecorder.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"
#include "unit/TransferPlatform.h"

#include <NQKorvoWeb/KorvoWebApi.h>
#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QLocale>
#include <QtCore/QScopedPointer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <functional>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

using LoginResult = KorvoWebApi::LoginResult;
using LoginStatus = KorvoWebApi::LoginStatus;
using Call = std::function<void(KorvoWebApi &)>;

Q_DECLARE_METATYPE(Call)

namespace {

const QByteArray TWO_STEP = "/api/Users/CheckTwoStepAuthentication";
const QByteArray TOKEN = "/Token";
const QByteArray CLOCK = "/korvoservice/api/Status/Get";
const QByteArray CREDENTIALS = "/api/Projects/companykorvoservice";
const QByteArray PROJECTS = "/api/Projects";
const QByteArray STATUSES = "/api/UploadProject/Statuses";
const QByteArray RESET = "/api/Account/ResetPassword";
const QByteArray DATA = "/api/Projects/11111111-2222-3333-4444-555555555555/Quickview";

const QUuid ID(QStringLiteral("{11111111-2222-3333-4444-555555555555}"));
const QString PROJECT = ID.toString(QUuid::WithoutBraces);
const QDateTime DATE(QDate(2026, 3, 3), QTime(14, 5, 9), Qt::UTC);

QByteArray loginAnswer(const QByteArray &user, int secondsToLive = 86400)
{
    const QDateTime end = QDateTime::currentDateTimeUtc().addSecs(secondsToLive);
    return "{\"access_token\":\"the-token\",\"expires_in\":86399,\"userName\":\"" + user
           + "\",\"userFirstName\":\"Ina\",\"userLastName\":\"Kanal\",\"userCompanyId\":\"company-01\","
             "\"userRoles\":\"COMPANY_OPERATOR\",\".expires\":\""
           + QLocale::c().toString(end, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'")).toUtf8() + "\"}";
}

const QByteArray CREDENTIALS_ANSWER = "<C><Url>https://service.korvo.example/korvoservice/</Url><ClientId>client-1</"
                                      "ClientId><SecretKey>key</SecretKey></C>";

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

} // namespace

class tst_KorvoWebApiCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void loginAsksItsWayInOrder();
    void loginTellsWhoTheUserIs();
    void loginWithoutClockAndCredentialsIsALoginToo();
    void refusedLoginEmptiesTheUser();
    void unreadableLoginIsExplainedFirst();
    void secondFactorIsAskedFor();
    void codeIsSentWithThePassword();
    void failedCheckLeavesItToTheLogin();
    void cancelledLoginIsToldOnce();
    void newLoginCancelsTheOneInFlight();
    void newLoginReplacesOneThatStillAsks();
    void loginForgetsTheTokenBefore();
    void codeForgetsTheTokenBefore();
    void logoutForgetsTheTokenAndKeepsTheUser();
    void tokenThatIsAboutToEndIsNone();
    void endOfTheTokenIsTold();

    void failedQueryIsTold_data();
    void failedQueryIsTold();
    void projectsAreListed();
    void statusesAreAskedForById();
    void linksAreAskedForByTheirNames();
    void passwordIsReset();

    void dataIsWrittenToItsFile_data();
    void dataIsWrittenToItsFile();
    void projectIsDownloadedBelowTheCompanyOfTheLogin();
    void pausedDownloadGoesOn();
    void abortedDownloadIsGone();
    void dataDownloadCanBePausedAndAborted();
    void downloadFlagFallsWithTheLastOne();

    void projectIsUploaded();
    void kindOfProjectIsTold_data();
    void kindOfProjectIsTold();
    void pausedUploadGoesOn();
    void abortedUploadIsCancelledOnTheServer();
    void failedUploadIsToldBehindItsEnd();
    void finishedUploadCannotBeAborted();
    void singleFileTellsFailuresOnly();
    void callsDuringALoginWaitForItsEnd();

private:
    bool logIn(const QByteArray &user = "ina", int secondsToLive = 86400);
    bool requestsCome(int number) const { return platform->server.waitForRequests(number, 20000); }
    bool waitFor(const char *signal, int number = 1) { return recorder->waitFor(signal, number); }
    QByteArrayList paths() const;
    LoginResult lastResult() const { return recorder->all("loginResult").last().at(1).value<LoginResult>(); }
    QString local(const QString &name) const { return folder->filePath(name); }
    void writeProject(int files);

    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<LogCapture> log; // outlives the object that logs
    QScopedPointer<TransferPlatform> platform;
    QScopedPointer<KorvoWebApi> api;
    QScopedPointer<SignalRecorder> recorder;
};

void tst_KorvoWebApiCalls::initTestCase()
{
    KorvoWebLibrary::initialize();
}

void tst_KorvoWebApiCalls::init()
{
    folder.reset(new QTemporaryDir);
    QVERIFY(folder->isValid());
    log.reset(new LogCapture);
    platform.reset(new TransferPlatform);
    ScriptedServer &server = platform->server;
    server.always(TWO_STEP, ScriptedAnswer::ok("false"));
    server.always(TOKEN, ScriptedAnswer::ok(loginAnswer("ina")));
    server.always(CLOCK, ScriptedAnswer::ok("<S><CurrentDate>2026-03-03T14:05:09Z</CurrentDate></S>"));
    server.always(CREDENTIALS, ScriptedAnswer::ok(CREDENTIALS_ANSWER));
    api.reset(new KorvoWebApi);
    recorder.reset(new SignalRecorder(api.data()));
}

void tst_KorvoWebApiCalls::cleanup()
{
    recorder.reset();
    api.reset();
    platform.reset();
    log.reset();
    folder.reset();
}

bool tst_KorvoWebApiCalls::logIn(const QByteArray &user, int secondsToLive)
{
    platform->server.enqueue(TOKEN, ScriptedAnswer::ok(loginAnswer(user, secondsToLive)));
    api->login(QString::fromUtf8(user), QStringLiteral("pass"));
    const bool ended = waitFor("loginResult");
    recorder->clear();
    platform->server.forgetRequests();
    return ended;
}

QByteArrayList tst_KorvoWebApiCalls::paths() const
{
    QByteArrayList paths;
    const auto requests = platform->server.requests();
    for (const RecordedRequest &request : requests)
        paths.append(request.path());
    return paths;
}

void tst_KorvoWebApiCalls::writeProject(int files)
{
    QVERIFY(QDir().mkpath(local(QStringLiteral("in"))));
    for (int i = 1; i <= files; ++i) {
        QFile file(local(QStringLiteral("in/file %1").arg(i)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(patternOf(1000, quint32(i))), qint64(1000));
    }
}

void tst_KorvoWebApiCalls::loginAsksItsWayInOrder()
{
    api->login(QStringLiteral("ina@example.com"), QStringLiteral("pass"));
    QVERIFY(waitFor("loginResult"));
    QCOMPARE(paths(), QByteArrayList({TWO_STEP, TOKEN, CLOCK, CREDENTIALS}));
    const auto requests = platform->server.requests();
    QCOMPARE(requests.at(0).target, TWO_STEP + "?username=ina%40example.com");
    QCOMPARE(requests.at(1).body,
             QByteArray("grant_type=password&keepInMind=true&username=ina%40example.com&password=pass"));
    // The token is known by then.
    QCOMPARE(requests.at(3).header("Authorization"), QByteArray("Bearer the-token"));
    QCOMPARE(recorder->names(),
             QByteArrayList({"loginStatusChanged", "currentUserChanged", "loginStatusChanged", "loginResult"}));
    QCOMPARE(lastResult(), LoginResult::LoginResultSuccess);
    QCOMPARE(log->count(), 0);
}

void tst_KorvoWebApiCalls::loginTellsWhoTheUserIs()
{
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QVERIFY(logIn());
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedIn);
    QCOMPARE(api->currentUser(), QStringLiteral("ina"));
    QCOMPARE(api->currentUserFirstName(), QStringLiteral("Ina"));
    QCOMPARE(api->currentUserLastName(), QStringLiteral("Kanal"));
    QCOMPARE(api->currentUserCompanyId(), QStringLiteral("company-01"));
    QCOMPARE(api->currentUserRole(), KorvoWebApi::UserRole::CompanyOperator);
}

void tst_KorvoWebApiCalls::loginWithoutClockAndCredentialsIsALoginToo()
{
    platform->server.enqueue(CLOCK, ScriptedAnswer(500));
    platform->server.enqueue(CREDENTIALS, ScriptedAnswer(500));
    api->login(QStringLiteral("ina"), QStringLiteral("pass"));
    QVERIFY(waitFor("loginResult"));
    QCOMPARE(lastResult(), LoginResult::LoginResultSuccess);
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedIn);
}

void tst_KorvoWebApiCalls::refusedLoginEmptiesTheUser()
{
    QVERIFY(logIn());
    platform->server.enqueue(TOKEN, ScriptedAnswer(400, "{\"error\":\"invalid_grant\"}"));
    api->login(QStringLiteral("ina"), QStringLiteral("wrong"));
    QVERIFY(waitFor("loginResult"));
    QCOMPARE(lastResult(), LoginResult::LoginResultFalseCredentials);
    QCOMPARE(recorder->all("loginResult").last().first(), QVariant(QString()));
    QCOMPARE(api->currentUser(), QString());
    QCOMPARE(recorder->all("currentUserChanged"), QList<QVariantList>({{QString()}}));
    QCOMPARE(recorder->errors(), QList<Error>());
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(paths(), QByteArrayList({TWO_STEP, TOKEN}));
}

void tst_KorvoWebApiCalls::unreadableLoginIsExplainedFirst()
{
    platform->server.enqueue(TOKEN, ScriptedAnswer::ok("<html>"));
    api->login(QStringLiteral("ina"), QStringLiteral("pass"));
    QVERIFY(waitFor("loginResult"));
    QCOMPARE(recorder->names(),
             QByteArrayList({"loginStatusChanged", "loginStatusChanged", "errorOccurred", "loginResult"}));
    QCOMPARE(recorder->errors(), QList<Error>{Error::UnreadableLogin});
    QCOMPARE(lastResult(), LoginResult::LoginResultTimeOut);
}

void tst_KorvoWebApiCalls::secondFactorIsAskedFor()
{
    platform->server.enqueue(TWO_STEP, ScriptedAnswer::ok("true"));
    api->login(QStringLiteral("ina"), QStringLiteral("pass"));
    QVERIFY(waitFor("tokenAuthenticationNeeded"));
    QCOMPARE(recorder->names(),
             QByteArrayList({"loginStatusChanged", "loginStatusChanged", "tokenAuthenticationNeeded"}));
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(paths(), QByteArrayList{TWO_STEP});
}

void tst_KorvoWebApiCalls::codeIsSentWithThePassword()
{
    platform->server.enqueue(TWO_STEP, ScriptedAnswer::ok("true"));
    api->login(QStringLiteral("ina"), QStringLiteral("pass"));
    QVERIFY(waitFor("tokenAuthenticationNeeded"));
    recorder->clear();
    api->loginWithToken(QStringLiteral("123456"));
    QVERIFY(waitFor("loginResult"));
    QCOMPARE(platform->server.requests(TOKEN).last().body,
             QByteArray("grant_type=password&keepInMind=true&username=ina&password=pass"
                        "&twoFactorAuthenticationCode=123456"));
    QCOMPARE(lastResult(), LoginResult::LoginResultSuccess);
    QCOMPARE(recorder->names(),
             QByteArrayList({"loginStatusChanged", "currentUserChanged", "loginStatusChanged", "loginResult"}));
}

void tst_KorvoWebApiCalls::failedCheckLeavesItToTheLogin()
{
    platform->server.enqueue(TWO_STEP, ScriptedAnswer(500, "true"));
    api->login(QStringLiteral("ina"), QStringLiteral("pass"));
    QVERIFY(waitFor("loginResult"));
    QCOMPARE(lastResult(), LoginResult::LoginResultSuccess);
}

void tst_KorvoWebApiCalls::cancelledLoginIsToldOnce()
{
    platform->server.enqueue(TOKEN, ScriptedAnswer::held(loginAnswer("ina")));
    api->login(QStringLiteral("ina"), QStringLiteral("pass"));
    QVERIFY(requestsCome(2));
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggingIn);
    api->cancelLogin();
    api->cancelLogin();
    api->queryRemoteProjects();
    QVERIFY(waitFor("projectInfoReceived"));
    QCOMPARE(recorder->count("loginResult"), 1);
    QCOMPARE(lastResult(), LoginResult::LoginResultCancelled);
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(recorder->errors(), QList<Error>());
}

void tst_KorvoWebApiCalls::newLoginCancelsTheOneInFlight()
{
    platform->server.enqueue(TOKEN, ScriptedAnswer::held(loginAnswer("first")));
    api->login(QStringLiteral("first"), QStringLiteral("pass"));
    QVERIFY(requestsCome(2));
    platform->server.enqueue(TOKEN, ScriptedAnswer::ok(loginAnswer("second")));
    api->login(QStringLiteral("second"), QStringLiteral("pass"));
    QVERIFY(waitFor("loginResult", 2));
    const QList<QVariantList> results = recorder->all("loginResult");
    QCOMPARE(results.first().at(1).value<LoginResult>(), LoginResult::LoginResultCancelled);
    QCOMPARE(results.last().at(1).value<LoginResult>(), LoginResult::LoginResultSuccess);
    QCOMPARE(api->currentUser(), QStringLiteral("second"));
}

void tst_KorvoWebApiCalls::newLoginReplacesOneThatStillAsks()
{
    platform->server.enqueue(TWO_STEP, ScriptedAnswer::held("true"));
    api->login(QStringLiteral("first"), QStringLiteral("pass"));
    QVERIFY(requestsCome(1));
    api->login(QStringLiteral("second"), QStringLiteral("other"));
    QVERIFY(waitFor("loginResult"));
    platform->server.release();
    QVERIFY(logIn());
    QCOMPARE(recorder->count("tokenAuthenticationNeeded"), 0);
}

// Whoever asks in between asks in nobody's name.
void tst_KorvoWebApiCalls::loginForgetsTheTokenBefore()
{
    QVERIFY(logIn());
    platform->server.enqueue(TOKEN, ScriptedAnswer::held(loginAnswer("ina")));
    api->login(QStringLiteral("ina"), QStringLiteral("pass"));
    QVERIFY(requestsCome(2));
    api->queryRemoteProjects();
    QVERIFY(waitFor("projectInfoReceived"));
    QCOMPARE(platform->server.requests(PROJECTS).last().header("Authorization").trimmed(), QByteArray("Bearer"));
}

// While the code is asked for, the login before still counts.
void tst_KorvoWebApiCalls::codeForgetsTheTokenBefore()
{
    QVERIFY(logIn());
    platform->server.enqueue(TWO_STEP, ScriptedAnswer::ok("true"));
    api->login(QStringLiteral("ina"), QStringLiteral("pass"));
    QVERIFY(waitFor("tokenAuthenticationNeeded"));
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedIn);
    platform->server.enqueue(TOKEN, ScriptedAnswer::held(loginAnswer("ina")));
    api->loginWithToken(QStringLiteral("123456"));
    QVERIFY(requestsCome(2));
    api->queryRemoteProjects();
    QVERIFY(waitFor("projectInfoReceived"));
    QCOMPARE(platform->server.requests(PROJECTS).last().header("Authorization").trimmed(), QByteArray("Bearer"));
}

void tst_KorvoWebApiCalls::logoutForgetsTheTokenAndKeepsTheUser()
{
    QVERIFY(logIn());
    api->logout();
    QVERIFY(waitFor("loginStatusChanged"));
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(api->currentUser(), QStringLiteral("ina"));
    QCOMPARE(api->currentUserCompanyId(), QStringLiteral("company-01"));
    api->queryRemoteProjects();
    QVERIFY(waitFor("projectInfoReceived"));
    QCOMPARE(platform->server.lastRequest().header("Authorization").trimmed(), QByteArray("Bearer"));
    QCOMPARE(platform->server.lastRequest().header("X-KorvoService-ClientId"), QByteArray("Vantrel"));
}

void tst_KorvoWebApiCalls::tokenThatIsAboutToEndIsNone()
{
    QVERIFY(logIn("ina", 599));
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(recorder->count("loginExpired"), 0);
}

// The token must not end before the login does, so on a slow machine it lasts longer the next time.
void tst_KorvoWebApiCalls::endOfTheTokenIsTold()
{
    bool wasLoggedIn = false;
    for (int seconds = 1; !wasLoggedIn && seconds < 100; seconds *= 4) {
        QVERIFY(logIn("ina", 600 + seconds));
        wasLoggedIn = recorder->count("loginExpired") > 0 || api->loginStatus() == LoginStatus::LoginStatusLoggedIn;
    }
    QVERIFY(waitFor("loginExpired"));
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(api->currentUser(), QStringLiteral("ina"));
}

void tst_KorvoWebApiCalls::failedQueryIsTold_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArrayList>("expected");
    const QByteArrayList errorOnly{"errorOccurred"};
    QTest::newRow("projects") << Call([](KorvoWebApi &facade) { facade.queryRemoteProjects(); })
                              << QByteArrayList{"queryRemoteProjectsError"};
    QTest::newRow("statuses") << Call([](KorvoWebApi &facade) { facade.queryUploadProjectStatus({PROJECT}); })
                              << QByteArrayList{"errorOccurred", "uploadStatusInfoReceived"};
    QTest::newRow("link") << Call([](KorvoWebApi &facade) { facade.startSingleProjectFileDownload(ID, PROJECT); })
                          << errorOnly;
    QTest::newRow("links") << Call([](KorvoWebApi &facade) { facade.startAllProjectsMediaDownload(PROJECT); })
                           << QByteArrayList{"errorOccurred", "allProjectsMediaDownloadLinkReceived"};
    QTest::newRow("password") << Call([](KorvoWebApi &facade) { facade.resetPassword(PROJECT); }) << errorOnly;
}

void tst_KorvoWebApiCalls::failedQueryIsTold()
{
    QFETCH(Call, call);
    QFETCH(QByteArrayList, expected);
    platform->server.setDefaultAnswer(ScriptedAnswer(500));
    call(*api);
    QVERIFY(waitFor(expected.last()));
    QCOMPARE(recorder->names(), expected);
    QCOMPARE(recorder->events().first().arguments.first().value<Error>(), Error::Server);
}

void tst_KorvoWebApiCalls::projectsAreListed()
{
    QVERIFY(logIn());
    platform->server.enqueue(PROJECTS,
                             ScriptedAnswer::ok("<P><ProjectInfo><ProjectId>a</ProjectId></ProjectInfo></P>"));
    api->queryRemoteProjects();
    QVERIFY(waitFor("projectInfoReceived"));
    const auto projects = recorder->all("projectInfoReceived").first().first().value<QList<ProjectInfo>>();
    QCOMPARE(projects.size(), 1);
    QCOMPARE(projects.first().projectId(), QStringLiteral("a"));
    QCOMPARE(platform->server.lastRequest().target, PROJECTS + "?pageSize=1000000");
    QCOMPARE(recorder->names(), QByteArrayList{"projectInfoReceived"});
}

void tst_KorvoWebApiCalls::statusesAreAskedForById()
{
    QVERIFY(logIn());
    platform->server.enqueue(STATUSES, ScriptedAnswer::ok("[{\"status\":2,\"projectId\":\"b\"}]"));
    api->queryUploadProjectStatus({QStringLiteral("a"), QStringLiteral("b")});
    QVERIFY(waitFor("uploadStatusInfoReceived"));
    const auto statuses = recorder->all("uploadStatusInfoReceived").first().first().value<QList<UploadStatusInfo>>();
    QCOMPARE(statuses.size(), 1);
    QCOMPARE(statuses.first().status, 2);
    QCOMPARE(platform->server.lastRequest().body.simplified(), QByteArray("{ \"Projects\": [ \"a\", \"b\" ] }"));
    QCOMPARE(recorder->names(), QByteArrayList{"uploadStatusInfoReceived"});
}

void tst_KorvoWebApiCalls::linksAreAskedForByTheirNames()
{
    QVERIFY(logIn());
    const ScriptedAnswer links
        = ScriptedAnswer::ok("<m><media-item><url>https://x/1</url></media-item><media-item><url>https://x/2</url>"
                             "</media-item></m>");
    platform->server.enqueue(DATA + "/Media/a.mp4/Download", links);
    platform->server.enqueue(DATA + "/Media/Download", links);
    api->startSingleProjectFileDownload(ID, QStringLiteral("a.mp4"));
    QVERIFY(waitFor("singleFileDownloadLinkReceived"));
    QCOMPARE(recorder->all("singleFileDownloadLinkReceived").first().first().value<SingleMediaFileLinkData>().url,
             QStringLiteral("https://x/1"));
    api->startAllProjectsMediaDownload(PROJECT);
    QVERIFY(waitFor("allProjectsMediaDownloadLinkReceived"));
    QCOMPARE(recorder->all("allProjectsMediaDownloadLinkReceived")
                 .first()
                 .first()
                 .value<QList<SingleMediaFileLinkData>>()
                 .size(),
             2);
    QCOMPARE(paths(), QByteArrayList({DATA + "/Media/a.mp4/Download", DATA + "/Media/Download"}));
    QCOMPARE(recorder->errors(), QList<Error>());
}

void tst_KorvoWebApiCalls::passwordIsReset()
{
    api->resetPassword(QStringLiteral("ina@example.com"));
    QVERIFY(requestsCome(1));
    QCOMPARE(paths(), QByteArrayList{RESET});
    QVERIFY(platform->server.lastRequest().body.contains("<UserName>ina@example.com</UserName>"));
}

void tst_KorvoWebApiCalls::dataIsWrittenToItsFile_data()
{
    using Fetch = std::function<unsigned int(KorvoWebApi &, const QString &)>;
    QTest::addColumn<Call>("call"); // writes into the file "data" of the current folder
    QTest::addColumn<QByteArray>("path");
    const auto row = [](const char *name, const Fetch &fetch, const QByteArray &path) {
        QTest::newRow(name) << Call([fetch](KorvoWebApi &facade) {
            QCOMPARE(fetch(facade, QDir::current().filePath(QStringLiteral("deep/data"))), 1u);
        }) << path;
    };
    row(
        "project",
        [](KorvoWebApi &facade, const QString &path) { return facade.downloadQuickviewProjectData(PROJECT, path); },
        DATA);
    row(
        "surveys",
        [](KorvoWebApi &facade, const QString &path) { return facade.downloadQuickviewSurveyData(PROJECT, path); },
        DATA + "/Surveys");
    row(
        "manholes",
        [](KorvoWebApi &facade, const QString &path) { return facade.downloadQuickviewManholeData(PROJECT, path); },
        DATA + "/Manholes");
    row(
        "file by its link",
        [](KorvoWebApi &facade, const QString &path) {
            return facade.downloadSingleProjectFile(path, QStringLiteral("https://web.korvo.example/ticket/1"));
        },
        "/ticket/1");
}

void tst_KorvoWebApiCalls::dataIsWrittenToItsFile()
{
    QFETCH(Call, call);
    QFETCH(QByteArray, path);
    QVERIFY(QDir::setCurrent(folder->path()));
    platform->server.enqueue(path, ScriptedAnswer::ok("the data"));
    call(*api);
    QVERIFY(waitFor("downloadActiveChanged", 2));
    QCOMPARE(contentOf(local(QStringLiteral("deep/data"))), QByteArray("the data"));
    QCOMPARE(paths(), QByteArrayList{path});
    QCOMPARE(recorder->names(), QByteArrayList({"downloadActiveChanged", "downloadFinished", "downloadActiveChanged"}));
    QCOMPARE(recorder->all("downloadActiveChanged"), QList<QVariantList>({{1u, true}, {1u, false}}));
    QCOMPARE(recorder->errors(), QList<Error>());
    QVERIFY(eventually([&] { return !api->anyDownloadActive(); }));
}

void tst_KorvoWebApiCalls::projectIsDownloadedBelowTheCompanyOfTheLogin()
{
    QVERIFY(logIn());
    platform->server.enqueue(Route::LISTING, ScriptedAnswer::ok(listingOf({{"a/b", 3}})));
    platform->server.always([](const RecordedRequest &request) { return request.path().contains("/webdav/"); },
                            ScriptedAnswer::ok("abc"));
    const unsigned int id
        = api->downloadProject(QStringLiteral("project-x"), QStringLiteral("My Folder"), local(QStringLiteral("out")));
    QCOMPARE(id, 1u);
    QVERIFY(waitFor("downloadActiveChanged", 2));
    QCOMPARE(platform->server.lastRequest().path(), QByteArray("/korvoservice/webdav/company-0project-xmyfolder/a/b"));
    QCOMPARE(contentOf(local(QStringLiteral("out/a/b"))), QByteArray("abc"));
    QCOMPARE(recorder->all("downloadFileProgressChanged").last(), QVariantList({1u, QStringLiteral("a/b"), 100}));
    QCOMPARE(recorder->all("completedDownloadFilesChanged").last(), QVariantList({1u, 1}));
    QCOMPARE(recorder->all("filesToDownloadTotalChanged").last(), QVariantList({1u, 1}));
    QCOMPARE(recorder->all("downloadTotalProgressChanged").last(), QVariantList({1u, 100}));
}

void tst_KorvoWebApiCalls::pausedDownloadGoesOn()
{
    QVERIFY(logIn());
    platform->server.enqueue(Route::LISTING, ScriptedAnswer::held(listingOf({{"a", 3}})));
    platform->server.always([](const RecordedRequest &request) { return request.path().contains("/webdav/"); },
                            ScriptedAnswer::ok("abc"));
    const unsigned int id = api->downloadProject(PROJECT, PROJECT, local(QStringLiteral("out")));
    QVERIFY(requestsCome(1));
    api->pauseDownload(id);
    api->resumeDownload(id);
    platform->server.release();
    QVERIFY(waitFor("downloadFinished"));
    QCOMPARE(contentOf(local(QStringLiteral("out/a"))), QByteArray("abc"));
    QCOMPARE(log->count(), 0); // the id was known
}

void tst_KorvoWebApiCalls::abortedDownloadIsGone()
{
    QVERIFY(logIn());
    platform->server.enqueue(Route::LISTING, ScriptedAnswer::held(listingOf({{"a", 3}})));
    const unsigned int id = api->downloadProject(PROJECT, PROJECT, local(QStringLiteral("out")));
    QVERIFY(requestsCome(1));
    QVERIFY(api->anyDownloadActive());
    api->abortDownload(id);
    QVERIFY(waitFor("downloadActiveChanged", 2));
    QVERIFY(eventually([&] { return !api->anyDownloadActive(); }));
    QVERIFY(!QFileInfo::exists(local(QStringLiteral("out"))));
    QCOMPARE(recorder->count("downloadFinished"), 0);
    QCOMPARE(log->count(), 0);
    api->abortDownload(id);
    QVERIFY(eventually([&] { return log->count() == 1; }));
    QCOMPARE(log->messages(), QStringList{QStringLiteral("Invalid id, project download not found.")});
}

void tst_KorvoWebApiCalls::dataDownloadCanBePausedAndAborted()
{
    platform->server.always(DATA, ScriptedAnswer::ok("the data").pausedAt(3));
    const unsigned int id = api->downloadQuickviewProjectData(PROJECT, local(QStringLiteral("data")));
    QVERIFY(requestsCome(1));
    api->pauseDownload(id);
    QVERIFY(eventually([&] { return !QFileInfo::exists(local(QStringLiteral("data"))); }));
    api->resumeDownload(id);
    QVERIFY(requestsCome(2));
    QVERIFY(QFileInfo::exists(local(QStringLiteral("data"))));
    api->abortDownload(id);
    QVERIFY(waitFor("downloadActiveChanged", 2));
    QVERIFY(eventually([&] { return !QFileInfo::exists(local(QStringLiteral("data"))); }));
    QCOMPARE(recorder->count("downloadFinished"), 0);
}

void tst_KorvoWebApiCalls::downloadFlagFallsWithTheLastOne()
{
    platform->server.always(DATA, ScriptedAnswer::held("held"));
    platform->server.always(DATA + "/Surveys", ScriptedAnswer::ok("quick"));
    api->downloadQuickviewProjectData(PROJECT, local(QStringLiteral("slow")));
    api->downloadQuickviewSurveyData(PROJECT, local(QStringLiteral("quick")));
    QVERIFY(waitFor("downloadFinished"));
    QCOMPARE(recorder->all("downloadFinished").first(), QVariantList{2u});
    QVERIFY(waitFor("downloadActiveChanged", 3));
    QVERIFY(api->anyDownloadActive());
    platform->server.release();
    QVERIFY(waitFor("downloadActiveChanged", 4));
    QVERIFY(eventually([&] { return !api->anyDownloadActive(); }));
}

void tst_KorvoWebApiCalls::projectIsUploaded()
{
    QVERIFY(logIn());
    writeProject(3);
    const unsigned int id = api->uploadProject(PROJECT, QStringLiteral("name"), local(QStringLiteral("in")), DATE, 2);
    QCOMPARE(id, 1u);
    QVERIFY(waitFor("anyUploadActiveChanged", 2));
    QCOMPARE(platform->uploadedFiles().size(), 3);
    const QByteArray begin = platform->server.requests(Route::BEGIN).first().body;
    QCOMPARE(textOf(begin, "CompanyId"), QByteArray("company-01"));
    QCOMPARE(textOf(begin, "Email"), QByteArray("ina"));
    QCOMPARE(textOf(begin, "ProjectId"), PROJECT.toUtf8());
    QCOMPARE(textOf(begin, "ProjectName"), QByteArray("name"));
    QCOMPARE(textOf(begin, "CreationDate"), QByteArray("2026-03-03T14:05:09Z"));
    QCOMPARE(recorder->all("anyUploadActiveChanged"), QList<QVariantList>({{true}, {false}}));
    QCOMPARE(recorder->all("uploadActiveChanged"), QList<QVariantList>({{1u, true}, {1u, false}}));
    QCOMPARE(recorder->all("uploadFinished"), QList<QVariantList>{{1u}});
    QCOMPARE(recorder->all("completedUploadFilesChanged").last(), QVariantList({1u, 3}));
    QCOMPARE(recorder->all("filesToUploadTotalChanged").last(), QVariantList({1u, 3}));
    QCOMPARE(recorder->all("uploadTotalProgressChanged").last(), QVariantList({1u, 100}));
    QCOMPARE(recorder->all("uploadFileProgressChanged").last().last(), QVariant(100));
    QVERIFY(!recorder->all("currentUploadFilesChanged").last().last().toStringList().isEmpty());
    QCOMPARE(recorder->errors(), QList<Error>());
}

void tst_KorvoWebApiCalls::kindOfProjectIsTold_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("element");
    QTest::newRow("standard") << 0 << QByteArray();
    QTest::newRow("import tool") << 1 << QByteArray("<OrvandeImport>true</OrvandeImport>");
    QTest::newRow("quickview") << 2 << QByteArray("<ImportType>Quickview</ImportType>");
}

void tst_KorvoWebApiCalls::kindOfProjectIsTold()
{
    QFETCH(int, kind);
    QFETCH(QByteArray, element);
    writeProject(1);
    const QString name = QStringLiteral("name");
    const QString path = local(QStringLiteral("in"));
    if (kind == 0)
        api->uploadProject(PROJECT, name, path, DATE);
    else if (kind == 1)
        api->uploadQZProject(name, path, DATE);
    else
        api->uploadQuickviewProject(ID, name, path, DATE, {});
    QVERIFY(waitFor("uploadFinished"));
    QVERIFY(eventually([&] { return platform->server.requestCount(Route::UPLOADED) == 1; }));
    const QByteArray notice = platform->server.requests(Route::UPLOADED).first().body;
    QCOMPARE(notice.contains("Import"), !element.isEmpty());
    QVERIFY2(notice.contains(element), notice);
    const QByteArray id = textOf(platform->server.requests(Route::BEGIN).first().body, "ProjectId");
    QCOMPARE(textOf(notice, "ProjectId"), id);
    QCOMPARE(id == PROJECT.toUtf8(), kind != 1);
}

void tst_KorvoWebApiCalls::pausedUploadGoesOn()
{
    writeProject(2);
    platform->server.enqueue(Route::PUT_FILE, ScriptedAnswer::held());
    const unsigned int id = api->uploadProject(PROJECT, PROJECT, local(QStringLiteral("in")), DATE);
    QVERIFY(eventually([&] { return platform->server.requestCount(Route::PUT_FILE) == 1; }));
    api->pauseUpload(id);
    api->queryRemoteProjects(); // its answer says that the pause has been carried out
    QVERIFY(waitFor("projectInfoReceived"));
    platform->server.release();
    QVERIFY(eventually([&] {
        return !recorder->all("completedUploadFilesChanged").isEmpty()
               && recorder->all("completedUploadFilesChanged").last().last().toInt() == 1;
    }));
    QCOMPARE(platform->server.requestCount(Route::PUT_FILE), 1);
    api->resumeUpload(id);
    QVERIFY(waitFor("uploadFinished"));
    QCOMPARE(platform->server.requestCount(Route::PUT_FILE), 2);
    QCOMPARE(log->count(), 0);
}

void tst_KorvoWebApiCalls::abortedUploadIsCancelledOnTheServer()
{
    writeProject(2);
    platform->server.enqueue(Route::PUT_FILE, ScriptedAnswer::held());
    const unsigned int id = api->uploadProject(PROJECT, PROJECT, local(QStringLiteral("in")), DATE);
    QVERIFY(eventually([&] { return platform->server.requestCount(Route::PUT_FILE) == 1; }));
    api->abortUpload(id);
    QVERIFY(waitFor("anyUploadActiveChanged", 2));
    QVERIFY(eventually([&] { return platform->server.requestCount(Route::CANCEL) == 1; }));
    QCOMPARE(recorder->count("uploadFinished"), 0);
    QCOMPARE(recorder->errors(), QList<Error>{Error::Cancelled}); // the file in flight
    api->abortUpload(id);
    QVERIFY(eventually([&] { return log->contains(QStringLiteral("Cannot abort upload. Invalid id")); }));
}

void tst_KorvoWebApiCalls::failedUploadIsToldBehindItsEnd()
{
    writeProject(1);
    platform->server.always(Route::PUT_FILE, ScriptedAnswer(404));
    api->uploadProject(PROJECT, PROJECT, local(QStringLiteral("in")), DATE);
    QVERIFY(waitFor("errorOccurred"));
    QCOMPARE(recorder->errors(), QList<Error>{Error::Network});
    const QByteArrayList names = recorder->names();
    QCOMPARE(names.mid(names.size() - 3),
             QByteArrayList({"uploadActiveChanged", "anyUploadActiveChanged", "errorOccurred"}));
    QCOMPARE(names.count("uploadFinished"), 0);
    QVERIFY(!api->anyUploadActive());
}

void tst_KorvoWebApiCalls::finishedUploadCannotBeAborted()
{
    writeProject(1);
    const unsigned int id = api->uploadProject(PROJECT, PROJECT, local(QStringLiteral("in")), DATE);
    QVERIFY(waitFor("anyUploadActiveChanged", 2));
    api->abortUpload(id);
    api->pauseUpload(id);
    api->resumeUpload(id);
    api->queryRemoteProjects();
    QVERIFY(waitFor("projectInfoReceived"));
    QCOMPARE(platform->server.requestCount(Route::CANCEL), 0);
    QCOMPARE(recorder->count("uploadActiveChanged"), 2);
    QCOMPARE(log->count(), 0);
}

// A call of the worker that the facade has no use for.
void tst_KorvoWebApiCalls::singleFileTellsFailuresOnly()
{
    writeProject(1);
    KorvoWebApiWorker worker;
    worker.initialize();
    const SignalRecorder seen(&worker);
    const QString path = local(QStringLiteral("in/file 1"));
    worker.uploadFile(QStringLiteral("bucket"), local(QStringLiteral("missing")), {}, QStringLiteral("key"));
    QCOMPARE(seen.errors(), QList<Error>{Error::FileOpen});
    worker.uploadFile(QStringLiteral("bucket"), path, QStringLiteral("folder"), QStringLiteral("good"));
    QVERIFY(requestsCome(1));
    platform->server.enqueue(Route::PUT_FILE, ScriptedAnswer(404));
    worker.uploadFile(QStringLiteral("bucket"), path, QStringLiteral("folder"), QStringLiteral("bad"));
    QVERIFY(seen.waitFor("errorOccurred", 2));
    QCOMPARE(seen.errors(), QList<Error>({Error::FileOpen, Error::Network}));
    QCOMPARE(platform->uploadedFiles().value("good"), patternOf(1000, 1));
    QCOMPARE(textOf(platform->server.requests(Route::PUT_FILE).first().body, "ProjectFolderName"),
             QByteArray("folder"));
}

void tst_KorvoWebApiCalls::callsDuringALoginWaitForItsEnd()
{
    platform->server.enqueue(CREDENTIALS, ScriptedAnswer::held(CREDENTIALS_ANSWER));
    api->login(QStringLiteral("ina"), QStringLiteral("pass"));
    QVERIFY(requestsCome(4));
    api->queryRemoteProjects();
    api->logout();
    platform->server.release();
    QVERIFY(waitFor("projectInfoReceived"));
    QCOMPARE(platform->server.requests(PROJECTS).last().header("Authorization"), QByteArray("Bearer the-token"));
    QVERIFY(waitFor("loginStatusChanged", 3));
    QCOMPARE(api->loginStatus(), LoginStatus::LoginStatusLoggedOut);
}

QTEST_GUILESS_MAIN(tst_KorvoWebApiCalls)
#include "tst_KorvoWebApiCalls.moc"
