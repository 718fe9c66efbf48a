#pragma once

#include "handles/RequestHandle.h"
#include "handles/TransferResponses.h"

#include <QtCore/QFile>
#include <QtCore/QTimer>

namespace Korvo::Web {

/// Streams one reply into a local file as it arrives, holding no more of it than one read buffer.
class DownloadFileHandle : public RequestHandle
{
    Q_OBJECT

public:
    /// Creates the folder of @p localFilePath and opens the file, truncated. When that fails, fileError() tells; it is
    /// also logged. errorOccurred() is emitted too, though inside construction nobody can hear it.
    ///
    /// @param remotePath     name of the file in its bucket, handed back in every progress signal
    /// @param expectedBytes  size by the listing
    DownloadFileHandle(const QString &remotePath, const QString &localPath, qint64 expectedBytes,
                       QObject *parent = nullptr);
    ~DownloadFileHandle() override;

    void setReply(QNetworkReply *newReply) override;

    /// Ends the download for good: nothing more is written, nothing more is emitted, the file is closed.
    void abort();

    /// Error::None while the file can be written, else why it could not be made or written. requestFinished() tells of
    /// the reply only, not of the disk.
    Error fileError() const { return localError; }

    QString remotePath() const { return remoteFilePath; }

Q_SIGNALS:
    void requestFinished(DownloadFileResponse response);
    /// @p lastBytesRead is negative when a new attempt takes back what the one before had counted.
    void downloadedBytesChanged(qint64 totalBytesRead, qint64 lastBytesRead, qint64 totalBytesToRead,
                                QString remoteFilePath);

protected:
    void retry() override;

private Q_SLOTS:
    void onReplyReadyRead();
    void onReplyFinished();

private:
    void openFile();
    void takeStep();
    void fail(Error error, const QString &message);
    void judgeDownload();
    void completeFile();
    void failWrite();
    bool isStillDownloading(QNetworkReply *finishedReply);

    QString remoteFilePath;
    QString localFilePath;
    QFile file;
    qint64 totalBytesRead = 0;
    qint64 totalBytesToRead = 0;
    QTimer stepTimer; // runs after each step: bytes that come meanwhile wait for the next
    bool fileReady = false;
    bool aborted = false;
    Error localError = Error::None;
};

} // namespace Korvo::Web
