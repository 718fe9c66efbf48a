#include "api/KorvoWebApiWorker.h"

#include "handles/FailureLog.h"
#include "handles/UploadFileDescriptor.h"
#include "handles/UploadFileRequestHandle.h"
#include "request/WebCommunicator.h"
#include "transfer/ProjectDownload.h"
#include "transfer/ProjectUpload.h"
#include "transfer/QuickviewDownloads.h"

#include <QtCore/QMutexLocker>

namespace Korvo::Web {

namespace {

int clampedPercent(int progress)
{
    return qBound(0, progress, 100);
}

/// Calls @p action with the job as what it is: the two families of downloads share their signals, not their operations.
template <class Action>
void withJob(AbstractDownload *job, Action action)
{
    if (auto *const project = qobject_cast<ProjectDownload *>(job))
        action(project);
    else if (auto *const data = qobject_cast<DynDataDownload *>(job))
        action(data);
}

template <class Job>
Job *findJob(const QMap<unsigned int, Job *> &jobs, unsigned int id, const QString &complaint)
{
    Job *const job = jobs.value(id);
    if (!job)
        logFailure(LOG_CATEGORY, complaint, {QVariant(id)});
    return job;
}

} // namespace

// Downloads

void KorvoWebApiWorker::downloadProject(QString projectId, QString webProjectFolderName, QString downloadPath,
                                        int maxSimultaneousDownloads, unsigned int downloadId)
{
    enterDownload(downloadId);
    auto *const job = new ProjectDownload(communicator.data(), int(downloadId), this);
    registerDownload(downloadId, job);
    const QString bucket = WebCommunicator::bucketName(companyId, projectId, webProjectFolderName);
    if (job->init(downloadPath, projectId, bucket, maxSimultaneousDownloads))
        job->start();
    else
        handleDownloadCompleted(downloadId);
}

void KorvoWebApiWorker::downloadQuickviewProjectData(QString projectId, QString outputFilePath, unsigned int downloadId)
{
    startDataDownload(downloadId, new QuickviewProjectDataDownload(communicator.data(), int(downloadId), this),
                      outputFilePath, projectId);
}

void KorvoWebApiWorker::downloadQuickviewSurveyData(QString projectId, QString outputFilePath, unsigned int downloadId)
{
    startDataDownload(downloadId, new QuickviewSurveyDataDownload(communicator.data(), int(downloadId), this),
                      outputFilePath, projectId);
}

void KorvoWebApiWorker::downloadQuickviewManholeData(QString projectId, QString outputFilePath, unsigned int downloadId)
{
    startDataDownload(downloadId, new QuickviewManholeDataDownload(communicator.data(), int(downloadId), this),
                      outputFilePath, projectId);
}

void KorvoWebApiWorker::downloadSingleProjectFile(QString outputFilePath, QString url, unsigned int downloadId)
{
    startDataDownload(downloadId,
                      new QuickviewProjectSingleFileDownload(communicator.data(), int(downloadId), url, this),
                      outputFilePath, QString());
}

void KorvoWebApiWorker::startDataDownload(unsigned int id, DynDataDownload *job, const QString &outputFilePath,
                                          const QString &dataId)
{
    enterDownload(id);
    registerDownload(id, job);
    if (job->start(outputFilePath, dataId))
        job->sendRequest();
    else
        handleDownloadCompleted(id);
}

void KorvoWebApiWorker::enterDownload(unsigned int id)
{
    setAnyDownloadActive(true);
    activeDownloadIds.append(id);
    Q_EMIT downloadActiveChanged(id, true);
}

void KorvoWebApiWorker::registerDownload(unsigned int id, AbstractDownload *job)
{
    downloads.insert(id, job);
    connect(job, &AbstractDownload::totalDownloadProgressChanged, this,
            &KorvoWebApiWorker::handleTotalDownloadProgressChanged);
    connect(job, &AbstractDownload::fileDownloadProgressChanged, this,
            &KorvoWebApiWorker::handleFileDownloadProgressChanged);
    connect(job, &AbstractDownload::downloadCompleted, this, &KorvoWebApiWorker::handleDownloadCompleted);
    connect(job, &AbstractDownload::errorOccurred, this, &KorvoWebApiWorker::handleDownloadError);
}

void KorvoWebApiWorker::handleFileDownloadProgressChanged(unsigned int downloadId, QString filePath, int progress)
{
    Q_EMIT downloadFileProgressChanged(downloadId, filePath, clampedPercent(progress));
}

void KorvoWebApiWorker::handleTotalDownloadProgressChanged(unsigned int downloadId, int filesCompleted, int filesTotal,
                                                           int progress, QStringList currentUploadFiles)
{
    Q_EMIT currentDownloadFilesChanged(downloadId, currentUploadFiles);
    Q_EMIT downloadTotalProgressChanged(downloadId, clampedPercent(progress));
    Q_EMIT filesToDownloadTotalChanged(downloadId, filesTotal);
    Q_EMIT completedDownloadFilesChanged(downloadId, filesCompleted);
}

// The host hears of the end before the books are closed, other than with uploads: hosts rely on that order.
// A job that ends a second time, with its last files, is heard of again; its books are closed by then.
void KorvoWebApiWorker::handleDownloadCompleted(unsigned int downloadId)
{
    Q_EMIT downloadFinished(downloadId);
    leaveActiveDownloads(downloadId);
    if (AbstractDownload *const job = downloads.take(downloadId))
        withJob(job, [](auto *download) { download->deleteWhenIdle(); });
    lowerDownloadFlagIfIdle();
}

void KorvoWebApiWorker::handleDownloadError(unsigned int downloadId, Error errorCode)
{
    Q_UNUSED(downloadId)
    Q_EMIT errorOccurred(errorCode);
}

void KorvoWebApiWorker::leaveActiveDownloads(unsigned int id)
{
    if (activeDownloadIds.removeAll(id) > 0)
        Q_EMIT downloadActiveChanged(id, false);
}

void KorvoWebApiWorker::lowerDownloadFlagIfIdle()
{
    if (activeDownloadIds.isEmpty())
        setAnyDownloadActive(false);
}

void KorvoWebApiWorker::abortDownload(unsigned int id)
{
    AbstractDownload *const job = findJob(downloads, id, QStringLiteral("Invalid id, project download not found."));
    if (!job)
        return;
    withJob(job, [](auto *download) { download->abort(); });
    downloads.remove(id);
    leaveActiveDownloads(id);
    lowerDownloadFlagIfIdle();
    job->deleteLater();
}

void KorvoWebApiWorker::pauseDownload(unsigned int id)
{
    withJob(findJob(downloads, id, QStringLiteral("Cannot pause download. Invalid id, project download not found.")),
            [](auto *download) { download->pause(); });
}

void KorvoWebApiWorker::resumeDownload(unsigned int id)
{
    withJob(findJob(downloads, id, QStringLiteral("Cannot resume download. Invalid id, project download not found.")),
            [](auto *download) { download->resume(); });
}

// Uploads

void KorvoWebApiWorker::uploadProject(QString projectId, QString projectName, QString projectPath,
                                      QDateTime projectCreationDate, ImportType importType, int maxSimultaneousUploads,
                                      unsigned int uploadId, MediaNamesList manholesMedia)
{
    enterUpload(uploadId);
    auto *const job = new ProjectUpload(communicator.data(), int(uploadId), this);
    uploads.insert(uploadId, job);
    connectUpload(job);
    job->init(projectId, projectName, projectPath, projectCreationDate, importType, maxSimultaneousUploads,
              manholesMedia);
    job->start();
}

void KorvoWebApiWorker::enterUpload(unsigned int id)
{
    setAnyUploadActive(true);
    activeUploadIds.append(id);
    Q_EMIT uploadActiveChanged(id, true);
}

void KorvoWebApiWorker::connectUpload(const ProjectUpload *job)
{
    connect(job, &ProjectUpload::totalUploadProgressChanged, this,
            &KorvoWebApiWorker::handleTotalUploadProgressChanged);
    connect(job, &ProjectUpload::fileUploadProgressChanged, this, &KorvoWebApiWorker::handleFileUploadProgressChanged);
    connect(job, &ProjectUpload::uploadCompleted, this, &KorvoWebApiWorker::handleUploadCompleted);
    connect(job, &ProjectUpload::errorOccurred, this, &KorvoWebApiWorker::handleUploadError);
}

void KorvoWebApiWorker::handleFileUploadProgressChanged(unsigned int uploadId, QString filePath, int progress)
{
    Q_EMIT uploadFileProgressChanged(uploadId, filePath, clampedPercent(progress));
}

void KorvoWebApiWorker::handleTotalUploadProgressChanged(unsigned int uploadId, int filesCompleted, int filesTotal,
                                                         int progress, QStringList currentUploadFiles)
{
    Q_EMIT currentUploadFilesChanged(uploadId, currentUploadFiles);
    Q_EMIT uploadTotalProgressChanged(uploadId, clampedPercent(progress));
    Q_EMIT filesToUploadTotalChanged(uploadId, filesTotal);
    Q_EMIT completedUploadFilesChanged(uploadId, filesCompleted);
}

// The job stays in its registry: pause, resume and abort of a finished upload are no mistakes of the host.
void KorvoWebApiWorker::handleUploadCompleted(unsigned int uploadId)
{
    leaveActiveUploads(uploadId);
    Q_EMIT uploadFinished(uploadId);
    lowerUploadFlagIfIdle();
}

void KorvoWebApiWorker::handleUploadError(unsigned int uploadId, Error errorCode)
{
    if (ProjectUpload *const job = uploads.take(uploadId)) {
        job->stop();
        job->disconnect(this);
    }
    leaveActiveUploads(uploadId);
    lowerUploadFlagIfIdle();
    Q_EMIT errorOccurred(errorCode);
}

void KorvoWebApiWorker::leaveActiveUploads(unsigned int id)
{
    if (activeUploadIds.removeAll(id) > 0)
        Q_EMIT uploadActiveChanged(id, false);
}

void KorvoWebApiWorker::lowerUploadFlagIfIdle()
{
    if (activeUploadIds.isEmpty())
        setAnyUploadActive(false);
}

void KorvoWebApiWorker::abortUpload(unsigned int id)
{
    ProjectUpload *const job
        = findJob(uploads, id, QStringLiteral("Cannot abort upload. Invalid id, project upload not found."));
    if (!job)
        return;
    // A finished job has nothing to abort and keeps its place.
    if (!activeUploadIds.contains(id))
        return;
    uploads.remove(id);
    job->abort();
    job->disconnect(this);
    leaveActiveUploads(id);
    lowerUploadFlagIfIdle();
}

void KorvoWebApiWorker::pauseUpload(unsigned int id)
{
    if (ProjectUpload *const job
        = findJob(uploads, id, QStringLiteral("Cannot pause upload. Invalid id, project upload not found.")))
        job->pause();
}

void KorvoWebApiWorker::resumeUpload(unsigned int id)
{
    if (ProjectUpload *const job
        = findJob(uploads, id, QStringLiteral("Cannot resume upload. Invalid id, project upload not found.")))
        job->resume();
}

void KorvoWebApiWorker::uploadFile(QString bucketName, QString url, QString projectFolderName, QString outputFilePath)
{
    auto *const handle = communicator->uploadFile({projectFolderName, url, outputFilePath, bucketName});
    if (!handle) {
        Q_EMIT errorOccurred(Error::FileOpen);
        return;
    }
    connect(handle, &UploadFileRequestHandle::requestFinished, this,
            [this, handle](const UploadFileResponse &response) {
                handle->deleteLater();
                if (!response.isSuccess())
                    Q_EMIT errorOccurred(response.error());
            });
}

} // namespace Korvo::Web
