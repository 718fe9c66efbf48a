#include "handles/UploadFileMultiPartRequestHandle.h"

#include "handles/FailureLog.h"
#include "handles/NetworkOutcome.h"

#include <QtCore/QPointer>
#include <QtCore/QWeakPointer>

namespace Korvo::Web {

namespace {

constexpr int PART_BYTES = 4 * 1024 * 1024;

// The root elements of the answers tell which step was answered.
const QString INIT_MARKER = QStringLiteral("InitMultipartUploadResponse");
const QString PART_MARKER = QStringLiteral("PutMultipartUploadResponse");
const QString ABORT_MARKER = QStringLiteral("AbortMultipartUploadResponse");
const QString COMPLETE_MARKER = QStringLiteral("CompleteMultipartUploadResponse");

// A part is read and encoded in one go, so one buffer does for all files that a thread has in flight. It goes with the
// last of them.
QSharedPointer<QByteArray> sharedPartBuffer()
{
    static thread_local QWeakPointer<QByteArray> shared;
    QSharedPointer<QByteArray> buffer = shared.toStrongRef();
    if (!buffer) {
        buffer.reset(new QByteArray);
        buffer->reserve(PART_BYTES);
        shared = buffer;
    }
    return buffer;
}

/// Reads the next part into @p buffer; empty when nothing can be read.
void readPart(QFile &file, QByteArray &buffer)
{
    buffer.resize(PART_BYTES);
    buffer.resize(int(qMax(file.read(buffer.data(), PART_BYTES), qint64(0))));
}

} // namespace

UploadFileMultiPartRequestHandle::UploadFileMultiPartRequestHandle(const UploadFileDescriptor &uploadFile,
                                                                   QObject *parent)
    : AbstractUploadFileRequestHandle(uploadFile, parent)
    , file(uploadFile.localFilePath)
    , partBuffer(sharedPartBuffer())
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
    dropSpentBody();
}

// A pause may last for days; the memory of a part is not kept for it.
void UploadFileMultiPartRequestHandle::dropSpentBody()
{
    if (uploadPaused && nextPartDue)
        requestBody.clear();
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

// The next part waits for the event loop: by then the reply is gone and has let go of the body that it carried, so that
// the next body can take the place of this one and two of them never stand in memory at once.
void UploadFileMultiPartRequestHandle::scheduleNextPart()
{
    disposeOf(reply); // first: the loop takes up both in this order
    nextPartDue = true;
    dropSpentBody();
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
    readPart(file, *partBuffer);
    if (partBuffer->isEmpty())
        failRead();
    else
        sendPart(*partBuffer);
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
