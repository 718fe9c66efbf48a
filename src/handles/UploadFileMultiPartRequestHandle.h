#pragma once

#include "handles/AbstractUploadFileRequestHandle.h"
#include "handles/PartBody.h"
#include "handles/PartBuffer.h"
#include "handles/TransferResponses.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QSharedPointer>

#include <memory>

namespace Korvo::Web {

/// Drives the multipart upload of one large file: init, then part after part of 4 MiB, then complete.
///
/// One handle serves the whole upload. It reads the file and decides what comes next; its creator sends each follow-up
/// request when asked by a signal, and installs the new reply here. All steps share one budget of five re-sends.
///
/// A part is read in slices, and the event loop gets its turn after each: on a slow disk a part takes long, and every other
/// transfer and call waits for this thread.
class UploadFileMultiPartRequestHandle : public AbstractUploadFileRequestHandle
{
    Q_OBJECT

public:
    /// Opens the file. When that fails, it is logged and isFileOpen() is false: nothing can be uploaded.
    explicit UploadFileMultiPartRequestHandle(const UploadFileDescriptor &file, QObject *parent = nullptr);
    ~UploadFileMultiPartRequestHandle() override;

    bool isFileOpen() const { return file.isOpen(); }
    /// When the upload was begun, UTC.
    QDateTime begun() const { return startTime; }

    /// @param body  gets each part slice by slice, before uploadNextPart() asks for it to be sent
    void setPartBody(std::unique_ptr<PartBody> body) { partBody = std::move(body); }

    /// No further part is read or sent; the one in flight runs to its end. One that is being read is read again later.
    void pause();
    /// Goes on with the next part at once, unless a request of this upload is still on its way: that one carries on by
    /// itself.
    void resume();
    /// Cuts off the request in flight and asks for the abort request; its answer ends the handle. Has no effect twice.
    void abort() override;

Q_SIGNALS:
    void abortUpload(QString uploadID);
    void finishUpload(QString uploadID, QString projectFolderName);
    void uploadNextPart(QString uploadID, QByteArray data, int partNumber);
    void requestFinished(UploadFileMultiPartFinishedResponse response);
    /// The file cannot be brought to its end. The host must hear of it: an upload neither hangs nor loses a file in silence.
    void uploadFailed(Korvo::Web::Error error);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
    void handleUploadProgress(qint64 bytesSent, qint64 bytesTotal) override;

private:
    enum State : qint32 { Starting = 0, Sending = 1, Aborted = 2, ReadFailed = 3 };

    bool isEnding() const { return multipartState == Aborted || multipartState == ReadFailed; }
    void handleInit(const QString &data, QNetworkReply::NetworkError error);
    void handleUnaskedAbort(QNetworkReply::NetworkError error);
    void handleEnding(const QString &data);
    void scheduleNextPart();
    void dropSpentBody();
    void beginDuePart();
    void beginReading();
    int expectedPartBytes() const;
    QByteArray takeSpentBody();
    void scheduleReading();
    void readOn();
    void readToItsEnd();
    bool readSlice();
    void stopReading();
    void sendPart();
    void failRead();
    void failWith(QNetworkReply::NetworkError error);
    void finish(bool completed);

    UploadFileMultiPartFinishedResponse finishedResponse;
    QFile file;
    const QSharedPointer<PartBuffer> partBuffer;
    std::unique_ptr<PartBody> partBody;
    QDateTime startTime;
    qint64 lastPartSize = 0;
    qint32 partNumber = 1;
    qint32 multipartState = Starting;
    bool uploadPaused = false;
    QString uploadId;
    qint64 partStart = 0;      // where in the file the part begins that is due, being read or in flight
    bool nextPartDue = false;  // acknowledged up to here; goes on from the event loop, or when a pause ends
    bool reading = false;      // the part that is due; the buffer is taken
    bool interrupting = false; // the reply that ends now is the one that abort() cuts off
    bool ended = false;
};

} // namespace Korvo::Web
