#pragma once

#include "handles/BucketResponses.h"
#include "handles/ProjectResponses.h"
#include "handles/TransferResponses.h"
#include "handles/UploadFileDescriptor.h"
#include "transfer/LocalUploadFile.h"

#include <NQKorvoWeb/Error.h>
#include <NQKorvoWeb/ImportType.h>
#include <NQKorvoWeb/MediaNamesList.h>

#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <deque>

namespace Korvo::Web {

class AbstractUploadFileRequestHandle;
class UploadFileMultiPartRequestHandle;
class WebCommunicator;

/// Copies one local project folder into its bucket.
///
/// A child of the worker, on its thread; the handles of files in flight are its children. A job that has been stopped
/// or aborted deletes itself when its last handle has ended.
class ProjectUpload : public QObject
{
    Q_OBJECT

public:
    ProjectUpload(WebCommunicator *usedCommunicator, int id, QObject *parent = nullptr);

    void init(const QString &newProjectId, const QString &newProjectName, const QString &newProjectPath,
              const QDateTime &newCreationDate, ImportType newImportType, int maxUploads,
              const MediaNamesList &nodeMedia);

    /// Begins the upload on the server and asks for what the bucket holds; up to three waits of ten seconds each.
    void start();
    /// No further file or part is started; what is on its way runs to its end.
    void pause();
    void resume();
    /// Ends the upload and tells the server.
    void abort();
    /// Ends the upload after a failure: like abort(), but in silence, and the server is not told.
    void stop();

Q_SIGNALS:
    void totalUploadProgressChanged(int uploadId, int filesCompleted, int filesTotal, int progress,
                                    QStringList currentUploadFiles);
    void fileUploadProgressChanged(int uploadId, QString fileName, int progress);
    void uploadCompleted(int uploadId);
    void errorOccurred(int uploadId, Korvo::Web::Error error);

public Q_SLOTS:
    void fileUploadFinished();
    void updateBytes(qint64 uploadedBytes, qint64 lastStepUploadedBytes, qint64 totalFileBytes, QString uploadFile);
    void uploadProjectBeginFinished(BeginUploadProjectResponse response);
    void handleMultiPartErrors(UploadFileMultiPartFinishedResponse response);
    void handleSinglePartErrors(UploadFileResponse response);
    void gotListFileResults(ListOfFilesFromLocationResponse response);

private:
    bool begin();
    bool ensureBucket();
    bool checkCreationDate();
    void requestListing();
    void scanProjectFolder();
    void schedule();
    void startNextFile();
    void startFile(const LocalUploadFile &file);
    AbstractUploadFileRequestHandle *startSinglePart(const UploadFileDescriptor &file);
    AbstractUploadFileRequestHandle *startMultiPart(const UploadFileDescriptor &file);
    void handleFailedFile(UploadFileMultiPartRequestHandle *handle, Error error);
    void noteSharedKey(const LocalUploadFile &file, const QString &key);
    void reportTotal();
    static void pauseParts(AbstractUploadFileRequestHandle *handle);
    void countFinished(const AbstractUploadFileRequestHandle *handle);
    void finish();
    void endTransfers();
    void forget(AbstractUploadFileRequestHandle *handle);
    void removeActive(const QString &path);
    void deleteIfIdle();
    void restartStalledFiles();
    void restart(UploadFileMultiPartRequestHandle *handle);

    WebCommunicator *const communicator;
    std::deque<LocalUploadFile> pendingFiles;
    QMap<QString, AbstractUploadFileRequestHandle *> activeUploads; // by absolute local path
    QStringList currentFiles; // the keys of activeUploads; every step of progress tells them
    QString projectPath;
    QString projectId;
    QString projectName;
    QString bucketName;
    QString projectFolderName; // stays empty: a project upload has none of its own
    QDateTime creationDate;
    quint64 totalBytes = 0;
    qint64 uploadedBytes = 0;
    const qint32 uploadId;
    qint32 filesTotal = 0;
    qint32 filesCompleted = 0;
    qint32 maxSimultaneousUploads = 0;
    ImportType importType = ImportType::Standard;
    bool paused = false;
    bool aborted = false;
    QMap<QString, RemoteFileEntry> remoteFiles; // by file name
    MediaNamesList nodeMediaFiles;
    QHash<QString, QString> usedMediaKeys; // the local path that each was used for
    bool busy = false;                     // in the middle of a step that may be heard of; the job must not go yet
    bool listed = false;                   // the folder has been scanned
    bool finished = false;                 // the server has been told
    bool stopped = false;                  // ended by stop(): nobody wants to hear of it any more
};

} // namespace Korvo::Web
