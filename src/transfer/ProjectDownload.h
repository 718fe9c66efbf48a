#pragma once

#include "handles/BucketResponses.h"
#include "handles/TransferResponses.h"
#include "transfer/AbstractDownload.h"
#include "transfer/DownloadPlan.h"

#include <QtCore/QMap>

namespace Korvo::Web {

class DownloadFileHandle;
class WebCommunicator;

/// Copies the files of one bucket into a local folder.
///
/// A child of the worker, on its thread; the handles of files in flight are its children.
class ProjectDownload : public AbstractDownload
{
    Q_OBJECT

public:
    ProjectDownload(WebCommunicator *usedCommunicator, int id, QObject *parent = nullptr);

    /// Creates the download folder; false, after errorOccurred(), when that is not possible.
    bool init(const QString &newDownloadPath, const QString &newProjectId, const QString &newBucketName,
              int maxDownloads);
    /// Asks for the list of files; everything else follows from its answer.
    void start();
    /// Cuts off the files in flight and puts them back in front of the queue.
    void pause();
    void resume();
    /// Ends the download and removes the download folder with all its content.
    void abort();
    /// Deletes the job once no file is in flight, so that none is cut off.
    void deleteWhenIdle();

public Q_SLOTS:
    void fileDownloadFinished();
    void updateBytes(qint64 downloadedBytes, qint64 lastStepUploadedBytes, qint64 totalFileBytes, QString downloadFile);
    void handleResponse(DownloadFileResponse response);
    void handleError(Korvo::Web::Error errorCode);
    void gotListFileResults(ListOfFilesFromLocationResponse response);

private:
    struct FileInFlight
    {
        DownloadFileHandle *handle = nullptr;
        RemoteFile file;
        qint64 countedBytes = 0;
        bool failed = false;
        bool ended = false; // counted or given up, though still among the current ones
    };

    bool planDownload(const QList<RemoteFileEntry> &entries);
    void schedule();
    void startFile(const RemoteFile &file);
    FileInFlight *find(QObject *handle);
    void endFile(DownloadFileHandle *handle);
    void reportTotal();

    WebCommunicator *const communicator;
    const qint32 downloadId;
    QList<RemoteFile> pendingFiles;
    QMap<QString, FileInFlight> activeDownloads; // by key
    QStringList currentFiles;                    // the keys of activeDownloads; every step of progress tells them
    QString downloadPath;
    QString projectId; // not needed by the steps of the download
    QString bucketName;
    quint64 totalBytes = 0;
    qint64 downloadedBytes = 0;
    qint32 filesTotal = 0;
    qint32 filesCompleted = 0;
    qint32 maxSimultaneousDownloads = 0;
    bool paused = false;
    bool aborted = false;
    bool listed = false;   // the listing has been answered
    bool retiring = false; // deleted once no file is in flight
};

} // namespace Korvo::Web
