#include "PlatformClient.h"

#include <QtCore/QFile>
#include <QtTest/QtTest>

using namespace PlatformTest;
using nlohmann::json;

namespace {

const std::string KEY = "Picture/Sec/a.jpg";
constexpr std::size_t BYTES = 20000;
constexpr int SHORT_WAIT = 700;

std::string pattern(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + (i >> 8));
    return bytes;
}

} // namespace

/// Each kind of fault, seen on the wire by a client that looks at single bytes and at how a connection ends.
/// The name of each test function is "kind" followed by the fault's name in capitals.
class TestPlatformFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void kindStatus();
    void kindDelay();
    void kindNoAnswer();
    void kindCloseWithoutAnswer();
    void kindResetInRequest();
    void kindStallInRequest();
    void kindResetBeforeAnswer();
    void kindResetInHeaders();
    void kindResetAfterHeaders();
    void kindResetInBody();
    void kindResetAfterBody();
    void kindCutBody();
    void kindStallInBody();
    void kindContentLengthTooLong();
    void kindContentLengthTooShort();
    void kindNoContentLength();
    void kindGarbage();
    void kindEmptyBody();
    void kindHugeBody();
    void kindTruncatedBody();
    void kindCorruptBody();
    void kindTrickle();
    void kindRedirect();
    void kindExpiredToken();
    void kindWrongClock();
    void kindDiskFull();
    void kindBadStatusLine();
    void kindCertificateWrongHost();
    void kindCertificateExpired();
    void kindCertificateSelfSigned();
    void kindHandshakeReset();
    void kindHandshakeStall();
    void kindTunnelStatus();
    void kindTunnelLatency();
    void kindTunnelBandwidth();
    void kindTunnelCut();
    void kindTunnelReset();
    void kindTunnelStall();

    void everyKindHasATestAndARow();
    void onlyTheChosenRequestsAreHit();
    void strikesOnDirectConnectionsToo();
    void tunnelThatWasLeftTakesNoFault();
    void workIsDoneOrLeftAsTheFaultSays();
    void faultsCanBeGivenAtStart();
    void isToldInTheJournal();
    void nonsenseIsRefused();

private:
    WireAnswer downloadUnder(json fault, int milliseconds = 10000);
    bool objectExists(const std::string &key);

    PlatformProcess platform;
    PlatformClient client{platform};
    const std::string bytes = pattern(BYTES);
};

void TestPlatformFaults::initTestCase()
{
    QVERIFY(platform.start());
    QVERIFY(client.prepare());
    QCOMPARE(client.putFile(KEY, bytes).status, 200);
}

void TestPlatformFaults::cleanup()
{
    platform.clearFaults();
    client.disconnect();
}

WireAnswer TestPlatformFaults::downloadUnder(json fault, int milliseconds)
{
    fault["route"] = "webdav/*";
    platform.setFault(fault);
    return client.download(KEY, milliseconds);
}

bool TestPlatformFaults::objectExists(const std::string &key)
{
    const WireAnswer answer = client.service("POST", "api/bucket/exists",
                                             serviceBody("ObjectExistsRequest", {{"BucketName", client.bucket}, {"RelativePath", key}}));
    return elementText(answer.body, "Exist") == "true";
}

void TestPlatformFaults::kindStatus()
{
    const WireAnswer answer = downloadUnder({{"kind", "status"}, {"status", 418}, {"body", "teapot"}, {"contentType", "text/x-pot"}});
    QCOMPARE(answer.status, 418);
    QVERIFY(answer.body == "teapot");
    QVERIFY(answer.headers.at("content-type") == "text/x-pot");
    QCOMPARE(client.download(KEY).status, 200);
}

void TestPlatformFaults::kindDelay()
{
    const WireAnswer answer = downloadUnder({{"kind", "delay"}, {"delayMs", 400}});
    QVERIFY(answer.milliseconds >= 400);
    QVERIFY(answer.body == bytes);
}

void TestPlatformFaults::kindNoAnswer()
{
    const WireAnswer answer = downloadUnder({{"kind", "noAnswer"}}, SHORT_WAIT);
    QVERIFY(answer.ending == Ending::TimedOut);
    QVERIFY(answer.raw.empty());
}

void TestPlatformFaults::kindCloseWithoutAnswer()
{
    const WireAnswer answer = downloadUnder({{"kind", "closeWithoutAnswer"}});
    QVERIFY(answer.ending == Ending::Closed);
    QVERIFY(answer.raw.empty());
}

void TestPlatformFaults::kindResetInRequest()
{
    platform.setFault({{"kind", "resetInRequest"}, {"route", "api/bucket/putfile"}, {"bytes", 300000}});
    const auto connection = client.freshConnection(SERVICE_HOST);
    connection->send(client.putFileRequest("half", pattern(8000000)).bytes());
    const WireAnswer answer = connection->receive();
    QVERIFY(answer.ending == Ending::Reset);
    QVERIFY(answer.raw.empty());
    QVERIFY(!objectExists("half"));
}

void TestPlatformFaults::kindStallInRequest()
{
    platform.setFault({{"kind", "stallInRequest"}, {"route", "api/bucket/putfile"}, {"bytes", 100}});
    const auto connection = client.freshConnection(SERVICE_HOST);
    connection->send(client.putFileRequest("half", pattern(1000)).bytes());
    const WireAnswer answer = connection->receive(SHORT_WAIT);
    QVERIFY(answer.ending == Ending::TimedOut);
    QVERIFY(answer.raw.empty());
    QVERIFY(!objectExists("half"));
}

void TestPlatformFaults::kindResetBeforeAnswer()
{
    const WireAnswer answer = downloadUnder({{"kind", "resetBeforeAnswer"}});
    QVERIFY(answer.ending == Ending::Reset);
    QVERIFY(answer.raw.empty());
}

void TestPlatformFaults::kindResetInHeaders()
{
    const WireAnswer answer = downloadUnder({{"kind", "resetInHeaders"}, {"bytes", 12}});
    QVERIFY(answer.ending == Ending::Reset);
    QVERIFY(answer.raw == "HTTP/1.1 200");
}

void TestPlatformFaults::kindResetAfterHeaders()
{
    const WireAnswer answer = downloadUnder({{"kind", "resetAfterHeaders"}});
    QVERIFY(answer.ending == Ending::Reset);
    QCOMPARE(answer.announced, std::int64_t(BYTES));
    QVERIFY(answer.body.empty());
}

void TestPlatformFaults::kindResetInBody()
{
    const WireAnswer answer = downloadUnder({{"kind", "resetInBody"}, {"bytes", 7777}});
    QVERIFY(answer.ending == Ending::Reset);
    QCOMPARE(answer.announced, std::int64_t(BYTES));
    QVERIFY(answer.body == bytes.substr(0, 7777));
}

void TestPlatformFaults::kindResetAfterBody()
{
    platform.setFault({{"kind", "resetAfterBody"}});
    const auto connection = client.freshConnection(SERVICE_HOST);
    const WireAnswer answer = connection->exchange(client.downloadRequest(KEY));
    QVERIFY(answer.body == bytes);
    QVERIFY(connection->receive(SHORT_WAIT).ending == Ending::Reset);
}

void TestPlatformFaults::kindCutBody()
{
    const WireAnswer answer = downloadUnder({{"kind", "cutBody"}});
    QVERIFY(answer.ending == Ending::Closed);
    QCOMPARE(answer.announced, std::int64_t(BYTES));
    QVERIFY(answer.body == bytes.substr(0, BYTES / 2));
}

void TestPlatformFaults::kindStallInBody()
{
    const WireAnswer answer = downloadUnder({{"kind", "stallInBody"}, {"bytes", 1000}}, SHORT_WAIT);
    QVERIFY(answer.ending == Ending::TimedOut);
    QVERIFY(answer.body == bytes.substr(0, 1000));
}

void TestPlatformFaults::kindContentLengthTooLong()
{
    const WireAnswer answer = downloadUnder({{"kind", "contentLengthTooLong"}, {"bytes", 5}}, SHORT_WAIT);
    QVERIFY(answer.ending == Ending::TimedOut);
    QCOMPARE(answer.announced, std::int64_t(BYTES + 5));
    QVERIFY(answer.body == bytes);
}

void TestPlatformFaults::kindContentLengthTooShort()
{
    platform.setFault({{"kind", "contentLengthTooShort"}, {"bytes", 5}});
    const auto connection = client.freshConnection(SERVICE_HOST);
    const WireAnswer answer = connection->exchange(client.downloadRequest(KEY));
    QCOMPARE(answer.announced, std::int64_t(BYTES - 5));
    const WireAnswer rest = connection->receive();
    QVERIFY(answer.body + rest.raw == bytes);
    QVERIFY(answer.raw.size() == answer.head.size() + BYTES || rest.ending == Ending::Closed);
}

void TestPlatformFaults::kindNoContentLength()
{
    const WireAnswer answer = downloadUnder({{"kind", "noContentLength"}});
    QCOMPARE(answer.announced, std::int64_t(-1));
    QVERIFY(answer.ending == Ending::Closed);
    QVERIFY(answer.body == bytes);
}

void TestPlatformFaults::kindGarbage()
{
    platform.setFault({{"kind", "garbage"}, {"route", "api/Projects"}});
    const WireAnswer answer = client.web("GET", "/api/Projects?pageSize=1000000");
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.body.size(), std::size_t(200));
    QVERIFY(answer.body.find_first_of("<{[\"") == std::string::npos);
}

void TestPlatformFaults::kindEmptyBody()
{
    const WireAnswer answer = downloadUnder({{"kind", "emptyBody"}});
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.announced, std::int64_t(0));
}

void TestPlatformFaults::kindHugeBody()
{
    const WireAnswer answer = downloadUnder({{"kind", "hugeBody"}, {"bytes", 3000000}});
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.body.size(), std::size_t(3000000));
}

void TestPlatformFaults::kindTruncatedBody()
{
    const WireAnswer answer = downloadUnder({{"kind", "truncatedBody"}, {"bytes", 100}});
    QVERIFY(answer.ending == Ending::Complete);
    QVERIFY(answer.body == bytes.substr(0, 100));
}

void TestPlatformFaults::kindCorruptBody()
{
    const WireAnswer answer = downloadUnder({{"kind", "corruptBody"}, {"bytes", 4321}});
    std::string expected = bytes;
    expected[4321] = static_cast<char>(expected[4321] ^ 1);
    QVERIFY(answer.body == expected);
}

void TestPlatformFaults::kindTrickle()
{
    const WireAnswer answer = downloadUnder({{"kind", "trickle"}, {"bytesPerSecond", 40000}});
    QVERIFY(answer.milliseconds >= 400);
    QVERIFY(answer.body == bytes);
}

void TestPlatformFaults::kindRedirect()
{
    const WireAnswer answer = downloadUnder({{"kind", "redirect"}, {"status", 307}, {"location", "https://web.korvo.example/x"}});
    QCOMPARE(answer.status, 307);
    QVERIFY(answer.headers.at("location") == "https://web.korvo.example/x");
}

void TestPlatformFaults::kindExpiredToken()
{
    platform.setFault({{"kind", "expiredToken"}});
    QCOMPARE(client.web("GET", "/api/Projects?pageSize=1").status, 401);
    QCOMPARE(client.web("GET", "/api/Projects?pageSize=1").status, 401);
    QCOMPARE(client.login().status, 200);
    QCOMPARE(client.web("GET", "/api/Projects?pageSize=1").status, 200);
}

void TestPlatformFaults::kindWrongClock()
{
    platform.setFault({{"kind", "wrongClock"}, {"route", "webdav/*"}, {"seconds", 1000}});
    QCOMPARE(client.download(KEY).status, 401);
    QCOMPARE(client.download(KEY).status, 200);
}

void TestPlatformFaults::kindDiskFull()
{
    platform.setFault({{"kind", "diskFull"}, {"route", "api/bucket/putfile"}});
    QCOMPARE(client.putFile("full", bytes).status, 507);
    QVERIFY(!objectExists("full"));
    QCOMPARE(client.putFile("full", bytes).status, 200);
    QVERIFY(objectExists("full"));
}

void TestPlatformFaults::kindBadStatusLine()
{
    const WireAnswer answer = downloadUnder({{"kind", "badStatusLine"}});
    QCOMPARE(answer.status, 0);
    QVERIFY(answer.ending == Ending::Closed);
    QVERIFY(!answer.raw.empty());
}

void TestPlatformFaults::kindCertificateWrongHost()
{
    platform.setFault({{"kind", "certificateWrongHost"}, {"host", SERVICE_HOST}});
    QVERIFY(client.freshConnection(WEB_HOST)->isConnected());
    QVERIFY(client.freshConnection(SERVICE_HOST)->failure() == "hostname mismatch");
    QVERIFY(client.freshConnection(SERVICE_HOST)->isConnected());
}

void TestPlatformFaults::kindCertificateExpired()
{
    platform.setFault({{"kind", "certificateExpired"}, {"host", WEB_HOST}});
    QVERIFY(client.freshConnection(WEB_HOST)->failure() == "certificate has expired");
}

void TestPlatformFaults::kindCertificateSelfSigned()
{
    platform.setFault({{"kind", "certificateSelfSigned"}, {"host", WEB_HOST}});
    QVERIFY(client.freshConnection(WEB_HOST)->failure().find("self-signed") == 0);
}

void TestPlatformFaults::kindHandshakeReset()
{
    platform.setFault({{"kind", "handshakeReset"}, {"host", WEB_HOST}});
    const auto connection = client.freshConnection(WEB_HOST);
    QVERIFY(!connection->isConnected());
    QVERIFY(connection->wasReset());
}

void TestPlatformFaults::kindHandshakeStall()
{
    platform.setFault({{"kind", "handshakeStall"}, {"host", WEB_HOST}});
    const auto connection = client.freshConnection(WEB_HOST);
    QVERIFY(!connection->isConnected());
    QVERIFY(connection->failure() == "no handshake");
}

void TestPlatformFaults::kindTunnelStatus()
{
    platform.setFault({{"kind", "tunnelStatus"}, {"status", 407}});
    QCOMPARE(client.freshConnection(WEB_HOST)->proxyStatus(), 407);
    QCOMPARE(client.freshConnection(WEB_HOST)->proxyStatus(), 200);
}

void TestPlatformFaults::kindTunnelLatency()
{
    QCOMPARE(client.download(KEY).status, 200);
    platform.setFault({{"kind", "tunnelLatency"}, {"delayMs", 200}, {"count", 0}});
    const WireAnswer answer = client.download(KEY);
    QVERIFY(answer.milliseconds >= 400);
    QVERIFY(answer.milliseconds < 5000);
    QVERIFY(answer.body == bytes);
}

void TestPlatformFaults::kindTunnelBandwidth()
{
    QCOMPARE(client.download(KEY).status, 200);
    platform.setFault({{"kind", "tunnelBandwidth"}, {"bytesPerSecond", 40000}, {"count", 0}});
    const WireAnswer answer = client.download(KEY);
    QVERIFY(answer.milliseconds >= 400);
    QVERIFY(answer.milliseconds < 5000);
    QVERIFY(answer.body == bytes);
}

void TestPlatformFaults::kindTunnelCut()
{
    QCOMPARE(client.download(KEY).status, 200);
    platform.setFault({{"kind", "tunnelCut"}, {"bytes", 4000}});
    const WireAnswer answer = client.download(KEY);
    QVERIFY(answer.ending == Ending::Closed);
    QVERIFY(answer.body.size() < BYTES);
    QVERIFY(client.download(KEY).body == bytes);
}

void TestPlatformFaults::kindTunnelReset()
{
    QCOMPARE(client.download(KEY).status, 200);
    platform.setFault({{"kind", "tunnelReset"}, {"bytes", 4000}});
    QVERIFY(client.download(KEY).ending == Ending::Reset);
    QVERIFY(client.download(KEY).body == bytes);
}

void TestPlatformFaults::kindTunnelStall()
{
    QCOMPARE(client.download(KEY).status, 200);
    platform.setFault({{"kind", "tunnelStall"}, {"bytes", 4000}});
    const auto connection = client.freshConnection(SERVICE_HOST);
    connection->send(client.downloadRequest(KEY).bytes());
    const WireAnswer stalled = connection->receive(SHORT_WAIT);
    QVERIFY(stalled.ending == Ending::TimedOut);
    platform.clearFaults();
    const WireAnswer rest = connection->receive(10000, stalled.head.size() + BYTES - stalled.raw.size());
    QVERIFY(stalled.raw.size() + rest.raw.size() >= BYTES);
}

void TestPlatformFaults::everyKindHasATestAndARow()
{
    QFile file(QStringLiteral(DOCUMENTS "/platform-faults.md"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray document = file.readAll();
    const json kinds = platform.control("GET", "faults/kinds");
    QVERIFY(kinds.size() >= 24);
    for (const json &entry : kinds) {
        const QByteArray kind = QByteArray::fromStdString(entry["kind"].get<std::string>());
        const QByteArray function = "kind" + kind.left(1).toUpper() + kind.mid(1);
        QVERIFY2(metaObject()->indexOfMethod(function + "()") >= 0, kind.constData());
        QVERIFY2(document.contains("`" + kind + "`") && document.contains("`" + function + "`"), kind.constData());
    }
}

void TestPlatformFaults::onlyTheChosenRequestsAreHit()
{
    platform.setFault({{"kind", "status"}, {"route", "webdav/*"}, {"method", "GET"}, {"nth", 2}, {"count", 2}});
    QCOMPARE(client.putFile("k", "x").status, 200);
    std::vector<int> statuses;
    for (int i = 0; i < 5; ++i)
        statuses.push_back(client.download(KEY).status);
    QVERIFY((statuses == std::vector<int>{200, 503, 503, 200, 200}));
    const json fault = platform.control("GET", "faults")[0];
    QCOMPARE(fault["seen"].get<int>(), 5);
    QCOMPARE(fault["hits"].get<int>(), 2);
    QCOMPARE(fault["arrived"].get<int>(), 2);
    QVERIFY(fault["spent"].get<bool>());
}

void TestPlatformFaults::strikesOnDirectConnectionsToo()
{
    platform.setFault({{"kind", "resetInBody"}, {"bytes", 10}});
    const auto connection = WireClient::direct(platform.port(), platform.authority());
    const WireAnswer answer = connection->exchange(client.downloadRequest(KEY));
    QVERIFY(answer.ending == Ending::Reset);
    QVERIFY(answer.body == bytes.substr(0, 10));
}

void TestPlatformFaults::tunnelThatWasLeftTakesNoFault()
{
    platform.setFault({{"kind", "tunnelStall"}, {"bytes", 4000}});
    auto connection = client.freshConnection(SERVICE_HOST);
    connection->send(client.downloadRequest(KEY).bytes());
    QVERIFY(connection->receive(SHORT_WAIT).ending == Ending::TimedOut);
    connection.reset();
    const json reset = {{"kind", "tunnelReset"}, {"bytes", 4000}, {"host", SERVICE_HOST}};
    platform.control("POST", "faults", {{"set", {{{"kind", "delay"}, {"delayMs", 600}}, reset}}});
    // Time enough for the stalled tunnel to look for a fault.
    const auto direct = WireClient::direct(platform.port(), platform.authority());
    QVERIFY(direct->exchange(client.downloadRequest(KEY)).milliseconds >= 600);
    QVERIFY(client.download(KEY).ending == Ending::Reset);
}

void TestPlatformFaults::workIsDoneOrLeftAsTheFaultSays()
{
    platform.setFault({{"kind", "status"}, {"status", 500}, {"work", true}, {"route", "api/bucket/putfile"}});
    QCOMPARE(client.putFile("done", "x").status, 500);
    QVERIFY(objectExists("done"));
    platform.setFault({{"kind", "resetBeforeAnswer"}, {"work", false}, {"route", "api/bucket/putfile"}});
    QVERIFY(client.putFile("left", "x").ending == Ending::Reset);
    QVERIFY(!objectExists("left"));
}

void TestPlatformFaults::faultsCanBeGivenAtStart()
{
    PlatformProcess other;
    QVERIFY(other.start({QStringLiteral("--fault"), QStringLiteral(R"({"kind": "status", "route": "Token", "status": 500})")}));
    PlatformClient otherClient(other);
    QCOMPARE(otherClient.login().status, 500);
    QCOMPARE(otherClient.login().status, 200);
}

void TestPlatformFaults::isToldInTheJournal()
{
    downloadUnder({{"kind", "truncatedBody"}});
    const json journal = platform.control("GET", "journal");
    QVERIFY(journal.back()["fault"] == "truncatedBody");
    QVERIFY(journal.back()["route"].get<std::string>().find("webdav/") == 0);
}

void TestPlatformFaults::nonsenseIsRefused()
{
    const auto reason = [this](const json &fault) {
        const WireRequest request{"POST", "/control/faults", {}, fault.dump()};
        return WireClient::direct(platform.port(), platform.authority())->exchange(request).status;
    };
    QCOMPARE(reason({{"kind", "earthquake"}}), 400);
    QCOMPARE(reason({{"kind", "status"}, {"status", "many"}}), 400);
    QCOMPARE(reason({{"kind", "status"}, {"status", 99}}), 400);
    QCOMPARE(reason({{"kind", "status"}, {"sattus", 500}}), 400);
    QCOMPARE(reason(json::array({1, 2})), 400);
    QCOMPARE(reason("text"), 400);
    QCOMPARE(reason({{"kind", 7}}), 400);
}

QTEST_APPLESS_MAIN(TestPlatformFaults)
#include "tst_PlatformFaults.moc"
