#include "PlatformClient.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtTest/QtTest>

#include <algorithm>
#include <limits>
#include <set>

using namespace PlatformTest;
using nlohmann::json;

namespace {

const char *const LINE_NAMES[] = {"method", "date", "message token", "client id", "path"};

const std::string SPACE = "api/bucket/space";

Elements withValue(Elements elements, std::size_t index, const std::string &value)
{
    elements[index].second = value;
    return elements;
}

Elements withName(Elements elements, std::size_t index, const std::string &name)
{
    elements[index].first = name;
    return elements;
}

Elements swapped(Elements elements, std::size_t a, std::size_t b)
{
    std::swap(elements[a], elements[b]);
    return elements;
}

Elements without(Elements elements, std::size_t index)
{
    elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(index));
    return elements;
}

} // namespace

/// What the platform takes and what it refuses, asked by a client that signs by hand.
class TestPlatformProtocol : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void isReadyInUnderASecond();
    void explainsItself();
    void refusesWrongOptions();
    void endsInGoodOrder();
    void dataFolderServesOneProgram();
    void anyHostLeadsToThePlatform();
    void certificateFitsEveryName_data();
    void certificateFitsEveryName();
    void authorityIsKeptBetweenStarts();

    void requestSignedByHandIsAccepted();
    void flippedBitInASignedLineIsRefused_data();
    void flippedBitInASignedLineIsRefused();
    void flippedBitInASentHeaderIsRefused_data();
    void flippedBitInASentHeaderIsRefused();
    void dateMayBeFifteenMinutesOff_data();
    void dateMayBeFifteenMinutesOff();
    void dateFollowsTheSkewedClock();
    void resentRequestIsWelcome();
    void messageTokenServesOneRequestOnly();
    void missingHeaderIsRefused_data();
    void missingHeaderIsRefused();
    void clockNeedsHeadersButNoSignature();

    void bodyIsReadStrictly_data();
    void bodyIsReadStrictly();
    void contentTypeIsChecked();
    void refusalsAreCounted();

    void loginAnswersTheToken();
    void loginRefusals_data();
    void loginRefusals();
    void secondFactorIsAskedForWhereItIsSet();
    void tokenExpiresWithItsLifetime();
    void credentialsNameTheServiceRoot();
    void resetsAreRecorded();
    void accountsCanBeAddedWhileRunning();

    void uploadIsKeptByProject();
    void uploadBeginIsCheckedStrictly_data();
    void uploadBeginIsCheckedStrictly();
    void multipartNeedsAllParts();
    void multipartAnswersTwice();
    void listingFollowsPrefixAndDelimiter();
    void deleteAndSpaceTakeFolders();
    void bucketsBelongToACompany();
    void transcodingLeavesAWebCopy();
    void mediaLinksDownload();
    void quickviewDataIsServed();
    void statusesFollowTheUpload();
    void cancelledProjectIsNotListed();
    void hostileProjectsCanBeMade();

    void journalHoldsNoSecrets();
    void journalCanBeReadOn();
    void requestBrokenOffIsNoRefusal();
    void methodsAreFixed();
    void clientThatAsksMayGoOn();
    void pageShowsItself();
    void otherSitesMayNotControl();

private:
    WireAnswer space(const SignedLines &sent, const SignedLines &forSignature);
    std::string uploadId(const std::string &key);
    WireAnswer putPart(const std::string &id, int number, const std::string &bytes);
    WireAnswer complete(const std::string &id);
    json objects();

    PlatformProcess platform;
    PlatformClient client{platform};
};

void TestPlatformProtocol::initTestCase()
{
    QVERIFY(platform.start());
}

void TestPlatformProtocol::init()
{
    QVERIFY(client.prepare());
}

void TestPlatformProtocol::cleanup()
{
    platform.control("POST", "clock", {{"skewSeconds", 0}});
    client.service("POST", "api/bucket/delete", serviceBody("DeleteObjectRequest", {{"BucketName", client.bucket}, {"RelativePath", ""}}));
}

WireAnswer TestPlatformProtocol::space(const SignedLines &sent, const SignedLines &forSignature)
{
    return client.send(client.signedRequest(sent, client.signatureOf(forSignature),
                                            serviceBody("GetUsedSpaceRequest", {{"BucketName", client.bucket}, {"RelativePath", ""}})));
}

std::string TestPlatformProtocol::uploadId(const std::string &key)
{
    return elementText(client.service("PUT", "api/multipartupload/init",
                                      serviceBody("InitMultipartUploadRequest", {{"BucketName", client.bucket}, {"OutputFilePath", key}})).body,
                       "MultipartUploadId");
}

WireAnswer TestPlatformProtocol::putPart(const std::string &id, int number, const std::string &bytes)
{
    return client.service("PUT", "api/multipartupload/upload",
                          serviceBody("PutMultipartUploadRequest", {{"InputFilePartArray", base64(bytes)}, {"MultipartUploadId", id}, {"PartNumber", std::to_string(number)}}));
}

WireAnswer TestPlatformProtocol::complete(const std::string &id)
{
    return client.service("PUT", "api/multipartupload/complete",
                          serviceBody("CompleteMultipartUploadRequest", {{"MultipartUploadId", id}, {"ProjectFolderName", ""}}));
}

json TestPlatformProtocol::objects()
{
    const json state = platform.control("GET", "state?sha256");
    for (const json &bucket : state["buckets"])
        if (bucket["name"] == client.bucket)
            return bucket["objects"];
    return json::array();
}

void TestPlatformProtocol::isReadyInUnderASecond()
{
    // The best of three: the machine may be busy with something else.
    qint64 best = std::numeric_limits<qint64>::max();
    for (int i = 0; i < 3; ++i) {
        PlatformProcess other;
        QVERIFY(other.start());
        best = std::min(best, other.startMilliseconds());
    }
    QVERIFY2(best < 1000, qPrintable(QString::number(best)));
}

void TestPlatformProtocol::explainsItself()
{
    QProcess process;
    process.start(PlatformProcess::program(), {QStringLiteral("--help")});
    QVERIFY(process.waitForFinished());
    const QByteArray text = process.readAllStandardOutput();
    for (const char *word : {"--data", "--port", "--proxy-port", "--listen", "--account", "--fault", "--clock-skew", "--service-url",
                             "--web-copies", "--no-sync", "--exit-with-stdin", "tunnelStall", "resetInBody"})
        QVERIFY2(text.contains(word), word);
    QCOMPARE(process.exitCode(), 0);
}

void TestPlatformProtocol::refusesWrongOptions()
{
    const QString data = platform.outerFolder() + QStringLiteral("/never");
    const QList<QStringList> wrong = {{}, {QStringLiteral("--data")}, {QStringLiteral("--nonsense")}, {QStringLiteral("--data"), data, QStringLiteral("--port"), QStringLiteral("70000")},
                                      {QStringLiteral("--data"), data, QStringLiteral("--account"), QStringLiteral("{")},
                                      {QStringLiteral("--data"), data, QStringLiteral("--fault"), QStringLiteral("{\"kind\":\"x\"}")}};
    for (const QStringList &options : wrong) {
        QProcess process;
        process.start(PlatformProcess::program(), options);
        QVERIFY(process.waitForFinished());
        QVERIFY(process.exitStatus() == QProcess::NormalExit && process.exitCode() > 0);
        QVERIFY(!process.readAllStandardError().isEmpty());
    }
}

void TestPlatformProtocol::endsInGoodOrder()
{
    PlatformProcess other;
    QVERIFY(other.start());
    const auto idle = WireClient::direct(other.port(), other.authority());
    const auto tunnel = WireClient::tunnelled(other.proxyPort(), other.authority(), WEB_HOST);
    QVERIFY(idle->isConnected() && tunnel->isConnected());
    QCOMPARE(other.terminate(), 0);
}

void TestPlatformProtocol::dataFolderServesOneProgram()
{
    QProcess process;
    process.start(PlatformProcess::program(), {QStringLiteral("--data"), platform.dataFolder()});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardError().contains("in use"));
}

void TestPlatformProtocol::anyHostLeadsToThePlatform()
{
    const std::string answer = plainExchange(platform.proxyPort(), "CONNECT anything.example:1234 HTTP/1.1\r\n\r\n");
    QVERIFY(answer.find("HTTP/1.1 200") == 0);
}

void TestPlatformProtocol::certificateFitsEveryName_data()
{
    QTest::addColumn<QByteArray>("host");
    for (const char *host : {"web.korvo.example", "service.korvo.example", "web-beta.korvo.example", "service-beta.korvo.example", "localhost", "127.0.0.1"})
        QTest::newRow(host) << QByteArray(host);
}

void TestPlatformProtocol::certificateFitsEveryName()
{
    QFETCH(QByteArray, host);
    const auto connection = WireClient::tunnelled(platform.proxyPort(), platform.authority(), host.toStdString());
    QVERIFY2(connection->isConnected(), connection->failure().c_str());
    const auto direct = WireClient::direct(platform.port(), platform.authority(), host.toStdString());
    QVERIFY2(direct->isConnected(), direct->failure().c_str());
}

void TestPlatformProtocol::authorityIsKeptBetweenStarts()
{
    PlatformProcess other;
    QVERIFY(other.start());
    QFile file(QString::fromStdString(other.authority()));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray first = file.readAll();
    file.close();
    QCOMPARE(other.terminate(), 0);
    QVERIFY(other.start());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), first);
}

void TestPlatformProtocol::requestSignedByHandIsAccepted()
{
    const SignedLines lines = client.linesFor("POST", SPACE);
    const WireAnswer answer = space(lines, lines);
    QCOMPARE(answer.status, 200);
    QVERIFY(elementText(answer.body, "UsedSpace") == "0");
}

void TestPlatformProtocol::flippedBitInASignedLineIsRefused_data()
{
    QTest::addColumn<int>("line");
    for (int line = 0; line < 5; ++line)
        QTest::newRow(LINE_NAMES[line]) << line;
}

void TestPlatformProtocol::flippedBitInASignedLineIsRefused()
{
    QFETCH(int, line);
    const std::size_t bits = client.linesFor("POST", SPACE).all()[static_cast<std::size_t>(line)]->size() * 8;
    for (std::size_t bit = 0; bit < bits; ++bit) {
        const SignedLines sent = client.linesFor("POST", SPACE);
        SignedLines flipped = sent;
        char &byte = (*flipped.all()[static_cast<std::size_t>(line)])[bit / 8];
        byte = static_cast<char>(byte ^ (1 << bit % 8));
        QCOMPARE(space(sent, flipped).status, 401);
    }
}

void TestPlatformProtocol::flippedBitInASentHeaderIsRefused_data()
{
    QTest::addColumn<int>("line");
    QTest::newRow("date") << 1;
    QTest::newRow("message token") << 2;
    QTest::newRow("client id") << 3;
}

void TestPlatformProtocol::flippedBitInASentHeaderIsRefused()
{
    QFETCH(int, line);
    const SignedLines signedFor = client.linesFor("POST", SPACE);
    SignedLines sent = signedFor;
    std::string &text = *sent.all()[static_cast<std::size_t>(line)];
    // The last digit but one: still a number, still another value.
    char &byte = text[line == 1 ? 24 : text.size() - 2];
    byte = static_cast<char>(byte ^ 1);
    QCOMPARE(space(sent, signedFor).status, 401);
}

void TestPlatformProtocol::dateMayBeFifteenMinutesOff_data()
{
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<int>("status");
    QTest::newRow("14:50 fast") << qint64(890) << 200;
    QTest::newRow("14:50 slow") << qint64(-890) << 200;
    QTest::newRow("15:10 fast") << qint64(910) << 401;
    QTest::newRow("15:10 slow") << qint64(-910) << 401;
}

void TestPlatformProtocol::dateMayBeFifteenMinutesOff()
{
    QFETCH(qint64, offset);
    SignedLines lines = client.linesFor("POST", SPACE);
    lines.date = mailDate(offset);
    QTEST(space(lines, lines).status, "status");
}

void TestPlatformProtocol::dateFollowsTheSkewedClock()
{
    platform.control("POST", "clock", {{"skewSeconds", 7200}});
    SignedLines lines = client.linesFor("POST", SPACE);
    QCOMPARE(space(lines, lines).status, 401);
    lines.date = mailDate(7200);
    QCOMPARE(space(lines, lines).status, 200);
}

void TestPlatformProtocol::resentRequestIsWelcome()
{
    const SignedLines lines = client.linesFor("POST", SPACE);
    QCOMPARE(space(lines, lines).status, 200);
    QCOMPARE(space(lines, lines).status, 200);
    const json last = platform.control("GET", "journal").back();
    QVERIFY(last["resent"].get<bool>());
}

void TestPlatformProtocol::messageTokenServesOneRequestOnly()
{
    const SignedLines lines = client.linesFor("POST", SPACE);
    QCOMPARE(space(lines, lines).status, 200);
    const WireRequest otherBody = client.signedRequest(lines, client.signatureOf(lines),
                                                       serviceBody("GetUsedSpaceRequest", {{"BucketName", client.bucket}, {"RelativePath", "x"}}));
    QCOMPARE(client.send(otherBody).status, 401);
    SignedLines otherPath = lines;
    otherPath.path = "api/bucket/exists";
    QCOMPARE(space(otherPath, otherPath).status, 401);
}

void TestPlatformProtocol::missingHeaderIsRefused_data()
{
    QTest::addColumn<int>("header");
    QTest::newRow("date") << 0;
    QTest::newRow("message token") << 1;
    QTest::newRow("client id") << 2;
    QTest::newRow("signature") << 3;
}

void TestPlatformProtocol::missingHeaderIsRefused()
{
    QFETCH(int, header);
    const SignedLines lines = client.linesFor("POST", SPACE);
    WireRequest request = client.signedRequest(lines, client.signatureOf(lines),
                                               serviceBody("GetUsedSpaceRequest", {{"BucketName", client.bucket}, {"RelativePath", ""}}));
    const std::string name = request.headers[static_cast<std::size_t>(header)].first;
    request.headers.erase(request.headers.begin() + header);
    const WireAnswer answer = client.send(request);
    QCOMPARE(answer.status, 401);
    QVERIFY(elementText(answer.body, "Element") == name);
}

void TestPlatformProtocol::clockNeedsHeadersButNoSignature()
{
    WireRequest request{"GET", "/korvoservice/api/Status/Get",
                        {{"Date", mailDate(-86400)}, {"X-KorvoService-MessageToken", newMessageToken()}, {"X-KorvoService-ClientId", "Vantrel"}}, "", SERVICE_HOST};
    const WireAnswer answer = client.send(request);
    QCOMPARE(answer.status, 200);
    QCOMPARE(elementText(answer.body, "CurrentDate").size(), std::string("2026-03-03T14:05:09Z").size());
    request.headers.push_back({"Authorization", "KorvoService x"});
    QCOMPARE(client.send(request).status, 400);
}

void TestPlatformProtocol::bodyIsReadStrictly_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("element");
    const auto row = [](const char *name, const char *path, const std::string &body, const char *element) {
        QTest::newRow(name) << QByteArray(path) << QByteArray::fromStdString(body) << QByteArray(element);
    };
    const Elements part = {{"InputFilePartArray", "YWJj"}, {"MultipartUploadId", "x"}, {"PartNumber", "1"}};
    const Elements file = {{"BucketName", "%BUCKET%"}, {"InputFileArray", "YWJj"}, {"OutputFilePath", "k"}, {"ProjectFolderName", ""}};
    const char *const put = "api/bucket/putfile";
    const auto fileBody = [](const Elements &elements) { return serviceBody("PutFileRequest", elements); };
    row("root", put, serviceBody("PutFilesRequest", file), "PutFilesRequest");
    row("root in another case", put, serviceBody("putFileRequest", file), "putFileRequest");
    row("namespace", put, webBody("PutFileRequest", file), "PutFileRequest");
    row("no namespace", put, "<PutFileRequest><BucketName>b</BucketName></PutFileRequest>", "PutFileRequest");
    row("order", put, fileBody(swapped(file, 1, 2)), "InputFileArray");
    row("missing child", put, fileBody(without(file, 0)), "BucketName");
    row("missing last child", put, fileBody(without(file, 3)), "ProjectFolderName");
    row("misspelt child", put, fileBody(withName(file, 2, "OutputFilepath")), "OutputFilePath");
    row("child too many", put, fileBody({file[0], file[1], file[2], file[3], {"Extra", "1"}}), "Extra");
    row("child twice", put, fileBody({file[0], file[0], file[1], file[2], file[3]}), "InputFileArray");
    row("empty bucket name", put, fileBody(withValue(file, 0, "")), "BucketName");
    row("empty key", put, fileBody(withValue(file, 2, "")), "OutputFilePath");
    row("no Base64", put, fileBody(withValue(file, 1, "YW!j")), "InputFileArray");
    row("unpadded Base64", put, fileBody(withValue(file, 1, "YWI")), "InputFileArray");
    row("Base64 with a break", put, fileBody(withValue(file, 1, "YW\nJj")), "InputFileArray");
    row("element in a value", put, fileBody(withValue(file, 2, "a<b/>c")), "OutputFilePath");
    row("unclosed", put, "<PutFileRequest>", "PutFileRequest");
    row("text instead of XML", put, "hello", "PutFileRequest");
    row("empty", put, "", "PutFileRequest");
    row("two roots", put, fileBody(file) + fileBody(file), "PutFileRequest");
    row("key that is not UTF-8", put, fileBody(withValue(file, 2, "a\xff")), "OutputFilePath");
    row("part number", "api/multipartupload/upload", serviceBody("PutMultipartUploadRequest", withValue(part, 2, "one")), "MultipartUploadId");
    row("array namespace", "api/bucket/listoffilesfromlocations",
        serviceBody("FileListFromLocationsRequest", {{"BucketName", "%BUCKET%"}, {"Delimiter", ""}, {"Prefixes", ""}}), "Prefixes");
    row("bucket with capitals", "api/bucket", serviceBody("BucketRequest", {{"BucketName", "Bucket"}}), "BucketName");
}

void TestPlatformProtocol::bodyIsReadStrictly()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, element);
    const char *method = path == "api/bucket/listoffilesfromlocations" ? "POST" : "PUT";
    body.replace("%BUCKET%", QByteArray::fromStdString(client.bucket));
    const WireAnswer answer = client.service(method, path.toStdString(), body.toStdString());
    QVERIFY2(answer.status == 400 || (answer.status == 404 && element == "MultipartUploadId"), answer.raw.c_str());
    QCOMPARE(QByteArray::fromStdString(elementText(answer.body, "Element")), element);
    QVERIFY(objects().empty());
}

void TestPlatformProtocol::contentTypeIsChecked()
{
    const SignedLines lines = client.linesFor("POST", SPACE);
    WireRequest request = client.signedRequest(lines, client.signatureOf(lines),
                                               serviceBody("GetUsedSpaceRequest", {{"BucketName", client.bucket}, {"RelativePath", ""}}));
    request.headers.back().second = "application/x-www-form-urlencoded";
    QCOMPARE(client.send(request).status, 415);
}

void TestPlatformProtocol::refusalsAreCounted()
{
    const int before = platform.control("GET", "refusals")["count"];
    client.service("PUT", "api/bucket", "nonsense");
    const json refusals = platform.control("GET", "refusals");
    QCOMPARE(refusals["count"].get<int>(), before + 1);
    QVERIFY(refusals["last"]["route"] == "api/bucket");
    QCOMPARE(refusals["last"]["status"].get<int>(), 400);
    QVERIFY(refusals["last"]["element"] == "BucketRequest");
    QVERIFY(platform.control("GET", "journal").back()["refused"]["element"] == "BucketRequest");
}

void TestPlatformProtocol::loginAnswersTheToken()
{
    const json answer = json::parse(client.login().body);
    std::set<std::string> names;
    for (const auto &item : answer.items())
        names.insert(item.key());
    QVERIFY((names == std::set<std::string>{"access_token", "token_type", "expires_in", "userName", "userFirstName", "userLastName", "userCompanyId",
                                            "userRoles", ".persistent", ".issued", ".expires"}));
    QCOMPARE(answer["expires_in"].get<int>(), 86400);
    QVERIFY(answer["userCompanyId"] == "korvo-company-01");
    QVERIFY(answer[".persistent"] == "true");
    QVERIFY(answer[".expires"] == mailDate(86400) || answer[".expires"] == mailDate(86399));
}

void TestPlatformProtocol::loginRefusals_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("form");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("invalidGrant");
    const QByteArray user = "grant_type=password&keepInMind=true&username=inspector%40korvo.example&password=";
    QTest::newRow("as it should be") << QByteArray("PUT") << QByteArray(user + "Camera 12%1+Kanal") << 200 << false;
    QTest::newRow("wrong password") << QByteArray("PUT") << QByteArray(user + "Camera") << 400 << true;
    QTest::newRow("encoded password") << QByteArray("PUT") << QByteArray(user + "Camera%2012%251%2BKanal") << 400 << true;
    QTest::newRow("password cut off at &") << QByteArray("PUT") << QByteArray(user + "Camera 12&1+Kanal") << 400 << true;
    QTest::newRow("raw user name") << QByteArray("PUT") << QByteArray(QByteArray(user).replace("%40", "@") + "Camera 12%1+Kanal") << 200 << false;
    QTest::newRow("unknown user") << QByteArray("PUT") << QByteArray("grant_type=password&username=x&password=y") << 400 << true;
    QTest::newRow("no grant type") << QByteArray("PUT") << QByteArray("username=x&password=y") << 400 << false;
    QTest::newRow("POST") << QByteArray("POST") << QByteArray(user + "Camera 12%1+Kanal") << 405 << false;
}

void TestPlatformProtocol::loginRefusals()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, form);
    QFETCH(bool, invalidGrant);
    const WireAnswer answer = client.send({method.toStdString(), "/Token", {{"Content-Type", "application/x-www-form-urlencoded; charset=UTF-8"}}, form.toStdString(), WEB_HOST});
    QTEST(answer.status, "status");
    QCOMPARE(answer.body.find("\"invalid_grant\"") != std::string::npos, invalidGrant);
}

void TestPlatformProtocol::secondFactorIsAskedForWhereItIsSet()
{
    const auto check = [this](const std::string &user) {
        return client.send({"GET", "/api/Users/CheckTwoStepAuthentication?username=" + user, {}, "", WEB_HOST}).body;
    };
    QVERIFY(check("secure%40korvo.example") == "true");
    QVERIFY(check("inspector%40korvo.example") == "false");
    QVERIFY(check("nobody") == "false");
    QCOMPARE(client.login("secure@korvo.example", "Second-Factor-1").status, 400);
    QCOMPARE(client.login("secure@korvo.example", "Second-Factor-1", "654321").status, 400);
    QCOMPARE(client.login("secure@korvo.example", "wrong", "123456").status, 400);
    QCOMPARE(client.login("secure@korvo.example", "Second-Factor-1", "123456").status, 200);
}

void TestPlatformProtocol::tokenExpiresWithItsLifetime()
{
    QCOMPARE(client.login("expiring@korvo.example", "Short-Lived-1").status, 200);
    QCOMPARE(client.web("GET", "/api/Projects?pageSize=1").status, 200);
    platform.control("POST", "clock", {{"skewSeconds", 602}});
    QCOMPARE(client.web("GET", "/api/Projects?pageSize=1").status, 401);
}

void TestPlatformProtocol::credentialsNameTheServiceRoot()
{
    QVERIFY(client.serviceUrl == "https://service.korvo.example/korvoservice/");
    WireRequest request = client.webRequest("GET", "/api/Projects/companykorvoservice", "", "application/xml");
    request.host = "web-beta.korvo.example";
    QVERIFY(elementText(client.send(request).body, "Url") == "https://service-beta.korvo.example/korvoservice/");
}

void TestPlatformProtocol::resetsAreRecorded()
{
    const auto reset = [this](const std::string &user) {
        return client.send({"POST", "/api/Account/ResetPassword", {{"Content-Type", "application/xml; charset=UTF-8"}},
                            accountBody("AccountApiController.ResetPasswordBindingModel", {{"UserName", user}}), WEB_HOST}).status;
    };
    QCOMPARE(reset("inspector@korvo.example"), 200);
    QCOMPARE(reset("stranger@korvo.example"), 200);
    const json resets = platform.control("GET", "resets");
    QCOMPARE(resets.size(), std::size_t(2));
    QVERIFY(resets[0]["user"] == "inspector@korvo.example" && resets[0]["known"].get<bool>());
    QVERIFY(resets[1]["user"] == "stranger@korvo.example" && !resets[1]["known"].get<bool>());
}

void TestPlatformProtocol::accountsCanBeAddedWhileRunning()
{
    platform.control("POST", "accounts", {{"email", "new@korvo.example"}, {"password", "pw"}, {"secondFactor", "9"}, {"tokenLifetime", 77}, {"roles", "ADMINISTRATOR"}});
    const json answer = json::parse(client.login("new@korvo.example", "pw", "9").body);
    QCOMPARE(answer["expires_in"].get<int>(), 77);
    QVERIFY(answer["userRoles"] == "ADMINISTRATOR");
}

void TestPlatformProtocol::uploadIsKeptByProject()
{
    const std::string bytes("\0\1\2 bytes", 9);
    QCOMPARE(client.putFile("/Sub folder/ä & b.txt", bytes).status, 200);
    QVERIFY(client.download("/Sub folder/ä & b.txt").body == bytes);
    const std::string listed = client.web("GET", "/api/Projects?pageSize=1000000").body;
    QVERIFY(elementText(listed, "DiskUsage") == "9");
    QVERIFY(elementText(listed, "ProjectDate") == "2026-03-03T14:05:09");
    QVERIFY(elementText(listed, "ProjectName") == "Kanal_2026");
    QVERIFY(client.bucket == "korvo-com0f8fad5b-kanal-2026");
}

void TestPlatformProtocol::uploadBeginIsCheckedStrictly_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("element");
    const Elements good = {{"CompanyId", "korvo-company-01"}, {"CreationDate", "2026-03-03T14:05:09Z"}, {"Email", "inspector@korvo.example"},
                           {"HasPermissionsToOverrideAllProject", "true"}, {"ProjectId", PROJECT_ID}, {"ProjectName", "Kanal_2026"}};
    const auto row = [](const char *name, const Elements &elements, int status, const char *element) {
        QTest::newRow(name) << QByteArray::fromStdString(webBody("InitUploadProcesModel", elements)) << status << QByteArray(element);
    };
    row("as it should be", good, 200, "");
    row("another company", withValue(good, 0, "other"), 403, "CompanyId");
    row("another user", withValue(good, 2, "secure@korvo.example"), 403, "Email");
    row("date without zone", withValue(good, 1, "2026-03-03T14:05:09"), 400, "CreationDate");
    row("date with fraction", withValue(good, 1, "2026-03-03T14:05:09.000Z"), 400, "CreationDate");
    row("impossible date", withValue(good, 1, "2026-02-30T14:05:09Z"), 400, "CreationDate");
    row("permissions withheld", withValue(good, 3, "false"), 400, "HasPermissionsToOverrideAllProject");
    row("permissions in the plural", withName(good, 3, "HasPermissionsToOverrideAllProjects"), 400, "HasPermissionsToOverrideAllProject");
    row("order", swapped(good, 4, 5), 400, "ProjectId");
    row("no name", withValue(good, 5, ""), 400, "ProjectName");
}

void TestPlatformProtocol::uploadBeginIsCheckedStrictly()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, element);
    const WireAnswer answer = client.web("POST", "/api/UploadProject/Init", body.toStdString());
    QTEST(answer.status, "status");
    QCOMPARE(QByteArray::fromStdString(elementText(answer.body, "Element")), element);
}

void TestPlatformProtocol::multipartNeedsAllParts()
{
    const std::string id = uploadId("Video/Sec/a.mp4");
    QCOMPARE(putPart(id, 1, "first ").status, 200);
    QCOMPARE(putPart(id, 3, "third").status, 200);
    const WireAnswer refused = complete(id);
    QCOMPARE(refused.status, 400);
    QVERIFY(refused.body.find("CompleteMultipartUploadResponse") == std::string::npos);
    QVERIFY(objects().empty());
    QCOMPARE(putPart(id, 2, "wrong ").status, 200);
    QCOMPARE(putPart(id, 2, "second ").status, 200);
    QCOMPARE(complete(id).status, 200);
    QVERIFY(client.download("Video/Sec/a.mp4").body == "first second third");
    QCOMPARE(putPart(id, 4, "late").status, 409);
}

void TestPlatformProtocol::multipartAnswersTwice()
{
    const std::string id = uploadId("empty");
    QVERIFY(complete(id).body.find("CompleteMultipartUploadResponse") != std::string::npos);
    QVERIFY(complete(id).body.find("CompleteMultipartUploadResponse") != std::string::npos);
    QVERIFY(client.download("empty").body.empty());
    const std::string other = uploadId("other");
    const auto abort = [&] { return client.service("PUT", "api/multipartupload/abort", serviceBody("AbortMultipartUploadRequest", {{"MultipartUploadId", other}})); };
    QVERIFY(abort().body.find("AbortMultipartUploadResponse") != std::string::npos);
    QVERIFY(abort().body.find("AbortMultipartUploadResponse") != std::string::npos);
    QCOMPARE(complete(other).status, 409);
}

void TestPlatformProtocol::listingFollowsPrefixAndDelimiter()
{
    for (const char *key : {"/project.xml", "Picture/Sec/a.jpg", "Picture/Sec/b.jpg", "Picture/Nod/c.jpg"})
        QCOMPARE(client.putFile(key, "x").status, 200);
    const auto list = [this](const std::vector<std::string> &prefixes, const std::string &delimiter) {
        return client.service("POST", "api/bucket/listoffilesfromlocations", listingBody(client.bucket, prefixes, delimiter)).body;
    };
    // Four files, and the folders Picture, Picture/Nod and Picture/Sec.
    QVERIFY(elementText(list({}, ""), "Count") == "7");
    QVERIFY(elementText(list({"Picture/Nod/"}, "/"), "Key") == "Picture/Nod/c.jpg");
    QVERIFY(elementText(list({"Picture/"}, "/"), "Count") == "2");
    QVERIFY(elementText(list({"Picture/"}, "/"), "Type") == "0");
    QVERIFY(elementText(list({"Nothing"}, ""), "Count") == "0");
}

void TestPlatformProtocol::deleteAndSpaceTakeFolders()
{
    QCOMPARE(client.putFile("a/1", "xx").status, 200);
    QCOMPARE(client.putFile("a/2", "yyy").status, 200);
    QCOMPARE(client.putFile("ab", "z").status, 200);
    const auto ask = [this](const char *path, const char *root, const std::string &relative) {
        return client.service("POST", path, serviceBody(root, {{"BucketName", client.bucket}, {"RelativePath", relative}})).body;
    };
    QVERIFY(elementText(ask("api/bucket/space", "GetUsedSpaceRequest", ""), "UsedSpace") == "6");
    QVERIFY(elementText(ask("api/bucket/space", "GetUsedSpaceRequest", "a"), "UsedSpace") == "5");
    QVERIFY(elementText(ask("api/bucket/exists", "ObjectExistsRequest", "a"), "Exist") == "true");
    QVERIFY(elementText(ask("api/bucket/exists", "ObjectExistsRequest", "b"), "Exist") == "false");
    QVERIFY(elementText(ask("api/bucket/delete", "DeleteObjectRequest", "a"), "DeletedFilesSize") == "5");
    QVERIFY(elementText(ask("api/bucket/space", "GetUsedSpaceRequest", ""), "UsedSpace") == "1");
    const std::string cleanup = serviceBody("CleanupVersionFilesRequest", {{"BucketName", client.bucket}, {"RelativePath", ""}, {"KeepNewestVersion", "2"}});
    QVERIFY(elementText(client.service("POST", "api/bucket/cleanup", cleanup).body, "Success") == "true");
}

void TestPlatformProtocol::bucketsBelongToACompany()
{
    platform.control("POST", "projects", {{"projectId", "p"}, {"name", "n"}, {"companyId", "other-company"}, {"objects", {{{"key", "k"}, {"text", "t"}}}}});
    const std::string own = client.bucket;
    client.bucket = "other-compn";
    QCOMPARE(client.putFile("k", "x").status, 403);
    QCOMPARE(client.download("k").status, 403);
    client.bucket = own;
}

void TestPlatformProtocol::transcodingLeavesAWebCopy()
{
    QCOMPARE(client.putFile("Video/Sec/a.mp4", "moving").status, 200);
    const std::string body = serviceBody("PutJobForEachPresetRequest", {{"BucketName", client.bucket}, {"FileKey", "Video/Sec/a.mp4"}, {"OutputKeyWithoutExtension", "Video/Sec/a"}});
    QCOMPARE(client.service("PUT", "api/job/putforeachpresets", body).status, 200);
    QVERIFY(client.download("Video/Sec/web/a.mp4").body == "moving");
    platform.control("POST", "transcoding", {{"webCopies", "lower"}});
    QCOMPARE(client.service("PUT", "api/job/putforeachpresets", body).status, 200);
    QVERIFY(client.download("video/sec/web/a.mp4").body == "moving");
    platform.control("POST", "transcoding", {{"webCopies", "same"}});
    QVERIFY(platform.control("GET", "state")["transcodings"].back()["state"] == "finished");
}

void TestPlatformProtocol::mediaLinksDownload()
{
    QCOMPARE(client.putFile("Picture/Sec/a b & ü.jpg", "picture").status, 200);
    const std::string all = client.web("GET", "/api/Projects/" + PROJECT_ID + "/Quickview/Media/Download").body;
    QVERIFY(elementText(all, "name") == "a b &amp; ü.jpg");
    QVERIFY(elementText(all, "type") == "picture");
    const std::string url = elementText(all, "url");
    QVERIFY(url.find("https://service.korvo.example/") == 0);
    const std::string target = url.substr(std::string("https://service.korvo.example").size());
    QVERIFY(client.send({"GET", target, {}, "", SERVICE_HOST}).body == "picture");
    QCOMPARE(client.send({"GET", target + "0", {}, "", SERVICE_HOST}).status, 403);
    const std::string one = client.web("GET", "/api/Projects/" + PROJECT_ID + "/Quickview/Media/a%20b%20&%20%C3%BC.jpg/Download").body;
    QVERIFY(elementText(one, "url") == url);
    QCOMPARE(client.web("GET", "/api/Projects/" + PROJECT_ID + "/Quickview/Media/none.jpg/Download").status, 404);
}

void TestPlatformProtocol::quickviewDataIsServed()
{
    QCOMPARE(client.putFile("Video/Sec/v.mp4", "v").status, 200);
    QCOMPARE(client.putFile("Picture/Nod/n.jpg", "n").status, 200);
    const std::string root = "/api/Projects/" + PROJECT_ID + "/Quickview";
    QVERIFY(elementText(client.web("GET", root).body, "ProjectName") == "Kanal_2026");
    QVERIFY(elementText(client.web("GET", root + "/Surveys").body, "Media") == "Video/Sec/v.mp4");
    QVERIFY(elementText(client.web("GET", root + "/Manholes").body, "Media") == "Picture/Nod/n.jpg");
    QCOMPARE(client.web("GET", "/api/Projects/unknown/Quickview").status, 404);
}

void TestPlatformProtocol::statusesFollowTheUpload()
{
    const auto status = [this] {
        const std::string body = json({{"Projects", {PROJECT_ID, "unknown"}}}).dump(4);
        return json::parse(client.web("POST", "/api/UploadProject/Statuses", body, "application/json; charset=UTF-8").body);
    };
    QVERIFY(status() == json({{{"status", 1}, {"projectId", PROJECT_ID}}, {{"status", 0}, {"projectId", "unknown"}}}));
    const std::string finish = webBody("UploadProcesMessageModel", {{"ImportType", "Quickview"}, {"ProjectId", PROJECT_ID}});
    QCOMPARE(client.web("POST", "/api/UploadProject/Uploaded", finish).status, 200);
    QCOMPARE(status()[0]["status"].get<int>(), 2);
    QCOMPARE(client.web("POST", "/api/UploadProject/Uploaded", webBody("UploadProcesMessageModel", {{"ImportType", "Other"}, {"ProjectId", PROJECT_ID}})).status, 400);
}

void TestPlatformProtocol::cancelledProjectIsNotListed()
{
    const std::string id = "cancelled-1";
    client.web("POST", "/api/UploadProject/Init",
               webBody("InitUploadProcesModel", {{"CompanyId", "korvo-company-01"}, {"CreationDate", "2026-03-03T14:05:09Z"}, {"Email", "inspector@korvo.example"},
                                                 {"HasPermissionsToOverrideAllProject", "true"}, {"ProjectId", id}, {"ProjectName", "gone"}}));
    QVERIFY(client.web("GET", "/api/Projects?pageSize=1000000").body.find(id) != std::string::npos);
    QCOMPARE(client.web("POST", "/api/UploadProject/Cancel", webBody("UploadProcesMessageModel", {{"ProjectId", id}})).status, 200);
    QVERIFY(client.web("GET", "/api/Projects?pageSize=1000000").body.find(id) == std::string::npos);
    QCOMPARE(client.web("POST", "/api/UploadProject/Cancel", webBody("UploadProcesMessageModel", {{"ProjectId", "never"}})).status, 404);
}

void TestPlatformProtocol::hostileProjectsCanBeMade()
{
    const json made = platform.control("POST", "projects", {{"projectId", "hostile-1"}, {"name", "Hostile"},
                                                            {"objects", {{{"key", "../../x"}, {"text", "up"}}, {{"key", "C:\\y"}, {"size", 300}}}}});
    const std::string bucket = made["bucket"];
    const std::string listed = client.service("POST", "api/bucket/listoffilesfromlocations", listingBody(bucket)).body;
    QVERIFY(listed.find("<Key>../../x</Key>") != std::string::npos);
    QVERIFY(listed.find("<Key>C:\\y</Key>") != std::string::npos);
}

void TestPlatformProtocol::journalHoldsNoSecrets()
{
    const SignedLines lines = client.linesFor("POST", SPACE);
    QCOMPARE(space(lines, lines).status, 200);
    client.login("secure@korvo.example", "Second-Factor-1", "123456");
    const std::string link = elementText(client.web("GET", "/api/Projects/" + PROJECT_ID + "/Quickview/Media/Download").body, "url");
    QFile file(platform.dataFolder() + QStringLiteral("/journal.jsonl"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QVERIFY(text.contains("api/bucket/space"));
    for (const std::string &secret : {std::string("Camera 12"), std::string("Second-Factor-1"), std::string("123456"), client.token, client.secretKey,
                                      client.signatureOf(lines), lines.token, std::string("ticket=")})
        QVERIFY2(!secret.empty() && !text.contains(secret.c_str()), secret.c_str());
}

void TestPlatformProtocol::journalCanBeReadOn()
{
    const json before = platform.control("GET", "journal");
    const int last = before.back()["number"];
    client.web("GET", "/api/Projects?pageSize=1");
    const json after = platform.control("GET", "journal?since=" + std::to_string(last));
    QCOMPARE(after.size(), std::size_t(1));
    QVERIFY(after[0]["route"] == "api/Projects" && after[0]["method"] == "GET" && after[0]["user"] == "inspector@korvo.example");
    QCOMPARE(after[0]["status"].get<int>(), 200);
}

void TestPlatformProtocol::requestBrokenOffIsNoRefusal()
{
    const int refusals = platform.control("GET", "refusals")["count"];
    const int last = platform.control("GET", "journal").back()["number"];
    const std::string bytes = client.putFileRequest("half", std::string(100000, 'x')).bytes();
    client.freshConnection(SERVICE_HOST)->send(bytes.substr(0, bytes.size() / 2));
    const auto entries = [&] { return platform.control("GET", "journal?since=" + std::to_string(last)); };
    QTRY_COMPARE(entries().size(), std::size_t(1));
    QVERIFY(entries()[0]["brokenOff"].get<bool>());
    QCOMPARE(platform.control("GET", "refusals")["count"].get<int>(), refusals);
    QVERIFY(objects().empty());
}

void TestPlatformProtocol::methodsAreFixed()
{
    QCOMPARE(client.web("POST", "/api/Projects?pageSize=1").status, 405);
    QCOMPARE(client.service("POST", "api/bucket", "x").status, 405);
    QCOMPARE(client.service("GET", "api/nothing").status, 404);
    QCOMPARE(client.web("GET", "/api/nothing").status, 404);
}

void TestPlatformProtocol::clientThatAsksMayGoOn()
{
    WireRequest request = client.putFileRequest("asked first", "content");
    request.headers.push_back({"Expect", "100-continue"});
    request.headers.push_back({"Content-Length", std::to_string(request.body.size())});
    const std::string body = std::exchange(request.body, {});
    const auto connection = client.freshConnection(SERVICE_HOST);
    connection->send(request.bytes());
    const std::string goOn = "HTTP/1.1 100 Continue\r\n\r\n";
    QVERIFY(connection->receive(5000, goOn.size()).raw == goOn);
    connection->send(body);
    QCOMPARE(connection->receive().status, 200);
}

void TestPlatformProtocol::pageShowsItself()
{
    const WireAnswer answer = WireClient::direct(platform.port(), platform.authority())->exchange({"GET", "/", {}, "", "localhost"});
    QCOMPARE(answer.status, 200);
    QVERIFY(answer.headers.at("content-type").find("text/html") == 0);
    for (const char *id : {"accounts", "projects", "buckets", "uploads", "transcodings", "faults", "journal"})
        QVERIFY2(answer.body.find(std::string("id=\"") + id + "\"") != std::string::npos, id);
}

void TestPlatformProtocol::otherSitesMayNotControl()
{
    const auto status = [this](const std::string &origin) {
        const auto connection = WireClient::direct(platform.port(), platform.authority());
        return connection->exchange({"POST", "/control/faults", {{"Origin", origin}}, "[]", "localhost"}).status;
    };
    QCOMPARE(status("https://elsewhere.example"), 403);
    QCOMPARE(status("https://localhost"), 200);
}

QTEST_GUILESS_MAIN(TestPlatformProtocol)
#include "tst_PlatformProtocol.moc"
