#include "api/LoginOutcome.h"
#include "handles/AuthenticationResponses.h"
#include "support/LogCapture.h"

#include <QtTest/QtTest>

using namespace Korvo::Web;
using LoginResult = KorvoWebApi::LoginResult;
using NetworkError = QNetworkReply::NetworkError;
using UserRole = KorvoWebApi::UserRole;

namespace {

LoginResponse answer(NetworkError error, const char *text)
{
    LoginResponse response;
    response.setOutcome(error);
    response.parse(QString::fromUtf8(text));
    return response;
}

constexpr char TOKEN[] = R"({"access_token": "abc", "userName": "ida"})";
constexpr char REFUSAL[] = R"({"error": "invalid_grant"})";
constexpr char OTHER_REFUSAL[] = R"({"error": "unsupported_grant_type"})";

} // namespace

class tst_LoginOutcome : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void resultTellsHowTheLoginEnded_data();
    void resultTellsHowTheLoginEnded();
    void roleGoesByTheExactText_data();
    void roleGoesByTheExactText();
};

void tst_LoginOutcome::resultTellsHowTheLoginEnded_data()
{
    QTest::addColumn<NetworkError>("error");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("unexplained");

    const auto row = [](const char *tag, NetworkError error, const char *text, LoginResult result, Error unexplained) {
        QTest::newRow(tag) << error << QByteArray(text) << int(result) << int(unexplained);
    };
    row("token", QNetworkReply::NoError, TOKEN, LoginResult::LoginResultSuccess, Error::None);
    row("refused with 400", QNetworkReply::ProtocolInvalidOperationError, REFUSAL,
        LoginResult::LoginResultFalseCredentials, Error::None);
    row("refused with 200", QNetworkReply::NoError, REFUSAL, LoginResult::LoginResultFalseCredentials, Error::None);
    row("401 with an object", QNetworkReply::AuthenticationRequiredError, "{}",
        LoginResult::LoginResultFalseCredentials, Error::None);
    row("aborted", QNetworkReply::OperationCanceledError, "", LoginResult::LoginResultCancelled, Error::None);
    row("aborted behind the answer", QNetworkReply::OperationCanceledError, TOKEN, LoginResult::LoginResultCancelled,
        Error::None);
    row("time-out", QNetworkReply::TimeoutError, OTHER_REFUSAL, LoginResult::LoginResultTimeOut, Error::None);
    row("another refusal", QNetworkReply::ProtocolInvalidOperationError, OTHER_REFUSAL, LoginResult::LoginResultTimeOut,
        Error::Network);
    row("another refusal with 200", QNetworkReply::NoError, OTHER_REFUSAL, LoginResult::LoginResultTimeOut, Error::None);
    row("500 with an object", QNetworkReply::InternalServerError, "{}", LoginResult::LoginResultTimeOut, Error::Server);
    row("500 with a token", QNetworkReply::InternalServerError, TOKEN, LoginResult::LoginResultTimeOut, Error::Server);
    row("not JSON", QNetworkReply::NoError, "<html>", LoginResult::LoginResultTimeOut, Error::UnreadableLogin);
    row("nothing", QNetworkReply::NoError, "", LoginResult::LoginResultTimeOut, Error::UnreadableLogin);
    row("no token", QNetworkReply::NoError, "{}", LoginResult::LoginResultTimeOut, Error::None);
    row("empty token", QNetworkReply::NoError, R"({"access_token": "", "userName": "ida"})",
        LoginResult::LoginResultTimeOut, Error::None);
    row("token that is no text", QNetworkReply::NoError, R"({"access_token": 7})", LoginResult::LoginResultTimeOut,
        Error::None);
    row("array", QNetworkReply::NoError, "[]", LoginResult::LoginResultTimeOut, Error::None);
}

void tst_LoginOutcome::resultTellsHowTheLoginEnded()
{
    QFETCH(NetworkError, error);
    QFETCH(QByteArray, text);
    const TestSupport::LogCapture log; // what cannot be read is logged
    const LoginResponse response = answer(error, text.constData());
    QTEST(int(loginResultFor(response)), "result");
    QTEST(int(unexplainedError(response)), "unexplained");
}

void tst_LoginOutcome::roleGoesByTheExactText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("role");
    QTest::newRow("RZ operator") << QStringLiteral("RZ_OPERATOR") << int(UserRole::RzOperator);
    QTest::newRow("company operator") << QStringLiteral("COMPANY_OPERATOR") << int(UserRole::CompanyOperator);
    QTest::newRow("system administrator") << QStringLiteral("SYSTEM_ADMINISTRATOR") << int(UserRole::SystemAdministrator);
    QTest::newRow("company administrator") << QStringLiteral("COMPANY_ADMINISTRATOR")
                                           << int(UserRole::CompanyAdministrator);
    QTest::newRow("end user") << QStringLiteral("END_USER") << int(UserRole::EndUser);
    QTest::newRow("none") << QString() << int(UserRole::Guest);
    QTest::newRow("unknown") << QStringLiteral("JANITOR") << int(UserRole::Guest);
    QTest::newRow("other letter case") << QStringLiteral("Company_Operator") << int(UserRole::Guest);
    QTest::newRow("blank behind it") << QStringLiteral("END_USER ") << int(UserRole::Guest);
    QTest::newRow("two of them") << QStringLiteral("END_USER,RZ_OPERATOR") << int(UserRole::Guest);
}

void tst_LoginOutcome::roleGoesByTheExactText()
{
    QFETCH(QString, text);
    QTEST(int(userRoleFor(text)), "role");
}

QTEST_APPLESS_MAIN(tst_LoginOutcome)

#include "tst_LoginOutcome.moc"
