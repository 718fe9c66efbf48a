#include "handles/UploadFileRequestHandle.h"

#include "support/FakeNetwork.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"

#include <QtTest/QtTest>

#include <memory>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QString LOCAL_PATH = QStringLiteral("/local/Schächte 1.jpg");
const QByteArray BODY = "the body with the file in it";
constexpr qint64 FILE_BYTES = 1000;

using Report = QPair<qint64, qint64>; // bytes sent and bytes in all, as the network layer counts

} // namespace

Q_DECLARE_METATYPE(QList<Report>)

class tst_UploadFileRequestHandle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void descriptionIsKept();
    void startIsReportedAsNothing();
    void onlyBytesOfTheFileCount_data();
    void onlyBytesOfTheFileCount();
    void networkErrorDecidesTheOutcome_data();
    void networkErrorDecidesTheOutcome();
    void bodyOfTheAnswerDoesNotMatter();
    void sixAttemptsAreMade();
    void abortEndsAsCancelled();
    void serverTakesTheFile();
    void serverIsAskedSixTimes();

private:
    FakeReply *startedReply();

    std::unique_ptr<FakeNetwork> network;
    std::unique_ptr<LogCapture> log;
    std::unique_ptr<UploadFileRequestHandle> handle;
    QStringList events; // what the handle has reported, in order
};

void tst_UploadFileRequestHandle::init()
{
    network = std::make_unique<FakeNetwork>();
    log = std::make_unique<LogCapture>();
    events.clear();
    const UploadFileDescriptor file{QStringLiteral("folder"), LOCAL_PATH, QStringLiteral("key"), QStringLiteral("bucket"),
                                    true};
    handle = std::make_unique<UploadFileRequestHandle>(file, FILE_BYTES);
    connect(handle.get(), &AbstractUploadFileRequestHandle::uploadedBytes, this,
            [this](qint64 total, qint64 step, qint64 expected, const QString &path) {
                events.append(QStringLiteral("%1 %2 %3").arg(total).arg(step).arg(expected)
                              + (path == LOCAL_PATH ? QString() : QStringLiteral(" wrong file")));
            });
    connect(handle.get(), &UploadFileRequestHandle::requestFinished, this, [this](const UploadFileResponse &response) {
        events.append(QStringLiteral("finished %1").arg(int(response.error())));
    });
}

void tst_UploadFileRequestHandle::cleanup()
{
    handle.reset();
    log.reset();
    network.reset();
}

FakeReply *tst_UploadFileRequestHandle::startedReply()
{
    handle->setReply(network->put(QNetworkRequest(QUrl(QStringLiteral("https://service.example/putfile"))), BODY));
    handle->enableRetry(network.get(), BODY);
    return network->last();
}

void tst_UploadFileRequestHandle::descriptionIsKept()
{
    QCOMPARE(handle->description().projectFolderName, QStringLiteral("folder"));
    QCOMPARE(handle->description().localFilePath, LOCAL_PATH);
    QCOMPARE(handle->description().remoteKey, QStringLiteral("key"));
    QCOMPARE(handle->description().bucketName, QStringLiteral("bucket"));
    QVERIFY(handle->description().isVideo);
    QVERIFY(!handle->isUploaded());
}

void tst_UploadFileRequestHandle::startIsReportedAsNothing()
{
    handle->reportStart();
    QCOMPARE(events, QStringList{QStringLiteral("0 0 1000")});
}

void tst_UploadFileRequestHandle::onlyBytesOfTheFileCount_data()
{
    QTest::addColumn<QList<Report>>("reports");
    QTest::addColumn<QStringList>("expected");
    const QString nothing = QStringLiteral("0 0 1000");
    QTest::newRow("what goes beyond the file is taken off first")
        << QList<Report>{{0, 1500}, {499, 1500}, {500, 1500}, {600, 1500}, {1500, 1500}}
        << QStringList{nothing, nothing, nothing, QStringLiteral("100 100 1000"), QStringLiteral("1000 900 1000")};
    QTest::newRow("a request of the size of the file") << QList<Report>{{1, 1000}, {1000, 1000}}
        << QStringList{QStringLiteral("1 1 1000"), QStringLiteral("1000 999 1000")};
    QTest::newRow("a smaller figure is no step back") << QList<Report>{{1500, 1500}, {600, 1500}, {700, 1500}}
        << QStringList{QStringLiteral("1000 1000 1000"), QStringLiteral("1000 0 1000"), QStringLiteral("1100 100 1000")};
    QTest::newRow("the same figure twice") << QList<Report>{{600, 1500}, {600, 1500}}
        << QStringList{QStringLiteral("100 100 1000"), QStringLiteral("100 0 1000")};
    QTest::newRow("the closing report says nothing") << QList<Report>{{600, 1500}, {0, 0}, {5, -1}, {700, 1500}}
        << QStringList{QStringLiteral("100 100 1000"), QStringLiteral("200 100 1000")};
}

void tst_UploadFileRequestHandle::onlyBytesOfTheFileCount()
{
    QFETCH(QList<Report>, reports);
    FakeReply *const reply = startedReply();
    for (const Report &report : reports)
        Q_EMIT reply->uploadProgress(report.first, report.second);
    QTEST(events, "expected");
}

void tst_UploadFileRequestHandle::networkErrorDecidesTheOutcome_data()
{
    QTest::addColumn<QNetworkReply::NetworkError>("error");
    QTest::addColumn<int>("code");
    QTest::newRow("success") << QNetworkReply::NoError << 0;
    QTest::newRow("time-out") << QNetworkReply::TimeoutError << 1;
    QTest::newRow("500") << QNetworkReply::InternalServerError << 2;
    QTest::newRow("401") << QNetworkReply::AuthenticationRequiredError << 3;
    QTest::newRow("cancelled") << QNetworkReply::OperationCanceledError << 4;
    QTest::newRow("404") << QNetworkReply::ContentNotFoundError << 14;
}

void tst_UploadFileRequestHandle::networkErrorDecidesTheOutcome()
{
    QFETCH(QNetworkReply::NetworkError, error);
    QFETCH(int, code);
    handle->setReply(network->put(QNetworkRequest(), BODY));
    network->last()->fail(error);
    QCOMPARE(events, QStringList{QStringLiteral("finished %1").arg(code)});
    QCOMPARE(handle->isUploaded(), code == 0);
    QCOMPARE(network->count(), 1);
}

void tst_UploadFileRequestHandle::bodyOfTheAnswerDoesNotMatter()
{
    startedReply()->finish("<<< not XML at all, not even UTF-8: \xFF\xFE");
    QCOMPARE(events, QStringList{QStringLiteral("finished 0")});
    QVERIFY(handle->isUploaded());
}

void tst_UploadFileRequestHandle::sixAttemptsAreMade()
{
    startedReply();
    for (int i = 0; i < 10 && handle->isInFlight(); ++i)
        network->last()->fail(QNetworkReply::TimeoutError);
    QCOMPARE(network->count(), 6);
    QCOMPARE(network->sent().last().body, BODY);
    QCOMPARE(log->count(), 6);
    QCOMPARE(log->entries().first().category, QStringLiteral("Korvo::Web::UploadFileRequestHandle"));
    QCOMPARE(events, QStringList{QStringLiteral("finished 1")});
}

void tst_UploadFileRequestHandle::abortEndsAsCancelled()
{
    AbstractUploadFileRequestHandle *const upload = handle.get(); // as the job calls it
    upload->abort();
    QVERIFY(events.isEmpty());
    Q_EMIT startedReply()->uploadProgress(600, 1500);
    upload->abort();
    QCOMPARE(events, QStringList({QStringLiteral("100 100 1000"), QStringLiteral("finished 4")})); // inside the call
    upload->abort();
    QCOMPARE(events.size(), 2);
    QVERIFY(!handle->isUploaded());
    QCOMPARE(network->count(), 1);
    QCOMPARE(log->count(), 0);
}

void tst_UploadFileRequestHandle::serverTakesTheFile()
{
    ScriptedServer server;
    QNetworkAccessManager manager;
    const QByteArray body(FILE_BYTES + 333, 'x');
    handle->setReply(manager.put(QNetworkRequest(QUrl::fromEncoded(server.plainRoot() + '/')), body));
    qint64 counted = 0;
    connect(handle.get(), &AbstractUploadFileRequestHandle::uploadedBytes, this,
            [&](qint64, qint64 step) { counted += step; });
    QTRY_VERIFY(handle->isUploaded());
    QCOMPARE(counted, FILE_BYTES);
    QCOMPARE(events.last(), QStringLiteral("finished 0"));
    QCOMPARE(server.lastRequest().body, body);
    handle.reset();
}

void tst_UploadFileRequestHandle::serverIsAskedSixTimes()
{
    ScriptedServer server;
    server.setDefaultAnswer(ScriptedAnswer(500));
    QNetworkAccessManager manager;
    handle->setReply(manager.put(QNetworkRequest(QUrl::fromEncoded(server.plainRoot() + '/')), BODY));
    handle->enableRetry(&manager, BODY);
    QTRY_VERIFY(!handle->isInFlight());
    QCOMPARE(events.last(), QStringLiteral("finished 2"));
    QCOMPARE(server.requestCount(), 6);
    QCOMPARE(log->count(), 6);
    handle.reset();
}

QTEST_GUILESS_MAIN(tst_UploadFileRequestHandle)
#include "tst_UploadFileRequestHandle.moc"
