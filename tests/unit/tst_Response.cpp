#include "handles/AuthenticationResponses.h"
#include "handles/BucketResponses.h"
#include "handles/ProjectResponses.h"
#include "handles/Response.h"
#include "handles/TransferResponses.h"

#include <QtCore/QMetaType>
#include <QtCore/QVariant>
#include <QtTest/QTest>

#include <algorithm>
#include <iterator>
#include <utility>

using namespace Korvo::Web;

namespace {

struct NamedType
{
    const char *name;
    int (*id)(); // asking registers the name with its namespace, so it is asked last
};

const NamedType RESPONSE_TYPES[] = {
    {"LoginResponse", qMetaTypeId<LoginResponse>},
    {"Check2StepAuthenticationResponse", qMetaTypeId<Check2StepAuthenticationResponse>},
    {"ClientCredentialsResponse", qMetaTypeId<ClientCredentialsResponse>},
    {"BeginUploadProjectResponse", qMetaTypeId<BeginUploadProjectResponse>},
    {"BucketCreateResponse", qMetaTypeId<BucketCreateResponse>},
    {"BucketGetResponse", qMetaTypeId<BucketGetResponse>},
    {"ObjectCleanupResponse", qMetaTypeId<ObjectCleanupResponse>},
    {"ObjectDeleteResponse", qMetaTypeId<ObjectDeleteResponse>},
    {"ObjectExistsResponse", qMetaTypeId<ObjectExistsResponse>},
    {"ObjectSpaceResponse", qMetaTypeId<ObjectSpaceResponse>},
    {"ListOfFilesFromLocationResponse", qMetaTypeId<ListOfFilesFromLocationResponse>},
    {"UserProjectsResponse", qMetaTypeId<UserProjectsResponse>},
    {"UploadProjectsStatusResponse", qMetaTypeId<UploadProjectsStatusResponse>},
    {"SingleProjectFileDownloadResponse", qMetaTypeId<SingleProjectFileDownloadResponse>},
    {"UploadFileResponse", qMetaTypeId<UploadFileResponse>},
    {"UploadFileMultiPartInitResponse", qMetaTypeId<UploadFileMultiPartInitResponse>},
    {"UploadFileMultiPartFinishedResponse", qMetaTypeId<UploadFileMultiPartFinishedResponse>},
    {"DownloadFileResponse", qMetaTypeId<DownloadFileResponse>},
    {"StatusResponse", qMetaTypeId<StatusResponse>},
};

LoginResponse parsedLogin()
{
    LoginResponse response;
    response.parse(QStringLiteral(R"({"access_token":"abc","expires_in":3599,"userName":"anna"})"));
    return response;
}

} // namespace

class tst_Response : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyResponseIsRegisteredUnderBothNames_data();
    void everyResponseIsRegisteredUnderBothNames();
    void freshResponseIsASuccess();
    void outcomeFollowsTheNetworkError_data();
    void outcomeFollowsTheNetworkError();
    void markersStayWhenALaterOutcomeIsBetter();
    void copySharesUntilItIsChanged();
    void changeOfACopyLeavesTheOriginal();
    void changeOfTheOriginalLeavesTheCopy();
    void assignmentKeepsValuesAndOutcome();
    void movedFromResponseCanStillBeAsked();
    void copyThroughTheBaseKeepsTheOutcome();
    void deletionThroughTheBaseReleasesTheValues();
    void responseTravelsInAVariant();
};

void tst_Response::freshResponseIsASuccess()
{
    const StatusResponse response;
    QVERIFY(response.isSuccess());
    QVERIFY(!response.isCancelled());
    QVERIFY(!response.isAuthenticationRequired());
    QCOMPARE(response.error(), Error::None);
}

void tst_Response::outcomeFollowsTheNetworkError_data()
{
    QTest::addColumn<int>("networkError");
    QTest::addColumn<bool>("success");
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("cancelled");
    QTest::addColumn<bool>("authenticationRequired");
    QTest::newRow("none") << 0 << true << 0 << false << false;
    QTest::newRow("time-out") << 4 << false << 1 << false << false;
    QTest::newRow("unknown network error") << 99 << false << 1 << false << false;
    QTest::newRow("cancelled") << 5 << false << 4 << true << false;
    QTest::newRow("status 401") << 204 << false << 3 << false << true;
    QTest::newRow("status 500") << 401 << false << 2 << false << false;
    QTest::newRow("status 404") << 203 << false << 14 << false << false;
    QTest::newRow("status 503") << 403 << false << 14 << false << false;
    QTest::newRow("connection refused") << 1 << false << 14 << false << false;
}

void tst_Response::outcomeFollowsTheNetworkError()
{
    QFETCH(int, networkError);
    const auto qtError = static_cast<QNetworkReply::NetworkError>(networkError);
    StatusResponse response;
    response.setOutcome(qtError);
    QTEST(response.isSuccess(), "success");
    QTEST(static_cast<int>(response.error()), "code");
    QTEST(response.isCancelled(), "cancelled");
    QTEST(response.isAuthenticationRequired(), "authenticationRequired");

    StatusResponse other;
    QTEST(static_cast<int>(other.applyOutcome(qtError)), "code");
    QTEST(other.isSuccess(), "success");
    QTEST(static_cast<int>(other.error()), "code");
    QTEST(other.isCancelled(), "cancelled");
    QTEST(other.isAuthenticationRequired(), "authenticationRequired");
}

void tst_Response::markersStayWhenALaterOutcomeIsBetter()
{
    StatusResponse response;
    response.setOutcome(QNetworkReply::OperationCanceledError);
    response.setOutcome(QNetworkReply::AuthenticationRequiredError);
    QCOMPARE(response.error(), Error::AuthenticationRequired);
    response.setOutcome(QNetworkReply::NoError);
    QVERIFY(response.isSuccess());
    QCOMPARE(response.error(), Error::None);
    QVERIFY(response.isCancelled());
    QVERIFY(response.isAuthenticationRequired());
}

void tst_Response::copySharesUntilItIsChanged()
{
    const LoginResponse original = parsedLogin();
    LoginResponse copy = original;
    const QString first = original.accessToken();
    const QString second = copy.accessToken();
    QCOMPARE(static_cast<const void *>(first.constData()), static_cast<const void *>(second.constData()));
}

void tst_Response::changeOfACopyLeavesTheOriginal()
{
    const LoginResponse original = parsedLogin();
    LoginResponse copy = original;
    copy.setOutcome(QNetworkReply::TimeoutError);
    QCOMPARE(copy.error(), Error::TimeOut);
    QCOMPARE(copy.accessToken(), QStringLiteral("abc"));
    QCOMPARE(original.error(), Error::None);
    QVERIFY(original.isSuccess());

    copy.parse(QStringLiteral(R"({"access_token":"xyz"})"));
    QCOMPARE(copy.accessToken(), QStringLiteral("xyz"));
    QCOMPARE(original.accessToken(), QStringLiteral("abc"));
    QCOMPARE(original.userName(), QStringLiteral("anna"));
}

void tst_Response::changeOfTheOriginalLeavesTheCopy()
{
    UploadFileMultiPartFinishedResponse original;
    const UploadFileMultiPartFinishedResponse copy = original;
    original.setCompleted(true);
    original.setOutcome(QNetworkReply::OperationCanceledError);
    QVERIFY(!copy.completed());
    QVERIFY(!copy.isCancelled());
    QVERIFY(original.completed());
    QVERIFY(original.isCancelled());
}

void tst_Response::assignmentKeepsValuesAndOutcome()
{
    LoginResponse original = parsedLogin();
    original.setOutcome(QNetworkReply::InternalServerError);
    LoginResponse assigned;
    assigned = original;
    QCOMPARE(assigned.accessToken(), QStringLiteral("abc"));
    QCOMPARE(assigned.error(), Error::Server);
    original.setOutcome(QNetworkReply::NoError);
    QCOMPARE(assigned.error(), Error::Server);
    const LoginResponse &itself = assigned;
    assigned = itself;
    QCOMPARE(assigned.accessToken(), QStringLiteral("abc"));
}

void tst_Response::movedFromResponseCanStillBeAsked()
{
    LoginResponse original = parsedLogin();
    const LoginResponse target = std::move(original);
    QCOMPARE(target.accessToken(), QStringLiteral("abc"));
    QVERIFY(original.isSuccess());
}

void tst_Response::copyThroughTheBaseKeepsTheOutcome()
{
    LoginResponse login = parsedLogin();
    login.setOutcome(QNetworkReply::TimeoutError);
    Response base = login;
    QCOMPARE(base.error(), Error::TimeOut);
    base.setOutcome(QNetworkReply::NoError);
    QCOMPARE(login.error(), Error::TimeOut);
    QCOMPARE(login.accessToken(), QStringLiteral("abc"));
}

void tst_Response::deletionThroughTheBaseReleasesTheValues()
{
    const Response *base = new LoginResponse(parsedLogin());
    QVERIFY(base->isSuccess());
    delete base;
}

void tst_Response::everyResponseIsRegisteredUnderBothNames_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("unqualifiedId");
    QTest::addColumn<int>("qualifiedId");
    registerResponseMetaTypes();
    registerResponseMetaTypes();
    for (const NamedType &type : RESPONSE_TYPES) {
        const QByteArray name = type.name;
        QTest::newRow(type.name) << name << QMetaType::type(name) << QMetaType::type("Korvo::Web::" + name);
    }
}

void tst_Response::everyResponseIsRegisteredUnderBothNames()
{
    QFETCH(QByteArray, name);
    QFETCH(int, unqualifiedId);
    QFETCH(int, qualifiedId);
    QVERIFY(unqualifiedId != QMetaType::UnknownType);
    QCOMPARE(qualifiedId, unqualifiedId);
    const auto type = std::find_if(std::begin(RESPONSE_TYPES), std::end(RESPONSE_TYPES),
                                   [&](const NamedType &candidate) { return name == candidate.name; });
    QCOMPARE(unqualifiedId, type->id());
}

void tst_Response::responseTravelsInAVariant()
{
    LoginResponse login = parsedLogin();
    const QVariant parcel = QVariant::fromValue(login);
    login.setOutcome(QNetworkReply::TimeoutError);
    const auto arrived = parcel.value<LoginResponse>();
    QCOMPARE(arrived.accessToken(), QStringLiteral("abc"));
    QCOMPARE(arrived.error(), Error::None);
}

QTEST_GUILESS_MAIN(tst_Response)

#include "tst_Response.moc"
