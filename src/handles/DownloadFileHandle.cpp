#include "handles/DownloadFileHandle.h"

#include "handles/FailureLog.h"
#include "handles/ReplyIntegrity.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtNetwork/QNetworkAccessManager>

#include <chrono>

using namespace std::chrono_literals;

namespace Korvo::Web {

namespace {

// A step costs the same for one byte as for many: a write, and seven signals on their way to the host. On a fast line
// the steps would cost more than the bytes.
constexpr qint64 STEP_BYTES = 128 * 1024;
constexpr std::chrono::milliseconds STEP_TIME = 20ms;

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

} // namespace

DownloadFileHandle::DownloadFileHandle(const QString &remotePath, const QString &localPath, qint64 expectedBytes,
                                       QObject *parent)
    : RequestHandle(parent)
    , remoteFilePath(remotePath)
    , localFilePath(localPath)
    , file(localPath)
    , totalBytesToRead(expectedBytes)
{
    stepTimer.setSingleShot(true);
    stepTimer.setInterval(STEP_TIME);
    connect(&stepTimer, &QTimer::timeout, this, &DownloadFileHandle::takeStep);
    openFile();
}

DownloadFileHandle::~DownloadFileHandle() = default;

void DownloadFileHandle::openFile()
{
    const QFileInfo target(localFilePath);
    const QString folder = target.absolutePath();
    if (!QDir().mkpath(folder)) {
        fail(Error::DownloadFolder, QStringLiteral("Couldn't create download path: ") + quoted(folder));
        return;
    }
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        fail(Error::FileOpen, QStringLiteral("Couldn't open file: ") + quoted(target.absoluteFilePath()));
        return;
    }
    fileReady = true;
}

void DownloadFileHandle::fail(Error error, const QString &message)
{
    localError = error;
    logFailure(className(), message);
    Q_EMIT errorOccurred(error);
}

void DownloadFileHandle::setReply(QNetworkReply *newReply)
{
    const bool isWatched = newReply == reply;
    replaceReply(newReply);
    if (!reply || isWatched)
        return;
    stepTimer.stop(); // a new attempt shows at once that it goes on
    if (fileReady)    // else nobody reads, and a full buffer would hold the reply up for ever
        watchBody(reply, totalBytesToRead);
    connect(reply, &QNetworkReply::readyRead, this, &DownloadFileHandle::onReplyReadyRead);
    connect(reply, &QNetworkReply::finished, this, &DownloadFileHandle::onReplyFinished);
}

void DownloadFileHandle::abort()
{
    aborted = true; // first: the reply finishes inside its abort
    RequestHandle::abort();
    if (!fileReady)
        return;
    fileReady = false;
    stepTimer.stop();
    file.close();
}

void DownloadFileHandle::onReplyReadyRead()
{
    if (!stepTimer.isActive() || (reply && reply->bytesAvailable() >= STEP_BYTES))
        takeStep();
}

void DownloadFileHandle::takeStep()
{
    // Qt closes a reply that is given up, and would complain in the host's log when somebody reads it nevertheless.
    if (!fileReady || aborted || !reply || !reply->isOpen())
        return;
    const QByteArray chunk = readBody(*reply);
    if (chunk.isEmpty() || !carriesContent(*reply))
        return;
    stepTimer.start();
    totalBytesRead += chunk.size();
    if (file.write(chunk) != chunk.size()) {
        failWrite();
        return;
    }
    Q_EMIT downloadedBytesChanged(totalBytesRead, chunk.size(), totalBytesToRead, remoteFilePath);
}

void DownloadFileHandle::onReplyFinished()
{
    const QPointer<QNetworkReply> finishedReply(reply);
    if (!finishedReply || sender() != finishedReply)
        return;
    const QPointer<DownloadFileHandle> self(this);
    takeStep(); // what came with the end of the reply
    if (!self || !isStillDownloading(finishedReply))
        return;
    judgeDownload();
    if (lastError != QNetworkReply::NoError) {
        handleNetworkError();
        if (mayRetry()) {
            retry();
            return;
        }
    } else {
        completeFile();
        if (!self || !isStillDownloading(finishedReply))
            return;
    }
    DownloadFileResponse response;
    response.setOutcome(lastError);
    disposeOf(finishedReply);
    Q_EMIT requestFinished(response);
}

// Whoever hears of the bytes, or of a failed write, may have moved on.
bool DownloadFileHandle::isStillDownloading(QNetworkReply *finishedReply)
{
    if (finishedReply && !aborted && reply == finishedReply)
        return true;
    disposeOf(finishedReply);
    return false;
}

void DownloadFileHandle::judgeDownload()
{
    judgeReply(totalBytesRead);
    const bool lengthUnknown = !reply->header(QNetworkRequest::ContentLengthHeader).isValid();
    // Without a length the listing is the only witness that the connection was not closed too soon.
    if (lastError == QNetworkReply::NoError && lengthUnknown && totalBytesRead < totalBytesToRead)
        lastError = QNetworkReply::RemoteHostClosedError;
}

// A full disk shows no earlier than here: until the flush the file only promises to write.
void DownloadFileHandle::completeFile()
{
    const bool flushed = file.flush();
    // An earlier attempt may have written more than this one.
    if (!flushed || (file.size() > totalBytesRead && !file.resize(totalBytesRead)))
        failWrite();
}

void DownloadFileHandle::failWrite()
{
    fail(Error::FileWrite,
         QStringLiteral("Error while writing to file: ") + quoted(file.fileName()) + QLatin1Char(' '));
}

void DownloadFileHandle::retry()
{
    const QPointer<QNetworkReply> failedReply(reply);
    const QPointer<DownloadFileHandle> self(this);
    totalBytesRead = 0;
    Q_EMIT downloadedBytesChanged(0, -file.size(), totalBytesToRead, remoteFilePath);
    if (!self || !isStillDownloading(failedReply))
        return;
    if (!file.seek(0)) // not truncated: the new attempt overwrites from the start
        failWrite();
    if (!self || !isStillDownloading(failedReply))
        return;
    setReply(networkManager->get(reply->request()));
    countRetry();
}

} // namespace Korvo::Web
