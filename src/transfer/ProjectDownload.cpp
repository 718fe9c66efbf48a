#include "transfer/ProjectDownload.h"

#include "handles/BucketHandles.h"
#include "handles/DownloadFileHandle.h"
#include "handles/FailureLog.h"
#include "request/WebCommunicator.h"
#include "transfer/TransferProgress.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Korvo::Web {

ProjectDownload::ProjectDownload(WebCommunicator *usedCommunicator, int id, QObject *parent)
    : AbstractDownload(parent)
    , communicator(usedCommunicator)
    , downloadId(id)
{
}

bool ProjectDownload::init(const QString &newDownloadPath, const QString &newProjectId, const QString &newBucketName,
                           int maxDownloads)
{
    downloadPath = newDownloadPath;
    projectId = newProjectId;
    bucketName = newBucketName;
    maxSimultaneousDownloads = maxDownloads;
    if (QDir().mkpath(downloadPath)) {
        // Resolved once: what is written and what an abort removes must be one folder, wherever the host stands by then.
        downloadPath = QFileInfo(downloadPath).canonicalFilePath();
        return true;
    }
    logFailure(LOG_CATEGORY, QStringLiteral("Couldn't create download path: \"") + downloadPath
                                 + QStringLiteral("\"\nFor bucket: ") + bucketName);
    Q_EMIT errorOccurred(downloadId, Error::DownloadFolder);
    return false;
}

void ProjectDownload::start()
{
    auto *const handle = communicator->listFilesForDownload(bucketName, QString(), {});
    handle->setParent(this);
    connect(handle, &ListFilesFromLocationsRequestHandle::requestFinished, this, &ProjectDownload::gotListFileResults);
}

void ProjectDownload::gotListFileResults(ListOfFilesFromLocationResponse response)
{
    if (sender())
        sender()->deleteLater();
    if (aborted)
        return;
    if (!response.isSuccess())
        Q_EMIT errorOccurred(downloadId, response.error());
    const QList<RemoteFileEntry> entries = response.entries();
    if (response.count() > entries.size())
        logFailure(LOG_CATEGORY, QStringLiteral("The list of remote files is shorter than the server says."));
    if (!planDownload(entries))
        return;
    listed = true;
    if (!paused)
        schedule();
}

// False when somebody who heard of a refused name has aborted the download.
bool ProjectDownload::planDownload(const QList<RemoteFileEntry> &entries)
{
    DownloadPlan plan{DownloadTarget(downloadPath)};
    filesTotal = entries.size();
    for (const RemoteFileEntry &entry : entries) {
        const DownloadPlan::Verdict verdict = plan.add(entry);
        if (verdict == DownloadPlan::Verdict::Skip || verdict == DownloadPlan::Verdict::Refuse)
            --filesTotal;
        if (verdict == DownloadPlan::Verdict::Refuse)
            Q_EMIT errorOccurred(downloadId, Error::DownloadFolder);
        if (aborted)
            return false;
    }
    filesTotal -= plan.replacedCopies();
    pendingFiles = plan.files();
    for (const RemoteFile &file : qAsConst(pendingFiles))
        totalBytes += quint64(qMax(file.size, qint64(0)));
    return true;
}

// The end is reported as soon as no file is left to start, even while others are in flight, and again when these end:
// hosts count on it.
void ProjectDownload::schedule()
{
    while (activeDownloads.size() < maxSimultaneousDownloads && !aborted) {
        if (pendingFiles.isEmpty()) {
            reportTotal();
            if (!aborted)
                Q_EMIT downloadCompleted(downloadId);
            return;
        }
        startFile(pendingFiles.takeFirst());
        if (paused) // by whoever heard of a file that cannot be written
            return;
    }
}

void ProjectDownload::startFile(const RemoteFile &file)
{
    auto *const handle = communicator->downloadFile(bucketName, file.key, file.localPath, file.size);
    if (handle->fileError() != Error::None) {
        const Error error = handle->fileError();
        handle->deleteLater();
        Q_EMIT errorOccurred(downloadId, error);
        return;
    }
    handle->setParent(this);
    activeDownloads.insert(file.key, {handle, file});
    currentFiles = activeDownloads.keys();
    connect(handle, &RequestHandle::errorOccurred, this, &ProjectDownload::handleError);
    connect(handle, &DownloadFileHandle::downloadedBytesChanged, this, &ProjectDownload::updateBytes);
    // The answer is judged before the file is counted.
    connect(handle, &DownloadFileHandle::requestFinished, this, &ProjectDownload::handleResponse);
    connect(handle, &DownloadFileHandle::requestFinished, this, &ProjectDownload::fileDownloadFinished);
}

void ProjectDownload::updateBytes(qint64 fileDownloadedBytes, qint64 lastStepDownloadedBytes, qint64 totalFileBytes,
                                  QString downloadFile)
{
    const auto file = activeDownloads.find(downloadFile);
    if (file != activeDownloads.end()) {
        // A re-send takes back the whole file, though the attempt before may have brought less of it.
        lastStepDownloadedBytes = qMax(lastStepDownloadedBytes, -file->countedBytes);
        file->countedBytes += lastStepDownloadedBytes;
    }
    downloadedBytes += lastStepDownloadedBytes;
    Q_EMIT fileDownloadProgressChanged(downloadId, downloadFile,
                                       percentOf(double(fileDownloadedBytes), double(totalFileBytes)));
    reportTotal();
}

void ProjectDownload::reportTotal()
{
    Q_EMIT totalDownloadProgressChanged(downloadId, filesCompleted, filesTotal,
                                        percentOf(double(downloadedBytes), double(totalBytes)), currentFiles);
}

ProjectDownload::FileInFlight *ProjectDownload::find(QObject *handle)
{
    for (FileInFlight &file : activeDownloads) {
        if (file.handle == handle)
            return &file;
    }
    return nullptr;
}

void ProjectDownload::handleResponse(DownloadFileResponse response)
{
    if (response.isSuccess())
        return;
    if (FileInFlight *const file = find(sender())) {
        file->failed = true;
        file->ended = true;
    }
    if (!aborted)
        Q_EMIT errorOccurred(downloadId, response.error());
}

// Told at once, after an abort too: what a disk refuses is news whatever became of the download.
void ProjectDownload::handleError(Korvo::Web::Error errorCode)
{
    auto *const handle = qobject_cast<DownloadFileHandle *>(sender());
    if (FileInFlight *const file = find(handle))
        file->ended = true;
    Q_EMIT errorOccurred(downloadId, errorCode);
    if (!handle || !find(handle))
        return;
    handle->abort();
    endFile(handle);
}

void ProjectDownload::fileDownloadFinished()
{
    FileInFlight *const file = find(sender());
    if (!file)
        return;
    if (!file->failed)
        ++filesCompleted;
    file->ended = true;
    DownloadFileHandle *const handle = file->handle;
    reportTotal(); // while the finished file is still among the current ones
    endFile(handle);
}

void ProjectDownload::endFile(DownloadFileHandle *handle)
{
    activeDownloads.remove(handle->remotePath());
    currentFiles = activeDownloads.keys();
    handle->deleteLater();
    if (pendingFiles.isEmpty() && activeDownloads.isEmpty() && !aborted)
        Q_EMIT downloadCompleted(downloadId);
    else if (!paused)
        schedule();
    if (retiring && activeDownloads.isEmpty())
        deleteLater();
}

void ProjectDownload::pause()
{
    if (aborted)
        return;
    paused = true;
    const auto files = activeDownloads.values();
    activeDownloads.clear();
    currentFiles.clear();
    for (int i = files.size() - 1; i >= 0; --i) {
        const FileInFlight &file = files.at(i);
        file.handle->disconnect(this);
        file.handle->abort();
        file.handle->deleteLater();
        if (file.ended)
            continue;
        downloadedBytes -= file.countedBytes;
        pendingFiles.prepend(file.file);
    }
}

void ProjectDownload::resume()
{
    if (aborted)
        return;
    paused = false;
    if (listed) // else the listing's answer goes on by itself
        schedule();
}

void ProjectDownload::abort()
{
    if (aborted)
        return;
    paused = true;
    aborted = true;
    pendingFiles.clear();
    const auto files = activeDownloads.values(); // a copy: nothing that an abort sets off may change the list
    for (const FileInFlight &file : files)
        file.handle->abort();
    if (!QDir(downloadPath).removeRecursively())
        logFailure(LOG_CATEGORY, QStringLiteral("Error while trying to abort download.")
                                     + QStringLiteral("Couldn't remove download path."));
}

void ProjectDownload::deleteWhenIdle()
{
    retiring = true;
    if (activeDownloads.isEmpty())
        deleteLater();
}

} // namespace Korvo::Web
