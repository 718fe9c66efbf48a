#include "transfer/ProjectUpload.h"

#include "handles/AuthenticationHandles.h"
#include "handles/BucketHandles.h"
#include "handles/FailureLog.h"
#include "handles/NetworkOutcome.h"
#include "handles/ProjectHandles.h"
#include "handles/UploadFileMultiPartRequestHandle.h"
#include "handles/UploadFileRequestHandle.h"
#include "request/WebCommunicator.h"
#include "transfer/ProjectFolderScan.h"
#include "transfer/TransferProgress.h"

#include <QtCore/QFileInfo>
#include <QtCore/QPointer>

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace Korvo::Web {

namespace {

constexpr std::chrono::milliseconds START_WAIT = 10s;
constexpr std::chrono::seconds STALL_LIMIT = 36h;
constexpr qint64 SINGLE_PART_BYTES = 4 * 1024 * 1024;

// Videos that document a project are shown as they are.
const QString UNTRANSCODED_FOLDER = QStringLiteral("Misc/Docu");

} // namespace

ProjectUpload::ProjectUpload(WebCommunicator *usedCommunicator, int id, QObject *parent)
    : QObject(parent)
    , communicator(usedCommunicator)
    , uploadId(id)
{
}

void ProjectUpload::init(const QString &newProjectId, const QString &newProjectName, const QString &newProjectPath,
                         const QDateTime &newCreationDate, ImportType newImportType, int maxUploads,
                         const MediaNamesList &nodeMedia)
{
    projectId = newProjectId;
    projectName = newProjectName;
    projectPath = newProjectPath;
    creationDate = newCreationDate;
    importType = newImportType;
    maxSimultaneousUploads = maxUploads;
    nodeMediaFiles = nodeMedia;
}

// The creation date is looked at last; by then the bucket may have been made.
void ProjectUpload::start()
{
    busy = true;
    const bool isReady = begin() && ensureBucket() && checkCreationDate();
    busy = false;
    if (aborted)
        deleteIfIdle();
    else if (isReady)
        requestListing();
}

bool ProjectUpload::begin()
{
    auto *const handle = communicator->beginUpload(projectId, projectName, creationDate);
    const BeginUploadProjectResponse response = handle->waitForResponse(int(START_WAIT.count()));
    const Error replyError = errorFor(handle->replyError());
    handle->deleteLater();
    if (aborted)
        return false;
    if (!response.isSuccess()) {
        Q_EMIT errorOccurred(uploadId, response.error());
        return false;
    }
    bucketName = response.bucketName();
    // A refusal counts as answered, but it names no bucket.
    if (bucketName.isEmpty())
        Q_EMIT errorOccurred(uploadId, replyError == Error::None ? Error::Network : replyError);
    return !bucketName.isEmpty();
}

bool ProjectUpload::ensureBucket()
{
    auto *const query = communicator->queryBucket(bucketName);
    const BucketGetResponse bucket = query->waitForResponse(int(START_WAIT.count()));
    query->deleteLater();
    if (aborted)
        return false;
    if (!bucket.isSuccess())
        Q_EMIT errorOccurred(uploadId, bucket.error());
    if (!bucket.isSuccess() || bucket.exists())
        return bucket.isSuccess();

    auto *const creation = communicator->createBucket(bucketName);
    const BucketCreateResponse created = creation->waitForResponse(int(START_WAIT.count()));
    creation->deleteLater();
    if (!created.isSuccess())
        Q_EMIT errorOccurred(uploadId, created.error());
    return created.isSuccess();
}

bool ProjectUpload::checkCreationDate()
{
    if (creationDate.isValid())
        return true;
    logFailure(LOG_CATEGORY, QStringLiteral("Project creation date cannot be null."));
    Q_EMIT errorOccurred(uploadId, Error::CreationDate);
    return false;
}

void ProjectUpload::requestListing()
{
    auto *const handle = communicator->listFiles(bucketName, QString(), {});
    handle->setParent(this);
    connect(handle, &ListFilesFromLocationsRequestHandle::requestFinished, this, &ProjectUpload::gotListFileResults);
}

void ProjectUpload::uploadProjectBeginFinished(BeginUploadProjectResponse response)
{
    Q_UNUSED(response)
    if (sender())
        sender()->deleteLater();
    schedule();
}

void ProjectUpload::gotListFileResults(ListOfFilesFromLocationResponse response)
{
    if (sender())
        sender()->deleteLater();
    if (aborted)
        return;
    const QList<RemoteFileEntry> entries = response.entries();
    for (const RemoteFileEntry &entry : entries)
        remoteFiles.insert(entry.fileName, entry);
    scanProjectFolder();
    remoteFiles.clear(); // a large bucket takes its place in memory, and nobody asks for it again
    listed = true;
    if (!paused)
        schedule();
}

void ProjectUpload::scanProjectFolder()
{
    ProjectFolderScan scan(projectPath, remoteFiles);
    pendingFiles = scan.run();
    filesTotal = int(pendingFiles.size());
    for (const LocalUploadFile &file : pendingFiles)
        totalBytes += file.size;
    const QStringList unreadableFolders = scan.unreadableFolders();
    for (const QString &folder : unreadableFolders) {
        logFailure(LOG_CATEGORY, QStringLiteral("Could not read folder: \"") + folder + QLatin1Char('"'));
        if (!aborted)
            Q_EMIT errorOccurred(uploadId, Error::FileOpen);
    }
}

void ProjectUpload::schedule()
{
    while (activeUploads.size() < maxSimultaneousUploads && !aborted && !finished) {
        if (!pendingFiles.empty()) {
            startNextFile();
            if (paused) // by whoever heard of the start
                return;
            continue;
        }
        if (activeUploads.isEmpty())
            finish();
        return;
    }
}

// Whoever hears of the start may abort; the job stays until the file has been dealt with.
void ProjectUpload::startNextFile()
{
    busy = true;
    const LocalUploadFile file = std::move(pendingFiles.front());
    pendingFiles.pop_front();
    startFile(file);
    busy = false;
    if (aborted)
        deleteIfIdle();
}

// What lies on the disk now decides: the file may have grown or gone since the scan.
void ProjectUpload::startFile(const LocalUploadFile &file)
{
    const QString key = file.remoteKey(nodeMediaFiles);
    noteSharedKey(file, key);
    const QString path = file.absolutePath();
    const UploadFileDescriptor descriptor{projectFolderName, path, key, bucketName, file.isVideo};
    const bool fitsOnePart = QFileInfo(path).size() <= SINGLE_PART_BYTES;
    auto *const handle = fitsOnePart ? startSinglePart(descriptor) : startMultiPart(descriptor);
    if (!handle) {
        Q_EMIT errorOccurred(uploadId, Error::FileOpen);
        return;
    }
    handle->setParent(this);
    connect(handle, &AbstractUploadFileRequestHandle::uploadedBytes, this, &ProjectUpload::updateBytes);
    handle->reportStart();
    activeUploads.insert(path, handle);
    currentFiles = activeUploads.keys();
    if (aborted) // by whoever heard of the start
        handle->abort();
    else if (paused)
        pauseParts(handle);
}

// In both, the error is heard of before the end: it may stop the job.
AbstractUploadFileRequestHandle *ProjectUpload::startSinglePart(const UploadFileDescriptor &file)
{
    using Handle = UploadFileRequestHandle;
    auto *const handle = communicator->uploadFile(file);
    if (!handle)
        return nullptr;
    connect(handle, &Handle::requestFinished, this, &ProjectUpload::handleSinglePartErrors);
    connect(handle, &Handle::requestFinished, this, &ProjectUpload::fileUploadFinished);
    return handle;
}

AbstractUploadFileRequestHandle *ProjectUpload::startMultiPart(const UploadFileDescriptor &file)
{
    using Handle = UploadFileMultiPartRequestHandle;
    auto *const handle = communicator->uploadFileInParts(file);
    if (!handle)
        return nullptr;
    connect(handle, &Handle::uploadFailed, this, [=](Error error) { handleFailedFile(handle, error); });
    connect(handle, &Handle::requestFinished, this, &ProjectUpload::handleMultiPartErrors);
    connect(handle, &Handle::requestFinished, this, &ProjectUpload::fileUploadFinished);
    return handle;
}

void ProjectUpload::handleSinglePartErrors(UploadFileResponse response)
{
    if (!response.isSuccess() && !stopped)
        Q_EMIT errorOccurred(uploadId, response.error());
}

void ProjectUpload::handleMultiPartErrors(UploadFileMultiPartFinishedResponse response)
{
    if (!response.isSuccess() && !stopped)
        Q_EMIT errorOccurred(uploadId, response.error());
}

// The file cannot be brought to its end; its abort clears away on the server what has arrived of it.
void ProjectUpload::handleFailedFile(UploadFileMultiPartRequestHandle *handle, Error error)
{
    if (!stopped)
        Q_EMIT errorOccurred(uploadId, error);
    handle->abort();
}

void ProjectUpload::noteSharedKey(const LocalUploadFile &file, const QString &key)
{
    if (!file.isPicture && !file.isVideo)
        return;
    // A file that starts over is no second one.
    const QString path = file.absolutePath();
    if (usedMediaKeys.value(key, path) != path)
        logFailure(LOG_CATEGORY, QStringLiteral("Two media files have the same remote name, the later one replaces the "
                                                "earlier one: ")
                                     + path);
    usedMediaKeys.insert(key, path);
}

void ProjectUpload::updateBytes(qint64 fileUploadedBytes, qint64 lastStepUploadedBytes, qint64 totalFileBytes,
                                QString uploadFile)
{
    if (aborted)
        return;
    uploadedBytes += lastStepUploadedBytes;
    Q_EMIT fileUploadProgressChanged(uploadId, uploadFile,
                                     percentOf(double(fileUploadedBytes), double(totalFileBytes)));
    reportTotal();
}

void ProjectUpload::reportTotal()
{
    Q_EMIT totalUploadProgressChanged(uploadId, filesCompleted, filesTotal,
                                      percentOf(double(uploadedBytes), double(totalBytes)), currentFiles);
}

void ProjectUpload::fileUploadFinished()
{
    auto *const handle = qobject_cast<AbstractUploadFileRequestHandle *>(sender());
    if (!handle)
        return;
    if (!aborted)
        countFinished(handle);
    forget(handle);
    if (aborted) // perhaps by whoever heard of the file's end
        deleteIfIdle();
    else if (pendingFiles.empty() && activeUploads.isEmpty())
        finish();
    else if (!paused)
        schedule();
}

void ProjectUpload::countFinished(const AbstractUploadFileRequestHandle *handle)
{
    if (handle->isUploaded())
        ++filesCompleted;
    reportTotal(); // while the finished file is still among the current ones
    const UploadFileDescriptor &file = handle->description();
    if (!aborted && handle->isUploaded() && file.isVideo && !file.remoteKey.contains(UNTRANSCODED_FOLDER))
        communicator->startTranscoding(file);
}

void ProjectUpload::forget(AbstractUploadFileRequestHandle *handle)
{
    const QString path = handle->description().localFilePath;
    if (activeUploads.value(path) == handle)
        removeActive(path);
    handle->deleteLater();
}

void ProjectUpload::removeActive(const QString &path)
{
    activeUploads.remove(path);
    currentFiles = activeUploads.keys();
}

void ProjectUpload::finish()
{
    if (finished)
        return;
    finished = true;
    // The job stays registered; what it knows of its files need not.
    nodeMediaFiles.clear();
    usedMediaKeys.clear();
    communicator->finishUpload(projectId, importType);
    Q_EMIT uploadCompleted(uploadId);
}

void ProjectUpload::pause()
{
    if (aborted || finished)
        return;
    paused = true;
    const auto handles = activeUploads.values();
    for (auto *const handle : handles)
        pauseParts(handle);
}

void ProjectUpload::pauseParts(AbstractUploadFileRequestHandle *handle)
{
    if (auto *const multiPart = qobject_cast<UploadFileMultiPartRequestHandle *>(handle))
        multiPart->pause();
}

void ProjectUpload::resume()
{
    if (aborted || finished)
        return;
    paused = false;
    if (!listed) // the listing's answer goes on by itself
        return;
    restartStalledFiles();
    schedule();
}

void ProjectUpload::restartStalledFiles()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const auto handles = activeUploads.values();
    for (auto *const handle : handles) {
        auto *const multiPart = qobject_cast<UploadFileMultiPartRequestHandle *>(handle);
        if (!multiPart || multiPart->isUploaded())
            continue;
        if (multiPart->begun().secsTo(now) >= STALL_LIMIT.count())
            restart(multiPart);
        else
            multiPart->resume();
    }
}

// The server forgets what it has been sent after this long.
void ProjectUpload::restart(UploadFileMultiPartRequestHandle *handle)
{
    const QString path = handle->description().localFilePath;
    removeActive(path);
    uploadedBytes -= handle->uploadedSize();
    handle->disconnect(this);
    handle->setParent(communicator); // its abort request may outlive the job
    connect(handle, &UploadFileMultiPartRequestHandle::requestFinished, handle, &QObject::deleteLater);
    handle->abort();
    pendingFiles.push_front(ProjectFolderScan(projectPath, {}).describe(QFileInfo(path)));
}

void ProjectUpload::abort()
{
    if (aborted || finished)
        return;
    endTransfers();
    communicator->cancelUpload(projectId);
    deleteIfIdle();
}

void ProjectUpload::stop()
{
    if (finished)
        return;
    stopped = true;
    endTransfers();
    deleteIfIdle();
}

void ProjectUpload::endTransfers()
{
    paused = true;
    aborted = true;
    pendingFiles.clear();
    const auto handles = activeUploads.values(); // a copy: each abort may take its handle out of the map
    for (auto *const handle : handles)
        handle->abort();
}

void ProjectUpload::deleteIfIdle()
{
    if (activeUploads.isEmpty() && !busy)
        deleteLater();
}

} // namespace Korvo::Web
