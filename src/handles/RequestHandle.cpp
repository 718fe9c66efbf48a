#include "handles/RequestHandle.h"

#include "handles/FailureLog.h"
#include "handles/ReplyIntegrity.h"

#include <QtCore/QEventLoop>
#include <QtCore/QMetaEnum>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkAccessManager>

namespace Korvo::Web {

namespace {

// One send and five re-sends: a re-send is allowed while no more than this many have been made.
constexpr qint32 LAST_RETRY = 4;

// A list of half a million files is far below; what is above does not mean to end.
constexpr qint64 MAX_ANSWER_BYTES = 256 * 1024 * 1024;

QString textOf(const QByteArray &data)
{
    return QString::fromUtf8(data.constData()); // ends at the first zero byte
}

// Qt closes a reply that is aborted, and would complain in the host's log when somebody reads it nevertheless.
QByteArray restOf(QNetworkReply &finishedReply)
{
    return finishedReply.isOpen() ? finishedReply.readAll() : QByteArray();
}

// Qt has no words for the ends that only this library calls failures.
QString causeOf(const QNetworkReply &finishedReply, QNetworkReply::NetworkError error)
{
    if (error == finishedReply.error())
        return finishedReply.errorString();
    if (error == QNetworkReply::TooManyRedirectsError)
        return QStringLiteral("A redirect is not followed");
    return QStringLiteral("The answer is not whole");
}

QString errorName(QNetworkReply::NetworkError error)
{
    return QLatin1String(QMetaEnum::fromType<QNetworkReply::NetworkError>().valueToKey(error));
}

QString operationName(QNetworkAccessManager::Operation operation)
{
    switch (operation) {
    case QNetworkAccessManager::HeadOperation:
        return QStringLiteral("Head");
    case QNetworkAccessManager::DeleteOperation:
        return QStringLiteral("Delete");
    case QNetworkAccessManager::CustomOperation:
        return QStringLiteral("Custom");
    default:
        return QStringLiteral("Unknown");
    }
}

} // namespace

RequestHandle::RequestHandle(QObject *parent)
    : QObject(parent)
{
}

RequestHandle::~RequestHandle() = default;

void RequestHandle::replaceReply(QNetworkReply *newReply)
{
    if (reply && reply != newReply) {
        reply->disconnect(this);
        reply->deleteLater();
    }
    reply = newReply;
    if (reply)
        reply->setParent(this);
}

void RequestHandle::setReply(QNetworkReply *newReply)
{
    const bool isWatched = newReply == reply;
    replaceReply(newReply);
    if (!reply || isWatched)
        return;
    connect(reply, &QNetworkReply::finished, this, &RequestHandle::onReplyFinished);
    connect(reply, &QNetworkReply::uploadProgress, this, &RequestHandle::onReplyUploadProgress);
    connect(reply, &QNetworkReply::downloadProgress, this,
            [this](qint64 bytesReceived) { limitLength(bytesReceived); });
}

void RequestHandle::limitLength(qint64 bytesReceived)
{
    if (bytesReceived <= MAX_ANSWER_BYTES || tooLong || !reply)
        return;
    tooLong = true;
    reply->abort();
}

void RequestHandle::enableRetry(QNetworkAccessManager *manager, const QByteArray &body)
{
    retryEnabled = true;
    networkManager = manager;
    requestBody = body;
}

void RequestHandle::abort()
{
    if (reply)
        reply->abort();
}

QString RequestHandle::waitForReply(int timeoutMs, QNetworkReply::NetworkError *error)
{
    if (error)
        *error = QNetworkReply::NoError;
    const QPointer<QNetworkReply> awaitedReply(reply);
    if (awaitedReply && !awaitedReply->isFinished()) {
        QEventLoop loop;
        QTimer timer;
        timer.setSingleShot(true);
        timer.setTimerType(Qt::PreciseTimer); // a coarse one may end the wait too soon
        connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
        connect(awaitedReply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        timer.start(timeoutMs);
        loop.exec();
    }
    // The loop also ends when the thread is asked to stop; only a reply that has finished is an answer.
    if (reply && !reply->isFinished()) {
        if (error)
            *error = QNetworkReply::TimeoutError;
        return {};
    }
    if (reply) {
        responseData = restOf(*reply);
        judgeReply(responseData.size());
        disposeOf(reply);
    }
    return textOf(responseData);
}

void RequestHandle::retry()
{
    sendAgain();
    countRetry();
}

// Send the very same request again: date, token and signature belong together, so nothing is rebuilt.
void RequestHandle::sendAgain()
{
    const QNetworkRequest request = reply->request();
    switch (reply->operation()) {
    case QNetworkAccessManager::PutOperation:
        setReply(networkManager->put(request, requestBody));
        return;
    case QNetworkAccessManager::PostOperation:
        setReply(networkManager->post(request, requestBody));
        return;
    case QNetworkAccessManager::GetOperation:
        setReply(networkManager->get(request));
        return;
    default:
        logRetryRefusal(className(), QStringLiteral("Retry mechanism doesn't support ")
                                         + operationName(reply->operation()) + QStringLiteral(" operation."));
    }
}

void RequestHandle::handleNetworkError()
{
    if (lastError == QNetworkReply::OperationCanceledError || lastError == QNetworkReply::AuthenticationRequiredError)
        return;
    logFailure(className(), QStringLiteral("Network Error: \"") + errorName(lastError)
                                + QStringLiteral("\" occured.\n Message: \n") + causeOf(*reply, lastError));
}

void RequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_UNUSED(data)
    Q_UNUSED(error)
}

void RequestHandle::handleUploadProgress(qint64 bytesSent, qint64 bytesTotal)
{
    Q_UNUSED(bytesSent)
    Q_UNUSED(bytesTotal)
}

void RequestHandle::judgeReply(qint64 bytesReceived)
{
    lastError = tooLong ? QNetworkReply::UnknownContentError : errorOf(*reply, bytesReceived);
}

bool RequestHandle::mayRetry() const
{
    if (!retryEnabled || tooLong || retryCount > LAST_RETRY)
        return false;
    switch (lastError) {
    case QNetworkReply::OperationCanceledError:
    case QNetworkReply::ContentNotFoundError:
    case QNetworkReply::AuthenticationRequiredError:
        return false;
    default:
        return true;
    }
}

void RequestHandle::disposeOf(QNetworkReply *finishedReply)
{
    if (!finishedReply)
        return;
    finishedReply->deleteLater();
    if (finishedReply == reply)
        reply = nullptr;
}

QString RequestHandle::className() const
{
    return QLatin1String(metaObject()->className());
}

void RequestHandle::onReplyFinished()
{
    const QPointer<QNetworkReply> finishedReply(reply);
    if (!finishedReply || sender() != finishedReply)
        return;
    responseData = restOf(*finishedReply);
    judgeReply(responseData.size());
    if (lastError != QNetworkReply::NoError) {
        handleNetworkError();
        if (mayRetry()) {
            retry();
            return;
        }
    }
    const QPointer<RequestHandle> self(this);
    handleResponse(readsBytes ? QString() : textOf(responseData), lastError);
    if (self)
        disposeOf(finishedReply);
}

void RequestHandle::onReplyUploadProgress(qint64 bytesSent, qint64 bytesTotal)
{
    if (sender() == reply)
        handleUploadProgress(bytesSent, bytesTotal);
}

} // namespace Korvo::Web
