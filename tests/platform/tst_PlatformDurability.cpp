#include "PlatformClient.h"

#include <QtCore/QDirIterator>
#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

using namespace PlatformTest;
using nlohmann::json;
using namespace std::chrono_literals;

namespace {

constexpr int UPLOADS = 200;
constexpr int UPLOADERS = 4;
constexpr int KILLS = 8;

/// The bytes of an object follow from its number, so whoever finds it knows what it should be.
std::string contentOf(int number)
{
    std::string bytes(static_cast<std::size_t>(1000 + number * 7919 % 200000), '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 13 + static_cast<std::size_t>(number) * 101 + (i >> 7));
    return bytes;
}

std::string keyOf(int number)
{
    return "Misc/object " + std::to_string(number);
}

/// What is known of each upload, shared by the threads that send.
struct Progress
{
    std::mutex mutex; // guards all below
    std::condition_variable advanced;
    std::set<int> waiting;
    std::set<int> inFlight;
    std::set<int> acknowledged;

    int take()
    {
        const std::lock_guard guard(mutex);
        if (waiting.empty())
            return -1;
        const int number = *waiting.begin();
        waiting.erase(waiting.begin());
        inFlight.insert(number);
        return number;
    }

    void finish(int number, bool wasAcknowledged)
    {
        const std::lock_guard guard(mutex);
        if (!wasAcknowledged)
            return;
        inFlight.erase(number);
        acknowledged.insert(number);
        advanced.notify_all();
    }

    /// Waits for so many more acknowledgements; false if they do not come.
    bool waitForMore(std::size_t count)
    {
        std::unique_lock guard(mutex);
        const std::size_t target = std::min<std::size_t>(UPLOADS - UPLOADERS, acknowledged.size() + count);
        return advanced.wait_for(guard, 30s, [&] { return acknowledged.size() >= target; });
    }
};

bool uploadInParts(PlatformClient &client, int number)
{
    const std::string bytes = contentOf(number);
    const std::string begun = client.service("PUT", "api/multipartupload/init",
                                             serviceBody("InitMultipartUploadRequest", {{"BucketName", client.bucket}, {"OutputFilePath", keyOf(number)}})).body;
    const std::string id = elementText(begun, "MultipartUploadId");
    const std::size_t half = bytes.size() / 2;
    for (int part = 1; part <= 2 && !id.empty(); ++part)
        client.service("PUT", "api/multipartupload/upload",
                       serviceBody("PutMultipartUploadRequest", {{"InputFilePartArray", base64(part == 1 ? bytes.substr(0, half) : bytes.substr(half))},
                                                                 {"MultipartUploadId", id}, {"PartNumber", std::to_string(part)}}));
    return client.service("PUT", "api/multipartupload/complete",
                          serviceBody("CompleteMultipartUploadRequest", {{"MultipartUploadId", id}, {"ProjectFolderName", ""}})).status == 200;
}

/// Sends until nothing is left or the platform is gone.
void uploadSome(PlatformProcess &platform, const PlatformClient &credentials, Progress &progress)
{
    PlatformClient client(platform);
    client.clientId = credentials.clientId;
    client.secretKey = credentials.secretKey;
    client.bucket = credentials.bucket;
    for (int number = progress.take(); number >= 0; number = progress.take()) {
        const bool done = number % 5 == 0 ? uploadInParts(client, number) : client.putFile(keyOf(number), contentOf(number)).status == 200;
        progress.finish(number, done);
        if (!done)
            return;
    }
}

} // namespace

class TestPlatformDurability : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void acknowledgedUploadsSurviveKills();
    void accountsTokensAndProjectsSurviveAKill();
    void replacedAndAbortedObjectsLeaveNoFiles();

private:
    void checkStored(const json &state, Progress &progress);
    static int filesIn(const QString &folder);
};

void TestPlatformDurability::checkStored(const json &state, Progress &progress)
{
    std::set<std::string> listed;
    for (const json &object : state["buckets"][0]["objects"]) {
        const std::string key = object["key"];
        const int number = std::stoi(key.substr(key.rfind(' ') + 1));
        listed.insert(key);
        QVERIFY2(object["sha256"] == sha256Hex(contentOf(number)), key.c_str());
        QVERIFY2(progress.acknowledged.count(number) > 0 || progress.inFlight.count(number) > 0, key.c_str());
    }
    for (const int number : progress.acknowledged)
        QVERIFY2(listed.count(keyOf(number)) > 0, keyOf(number).c_str());
}

void TestPlatformDurability::acknowledgedUploadsSurviveKills()
{
    PlatformProcess platform;
    QVERIFY(platform.start());
    PlatformClient client(platform);
    QVERIFY(client.prepare());
    QRandomGenerator random(20260303);
    Progress progress;
    for (int number = 0; number < UPLOADS; ++number)
        progress.waiting.insert(number);

    std::size_t caught = 0;
    for (int kill = 0; kill <= KILLS; ++kill) {
        std::vector<std::thread> uploaders;
        for (int i = 0; i < UPLOADERS; ++i)
            uploaders.emplace_back([&] { uploadSome(platform, client, progress); });
        if (kill < KILLS) {
            // Counted, not timed: so there is something in flight however fast the machine is.
            QVERIFY(progress.waitForMore(3 + random.bounded(20)));
            platform.killNow();
        }
        for (std::thread &uploader : uploaders)
            uploader.join();
        caught += progress.inFlight.size();
        if (kill < KILLS)
            QVERIFY(platform.start());
        checkStored(platform.control("GET", "state?sha256"), progress);
        progress.waiting.insert(progress.inFlight.begin(), progress.inFlight.end());
        progress.inFlight.clear();
    }
    QCOMPARE(progress.acknowledged.size(), std::size_t(UPLOADS));
    QVERIFY2(caught >= KILLS, "the kills came between the uploads");
}

void TestPlatformDurability::accountsTokensAndProjectsSurviveAKill()
{
    PlatformProcess platform;
    QVERIFY(platform.start({QStringLiteral("--account"), QStringLiteral(R"({"email": "kept@korvo.example", "password": "p"})")}));
    PlatformClient client(platform);
    QVERIFY(client.prepare());
    const std::string secret = client.secretKey;
    platform.killNow();
    QVERIFY(platform.start());
    client.disconnect();
    QVERIFY(elementText(client.web("GET", "/api/Projects?pageSize=1000000").body, "ProjectId") == PROJECT_ID);
    QVERIFY(elementText(client.web("GET", "/api/Projects/companykorvoservice").body, "SecretKey") == secret);
    QCOMPARE(client.login("kept@korvo.example", "p").status, 200);
}

int TestPlatformDurability::filesIn(const QString &folder)
{
    int count = 0;
    for (QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories); files.hasNext(); files.next())
        ++count;
    return count;
}

void TestPlatformDurability::replacedAndAbortedObjectsLeaveNoFiles()
{
    PlatformProcess platform;
    QVERIFY(platform.start());
    PlatformClient client(platform);
    QVERIFY(client.prepare());
    for (int i = 0; i < 3; ++i)
        QCOMPARE(client.putFile("same key", contentOf(i)).status, 200);
    const std::string id = elementText(client.service("PUT", "api/multipartupload/init",
                                                      serviceBody("InitMultipartUploadRequest", {{"BucketName", client.bucket}, {"OutputFilePath", "x"}})).body,
                                       "MultipartUploadId");
    client.service("PUT", "api/multipartupload/upload",
                   serviceBody("PutMultipartUploadRequest", {{"InputFilePartArray", base64("part")}, {"MultipartUploadId", id}, {"PartNumber", "1"}}));
    QCOMPARE(client.service("PUT", "api/multipartupload/abort", serviceBody("AbortMultipartUploadRequest", {{"MultipartUploadId", id}})).status, 200);
    QCOMPARE(filesIn(platform.dataFolder() + QStringLiteral("/objects")), 1);
    client.service("POST", "api/bucket/delete", serviceBody("DeleteObjectRequest", {{"BucketName", client.bucket}, {"RelativePath", ""}}));
    QCOMPARE(filesIn(platform.dataFolder() + QStringLiteral("/objects")), 0);
}

QTEST_GUILESS_MAIN(TestPlatformDurability)
#include "tst_PlatformDurability.moc"
