#include "handles/AuthenticationResponses.h"

#include <NQLogging/CLogger.h>

#include <QtCore/QElapsedTimer>
#include <QtTest/QTest>

using namespace Korvo::Web;
using Korvo::Logging::CLogger;
using Korvo::Logging::LogLevel;

namespace {

constexpr qint64 LIMIT_MS = 10000;

struct LogLine
{
    LogLevel level;
    QString category;
    QString message;
    QList<QVariant> arguments;
};

LoginResponse loginFrom(const QString &text, QNetworkReply::NetworkError networkError = QNetworkReply::NoError)
{
    LoginResponse response;
    response.setOutcome(networkError);
    response.parse(text);
    return response;
}

const QString FULL_LOGIN = QStringLiteral(
    "{\"access_token\":\"tok-1\",\"token_type\":\"bearer\",\"expires_in\":1209599,\"userName\":\"anna@example.org\","
    "\"userFirstName\":\"\u00c4nna\",\"userLastName\":\"O'Neil\",\"userCompanyId\":\"C-17\",\"userRoles\":\"COMPANY_OPERATOR\","
    "\".persistent\":\"True\",\".issued\":\"Tue, 04 Mar 2025 10:00:00 GMT\",\".expires\":\"Tue, 18 Mar 2025 10:00:00 GMT\"}");

} // namespace

class tst_AuthenticationResponses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void freshLoginIsEmpty();
    void loginCarriesEveryValue();
    void missingKeysLeaveEmptyValues();
    void valuesOfAnotherTypeLeaveEmptyValues();
    void persistentWithoutDotIsAnotherKey();
    void lifetime_data();
    void lifetime();
    void expiry_data();
    void expiry();
    void outcomeOfALogin_data();
    void outcomeOfALogin();
    void refusedLoginCarriesNothing();
    void cancelledLoginIsNotRead();
    void laterAnswerEndsAnEarlierLogin_data();
    void laterAnswerEndsAnEarlierLogin();
    void topLevelArrayHasNoErrorKey();
    void unreadableLoginIsLogged_data();
    void unreadableLoginIsLogged();
    void unreadableLoginKeepsPlaceMarkers();
    void tokenIsBlankedInTheLog_data();
    void tokenIsBlankedInTheLog();
    void passwordIsBlankedInTheLog_data();
    void passwordIsBlankedInTheLog();
    void textWithoutTokenIsLoggedAsItIs_data();
    void textWithoutTokenIsLoggedAsItIs();
    void readableLoginLogsNothing();
    void megabytesOfLoginEndInTime_data();
    void megabytesOfLoginEndInTime();

    void twoStepAnswer_data();
    void twoStepAnswer();
    void credentialsCarryEveryValue();
    void credentialsAreFoundAtAnyDepthInAnyNamespace();
    void lastCredentialWins();
    void credentialsBeforeAnErrorStay();
    void emptyCredentialsLeaveTheOutcome();
    void statusHasAnOutcomeOnly();
    void serverDate_data();
    void serverDate();

private:
    QString loggedText() const;

    QList<LogLine> log;
};

void tst_AuthenticationResponses::init()
{
    log.clear();
    CLogger::setSink([this](LogLevel level, const QString &category, const QString &message, const QList<QVariant> &arguments) {
        log.append({level, category, message, arguments});
    });
}

void tst_AuthenticationResponses::cleanup()
{
    CLogger::unsetSink();
}

QString tst_AuthenticationResponses::loggedText() const
{
    const QString before = QStringLiteral("\nJson data: \n");
    const QString &message = log.first().message;
    return message.mid(message.indexOf(before) + before.size());
}

void tst_AuthenticationResponses::freshLoginIsEmpty()
{
    const LoginResponse login;
    QVERIFY(login.isSuccess());
    QVERIFY(!login.loggedIn());
    QVERIFY(login.accessToken().isEmpty());
    QCOMPARE(login.expiresIn(), 0);
    QVERIFY(!login.expires().isValid());
}

void tst_AuthenticationResponses::loginCarriesEveryValue()
{
    const LoginResponse login = loginFrom(FULL_LOGIN);
    QVERIFY(login.isSuccess());
    QCOMPARE(login.error(), Error::None);
    QVERIFY(login.loggedIn());
    QCOMPARE(login.accessToken(), QStringLiteral("tok-1"));
    QCOMPARE(login.expiresIn(), 1209599);
    QCOMPARE(login.userName(), QStringLiteral("anna@example.org"));
    QCOMPARE(login.userFirstName(), QStringLiteral("\u00c4nna"));
    QCOMPARE(login.userLastName(), QStringLiteral("O'Neil"));
    QCOMPARE(login.userCompanyId(), QStringLiteral("C-17"));
    QCOMPARE(login.userRoles(), QStringLiteral("COMPANY_OPERATOR"));
    QCOMPARE(login.persistent(), QStringLiteral("True"));
    QCOMPARE(login.issued(), QStringLiteral("Tue, 04 Mar 2025 10:00:00 GMT"));
    QCOMPARE(login.expires(), QDateTime(QDate(2025, 3, 18), QTime(10, 0), Qt::UTC));
}

void tst_AuthenticationResponses::missingKeysLeaveEmptyValues()
{
    const LoginResponse login = loginFrom(QStringLiteral("{}"));
    QVERIFY(login.isSuccess());
    QVERIFY(login.loggedIn());
    QVERIFY(login.accessToken().isEmpty());
    QCOMPARE(login.expiresIn(), 0);
    QVERIFY(login.userName().isEmpty());
    QVERIFY(login.userRoles().isEmpty());
    QVERIFY(login.persistent().isEmpty());
    QVERIFY(!login.expires().isValid());
}

void tst_AuthenticationResponses::valuesOfAnotherTypeLeaveEmptyValues()
{
    const LoginResponse login = loginFrom(QStringLiteral(
        R"({"access_token":7,"userName":["anna"],"userRoles":null,".persistent":true,".expires":{"a":1}})"));
    QVERIFY(login.loggedIn());
    QVERIFY(login.accessToken().isEmpty());
    QVERIFY(login.userName().isEmpty());
    QVERIFY(login.userRoles().isEmpty());
    QVERIFY(login.persistent().isEmpty());
    QVERIFY(!login.expires().isValid());
}

void tst_AuthenticationResponses::persistentWithoutDotIsAnotherKey()
{
    const LoginResponse login = loginFrom(QStringLiteral(
        R"({"persistent":"True","issued":"x","expires":"Tue, 18 Mar 2025 10:00:00 GMT"})"));
    QVERIFY(login.persistent().isEmpty());
    QVERIFY(login.issued().isEmpty());
    QVERIFY(!login.expires().isValid());
}

void tst_AuthenticationResponses::lifetime_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("seconds");
    QTest::newRow("number") << QStringLiteral("3599") << 3599;
    QTest::newRow("largest") << QStringLiteral("2147483647") << 2147483647;
    QTest::newRow("too large") << QStringLiteral("2147483648") << 0;
    QTest::newRow("negative") << QStringLiteral("-5") << -5;
    QTest::newRow("fraction") << QStringLiteral("1.5") << 0;
    QTest::newRow("text") << QStringLiteral("\"3599\"") << 0;
    QTest::newRow("null") << QStringLiteral("null") << 0;
}

void tst_AuthenticationResponses::lifetime()
{
    QFETCH(QString, value);
    const LoginResponse login = loginFrom(QStringLiteral("{\"expires_in\":") + value + QLatin1Char('}'));
    QTEST(login.expiresIn(), "seconds");
}

void tst_AuthenticationResponses::expiry_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QDateTime>("expires");
    const QDateTime utc(QDate(2025, 3, 18), QTime(10, 0), Qt::UTC);
    QTest::newRow("GMT") << QStringLiteral("Tue, 18 Mar 2025 10:00:00 GMT") << utc;
    QTest::newRow("offset") << QStringLiteral("Tue, 18 Mar 2025 12:00:00 +0200") << utc;
    QTest::newRow("ISO") << QStringLiteral("2025-03-18T10:00:00Z") << QDateTime();
    QTest::newRow("nonsense") << QStringLiteral("soon") << QDateTime();
    QTest::newRow("empty") << QString() << QDateTime();
}

void tst_AuthenticationResponses::expiry()
{
    QFETCH(QString, value);
    QFETCH(QDateTime, expires);
    const LoginResponse login = loginFrom(QStringLiteral("{\".expires\":\"") + value + QStringLiteral("\"}"));
    QCOMPARE(login.expires().isValid(), expires.isValid());
    QCOMPARE(login.expires(), expires);
}

void tst_AuthenticationResponses::outcomeOfALogin_data()
{
    QTest::addColumn<int>("networkError");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("success");
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("loggedIn");
    const int ok = QNetworkReply::NoError;
    const int badRequest = QNetworkReply::ProtocolInvalidOperationError;
    const int serverError = QNetworkReply::InternalServerError;
    const int aborted = QNetworkReply::OperationCanceledError;
    const QString token = QStringLiteral(R"({"access_token":"t"})");
    const QString grant = QStringLiteral(R"({"error":"invalid_grant","error_description":"No."})");
    const QString other = QStringLiteral(R"({"error":"unsupported_grant_type"})");
    QTest::newRow("token") << ok << token << true << 0 << true;
    QTest::newRow("token after a failure") << serverError << token << false << 2 << true;
    QTest::newRow("invalid_grant") << badRequest << grant << true << 3 << false;
    QTest::newRow("invalid_grant with 200") << ok << grant << true << 3 << false;
    QTest::newRow("other error") << badRequest << other << false << 14 << false;
    QTest::newRow("other error with 200") << ok << other << true << 0 << false;
    QTest::newRow("Invalid_grant") << badRequest << QStringLiteral(R"({"error":"Invalid_grant"})") << false << 14 << false;
    QTest::newRow("error is null") << ok << QStringLiteral(R"({"error":null,"access_token":"t"})") << true << 0 << false;
    QTest::newRow("error is an object") << badRequest << QStringLiteral(R"({"error":{"a":"invalid_grant"}})") << false << 14 << false;
    QTest::newRow("not JSON") << ok << QStringLiteral("<html/>") << false << 5 << false;
    QTest::newRow("not JSON after a failure") << serverError << QStringLiteral("oops") << false << 5 << false;
    QTest::newRow("empty") << ok << QString() << false << 5 << false;
    QTest::newRow("cut off") << ok << QStringLiteral(R"({"access_token":"t)") << false << 5 << false;
    QTest::newRow("a bare text") << ok << QStringLiteral("\"t\"") << false << 5 << false;
    QTest::newRow("aborted") << aborted << QString() << false << 4 << false;
    QTest::newRow("aborted with token") << aborted << token << false << 4 << false;
}

void tst_AuthenticationResponses::outcomeOfALogin()
{
    QFETCH(int, networkError);
    QFETCH(QString, text);
    const LoginResponse login = loginFrom(text, static_cast<QNetworkReply::NetworkError>(networkError));
    QTEST(login.isSuccess(), "success");
    QTEST(static_cast<int>(login.error()), "code");
    QTEST(login.loggedIn(), "loggedIn");
}

void tst_AuthenticationResponses::refusedLoginCarriesNothing()
{
    const LoginResponse login = loginFrom(QStringLiteral(R"({"error":"invalid_grant","access_token":"t","userName":"anna"})"));
    QVERIFY(login.accessToken().isEmpty());
    QVERIFY(login.userName().isEmpty());
}

void tst_AuthenticationResponses::cancelledLoginIsNotRead()
{
    const LoginResponse login = loginFrom(QStringLiteral("not JSON"), QNetworkReply::OperationCanceledError);
    QVERIFY(login.isCancelled());
    QVERIFY(!login.loggedIn());
    QCOMPARE(login.error(), Error::Cancelled);
    QVERIFY(log.isEmpty());
}

void tst_AuthenticationResponses::laterAnswerEndsAnEarlierLogin_data()
{
    QTest::addColumn<int>("networkError");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("code");
    QTest::newRow("cancelled") << int(QNetworkReply::OperationCanceledError) << FULL_LOGIN << 4;
    QTest::newRow("cancelled without an answer") << int(QNetworkReply::OperationCanceledError) << QString() << 4;
    QTest::newRow("refused") << int(QNetworkReply::ProtocolInvalidOperationError) << QStringLiteral(R"({"error":"invalid_grant"})") << 3;
    QTest::newRow("other error") << int(QNetworkReply::InternalServerError) << QStringLiteral(R"({"error":"x"})") << 2;
    QTest::newRow("not JSON") << int(QNetworkReply::NoError) << QStringLiteral("<html/>") << 5;
}

void tst_AuthenticationResponses::laterAnswerEndsAnEarlierLogin()
{
    QFETCH(int, networkError);
    QFETCH(QString, text);
    LoginResponse login = loginFrom(FULL_LOGIN);
    QVERIFY(login.loggedIn());
    login.setOutcome(static_cast<QNetworkReply::NetworkError>(networkError));
    login.parse(text);
    QVERIFY(!login.loggedIn());
    QVERIFY(login.accessToken().isEmpty());
    QVERIFY(login.userName().isEmpty());
    QVERIFY(!login.expires().isValid());
    QTEST(static_cast<int>(login.error()), "code");
}

void tst_AuthenticationResponses::topLevelArrayHasNoErrorKey()
{
    const LoginResponse login = loginFrom(QStringLiteral("[]"));
    QVERIFY(login.isSuccess());
    QVERIFY(login.loggedIn());
    QVERIFY(login.accessToken().isEmpty());
}

void tst_AuthenticationResponses::unreadableLoginIsLogged_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("message");
    QTest::newRow("web page") << QStringLiteral("<html>\u00e4</html>")
        << QStringLiteral("Error during parsing Login response. \nOffset to error location in data: 1\nMessage: \n"
                          "illegal value\nJson data: \n<html>\u00e4</html>");
    QTest::newRow("empty") << QString()
        << QStringLiteral("Error during parsing Login response. \nOffset to error location in data: 0\nMessage: \n"
                          "illegal value\nJson data: \n");
    QTest::newRow("offset counts bytes") << QStringLiteral("{\"\u00e4\u00e4\":1,}")
        << QStringLiteral("Error during parsing Login response. \nOffset to error location in data: 11\nMessage: \n"
                          "object is missing after a comma\nJson data: \n{\"\u00e4\u00e4\":1,}");
}

void tst_AuthenticationResponses::unreadableLoginIsLogged()
{
    QFETCH(QString, text);
    loginFrom(text);
    QCOMPARE(log.size(), 1);
    QCOMPARE(static_cast<int>(log.first().level), 1);
    QCOMPARE(log.first().category, QStringLiteral("Korvo::Web::CLoginResponse"));
    QTEST(log.first().message, "message");
    QVERIFY(log.first().arguments.isEmpty());
}

void tst_AuthenticationResponses::unreadableLoginKeepsPlaceMarkers()
{
    loginFrom(QStringLiteral("%1 %2 %L3"));
    QVERIFY(log.first().message.endsWith(QStringLiteral("\nJson data: \n%1 %2 %L3")));
}

void tst_AuthenticationResponses::tokenIsBlankedInTheLog_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("cut off behind it") << QStringLiteral(R"({"access_token":"SECRET","expires_in":35)")
                                       << QStringLiteral(R"({"access_token":"","expires_in":35)");
    QTest::newRow("cut off inside") << QStringLiteral(R"({"a":1,"access_token":"SECR)")
                                    << QStringLiteral(R"({"a":1,"access_token":")");
    QTest::newRow("cut off before") << QStringLiteral(R"({"access_token": )") << QStringLiteral(R"({"access_token": )");
    QTest::newRow("cut off in an escape") << QStringLiteral(R"({"access_token":"SECRET\)") << QStringLiteral(R"({"access_token":")");
    QTest::newRow("blanks and line breaks") << QStringLiteral("{\"access_token\" \n:\t\"SECRET\" ,}")
                                            << QStringLiteral("{\"access_token\" \n:\t\"\" ,}");
    QTest::newRow("escaped quotes") << QStringLiteral(R"({"access_token":"a\"SECRET\\\"SECRET","x":})")
                                    << QStringLiteral(R"({"access_token":"","x":})");
    QTest::newRow("escaped backslash at the end") << QStringLiteral(R"({"access_token":"SECRET\\","x":})")
                                                  << QStringLiteral(R"({"access_token":"","x":})");
    QTest::newRow("twice") << QStringLiteral(R"({"access_token":"SECRET","access_token":"SECRET",})")
                           << QStringLiteral(R"({"access_token":"","access_token":"",})");
    QTest::newRow("refresh token") << QStringLiteral(R"({"refresh_token":"SECRET",})") << QStringLiteral(R"({"refresh_token":"",})");
    QTest::newRow("other case") << QStringLiteral(R"({"Access_Token":"SECRET",})") << QStringLiteral(R"({"Access_Token":"",})");
    QTest::newRow("single quotes") << QStringLiteral("{'access_token':'SECRET','x':1}") << QStringLiteral("{'access_token':'','x':1}");
    QTest::newRow("no quotes") << QStringLiteral("{access_token: SECRET, x: 1}") << QStringLiteral("{access_token: , x: 1}");
    QTest::newRow("form") << QStringLiteral("access_token=SECRET&x=1") << QStringLiteral("access_token=&x=1");
    QTest::newRow("JSON within a text") << QStringLiteral(R"("{\"access_token\":\"SECRET\",\"x\":1}")")
                                        << QStringLiteral(R"("{\"access_token\":\"\",\"x\":1}")");
    QTest::newRow("escaped quotes in a JSON within a text")
        << QStringLiteral(R"("{\"access_token\":\"SECRET\\\"SECRET\",\"x\":1}")") << QStringLiteral(R"("{\"access_token\":\"\",\"x\":1}")");
    QTest::newRow("quotes in numbers") << QStringLiteral(R"("{\u0022access_token\u0022:\u0022SECRET\u0022,\u0022x\u0022:1}")")
                                       << QStringLiteral(R"("{\u0022access_token\u0022:\u0022\u0022,\u0022x\u0022:1}")");
    QTest::newRow("camel case") << QStringLiteral(R"({"accessToken":"SECRET",})") << QStringLiteral(R"({"accessToken":"",})");
    QTest::newRow("underscore in numbers") << QStringLiteral(R"({"access\u005ftoken":"SECRET",})")
                                           << QStringLiteral(R"({"access\u005ftoken":"",})");
    QTest::newRow("bare name as a key") << QStringLiteral(R"({"token":"SECRET",})") << QStringLiteral(R"({"token":"",})");
    QTest::newRow("bare name in a form") << QStringLiteral("token=SECRET&x=1") << QStringLiteral("token=&x=1");
    QTest::newRow("header") << QStringLiteral("X-Access-Token: SECRET") << QStringLiteral("X-Access-Token: ");
    QTest::newRow("form in an address") << QStringLiteral("x%3D1%26access_token%3DSECRET") << QStringLiteral("x%3D1%26access_token%3D");
    QTest::newRow("JSON in an address") << QStringLiteral("%7B%22access_token%22%3A%22SECRET%22%2C%22x%22")
                                        << QStringLiteral("%7B%22access_token%22%3A%22%22%2C%22x%22");
    QTest::newRow("JSON in a web page") << QStringLiteral("<p>{&quot;access_token&quot;:&quot;SECRET&quot;,&quot;x&quot;:1}</p>")
                                        << QStringLiteral("<p>{&quot;access_token&quot;:&quot;&quot;,&quot;x&quot;:1}</p>");
    QTest::newRow("single quotes in a web page") << QStringLiteral("&#39;access_token&#39;: &#39;SECRET&#39;")
                                                 << QStringLiteral("&#39;access_token&#39;: &#39;&#39;");
    QTest::newRow("element") << QStringLiteral("<a><access_token>SECRET</access_token></a>")
                             << QStringLiteral("<a><access_token></access_token></a>");
    QTest::newRow("element with a reference") << QStringLiteral("<access_token>SECRET&amp;SECRET, SECRET;</access_token>")
                                              << QStringLiteral("<access_token></access_token>");
    QTest::newRow("element with attributes") << QStringLiteral("<d:access_token i:type='x'>\n SECRET\n</d:access_token>")
                                             << QStringLiteral("<d:access_token i:type='x'>\n </d:access_token>");
    QTest::newRow("element with a section") << QStringLiteral("<access_token><![CDATA[SECRET]]></access_token>")
                                            << QStringLiteral("<access_token><![CDATA[</access_token>");
    QTest::newRow("element in a web page") << QStringLiteral("<p>&lt;access_token&gt;SECRET&lt;/access_token&gt;</p>")
                                           << QStringLiteral("<p>&lt;access_token&gt;&lt;/access_token&gt;</p>");
    QTest::newRow("element cut off") << QStringLiteral("<access_token>SECR") << QStringLiteral("<access_token>");
    QTest::newRow("form field of a web page") << QStringLiteral(R"(<input name="access_token" value="SECRET"/><p>x</p>)")
                                              << QStringLiteral(R"(<input name="access_token" value=""/><p>x</p>)");
    QTest::newRow("bearer") << QStringLiteral("Bearer SECRET") << QStringLiteral("Bearer ");
    QTest::newRow("bearer in a sentence") << QStringLiteral("Authorization: Bearer SECRET is not known")
                                          << QStringLiteral("Authorization: Bearer  is not known");
    QTest::newRow("bearer in a web page") << QStringLiteral("<b>bearer  SECRET</b>") << QStringLiteral("<b>bearer  </b>");
    QTest::newRow("bearer in a JSON") << QStringLiteral(R"({"a":"Bearer SECRET","x":})") << QStringLiteral(R"({"a":"Bearer ","x":})");
    QTest::newRow("bearer in an address") << QStringLiteral("a=Bearer%20SECRET&x=1") << QStringLiteral("a=Bearer%20&x=1");
    QTest::newRow("bearer in quotes") << QStringLiteral("Bearer \"SECRET\" x") << QStringLiteral("Bearer \"\" x");
    QTest::newRow("bearer as the value of a key") << QStringLiteral("access_token: Bearer SECRET, x") << QStringLiteral("access_token: , x");
    QTest::newRow("nested") << QStringLiteral(R"({"access_token":{"a":"SECRET","b":"SECRET"},})") << QStringLiteral(R"({"access_token":)");
    QTest::newRow("list") << QStringLiteral(R"({"access_token":["SECRET","SECRET"],})") << QStringLiteral(R"({"access_token":)");
    QTest::newRow("value named like the key") << QStringLiteral(R"({"access_token":"access_token","x":"SECRE",})")
                                              << QStringLiteral(R"({"access_token":"","x":"SECRE",})");
}

void tst_AuthenticationResponses::tokenIsBlankedInTheLog()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    loginFrom(text);
    QCOMPARE(log.size(), 1);
    QCOMPARE(loggedText(), shown);
    QVERIFY(!shown.contains(QStringLiteral("SECRET")));
}

void tst_AuthenticationResponses::passwordIsBlankedInTheLog_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    const QString form = QStringLiteral("grant_type=password&keepInMind=true&username=x&password=");
    QTest::newRow("form") << form + QStringLiteral("SECRET") << form;
    QTest::newRow("form with a code") << form + QStringLiteral("SE&CRET&twoFactorAuthenticationCode=SECRET2") << form;
    QTest::newRow("password that looks like something else") << form + QStringLiteral("\"SEC\"RE,T}&;<SECRET token=\" SECRET") << form;
    QTest::newRow("form between lines") << QStringLiteral("You sent:\r\n") + form + QStringLiteral("SE&CRET\r\nSorry\n")
                                        << QStringLiteral("You sent:\r\n") + form + QStringLiteral("\r\nSorry\n");
    QTest::newRow("two forms") << form + QStringLiteral("SECRET\n") + form + QStringLiteral("SECRET") << form + QLatin1Char('\n') + form;
    QTest::newRow("form in a web page") << QStringLiteral("<p>username=x&amp;password=SE&amp;CRET</p>")
                                        << QStringLiteral("<p>username=x&amp;password=");
    QTest::newRow("form in an address") << QStringLiteral("username%3Dx%26password%3DSE&CRET") << QStringLiteral("username%3Dx%26password%3D");
    QTest::newRow("form in a JSON") << QStringLiteral(R"({"a":"username\u003dx\u0026password\u003dSE&CRET",})")
                                    << QStringLiteral(R"({"a":"username\u003dx\u0026password\u003d)");
    QTest::newRow("alone") << QStringLiteral("password=SE&CRET") << QStringLiteral("password=");
    QTest::newRow("other case, with blanks") << QStringLiteral("Password = SE CRET") << QStringLiteral("Password =");
    QTest::newRow("code alone") << QStringLiteral("twoFactorAuthenticationCode=SE&CRET2\nx") << QStringLiteral("twoFactorAuthenticationCode=\nx");
    QTest::newRow("JSON") << QStringLiteral(R"({"password":"SE\"CRET","twoFactorAuthenticationCode":"SECRET2","x":1,})")
                          << QStringLiteral(R"({"password":"","twoFactorAuthenticationCode":"","x":1,})");
    QTest::newRow("element") << QStringLiteral("<Password>SE&amp;CRET</Password><x/>") << QStringLiteral("<Password></Password><x/>");
    QTest::newRow("filled field of a web page") << QStringLiteral("<input name=\"password\" value=\"SECRET\"/>\n<p/>")
                                                << QStringLiteral("<input name=\"password\" value=\"\"/>\n<p/>");
}

void tst_AuthenticationResponses::passwordIsBlankedInTheLog()
{
    QFETCH(QString, text);
    loginFrom(text);
    QCOMPARE(log.size(), 1);
    QTEST(loggedText(), "shown");
}

void tst_AuthenticationResponses::textWithoutTokenIsLoggedAsItIs_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("type of the token") << QStringLiteral(R"({"token_type":"bearer",})");
    QTest::newRow("prose") << QStringLiteral("The access_token is missing, sorry");
    QTest::newRow("name at the end") << QStringLiteral("access_token");
    QTest::newRow("name in quotes at the end") << QStringLiteral("\"access_token\"");
    QTest::newRow("name before a tag") << QStringLiteral("The access_token is missing, <b>sorry</b>");
    QTest::newRow("name behind a tag") << QStringLiteral("<p>access_token</p><p>x</p>");
    QTest::newRow("empty password") << QStringLiteral("username=x&password=\nSorry, x");
    QTest::newRow("empty element") << QStringLiteral("<access_token></access_token><x>1</x>");
    QTest::newRow("kind of login") << QStringLiteral("grant_type=password&keepInMind=true&username=x");
    QTest::newRow("password in prose") << QStringLiteral("Your password: too short. The password is kept.");
    QTest::newRow("page with an empty form")
        << QStringLiteral("<!DOCTYPE html><html><body><form><label for=\"password\">Password:</label>\n"
                          "<input type=\"password\" name=\"password\">\n<button>Log in</button>, please; & so on</form></body></html>");
    QTest::newRow("bearer as a type") << QStringLiteral(R"({"token_type":"bearer","x":1,})");
    QTest::newRow("not a token") << QStringLiteral("Unexpected token: <, please retry");
}

void tst_AuthenticationResponses::textWithoutTokenIsLoggedAsItIs()
{
    QFETCH(QString, text);
    loginFrom(text);
    QCOMPARE(loggedText(), text);
}

void tst_AuthenticationResponses::readableLoginLogsNothing()
{
    loginFrom(FULL_LOGIN);
    loginFrom(QStringLiteral(R"({"error":"invalid_grant"})"));
    QVERIFY(log.isEmpty());
}

void tst_AuthenticationResponses::megabytesOfLoginEndInTime_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("brackets") << QString(4000000, QLatin1Char('['));
    QTest::newRow("open text") << QStringLiteral("{\"access_token\":\"") + QString(4000000, QLatin1Char('a'));
    QTest::newRow("backslashes") << QStringLiteral("{\"access_token\":\"") + QString(4000001, QLatin1Char('\\'));
    QTest::newRow("keys") << QStringLiteral("access_token").repeated(400000);
    QTest::newRow("keys with blanks") << (QStringLiteral("access_token") + QString(1000, QLatin1Char(' '))).repeated(4000);
    QTest::newRow("keys in prose") << QStringLiteral("access_token ").repeated(300000);
    QTest::newRow("keys of elements") << QStringLiteral("<access_token>").repeated(100000);
    QTest::newRow("open element") << QStringLiteral("<access_token>") + QString(1000000, QLatin1Char('&'));
    QTest::newRow("passwords") << QStringLiteral("password=").repeated(400000);
    QTest::newRow("names of passwords") << QStringLiteral("password").repeated(100000);
    QTest::newRow("lines of passwords") << QStringLiteral("password=SECRET\n").repeated(300000);
    QTest::newRow("bearers") << QStringLiteral("Bearer ").repeated(500000);
    QTest::newRow("bearers with tokens") << QStringLiteral("Bearer SECRET ").repeated(300000);
    QTest::newRow("half surrogates") << QStringLiteral("{\"access_token\":\"SECRET") + QString(2000000, QChar(0xd800));
    QTest::newRow("keys with values") << QStringLiteral("\"access_token\":\"SECRET\",").repeated(200000);
}

void tst_AuthenticationResponses::megabytesOfLoginEndInTime()
{
    QFETCH(QString, text);
    QElapsedTimer clock;
    clock.start();
    const LoginResponse login = loginFrom(text);
    QCOMPARE(login.error(), Error::UnreadableLogin);
    QVERIFY(!log.first().message.contains(QStringLiteral("SECRET")));
    QVERIFY2(clock.elapsed() < LIMIT_MS, qPrintable(QString::number(clock.elapsed())));
}

void tst_AuthenticationResponses::twoStepAnswer_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("authenticated");
    QTest::newRow("lower case") << QStringLiteral("true") << true;
    QTest::newRow("capital") << QStringLiteral("True") << true;
    QTest::newRow("upper case") << QStringLiteral("TRUE") << true;
    QTest::newRow("false") << QStringLiteral("false") << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("quoted") << QStringLiteral("\"true\"") << false;
    QTest::newRow("blank before") << QStringLiteral(" true") << false;
    QTest::newRow("blank behind") << QStringLiteral("true ") << false;
    QTest::newRow("line break") << QStringLiteral("true\n") << false;
    QTest::newRow("one") << QStringLiteral("1") << false;
    QTest::newRow("XML") << QStringLiteral("<b>true</b>") << false;
    QTest::newRow("megabytes") << QStringLiteral("true").repeated(500000) << false;
}

void tst_AuthenticationResponses::twoStepAnswer()
{
    QFETCH(QString, text);
    Check2StepAuthenticationResponse response;
    QVERIFY(!response.authenticated());
    response.setOutcome(QNetworkReply::TimeoutError);
    response.parse(text);
    QTEST(response.authenticated(), "authenticated");
    QCOMPARE(response.error(), Error::TimeOut);
}

void tst_AuthenticationResponses::credentialsCarryEveryValue()
{
    ClientCredentialsResponse response;
    response.parse(QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?><Credentials><Url>https://a/b?c=1&amp;d=2</Url>"
                                  "<ClientId>id</ClientId><SecretKey>s+/=</SecretKey>"
                                  "<CurrentDate>2025-03-04T10:00:00</CurrentDate></Credentials>"));
    QCOMPARE(response.url(), QStringLiteral("https://a/b?c=1&d=2"));
    QCOMPARE(response.clientId(), QStringLiteral("id"));
    QCOMPARE(response.secretKey(), QStringLiteral("s+/="));
    QCOMPARE(response.currentDate(), QStringLiteral("2025-03-04T10:00:00"));
}

void tst_AuthenticationResponses::credentialsAreFoundAtAnyDepthInAnyNamespace()
{
    ClientCredentialsResponse response;
    response.parse(QStringLiteral("<a xmlns=\"u\" xmlns:i=\"v\"><b><i:Url>1</i:Url><c i:x=\"\"><ClientId>2</ClientId></c></b>"
                                  "<url>no</url><SECRETKEY>no</SECRETKEY></a>"));
    QCOMPARE(response.url(), QStringLiteral("1"));
    QCOMPARE(response.clientId(), QStringLiteral("2"));
    QVERIFY(response.secretKey().isEmpty());
}

void tst_AuthenticationResponses::lastCredentialWins()
{
    ClientCredentialsResponse response;
    response.parse(QStringLiteral("<a><Url>1</Url><ClientId>x</ClientId><Url>2</Url><ClientId/></a>"));
    QCOMPARE(response.url(), QStringLiteral("2"));
    QVERIFY(response.clientId().isEmpty());
}

void tst_AuthenticationResponses::credentialsBeforeAnErrorStay()
{
    ClientCredentialsResponse response;
    response.parse(QStringLiteral("<a><Url>1</Url><ClientId>x<b>y</b></ClientId><SecretKey>z</SecretKey></a>"));
    QCOMPARE(response.url(), QStringLiteral("1"));
    QVERIFY(response.secretKey().isEmpty());
    QVERIFY(response.isSuccess());
}

void tst_AuthenticationResponses::emptyCredentialsLeaveTheOutcome()
{
    ClientCredentialsResponse response;
    response.setOutcome(QNetworkReply::TimeoutError);
    response.parse(QString());
    QVERIFY(response.url().isEmpty());
    QVERIFY(response.secretKey().isEmpty());
    QCOMPARE(response.error(), Error::TimeOut);
}

void tst_AuthenticationResponses::statusHasAnOutcomeOnly()
{
    StatusResponse response;
    response.setOutcome(QNetworkReply::InternalServerError);
    response.parse(QStringLiteral("<a>true</a>"));
    QCOMPARE(response.error(), Error::Server);
}

void tst_AuthenticationResponses::serverDate_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QDateTime>("date");
    const QDateTime utc(QDate(2025, 3, 4), QTime(10, 0, 1), Qt::UTC);
    const auto with = [](const char *text) {
        return QStringLiteral("<S xmlns=\"u\"><CurrentDate>") + QLatin1String(text) + QStringLiteral("</CurrentDate></S>");
    };
    QTest::newRow("UTC") << with("2025-03-04T10:00:01Z") << utc;
    QTest::newRow("offset") << with("2025-03-04T12:00:01+02:00") << utc;
    QTest::newRow("seven decimals") << with("2025-03-04T10:00:01.1230000Z") << utc.addMSecs(123);
    QTest::newRow("local") << with("2025-03-04T10:00:01") << QDateTime(QDate(2025, 3, 4), QTime(10, 0, 1));
    QTest::newRow("nonsense") << with("now") << QDateTime();
    QTest::newRow("no such day") << with("2025-02-30T10:00:00Z") << QDateTime();
    QTest::newRow("empty element") << with("") << QDateTime();
    QTest::newRow("absent") << QStringLiteral("<S/>") << QDateTime();
    QTest::newRow("empty") << QString() << QDateTime();
    QTest::newRow("JSON") << QStringLiteral("{\"CurrentDate\":\"2025-03-04T10:00:01Z\"}") << QDateTime();
    QTest::newRow("last one wins")
        << QStringLiteral("<S><CurrentDate>2001-01-01T00:00:00Z</CurrentDate><CurrentDate>2025-03-04T10:00:01Z</CurrentDate></S>") << utc;
}

void tst_AuthenticationResponses::serverDate()
{
    QFETCH(QString, reply);
    QFETCH(QDateTime, date);
    QCOMPARE(serverDateFrom(reply).isValid(), date.isValid());
    QCOMPARE(serverDateFrom(reply), date);
}

QTEST_GUILESS_MAIN(tst_AuthenticationResponses)

#include "tst_AuthenticationResponses.moc"
