#include "handles/UploadFileMultiPartRequestHandle.h"

#include "handles/FailureLog.h"
#include "handles/NetworkOutcome.h"

#include <QtCore/QPointer>

namespace Korvo::Web {

namespace {

constexpr qint64 PART_BYTES = 4 * 1024 * 1024;

// The root elements of the answers tell which step was answered.
const QString INIT_MARKER = QStringLiteral("InitMultipartUploadResponse");
const QString PART_MARKER = QStringLiteral("PutMultipartUploadResponse");
const QString ABORT_MARKER = QStringLiteral("AbortMultipartUploadResponse");
const QString COMPLETE_MARKER = QStringLiteral("CompleteMultipartUploadResponse");

} // namespace

UploadFileMultiPartRequestHandle::UploadFileMultiPartRequestHandle(const UploadFileDescriptor &uploadFile,
                                                                   QObject *parent)
    : AbstractUploadFileRequestHandle(uploadFile, parent)
    , file(uploadFile.localFilePath)
    , startTime(QDateTime::currentDateTimeUtc())
{
    if (file.open(QIODevice::ReadOnly)) {
        totalFileBytes = file.size();
        return;
    }
    logFailure(className(),
               QStringLiteral("Couldn't open upload file: \"") + uploadFile.localFilePath + QLatin1Char('"'));
    Q_EMIT errorOccurred(Error::FileOpen);
}

void UploadFileMultiPartRequestHandle::pause()
{
    uploadPaused = true;
}

void UploadFileMultiPartRequestHandle::resume()
{
    uploadPaused = false;
    sendDuePart();
}

void UploadFileMultiPartRequestHandle::abort()
{
    if (isEnding() || ended)
        return;
    multipartState = Aborted; // first: the reply finishes inside its abort
    nextPartDue = false;
    interrupting = true;
    RequestHandle::abort();
    interrupting = false;
    Q_EMIT abortUpload(uploadId);
}

void UploadFileMultiPartRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    if (interrupting || ended)
        return;
    if (isEnding())
        handleEnding(data);
    else if (data.contains(INIT_MARKER))
        handleInit(data, error);
    else if (data.contains(PART_MARKER) && error == QNetworkReply::NoError) // a refusal may name its request too
        scheduleNextPart();
    else if (data.contains(ABORT_MARKER))
        handleUnaskedAbort(error);
    else if (data.contains(COMPLETE_MARKER))
        finish(true);
    else
        failWith(error);
}

void UploadFileMultiPartRequestHandle::handleInit(const QString &data, QNetworkReply::NetworkError error)
{
    const auto response = answered<UploadFileMultiPartInitResponse>(data, error);
    uploadId = response.multipartUploadId();
    multipartState = Sending;
    scheduleNextPart();
}

void UploadFileMultiPartRequestHandle::handleUnaskedAbort(QNetworkReply::NetworkError error)
{
    ended = true; // there is nothing left to abort for whoever hears of the failure
    const QPointer<UploadFileMultiPartRequestHandle> self(this);
    failWith(error);
    if (self)
        finish(false);
}

// Whatever the answer to the abort request says, there is nothing left to do for this upload.
void UploadFileMultiPartRequestHandle::handleEnding(const QString &data)
{
    finish(!data.contains(ABORT_MARKER) && data.contains(COMPLETE_MARKER));
}

// The next part waits for the event loop: by then the reply is gone, and with it the part that it carried, so that two
// of them never stand in memory at once.
void UploadFileMultiPartRequestHandle::scheduleNextPart()
{
    requestBody.clear();
    disposeOf(reply); // first: the loop takes up both in this order
    nextPartDue = true;
    QMetaObject::invokeMethod(this, &UploadFileMultiPartRequestHandle::sendDuePart, Qt::QueuedConnection);
}

// Meanwhile the upload may have been paused, aborted, or paused and resumed.
void UploadFileMultiPartRequestHandle::sendDuePart()
{
    if (nextPartDue && !uploadPaused && !isInFlight())
        sendNextPart();
}

void UploadFileMultiPartRequestHandle::sendNextPart()
{
    nextPartDue = false;
    if (file.atEnd()) {
        // A file that has shrunk meanwhile ends too soon.
        if (file.pos() < totalFileBytes)
            failRead();
        else
            Q_EMIT finishUpload(uploadId, descriptor.projectFolderName);
        return;
    }
    const QByteArray part = file.read(PART_BYTES);
    if (part.isEmpty())
        failRead();
    else
        sendPart(part);
}

void UploadFileMultiPartRequestHandle::sendPart(const QByteArray &part)
{
    lastPartSize = part.size();
    stepUploadedSize = 0;
    const qint32 number = partNumber++; // first: the answer may be handled inside the emission
    Q_EMIT uploadNextPart(uploadId, part, number);
}

void UploadFileMultiPartRequestHandle::failRead()
{
    multipartState = ReadFailed;
    const QPointer<UploadFileMultiPartRequestHandle> self(this);
    Q_EMIT abortUpload(uploadId);
    if (self)
        Q_EMIT uploadFailed(Error::FileOpen);
}

void UploadFileMultiPartRequestHandle::failWith(QNetworkReply::NetworkError error)
{
    const Error code = errorFor(error);
    Q_EMIT uploadFailed(code == Error::None ? Error::Network : code);
}

void UploadFileMultiPartRequestHandle::finish(bool completed)
{
    ended = true;
    uploaded = completed;
    finishedResponse.setCompleted(completed);
    Q_EMIT requestFinished(finishedResponse);
}

void UploadFileMultiPartRequestHandle::handleUploadProgress(qint64 bytesSent, qint64 bytesTotal)
{
    if (bytesTotal <= 0) // Qt closes every upload with (0, 0)
        return;
    countSent(bytesSent + (lastPartSize - bytesTotal));
}

} // namespace Korvo::Web
