#include "handles/UploadFileMultiPartRequestHandle.h"

#include "handles/FailureLog.h"
#include "handles/NetworkOutcome.h"

#include <QtCore/QPointer>

#include <utility>

namespace Korvo::Web {

namespace {

constexpr int PART_BYTES = 4 * 1024 * 1024;

// Reading and encoding so much takes well below a millisecond. A multiple of three, so that the Base64 of a slice ends
// without padding.
constexpr int SLICE_BYTES = 384 * 1024;
static_assert(SLICE_BYTES % 3 == 0);

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
    , partBuffer(PartBuffer::ofThisThread())
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

UploadFileMultiPartRequestHandle::~UploadFileMultiPartRequestHandle()
{
    partBuffer->leave(this);
}

void UploadFileMultiPartRequestHandle::pause()
{
    uploadPaused = true;
    stopReading();
    dropSpentBody();
}

// A pause may last for days; the memory of a part is not kept for it.
void UploadFileMultiPartRequestHandle::dropSpentBody()
{
    if (uploadPaused && nextPartDue)
        requestBody.clear();
    if (uploadPaused)
        partBuffer->dropBodies();
}

void UploadFileMultiPartRequestHandle::resume()
{
    uploadPaused = false;
    const QPointer<UploadFileMultiPartRequestHandle> self(this);
    beginDuePart();
    if (self)
        readToItsEnd();
}

void UploadFileMultiPartRequestHandle::abort()
{
    if (isEnding() || ended)
        return;
    multipartState = Aborted; // first: the reply finishes inside its abort
    nextPartDue = false;
    stopReading();
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
// the next body can take the place of this one and two of them never stand in memory at once. Meanwhile the upload may
// have been paused, aborted, or paused and resumed.
void UploadFileMultiPartRequestHandle::scheduleNextPart()
{
    disposeOf(reply); // first: the loop takes up both in this order
    nextPartDue = true;
    dropSpentBody();
    QMetaObject::invokeMethod(this, &UploadFileMultiPartRequestHandle::beginDuePart, Qt::QueuedConnection);
}

// A file that has shrunk meanwhile ends too soon.
void UploadFileMultiPartRequestHandle::beginDuePart()
{
    if (!nextPartDue || reading || uploadPaused || isInFlight())
        return;
    const bool isSought = file.seek(partStart);
    if (isSought && !file.atEnd()) {
        beginReading();
        return;
    }
    nextPartDue = false;
    partBuffer->keepBody(takeSpentBody());
    if (isSought && partStart >= totalFileBytes)
        Q_EMIT finishUpload(uploadId, descriptor.projectFolderName);
    else
        failRead();
}

void UploadFileMultiPartRequestHandle::beginReading()
{
    if (!partBuffer->takeFor(this, [this] { beginDuePart(); }))
        return;
    reading = true;
    partBuffer->bytes.reserve(PART_BYTES);
    if (partBody)
        partBody->begin(expectedPartBytes(), takeSpentBody());
    scheduleReading();
}

// Of the part before, or of another file.
QByteArray UploadFileMultiPartRequestHandle::takeSpentBody()
{
    const QByteArray own = partStart > 0 ? std::exchange(requestBody, QByteArray()) : QByteArray();
    return own.isEmpty() ? partBuffer->takeBody() : own;
}

int UploadFileMultiPartRequestHandle::expectedPartBytes() const
{
    return int(qBound(qint64(0), totalFileBytes - partStart, qint64(PART_BYTES)));
}

void UploadFileMultiPartRequestHandle::scheduleReading()
{
    QMetaObject::invokeMethod(this, &UploadFileMultiPartRequestHandle::readOn, Qt::QueuedConnection);
}

void UploadFileMultiPartRequestHandle::readOn()
{
    if (!reading)
        return;
    if (readSlice())
        scheduleReading();
    else
        sendPart();
}

void UploadFileMultiPartRequestHandle::readToItsEnd()
{
    if (!reading)
        return;
    while (readSlice()) { }
    sendPart();
}

/// @return whether there may be more of the part
bool UploadFileMultiPartRequestHandle::readSlice()
{
    QByteArray &bytes = partBuffer->bytes;
    const int start = bytes.size();
    const int wanted = qMin(SLICE_BYTES, PART_BYTES - start);
    bytes.resize(start + wanted);
    const int read = int(qMax(file.read(bytes.data() + start, wanted), qint64(0)));
    bytes.resize(start + read);
    if (partBody && read > 0)
        partBody->add(QByteArray::fromRawData(bytes.constData() + start, read));
    return read == wanted && bytes.size() < PART_BYTES;
}

// The part stays due, and is read again from its start.
void UploadFileMultiPartRequestHandle::stopReading()
{
    partBuffer->leave(this);
    if (std::exchange(reading, false) && partBody)
        partBody->drop();
}

void UploadFileMultiPartRequestHandle::sendPart()
{
    const QByteArray &part = partBuffer->bytes;
    nextPartDue = false;
    if (part.isEmpty()) {
        stopReading();
        failRead();
        return;
    }
    reading = false;
    partBuffer->leave(this); // the next file reads from the event loop, so not before this part has been sent
    lastPartSize = part.size();
    partStart += lastPartSize;
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
