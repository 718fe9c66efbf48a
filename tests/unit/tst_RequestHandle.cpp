#include "handles/RequestHandle.h"

#include "handles/BucketHandles.h"
#include "support/FakeNetwork.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QMetaEnum>
#include <QtCore/QTimer>
#include <QtTest/QtTest>

#include <atomic>
#include <functional>
#include <memory>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QUrl ADDRESS(QStringLiteral("https://service.example/api/x?a=b"));
const QByteArray BODY = "the body";

QNetworkRequest sampleRequest()
{
    QNetworkRequest request(ADDRESS);
    request.setRawHeader("Date", "Tue, 03 Mar 2026 14:05:09 GMT");
    request.setRawHeader("Authorization", "KorvoService c2lnbmF0dXJl");
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    return request;
}

QString logText(const char *errorName, const char *cause)
{
    return QStringLiteral("Network Error: \"") + QLatin1String(errorName)
        + QStringLiteral("\" occured.\n Message: \n") + QLatin1String(cause);
}

} // namespace

Q_DECLARE_METATYPE(QNetworkAccessManager::Operation)

/// Notes what the base hands to its subclasses.
class ProbeHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

    QList<QPair<QString, QNetworkReply::NetworkError>> responses;
    QList<QPair<qint64, qint64>> progress;
    std::function<void()> whenResponding;

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override
    {
        responses.append({data, error});
        if (whenResponding)
            whenResponding();
    }

    void handleUploadProgress(qint64 bytesSent, qint64 bytesTotal) override { progress.append({bytesSent, bytesTotal}); }
};

class tst_RequestHandle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void withoutReplyNothingIsInFlight();
    void replyBelongsToTheHandle();
    void newReplyReplacesTheOld();
    void finishedReplyIsHandedOverAndDisposedOf();
    void textIsUtf8UpToTheFirstZero_data();
    void textIsUtf8UpToTheFirstZero();
    void baseKeepsSilent();
    void uploadProgressIsHandedOn();
    void progressOfAReplacedReplyIsIgnored();

    void timeOutIsSentSixTimesAndLoggedSixTimes();
    void serverIsAskedSixTimes_data();
    void serverIsAskedSixTimes();
    void withoutRetryFailureIsHandedOverAtOnce();
    void errorDecidesWhetherToSendAgain_data();
    void errorDecidesWhetherToSendAgain();
    void sameRequestIsSentAgain_data();
    void sameRequestIsSentAgain();
    void successEndsTheReSending();
    void budgetIsNotRefilledByANewReply();
    void otherOperationsAreRefused_data();
    void otherOperationsAreRefused();

    void abortEndsAsCancelled();
    void abortWithoutAReplyDoesNothing();
    void abortWarnsNobody();

    void shortBodyIsAFailure();
    void redirectIsAFailure();

    void receiverMayDeleteTheHandle();
    void receiverMayInstallTheNextReply();

    void waitReturnsTheText();
    void waitReturnsTheTextOfARefusal();
    void waitEndsWithTheTimeOut();
    void lateAnswerIsStillHandedOver();
    void waitThatIsInterruptedIsATimeOut();
    void waitWithoutAReplyReturnsAtOnce();
    void waitForAFinishedReplyReturnsAtOnce();
    void awaitedTimeOutIsAFailedResponse();
    void awaitedRefusalIsASuccess();

private:
    ProbeHandle *probe(QNetworkReply *reply);
    ProbeHandle *resendingProbe(QNetworkReply *reply);

    std::unique_ptr<FakeNetwork> network;
    std::unique_ptr<LogCapture> log;
    std::unique_ptr<ProbeHandle> handle;
};

void tst_RequestHandle::initTestCase()
{
    registerResponseMetaTypes();
}

void tst_RequestHandle::init()
{
    network = std::make_unique<FakeNetwork>();
    log = std::make_unique<LogCapture>();
    handle = std::make_unique<ProbeHandle>();
}

void tst_RequestHandle::cleanup()
{
    handle.reset();
    log.reset();
    network.reset();
}

ProbeHandle *tst_RequestHandle::probe(QNetworkReply *reply)
{
    handle->setReply(reply);
    return handle.get();
}

ProbeHandle *tst_RequestHandle::resendingProbe(QNetworkReply *reply)
{
    handle->enableRetry(network.get(), BODY);
    return probe(reply);
}

void tst_RequestHandle::withoutReplyNothingIsInFlight()
{
    QVERIFY(!handle->isInFlight());
    QCOMPARE(handle->replyError(), QNetworkReply::NoError);
    handle->setReply(nullptr);
    QVERIFY(!handle->isInFlight());
}

void tst_RequestHandle::replyBelongsToTheHandle()
{
    const QPointer<QNetworkReply> reply = network->get(sampleRequest());
    probe(reply);
    QVERIFY(handle->isInFlight());
    QCOMPARE(reply->parent(), handle.get());
    handle.reset();
    QVERIFY(!reply);
}

void tst_RequestHandle::newReplyReplacesTheOld()
{
    const QPointer<FakeReply> first(new FakeReply);
    const QPointer<FakeReply> second(new FakeReply);
    probe(first);
    probe(second);
    QVERIFY(first); // it is deleted later
    first->finish("first");
    QVERIFY(handle->responses.isEmpty());
    QVERIFY(handle->isInFlight());
    QTRY_VERIFY(!first);
    second->finish("second");
    QCOMPARE(handle->responses.size(), 1);
    QCOMPARE(handle->responses.first().first, QStringLiteral("second"));
}

void tst_RequestHandle::finishedReplyIsHandedOverAndDisposedOf()
{
    const QPointer<FakeReply> reply(new FakeReply);
    probe(reply);
    reply->receive("first half, ");
    QVERIFY(handle->responses.isEmpty());
    reply->finish("second half");
    QCOMPARE(handle->responses.size(), 1);
    QCOMPARE(handle->responses.first().first, QStringLiteral("first half, second half"));
    QCOMPARE(handle->responses.first().second, QNetworkReply::NoError);
    QVERIFY(!handle->isInFlight());
    QVERIFY(reply);
    QTRY_VERIFY(!reply);
    QCOMPARE(log->count(), 0);
}

void tst_RequestHandle::textIsUtf8UpToTheFirstZero_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("umlauts") << QByteArray("gr\xC3\xB6\xC3\x9F" "er") << QStringLiteral("größer");
    QTest::newRow("zero in the middle") << QByteArray("before\0after", 12) << QStringLiteral("before");
    QTest::newRow("zero at the start") << QByteArray("\0after", 6) << QString();
}

void tst_RequestHandle::textIsUtf8UpToTheFirstZero()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    auto *const reply = new FakeReply;
    probe(reply);
    reply->finish(body);
    QCOMPARE(handle->responses.size(), 1);
    QCOMPARE(handle->responses.first().first, text);

    auto *const awaitedReply = new FakeReply;
    probe(awaitedReply);
    QTimer::singleShot(0, awaitedReply, [=] { awaitedReply->finish(body); });
    QCOMPARE(handle->waitForReply(5000), text);
}

void tst_RequestHandle::baseKeepsSilent()
{
    RequestHandle base;
    QSignalSpy errors(&base, &RequestHandle::errorOccurred);
    const QPointer<FakeReply> reply(new FakeReply);
    base.setReply(reply);
    Q_EMIT reply->uploadProgress(1, 2);
    reply->fail(QNetworkReply::TimeoutError);
    QCOMPARE(errors.count(), 0);
    QVERIFY(!base.isInFlight());
    QTRY_VERIFY(!reply);
}

void tst_RequestHandle::uploadProgressIsHandedOn()
{
    auto *const reply = new FakeReply;
    probe(reply);
    Q_EMIT reply->uploadProgress(3, 10);
    Q_EMIT reply->uploadProgress(0, 0);
    const QList<QPair<qint64, qint64>> expected{{3, 10}, {0, 0}};
    QCOMPARE(handle->progress, expected);
}

void tst_RequestHandle::progressOfAReplacedReplyIsIgnored()
{
    auto *const first = new FakeReply;
    probe(first);
    probe(new FakeReply);
    Q_EMIT first->uploadProgress(3, 10);
    QVERIFY(handle->progress.isEmpty());
}

void tst_RequestHandle::timeOutIsSentSixTimesAndLoggedSixTimes()
{
    BucketCreateRequestHandle bucketHandle;
    QSignalSpy finished(&bucketHandle, &BucketCreateRequestHandle::requestFinished);
    bucketHandle.setReply(network->put(sampleRequest(), BODY));
    bucketHandle.enableRetry(network.get(), BODY);
    for (int failed = 1; failed <= 5; ++failed) {
        network->last()->fail(QNetworkReply::TimeoutError);
        QCOMPARE(network->count(), failed + 1); // at once
        QCOMPARE(log->count(), failed);
        QCOMPARE(finished.count(), 0);
    }
    network->last()->fail(QNetworkReply::TimeoutError);
    QCOMPARE(network->count(), 6);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().value<BucketCreateResponse>().error(), Error::TimeOut);
    QCOMPARE(log->count(), 6);
    for (const LogEntry &entry : log->entries()) {
        QCOMPARE(entry.level, 1);
        QCOMPARE(entry.category, QStringLiteral("Korvo::Web::BucketCreateRequestHandle"));
        QCOMPARE(entry.message, logText("TimeoutError", "the cause"));
        QVERIFY(entry.arguments.isEmpty());
    }
}

void tst_RequestHandle::serverIsAskedSixTimes_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("sends");
    QTest::newRow("400") << 400 << 6;
    QTest::newRow("401") << 401 << 1;
    QTest::newRow("403") << 403 << 6;
    QTest::newRow("404") << 404 << 1;
    QTest::newRow("409") << 409 << 6;
    QTest::newRow("500") << 500 << 6;
    QTest::newRow("503") << 503 << 6;
}

void tst_RequestHandle::serverIsAskedSixTimes()
{
    QFETCH(int, status);
    QFETCH(int, sends);
    ScriptedServer server;
    server.setDefaultAnswer(ScriptedAnswer(status));
    QNetworkAccessManager manager;
    const QNetworkRequest request(QUrl::fromEncoded(server.plainRoot() + "/x"));
    probe(manager.put(request, BODY));
    handle->enableRetry(&manager, BODY);
    QTRY_COMPARE(handle->responses.size(), 1);
    QCOMPARE(server.requestCount(), sends);
    for (const RecordedRequest &recorded : server.requests()) {
        QCOMPARE(recorded.method, QByteArray("PUT"));
        QCOMPARE(recorded.body, BODY);
    }
    handle.reset(); // the reply goes before its manager
}

void tst_RequestHandle::withoutRetryFailureIsHandedOverAtOnce()
{
    probe(network->put(sampleRequest(), BODY));
    network->last()->fail(QNetworkReply::TimeoutError);
    QCOMPARE(network->count(), 1);
    QCOMPARE(handle->responses.size(), 1);
    QCOMPARE(handle->responses.first().second, QNetworkReply::TimeoutError);
    QCOMPARE(log->count(), 1);
}

void tst_RequestHandle::errorDecidesWhetherToSendAgain_data()
{
    QTest::addColumn<QNetworkReply::NetworkError>("error");
    QTest::addColumn<int>("sends");
    QTest::addColumn<int>("logs");
    const auto errors = QMetaEnum::fromType<QNetworkReply::NetworkError>();
    for (int i = 0; i < errors.keyCount(); ++i) {
        const auto error = static_cast<QNetworkReply::NetworkError>(errors.value(i));
        const bool isQuiet = error == QNetworkReply::OperationCanceledError
            || error == QNetworkReply::AuthenticationRequiredError;
        const bool isFinal = isQuiet || error == QNetworkReply::ContentNotFoundError || error == QNetworkReply::NoError;
        const int sends = isFinal ? 1 : 6;
        QTest::newRow(errors.key(i)) << error << sends << (isQuiet || error == QNetworkReply::NoError ? 0 : sends);
    }
}

void tst_RequestHandle::errorDecidesWhetherToSendAgain()
{
    QFETCH(QNetworkReply::NetworkError, error);
    QFETCH(int, sends);
    resendingProbe(network->post(sampleRequest(), BODY));
    for (int i = 0; i < 10 && handle->isInFlight(); ++i)
        network->last()->fail(error);
    QCOMPARE(network->count(), sends);
    QTEST(log->count(), "logs");
    QCOMPARE(handle->responses.size(), 1);
    QCOMPARE(handle->responses.first().second, error);
    QCOMPARE(handle->replyError(), error);
    const QByteArray name = QMetaEnum::fromType<QNetworkReply::NetworkError>().valueToKey(error);
    for (const QString &message : log->messages())
        QCOMPARE(message, logText(name.constData(), "the cause"));
}

void tst_RequestHandle::sameRequestIsSentAgain_data()
{
    using Access = QNetworkAccessManager;
    QTest::addColumn<Access::Operation>("operation");
    QTest::newRow("GET") << Access::GetOperation;
    QTest::newRow("POST") << Access::PostOperation;
    QTest::newRow("PUT") << Access::PutOperation;
}

void tst_RequestHandle::sameRequestIsSentAgain()
{
    QFETCH(QNetworkAccessManager::Operation, operation);
    const QNetworkRequest request = sampleRequest();
    auto *const first = new FakeReply(operation, request);
    resendingProbe(first);
    first->fail(QNetworkReply::ServiceUnavailableError);
    QCOMPARE(network->count(), 1);
    QCOMPARE(network->sent().first().operation, operation);
    QVERIFY(network->sent().first().request == request);
    QCOMPARE(network->sent().first().body, operation == QNetworkAccessManager::GetOperation ? QByteArray() : BODY);
    QCOMPARE(network->last()->parent(), handle.get());
    const QPointer<FakeReply> disposed(first);
    QTRY_VERIFY(!disposed);
}

void tst_RequestHandle::successEndsTheReSending()
{
    resendingProbe(network->put(sampleRequest(), BODY));
    network->last()->fail(QNetworkReply::ServiceUnavailableError, QStringLiteral("the cause"), "refused");
    network->last()->fail(QNetworkReply::ConnectionRefusedError);
    network->last()->finish("well");
    QCOMPARE(network->count(), 3);
    QCOMPARE(log->count(), 2);
    QCOMPARE(handle->responses.size(), 1);
    QCOMPARE(handle->responses.first().first, QStringLiteral("well"));
    QCOMPARE(handle->responses.first().second, QNetworkReply::NoError);
}

void tst_RequestHandle::budgetIsNotRefilledByANewReply()
{
    resendingProbe(network->put(sampleRequest(), BODY));
    for (int i = 0; i < 5; ++i)
        network->last()->fail(QNetworkReply::ServiceUnavailableError);
    network->last()->finish();
    resendingProbe(network->put(sampleRequest(), "next body"));
    network->last()->fail(QNetworkReply::ServiceUnavailableError);
    QCOMPARE(network->count(), 7);
    QCOMPARE(handle->responses.size(), 2);
}

void tst_RequestHandle::otherOperationsAreRefused_data()
{
    using Access = QNetworkAccessManager;
    QTest::addColumn<Access::Operation>("operation");
    QTest::addColumn<QString>("name");
    QTest::newRow("delete") << Access::DeleteOperation << QStringLiteral("Delete");
    QTest::newRow("head") << Access::HeadOperation << QStringLiteral("Head");
    QTest::newRow("custom") << Access::CustomOperation << QStringLiteral("Custom");
    QTest::newRow("unknown") << Access::UnknownOperation << QStringLiteral("Unknown");
}

void tst_RequestHandle::otherOperationsAreRefused()
{
    QFETCH(QNetworkAccessManager::Operation, operation);
    QFETCH(QString, name);
    ObjectDeleteRequestHandle deleting;
    QSignalSpy finished(&deleting, &ObjectDeleteRequestHandle::requestFinished);
    const QPointer<FakeReply> reply(new FakeReply(operation, sampleRequest()));
    deleting.setReply(reply);
    deleting.enableRetry(network.get(), BODY);
    reply->fail(QNetworkReply::ServiceUnavailableError);

    QCOMPARE(network->count(), 0);
    QCOMPARE(log->count(), 2);
    QCOMPARE(log->entries().last().level, 2);
    QCOMPARE(log->entries().last().category, QStringLiteral("Korvo::Web::ObjectDeleteRequestHandle"));
    QCOMPARE(log->entries().last().message,
             QStringLiteral("Retry mechanism doesn't support ") + name + QStringLiteral(" operation."));
    QVERIFY(log->entries().last().arguments.isEmpty());
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(finished.count(), 0);
    QVERIFY(reply); // the failed one is kept
    QVERIFY(deleting.isInFlight());
}

void tst_RequestHandle::abortEndsAsCancelled()
{
    const QPointer<QNetworkReply> reply = network->put(sampleRequest(), BODY);
    resendingProbe(reply);
    handle->abort();
    QCOMPARE(handle->responses.size(), 1); // inside the call
    QCOMPARE(handle->responses.first().second, QNetworkReply::OperationCanceledError);
    QVERIFY(!handle->isInFlight());
    QCOMPARE(network->count(), 1);
    QCOMPARE(log->count(), 0);
    QTRY_VERIFY(!reply);
}

void tst_RequestHandle::abortWithoutAReplyDoesNothing()
{
    handle->abort();
    QVERIFY(handle->responses.isEmpty());
    auto *const reply = new FakeReply;
    probe(reply);
    reply->finish();
    handle->abort();
    QCOMPARE(handle->responses.size(), 1);
}

namespace {

int warningCount = 0;

void countWarning(QtMsgType, const QMessageLogContext &, const QString &)
{
    ++warningCount;
}

} // namespace

// Qt complains in the host's log when somebody reads a reply that it has closed.
void tst_RequestHandle::abortWarnsNobody()
{
    probe(network->put(sampleRequest(), BODY));
    warningCount = 0;
    const auto formerHandler = qInstallMessageHandler(countWarning);
    handle->abort();
    qInstallMessageHandler(formerHandler);
    QCOMPARE(handle->responses.size(), 1);
    QCOMPARE(warningCount, 0);
}

void tst_RequestHandle::shortBodyIsAFailure()
{
    resendingProbe(network->get(sampleRequest()));
    network->last()->announce(10);
    network->last()->finish("123456789");
    QCOMPARE(network->count(), 2);
    QCOMPARE(log->messages(), QStringList{logText("RemoteHostClosedError", "The answer is not whole")});
    network->last()->announce(10);
    network->last()->finish("1234567890");
    QCOMPARE(handle->responses.size(), 1);
    QCOMPARE(handle->responses.first().second, QNetworkReply::NoError);
}

void tst_RequestHandle::redirectIsAFailure()
{
    auto *const reply = new FakeReply;
    probe(reply);
    reply->setStatus(302);
    reply->finish("moved");
    QCOMPARE(handle->responses.first().second, QNetworkReply::TooManyRedirectsError);
    QCOMPARE(log->count(), 1);
}

void tst_RequestHandle::receiverMayDeleteTheHandle()
{
    const QPointer<FakeReply> reply(new FakeReply);
    const QPointer<ProbeHandle> watched = probe(reply);
    handle->whenResponding = [this] { handle.release()->deleteLater(); };
    reply->finish();
    QTRY_VERIFY(!watched && !reply);

    // At once, too, although the handle stands in the middle of it.
    handle = std::make_unique<ProbeHandle>();
    auto *const next = new FakeReply;
    const QPointer<ProbeHandle> deletedAtOnce = probe(next);
    handle->whenResponding = [this, next] {
        next->setParent(nullptr); // a reply does not outlive its deletion while it emits
        handle.reset();
    };
    next->finish();
    QVERIFY(!deletedAtOnce);
    delete next;
}

void tst_RequestHandle::receiverMayInstallTheNextReply()
{
    const QPointer<FakeReply> first(new FakeReply);
    const QPointer<FakeReply> second(new FakeReply);
    probe(first);
    handle->whenResponding = [&] {
        handle->whenResponding = nullptr;
        handle->setReply(second);
    };
    first->finish("first");
    QVERIFY(handle->isInFlight());
    QTRY_VERIFY(!first);
    QVERIFY(second);
    second->finish("second");
    QCOMPARE(handle->responses.size(), 2);
    QCOMPARE(handle->responses.last().first, QStringLiteral("second"));
}

void tst_RequestHandle::waitReturnsTheText()
{
    const QPointer<FakeReply> reply(new FakeReply);
    probe(reply);
    QTimer::singleShot(0, reply, [=] { reply->finish("answer"); });
    QNetworkReply::NetworkError error = QNetworkReply::TimeoutError;
    QCOMPARE(handle->waitForReply(5000, &error), QStringLiteral("answer"));
    QCOMPARE(error, QNetworkReply::NoError);
    QCOMPARE(handle->responses.size(), 1); // handed over besides
    QVERIFY(!handle->isInFlight());
    QTRY_VERIFY(!reply);
}

void tst_RequestHandle::waitReturnsTheTextOfARefusal()
{
    auto *const reply = new FakeReply;
    probe(reply);
    QTimer::singleShot(0, reply, [=] {
        reply->fail(QNetworkReply::InternalServerError, QStringLiteral("the cause"), "refused");
    });
    QNetworkReply::NetworkError error = QNetworkReply::TimeoutError;
    QCOMPARE(handle->waitForReply(5000, &error), QStringLiteral("refused"));
    QCOMPARE(error, QNetworkReply::NoError);
    QCOMPARE(handle->replyError(), QNetworkReply::InternalServerError);
}

void tst_RequestHandle::waitEndsWithTheTimeOut()
{
    const QPointer<FakeReply> reply(new FakeReply);
    probe(reply);
    reply->receive("half of an ans");
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    QElapsedTimer elapsed;
    elapsed.start();
    QCOMPARE(handle->waitForReply(50, &error), QString());
    QVERIFY(elapsed.elapsed() >= 45);
    QCOMPARE(error, QNetworkReply::TimeoutError);
    QVERIFY(handle->isInFlight()); // it stays
    QVERIFY(!reply->isFinished());
    QVERIFY(handle->responses.isEmpty());
    QVERIFY(handle->waitForReply(1).isEmpty()); // nobody need ask for the error
}

void tst_RequestHandle::lateAnswerIsStillHandedOver()
{
    auto *const reply = new FakeReply;
    probe(reply);
    handle->waitForReply(1);
    reply->finish("late");
    QCOMPARE(handle->responses.size(), 1);
    QCOMPARE(handle->responses.first().first, QStringLiteral("late"));
}

void tst_RequestHandle::waitThatIsInterruptedIsATimeOut()
{
    QThread thread;
    std::atomic<QNetworkReply::NetworkError> error{QNetworkReply::NoError};
    std::atomic<bool> wasInFlight{false};
    QObject worker;
    worker.moveToThread(&thread);
    connect(&thread, &QThread::started, &worker, [&] {
        ProbeHandle waiting;
        waiting.setReply(new FakeReply);
        QTimer::singleShot(0, &waiting, [&] { thread.quit(); });
        QNetworkReply::NetworkError waitError = QNetworkReply::NoError;
        waiting.waitForReply(60000, &waitError);
        error = waitError;
        wasInFlight = waiting.isInFlight();
    });
    thread.start();
    QVERIFY(thread.wait(5000));
    QCOMPARE(error.load(), QNetworkReply::TimeoutError);
    QVERIFY(wasInFlight);
}

void tst_RequestHandle::waitWithoutAReplyReturnsAtOnce()
{
    QNetworkReply::NetworkError error = QNetworkReply::TimeoutError;
    QCOMPARE(handle->waitForReply(60000, &error), QString());
    QCOMPARE(error, QNetworkReply::NoError);
}

void tst_RequestHandle::waitForAFinishedReplyReturnsAtOnce()
{
    auto *const reply = new FakeReply;
    reply->finish("early"); // before it is installed
    probe(reply);
    QCOMPARE(handle->waitForReply(60000), QStringLiteral("early"));
    QVERIFY(!handle->isInFlight());

    auto *const handedOver = new FakeReply;
    probe(handedOver);
    handedOver->finish("handed over");
    QCOMPARE(handle->waitForReply(60000), QStringLiteral("handed over"));
}

void tst_RequestHandle::awaitedTimeOutIsAFailedResponse()
{
    BucketCreateRequestHandle bucketHandle;
    bucketHandle.setReply(new FakeReply);
    const BucketCreateResponse response = bucketHandle.waitForResponse(20);
    QVERIFY(!response.isSuccess());
    QCOMPARE(response.error(), Error::TimeOut);
    QCOMPARE(response.name(), QString());
    QVERIFY(bucketHandle.isInFlight());
}

void tst_RequestHandle::awaitedRefusalIsASuccess()
{
    ScriptedServer server;
    server.setDefaultAnswer(ScriptedAnswer(500, "<BucketResponse><Name>bucket-1</Name></BucketResponse>"));
    QNetworkAccessManager manager;
    BucketCreateRequestHandle bucketHandle;
    QSignalSpy finished(&bucketHandle, &BucketCreateRequestHandle::requestFinished);
    bucketHandle.setReply(manager.put(QNetworkRequest(QUrl::fromEncoded(server.plainRoot() + '/')), BODY));
    const BucketCreateResponse response = bucketHandle.waitForResponse(5000);
    QVERIFY(response.isSuccess());
    QCOMPARE(response.error(), Error::None);
    QCOMPARE(response.name(), QStringLiteral("bucket-1"));
    QCOMPARE(bucketHandle.replyError(), QNetworkReply::InternalServerError);
    // Who listens hears how it really was.
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.first().first().value<BucketCreateResponse>().error(), Error::Server);
}

QTEST_GUILESS_MAIN(tst_RequestHandle)
#include "tst_RequestHandle.moc"
