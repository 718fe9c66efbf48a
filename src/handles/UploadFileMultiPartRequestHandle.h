#pragma once

#include "handles/AbstractUploadFileRequestHandle.h"
#include "handles/TransferResponses.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QSharedPointer>

#include <utility>

namespace Korvo::Web {

/// Drives the multipart upload of one large file: init, then part after part of 4 MiB, then complete.
///
/// One handle serves the whole upload. It reads the file and decides what comes next; its creator sends each follow-up
/// request when asked by a signal, and installs the new reply here. All steps share one budget of five re-sends.
class UploadFileMultiPartRequestHandle : public AbstractUploadFileRequestHandle
{
    Q_OBJECT

public:
    /// Opens the file. When that fails, it is logged and isFileOpen() is false: nothing can be uploaded.
    explicit UploadFileMultiPartRequestHandle(const UploadFileDescriptor &file, QObject *parent = nullptr);

    bool isFileOpen() const { return file.isOpen(); }
    /// When the upload was begun, UTC.
    QDateTime begun() const { return startTime; }

    /// The body of the part before, which has been acknowledged: whoever builds the next one can use its memory again.
    /// Empty while a request is in flight, because that one may have to be sent again.
    QByteArray takeSpentBody() { return isInFlight() ? QByteArray() : std::exchange(requestBody, QByteArray()); }

    /// No further part is read or sent; the one in flight runs to its end.
    void pause();
    /// Goes on with the next part, unless a request of this upload is still on its way: that one carries on by itself.
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
    void sendDuePart();
    void sendNextPart();
    void sendPart(const QByteArray &part);
    void failRead();
    void failWith(QNetworkReply::NetworkError error);
    void finish(bool completed);

    UploadFileMultiPartFinishedResponse finishedResponse;
    QFile file;
    const QSharedPointer<QByteArray> partBuffer;
    QDateTime startTime;
    qint64 lastPartSize = 0;
    qint32 partNumber = 1;
    qint32 multipartState = Starting;
    bool uploadPaused = false;
    QString uploadId;
    bool nextPartDue = false;  // acknowledged up to here; goes on from the event loop, or when a pause ends
    bool interrupting = false; // the reply that ends now is the one that abort() cuts off
    bool ended = false;
};

} // namespace Korvo::Web
