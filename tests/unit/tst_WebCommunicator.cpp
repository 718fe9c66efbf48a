#include "request/WebCommunicator.h"

#include "handles/AuthenticationHandles.h"
#include "handles/BucketHandles.h"
#include "handles/DownloadFileHandle.h"
#include "handles/ProjectHandles.h"
#include "handles/UploadFileDescriptor.h"
#include "handles/UploadFileMultiPartRequestHandle.h"
#include "handles/UploadFileRequestHandle.h"
#include "request/ServerRoots.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QByteArrayList>
#include <QtCore/QElapsedTimer>
#include <QtCore/QLocale>
#include <QtCore/QMessageAuthenticationCode>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimerEvent>
#include <QtTest/QtTest>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QByteArray WEB_ROOT = ServerRoots::PRODUCTION_WEB;
const QByteArray FIRST_SERVICE_ROOT = ServerRoots::PRODUCTION_SERVICE;
// The web server names another place for the storage service than the one built in.
const QByteArray SERVICE_ROOT = ServerRoots::BETA_SERVICE;

const QByteArray CLIENT_ID = "client-1";
const QByteArray SECRET = "the secret of the client";

const QByteArray INSTANCE = R"(xmlns:i="http://www.w3.org/2001/XMLSchema-instance")";
const QByteArray WEB_MODELS
    = INSTANCE + R"( xmlns="http://schemas.datacontract.org/2004/07/Norbel.Korvo.Web.Business.Models")";
const QByteArray SERVICE_MODELS
    = INSTANCE + R"( xmlns="http://schemas.datacontract.org/2004/07/Norbel.Korvo.Service.SDK.Models.Request")";
const QByteArray ACCOUNT_MODELS
    = INSTANCE + R"( xmlns="http://schemas.datacontract.org/2004/07/Norbel.Korvo.Web.Client.Controllers.Api")";
const QByteArray ARRAYS = R"(xmlns:d2p1="http://schemas.microsoft.com/2003/10/Serialization/Arrays")";

const QByteArrayList FORM_HEADERS{"Content-Type: application/x-www-form-urlencoded; charset=UTF-8",
                                  "User-Agent: SiteManager / 2.1.0"};
const QByteArrayList WEB_HEADERS{"Content-Type: application/xml; charset=UTF-8", "User-Agent: SiteManager / 2.1.0",
                                 "X-KorvoService-ClientId: client-1"};
const QByteArrayList WEB_HEADERS_WITH_TOKEN = QByteArrayList{"Authorization: Bearer the-token"} + WEB_HEADERS;
const QByteArrayList SERVICE_HEADERS{"Accept: text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8",
                                     "Content-Type: application/xml; charset=UTF-8",
                                     "Date: DATE",
                                     "User-Agent: SiteManager / 2.1.0",
                                     "X-KorvoService-ClientId: client-1",
                                     "X-KorvoService-MessageToken: MESSAGE TOKEN"};
const QByteArrayList SIGNED_HEADERS = QByteArrayList{"Authorization: KorvoService SIGNATURE"} + SERVICE_HEADERS;
const QByteArrayList DATA_HEADERS{"Accept: application/xml", "Authorization: Bearer the-token"};
const QByteArrayList UNCOMPRESSED{"Accept-Encoding: identity"};

// As the slots that receive them spell them.
constexpr const char *RESPONSES[] = {"LoginResponse",
                                     "Check2StepAuthenticationResponse",
                                     "ClientCredentialsResponse",
                                     "BeginUploadProjectResponse",
                                     "BucketCreateResponse",
                                     "BucketGetResponse",
                                     "ObjectCleanupResponse",
                                     "ObjectDeleteResponse",
                                     "ObjectExistsResponse",
                                     "ObjectSpaceResponse",
                                     "ListOfFilesFromLocationResponse",
                                     "UserProjectsResponse",
                                     "UploadProjectsStatusResponse",
                                     "SingleProjectFileDownloadResponse",
                                     "UploadFileResponse",
                                     "UploadFileMultiPartInitResponse",
                                     "UploadFileMultiPartFinishedResponse",
                                     "DownloadFileResponse",
                                     "StatusResponse"};

const QString USER = QStringLiteral("a+b&c@example.com");
const QString PASSWORD = QStringLiteral("pass&word %1");
const QString PROJECT_ID = QStringLiteral("11111111-2222-3333-4444-555555555555");
const QString BUCKET = QStringLiteral("Bucket-1");
const QString KEY = QStringLiteral("Fotos/Schächte 100% #1?.jpg");

// Sends one request; what comes back is the handle or the reply, if the caller gets one.
using Send = std::function<QObject *(WebCommunicator &)>;

QDateTime dateIn(const RecordedRequest &request)
{
    QDateTime date = QLocale::c().toDateTime(QString::fromLatin1(request.header("Date")),
                                             QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'"));
    date.setTimeSpec(Qt::UTC);
    return date;
}

// How far the date of the request is from @p expected; the request was made just now.
qint64 secondsOff(const RecordedRequest &request, const QDateTime &expected)
{
    const QDateTime date = dateIn(request);
    return date.isValid() ? qAbs(date.secsTo(expected)) : std::numeric_limits<qint64>::max();
}

bool isMessageToken(const QByteArray &text)
{
    static const QRegularExpression form(
        QStringLiteral("^\\{[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}\\}$"));
    return form.match(QString::fromLatin1(text)).hasMatch();
}

QByteArray signatureOf(const RecordedRequest &request, const QByteArray &secret, const QByteArray &path)
{
    const QByteArrayList lines{request.method, request.header("Date"), request.header("X-KorvoService-MessageToken"),
                               request.header("X-KorvoService-ClientId"), path};
    return "KorvoService "
        + QMessageAuthenticationCode::hash(lines.join('\n'), secret, QCryptographicHash::Sha256).toBase64();
}

// What Qt adds to every request by itself.
bool isQtsOwn(const QByteArray &line)
{
    static const QByteArrayList names{"Connection: ", "Accept-Language: ", "Host: ", "Content-Length: ",
                                      "Accept-Encoding: gzip, deflate", "User-Agent: Mozilla/5.0"};
    return std::any_of(names.cbegin(), names.cend(), [&](const QByteArray &name) { return line.startsWith(name); });
}

// A value that differs from request to request is replaced by a word if it has the right form, else it stays.
QByteArray headerLine(const RecordedRequest &request, const QPair<QByteArray, QByteArray> &header,
                      const QByteArray &signature)
{
    const QByteArray &value = header.second;
    if (header.first == "Date" && value.size() == 29 && secondsOff(request, QDateTime::currentDateTimeUtc()) < 60)
        return "Date: DATE";
    if (header.first == "X-KorvoService-MessageToken" && isMessageToken(value))
        return "X-KorvoService-MessageToken: MESSAGE TOKEN";
    if (header.first == "Authorization" && value == signature)
        return "Authorization: KorvoService SIGNATURE";
    return header.first + ": " + value;
}

// The headers that the library itself chose, one a line and in alphabetical order.
QByteArray ownHeaders(const RecordedRequest &request, const QByteArray &secret, const QByteArray &signedPath)
{
    const QByteArray signature = signatureOf(request, secret, signedPath);
    QByteArrayList lines;
    for (const auto &header : request.headers) {
        const QByteArray line = headerLine(request, header, signature);
        if (!isQtsOwn(line))
            lines.append(line);
    }
    std::sort(lines.begin(), lines.end());
    return lines.join('\n');
}

QByteArray sorted(QByteArrayList lines)
{
    std::sort(lines.begin(), lines.end());
    return lines.join('\n');
}

LoginResponse loginUntil(const QDateTime &expires)
{
    const QString date = QLocale::c().toString(expires.toUTC(), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss"));
    return answered<LoginResponse>(
        QStringLiteral(R"({"access_token":"the-token","userName":"mail@example.com","userCompanyId":"company-1",)"
                       R"(".expires":")")
            + date + QStringLiteral(" GMT\"}"),
        QNetworkReply::NoError);
}

QDateTime fromNow(qint64 seconds)
{
    return QDateTime::currentDateTimeUtc().addSecs(seconds);
}

QByteArray credentialsAnswer(const QByteArray &url, const QByteArray &clientId, const QByteArray &secret)
{
    return "<Credentials><Url>" + url + "</Url><ClientId>" + clientId + "</ClientId><SecretKey>" + secret
        + "</SecretKey><CurrentDate>2025-03-04T10:00:00</CurrentDate></Credentials>";
}

QByteArray clockAnswer(const QByteArray &date)
{
    return "<Status><CurrentDate>" + date + "</CurrentDate></Status>";
}

const QByteArray CREDENTIALS_PATH = "/api/Projects/companykorvoservice";
const QByteArray STATUS_PATH = "/korvoservice/api/Status/Get";

} // namespace

Q_DECLARE_METATYPE(Send)

class tst_WebCommunicator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void constructorRegistersTheResponses_data();
    void constructorRegistersTheResponses();
    void bucketName_data();
    void bucketName();

    void everyRequestOnTheWire_data();
    void everyRequestOnTheWire();
    void noRedirectIsFollowed_data();
    void noRedirectIsFollowed();
    void noRequestAllowsHttp2_data();
    void noRequestAllowsHttp2();
    void onlySomeRequestsAreSentAgain_data();
    void onlySomeRequestsAreSentAgain();
    void eachSignedRequestHasAMessageTokenOfItsOwn();
    void multiPartStepsOnTheWire();
    void multiPartAbortOnTheWire();
    void multiPartStepsAreSentAgain();

    void requestsBeforeTheLogin();
    void beginWithoutLoginHasNoCompany();
    void serverClockMovesTheNextDate_data();
    void serverClockMovesTheNextDate();
    void unreadableClockChangesNothing_data();
    void unreadableClockChangesNothing();
    void silentClockChangesNothing();
    void credentialsApplyOnlyWhenComplete_data();
    void credentialsApplyOnlyWhenComplete();
    void credentialsMayNameAPlainAddress();
    void silentCredentialsChangeNothing();
    void awaitedHandlesAreDisposedOf();
    void logoutForgetsTheLogin();
    void logoutForgetsTheCookies();

    void tokenIsValidUntilTenMinutesBeforeItsEnd_data();
    void tokenIsValidUntilTenMinutesBeforeItsEnd();
    void tokenTimerEndsTenMinutesBeforeTheToken_data();
    void tokenTimerEndsTenMinutesBeforeTheToken();
    void loginExpiresTenMinutesBeforeTheToken();
    void longLivedTokenArmsTheTimerAgain();
    void logoutStopsTheTokenTimer();
    void newLoginReplacesTheTokenTimer();
    void otherTimersDoNotEndTheLogin();

    void failureIsRaised_data();
    void failureIsRaised();
    void successIsNotRaised();
    void failedNoticeIsLoggedOnly_data();
    void failedNoticeIsLoggedOnly();
    void secretsStayOutOfTheLog();
    void echoedFormStaysOutOfTheLog_data();
    void echoedFormStaysOutOfTheLog();

    void unreadableFileSendsNothing_data();
    void unreadableFileSendsNothing();
    void unopenedFileSendsNoParts();
    void downloadWithoutALocalFileSendsNothing();
    void fileOfFourMegabytesGoesInOnePiece();

    void linkLeadsOn_data();
    void linkLeadsOn();
    void linkDoesNotLeadToALessSafePlace();
    void linkOfAnotherSchemeIsRefused_data();
    void linkOfAnotherSchemeIsRefused();

    void destructionWithRequestsInFlight();
    void repliesGoBeforeTheirManager();

private:
    void logIn();
    void fetchCredentials(const QByteArray &answer);
    bool isQuiet() const;
    RecordedRequest signedRequest();
    QString localFile(const QString &name) const { return folder.filePath(name); }
    UploadFileDescriptor sampleFile() const;
    void addRow(const char *name, const Send &send, const QByteArray &method, const QByteArray &url,
                const QByteArrayList &headers, const QByteArray &body = QByteArray(),
                const QByteArray &signedPath = QByteArray(), int sends = 1);
    void addWebRows();
    void addServiceRows();
    void addFileRows();

    QTemporaryDir folder;
    std::unique_ptr<ScriptedServer> server;
    std::unique_ptr<RouteToServer> route;
    std::unique_ptr<LogCapture> log;
    std::unique_ptr<WebCommunicator> communicator;
    QByteArrayList namesFromTheStart; // of responses that were registered before there was a communicator
};

void tst_WebCommunicator::initTestCase()
{
    for (const char *name : RESPONSES) {
        if (QMetaType::type(name) != QMetaType::UnknownType)
            namesFromTheStart.append(name);
    }
    QCoreApplication::setApplicationName(QStringLiteral("Site Manager"));
    QCoreApplication::setApplicationVersion(QStringLiteral("2.1.0"));
    QVERIFY(folder.isValid());
    QFile file(localFile(QStringLiteral("sample.mp4")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("content"), qint64(7));
}

void tst_WebCommunicator::init()
{
    server = std::make_unique<ScriptedServer>();
    route = std::make_unique<RouteToServer>(*server);
    log = std::make_unique<LogCapture>();
    communicator = std::make_unique<WebCommunicator>();
}

void tst_WebCommunicator::cleanup()
{
    communicator.reset();
    log.reset();
    route.reset();
    server.reset();
}

void tst_WebCommunicator::logIn()
{
    communicator->storeLogin(loginUntil(fromNow(24 * 3600)));
    fetchCredentials(credentialsAnswer(SERVICE_ROOT, CLIENT_ID, SECRET));
    server->forgetRequests();
}

void tst_WebCommunicator::fetchCredentials(const QByteArray &answer)
{
    server->enqueue(CREDENTIALS_PATH, ScriptedAnswer::ok(answer));
    communicator->fetchClientCredentials();
}

// Whether no handle has a request on its way.
bool tst_WebCommunicator::isQuiet() const
{
    const auto handles = communicator->findChildren<RequestHandle *>();
    return std::none_of(handles.cbegin(), handles.cend(),
                        [](const RequestHandle *handle) { return handle->isInFlight(); });
}

// Any signed request, as it comes at the server; empty if none comes.
RecordedRequest tst_WebCommunicator::signedRequest()
{
    server->forgetRequests();
    communicator->queryUsedSpace(BUCKET, QString());
    return server->waitForRequests(1) ? server->lastRequest() : RecordedRequest();
}

UploadFileDescriptor tst_WebCommunicator::sampleFile() const
{
    return {QStringLiteral("folder"), localFile(QStringLiteral("sample.mp4")), QStringLiteral("Video/sample.mp4"), BUCKET,
            true};
}

void tst_WebCommunicator::constructorRegistersTheResponses_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name : RESPONSES)
        QTest::newRow(name) << QByteArray(name);
}

// Else the first answer that crosses a queued connection would be dropped.
void tst_WebCommunicator::constructorRegistersTheResponses()
{
    QFETCH(QByteArray, name);
    QVERIFY(!namesFromTheStart.contains(name));
    QVERIFY(QMetaType::type(name.constData()) != QMetaType::UnknownType);
}

void tst_WebCommunicator::bucketName_data()
{
    QTest::addColumn<QString>("company");
    QTest::addColumn<QString>("project");
    QTest::addColumn<QString>("projectFolder");
    QTest::addColumn<QString>("name");
    QTest::newRow("the first two are cut, then mapped and filtered")
        << QStringLiteral("Company_Name_Long") << QStringLiteral("User") << QStringLiteral("Ärger 2024")
        << QStringLiteral("company-nuserrger2024");
    QTest::newRow("the third is not cut") << QStringLiteral("123456789X") << QStringLiteral("abcdefghiX")
        << QStringLiteral("a-folder-of-more-than-nine-characters")
        << QStringLiteral("123456789abcdefghia-folder-of-more-than-nine-characters");
    QTest::newRow("cut before the filter") << QStringLiteral("ÄÖÜ.,;:!a9") << QStringLiteral("_________b")
        << QStringLiteral("C") << QStringLiteral("a---------c");
    QTest::newRow("place markers") << QStringLiteral("%1") << QStringLiteral("%2") << QStringLiteral("%3")
        << QStringLiteral("123");
    QTest::newRow("empty") << QString() << QString() << QString() << QString();
}

void tst_WebCommunicator::bucketName()
{
    QFETCH(QString, company);
    QFETCH(QString, project);
    QFETCH(QString, projectFolder);
    QTEST(WebCommunicator::bucketName(company, project, projectFolder), "name");
}

void tst_WebCommunicator::addRow(const char *name, const Send &send, const QByteArray &method, const QByteArray &url,
                                 const QByteArrayList &headers, const QByteArray &body, const QByteArray &signedPath,
                                 int sends)
{
    QTest::newRow(name) << send << method << url << headers << body << signedPath << sends;
}

void tst_WebCommunicator::addWebRows()
{
    const QByteArray form = "grant_type=password&keepInMind=true&username=a%2Bb%26c%40example.com&password=pass&word %1";
    addRow("login", [](WebCommunicator &c) { return c.login(USER, PASSWORD); }, "PUT", WEB_ROOT + "Token", FORM_HEADERS,
           form);
    addRow("login with code",
           [](WebCommunicator &c) { return c.loginWithCode(USER, PASSWORD, QStringLiteral("12 34")); }, "PUT",
           WEB_ROOT + "Token", FORM_HEADERS, form + "&twoFactorAuthenticationCode=12 34");
    addRow("two-step check", [](WebCommunicator &c) { return c.checkTwoStepAuthentication(USER); }, "GET",
           WEB_ROOT + "api/Users/CheckTwoStepAuthentication?username=a%2Bb%26c%40example.com", {});
    addRow("client credentials", [](WebCommunicator &c) { c.fetchClientCredentials(); return nullptr; }, "GET",
           WEB_ROOT + "api/Projects/companykorvoservice", WEB_HEADERS_WITH_TOKEN);
    addRow("reset password", [](WebCommunicator &c) { c.resetPassword(USER); return nullptr; }, "POST",
           WEB_ROOT + "api/Account/ResetPassword", WEB_HEADERS,
           "<AccountApiController.ResetPasswordBindingModel " + ACCOUNT_MODELS
               + "><UserName>a+b&c@example.com</UserName></AccountApiController.ResetPasswordBindingModel>");
    addRow("projects", [](WebCommunicator &c) { return c.queryProjects(); }, "GET",
           WEB_ROOT + "api/Projects?pageSize=1000000", WEB_HEADERS_WITH_TOKEN);
    addRow("upload statuses",
           [](WebCommunicator &c) { return c.queryUploadStatuses({QStringLiteral("b"), QStringLiteral("a")}); }, "POST",
           WEB_ROOT + "api/UploadProject/Statuses",
           {"Authorization: Bearer the-token", "Content-Type: application/json; charset=UTF-8",
            "User-Agent: SiteManager / 2.1.0"},
           "{\n    \"Projects\": [\n        \"b\",\n        \"a\"\n    ]\n}\n");
    addRow("begin upload",
           [](WebCommunicator &c) {
               return c.beginUpload(PROJECT_ID, QStringLiteral("Größe"), QDateTime({2024, 3, 1}, {7, 8, 9}));
           },
           "POST", WEB_ROOT + "api/UploadProject/Init", WEB_HEADERS_WITH_TOKEN,
           "<InitUploadProcesModel " + WEB_MODELS + "><CompanyId>company-1</CompanyId>"
           "<CreationDate>2024-03-01T07:08:09Z</CreationDate><Email>mail@example.com</Email>"
           "<HasPermissionsToOverrideAllProject>true</HasPermissionsToOverrideAllProject>"
           "<ProjectId>11111111-2222-3333-4444-555555555555</ProjectId>"
           "<ProjectName>Gr\xC3\xB6\xC3\x9F" "e</ProjectName></InitUploadProcesModel>");
    addRow("finish upload",
           [](WebCommunicator &c) { c.finishUpload(PROJECT_ID, ImportType::QZImport); return nullptr; }, "POST",
           WEB_ROOT + "api/UploadProject/Uploaded", WEB_HEADERS_WITH_TOKEN,
           "<UploadProcesMessageModel " + WEB_MODELS + "><OrvandeImport>true</OrvandeImport>"
           "<ProjectId>11111111-2222-3333-4444-555555555555</ProjectId></UploadProcesMessageModel>");
    addRow("cancel upload", [](WebCommunicator &c) { c.cancelUpload(PROJECT_ID); return nullptr; }, "POST",
           WEB_ROOT + "api/UploadProject/Cancel", WEB_HEADERS_WITH_TOKEN,
           "<UploadProcesMessageModel " + WEB_MODELS
               + "><ProjectId>11111111-2222-3333-4444-555555555555</ProjectId></UploadProcesMessageModel>");
    const QByteArray quickview = WEB_ROOT + "api/Projects/11111111-2222-3333-4444-555555555555/Quickview";
    addRow("media link",
           [](WebCommunicator &c) { return c.queryMediaLink(PROJECT_ID, QStringLiteral("Bild ü.jpg")); }, "GET",
           quickview + "/Media/Bild%20%C3%BC.jpg/Download", DATA_HEADERS);
    addRow("all media links", [](WebCommunicator &c) { return c.queryAllMediaLinks(PROJECT_ID); }, "GET",
           quickview + "/Media/Download", DATA_HEADERS);
    addRow("Quickview project data", [](WebCommunicator &c) { return c.downloadQuickviewProjectData(PROJECT_ID); },
           "GET", quickview, DATA_HEADERS + UNCOMPRESSED);
    addRow("Quickview survey data", [](WebCommunicator &c) { return c.downloadQuickviewSurveyData(PROJECT_ID); },
           "GET", quickview + "/Surveys", DATA_HEADERS + UNCOMPRESSED);
    addRow("Quickview manhole data", [](WebCommunicator &c) { return c.downloadQuickviewManholeData(PROJECT_ID); },
           "GET", quickview + "/Manholes", DATA_HEADERS + UNCOMPRESSED);
}

void tst_WebCommunicator::addServiceRows()
{
    const QString path = QStringLiteral("a/ü b.jpg");
    const QByteArray object = "<BucketName>Bucket-1</BucketName><RelativePath>a/\xC3\xBC b.jpg</RelativePath>";
    const auto addSigned = [this](const char *name, const Send &send, const QByteArray &method, const QByteArray &routePath,
                                  const QByteArray &root, const QByteArray &children, int sends = 1) {
        addRow(name, send, method, SERVICE_ROOT + routePath, SIGNED_HEADERS,
               '<' + root + ' ' + SERVICE_MODELS + '>' + children + "</" + root + '>', routePath, sends);
    };
    addRow("service status", [](WebCommunicator &c) { c.readServerClock(); return nullptr; }, "GET",
           SERVICE_ROOT + "api/Status/Get", SERVICE_HEADERS);
    addSigned("create bucket", [](WebCommunicator &c) { return c.createBucket(BUCKET); }, "PUT", "api/bucket",
              "BucketRequest", "<BucketName>bucket-1</BucketName>");
    addSigned("query bucket", [](WebCommunicator &c) { return c.queryBucket(BUCKET); }, "POST", "api/bucket/exists",
              "ObjectExistsRequest", "<BucketName>Bucket-1</BucketName><RelativePath></RelativePath>");
    addSigned("delete object", [=](WebCommunicator &c) { return c.deleteObject(BUCKET, path); }, "POST",
              "api/bucket/delete", "DeleteObjectRequest", object);
    addSigned("used space", [=](WebCommunicator &c) { return c.queryUsedSpace(BUCKET, path); }, "POST",
              "api/bucket/space", "GetUsedSpaceRequest", object);
    addSigned("object exists", [=](WebCommunicator &c) { return c.queryObjectExists(BUCKET, path); }, "POST",
              "api/bucket/exists", "ObjectExistsRequest", object);
    addSigned("clean up versions", [=](WebCommunicator &c) { return c.cleanUpVersions(BUCKET, path, 3); }, "POST",
              "api/bucket/cleanup", "CleanupVersionFilesRequest", object + "<KeepNewestVersion>3</KeepNewestVersion>");
    const QStringList prefixes{QStringLiteral("b/"), QStringLiteral("a/")};
    const QByteArray listing = "<BucketName>Bucket-1</BucketName><Delimiter>/</Delimiter><Prefixes " + ARRAYS
        + "><d2p1:string>b/</d2p1:string><d2p1:string>a/</d2p1:string></Prefixes>";
    addSigned("list files", [=](WebCommunicator &c) { return c.listFiles(BUCKET, QStringLiteral("/"), prefixes); },
              "POST", "api/bucket/listoffilesfromlocations", "FileListFromLocationsRequest", listing);
    addSigned("list files for a download",
              [=](WebCommunicator &c) { return c.listFilesForDownload(BUCKET, QStringLiteral("/"), prefixes); }, "POST",
              "api/bucket/listoffilesfromlocations", "FileListFromLocationsRequest", listing, 6);
    addSigned("start transcoding",
              [this](WebCommunicator &c) { c.startTranscoding(sampleFile()); return nullptr; }, "PUT",
              "api/job/putforeachpresets", "PutJobForEachPresetRequest",
              "<BucketName>Bucket-1</BucketName><FileKey>Video/sample.mp4</FileKey>"
              "<OutputKeyWithoutExtension>Video/sample</OutputKeyWithoutExtension>");
}

void tst_WebCommunicator::addFileRows()
{
    addRow("upload file", [this](WebCommunicator &c) { return c.uploadFile(sampleFile()); }, "PUT",
           SERVICE_ROOT + "api/bucket/putfile", SIGNED_HEADERS,
           "<PutFileRequest " + SERVICE_MODELS + "><BucketName>Bucket-1</BucketName>"
           "<InputFileArray>Y29udGVudA==</InputFileArray><OutputFilePath>Video/sample.mp4</OutputFilePath>"
           "<ProjectFolderName>folder</ProjectFolderName></PutFileRequest>",
           "api/bucket/putfile", 6);
    addRow("start multipart upload", [this](WebCommunicator &c) { return c.uploadFileInParts(sampleFile()); }, "PUT",
           SERVICE_ROOT + "api/multipartupload/init", SIGNED_HEADERS,
           "<InitMultipartUploadRequest " + SERVICE_MODELS + "><BucketName>Bucket-1</BucketName>"
           "<OutputFilePath>Video/sample.mp4</OutputFilePath></InitMultipartUploadRequest>",
           "api/multipartupload/init", 6);
    // The text that is signed is the key as it is, but for what would end the path of an address.
    addRow("download file",
           [this](WebCommunicator &c) {
               return c.downloadFile(BUCKET, KEY, localFile(QStringLiteral("downloaded")), 0);
           },
           "GET", SERVICE_ROOT + "webdav/Bucket-1/Fotos/Sch%C3%A4chte%20100%25%20%231%3F.jpg?download=true",
           SIGNED_HEADERS + UNCOMPRESSED, QByteArray(), "webdav/Bucket-1/Fotos/Sch\xC3\xA4" "chte 100%25 %231%3F.jpg", 6);
}

void tst_WebCommunicator::everyRequestOnTheWire_data()
{
    QTest::addColumn<Send>("send");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<QByteArrayList>("headers");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("signedPath");
    QTest::addColumn<int>("sends");
    addWebRows();
    addServiceRows();
    addFileRows();
}

void tst_WebCommunicator::everyRequestOnTheWire()
{
    QFETCH(Send, send);
    QFETCH(QByteArrayList, headers);
    QFETCH(QByteArray, signedPath);
    logIn();
    send(*communicator);
    QVERIFY(server->waitForRequests(1));
    const RecordedRequest request = server->requests().first();
    QTEST(request.method, "method");
    QTEST(request.url(), "url");
    QCOMPARE(ownHeaders(request, SECRET, signedPath), sorted(headers));
    QTEST(request.body, "body");
    QTRY_VERIFY(isQuiet());
    QCOMPARE(server->requestCount(), 1);
}

void tst_WebCommunicator::noRedirectIsFollowed_data()
{
    everyRequestOnTheWire_data();
}

void tst_WebCommunicator::noRedirectIsFollowed()
{
    QFETCH(Send, send);
    QFETCH(int, sends);
    logIn();
    server->setDefaultAnswer(ScriptedAnswer::redirect(QByteArray(ServerRoots::BETA_WEB) + "elsewhere"));
    const QPointer<QObject> watched = send(*communicator);
    QVERIFY(server->waitForRequests(sends));
    const auto *const reply = qobject_cast<QNetworkReply *>(watched);
    QTRY_VERIFY(isQuiet() && (!reply || reply->isFinished()));
    QCOMPARE(server->requestCount("/elsewhere"), 0);
    QCOMPARE(server->requestCount(), sends);
    const auto *const handle = qobject_cast<RequestHandle *>(watched);
    QVERIFY(!handle || handle->replyError() == QNetworkReply::TooManyRedirectsError);
}

void tst_WebCommunicator::noRequestAllowsHttp2_data()
{
    everyRequestOnTheWire_data();
}

// Not left to what Qt, or an environment variable, takes for granted.
void tst_WebCommunicator::noRequestAllowsHttp2()
{
    QFETCH(Send, send);
    logIn();
    QObject *const watched = send(*communicator);
    QList<QNetworkReply *> replies = communicator->findChildren<QNetworkReply *>();
    if (auto *const reply = qobject_cast<QNetworkReply *>(watched))
        replies.append(reply);
    QVERIFY(!replies.isEmpty());
    for (const QNetworkReply *const reply : qAsConst(replies)) {
        const QVariant isAllowed = reply->request().attribute(QNetworkRequest::Http2AllowedAttribute);
        QVERIFY(isAllowed.isValid());
        QVERIFY(!isAllowed.toBool());
    }
}

void tst_WebCommunicator::onlySomeRequestsAreSentAgain_data()
{
    everyRequestOnTheWire_data();
}

void tst_WebCommunicator::onlySomeRequestsAreSentAgain()
{
    QFETCH(Send, send);
    QFETCH(int, sends);
    logIn();
    server->setDefaultAnswer(ScriptedAnswer(503));
    const QPointer<QObject> watched = send(*communicator);
    QVERIFY(server->waitForRequests(sends));
    const auto *const reply = qobject_cast<QNetworkReply *>(watched);
    QTRY_VERIFY(isQuiet() && (!reply || reply->isFinished()));
    QCOMPARE(server->requestCount(), sends);
    const RecordedRequest first = server->requests().first();
    for (const RecordedRequest &again : server->requests()) {
        QCOMPARE(again.method, first.method);
        QCOMPARE(again.url(), first.url());
        QCOMPARE(again.headers, first.headers); // date, token and signature too
        QCOMPARE(again.body, first.body);
    }
}

void tst_WebCommunicator::eachSignedRequestHasAMessageTokenOfItsOwn()
{
    logIn();
    const QByteArray first = signedRequest().header("X-KorvoService-MessageToken");
    const QByteArray second = signedRequest().header("X-KorvoService-MessageToken");
    QVERIFY(isMessageToken(first));
    QVERIFY(isMessageToken(second));
    QVERIFY(first != second);
}

void tst_WebCommunicator::multiPartStepsOnTheWire()
{
    logIn();
    server->enqueue("/korvoservice/api/multipartupload/init",
                    ScriptedAnswer::ok("<InitMultipartUploadResponse><MultipartUploadId>upload 7</MultipartUploadId>"
                                       "</InitMultipartUploadResponse>"));
    server->enqueue("/korvoservice/api/multipartupload/upload", ScriptedAnswer::ok("<PutMultipartUploadResponse/>"));
    server->enqueue("/korvoservice/api/multipartupload/complete",
                    ScriptedAnswer::ok("<CompleteMultipartUploadResponse/>"));
    auto *const handle = communicator->uploadFileInParts(sampleFile());
    QSignalSpy finished(handle, &UploadFileMultiPartRequestHandle::requestFinished);
    QVERIFY(finished.wait());
    QCOMPARE(server->requestCount(), 3);

    const RecordedRequest part = server->requests().at(1);
    QCOMPARE(part.method, QByteArray("PUT"));
    QCOMPARE(part.url(), SERVICE_ROOT + "api/multipartupload/upload");
    QCOMPARE(ownHeaders(part, SECRET, "api/multipartupload/upload"), sorted(SIGNED_HEADERS));
    QCOMPARE(part.body, "<PutMultipartUploadRequest " + SERVICE_MODELS
                            + "><InputFilePartArray>Y29udGVudA==</InputFilePartArray>"
                              "<MultipartUploadId>upload 7</MultipartUploadId><PartNumber>1</PartNumber>"
                              "</PutMultipartUploadRequest>");
    const RecordedRequest complete = server->requests().at(2);
    QCOMPARE(complete.method, QByteArray("PUT"));
    QCOMPARE(complete.url(), SERVICE_ROOT + "api/multipartupload/complete");
    QCOMPARE(ownHeaders(complete, SECRET, "api/multipartupload/complete"), sorted(SIGNED_HEADERS));
    QCOMPARE(complete.body, "<CompleteMultipartUploadRequest " + SERVICE_MODELS
                                + "><MultipartUploadId>upload 7</MultipartUploadId>"
                                  "<ProjectFolderName>folder</ProjectFolderName></CompleteMultipartUploadRequest>");
}

void tst_WebCommunicator::multiPartAbortOnTheWire()
{
    logIn();
    server->enqueue("/korvoservice/api/multipartupload/init",
                    ScriptedAnswer::ok("<InitMultipartUploadResponse><MultipartUploadId>upload 7</MultipartUploadId>"
                                       "</InitMultipartUploadResponse>"));
    server->enqueue("/korvoservice/api/multipartupload/upload", ScriptedAnswer::held());
    server->enqueue("/korvoservice/api/multipartupload/abort", ScriptedAnswer::ok("<AbortMultipartUploadResponse/>"));
    auto *const handle = communicator->uploadFileInParts(sampleFile());
    QSignalSpy finished(handle, &UploadFileMultiPartRequestHandle::requestFinished);
    QVERIFY(server->waitForRequests(2));
    handle->abort();
    QVERIFY(finished.wait());
    QCOMPARE(server->requestCount(), 3);

    const RecordedRequest abort = server->requests().at(2);
    QCOMPARE(abort.method, QByteArray("PUT"));
    QCOMPARE(abort.url(), SERVICE_ROOT + "api/multipartupload/abort");
    QCOMPARE(ownHeaders(abort, SECRET, "api/multipartupload/abort"), sorted(SIGNED_HEADERS));
    QCOMPARE(abort.body, "<AbortMultipartUploadRequest " + SERVICE_MODELS
                             + "><MultipartUploadId>upload 7</MultipartUploadId></AbortMultipartUploadRequest>");
}

void tst_WebCommunicator::multiPartStepsAreSentAgain()
{
    logIn();
    server->enqueue("/korvoservice/api/multipartupload/init",
                    ScriptedAnswer::ok("<InitMultipartUploadResponse><MultipartUploadId>7</MultipartUploadId>"
                                       "</InitMultipartUploadResponse>"));
    const QByteArray uploadPath = "/korvoservice/api/multipartupload/upload";
    server->enqueue(uploadPath, ScriptedAnswer(503));
    server->enqueue(uploadPath, ScriptedAnswer::ok("<PutMultipartUploadResponse/>"));
    const QByteArray completePath = "/korvoservice/api/multipartupload/complete";
    server->enqueue(completePath, ScriptedAnswer(503));
    server->enqueue(completePath, ScriptedAnswer::ok("<CompleteMultipartUploadResponse/>"));
    auto *const handle = communicator->uploadFileInParts(sampleFile());
    QSignalSpy finished(handle, &UploadFileMultiPartRequestHandle::requestFinished);
    QVERIFY(finished.wait());
    QVERIFY(handle->isUploaded());
    for (const QByteArray &path : {uploadPath, completePath}) {
        const QList<RecordedRequest> requests = server->requests(path);
        QCOMPARE(requests.size(), 2);
        QCOMPARE(requests.at(1).headers, requests.at(0).headers);
        QCOMPARE(requests.at(1).body, requests.at(0).body);
    }
}

void tst_WebCommunicator::requestsBeforeTheLogin()
{
    const RecordedRequest request = signedRequest();
    QCOMPARE(request.url(), FIRST_SERVICE_ROOT + "api/bucket/space");
    QCOMPARE(request.header("X-KorvoService-ClientId"), QByteArray("Vantrel"));
    QCOMPARE(request.header("Authorization"), signatureOf(request, QByteArray(), "api/bucket/space"));

    server->forgetRequests();
    communicator->queryProjects();
    QVERIFY(server->waitForRequests(1));
    QCOMPARE(server->lastRequest().header("Authorization"), QByteArray("Bearer "));
    QCOMPARE(server->lastRequest().header("X-KorvoService-ClientId"), QByteArray("Vantrel"));
}

void tst_WebCommunicator::beginWithoutLoginHasNoCompany()
{
    QVERIFY(communicator->companyId().isNull());
    communicator->beginUpload(PROJECT_ID, QString(), QDateTime());
    QVERIFY(server->waitForRequests(1));
    const QByteArray body = server->lastRequest().body;
    QVERIFY2(body.contains("<CompanyId></CompanyId><CreationDate></CreationDate><Email></Email>"), body.constData());
}

void tst_WebCommunicator::serverClockMovesTheNextDate_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QDateTime>("serverTime");
    QTest::addColumn<int>("status");
    QTest::newRow("ahead") << QByteArray("2035-01-02T03:04:05Z") << QDateTime({2035, 1, 2}, {3, 4, 5}, Qt::UTC) << 200;
    QTest::newRow("behind") << QByteArray("1999-12-31T23:59:30Z") << QDateTime({1999, 12, 31}, {23, 59, 30}, Qt::UTC) << 200;
    QTest::newRow("with offset") << QByteArray("2035-01-02T03:04:05+02:00")
                                 << QDateTime({2035, 1, 2}, {1, 4, 5}, Qt::UTC) << 200;
    // Whoever answers has a clock.
    QTest::newRow("refusal") << QByteArray("2035-01-02T03:04:05Z") << QDateTime({2035, 1, 2}, {3, 4, 5}, Qt::UTC) << 500;
}

void tst_WebCommunicator::serverClockMovesTheNextDate()
{
    QFETCH(QByteArray, text);
    QFETCH(QDateTime, serverTime);
    QFETCH(int, status);
    server->enqueue(STATUS_PATH, ScriptedAnswer(status, clockAnswer(text)));
    communicator->readServerClock();
    const RecordedRequest request = signedRequest();
    QVERIFY2(secondsOff(request, serverTime) < 30, request.header("Date").constData());
    QCOMPARE(request.header("Authorization"), signatureOf(request, QByteArray(), "api/bucket/space"));
}

void tst_WebCommunicator::unreadableClockChangesNothing_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::newRow("no date") << ScriptedAnswer::ok("<Status></Status>");
    QTest::newRow("empty date") << ScriptedAnswer::ok(clockAnswer(QByteArray()));
    QTest::newRow("wrong date") << ScriptedAnswer::ok(clockAnswer("2035-02-31T00:00:00Z"));
    QTest::newRow("garbage") << ScriptedAnswer::ok("<<<\xFF\x01&&&");
    QTest::newRow("empty") << ScriptedAnswer::ok();
    QTest::newRow("refused") << ScriptedAnswer(503, "overloaded");
    QTest::newRow("dropped") << ScriptedAnswer::dropped();
}

void tst_WebCommunicator::unreadableClockChangesNothing()
{
    QFETCH(ScriptedAnswer, answer);
    server->enqueue(STATUS_PATH, ScriptedAnswer::ok(clockAnswer("2035-01-02T03:04:05Z")));
    communicator->readServerClock();
    server->always(STATUS_PATH, answer);
    communicator->readServerClock();
    const RecordedRequest request = signedRequest();
    QVERIFY2(secondsOff(request, QDateTime({2035, 1, 2}, {3, 4, 5}, Qt::UTC)) < 30, request.header("Date").constData());
}

void tst_WebCommunicator::silentClockChangesNothing()
{
    server->enqueue(STATUS_PATH, ScriptedAnswer::held(clockAnswer("2035-01-02T03:04:05Z")));
    QElapsedTimer elapsed;
    elapsed.start();
    communicator->readServerClock();
    QVERIFY2(elapsed.elapsed() >= 2990 && elapsed.elapsed() < 6000, QByteArray::number(elapsed.elapsed()).constData());
    server->release(); // too late
    const RecordedRequest request = signedRequest();
    QVERIFY2(secondsOff(request, QDateTime::currentDateTimeUtc()) < 30, request.header("Date").constData());
}

void tst_WebCommunicator::credentialsApplyOnlyWhenComplete_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("apply");
    QTest::newRow("complete") << credentialsAnswer(SERVICE_ROOT, CLIENT_ID, SECRET) << true;
    QTest::newRow("other elements around") << "<A><B/>" + credentialsAnswer(SERVICE_ROOT, CLIENT_ID, SECRET) + "</A>"
                                           << true;
    QTest::newRow("no address") << credentialsAnswer(QByteArray(), CLIENT_ID, SECRET) << false;
    QTest::newRow("no client id") << credentialsAnswer(SERVICE_ROOT, QByteArray(), SECRET) << false;
    QTest::newRow("no secret") << credentialsAnswer(SERVICE_ROOT, CLIENT_ID, QByteArray()) << false;
    QTest::newRow("file address") << credentialsAnswer("file:///etc/", CLIENT_ID, SECRET) << false;
    QTest::newRow("FTP address") << credentialsAnswer("ftp://service.korvo.example/", CLIENT_ID, SECRET) << false;
    QTest::newRow("no scheme") << credentialsAnswer("service.korvo.example/", CLIENT_ID, SECRET) << false;
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("JSON") << QByteArray(R"({"Url":"https://service.korvo.example/"})") << false;
    QTest::newRow("cut off") << credentialsAnswer(SERVICE_ROOT, CLIENT_ID, SECRET).left(80) << false;
}

void tst_WebCommunicator::credentialsApplyOnlyWhenComplete()
{
    QFETCH(QByteArray, answer);
    QFETCH(bool, apply);
    fetchCredentials(answer);
    const RecordedRequest request = signedRequest();
    QCOMPARE(request.url(), (apply ? SERVICE_ROOT : FIRST_SERVICE_ROOT) + "api/bucket/space");
    QCOMPARE(request.header("X-KorvoService-ClientId"), apply ? CLIENT_ID : QByteArray("Vantrel"));
    QCOMPARE(request.header("Authorization"), signatureOf(request, apply ? SECRET : QByteArray(), "api/bucket/space"));
}

void tst_WebCommunicator::credentialsMayNameAPlainAddress()
{
    fetchCredentials(credentialsAnswer("http://storage.korvo.example:8080/deep/", CLIENT_ID, SECRET));
    const RecordedRequest request = signedRequest();
    QCOMPARE(request.url(), QByteArray("http://storage.korvo.example:8080/deep/api/bucket/space"));
    QVERIFY(!request.secure);
}

void tst_WebCommunicator::silentCredentialsChangeNothing()
{
    server->enqueue(CREDENTIALS_PATH, ScriptedAnswer::held(credentialsAnswer(SERVICE_ROOT, CLIENT_ID, SECRET)));
    QElapsedTimer elapsed;
    elapsed.start();
    communicator->fetchClientCredentials();
    QVERIFY2(elapsed.elapsed() >= 9990 && elapsed.elapsed() < 15000, QByteArray::number(elapsed.elapsed()).constData());
    server->release(); // too late
    const RecordedRequest request = signedRequest();
    QCOMPARE(request.url(), FIRST_SERVICE_ROOT + "api/bucket/space");
    QCOMPARE(request.header("X-KorvoService-ClientId"), QByteArray("Vantrel"));
}

void tst_WebCommunicator::awaitedHandlesAreDisposedOf()
{
    communicator->readServerClock();
    fetchCredentials(credentialsAnswer(SERVICE_ROOT, CLIENT_ID, SECRET));
    fetchCredentials("no credentials");
    QCOMPARE(server->requestCount(), 3);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(communicator->findChildren<QObject *>(), QObjectList());
}

void tst_WebCommunicator::logoutForgetsTheLogin()
{
    logIn();
    QVERIFY(communicator->hasValidToken());
    QCOMPARE(communicator->companyId(), QStringLiteral("company-1"));
    communicator->logout();
    QVERIFY(!communicator->hasValidToken());
    QVERIFY(communicator->companyId().isNull());

    communicator->queryProjects();
    QVERIFY(server->waitForRequests(1)); // the logout itself has sent nothing
    QCOMPARE(server->lastRequest().url(), WEB_ROOT + "api/Projects?pageSize=1000000");
    QCOMPARE(server->lastRequest().header("Authorization"), QByteArray("Bearer "));
    QCOMPARE(server->lastRequest().header("X-KorvoService-ClientId"), QByteArray("Vantrel"));

    const RecordedRequest request = signedRequest();
    QCOMPARE(request.url(), SERVICE_ROOT + "api/bucket/space"); // the place stays
    QCOMPARE(request.header("X-KorvoService-ClientId"), QByteArray("Vantrel"));
    QCOMPARE(request.header("Authorization"), signatureOf(request, QByteArray(), "api/bucket/space"));
}

void tst_WebCommunicator::logoutForgetsTheCookies()
{
    server->enqueue("/Token", ScriptedAnswer::ok().withHeader("Set-Cookie", "session=of-the-user; Path=/"));
    communicator->login(USER, PASSWORD);
    QVERIFY(server->waitForRequests(1));
    QTRY_VERIFY(isQuiet());
    communicator->queryProjects();
    QVERIFY(server->waitForRequests(2));
    QCOMPARE(server->lastRequest().header("Cookie"), QByteArray("session=of-the-user"));
    communicator->logout();
    communicator->queryProjects();
    QVERIFY(server->waitForRequests(3));
    QVERIFY(!server->lastRequest().hasHeader("Cookie"));
}

void tst_WebCommunicator::tokenIsValidUntilTenMinutesBeforeItsEnd_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<bool>("valid");
    QTest::newRow("over") << qint64(-1) << false;
    QTest::newRow("within the margin") << qint64(590) << false;
    QTest::newRow("at the margin") << qint64(600) << false;
    QTest::newRow("before the margin") << qint64(620) << true;
    QTest::newRow("a century") << qint64(100) * 365 * 24 * 3600 << true;
}

void tst_WebCommunicator::tokenIsValidUntilTenMinutesBeforeItsEnd()
{
    QFETCH(qint64, seconds);
    QVERIFY(!communicator->hasValidToken());
    communicator->storeLogin(loginUntil(fromNow(seconds)));
    QTEST(communicator->hasValidToken(), "valid");
}

namespace {

// Intervals of the running timers of an object, in milliseconds.
QList<qint64> timersOf(QObject *object)
{
    QList<qint64> intervals;
    for (const auto &timer : QAbstractEventDispatcher::instance()->registeredTimers(object))
        intervals.append(quint32(timer.interval)); // the longest one, rounded to a second, is more than an int tells
    return intervals;
}

constexpr qint64 LONGEST_INTERVAL_MS = std::numeric_limits<int>::max();

} // namespace

void tst_WebCommunicator::tokenTimerEndsTenMinutesBeforeTheToken_data()
{
    QTest::addColumn<QDateTime>("expires");
    QTest::addColumn<qint64>("intervalMs"); // -1: no timer
    QTest::newRow("over") << fromNow(-1000) << qint64(-1);
    QTest::newRow("within the margin") << fromNow(595) << qint64(-1);
    QTest::newRow("no date") << QDateTime() << qint64(-1);
    QTest::newRow("an hour") << fromNow(3600) << qint64(3000 * 1000);
    QTest::newRow("two weeks") << fromNow(14 * 24 * 3600) << qint64(14 * 24 * 3600 - 600) * 1000;
    QTest::newRow("thirty days") << fromNow(30 * 24 * 3600) << LONGEST_INTERVAL_MS;
    QTest::newRow("far") << QDateTime({2999, 1, 1}, {0, 0}, Qt::UTC) << LONGEST_INTERVAL_MS;
}

void tst_WebCommunicator::tokenTimerEndsTenMinutesBeforeTheToken()
{
    QFETCH(QDateTime, expires);
    QFETCH(qint64, intervalMs);
    communicator->storeLogin(loginUntil(expires));
    const QList<qint64> timers = timersOf(communicator.get());
    QCOMPARE(timers.isEmpty(), intervalMs < 0);
    // The table is a moment old, and dates come in whole seconds.
    if (!timers.isEmpty())
        QVERIFY2(qAbs(timers.first() - intervalMs) < 20000, QByteArray::number(timers.first()).constData());
}

void tst_WebCommunicator::loginExpiresTenMinutesBeforeTheToken()
{
    QSignalSpy expired(communicator.get(), &WebCommunicator::loginExpired);
    const QDateTime expires = fromNow(602);
    communicator->storeLogin(loginUntil(expires));
    QVERIFY(communicator->hasValidToken());
    QVERIFY(expired.wait(4000));
    // Dates come in whole seconds.
    QVERIFY(QDateTime::currentDateTimeUtc().addSecs(600) >= expires.addSecs(-1));
    QVERIFY(!communicator->hasValidToken());
    QVERIFY(timersOf(communicator.get()).isEmpty());
    QCOMPARE(expired.count(), 1);
}

void tst_WebCommunicator::longLivedTokenArmsTheTimerAgain()
{
    QSignalSpy expired(communicator.get(), &WebCommunicator::loginExpired);
    communicator->storeLogin(loginUntil(fromNow(100 * 24 * 3600)));
    const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(communicator.get());
    QCOMPARE(timers.size(), 1);
    QTimerEvent event(timers.first().timerId);
    QCoreApplication::sendEvent(communicator.get(), &event);
    QCoreApplication::processEvents();
    QCOMPARE(expired.count(), 0);
    QCOMPARE(timersOf(communicator.get()).size(), 1);
    QVERIFY(timersOf(communicator.get()).first() >= LONGEST_INTERVAL_MS);
    QVERIFY(communicator->hasValidToken());
}

void tst_WebCommunicator::logoutStopsTheTokenTimer()
{
    communicator->storeLogin(loginUntil(fromNow(3600)));
    QCOMPARE(timersOf(communicator.get()).size(), 1);
    communicator->logout();
    QVERIFY(timersOf(communicator.get()).isEmpty());
}

void tst_WebCommunicator::newLoginReplacesTheTokenTimer()
{
    communicator->storeLogin(loginUntil(fromNow(3600)));
    communicator->storeLogin(loginUntil(fromNow(7200)));
    const QList<qint64> timers = timersOf(communicator.get());
    QCOMPARE(timers.size(), 1);
    QVERIFY(timers.first() > 6500 * 1000);
    communicator->storeLogin(loginUntil(fromNow(10)));
    QVERIFY(timersOf(communicator.get()).isEmpty());
}

void tst_WebCommunicator::otherTimersDoNotEndTheLogin()
{
    QSignalSpy expired(communicator.get(), &WebCommunicator::loginExpired);
    communicator->storeLogin(loginUntil(fromNow(10))); // within the margin, so the timer of the token does not run
    const int other = communicator->startTimer(0);
    QVERIFY(timersOf(communicator.get()).size() == 1);
    QTimerEvent event(other);
    QCoreApplication::sendEvent(communicator.get(), &event);
    communicator->killTimer(other);
    QCOMPARE(expired.count(), 0);
}

void tst_WebCommunicator::failureIsRaised_data()
{
    QTest::addColumn<Send>("send");
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<Error>("error");
    const Send reset = [](WebCommunicator &c) { c.resetPassword(USER); return nullptr; };
    const Send finish = [](WebCommunicator &c) { c.finishUpload(PROJECT_ID, ImportType::Standard); return nullptr; };
    const auto addRows = [](const QByteArray &name, const Send &send) {
        QTest::newRow(name + " 500") << send << ScriptedAnswer(500) << Error::Server;
        QTest::newRow(name + " 401") << send << ScriptedAnswer(401) << Error::AuthenticationRequired;
        QTest::newRow(name + " 404") << send << ScriptedAnswer(404) << Error::Network;
        QTest::newRow(name + " dropped") << send << ScriptedAnswer::dropped() << Error::Network;
        QTest::newRow(name + " redirect") << send << ScriptedAnswer::redirect("/") << Error::Network;
        QTest::newRow(name + " short") << send << ScriptedAnswer::ok("123").announcing(5) << Error::Network;
    };
    addRows("reset password", reset);
    addRows("finish upload", finish);
}

void tst_WebCommunicator::failureIsRaised()
{
    QFETCH(Send, send);
    QFETCH(ScriptedAnswer, answer);
    QFETCH(Error, error);
    server->setDefaultAnswer(answer);
    QSignalSpy raised(communicator.get(), &WebCommunicator::errorOccurred);
    send(*communicator);
    QVERIFY(raised.wait());
    QCOMPARE(raised.first().first().value<Error>(), error);
    QTRY_VERIFY(communicator->findChildren<RequestHandle *>().isEmpty()); // the handle has gone by itself
    QCOMPARE(raised.count(), 1);
}

void tst_WebCommunicator::successIsNotRaised()
{
    QSignalSpy raised(communicator.get(), &WebCommunicator::errorOccurred);
    communicator->resetPassword(USER);
    communicator->finishUpload(PROJECT_ID, ImportType::Standard);
    communicator->cancelUpload(PROJECT_ID);
    communicator->startTranscoding(sampleFile());
    QVERIFY(server->waitForRequests(4));
    QTRY_VERIFY(communicator->findChildren<RequestHandle *>().isEmpty());
    QCOMPARE(raised.count(), 0);
    QCOMPARE(log->count(), 0);
}

void tst_WebCommunicator::failedNoticeIsLoggedOnly_data()
{
    QTest::addColumn<Send>("send");
    QTest::newRow("cancel upload") << Send([](WebCommunicator &c) { c.cancelUpload(PROJECT_ID); return nullptr; });
    QTest::newRow("start transcoding")
        << Send([this](WebCommunicator &c) { c.startTranscoding(sampleFile()); return nullptr; });
}

void tst_WebCommunicator::failedNoticeIsLoggedOnly()
{
    QFETCH(Send, send);
    server->setDefaultAnswer(ScriptedAnswer(500));
    QSignalSpy raised(communicator.get(), &WebCommunicator::errorOccurred);
    send(*communicator);
    QVERIFY(server->waitForRequests(1));
    QTRY_VERIFY(communicator->findChildren<RequestHandle *>().isEmpty());
    QCOMPARE(raised.count(), 0);
    QCOMPARE(log->count(), 1);
    QCOMPARE(log->entries().first().level, 1);
    QVERIFY(log->messages().first().startsWith(
        QLatin1String("Network Error: \"InternalServerError\" occured.\n Message: \n")));
}

void tst_WebCommunicator::secretsStayOutOfTheLog()
{
    logIn();
    server->setDefaultAnswer(ScriptedAnswer(500, R"({"access_token":"another-token","error":1)"));
    communicator->login(USER, QStringLiteral("very-secret"));
    communicator->loginWithCode(USER, QStringLiteral("very-secret"), QStringLiteral("987654"));
    communicator->queryProjects();
    communicator->queryUsedSpace(BUCKET, QString());
    communicator->uploadFile(sampleFile());
    communicator->fetchClientCredentials();
    QTRY_VERIFY(isQuiet());
    QVERIFY(log->count() > 5);
    for (const char *secret : {"very-secret", "987654", "the-token", "another-token", SECRET.constData(), "KorvoService "})
        QVERIFY2(!log->contains(QString::fromUtf8(secret)), secret);
}

void tst_WebCommunicator::echoedFormStaysOutOfTheLog_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("behind");
    QTest::newRow("alone") << QByteArray() << QByteArray();
    QTest::newRow("page") << QByteArray("<html><body>Bad request:\n") << QByteArray("\n</body></html>");
    QTest::newRow("broken JSON") << QByteArray(R"({"request":")") << QByteArray(R"(","error":)");
}

void tst_WebCommunicator::echoedFormStaysOutOfTheLog()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, behind);
    server->always("/Token",
                   [=](const RecordedRequest &request) { return ScriptedAnswer::ok(before + request.body + behind); });
    const QString password = QStringLiteral("very secret&\"'=+1");
    communicator->login(USER, password);
    communicator->loginWithCode(USER, password, QStringLiteral("987654"));
    QTRY_VERIFY(isQuiet());
    QCOMPARE(log->count(), 2);
    for (const QString &message : log->messages())
        QVERIFY(message.startsWith(QStringLiteral("Error during parsing Login response.")));
    for (const char *secret : {"very secret", "very%20secret", "very+secret", "\"'=+1", "987654"})
        QVERIFY2(!log->contains(QString::fromUtf8(secret)), qPrintable(log->messages().join(QLatin1Char('\n'))));
}

void tst_WebCommunicator::unreadableFileSendsNothing_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << localFile(QStringLiteral("missing %1.jpg"));
    QTest::newRow("folder") << folder.path();
    QTest::newRow("empty path") << QString();
}

void tst_WebCommunicator::unreadableFileSendsNothing()
{
    QFETCH(QString, path);
    UploadFileDescriptor file = sampleFile();
    file.localFilePath = path;
    QCOMPARE(communicator->uploadFile(file), nullptr);
    QCOMPARE(log->count(), 1);
    QCOMPARE(log->entries().first().level, 1);
    QCOMPARE(log->entries().first().category, QStringLiteral("KorvoWeb"));
    QCOMPARE(log->messages().first(), QStringLiteral("Error occurred during upload. Could not open file:") + path);
    // Whatever had been sent before would be here before this one.
    signedRequest();
    QCOMPARE(server->requestCount(), 1);
    QCOMPARE(server->openConnections(), 1);
}

void tst_WebCommunicator::unopenedFileSendsNoParts()
{
    UploadFileDescriptor file = sampleFile();
    file.localFilePath = localFile(QStringLiteral("missing.mp4"));
    QCOMPARE(communicator->uploadFileInParts(file), nullptr);
    QCOMPARE(log->messages(), QStringList{QStringLiteral("Couldn't open upload file: \"") + file.localFilePath
                                          + QLatin1Char('"')});
    QCOMPARE(log->entries().first().category, QStringLiteral("Korvo::Web::UploadFileMultiPartRequestHandle"));
    signedRequest();
    QCOMPARE(server->openConnections(), 1);
}

void tst_WebCommunicator::downloadWithoutALocalFileSendsNothing()
{
    const auto *const handle = communicator->downloadFile(BUCKET, KEY, folder.path(), 1);
    QCOMPARE(handle->fileError(), Error::FileOpen);
    QVERIFY(!handle->isInFlight());
    const QString underAFile = localFile(QStringLiteral("sample.mp4/file"));
    QCOMPARE(communicator->downloadFile(BUCKET, KEY, underAFile, 1)->fileError(), Error::DownloadFolder);
    signedRequest();
    QCOMPARE(server->openConnections(), 1);
}

void tst_WebCommunicator::fileOfFourMegabytesGoesInOnePiece()
{
    UploadFileDescriptor file = sampleFile();
    file.localFilePath = localFile(QStringLiteral("large"));
    QFile large(file.localFilePath);
    QVERIFY(large.open(QIODevice::WriteOnly));
    const QByteArray content(4 * 1024 * 1024, '\x7F');
    QCOMPARE(large.write(content), qint64(content.size()));
    large.close();
    QVERIFY(communicator->uploadFile(file));
    QVERIFY(server->waitForRequests(1));
    QVERIFY(server->lastRequest().body.contains("<InputFileArray>" + content.toBase64() + "</InputFileArray>"));

    // A byte more, and the end of the file would be lost.
    QVERIFY(large.open(QIODevice::Append));
    QCOMPARE(large.write("x"), qint64(1));
    large.close();
    QCOMPARE(communicator->uploadFile(file), nullptr);
}

void tst_WebCommunicator::linkLeadsOn_data()
{
    QTest::addColumn<QByteArray>("link");
    QTest::addColumn<QByteArray>("target");
    const QByteArray other = ServerRoots::BETA_WEB;
    QTest::newRow("to another host") << WEB_ROOT + "files/a%20b.mp4?sig=x%2By" << other + "real/a%20b.mp4";
    QTest::newRow("to a safer place") << QByteArray("http://files.korvo.example/a") << other + "real/a";
}

void tst_WebCommunicator::linkLeadsOn()
{
    QFETCH(QByteArray, link);
    QFETCH(QByteArray, target);
    logIn();
    server->enqueue([=](const RecordedRequest &request) { return request.url() == link; },
                    ScriptedAnswer::redirect(target));
    server->enqueue([=](const RecordedRequest &request) { return request.url() == target; },
                    ScriptedAnswer::ok("the file"));
    const std::unique_ptr<QNetworkReply> reply(communicator->downloadLink(QString::fromUtf8(link)));
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(reply->readAll(), QByteArray("the file"));
    const QList<RecordedRequest> requests = server->requests();
    QCOMPARE(requests.size(), 2);
    for (const RecordedRequest &request : requests) {
        QCOMPARE(request.method, QByteArray("GET"));
        QCOMPARE(ownHeaders(request, SECRET, QByteArray()), sorted(UNCOMPRESSED)); // nothing secret
        QVERIFY(request.body.isEmpty());
    }
    QCOMPARE(requests.first().url(), link);
    QCOMPARE(requests.last().url(), target);
}

void tst_WebCommunicator::linkDoesNotLeadToALessSafePlace()
{
    server->enqueue("/file", ScriptedAnswer::redirect("http://files.korvo.example/elsewhere"));
    const std::unique_ptr<QNetworkReply> reply(communicator->downloadLink(QString::fromUtf8(WEB_ROOT + "file")));
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(reply->error(), QNetworkReply::InsecureRedirectError);
    QCOMPARE(server->requestCount(), 1);
}

void tst_WebCommunicator::linkOfAnotherSchemeIsRefused_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("file") << QStringLiteral("file:///etc/hostname");
    QTest::newRow("FTP") << QStringLiteral("ftp://files.korvo.example/a");
    QTest::newRow("data") << QStringLiteral("data:,text");
    QTest::newRow("resource") << QStringLiteral("qrc:/a");
    QTest::newRow("no scheme") << QStringLiteral("files.korvo.example/a");
    QTest::newRow("empty") << QString();
}

void tst_WebCommunicator::linkOfAnotherSchemeIsRefused()
{
    QFETCH(QString, link);
    QCOMPARE(communicator->downloadLink(link), nullptr);
}

void tst_WebCommunicator::destructionWithRequestsInFlight()
{
    server->setDefaultAnswer(ScriptedAnswer::held());
    communicator->login(USER, PASSWORD);
    communicator->resetPassword(USER);
    communicator->uploadFile(sampleFile());
    communicator->uploadFileInParts(sampleFile());
    communicator->downloadFile(BUCKET, KEY, localFile(QStringLiteral("downloaded")), 1);
    communicator->downloadQuickviewProjectData(PROJECT_ID);
    QVERIFY(server->waitForRequests(6));
    QSignalSpy raised(communicator.get(), &WebCommunicator::errorOccurred);
    communicator.reset();
    QCOMPARE(raised.count(), 0);
    QTRY_COMPARE(server->openConnections(), 0);
}

// A reply whose manager has gone would be without its connections.
void tst_WebCommunicator::repliesGoBeforeTheirManager()
{
    server->setDefaultAnswer(ScriptedAnswer::held());
    communicator->queryProjects();
    communicator->uploadFile(sampleFile());
    QVERIFY(server->waitForRequests(2));
    const auto replies = communicator->findChildren<QNetworkReply *>();
    QCOMPARE(replies.size(), 2);
    const QPointer<QNetworkAccessManager> manager(replies.first()->manager());
    int goneBefore = 0;
    for (const QNetworkReply *reply : replies)
        connect(reply, &QObject::destroyed, this, [&] { goneBefore += manager ? 1 : 0; });
    communicator.reset();
    QVERIFY(!manager);
    QCOMPARE(goneBefore, 2);
}

QTEST_GUILESS_MAIN(tst_WebCommunicator)
#include "tst_WebCommunicator.moc"
