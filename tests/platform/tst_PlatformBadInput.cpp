#include "PlatformClient.h"

#include <QtCore/QDirIterator>
#include <QtTest/QtTest>

#include <random>

using namespace PlatformTest;
using nlohmann::json;

namespace {

constexpr int FUZZED_REQUESTS = 1500;
constexpr int FUZZED_BODIES = 1500;
constexpr int FUZZED_CONNECTS = 300;
constexpr int SHORT_WAIT = 30;

using Random = std::mt19937;

std::size_t below(Random &random, std::size_t limit)
{
    return limit == 0 ? 0 : random() % limit;
}

std::string randomBytes(Random &random, std::size_t count)
{
    std::string bytes(count, '\0');
    for (char &c : bytes)
        c = static_cast<char>(random());
    return bytes;
}

/// Changes a text in one to eight places: bits, cuts, insertions, repetitions, and pieces that parsers stumble over.
std::string mutated(std::string text, Random &random)
{
    static const std::vector<std::string> NASTY = {"\r\n", "\n", "\0", "%", "%00", "%zz", "../", "//", "<", ">", "<![CDATA[", "<!--", "&#x0;", "]]>",
                                                   "Content-Length: 99999999999999999999\r\n", "Content-Length: -1\r\n", "Transfer-Encoding: chunked\r\n",
                                                   "Range: bytes=5-2,-,9-\r\n", "Expect: 100-continue\r\n", "=", "&", "\xff\xfe", "{", "[", "\""};
    for (std::size_t i = 0, count = 1 + below(random, 8); i < count; ++i) {
        const std::size_t at = below(random, text.size() + 1);
        switch (below(random, 5)) {
        case 0:
            if (at < text.size())
                text[at] = static_cast<char>(text[at] ^ (1 << below(random, 8)));
            break;
        case 1: text.erase(at, below(random, 40)); break;
        case 2: text.insert(at, randomBytes(random, below(random, 20))); break;
        case 3: text.insert(at, NASTY[below(random, NASTY.size())]); break;
        case 4: text.insert(at, text.substr(below(random, text.size() + 1), below(random, 200))); break;
        }
    }
    return text;
}

} // namespace

class TestPlatformBadInput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void survivesMalformedRequests();
    void survivesMalformedSignedBodies();
    void survivesMalformedConnects();
    void survivesBytesThatAreNoTls();
    void survivesMalformedControlRequests();
    void keysNeverLeaveTheDataFolder_data();
    void keysNeverLeaveTheDataFolder();
    void bodiesOver64MiBAreRefused();
    void bodiesWithoutLengthAreRefused();
    void endlessHeadersAreCutOff();
    void cleanupTestCase();

private:
    bool answersStill();

    PlatformProcess platform;
    PlatformClient client{platform};
};

void TestPlatformBadInput::initTestCase()
{
    QVERIFY(platform.start());
    QVERIFY(client.prepare());
}

bool TestPlatformBadInput::answersStill()
{
    return platform.isRunning() && platform.control("GET", "state").is_object();
}

void TestPlatformBadInput::survivesMalformedRequests()
{
    Random random(1);
    const std::string body = serviceBody("PutFileRequest", {{"BucketName", client.bucket}, {"InputFileArray", "YWJj"}, {"OutputFilePath", "k"}, {"ProjectFolderName", ""}});
    const std::vector<std::string> seeds = {
        client.putFileRequest("k", "abc").bytes(), client.downloadRequest("k").bytes(),
        client.webRequest("GET", "/api/Projects?pageSize=1", "", "application/xml").bytes(),
        client.webRequest("POST", "/api/UploadProject/Statuses", "{\"Projects\": [\"a\"]}", "application/json").bytes(),
        WireRequest{"PUT", "/Token", {{"Content-Type", "application/x-www-form-urlencoded"}}, "grant_type=password&username=a%40b&password=c", WEB_HOST}.bytes(),
        WireRequest{"GET", "/", {}, "", "localhost"}.bytes()};
    for (int i = 0; i < FUZZED_REQUESTS; ++i) {
        const auto connection = WireClient::direct(platform.port(), platform.authority());
        connection->send(i % 10 == 0 ? randomBytes(random, below(random, 3000)) : mutated(seeds[below(random, seeds.size())], random));
        connection->receive(SHORT_WAIT);
    }
    QVERIFY(answersStill());
}

void TestPlatformBadInput::survivesMalformedSignedBodies()
{
    Random random(2);
    struct Seed
    {
        const char *method;
        const char *path;
        std::string body;
    };
    const std::string array = "xmlns:d2p1=\"http://schemas.microsoft.com/2003/10/Serialization/Arrays\"";
    const std::vector<Seed> seeds = {
        {"PUT", "api/bucket", serviceBody("BucketRequest", {{"BucketName", client.bucket}})},
        {"PUT", "api/bucket/putfile", serviceBody("PutFileRequest", {{"BucketName", client.bucket}, {"InputFileArray", "YWJj"}, {"OutputFilePath", "k"}, {"ProjectFolderName", ""}})},
        {"POST", "api/bucket/listoffilesfromlocations", listingBody(client.bucket, {"a", "b"}, "/")},
        {"POST", "api/bucket/delete", serviceBody("DeleteObjectRequest", {{"BucketName", client.bucket}, {"RelativePath", "k"}})},
        {"PUT", "api/multipartupload/upload", serviceBody("PutMultipartUploadRequest", {{"InputFilePartArray", "YQ=="}, {"MultipartUploadId", "x"}, {"PartNumber", "1"}})},
        {"PUT", "api/job/putforeachpresets", serviceBody("PutJobForEachPresetRequest", {{"BucketName", client.bucket}, {"FileKey", "k"}, {"OutputKeyWithoutExtension", "k"}})}};
    for (int i = 0; i < FUZZED_BODIES; ++i) {
        const Seed &seed = seeds[below(random, seeds.size())];
        const WireAnswer answer = client.service(seed.method, seed.path, mutated(seed.body, random));
        QVERIFY2(answer.status >= 200 && answer.status < 500, answer.raw.c_str());
    }
    QVERIFY(answersStill());
}

void TestPlatformBadInput::survivesMalformedConnects()
{
    Random random(3);
    const std::string seed = "CONNECT web.korvo.example:443 HTTP/1.1\r\nHost: web.korvo.example:443\r\n\r\n";
    for (int i = 0; i < FUZZED_CONNECTS; ++i)
        plainExchange(platform.proxyPort(), mutated(seed, random), SHORT_WAIT);
    QVERIFY(plainExchange(platform.proxyPort(), "GET http://web.korvo.example/ HTTP/1.1\r\n\r\n").find("HTTP/1.1 405") == 0);
    QVERIFY(answersStill());
}

void TestPlatformBadInput::survivesBytesThatAreNoTls()
{
    Random random(4);
    for (int i = 0; i < 100; ++i)
        plainExchange(platform.port(), i % 2 ? "GET / HTTP/1.1\r\n\r\n" : randomBytes(random, below(random, 2000)), SHORT_WAIT);
    QVERIFY(answersStill());
}

void TestPlatformBadInput::survivesMalformedControlRequests()
{
    Random random(5);
    const std::vector<std::pair<std::string, std::string>> seeds = {
        {"faults", R"({"kind": "delay", "nth": 100000, "route": "nowhere"})"},
        {"faults", R"({"remove": 12})"},
        {"clock", R"({"skewSeconds": 0})"},
        {"accounts", R"({"email": "a@b", "password": "c", "tokenLifetime": 5})"},
        {"transcoding", R"({"webCopies": "same"})"},
        {"projects", R"({"projectId": "p", "name": "n", "objects": [{"key": "k", "text": "t"}, {"key": "l", "size": 10}, {"key": "m", "base64": "YQ=="}]})"}};
    for (int i = 0; i < 300; ++i) {
        const auto &[path, body] = seeds[below(random, seeds.size())];
        const WireRequest request{"POST", "/control/" + path, {}, mutated(body, random)};
        WireClient::direct(platform.port(), platform.authority())->exchange(request, 5000);
    }
    platform.control("POST", "clock", {{"skewSeconds", 0}});
    platform.clearFaults();
    QVERIFY(answersStill());
}

void TestPlatformBadInput::keysNeverLeaveTheDataFolder_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("upwards") << QByteArray("../../../escaped");
    QTest::newRow("absolute") << QByteArray("/tmp/escaped");
    QTest::newRow("hidden upwards") << QByteArray("Picture/Sec/../../../../escaped");
    QTest::newRow("backslashes") << QByteArray("..\\..\\escaped");
    QTest::newRow("encoded") << QByteArray("%2e%2e/%2e%2e/escaped");
    QTest::newRow("only dots") << QByteArray("..");
    QTest::newRow("dot and slash") << QByteArray("./escaped/");
    QTest::newRow("long") << QByteArray(3000, 'x');
    QTest::newRow("umlauts, blanks and signs") << QByteArray("Straße & Kanal + 100 %/Ä #1?.jpg");
}

void TestPlatformBadInput::keysNeverLeaveTheDataFolder()
{
    QFETCH(QByteArray, key);
    const std::string text = key.toStdString();
    QCOMPARE(client.putFile(text, "content of " + text).status, 200);
    const WireAnswer answer = client.download(text);
    QCOMPARE(answer.status, 200);
    QVERIFY(answer.body == "content of " + text);
    QVERIFY(client.service("POST", "api/bucket/listoffilesfromlocations", listingBody(client.bucket)).body.find("<ObjectModel>") != std::string::npos);
    for (QDirIterator files(platform.outerFolder(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories); files.hasNext();)
        QVERIFY2(!files.next().contains(QStringLiteral("escaped")), qPrintable(files.filePath()));
    QVERIFY(!QFile::exists(QStringLiteral("/tmp/escaped")));
}

void TestPlatformBadInput::bodiesOver64MiBAreRefused()
{
    constexpr std::size_t LIMIT = 64 * 1024 * 1024;
    const int refusals = platform.control("GET", "refusals")["count"];
    QCOMPARE(client.service("PUT", "api/bucket/putfile", std::string(LIMIT + 1, 'x')).status, 413);
    QCOMPARE(platform.control("GET", "refusals")["count"].get<int>(), refusals + 1);
    QCOMPARE(platform.control("GET", "refusals")["last"]["status"].get<int>(), 413);
    QCOMPARE(client.service("PUT", "api/bucket/putfile", std::string(LIMIT, 'x')).status, 400);
    const WireRequest announced{"PUT", "/korvoservice/api/bucket", {{"Content-Length", "4000000000"}}, "", SERVICE_HOST};
    QCOMPARE(client.freshConnection(SERVICE_HOST)->exchange(announced).status, 413);
}

void TestPlatformBadInput::bodiesWithoutLengthAreRefused()
{
    const WireRequest chunked{"PUT", "/korvoservice/api/bucket", {{"Transfer-Encoding", "chunked"}}, "3\r\nabc\r\n0\r\n\r\n", SERVICE_HOST};
    QCOMPARE(client.freshConnection(SERVICE_HOST)->exchange(chunked).status, 411);
    const auto connection = client.freshConnection(SERVICE_HOST);
    connection->send("PUT /korvoservice/api/bucket HTTP/1.1\r\nHost: x\r\n\r\n");
    QCOMPARE(connection->receive().status, 411);
}

void TestPlatformBadInput::endlessHeadersAreCutOff()
{
    const auto connection = client.freshConnection(WEB_HOST);
    connection->send("GET / HTTP/1.1\r\n");
    const std::string line = "X-Filler: " + std::string(1000, 'x') + "\r\n";
    bool accepted = true;
    for (int i = 0; i < 20000 && accepted; ++i)
        accepted = connection->send(line);
    QVERIFY(!accepted || connection->receive().status == 400);
    QVERIFY(answersStill());
}

void TestPlatformBadInput::cleanupTestCase()
{
    QCOMPARE(platform.terminate(), 0);
}

QTEST_APPLESS_MAIN(TestPlatformBadInput)
#include "tst_PlatformBadInput.moc"
