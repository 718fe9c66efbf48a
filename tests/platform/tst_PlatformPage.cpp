#include "PlatformClient.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtTest/QtTest>

using namespace PlatformTest;
using nlohmann::json;

namespace {

constexpr int BROWSER_MILLISECONDS = 120000;

QByteArray runProgram(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(BROWSER_MILLISECONDS) && process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

std::string contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
}

} // namespace

/// The page in a real browser: what a user sees is what the browser made of it.
class TestPlatformPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void showsWhatIsThere();
    void looksLikeAPage();
    void showsHostileNamesAsText();

private:
    void uploadSample(const QString &folder);
    QStringList browserOptions() const;
    QByteArray documentInBrowser() const;

    PlatformProcess platform;
    PlatformClient client{platform};
    QTemporaryDir scratch;
};

void TestPlatformPage::uploadSample(const QString &folder)
{
    for (QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories); files.hasNext();) {
        const QString path = files.next();
        const QString suffix = files.fileInfo().suffix().toLower();
        const bool picture = suffix == QStringLiteral("jpg") || suffix == QStringLiteral("png");
        const bool video = suffix == QStringLiteral("avi");
        const std::string name = files.fileName().toStdString();
        const std::string key = picture ? "Picture/Sec/" + name : video ? "Video/Sec/" + name : path.mid(folder.size()).toStdString();
        QCOMPARE(client.putFile(key, contentOf(path)).status, 200);
    }
}

void TestPlatformPage::initTestCase()
{
    QVERIFY(platform.start());
    QVERIFY(client.prepare());
    const QString folder = scratch.filePath(QStringLiteral("project"));
    runProgram(QStringLiteral(SAMPLE_PROJECT), {folder, QStringLiteral("--videos"), QStringLiteral("2"), QStringLiteral("--video-size"),
                                                QStringLiteral("1M"), QStringLiteral("--pictures"), QStringLiteral("6")});
    uploadSample(folder);
    client.service("PUT", "api/multipartupload/init", serviceBody("InitMultipartUploadRequest", {{"BucketName", client.bucket}, {"OutputFilePath", "Video/Sec/open upload.avi"}}));
    platform.setFault({{"kind", "resetInBody"}, {"route", "webdav/*"}, {"nth", 100}});
    client.service("PUT", "api/bucket", "nonsense");
}

QStringList TestPlatformPage::browserOptions() const
{
    return {QStringLiteral("--headless"), QStringLiteral("--no-sandbox"), QStringLiteral("--disable-gpu"), QStringLiteral("--ignore-certificate-errors"),
            QStringLiteral("--user-data-dir=") + scratch.filePath(QStringLiteral("browser")), QStringLiteral("--window-size=1400,2000"),
            QStringLiteral("--virtual-time-budget=6000")};
}

QByteArray TestPlatformPage::documentInBrowser() const
{
    const QString address = QStringLiteral("https://localhost:%1/").arg(platform.port());
    return runProgram(QStringLiteral(CHROMIUM), browserOptions() << QStringLiteral("--dump-dom") << address);
}

void TestPlatformPage::showsWhatIsThere()
{
    const QByteArray document = documentInBrowser();
    QVERIFY(document.contains("data-ready=\"yes\""));
    QVERIFY(document.contains("inspector@korvo.example"));
    QVERIFY(document.contains("Kanal_2026"));
    QVERIFY(document.contains(QByteArray::fromStdString(client.bucket)));
    QVERIFY(document.contains("Video/Sec/open upload.avi"));
    QVERIFY(document.contains("resetInBody"));
    QVERIFY(document.contains("api/bucket/putfile"));
    QVERIFY(document.contains("<img"));
    QVERIFY(document.contains("<canvas"));
    // Every picture and video was really decoded.
    QCOMPARE(document.count("data-shown=\"yes\""), document.count("<figure"));
}

void TestPlatformPage::showsHostileNamesAsText()
{
    const std::string key = "<img src=x onerror=document.body.id='owned'>.txt";
    platform.control("POST", "projects", {{"projectId", "p"}, {"name", "<script>document.body.id='owned'</script>"}, {"objects", {{{"key", key}, {"text", "t"}}}}});
    const QByteArray document = documentInBrowser();
    QVERIFY(document.contains("data-ready=\"yes\""));
    QVERIFY(document.contains("&lt;img src=x"));
    QVERIFY(!document.contains("id=\"owned\""));
}

void TestPlatformPage::looksLikeAPage()
{
    const QString picture = QStringLiteral(SCREENSHOT);
    QFile::remove(picture);
    const QString address = QStringLiteral("https://localhost:%1/").arg(platform.port());
    runProgram(QStringLiteral(CHROMIUM), browserOptions() << QStringLiteral("--screenshot=") + picture << address);
    QVERIFY(QFile(picture).size() > 20000);
}

QTEST_GUILESS_MAIN(TestPlatformPage)
#include "tst_PlatformPage.moc"
