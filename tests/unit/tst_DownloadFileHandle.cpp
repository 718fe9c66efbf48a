#include "handles/DownloadFileHandle.h"

#include "support/FakeNetwork.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <functional>
#include <memory>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QString REMOTE_PATH = QStringLiteral("Fotos/Schächte 1.jpg");
const QString CATEGORY = QStringLiteral("Korvo::Web::DownloadFileHandle");
constexpr qint64 MEGABYTE = 1024 * 1024;

QNetworkRequest sampleRequest()
{
    QNetworkRequest request(QUrl(QStringLiteral("https://service.example/webdav/bucket/a?download=true")));
    request.setRawHeader("Authorization", "KorvoService c2lnbmF0dXJl");
    return request;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

bool write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

} // namespace

class tst_DownloadFileHandle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void foldersAreMadeAndTheFileIsTruncated();
    void missingFolderThatCannotBeMade();
    void fileThatCannotBeOpened();
    void logShowsAbsolutePaths();

    void dataIsWrittenAndReported();
    void whatComesWithTheEndIsWrittenToo();
    void stepsAreLargeOnAFastLine();
    void bytesOfALineThatStallsAreShown();
    void fileIsWholeWhenItsEndIsReported();
    void emptyFileIsAFile();
    void readBufferIsBounded();
    void uploadProgressIsNotFollowed();
    void newReplyReplacesTheOld();
    void endOfAnotherReplyIsNotItsOwn();
    void endOfTheHandleClosesTheFile();

    void failureIsHandedOver_data();
    void failureIsHandedOver();
    void redirectIsAFailure();
    void bodyOfARefusalIsNotWritten();
    void shortBodyIsAFailure_data();
    void shortBodyIsAFailure();

    void newAttemptTakesBackWhatWasCounted();
    void newAttemptOverwritesFromTheStart();
    void newAttemptMayBeShorter();
    void dataBeforeTheFailureIsCountedFirst();
    void sixAttemptsAreMade();
    void missingFileIsAskedForOnce();

    void abortEndsInSilence();
    void abortClosesTheFile();
    void abortWithoutAReply();
    void abortInsideAReport_data();
    void abortInsideAReport();
    void deletionInsideTheReportOfTheEnd();

    void fullDiskShowsAtTheFlush();
    void fullDiskShowsAtTheWrite();
    void abortInsideTheReportOfAFullDisk();

    void serverFileArrivesWhole();
    void serverFileArrivesPieceByPiece();
    void serverIsAskedAgain();

private:
    void makeHandle(qint64 expectedBytes = 10, const QString &path = QString());
    FakeReply *startedReply();
    QString localPath() const { return folder->filePath(QStringLiteral("file")); }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<FakeNetwork> network;
    std::unique_ptr<LogCapture> log;
    std::unique_ptr<DownloadFileHandle> handle;
    QStringList events; // what the handle has reported, in order
};

void tst_DownloadFileHandle::initTestCase()
{
    registerResponseMetaTypes();
}

void tst_DownloadFileHandle::init()
{
    folder = std::make_unique<QTemporaryDir>();
    network = std::make_unique<FakeNetwork>();
    log = std::make_unique<LogCapture>();
    events.clear();
}

void tst_DownloadFileHandle::cleanup()
{
    handle.reset();
    log.reset();
    network.reset();
    folder.reset();
}

void tst_DownloadFileHandle::makeHandle(qint64 expectedBytes, const QString &path)
{
    handle = std::make_unique<DownloadFileHandle>(REMOTE_PATH, path.isNull() ? localPath() : path, expectedBytes);
    connect(handle.get(), &DownloadFileHandle::downloadedBytesChanged, this,
            [this](qint64 total, qint64 last, qint64 expected, const QString &remotePath) {
                events.append(QStringLiteral("%1 %2 %3").arg(total).arg(last).arg(expected)
                              + (remotePath == REMOTE_PATH ? QString() : QStringLiteral(" wrong file")));
            });
    connect(handle.get(), &DownloadFileHandle::requestFinished, this, [this](const DownloadFileResponse &response) {
        events.append(QStringLiteral("finished %1").arg(int(response.error())));
    });
    connect(handle.get(), &RequestHandle::errorOccurred, this,
            [this](Error error) { events.append(QStringLiteral("error %1").arg(int(error))); });
}

// Sends the first request of the handle, which may be sent again.
FakeReply *tst_DownloadFileHandle::startedReply()
{
    handle->setReply(network->get(sampleRequest()));
    handle->enableRetry(network.get(), QByteArray());
    return network->last();
}

void tst_DownloadFileHandle::foldersAreMadeAndTheFileIsTruncated()
{
    const QString path = folder->filePath(QStringLiteral("a/b c/ä/file"));
    makeHandle(10, path);
    QCOMPARE(handle->fileError(), Error::None);
    QVERIFY(QFileInfo(path).isFile());
    QCOMPARE(handle->remotePath(), REMOTE_PATH);

    QVERIFY(write(localPath(), "former content"));
    makeHandle();
    QCOMPARE(contentOf(localPath()), QByteArray());
    QCOMPARE(log->count(), 0);
}

void tst_DownloadFileHandle::missingFolderThatCannotBeMade()
{
    QVERIFY(write(localPath(), "a file, no folder"));
    makeHandle(10, localPath() + QStringLiteral("/below/file"));
    QCOMPARE(handle->fileError(), Error::DownloadFolder);
    QCOMPARE(log->messages(), QStringList{QStringLiteral("Couldn't create download path: \"") + localPath()
                                          + QStringLiteral("/below\"")});
    QCOMPARE(log->entries().first().level, 1);
    QCOMPARE(log->entries().first().category, CATEGORY);
    QCOMPARE(contentOf(localPath()), QByteArray("a file, no folder"));
}

void tst_DownloadFileHandle::fileThatCannotBeOpened()
{
    makeHandle(10, folder->path());
    QCOMPARE(handle->fileError(), Error::FileOpen);
    QCOMPARE(log->messages(),
             QStringList{QStringLiteral("Couldn't open file: \"") + folder->path() + QLatin1Char('"')});
    QCOMPARE(log->entries().first().level, 1);
    QCOMPARE(log->entries().first().category, CATEGORY);
}

void tst_DownloadFileHandle::logShowsAbsolutePaths()
{
    const QString former = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder->path()));
    QVERIFY(QDir().mkdir(QStringLiteral("taken")));
    QVERIFY(write(QStringLiteral("blocked"), QByteArray()));
    makeHandle(10, QStringLiteral("taken"));
    makeHandle(10, QStringLiteral("blocked/file"));
    const QString current = QDir::currentPath();
    QVERIFY(QDir::setCurrent(former));
    QCOMPARE(log->messages(), QStringList({QStringLiteral("Couldn't open file: \"") + current + QStringLiteral("/taken\""),
                                           QStringLiteral("Couldn't create download path: \"") + current
                                               + QStringLiteral("/blocked\"")}));
}

void tst_DownloadFileHandle::dataIsWrittenAndReported()
{
    makeHandle();
    FakeReply *const reply = startedReply();
    reply->receive("1234");
    reply->receive("567890");
    reply->finish();
    QCOMPARE(events, QStringList({QStringLiteral("4 4 10"), QStringLiteral("10 6 10"), QStringLiteral("finished 0")}));
    QCOMPARE(contentOf(localPath()), QByteArray("1234567890"));
    QVERIFY(!handle->isInFlight());
    QCOMPARE(log->count(), 0);
}

void tst_DownloadFileHandle::whatComesWithTheEndIsWrittenToo()
{
    makeHandle();
    FakeReply *const reply = startedReply();
    reply->receive("1234");
    reply->finish("567890");
    QCOMPARE(events, QStringList({QStringLiteral("4 4 10"), QStringLiteral("10 6 10"), QStringLiteral("finished 0")}));
    QCOMPARE(contentOf(localPath()), QByteArray("1234567890"));
}

void tst_DownloadFileHandle::stepsAreLargeOnAFastLine()
{
    makeHandle(4 * MEGABYTE);
    FakeReply *const reply = startedReply();
    const QByteArray chunk(16 * 1024, 'x');
    QElapsedTimer timer;
    timer.start();
    for (qint64 sent = 0; sent < 4 * MEGABYTE; sent += chunk.size())
        reply->receive(chunk);
    const qint64 stepsDueByTime = timer.elapsed() / 20 + 1;
    reply->finish();
    QVERIFY2(events.size() >= 4 * MEGABYTE / (256 * 1024), qPrintable(QString::number(events.size())));
    QVERIFY2(events.size() <= 4 * MEGABYTE / (128 * 1024) + stepsDueByTime + 3,
             qPrintable(QString::number(events.size())));
    QCOMPARE(QFileInfo(localPath()).size(), 4 * MEGABYTE);
}

void tst_DownloadFileHandle::bytesOfALineThatStallsAreShown()
{
    makeHandle();
    FakeReply *const reply = startedReply();
    reply->receive("1234");
    reply->receive("56");
    reply->receive("7");
    QTRY_COMPARE_WITH_TIMEOUT(events, QStringList({QStringLiteral("4 4 10"), QStringLiteral("7 3 10")}), 30000);
}

void tst_DownloadFileHandle::fileIsWholeWhenItsEndIsReported()
{
    makeHandle();
    QByteArray onDisk;
    connect(handle.get(), &DownloadFileHandle::requestFinished, this, [&] { onDisk = contentOf(localPath()); });
    startedReply()->finish("1234567890");
    QCOMPARE(onDisk, QByteArray("1234567890"));
}

void tst_DownloadFileHandle::emptyFileIsAFile()
{
    makeHandle(0);
    FakeReply *const reply = startedReply();
    reply->announce(0);
    reply->finish();
    QCOMPARE(events, QStringList{QStringLiteral("finished 0")});
    QCOMPARE(contentOf(localPath()), QByteArray());
}

// What the network is faster than the disk must not pile up in memory.
void tst_DownloadFileHandle::readBufferIsBounded()
{
    makeHandle(9 * MEGABYTE);
    FakeReply *const reply = startedReply();
    const qint64 limit = reply->readBufferSize();
    QVERIFY(limit > 0 && limit <= MEGABYTE / 2);
    reply->fail(QNetworkReply::ServiceUnavailableError);
    QCOMPARE(network->last()->readBufferSize(), limit);
}

void tst_DownloadFileHandle::uploadProgressIsNotFollowed()
{
    makeHandle();
    Q_EMIT startedReply()->uploadProgress(1, 2);
    QVERIFY(events.isEmpty());
}

void tst_DownloadFileHandle::newReplyReplacesTheOld()
{
    makeHandle();
    const QPointer<FakeReply> first = startedReply();
    FakeReply *const second = startedReply();
    QCOMPARE(second->parent(), handle.get());
    first->receive("first");
    first->finish();
    QVERIFY(events.isEmpty());
    second->finish("1234567890");
    QCOMPARE(contentOf(localPath()), QByteArray("1234567890"));
    QTRY_VERIFY(!first);
}

// An end that was on its way when the reply was exchanged.
void tst_DownloadFileHandle::endOfAnotherReplyIsNotItsOwn()
{
    makeHandle();
    FakeReply *const reply = startedReply();
    FakeReply stranger;
    QVERIFY(connect(&stranger, SIGNAL(finished()), handle.get(), SLOT(onReplyFinished())));
    stranger.finish();
    QCOMPARE(events, QStringList());
    QVERIFY(handle->isInFlight());
    reply->finish("0123456789");
    QCOMPARE(events, QStringList({QStringLiteral("10 10 10"), QStringLiteral("finished 0")}));
}

void tst_DownloadFileHandle::endOfTheHandleClosesTheFile()
{
    makeHandle();
    const QPointer<FakeReply> reply = startedReply();
    reply->receive("1234");
    handle.reset();
    QCOMPARE(contentOf(localPath()), QByteArray("1234"));
    QVERIFY(!reply);
    QCOMPARE(events, QStringList{QStringLiteral("4 4 10")});
}

void tst_DownloadFileHandle::failureIsHandedOver_data()
{
    QTest::addColumn<QNetworkReply::NetworkError>("error");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("logs");
    QTest::newRow("time-out") << QNetworkReply::TimeoutError << 1 << 1;
    QTest::newRow("500") << QNetworkReply::InternalServerError << 2 << 1;
    QTest::newRow("401") << QNetworkReply::AuthenticationRequiredError << 3 << 0;
    QTest::newRow("cancelled elsewhere") << QNetworkReply::OperationCanceledError << 4 << 0;
    QTest::newRow("404") << QNetworkReply::ContentNotFoundError << 14 << 1;
}

void tst_DownloadFileHandle::failureIsHandedOver()
{
    QFETCH(QNetworkReply::NetworkError, error);
    QFETCH(int, code);
    QFETCH(int, logs);
    makeHandle();
    handle->setReply(network->get(sampleRequest()));
    network->last()->fail(error);
    QCOMPARE(network->count(), 1);
    QCOMPARE(events, QStringList{QStringLiteral("finished %1").arg(code)});
    QCOMPARE(log->count(), logs);
    if (logs > 0) {
        QCOMPARE(log->entries().first().category, CATEGORY);
        QVERIFY(log->messages().first().endsWith(QLatin1String("\" occured.\n Message: \nthe cause")));
    }
}

void tst_DownloadFileHandle::redirectIsAFailure()
{
    makeHandle();
    handle->setReply(network->get(sampleRequest()));
    network->last()->setStatus(302);
    network->last()->finish("moved to elsewhere");
    QCOMPARE(events, QStringList{QStringLiteral("finished 14")});
    QCOMPARE(contentOf(localPath()), QByteArray());
}

void tst_DownloadFileHandle::bodyOfARefusalIsNotWritten()
{
    makeHandle();
    FakeReply *reply = startedReply();
    reply->setStatus(503);
    reply->receive("<html>");
    reply->fail(QNetworkReply::ServiceUnavailableError, QStringLiteral("the cause"), "overloaded</html>");
    QCOMPARE(events, QStringList{QStringLiteral("0 0 10")}); // nothing to take back
    QCOMPARE(contentOf(localPath()), QByteArray());
    network->last()->finish("1234567890");
    QCOMPARE(contentOf(localPath()), QByteArray("1234567890"));
}

void tst_DownloadFileHandle::shortBodyIsAFailure_data()
{
    QTest::addColumn<int>("announced"); // -1: not at all
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("end");
    const QString good = QStringLiteral("finished 0");
    const QString bad = QStringLiteral("finished 14");
    QTest::newRow("cut off") << 10 << QByteArray("123456789") << bad;
    QTest::newRow("cut off before the first byte") << 10 << QByteArray() << bad;
    QTest::newRow("whole") << 10 << QByteArray("1234567890") << good;
    QTest::newRow("changed since the listing") << 4 << QByteArray("1234") << good;
    QTest::newRow("grown since the listing") << 12 << QByteArray("123456789012") << good;
    QTest::newRow("no length, whole") << -1 << QByteArray("1234567890") << good;
    QTest::newRow("no length, less than listed") << -1 << QByteArray("123456789") << bad;
    QTest::newRow("no length, more than listed") << -1 << QByteArray("12345678901") << good;
}

void tst_DownloadFileHandle::shortBodyIsAFailure()
{
    QFETCH(int, announced);
    QFETCH(QByteArray, body);
    makeHandle();
    handle->setReply(network->get(sampleRequest()));
    if (announced >= 0)
        network->last()->announce(announced);
    network->last()->finish(body);
    QTEST(events.last(), "end");
    handle.reset();
    QCOMPARE(contentOf(localPath()), body);
}

void tst_DownloadFileHandle::newAttemptTakesBackWhatWasCounted()
{
    const qint64 expected = 4 * MEGABYTE;
    makeHandle(expected);
    FakeReply *const reply = startedReply();
    reply->receive(QByteArray(int(2 * MEGABYTE), 'a'));
    reply->receive(QByteArray(int(MEGABYTE), 'b'));
    events.clear();
    reply->fail(QNetworkReply::RemoteHostClosedError);
    QCOMPARE(events, QStringList{QStringLiteral("0 -3145728 4194304")}); // before any new data
    network->last()->receive("new");
    QCOMPARE(events.last(), QStringLiteral("3 3 4194304"));
}

void tst_DownloadFileHandle::newAttemptOverwritesFromTheStart()
{
    makeHandle();
    FakeReply *const reply = startedReply();
    reply->receive("abcdef");
    reply->fail(QNetworkReply::RemoteHostClosedError);
    QCOMPARE(network->count(), 2);
    QCOMPARE(network->sent().last().operation, QNetworkAccessManager::GetOperation);
    QVERIFY(network->sent().last().request == sampleRequest());
    network->last()->receive("1234");
    QCOMPARE(QFileInfo(localPath()).size(), qint64(6)); // not truncated
    network->last()->finish("567890");
    QCOMPARE(contentOf(localPath()), QByteArray("1234567890"));
    QCOMPARE(events.last(), QStringLiteral("finished 0"));
}

void tst_DownloadFileHandle::newAttemptMayBeShorter()
{
    makeHandle();
    FakeReply *const reply = startedReply();
    reply->receive("abcdefghij");
    reply->fail(QNetworkReply::RemoteHostClosedError);
    network->last()->announce(4);
    network->last()->finish("1234");
    QCOMPARE(events.last(), QStringLiteral("finished 0"));
    QCOMPARE(contentOf(localPath()), QByteArray("1234")); // nothing is left of the first attempt
}

void tst_DownloadFileHandle::dataBeforeTheFailureIsCountedFirst()
{
    makeHandle();
    startedReply()->fail(QNetworkReply::RemoteHostClosedError, QStringLiteral("the cause"), "1234");
    QCOMPARE(events, QStringList({QStringLiteral("4 4 10"), QStringLiteral("0 -4 10")}));
}

void tst_DownloadFileHandle::sixAttemptsAreMade()
{
    makeHandle();
    startedReply();
    for (int i = 0; i < 10 && handle->isInFlight(); ++i)
        network->last()->fail(QNetworkReply::ServiceUnavailableError);
    QCOMPARE(network->count(), 6);
    QCOMPARE(log->count(), 6);
    QCOMPARE(events.last(), QStringLiteral("finished 14"));
    QCOMPARE(events.count(QStringLiteral("finished 14")), 1);
    QCOMPARE(events.count(QStringLiteral("0 0 10")), 5);
}

void tst_DownloadFileHandle::missingFileIsAskedForOnce()
{
    makeHandle();
    startedReply()->fail(QNetworkReply::ContentNotFoundError);
    QCOMPARE(network->count(), 1);
    QCOMPARE(log->count(), 1);
    QCOMPARE(events, QStringList{QStringLiteral("finished 14")});
}

void tst_DownloadFileHandle::abortEndsInSilence()
{
    makeHandle();
    const QPointer<FakeReply> reply = startedReply();
    reply->receive("1234");
    events.clear();
    handle->abort();
    QVERIFY(reply->isFinished());
    QVERIFY(!handle->isInFlight());
    handle->abort();
    QTRY_VERIFY(!reply);
    QVERIFY(events.isEmpty());
    QCOMPARE(log->count(), 0);
    QCOMPARE(network->count(), 1);
}

void tst_DownloadFileHandle::abortClosesTheFile()
{
    makeHandle();
    startedReply()->receive("1234");
    handle->abort();
    QCOMPARE(contentOf(localPath()), QByteArray("1234"));
    // A reply that comes later writes nothing.
    FakeReply *const late = startedReply();
    late->receive("late");
    late->finish("r");
    QCOMPARE(contentOf(localPath()), QByteArray("1234"));
    QCOMPARE(events, QStringList{QStringLiteral("4 4 10")});
}

void tst_DownloadFileHandle::abortWithoutAReply()
{
    makeHandle();
    handle->abort();
    QVERIFY(events.isEmpty());
    makeHandle(10, folder->path()); // no file either
    handle->abort();
    QVERIFY(events.isEmpty());
}

void tst_DownloadFileHandle::abortInsideAReport_data()
{
    QTest::addColumn<bool>("atTheEnd");
    QTest::addColumn<bool>("inTheReportOfANewAttempt");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("while data comes") << false << false << QStringList{QStringLiteral("4 4 10")};
    QTest::newRow("at the last data") << true << false << QStringList{QStringLiteral("10 10 10")};
    QTest::newRow("before a new attempt") << false << true
                                          << QStringList{QStringLiteral("4 4 10"), QStringLiteral("0 -4 10")};
}

void tst_DownloadFileHandle::abortInsideAReport()
{
    QFETCH(bool, atTheEnd);
    QFETCH(bool, inTheReportOfANewAttempt);
    makeHandle();
    connect(handle.get(), &DownloadFileHandle::downloadedBytesChanged, this, [=](qint64, qint64 lastBytes) {
        if (lastBytes < 0 || !inTheReportOfANewAttempt)
            handle->abort();
    });
    const QPointer<FakeReply> reply = startedReply();
    if (atTheEnd) {
        reply->finish("1234567890");
    } else {
        reply->receive("1234");
        reply->fail(QNetworkReply::ServiceUnavailableError);
    }
    QCOMPARE(network->count(), 1);
    QVERIFY(!handle->isInFlight());
    QTEST(events, "expected");
    QVERIFY(!log->contains(QStringLiteral("Error while writing")));
    QTRY_VERIFY(!reply);
}

void tst_DownloadFileHandle::deletionInsideTheReportOfTheEnd()
{
    makeHandle();
    const QPointer<FakeReply> reply = startedReply();
    connect(handle.get(), &DownloadFileHandle::requestFinished, this, [this] { handle.release()->deleteLater(); });
    reply->finish("1234567890");
    QTRY_VERIFY(!reply);
    QCOMPARE(contentOf(localPath()), QByteArray("1234567890"));
}

// On this device everything can be written until it comes to the flush.
void tst_DownloadFileHandle::fullDiskShowsAtTheFlush()
{
    makeHandle(10, QStringLiteral("/dev/full"));
    QCOMPARE(handle->fileError(), Error::None);
    startedReply()->finish("1234567890");
    QCOMPARE(events,
             QStringList({QStringLiteral("10 10 10"), QStringLiteral("error 10"), QStringLiteral("finished 0")}));
    QCOMPARE(handle->fileError(), Error::FileWrite);
    QCOMPARE(log->messages(), QStringList{QStringLiteral("Error while writing to file: \"/dev/full\" ")});
    QCOMPARE(log->entries().first().level, 1);
    QCOMPARE(log->entries().first().category, CATEGORY);
}

void tst_DownloadFileHandle::fullDiskShowsAtTheWrite()
{
    makeHandle(MEGABYTE, QStringLiteral("/dev/full"));
    FakeReply *const reply = startedReply();
    reply->receive(QByteArray(int(MEGABYTE), 'x')); // more than a file buffers
    QCOMPARE(events, QStringList{QStringLiteral("error 10")}); // the chunk is not reported
    QCOMPARE(log->messages(), QStringList{QStringLiteral("Error while writing to file: \"/dev/full\" ")});
    reply->receive("abc");
    QTRY_COMPARE(events.last(), QStringLiteral("1048579 3 1048576")); // but it was counted
}

void tst_DownloadFileHandle::abortInsideTheReportOfAFullDisk()
{
    makeHandle(10, QStringLiteral("/dev/full"));
    connect(handle.get(), &RequestHandle::errorOccurred, this, [this] { handle->abort(); });
    const QPointer<FakeReply> reply = startedReply();
    reply->finish("1234567890");
    QCOMPARE(events, QStringList({QStringLiteral("10 10 10"), QStringLiteral("error 10")}));
    QTRY_VERIFY(!reply);
}

void tst_DownloadFileHandle::serverFileArrivesWhole()
{
    QByteArray content;
    for (int i = 0; i < 1'000'000; ++i)
        content += QByteArray::number(i);
    ScriptedServer server;
    server.setDefaultAnswer(ScriptedAnswer::ok(content));
    QNetworkAccessManager manager;
    makeHandle(content.size());
    handle->setReply(manager.get(QNetworkRequest(QUrl::fromEncoded(server.plainRoot() + '/'))));
    qint64 counted = 0;
    connect(handle.get(), &DownloadFileHandle::downloadedBytesChanged, this,
            [&](qint64, qint64 last) { counted += last; });
    QTRY_COMPARE(events.value(events.size() - 1), QStringLiteral("finished 0"));
    QCOMPARE(counted, qint64(content.size()));
    QVERIFY(contentOf(localPath()) == content);
    handle.reset();
}

void tst_DownloadFileHandle::serverFileArrivesPieceByPiece()
{
    ScriptedServer server;
    server.setDefaultAnswer(ScriptedAnswer::ok("1234567890").pausedAt(0).pausedAt(4));
    QNetworkAccessManager manager;
    makeHandle();
    handle->setReply(manager.get(QNetworkRequest(QUrl::fromEncoded(server.plainRoot() + '/'))));
    QVERIFY(server.waitForRequests(1));
    QVERIFY(events.isEmpty());
    server.release();
    QTRY_COMPARE(events, QStringList{QStringLiteral("4 4 10")});
    server.release();
    QTRY_COMPARE(events.last(), QStringLiteral("finished 0"));
    QCOMPARE(contentOf(localPath()), QByteArray("1234567890"));
    handle.reset();
}

void tst_DownloadFileHandle::serverIsAskedAgain()
{
    ScriptedServer server;
    server.enqueue("/", ScriptedAnswer(500, "an internal error"));
    server.enqueue("/", ScriptedAnswer::ok("abcdefghij").closedAt(6));
    server.enqueue("/", ScriptedAnswer(503, "overloaded"));
    server.enqueue("/", ScriptedAnswer::ok("1234567890"));
    QNetworkAccessManager manager;
    makeHandle();
    handle->setReply(manager.get(QNetworkRequest(QUrl::fromEncoded(server.plainRoot() + '/'))));
    handle->enableRetry(&manager, QByteArray());
    QTRY_COMPARE(events.value(events.size() - 1), QStringLiteral("finished 0"));
    QCOMPARE(server.requestCount(), 4);
    QCOMPARE(contentOf(localPath()), QByteArray("1234567890"));
    QCOMPARE(log->count(), 3);
    handle.reset();
}

QTEST_GUILESS_MAIN(tst_DownloadFileHandle)
#include "tst_DownloadFileHandle.moc"
