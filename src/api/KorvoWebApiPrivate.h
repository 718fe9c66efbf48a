#pragma once

#include "api/SignalMailbox.h"

#include <NQKorvoWeb/ImportType.h>
#include <NQKorvoWeb/KorvoWebApi.h>

#include <NQSharedBase/WorkerThread.h>

#include <QtCore/QPair>
#include <QtCore/QVector>

#include <functional>

namespace Korvo::Web {

class KorvoWebApiWorker;

/// The host's side of the thread boundary: owns the worker thread, checks the arguments of transfers, hands out their
/// ids, and posts every call to the worker. Lives on the host's thread; its signals are the worker's, by way of the mailbox.
class KorvoWebApiPrivate : public QObject
{
    Q_OBJECT

public:
    KorvoWebApiPrivate();
    ~KorvoWebApiPrivate() override;

    void login(const QString &user, const QString &password);
    void cancelLogin();
    void logout();
    void resetPassword(const QString &user);
    void loginWithToken(const QString &tokenCode);

    QString currentUser() const;
    QString currentUserFirstName() const;
    QString currentUserLastName() const;
    QString currentUserCompanyId() const;
    KorvoWebApi::UserRole currentUserRole() const;
    KorvoWebApi::LoginStatus loginStatus() const;
    bool anyUploadActive() const;
    bool anyDownloadActive() const;

    void queryRemoteProjects();
    void queryUploadProjectStatus(const QList<QString> &projectIds);
    void startSingleProjectFileDownload(const QUuid &projectId, const QString &fileName);
    void startAllProjectsMediaDownload(const QString &projectId);

    unsigned int downloadProject(const QString &projectId, const QString &webProjectFolderName,
                                 const QString &downloadPath, int maxSimultaneousDownloads);
    unsigned int downloadQuickviewProjectData(const QString &projectId, const QString &outputFilePath);
    unsigned int downloadQuickviewSurveyData(const QString &projectId, const QString &outputFilePath);
    unsigned int downloadQuickviewManholeData(const QString &projectId, const QString &outputFilePath);
    unsigned int downloadSingleProjectFile(const QString &filePath, const QString &url);
    void abortDownload(unsigned int id);
    void pauseDownload(unsigned int id);
    void resumeDownload(unsigned int id);

    unsigned int uploadProject(const QString &projectId, const QString &projectName, const QString &projectPath,
                               const QDateTime &projectCreationDate, int maxSimultaneousUploads);
    unsigned int uploadQZProject(const QString &projectName, const QString &projectPath,
                                 const QDateTime &projectCreationDate);
    unsigned int uploadQuickviewProject(const QUuid &projectId, const QString &projectName, const QString &projectPath,
                                        const QDateTime &projectCreationDate, const MediaNamesList &manholesMedia);
    void abortUpload(unsigned int id);
    void pauseUpload(unsigned int id);
    void resumeUpload(unsigned int id);

Q_SIGNALS:
    void uploadFileProgressChanged(unsigned int uploadId, const QString &fileName, int progress);
    void currentUploadFilesChanged(unsigned int uploadId, const QStringList &currentUploadFiles);
    void uploadTotalProgressChanged(unsigned int uploadId, int value);
    void filesToUploadTotalChanged(unsigned int uploadId, int value);
    void completedUploadFilesChanged(unsigned int uploadId, int value);
    void uploadActiveChanged(unsigned int uploadId, bool bValue);
    void anyUploadActiveChanged(bool bValue);
    void uploadFinished(unsigned int uploadId);
    void downloadFileProgressChanged(unsigned int downloadId, const QString &fileName, int progress);
    void currentDownloadFilesChanged(unsigned int downloadId, const QStringList &currentDownloadFiles);
    void downloadTotalProgressChanged(unsigned int downloadId, int value);
    void filesToDownloadTotalChanged(unsigned int downloadId, int value);
    void completedDownloadFilesChanged(unsigned int downloadId, int value);
    void downloadActiveChanged(unsigned int downloadId, bool bValue);
    void anyDownloadActiveChanged(bool bValue);
    void downloadFinished(unsigned int downloadId);
    void currentUserChanged(const QString &user);
    void loginResult(const QString &userName, KorvoWebApi::LoginResult loginResult);
    void loginStatusChanged();
    void projectInfoReceived(const QList<ProjectInfo> &projectInfoList);
    void uploadStatusInfoReceived(const QList<UploadStatusInfo> &uploadsStatusInfoList);
    void errorOccurred(Korvo::Web::Error error);
    void queryRemoteProjectsError(Korvo::Web::Error error);
    void singleFileDownloadLinkReceived(const SingleMediaFileLinkData &mediaDataLink);
    void allProjectsMediaDownloadLinkReceived(const QList<SingleMediaFileLinkData> &mediaDataLink);
    void loginExpired();
    void tokenAuthenticationNeeded();

private:
    Q_DISABLE_COPY(KorvoWebApiPrivate)
    /// Name and value of each argument of a public call, in the order of its signature.
    using Arguments = QVector<QPair<QString, QString>>;
    using QuickviewDownload = void (KorvoWebApiWorker::*)(QString, QString, unsigned int);

    template <class... Values>
    void relay(void (KorvoWebApiWorker::*from)(Values...), void (KorvoWebApiPrivate::*to)(Values...));
    void relaySignals();
    void startWorker();
    void post(const std::function<void()> &call);
    unsigned int reject(const QString &header, const Arguments &arguments);
    unsigned int downloadQuickviewData(const QString &projectId, const QString &outputFilePath,
                                       QuickviewDownload download);
    unsigned int startUpload(const QString &projectId, const QString &projectName, const QString &projectPath,
                             const QDateTime &creationDate, ImportType importType, int maxSimultaneousUploads,
                             const MediaNamesList &manholesMedia);
    unsigned int newDownloadId();
    unsigned int newUploadId();

    KorvoWebApiWorker *const worker; // deleted on its own thread when that ends
    SignalMailbox mailbox;           // before the thread: the worker posts until that has ended
    const QScopedPointer<Shared::WorkerThread> thread;
    quint32 nextDownloadId = 0;
    quint32 nextUploadId = 0;
};

} // namespace Korvo::Web
