#include "flow/Session.h"
#include "support/LogCapture.h"

#include <QtTest/QtTest>

#include <chrono>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using namespace std::chrono_literals;
using LoginResult = KorvoWebApi::LoginResult;
using LoginStatus = KorvoWebApi::LoginStatus;
using UserRole = KorvoWebApi::UserRole;

namespace {

const QString TOKEN_ROUTE = QStringLiteral("Token");
const QString CHECK_ROUTE = QStringLiteral("api/Users/CheckTwoStepAuthentication");
const QString CREDENTIALS_ROUTE = QStringLiteral("api/Projects/companykorvoservice");

/// The ends of logins so far as "user: result".
QStringList resultsOf(Session &session)
{
    QStringList results;
    for (const QVariantList &arguments : session.signalsSeen().all("loginResult"))
        results.append(arguments.at(0).toString() + QStringLiteral(": ")
                       + QString::number(int(arguments.at(1).value<LoginResult>())));
    return results;
}

} // namespace

class tst_LogIn : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void passwordLetsTheUserIn();
    void serversAreAskedInThisOrder();
    void secondFactorIsAskedFor();
    void wrongCodeIsRefused();
    void wrongPasswordIsRefused();
    void failedLoginForgetsTheUserOnly();
    void refusedUserMayTryAgain();
    void userNameIsEncodedOnTheWay();
    void roleComesWithTheLogin_data();
    void roleComesWithTheLogin();
    void cancelledLoginSaysSo();
    void cancelDoesNothingWhileTheSecondFactorIsInQuestion();
    void cancelAfterTheEndDoesNothing();
    void newLoginCancelsThePendingOne();
    void newLoginDropsThePendingQuestion();
    void newLoginOfAUserWhoIsInCountsAsLoggedIn();
    void tokenRunsOut();
    void logoutKeepsTheUser();
    void logoutEndsTheRightsOfTheUser();
    void loginSurvivesASkewedClock_data();
    void loginSurvivesASkewedClock();
    void loginSurvivesMissingCredentials();
    void unusableAnswerIsATimeOutWithItsError_data();
    void unusableAnswerIsATimeOutWithItsError();
    void foreignCertificateIsNotTrusted_data();
    void foreignCertificateIsNotTrusted();
    void twoFacadesDoNotDisturbEachOther();
    void passwordCanBeReset();
    void failedResetIsTold();

private:
    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
};

void tst_LogIn::initTestCase()
{
    QCOMPARE(platform.start(), QString());
}

void tst_LogIn::init()
{
    log.reset(new LogCapture);
    platform.startJournal();
}

void tst_LogIn::cleanup()
{
    platform.clearFaults();
    platform.setClockSkew(0);
    log.reset();
}

void tst_LogIn::passwordLetsTheUserIn()
{
    Session session;
    QList<LoginStatus> statuses;
    connect(&session.api(), &KorvoWebApi::loginStatusChanged, this, [&] { statuses.append(session->loginStatus()); });
    session->login(USER, PASSWORD);
    QVERIFY(session.signalsSeen().waitFor("loginResult"));
    QCOMPARE(session.signalsSeen().names(),
             QByteArrayList({ "loginStatusChanged", "currentUserChanged", "loginStatusChanged", "loginResult" }));
    QCOMPARE(resultsOf(session), QStringList { USER + QStringLiteral(": 0") });
    QCOMPARE(statuses.last(), LoginStatus::LoginStatusLoggedIn);
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedIn);
    QCOMPARE(session->currentUser(), USER);
    QCOMPARE(session->currentUserFirstName(), QStringLiteral("Ida"));
    QCOMPARE(session->currentUserLastName(), QString::fromUtf8("Weiß"));
    QCOMPARE(session->currentUserCompanyId(), COMPANY);
    QCOMPARE(session->currentUserRole(), UserRole::CompanyOperator);
    QCOMPARE(log->messages(), QStringList());
}

void tst_LogIn::serversAreAskedInThisOrder()
{
    Session session;
    QVERIFY(session.logIn());
    QCOMPARE(platform.journal(), QStringList({ QStringLiteral("GET api/Users/CheckTwoStepAuthentication"),
                                               QStringLiteral("PUT Token"), QStringLiteral("GET api/Status/Get"),
                                               QStringLiteral("GET api/Projects/companykorvoservice") }));
}

void tst_LogIn::secondFactorIsAskedFor()
{
    Session session;
    session->login(SECURE_USER, SECURE_PASSWORD);
    QVERIFY(session.signalsSeen().waitFor("tokenAuthenticationNeeded"));
    QCOMPARE(session.signalsSeen().names(),
             QByteArrayList({ "loginStatusChanged", "loginStatusChanged", "tokenAuthenticationNeeded" }));
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(platform.journal(), QStringList { QStringLiteral("GET api/Users/CheckTwoStepAuthentication") });

    session.signalsSeen().clear();
    const QString code = SECURE_CODE;
    session->loginWithToken(code);
    QVERIFY(session.signalsSeen().waitFor("loginResult"));
    QCOMPARE(session.signalsSeen().names(),
             QByteArrayList({ "loginStatusChanged", "currentUserChanged", "loginStatusChanged", "loginResult" }));
    QCOMPARE(resultsOf(session), QStringList { SECURE_USER + QStringLiteral(": 0") });
    QCOMPARE(session->currentUserFirstName(), QStringLiteral("Sepp"));
}

void tst_LogIn::wrongCodeIsRefused()
{
    Session session;
    session->login(SECURE_USER, SECURE_PASSWORD);
    QVERIFY(session.signalsSeen().waitFor("tokenAuthenticationNeeded"));
    const QString wrong = QStringLiteral("654321");
    session->loginWithToken(wrong);
    QVERIFY(session.signalsSeen().waitFor("loginResult"));
    QCOMPARE(resultsOf(session), QStringList { QStringLiteral(": 2") });
    QCOMPARE(session.signalsSeen().count("errorOccurred"), 0);
    // The same user with the right code, without a new login().
    session->loginWithToken(SECURE_CODE);
    QVERIFY(session.signalsSeen().waitFor("loginResult", 2));
    QCOMPARE(resultsOf(session).last(), QString(SECURE_USER + QStringLiteral(": 0")));
}

void tst_LogIn::wrongPasswordIsRefused()
{
    Session session;
    session->login(USER, QStringLiteral("Camera 12%1 Kanal"));
    QVERIFY(session.signalsSeen().waitFor("loginResult"));
    QCOMPARE(session.signalsSeen().names(),
             QByteArrayList({ "loginStatusChanged", "loginStatusChanged", "loginResult" }));
    QCOMPARE(resultsOf(session), QStringList { QStringLiteral(": 2") });
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(session->currentUser(), QString());
}

void tst_LogIn::failedLoginForgetsTheUserOnly()
{
    Session session;
    QVERIFY(session.logIn());
    session->login(USER, QStringLiteral("wrong"));
    QVERIFY(session.signalsSeen().waitFor("loginResult"));
    QCOMPARE(session.signalsSeen().all("currentUserChanged"), QList<QVariantList> { QVariantList { QString() } });
    QCOMPARE(session->currentUser(), QString());
    QCOMPARE(session->currentUserFirstName(), QStringLiteral("Ida"));
    QCOMPARE(session->currentUserCompanyId(), COMPANY);
    QCOMPARE(session->currentUserRole(), UserRole::CompanyOperator);
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedOut);
}

void tst_LogIn::refusedUserMayTryAgain()
{
    Session session;
    QVERIFY(!session.logIn(USER, QStringLiteral("wrong")));
    QVERIFY(session.logIn());
    QCOMPARE(session->currentUser(), USER);
}

void tst_LogIn::userNameIsEncodedOnTheWay()
{
    const QString user = QString::fromUtf8("jörg+a&b=c d%41@korvo.example");
    platform.addAccount({ { QStringLiteral("email"), user }, { QStringLiteral("password"), QStringLiteral("x%2y=z ") } });
    Session session;
    QVERIFY(session.logIn(user, QStringLiteral("x%2y=z ")));
    QCOMPARE(session->currentUser(), user);
}

void tst_LogIn::roleComesWithTheLogin_data()
{
    QTest::addColumn<QString>("role");
    QTest::addColumn<int>("expected");
    QTest::newRow("end user") << QStringLiteral("END_USER") << int(UserRole::EndUser);
    QTest::newRow("unknown") << QStringLiteral("end_user") << int(UserRole::Guest);
}

void tst_LogIn::roleComesWithTheLogin()
{
    QFETCH(QString, role);
    const QString user = QStringLiteral("role@korvo.example");
    platform.addAccount({ { QStringLiteral("email"), user }, { QStringLiteral("password"), QStringLiteral("secret-1") },
                          { QStringLiteral("roles"), role } });
    Session session;
    QVERIFY(session.logIn(user, QStringLiteral("secret-1")));
    QTEST(int(session->currentUserRole()), "expected");
}

void tst_LogIn::cancelledLoginSaysSo()
{
    const int hang = platform.addFault(QStringLiteral("noAnswer"), TOKEN_ROUTE);
    Session session;
    session->login(USER, PASSWORD);
    QVERIFY(platform.waitForHit(hang));
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggingIn);
    session->cancelLogin();
    QVERIFY(session.signalsSeen().waitFor("loginResult"));
    QCOMPARE(session.signalsSeen().names(),
             QByteArrayList({ "loginStatusChanged", "loginStatusChanged", "loginResult" }));
    QCOMPARE(resultsOf(session), QStringList { QStringLiteral(": 3") });
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(log->messages(), QStringList());
}

void tst_LogIn::cancelDoesNothingWhileTheSecondFactorIsInQuestion()
{
    const int slow = platform.addFault({ { QStringLiteral("kind"), QStringLiteral("delay") },
                                         { QStringLiteral("route"), CHECK_ROUTE }, { QStringLiteral("delayMs"), 300 } });
    Session session;
    session->login(USER, PASSWORD);
    QVERIFY(platform.waitForHit(slow));
    session->cancelLogin();
    QVERIFY(session.signalsSeen().waitFor("loginResult"));
    QCOMPARE(resultsOf(session), QStringList { USER + QStringLiteral(": 0") });
}

void tst_LogIn::cancelAfterTheEndDoesNothing()
{
    Session session;
    QVERIFY(session.logIn());
    session->cancelLogin();
    QVERIFY(session.settle());
    QCOMPARE(session.signalsSeen().names(), QByteArrayList { "uploadStatusInfoReceived" });
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedIn);
}

void tst_LogIn::newLoginCancelsThePendingOne()
{
    const int hang = platform.addFault(QStringLiteral("noAnswer"), TOKEN_ROUTE);
    Session session;
    session->login(USER, PASSWORD);
    QVERIFY(platform.waitForHit(hang));
    session->login(EXPIRING_USER, EXPIRING_PASSWORD);
    QVERIFY(session.signalsSeen().waitFor("loginResult", 2));
    QCOMPARE(resultsOf(session), QStringList({ QStringLiteral(": 3"), EXPIRING_USER + QStringLiteral(": 0") }));
    QCOMPARE(session->currentUser(), EXPIRING_USER);
}

void tst_LogIn::newLoginDropsThePendingQuestion()
{
    const int slow = platform.addFault({ { QStringLiteral("kind"), QStringLiteral("delay") },
                                         { QStringLiteral("route"), CHECK_ROUTE }, { QStringLiteral("delayMs"), 300 } });
    Session session;
    session->login(SECURE_USER, SECURE_PASSWORD);
    QVERIFY(platform.waitForHit(slow));
    session->login(USER, PASSWORD);
    QVERIFY(session.signalsSeen().waitFor("loginResult"));
    // By now the first question has been answered too.
    QTRY_COMPARE(platform.journal().count(QStringLiteral("GET api/Users/CheckTwoStepAuthentication")), 2);
    QVERIFY(session.settle());
    QCOMPARE(session.signalsSeen().count("tokenAuthenticationNeeded"), 0);
    QCOMPARE(resultsOf(session), QStringList { USER + QStringLiteral(": 0") });
}

void tst_LogIn::newLoginOfAUserWhoIsInCountsAsLoggedIn()
{
    Session session;
    QVERIFY(session.logIn());
    const int hang = platform.addFault(QStringLiteral("noAnswer"), CHECK_ROUTE);
    session->login(USER, PASSWORD);
    QVERIFY(platform.waitForHit(hang));
    QVERIFY(session.signalsSeen().waitFor("loginStatusChanged"));
    // The token is given up no earlier than the password is sent.
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedIn);
}

void tst_LogIn::tokenRunsOut()
{
    Session session;
    QVERIFY(session.logIn(EXPIRING_USER, EXPIRING_PASSWORD));
    QVERIFY(session.signalsSeen().waitFor("loginExpired"));
    QCOMPARE(session.signalsSeen().names(), QByteArrayList { "loginExpired" });
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(session->currentUser(), EXPIRING_USER);
    QVERIFY(session.logIn());
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedIn);
}

void tst_LogIn::logoutKeepsTheUser()
{
    Session session;
    QVERIFY(session.logIn());
    session->logout();
    QVERIFY(session.signalsSeen().waitFor("loginStatusChanged"));
    QCOMPARE(session.signalsSeen().names(), QByteArrayList { "loginStatusChanged" });
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QCOMPARE(session->currentUser(), USER);
    QCOMPARE(session->currentUserFirstName(), QStringLiteral("Ida"));
    QCOMPARE(session->currentUserRole(), UserRole::CompanyOperator);
}

void tst_LogIn::logoutEndsTheRightsOfTheUser()
{
    Session session;
    QVERIFY(session.logIn());
    session->logout();
    session->queryRemoteProjects();
    QVERIFY(session.signalsSeen().waitFor("queryRemoteProjectsError"));
    QCOMPARE(session.signalsSeen().all("queryRemoteProjectsError").first().first().value<Error>(),
             Error::AuthenticationRequired);
    QCOMPARE(session.signalsSeen().names(), QByteArrayList({ "loginStatusChanged", "queryRemoteProjectsError" }));
}

void tst_LogIn::loginSurvivesASkewedClock_data()
{
    QTest::addColumn<int>("skew");
    QTest::newRow("two hours ahead") << 7200;
    QTest::newRow("two hours behind") << -7200;
}

void tst_LogIn::loginSurvivesASkewedClock()
{
    QFETCH(int, skew);
    platform.setClockSkew(skew);
    const QJsonObject object { { QStringLiteral("key"), QStringLiteral("a.txt") },
                               { QStringLiteral("text"), QStringLiteral("hello") } };
    platform.addProject(QStringLiteral("clock"), QStringLiteral("clock"), { object });
    const int refusals = platform.refusals();
    Session session;
    QVERIFY(session.logIn());
    QTemporaryDir folder;
    session->downloadProject(QStringLiteral("clock"), QStringLiteral("clock"), folder.path());
    QVERIFY(session.signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session.signalsSeen().errors(), QList<Error>());
    QVERIFY(QFileInfo::exists(folder.filePath(QStringLiteral("a.txt"))));
    QCOMPARE(platform.refusals(), refusals);
    // The offset it is that made them hold: with the clock moved behind its back the platform refuses.
    platform.setClockSkew(0);
    session->downloadProject(QStringLiteral("clock"), QStringLiteral("clock"), folder.path() + QStringLiteral("/2"));
    QVERIFY(session.signalsSeen().waitFor("downloadFinished", 2));
    QVERIFY(session.signalsSeen().errors().contains(Error::AuthenticationRequired));
}

void tst_LogIn::loginSurvivesMissingCredentials()
{
    for (const char *kind : { "emptyBody", "garbage" }) {
        platform.addFault(QLatin1String(kind), CREDENTIALS_ROUTE);
        Session session;
        QVERIFY(session.logIn());
        QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedIn);
        // Signed with nothing, storage requests are refused.
        QTemporaryDir folder;
        session->downloadProject(QStringLiteral("p"), QStringLiteral("f"), folder.path());
        QVERIFY(session.signalsSeen().waitFor("downloadFinished"));
        QCOMPARE(session.signalsSeen().errors(), QList<Error> { Error::AuthenticationRequired });
    }
}

void tst_LogIn::unusableAnswerIsATimeOutWithItsError_data()
{
    QTest::addColumn<QJsonObject>("fault");
    QTest::addColumn<int>("error");
    const auto status = [](int number, const char *body) {
        return QJsonObject { { QStringLiteral("kind"), QStringLiteral("status") }, { QStringLiteral("status"), number },
                             { QStringLiteral("body"), QLatin1String(body) }, { QStringLiteral("route"), TOKEN_ROUTE } };
    };
    const auto kind = [](const char *name) {
        return QJsonObject { { QStringLiteral("kind"), QLatin1String(name) }, { QStringLiteral("route"), TOKEN_ROUTE } };
    };
    QTest::newRow("500 with an object") << status(500, "{}") << int(Error::Server);
    QTest::newRow("503 with an object") << status(503, "{}") << int(Error::Network);
    QTest::newRow("another refusal") << status(400, R"({"error": "unsupported_grant_type"})") << int(Error::Network);
    QTest::newRow("500 with a page") << status(500, "<html/>") << int(Error::UnreadableLogin);
    QTest::newRow("empty") << kind("emptyBody") << int(Error::UnreadableLogin);
    QTest::newRow("garbage") << kind("garbage") << int(Error::UnreadableLogin);
    QTest::newRow("cut short") << kind("truncatedBody") << int(Error::UnreadableLogin);
    QTest::newRow("megabytes") << kind("hugeBody") << int(Error::UnreadableLogin);
    QTest::newRow("no token in it") << status(200, "{}") << int(Error::None);
}

void tst_LogIn::unusableAnswerIsATimeOutWithItsError()
{
    QFETCH(QJsonObject, fault);
    QFETCH(int, error);
    platform.addFault(fault);
    Session session;
    session->login(USER, PASSWORD);
    QVERIFY(session.signalsSeen().waitFor("loginResult"));
    QCOMPARE(resultsOf(session), QStringList { QStringLiteral(": 1") });
    const QList<Error> expected = error == 0 ? QList<Error>() : QList<Error> { Error(error) };
    QCOMPARE(session.signalsSeen().errors(), expected);
    QCOMPARE(session.signalsSeen().names().last(), QByteArray("loginResult"));
    QCOMPARE(session->loginStatus(), LoginStatus::LoginStatusLoggedOut);
    QVERIFY(session.logIn());
}

void tst_LogIn::foreignCertificateIsNotTrusted_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : { "certificateWrongHost", "certificateExpired", "certificateSelfSigned" })
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void tst_LogIn::foreignCertificateIsNotTrusted()
{
    QFETCH(QString, kind);
    platform.addFault({ { QStringLiteral("kind"), kind }, { QStringLiteral("count"), 0 },
                        { QStringLiteral("host"), QStringLiteral("web.korvo.example") } });
    Session session;
    session->login(USER, PASSWORD);
    QVERIFY(session.signalsSeen().waitFor("loginResult"));
    QCOMPARE(resultsOf(session), QStringList { QStringLiteral(": 1") });
    QCOMPARE(platform.journal(), QStringList());
}

void tst_LogIn::twoFacadesDoNotDisturbEachOther()
{
    Session first;
    Session second;
    QVERIFY(first.logIn());
    QVERIFY(second.logIn(EXPIRING_USER, EXPIRING_PASSWORD));
    QCOMPARE(first->currentUser(), USER);
    QCOMPARE(second->currentUser(), EXPIRING_USER);
    second->logout();
    QVERIFY(second.signalsSeen().waitFor("loginStatusChanged"));
    QCOMPARE(first->loginStatus(), LoginStatus::LoginStatusLoggedIn);
    first->queryRemoteProjects();
    QVERIFY(first.signalsSeen().waitFor("projectInfoReceived"));
    QCOMPARE(first.signalsSeen().names(), QByteArrayList { "projectInfoReceived" });
}

void tst_LogIn::passwordCanBeReset()
{
    Session session;
    session->resetPassword(USER);
    QTRY_COMPARE(platform.get(QStringLiteral("resets")).toArray().size(), 1);
    const QJsonObject reset = platform.get(QStringLiteral("resets")).toArray().first().toObject();
    QCOMPARE(reset.value(QLatin1String("user")).toString(), USER);
    QVERIFY(session.settle());
    QCOMPARE(session.signalsSeen().errors(), QList<Error> { Error::AuthenticationRequired }); // that of the status query
}

void tst_LogIn::failedResetIsTold()
{
    platform.addFault({ { QStringLiteral("kind"), QStringLiteral("status") }, { QStringLiteral("status"), 500 },
                        { QStringLiteral("route"), QStringLiteral("api/Account/ResetPassword") } });
    Session session;
    session->resetPassword(USER);
    QVERIFY(session.signalsSeen().waitFor("errorOccurred"));
    QCOMPARE(session.signalsSeen().names(), QByteArrayList { "errorOccurred" });
    QCOMPARE(session.signalsSeen().errors(), QList<Error> { Error::Server });
}

QTEST_GUILESS_MAIN(tst_LogIn)

#include "tst_LogIn.moc"
