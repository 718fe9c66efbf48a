#include "handles/AuthenticationHandles.h"
#include "handles/BucketHandles.h"
#include "handles/DownloadFileHandle.h"
#include "handles/ProjectHandles.h"
#include "handles/UploadFileMultiPartRequestHandle.h"
#include "handles/UploadFileRequestHandle.h"
#include "support/FakeNetwork.h"
#include "support/LogCapture.h"

#include <QtCore/QTimer>
#include <QtTest/QtTest>

#include <functional>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QByteArray BUCKET_TEXT = "<R xmlns=\"urn:x\"><Name>bucket-1</Name><Exist>true</Exist><Success>true</Success>"
                               "<DeletedFilesSize>5000000000</DeletedFilesSize><UsedSpace>6000000000</UsedSpace></R>";
const QByteArray LISTING_TEXT = "<R><Count>7</Count><ObjectModel><Key>a/b.jpg</Key><Size>12</Size></ObjectModel></R>";

/// All that a handle has emitted for one reply, in the order it came; as a rule a single response.
template <class ResponseClass>
using Responses = QList<ResponseClass>;

template <class Handle, class ResponseClass>
Responses<ResponseClass> responsesOf(QNetworkReply::NetworkError error, const QByteArray &text,
                                     void (Handle::*)(ResponseClass) = &Handle::requestFinished)
{
    Responses<ResponseClass> responses;
    Handle handle;
    QObject::connect(&handle, &Handle::requestFinished,
                     [&](const ResponseClass &response) { responses.append(response); });
    auto *const reply = new FakeReply;
    handle.setReply(reply);
    reply->fail(error, QStringLiteral("the cause"), text);
    return responses;
}

template <class Handle, class ResponseClass>
ResponseClass responseOf(const QByteArray &text)
{
    const Responses<ResponseClass> responses = responsesOf<Handle, ResponseClass>(QNetworkReply::NoError, text);
    return responses.value(0);
}

// How the response to a reply that ended with this error says it went; empty unless there was exactly one.
template <class ResponseClass>
QString described(const Responses<ResponseClass> &responses)
{
    if (responses.size() != 1)
        return {};
    const ResponseClass &response = responses.first();
    return QStringLiteral("%1 %2%3%4")
        .arg(int(response.error()))
        .arg(response.isSuccess() ? QStringLiteral("success") : QStringLiteral("failure"),
             response.isCancelled() ? QStringLiteral(" cancelled") : QString(),
             response.isAuthenticationRequired() ? QStringLiteral(" authentication") : QString());
}

using Outcome = std::function<QString(QNetworkReply::NetworkError)>;

template <class Handle, class ResponseClass>
Outcome outcomeOf(const QByteArray &text = QByteArray())
{
    return [text](QNetworkReply::NetworkError error) {
        return described(responsesOf<Handle, ResponseClass>(error, text));
    };
}

// The one handle whose signal has a second argument: it must say the same as the response.
QString projectsOutcome(QNetworkReply::NetworkError error)
{
    Responses<UserProjectsResponse> responses;
    bool codesAgree = true;
    UserProjectsRequestHandle handle;
    QObject::connect(&handle, &UserProjectsRequestHandle::requestFinished,
                     [&](const UserProjectsResponse &response, Error code) {
                         responses.append(response);
                         codesAgree = codesAgree && code == response.error();
                     });
    auto *const reply = new FakeReply;
    handle.setReply(reply);
    reply->fail(error);
    return codesAgree ? described(responses) : QStringLiteral("the codes differ");
}

} // namespace

Q_DECLARE_METATYPE(Outcome)
Q_DECLARE_METATYPE(const QMetaObject *)

class tst_RequestHandles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void signalsHaveTheirNames_data();
    void signalsHaveTheirNames();
    void networkErrorDecidesTheOutcome_data();
    void networkErrorDecidesTheOutcome();

    void loginIsParsed();
    void refusedLoginIsParsedInSpiteOfTheError();
    void unreadableLoginIsSaid();
    void twoStepCheckIsParsed();
    void credentialsAreParsed();
    void projectsAreParsed();
    void statusesAreParsed();
    void beginOfAnUploadIsParsed();
    void bucketAnswersAreParsed();
    void listingIsParsed();
    void listingWithEntitiesHasNoEntries();
    void mediaLinksAreParsed();

    void fourHandlesCanBeAwaited();
    void handleStaysUntilItsReceiverDisposesOfIt();
    void responseCrossesAQueuedConnection();
    void passwordResetEndsInSilence_data();
    void passwordResetEndsInSilence();
};

void tst_RequestHandles::initTestCase()
{
    registerResponseMetaTypes();
}

void tst_RequestHandles::signalsHaveTheirNames_data()
{
    QTest::addColumn<const QMetaObject *>("handle");
    QTest::addColumn<QByteArray>("signal");
    const auto add = [](const QMetaObject &handle, const char *signal) {
        QTest::newRow(handle.className()) << &handle << QByteArray(signal);
    };
    add(LoginRequestHandle::staticMetaObject, "requestFinished(LoginResponse)");
    add(Check2StepAuthenticationRequestHandle::staticMetaObject, "requestFinished(Check2StepAuthenticationResponse)");
    add(ClientCredentialsRequestHandle::staticMetaObject, "requestFinished(ClientCredentialsResponse)");
    add(UserProjectsRequestHandle::staticMetaObject, "requestFinished(UserProjectsResponse,Korvo::Web::Error)");
    add(UploadProjectsStatusHandle::staticMetaObject, "requestFinished(UploadProjectsStatusResponse)");
    add(BeginUploadProjectRequestHandle::staticMetaObject, "requestFinished(BeginUploadProjectResponse)");
    add(BucketCreateRequestHandle::staticMetaObject, "requestFinished(BucketCreateResponse)");
    add(BucketGetRequestHandle::staticMetaObject, "requestFinished(BucketGetResponse)");
    add(ObjectCleanupRequestHandle::staticMetaObject, "requestFinished(ObjectCleanupResponse)");
    add(ObjectDeleteRequestHandle::staticMetaObject, "requestFinished(ObjectDeleteResponse)");
    add(ObjectExistsRequestHandle::staticMetaObject, "requestFinished(ObjectExistsResponse)");
    add(ObjectSpaceRequestHandle::staticMetaObject, "requestFinished(ObjectSpaceResponse)");
    add(ListFilesFromLocationsRequestHandle::staticMetaObject, "requestFinished(ListOfFilesFromLocationResponse)");
    add(SingleProjectFileDownloadRequestHandle::staticMetaObject,
        "requestFinished(SingleProjectFileDownloadResponse)");
    add(DownloadFileHandle::staticMetaObject, "requestFinished(DownloadFileResponse)");
    add(UploadFileRequestHandle::staticMetaObject, "requestFinished(UploadFileResponse)");
    add(UploadFileMultiPartRequestHandle::staticMetaObject, "requestFinished(UploadFileMultiPartFinishedResponse)");
}

void tst_RequestHandles::signalsHaveTheirNames()
{
    QFETCH(const QMetaObject *, handle);
    QFETCH(QByteArray, signal);
    QVERIFY2(handle->indexOfSignal(signal.constData()) >= 0, signal.constData());
    QVERIFY(handle->indexOfSignal("errorOccurred(Korvo::Web::Error)") >= 0);
    QVERIFY(handle->indexOfSlot("onReplyFinished()") >= 0);
    QVERIFY(handle->indexOfSlot("onReplyUploadProgress(qlonglong,qlonglong)") >= 0);
}

void tst_RequestHandles::networkErrorDecidesTheOutcome_data()
{
    QTest::addColumn<Outcome>("outcome");
    QTest::newRow("login") << outcomeOf<LoginRequestHandle, LoginResponse>("{}");
    QTest::newRow("two-step check")
        << outcomeOf<Check2StepAuthenticationRequestHandle, Check2StepAuthenticationResponse>();
    QTest::newRow("credentials") << outcomeOf<ClientCredentialsRequestHandle, ClientCredentialsResponse>();
    QTest::newRow("notice") << outcomeOf<NoticeRequestHandle, StatusResponse>();
    QTest::newRow("projects") << Outcome(projectsOutcome);
    QTest::newRow("statuses") << outcomeOf<UploadProjectsStatusHandle, UploadProjectsStatusResponse>();
    QTest::newRow("begin") << outcomeOf<BeginUploadProjectRequestHandle, BeginUploadProjectResponse>();
    QTest::newRow("create bucket") << outcomeOf<BucketCreateRequestHandle, BucketCreateResponse>();
    QTest::newRow("get bucket") << outcomeOf<BucketGetRequestHandle, BucketGetResponse>();
    QTest::newRow("clean up") << outcomeOf<ObjectCleanupRequestHandle, ObjectCleanupResponse>();
    QTest::newRow("delete") << outcomeOf<ObjectDeleteRequestHandle, ObjectDeleteResponse>();
    QTest::newRow("exists") << outcomeOf<ObjectExistsRequestHandle, ObjectExistsResponse>();
    QTest::newRow("space") << outcomeOf<ObjectSpaceRequestHandle, ObjectSpaceResponse>();
    QTest::newRow("listing") << outcomeOf<ListFilesFromLocationsRequestHandle, ListOfFilesFromLocationResponse>();
    QTest::newRow("media links")
        << outcomeOf<SingleProjectFileDownloadRequestHandle, SingleProjectFileDownloadResponse>();
}

void tst_RequestHandles::networkErrorDecidesTheOutcome()
{
    QFETCH(Outcome, outcome);
    const LogCapture log;
    QCOMPARE(outcome(QNetworkReply::NoError), QStringLiteral("0 success"));
    QCOMPARE(outcome(QNetworkReply::TimeoutError), QStringLiteral("1 failure"));
    QCOMPARE(outcome(QNetworkReply::UnknownNetworkError), QStringLiteral("1 failure"));
    QCOMPARE(outcome(QNetworkReply::InternalServerError), QStringLiteral("2 failure"));
    QCOMPARE(outcome(QNetworkReply::AuthenticationRequiredError), QStringLiteral("3 failure authentication"));
    QCOMPARE(outcome(QNetworkReply::OperationCanceledError), QStringLiteral("4 failure cancelled"));
    QCOMPARE(outcome(QNetworkReply::ContentNotFoundError), QStringLiteral("14 failure"));
    QCOMPARE(outcome(QNetworkReply::ServiceUnavailableError), QStringLiteral("14 failure"));
    QCOMPARE(outcome(QNetworkReply::SslHandshakeFailedError), QStringLiteral("14 failure"));
}

void tst_RequestHandles::loginIsParsed()
{
    const auto login = responseOf<LoginRequestHandle, LoginResponse>(R"({"access_token":"t","userName":"anna"})");
    QVERIFY(login.isSuccess() && login.loggedIn());
    QCOMPARE(login.accessToken(), QStringLiteral("t"));
    QCOMPARE(login.userName(), QStringLiteral("anna"));
}

// The server refuses wrong credentials with status 400; to the caller that is an exchange that went well.
void tst_RequestHandles::refusedLoginIsParsedInSpiteOfTheError()
{
    const LogCapture log;
    const auto responses = responsesOf<LoginRequestHandle, LoginResponse>(QNetworkReply::ProtocolInvalidOperationError,
                                                                          R"({"error":"invalid_grant"})");
    QCOMPARE(described(responses), QStringLiteral("3 success"));
    QVERIFY(!responses.first().loggedIn());
}

void tst_RequestHandles::unreadableLoginIsSaid()
{
    const LogCapture log;
    const auto responses = responsesOf<LoginRequestHandle, LoginResponse>(QNetworkReply::NoError, "<html>");
    QCOMPARE(described(responses), QStringLiteral("5 failure"));
}

void tst_RequestHandles::twoStepCheckIsParsed()
{
    QVERIFY((responseOf<Check2StepAuthenticationRequestHandle, Check2StepAuthenticationResponse>("true").authenticated()));
    QVERIFY((!responseOf<Check2StepAuthenticationRequestHandle, Check2StepAuthenticationResponse>("no").authenticated()));
}

void tst_RequestHandles::credentialsAreParsed()
{
    const auto credentials = responseOf<ClientCredentialsRequestHandle, ClientCredentialsResponse>(
        "<C><Url>u</Url><ClientId>i</ClientId><SecretKey>s</SecretKey></C>");
    QCOMPARE(credentials.url(), QStringLiteral("u"));
    QCOMPARE(credentials.clientId(), QStringLiteral("i"));
    QCOMPARE(credentials.secretKey(), QStringLiteral("s"));
}

void tst_RequestHandles::projectsAreParsed()
{
    UserProjectsRequestHandle handle;
    QSignalSpy finished(&handle, &UserProjectsRequestHandle::requestFinished);
    auto *const reply = new FakeReply;
    handle.setReply(reply);
    reply->finish("<A><ProjectInfo><ProjectName>one</ProjectName></ProjectInfo><ProjectInfo/></A>");
    QCOMPARE(finished.count(), 1);
    const auto projects = finished.first().first().value<UserProjectsResponse>().projects();
    QCOMPARE(projects.size(), 2);
    QCOMPARE(projects.first().projectName(), QStringLiteral("one"));
    QCOMPARE(finished.first().at(1).value<Error>(), Error::None);
}

void tst_RequestHandles::statusesAreParsed()
{
    const auto response = responseOf<UploadProjectsStatusHandle, UploadProjectsStatusResponse>(
        R"([{"status":3,"projectId":"p"}])");
    QCOMPARE(response.statuses().size(), 1);
    QCOMPARE(response.statuses().first().status, 3);
    QCOMPARE(response.statuses().first().projectId, QStringLiteral("p"));
}

void tst_RequestHandles::beginOfAnUploadIsParsed()
{
    const auto response = responseOf<BeginUploadProjectRequestHandle, BeginUploadProjectResponse>(
        "<R><BucketName>bucket-1</BucketName></R>");
    QCOMPARE(response.bucketName(), QStringLiteral("bucket-1"));
}

void tst_RequestHandles::bucketAnswersAreParsed()
{
    QCOMPARE((responseOf<BucketCreateRequestHandle, BucketCreateResponse>(BUCKET_TEXT).name()), QStringLiteral("bucket-1"));
    QVERIFY((responseOf<BucketGetRequestHandle, BucketGetResponse>(BUCKET_TEXT).exists()));
    QVERIFY((responseOf<ObjectCleanupRequestHandle, ObjectCleanupResponse>(BUCKET_TEXT).succeeded()));
    QCOMPARE((responseOf<ObjectDeleteRequestHandle, ObjectDeleteResponse>(BUCKET_TEXT).deletedFilesSize()),
             qint64(5'000'000'000));
    QVERIFY((responseOf<ObjectExistsRequestHandle, ObjectExistsResponse>(BUCKET_TEXT).exists()));
    QCOMPARE((responseOf<ObjectSpaceRequestHandle, ObjectSpaceResponse>(BUCKET_TEXT).usedSpace()), qint64(6'000'000'000));
}

void tst_RequestHandles::listingIsParsed()
{
    const auto listing
        = responseOf<ListFilesFromLocationsRequestHandle, ListOfFilesFromLocationResponse>(LISTING_TEXT);
    QCOMPARE(listing.count(), 7);
    QCOMPARE(listing.entries().size(), 1);
    QCOMPARE(listing.entries().first().key, QStringLiteral("a/b.jpg"));
    QCOMPARE(listing.entries().first().size, qint64(12));
}

// Entities are never read; an answer that declares some has come well, but says nothing.
void tst_RequestHandles::listingWithEntitiesHasNoEntries()
{
    const auto responses = responsesOf<ListFilesFromLocationsRequestHandle, ListOfFilesFromLocationResponse>(
        QNetworkReply::NoError,
        "<!DOCTYPE R [<!ENTITY k \"../evil\">]>" + QByteArray(LISTING_TEXT).replace("a/b.jpg", "&k;"));
    QCOMPARE(described(responses), QStringLiteral("0 success"));
    QCOMPARE(responses.first().entries().size(), 0);
    QCOMPARE(responses.first().count(), 0);
}

void tst_RequestHandles::mediaLinksAreParsed()
{
    const auto response = responseOf<SingleProjectFileDownloadRequestHandle, SingleProjectFileDownloadResponse>(
        "<m><media-item><url>https://x/</url><name>n</name></media-item></m>");
    QCOMPARE(response.links().size(), 1);
    QCOMPARE(response.links().first().url, QStringLiteral("https://x/"));
}

void tst_RequestHandles::fourHandlesCanBeAwaited()
{
    const auto answerSoon = [](RequestHandle &handle, const QByteArray &text) {
        auto *const reply = new FakeReply;
        handle.setReply(reply);
        QTimer::singleShot(0, reply, [=] { reply->finish(text); });
    };
    BeginUploadProjectRequestHandle begin;
    answerSoon(begin, "<R><BucketName>bucket-1</BucketName></R>");
    QCOMPARE(begin.waitForResponse(5000).bucketName(), QStringLiteral("bucket-1"));
    BucketCreateRequestHandle create;
    answerSoon(create, BUCKET_TEXT);
    QCOMPARE(create.waitForResponse(5000).name(), QStringLiteral("bucket-1"));
    BucketGetRequestHandle get;
    answerSoon(get, BUCKET_TEXT);
    QVERIFY(get.waitForResponse(5000).exists());
    ClientCredentialsRequestHandle credentials;
    answerSoon(credentials, "<C><Url>u</Url></C>");
    QCOMPARE(credentials.waitForResponse(5000).url(), QStringLiteral("u"));

    begin.setReply(new FakeReply);
    QCOMPARE(begin.waitForResponse(1).error(), Error::TimeOut);
    get.setReply(new FakeReply);
    QCOMPARE(get.waitForResponse(1).error(), Error::TimeOut);
    QVERIFY(!get.waitForResponse(1).exists());
    credentials.setReply(new FakeReply);
    QCOMPARE(credentials.waitForResponse(1).error(), Error::TimeOut);
}

void tst_RequestHandles::handleStaysUntilItsReceiverDisposesOfIt()
{
    QObject owner;
    const QPointer<ObjectSpaceRequestHandle> handle(new ObjectSpaceRequestHandle(&owner));
    auto *const reply = new FakeReply;
    handle->setReply(reply);
    reply->finish(BUCKET_TEXT);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(handle);
}

void tst_RequestHandles::responseCrossesAQueuedConnection()
{
    Error received = Error::None;
    QList<ProjectInfo> projects;
    UserProjectsRequestHandle handle;
    connect(
        &handle, &UserProjectsRequestHandle::requestFinished, this,
        [&](const UserProjectsResponse &response, Error error) {
            projects = response.projects();
            received = error;
        },
        Qt::QueuedConnection);
    const LogCapture log;
    auto *const reply = new FakeReply;
    handle.setReply(reply);
    reply->fail(QNetworkReply::InternalServerError, QString(), "<A><ProjectInfo/></A>");
    QVERIFY(projects.isEmpty());
    QTRY_COMPARE(projects.size(), 1);
    QCOMPARE(received, Error::Server);
}

void tst_RequestHandles::passwordResetEndsInSilence_data()
{
    QTest::addColumn<QNetworkReply::NetworkError>("error");
    QTest::newRow("success") << QNetworkReply::NoError;
    QTest::newRow("failure") << QNetworkReply::InternalServerError;
    QTest::newRow("cancelled") << QNetworkReply::OperationCanceledError;
}

void tst_RequestHandles::passwordResetEndsInSilence()
{
    QFETCH(QNetworkReply::NetworkError, error);
    const LogCapture log;
    QObject owner;
    const QPointer<ResetPasswordRequestHandle> handle(new ResetPasswordRequestHandle(&owner));
    QSignalSpy errors(handle, &RequestHandle::errorOccurred);
    auto *const reply = new FakeReply;
    handle->setReply(reply);
    reply->fail(error);
    QVERIFY(handle); // until the event loop runs
    QTRY_VERIFY(!handle);
    QCOMPARE(errors.count(), 0);
    const QMetaObject &meta = ResetPasswordRequestHandle::staticMetaObject;
    for (int i = 0; i < meta.methodCount(); ++i)
        QVERIFY(meta.method(i).name() != "requestFinished");
}

QTEST_GUILESS_MAIN(tst_RequestHandles)
#include "tst_RequestHandles.moc"
