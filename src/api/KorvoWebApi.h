#pragma once

#include <NQKorvoWeb/Error.h>
#include <NQKorvoWeb/KorvoWebExport.h>
#include <NQKorvoWeb/MediaNamesList.h>
#include <NQKorvoWeb/ProjectInfo.h>
#include <NQKorvoWeb/SingleMediaFileLinkData.h>
#include <NQKorvoWeb/UploadStatusInfo.h>

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QScopedPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QUuid>

namespace Korvo::Web {

class KorvoWebApiPrivate;

/// The library's one door: log in, list projects, move project folders up and down, fetch Quickview data and media links.
///
/// Call KorvoWebLibrary::initialize() once, create one KorvoWebApi, connect to its signals. Every call returns at once;
/// all network and file work runs on a worker thread that this object owns, and every result comes back as a signal on
/// the thread in which this object was created. Several objects may exist; each has a worker thread of its own.
///
/// Thread: start transfers from the thread that created the object, call everything else from any. The getters of
/// properties take a lock for the length of one copy. Only construction and destruction wait for the worker; destruction
/// waits without a time limit, cuts off whatever is in flight, and no signal follows it. It is safe in every state, inside
/// a slot of a signal too, but not inside a sink of the log: that runs on the worker thread.
///
/// Calls are carried out in their order. While the worker awaits an answer that it cannot do without, they are held back:
/// up to 13 seconds at the end of a login, up to 30 seconds while an upload starts. A pause, resume or abort with an id
/// that is not known is logged and otherwise ignored.
///
/// Percentages are whole numbers from 0 to 100, sizes are bytes, paths may use "/" on every platform. Ids of uploads
/// and of downloads are counted separately, each from 1; 0 means that nothing was started.
class NQKORVOWEB_EXPORT KorvoWebApi : public QObject
{
    Q_OBJECT
    /// User name confirmed by the last successful login; logout() leaves it, a failed login empties it.
    Q_PROPERTY(QString currentUser READ currentUser NOTIFY currentUserChanged)
    Q_PROPERTY(LoginStatus loginStatus READ loginStatus NOTIFY loginStatusChanged)
    Q_PROPERTY(bool anyUploadActive READ anyUploadActive NOTIFY anyUploadActiveChanged)
    /// To be polled: the change signal is declared, but never emitted.
    Q_PROPERTY(bool anyDownloadActive READ anyDownloadActive NOTIFY anyDownloadActiveChanged)
    // The details of the user change with the login only, so they share its signal.
    Q_PROPERTY(QString currentUserCompanyId READ currentUserCompanyId NOTIFY loginStatusChanged)
    Q_PROPERTY(QString currentUserFirstName READ currentUserFirstName NOTIFY loginStatusChanged)
    Q_PROPERTY(QString currentUserLastName READ currentUserLastName NOTIFY loginStatusChanged)
    Q_PROPERTY(UserRole currentUserRole READ currentUserRole NOTIFY loginStatusChanged)

public:
    /// How a login ended.
    enum class LoginResult : int {
        LoginResultSuccess = 0,          ///< logged in
        LoginResultTimeOut = 1,          ///< no usable answer; errorOccurred() came before, unless it was a plain
                                         ///< time-out or an answer without a token
        LoginResultFalseCredentials = 2, ///< the server refused user name, password or code
        LoginResultCancelled = 3         ///< cancelLogin() or a newer login ended it
    };
    Q_ENUM(LoginResult)

    /// Never raised by the library; kept for hosts that connect to uploadErrorOccurred().
    enum class UploadError : int {
        UploadErrorNone = 0,
        UploadErrorInternal = 1,
        UploadErrorTimeOut = 2,
        UploadErrorFileAccess = 3,
        UploadErrorInvalidParameter = 4
    };
    Q_ENUM(UploadError)

    /// Never raised by the library; kept for hosts that connect to downloadErrorOccurred().
    enum class DownloadError : int {
        DownloadErrorNone = 0,
        DownloadErrorInternal = 1,
        DownloadErrorTimeOut = 2,
        DownloadErrorFileAccess = 3,
        DownloadErrorInvalidParameter = 4
    };
    Q_ENUM(DownloadError)

    /// Whether requests can be made in the user's name.
    enum class LoginStatus : int {
        LoginStatusLoggedIn = 0,  ///< the access token is valid for another ten minutes at least
        LoginStatusLoggingIn = 1, ///< a login is on its way
        LoginStatusLoggedOut = 2
    };
    Q_ENUM(LoginStatus)

    /// What the platform lets the user do.
    enum class UserRole : int {
        Guest = 0, ///< no role, or one that this version does not know
        RzOperator = 1,
        CompanyOperator = 2,
        SystemAdministrator = 3,
        CompanyAdministrator = 4,
        EndUser = 5
    };
    Q_ENUM(UserRole)

    /// Starts the worker thread and waits until it runs.
    ///
    /// If the thread cannot be started, "Failed to start WebApi worker thread." is logged and no call reaches the worker;
    /// ids are handed out all the same.
    explicit KorvoWebApi(QObject *parent = nullptr);

    /// Stops the worker thread and waits for it. Transfers in flight are cut off: finished files stay, the server is not told.
    ~KorvoWebApi() override;

    /// Logs in with a password.
    ///
    /// The server is first asked whether the account needs a second factor. If so, tokenAuthenticationNeeded() is
    /// emitted and the login waits for loginWithToken(). Otherwise loginResult() tells how it ended. User name and
    /// password are copied and kept for loginWithToken().
    ///
    /// A login whose password is on its way is cancelled first (LoginResultCancelled); one that still asks about the
    /// second factor is replaced without a result. What logout() says about running transfers holds here too.
    Q_INVOKABLE virtual void login(const QString &user, const QString &password);

    /// Cancels a login whose password is on its way to the server: loginResult() follows with LoginResultCancelled.
    ///
    /// Does nothing while no login is in flight, nor during the question about the second factor that precedes it; should
    /// that never be answered, a new login() ends it.
    Q_INVOKABLE virtual void cancelLogin();

    /// Forgets the access token and emits loginStatusChanged(). The server is not told; currentUser and the user's
    /// details stay as they are. A login on its way is not cancelled.
    ///
    /// Requests in flight run to their end, but every further one of a running transfer is refused by the server: let
    /// transfers end, or pause them, before logging out or in again.
    Q_INVOKABLE virtual void logout();

    /// Asks the server to send the user a new password. There is no answer but errorOccurred() when the request failed.
    Q_INVOKABLE virtual void resetPassword(const QString &user);

    /// Asks for the projects of the user's company: projectInfoReceived(), or queryRemoteProjectsError().
    Q_INVOKABLE virtual void queryRemoteProjects();

    /// Downloads the files of one project into @p downloadPath.
    ///
    /// @param projectId                 id as listed in projectInfoReceived()
    /// @param webProjectFolderName      folder name as listed in projectInfoReceived()
    /// @param downloadPath              local folder, created when missing; files of the listed size are kept as they are
    /// @param maxSimultaneousDownloads  files in flight at once, at least 1; more than six do not help, since that many
    ///                                  connections go to one server
    /// @return id of the download; 0 when an argument is rejected, after errorOccurred(Error::InvalidParameter)
    ///
    /// Progress arrives through downloadFileProgressChanged() and the signals of the whole job, the end through
    /// downloadFinished(). With more than one file in flight, downloadFinished() comes as soon as no file is left to
    /// start, and again when the last ones end: the download is whole when completedDownloadFilesChanged() has reached
    /// filesToDownloadTotalChanged(). A file that fails is reported by errorOccurred(), is not counted as completed,
    /// and the others go on. From the first downloadFinished() on, pause, resume and abort no longer know the id.
    ///
    /// Empty files are not downloaded. Names that would leave @p downloadPath are refused with Error::DownloadFolder.
    Q_INVOKABLE virtual unsigned int downloadProject(const QString &projectId, const QString &webProjectFolderName,
                                                     const QString &downloadPath, int maxSimultaneousDownloads = 1);

    /// Ends a download. **A project download removes its download folder with everything in it**, files that were there
    /// before included; a Quickview or single-file download removes its output file. downloadFinished() does not follow.
    Q_INVOKABLE virtual void abortDownload(unsigned int id);

    /// Stops a download until resumeDownload(). Files in flight are cut off and start over when it goes on.
    Q_INVOKABLE virtual void pauseDownload(unsigned int id);

    /// Lets a paused download go on. A Quickview or single-file download starts over from the first byte.
    Q_INVOKABLE virtual void resumeDownload(unsigned int id);

    /// Uploads a local project folder with all its files and sub-folders.
    ///
    /// @param projectId              id of the project, new or known to the platform
    /// @param projectName            name shown to users
    /// @param projectPath            local folder; hidden files are left out, so is every "*.xml_bak*" without ".db3" in
    ///                               its name, and a project.xml of the size that the platform already has
    /// @param projectCreationDate    its clock reading is sent as it is; the platform takes it for UTC
    /// @param maxSimultaneousUploads files in flight at once, greater than 0; more than six do not help
    /// @return id of the upload; 0 when an argument is rejected, after errorOccurred(Error::InvalidParameter)
    ///
    /// Pictures and videos are stored by file name in four folders ("Picture/Sec", "Picture/Nod", "Video/Sec",
    /// "Video/Nod") whatever their local folder; other files keep their relative path. uploadFinished() tells that every
    /// file has arrived. Any failure ends the whole upload: errorOccurred() comes, uploadFinished() does not.
    Q_INVOKABLE virtual unsigned int uploadProject(const QString &projectId, const QString &projectName,
                                                   const QString &projectPath, const QDateTime &projectCreationDate,
                                                   int maxSimultaneousUploads = 1);

    /// Uploads a project of the import tool, one file at a time. Its id is derived from @p projectName: the same name is
    /// the same project. Nothing is checked here; what is wrong is reported by errorOccurred().
    /// @return id of the upload, never 0
    Q_INVOKABLE virtual unsigned int uploadQZProject(const QString &projectName, const QString &projectPath,
                                                     const QDateTime &projectCreationDate);

    /// Uploads a Quickview project, one file at a time. Nothing is checked here, see uploadQZProject().
    /// @param manholesMedia  relative paths of the media that belong to manholes, see MediaNamesList
    /// @return id of the upload, never 0
    Q_INVOKABLE virtual unsigned int uploadQuickviewProject(const QUuid &projectId, const QString &projectName,
                                                            const QString &projectPath,
                                                            const QDateTime &projectCreationDate,
                                                            MediaNamesList manholesMedia);

    /// Ends an upload and tells the server. Each file that was on its way in one piece is reported by
    /// errorOccurred(Error::Cancelled); uploadFinished() does not follow.
    Q_INVOKABLE virtual void abortUpload(unsigned int id);

    /// Stops an upload until resumeUpload(): no further file and no further part of a large file is started. What is on
    /// its way runs to its end.
    Q_INVOKABLE virtual void pauseUpload(unsigned int id);

    /// Lets a paused upload go on. Large files that were begun 36 hours ago or more start over.
    Q_INVOKABLE virtual void resumeUpload(unsigned int id);

    /// Asks what has become of earlier uploads: uploadStatusInfoReceived(). When the request fails, errorOccurred()
    /// comes before an empty list.
    Q_INVOKABLE virtual void queryUploadProjectStatus(const QList<QString> &projectId);

    /// Asks for the link of one media file of a Quickview project: singleFileDownloadLinkReceived(), or errorOccurred().
    /// Error::None then means that the server answered, but knows no such file.
    Q_INVOKABLE virtual void startSingleProjectFileDownload(const QUuid &projectId, const QString &fileName);

    /// Asks for the links of all media of a project: allProjectsMediaDownloadLinkReceived(). When the request fails,
    /// errorOccurred() comes before an empty list.
    Q_INVOKABLE virtual void startAllProjectsMediaDownload(const QString &projectId);

    /// Second step of a login: sends user name and password of the last login() with the code that the user received.
    ///
    /// loginResult() tells how it ended. Keep @p tokenCode alive until then.
    Q_INVOKABLE void loginWithToken(const QString &tokenCode);

    /// Writes the Quickview data of a project into one file.
    ///
    /// @param projectId       id of the project, without braces
    /// @param outputFilePath  local file, replaced when it exists; its folder is created when missing
    /// @return id of the download; 0 when an argument is empty, after errorOccurred(Error::InvalidParameter)
    ///
    /// downloadFinished() always ends it; when it failed, errorOccurred() comes first and what had arrived stays in the file.
    Q_INVOKABLE unsigned int downloadQuickviewProjectData(const QString &projectId, const QString &outputFilePath);

    /// The same for the survey data, see downloadQuickviewProjectData().
    Q_INVOKABLE unsigned int downloadQuickviewSurveyData(const QString &projectId, const QString &outputFilePath);

    /// The same for the manhole data, see downloadQuickviewProjectData().
    Q_INVOKABLE unsigned int downloadQuickviewManholeData(const QString &projectId, const QString &outputFilePath);

    /// Fetches one file from a link (http or https), as received by singleFileDownloadLinkReceived().
    ///
    /// @param filePath  local file, replaced when it exists; its folder is created when missing
    /// @param url       address of the file; no credentials are sent to it, and redirects are followed. A call that is
    ///                  rejected logs both arguments.
    /// @return id of the download; 0 when an argument is empty; ends as downloadQuickviewProjectData() does
    Q_INVOKABLE unsigned int downloadSingleProjectFile(const QString &filePath, const QString &url);

    Q_INVOKABLE QString currentUser() const;
    Q_INVOKABLE QString currentUserFirstName() const;
    Q_INVOKABLE QString currentUserLastName() const;
    Q_INVOKABLE QString currentUserCompanyId() const;
    Q_INVOKABLE UserRole currentUserRole() const;
    /// A valid access token wins over a login on its way.
    Q_INVOKABLE LoginStatus loginStatus() const;
    /// True from the start of an upload until its end, whatever end that is.
    Q_INVOKABLE bool anyUploadActive() const;
    /// True from the start of a download until its first downloadFinished(), or its abort.
    Q_INVOKABLE bool anyDownloadActive() const;

Q_SIGNALS:
    /// @p fileName is the absolute local path, @p progress percent of that file.
    void uploadFileProgressChanged(unsigned int uploadId, const QString &fileName, int progress);
    /// The files in flight, absolute local paths in ascending order. This and the next three come together, in this order.
    void currentUploadFilesChanged(unsigned int uploadId, const QStringList &currentUploadFiles);
    /// Percent of the whole upload, by bytes.
    void uploadTotalProgressChanged(unsigned int uploadId, int value);
    /// Number of files of the upload.
    void filesToUploadTotalChanged(unsigned int uploadId, int value);
    /// Number of files that have arrived whole.
    void completedUploadFilesChanged(unsigned int uploadId, int value);
    /// True when the upload is taken up, false when it has ended in whatever way.
    void uploadActiveChanged(unsigned int uploadId, bool bValue);
    /// True with the first upload, false with the end of the last one.
    void anyUploadActiveChanged(bool bValue);
    /// Every file has arrived, and the notice to the server is on its way. Does not come after a failure or an abort.
    ///
    /// Keep this object alive until the notice has arrived: queryUploadProjectStatus() tells. Should it fail,
    /// errorOccurred() comes afterwards.
    void uploadFinished(unsigned int uploadId);
    /// Never emitted; kept for the compatibility of the interface. Failures come through errorOccurred().
    void uploadErrorOccurred(unsigned int uploadId, KorvoWebApi::UploadError errorCode);

    /// @p fileName is the file's name in the project's storage, @p progress percent of that file.
    void downloadFileProgressChanged(unsigned int downloadId, const QString &fileName, int progress);
    /// The files in flight, names in the project's storage in ascending order. This and the next three come together, in
    /// this order.
    void currentDownloadFilesChanged(unsigned int downloadId, const QStringList &currentDownloadFiles);
    /// Percent of the whole download, by bytes.
    void downloadTotalProgressChanged(unsigned int downloadId, int value);
    /// Number of files to fetch; files that are there already, empty ones, web copies of videos and refused names are not
    /// counted.
    void filesToDownloadTotalChanged(unsigned int downloadId, int value);
    /// Number of files that have arrived whole; the download is whole when it equals the number of files to fetch.
    void completedDownloadFilesChanged(unsigned int downloadId, int value);
    /// True when the download is taken up, false after its first downloadFinished() or its abort.
    void downloadActiveChanged(unsigned int downloadId, bool bValue);
    /// Never emitted: hosts poll anyDownloadActive.
    void anyDownloadActiveChanged(bool bValue);
    /// No file is left to start. Can come early and again, see downloadProject(). Does not come after an abort.
    void downloadFinished(unsigned int downloadId);
    /// Never emitted; kept for the compatibility of the interface. Failures come through errorOccurred().
    void downloadErrorOccurred(unsigned int downloadId, KorvoWebApi::DownloadError errorCode);

    /// The confirmed user name has changed; empty after a failed login.
    void currentUserChanged(const QString &user);
    /// How a login ended; @p userName is the server's spelling, as a rule empty when the login failed.
    void loginResult(const QString &userName, KorvoWebApi::LoginResult loginResult);
    /// Read loginStatus and the details of the user again.
    void loginStatusChanged();
    /// Answer to queryRemoteProjects().
    void projectInfoReceived(const QList<ProjectInfo> &projectInfoList);
    /// Answer to queryUploadProjectStatus().
    void uploadStatusInfoReceived(const QList<UploadStatusInfo> &uploadsStatusInfoList);
    /// Something failed, see Error; also emitted inside a call whose argument is rejected, before it returns 0.
    void errorOccurred(Korvo::Web::Error error);
    /// queryRemoteProjects() failed; errorOccurred() is not emitted besides.
    void queryRemoteProjectsError(Korvo::Web::Error error);
    /// Answer to startSingleProjectFileDownload().
    void singleFileDownloadLinkReceived(const SingleMediaFileLinkData &mediaDataLink);
    /// Answer to startAllProjectsMediaDownload().
    void allProjectsMediaDownloadLinkReceived(const QList<SingleMediaFileLinkData> &mediaDataLink);
    /// The access token ends in ten minutes and counts as invalid from now on: let the user log in again. loginStatus has
    /// changed with it; loginStatusChanged() is not emitted.
    void loginExpired();
    /// The account asks for a second factor: let the user type the code, then call loginWithToken().
    void tokenAuthenticationNeeded();

private:
    Q_DISABLE_COPY(KorvoWebApi)
    const QScopedPointer<KorvoWebApiPrivate> d;
};

} // namespace Korvo::Web
