#pragma once

#include "api/CallGate.h"
#include "handles/AuthenticationResponses.h"
#include "handles/ProjectResponses.h"

#include <NQKorvoWeb/ImportType.h>
#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QMap>
#include <QtCore/QMutex>
#include <QtCore/QPointer>

namespace Korvo::Web {

class AbstractDownload;
class DynDataDownload;
class ProjectUpload;
class RequestHandle;
class WebCommunicator;

/// Does the library's work on the worker thread: the login and its state, the queries, and the registries of running
/// transfers with their jobs.
///
/// Everything but the constructor and the getters below runs on the worker thread. Jobs are its children.
class KorvoWebApiWorker : public QObject
{
    Q_OBJECT

public:
    KorvoWebApiWorker();
    ~KorvoWebApiWorker() override;

    /// Makes a call of the host, now or when the worker is back from a blocking wait.
    void passCall(const CallGate::Call &call);

    // Read from the host's thread
    QString userName() const;
    QString userFirstName() const;
    QString userLastName() const;
    QString userCompanyId() const;
    KorvoWebApi::UserRole userRole() const;
    KorvoWebApi::LoginStatus loginStatus() const;
    bool isAnyUploadActive() const;
    bool isAnyDownloadActive() const;

    Q_INVOKABLE void initialize();

    Q_INVOKABLE void login(QString user, QString password);
    Q_INVOKABLE void cancelLogin();
    Q_INVOKABLE void logout();
    Q_INVOKABLE void resetPassword(QString user);
    Q_INVOKABLE void loginWithToken(QString tokenCode);

    Q_INVOKABLE void queryRemoteProjects();
    Q_INVOKABLE void startSingleProjectFileDownload(QString projectId, QString fileName);
    Q_INVOKABLE void startAllProjectsMediaDownload(QString projectId);
    Q_INVOKABLE void queryUploadProjectStatus(QList<QString> projectId);

    Q_INVOKABLE void downloadProject(QString projectId, QString webProjectFolderName, QString downloadPath,
                                     int maxSimultaneousDownloads, unsigned int downloadId);
    Q_INVOKABLE void downloadQuickviewProjectData(QString projectId, QString outputFilePath, unsigned int downloadId);
    Q_INVOKABLE void downloadQuickviewSurveyData(QString projectId, QString outputFilePath, unsigned int downloadId);
    Q_INVOKABLE void downloadQuickviewManholeData(QString projectId, QString outputFilePath, unsigned int downloadId);
    Q_INVOKABLE void downloadSingleProjectFile(QString outputFilePath, QString url, unsigned int downloadId);
    Q_INVOKABLE void abortDownload(unsigned int id);
    Q_INVOKABLE void pauseDownload(unsigned int id);
    Q_INVOKABLE void resumeDownload(unsigned int id);

    Q_INVOKABLE void uploadProject(QString projectId, QString projectName, QString projectPath,
                                   QDateTime projectCreationDate, ImportType importType, int maxSimultaneousUploads,
                                   unsigned int uploadId, MediaNamesList manholesMedia);
    Q_INVOKABLE void abortUpload(unsigned int id);
    Q_INVOKABLE void pauseUpload(unsigned int id);
    Q_INVOKABLE void resumeUpload(unsigned int id);
    /// Uploads the local file @p url, of up to 4 MiB, to the key @p outputFilePath; a failure is raised as errorOccurred().
    Q_INVOKABLE void uploadFile(QString bucketName, QString url, QString projectFolderName, QString outputFilePath);

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

private Q_SLOTS:
    void handleCheck2StepsAuthenticationResponse(Check2StepAuthenticationResponse response);
    void handleLoginResponse(LoginResponse response);
    void handleFileUploadProgressChanged(unsigned int uploadId, QString filePath, int progress);
    void handleTotalUploadProgressChanged(unsigned int uploadId, int filesCompleted, int filesTotal, int progress,
                                          QStringList currentUploadFiles);
    void handleFileDownloadProgressChanged(unsigned int downloadId, QString filePath, int progress);
    void handleTotalDownloadProgressChanged(unsigned int downloadId, int filesCompleted, int filesTotal, int progress,
                                            QStringList currentUploadFiles);
    void handleUploadCompleted(unsigned int uploadId);
    void handleDownloadCompleted(unsigned int downloadId);
    void handleUploadError(unsigned int uploadId, Error errorCode);
    void handleDownloadError(unsigned int downloadId, Error errorCode);
    void handleUserProjectsResponse(UserProjectsResponse response, Error error);
    void handleSingleFileDownloadResponse(SingleProjectFileDownloadResponse response);
    void handleAllProjectsMediaDownloadResponse(SingleProjectFileDownloadResponse response);
    void handleUploadStatus(UploadProjectsStatusResponse response);

private:
    Q_DISABLE_COPY(KorvoWebApiWorker)

    // Login
    void endPendingLogin();
    void watchLogin(RequestHandle *handle);
    void clearAccessToken();
    void acceptLogin(const LoginResponse &response);
    void setCurrentUser(const QString &user);
    void setLoggingIn(bool isLoggingIn);

    // Registries
    void enterDownload(unsigned int id);
    void leaveActiveDownloads(unsigned int id);
    void lowerDownloadFlagIfIdle();
    void registerDownload(unsigned int id, AbstractDownload *job);
    void startDataDownload(unsigned int id, DynDataDownload *job, const QString &outputFilePath, const QString &dataId);
    void enterUpload(unsigned int id);
    void leaveActiveUploads(unsigned int id);
    void lowerUploadFlagIfIdle();
    void connectUpload(const ProjectUpload *job);
    void setAnyUploadActive(bool isActive);
    void setAnyDownloadActive(bool isActive);

    QScopedPointer<WebCommunicator> communicator;
    QMap<unsigned int, ProjectUpload *> uploads;
    QMap<unsigned int, AbstractDownload *> downloads;
    QList<unsigned int> activeUploadIds;
    QList<unsigned int> activeDownloadIds;
    /// Guards currentUser to loggingIn and the communicator's login; the members between are the worker thread's own.
    /// Change signals are emitted while it is held: they go through a mailbox to the host's thread, so no receiver runs under it.
    mutable QMutex stateMutex;
    QPointer<RequestHandle> pendingLogin;
    QString loginUser;
    QString loginPassword;
    QString currentUser;
    QString firstName;
    QString lastName;
    QString companyId;
    KorvoWebApi::UserRole role = KorvoWebApi::UserRole::Guest;
    bool anyUploadActive = false;
    bool anyDownloadActive = false;
    bool loggingIn = false;
    QPointer<RequestHandle> pendingCheck;
    CallGate gate;
};

} // namespace Korvo::Web
