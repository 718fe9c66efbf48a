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
    /// User name confirmed by the last successful login, in the server's spelling; logout() leaves it, a failed login
    /// empties it. Changes with currentUserChanged().
    Q_PROPERTY(QString currentUser READ currentUser NOTIFY currentUserChanged)
    /// Whether requests can be made in the user's name. Changes with loginStatusChanged(), except when the token runs out:
    /// then loginExpired() comes instead.
    Q_PROPERTY(LoginStatus loginStatus READ loginStatus NOTIFY loginStatusChanged)
    /// Whether any upload is under way, a paused one included. Changes with anyUploadActiveChanged().
    Q_PROPERTY(bool anyUploadActive READ anyUploadActive NOTIFY anyUploadActiveChanged)
    /// Whether any download is under way, a paused one included. To be polled: its change signal,
    /// anyDownloadActiveChanged(), is declared, but never emitted.
    Q_PROPERTY(bool anyDownloadActive READ anyDownloadActive NOTIFY anyDownloadActiveChanged)
    // The details of the user change with the login only, so they share its signal.
    /// Company of the user; part of the name of every bucket. Changes with loginStatusChanged(); stays after logout() and
    /// after a failed login.
    Q_PROPERTY(QString currentUserCompanyId READ currentUserCompanyId NOTIFY loginStatusChanged)
    /// Given name of the user. Changes with loginStatusChanged(); stays after logout() and after a failed login.
    Q_PROPERTY(QString currentUserFirstName READ currentUserFirstName NOTIFY loginStatusChanged)
    /// Family name of the user. Changes with loginStatusChanged(); stays after logout() and after a failed login.
    Q_PROPERTY(QString currentUserLastName READ currentUserLastName NOTIFY loginStatusChanged)
    /// What the platform lets the user do, Guest until the first login. Changes with loginStatusChanged(); stays after
    /// logout() and after a failed login.
    Q_PROPERTY(UserRole currentUserRole READ currentUserRole NOTIFY loginStatusChanged)

public:
    /// How a login ended; carried by loginResult().
    enum class LoginResult : int {
        LoginResultSuccess = 0,          ///< logged in
        LoginResultTimeOut = 1,          ///< no usable answer; errorOccurred() came before, unless it was a plain
                                         ///< time-out or an answer without a token
        LoginResultFalseCredentials = 2, ///< the server refused user name, password or code
        LoginResultCancelled = 3         ///< cancelLogin(), or a newer login, ended it
    };
    Q_ENUM(LoginResult)

    /// Never raised by the library; kept for hosts that connect to uploadErrorOccurred().
    enum class UploadError : int {
        UploadErrorNone = 0,            ///< never raised
        UploadErrorInternal = 1,        ///< never raised
        UploadErrorTimeOut = 2,         ///< never raised, see Error::TimeOut
        UploadErrorFileAccess = 3,      ///< never raised, see Error::FileOpen and Error::FileWrite
        UploadErrorInvalidParameter = 4 ///< never raised, see Error::InvalidParameter
    };
    Q_ENUM(UploadError)

    /// Never raised by the library; kept for hosts that connect to downloadErrorOccurred().
    enum class DownloadError : int {
        DownloadErrorNone = 0,            ///< never raised
        DownloadErrorInternal = 1,        ///< never raised
        DownloadErrorTimeOut = 2,         ///< never raised, see Error::TimeOut
        DownloadErrorFileAccess = 3,      ///< never raised, see Error::FileOpen and Error::FileWrite
        DownloadErrorInvalidParameter = 4 ///< never raised, see Error::InvalidParameter
    };
    Q_ENUM(DownloadError)

    /// Whether requests can be made in the user's name.
    enum class LoginStatus : int {
        LoginStatusLoggedIn = 0,  ///< the access token is valid for another ten minutes at least
        LoginStatusLoggingIn = 1, ///< a login is on its way, and no token is valid
        LoginStatusLoggedOut = 2  ///< neither; also while the second factor is waited for
    };
    Q_ENUM(LoginStatus)

    /// What the platform lets the user do, as the answer to the login says. The library itself forbids nothing.
    enum class UserRole : int {
        Guest = 0,                ///< no role, or one that this version does not know
        RzOperator = 1,           ///< "RZ_OPERATOR"
        CompanyOperator = 2,      ///< "COMPANY_OPERATOR"
        SystemAdministrator = 3,  ///< "SYSTEM_ADMINISTRATOR"
        CompanyAdministrator = 4, ///< "COMPANY_ADMINISTRATOR"
        EndUser = 5               ///< "END_USER"
    };
    Q_ENUM(UserRole)

    /// Starts the worker thread and waits until it runs.
    ///
    /// @param parent  owns this object, as usual with Qt; may be null. The signals arrive on the thread that makes the call.
    ///
    /// If the thread cannot be started, "Failed to start WebApi worker thread." is logged and no call reaches the worker;
    /// ids are handed out all the same.
    explicit KorvoWebApi(QObject *parent = nullptr);

    /// Stops the worker thread and waits for it. Transfers in flight are cut off: finished files stay, the server is not told.
    ~KorvoWebApi() override;

    /// Logs in with a password.
    ///
    /// @param user      user name, as a rule an e-mail address
    /// @param password  must not hold an "&": the server would cut it off there
    ///
    /// The server is first asked whether the account needs a second factor. If so, tokenAuthenticationNeeded() is
    /// emitted and the login waits for loginWithToken(). Otherwise loginResult() tells how it ended. User name and
    /// password are copied and kept for loginWithToken().
    ///
    /// Emits loginStatusChanged() at its start, and at its end, in this order: currentUserChanged() if the user is another
    /// one, loginStatusChanged(), errorOccurred() when there is more to say than LoginResult can, loginResult().
    ///
    /// A login whose password is on its way is cancelled first (LoginResultCancelled); one that still asks about the
    /// second factor is replaced without a result. What logout() says about running transfers holds here too.
    Q_INVOKABLE virtual void login(const QString &user, const QString &password);

    /// Cancels a login whose password is on its way to the server: loginStatusChanged() and loginResult() with
    /// LoginResultCancelled follow.
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

    /// Asks the server to send the user a new password. Needs no login.
    ///
    /// @param user  user name, as a rule an e-mail address
    ///
    /// There is no answer but errorOccurred() when the request failed; whether the server knows the user is not told.
    Q_INVOKABLE virtual void resetPassword(const QString &user);

    /// Asks for the projects of the user's company: projectInfoReceived() with all of them, or queryRemoteProjectsError().
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
    /// before included; a Quickview or single-file download removes its output file. downloadActiveChanged() follows,
    /// downloadFinished() does not.
    Q_INVOKABLE virtual void abortDownload(unsigned int id);

    /// Stops a download until resumeDownload(). Files in flight are cut off and start over when it goes on; of a Quickview
    /// or single-file download the output file is removed meanwhile. No signal follows.
    Q_INVOKABLE virtual void pauseDownload(unsigned int id);

    /// Lets a paused download go on. A Quickview or single-file download starts over from the first byte. No signal of its
    /// own follows; progress goes on.
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
    /// file has arrived. Any failure ends the whole upload: uploadActiveChanged() and errorOccurred() come,
    /// uploadFinished() does not. A folder that does not exist holds no file: the upload finishes at once, empty.
    Q_INVOKABLE virtual unsigned int uploadProject(const QString &projectId, const QString &projectName,
                                                   const QString &projectPath, const QDateTime &projectCreationDate,
                                                   int maxSimultaneousUploads = 1);

    /// Uploads a project of the import tool, one file at a time. Its id is derived from @p projectName: the same name is
    /// the same project. Nothing is checked here; what is wrong is reported by errorOccurred(). Goes on as uploadProject().
    ///
    /// @param projectName          name shown to users, and source of the id
    /// @param projectPath          local folder
    /// @param projectCreationDate  see uploadProject(); a missing one is refused by the server, or with
    ///                             Error::CreationDate
    /// @return id of the upload, never 0
    Q_INVOKABLE virtual unsigned int uploadQZProject(const QString &projectName, const QString &projectPath,
                                                     const QDateTime &projectCreationDate);

    /// Uploads a Quickview project, one file at a time. Nothing is checked here, see uploadQZProject().
    ///
    /// @param projectId            id of the project, new or known to the platform
    /// @param projectName          name shown to users
    /// @param projectPath          local folder
    /// @param projectCreationDate  see uploadProject(); a missing one is refused by the server, or with
    ///                             Error::CreationDate
    /// @param manholesMedia        relative paths of the media that belong to manholes, see MediaNamesList: they are stored
    ///                             in "Picture/Nod" and "Video/Nod", all others in "Picture/Sec" and "Video/Sec"
    /// @return id of the upload, never 0
    Q_INVOKABLE virtual unsigned int uploadQuickviewProject(const QUuid &projectId, const QString &projectName,
                                                            const QString &projectPath,
                                                            const QDateTime &projectCreationDate,
                                                            MediaNamesList manholesMedia);

    /// Ends an upload and tells the server. uploadActiveChanged() follows, uploadFinished() does not. Each file that was on
    /// its way in one piece is reported by errorOccurred(Error::Cancelled). What has arrived stays on the server.
    Q_INVOKABLE virtual void abortUpload(unsigned int id);

    /// Stops an upload until resumeUpload(): no further file and no further part of a large file is started. What is on
    /// its way runs to its end. No signal of its own follows.
    Q_INVOKABLE virtual void pauseUpload(unsigned int id);

    /// Lets a paused upload go on. Large files that were begun 36 hours ago or more start over, and the percentage of the
    /// whole falls back by what they had brought.
    Q_INVOKABLE virtual void resumeUpload(unsigned int id);

    /// Asks what has become of earlier uploads: uploadStatusInfoReceived(). When the request fails, errorOccurred()
    /// comes before an empty list.
    ///
    /// @param projectId  ids of the projects asked for
    Q_INVOKABLE virtual void queryUploadProjectStatus(const QList<QString> &projectId);

    /// Asks for the link of one media file of a Quickview project: singleFileDownloadLinkReceived(), or errorOccurred().
    /// Error::None then means that the server answered, but knows no such file. Nothing is downloaded yet.
    ///
    /// @param projectId  id of the project
    /// @param fileName   file name without folders; put into the address as it is
    Q_INVOKABLE virtual void startSingleProjectFileDownload(const QUuid &projectId, const QString &fileName);

    /// Asks for the links of all media of a project: allProjectsMediaDownloadLinkReceived(). When the request fails,
    /// errorOccurred() comes before an empty list. Nothing is downloaded yet.
    ///
    /// @param projectId  id of the project, without braces
    Q_INVOKABLE virtual void startAllProjectsMediaDownload(const QString &projectId);

    /// Second step of a login: sends user name and password of the last login() with the code that the user received.
    ///
    /// @param tokenCode  the code as the user typed it, without "&"; keep it alive until loginResult() has come
    ///
    /// Emits what login() emits. A code that is refused gives LoginResultFalseCredentials; call login() again then, or
    /// this function with another code.
    Q_INVOKABLE void loginWithToken(const QString &tokenCode);

    /// Writes the Quickview data of a project into one file.
    ///
    /// @param projectId       id of the project, without braces
    /// @param outputFilePath  local file, replaced when it exists; its folder is created when missing
    /// @return id of the download; 0 when an argument is empty, after errorOccurred(Error::InvalidParameter)
    ///
    /// downloadFinished() always ends it, unless it is aborted; when it failed, errorOccurred() comes first and what had
    /// arrived stays in the file. There are no signals of progress.
    Q_INVOKABLE unsigned int downloadQuickviewProjectData(const QString &projectId, const QString &outputFilePath);

    /// The same for the survey data, see downloadQuickviewProjectData().
    /// @param projectId       id of the project, without braces
    /// @param outputFilePath  local file, replaced when it exists
    /// @return id of the download, or 0
    Q_INVOKABLE unsigned int downloadQuickviewSurveyData(const QString &projectId, const QString &outputFilePath);

    /// The same for the manhole data, see downloadQuickviewProjectData().
    /// @param projectId       id of the project, without braces
    /// @param outputFilePath  local file, replaced when it exists
    /// @return id of the download, or 0
    Q_INVOKABLE unsigned int downloadQuickviewManholeData(const QString &projectId, const QString &outputFilePath);

    /// Fetches one file from a link (http or https), as received by singleFileDownloadLinkReceived().
    ///
    /// @param filePath  local file, replaced when it exists; its folder is created when missing
    /// @param url       address of the file; no credentials are sent to it, and redirects are followed. A call that is
    ///                  rejected logs both arguments.
    /// @return id of the download; 0 when an argument is empty; ends as downloadQuickviewProjectData() does
    Q_INVOKABLE unsigned int downloadSingleProjectFile(const QString &filePath, const QString &url);

    /// The property of that name. Like the seven getters below it may be called from every thread, takes the worker's lock
    /// for the length of one copy and never waits for the network.
    Q_INVOKABLE QString currentUser() const;
    /// The property of that name.
    Q_INVOKABLE QString currentUserFirstName() const;
    /// The property of that name.
    Q_INVOKABLE QString currentUserLastName() const;
    /// The property of that name.
    Q_INVOKABLE QString currentUserCompanyId() const;
    /// The property of that name.
    Q_INVOKABLE UserRole currentUserRole() const;
    /// A valid access token wins over a login on its way.
    Q_INVOKABLE LoginStatus loginStatus() const;
    /// True from the start of an upload until its end, whatever end that is.
    Q_INVOKABLE bool anyUploadActive() const;
    /// True from the start of a download until its first downloadFinished(), or its abort.
    Q_INVOKABLE bool anyDownloadActive() const;

Q_SIGNALS:
    /// Bytes of one file have been sent, or it is about to start (0). Emitted by the upload for each step of a file; does
    /// not come any more once the upload has failed or was aborted.
    /// @param uploadId  id of the upload
    /// @param fileName  absolute local path
    /// @param progress  percent of that file, 0 to 100; what is sent a second time is counted twice, up to 100
    void uploadFileProgressChanged(unsigned int uploadId, const QString &fileName, int progress);
    /// The files in flight. Emitted by the upload with each step and with each file that ends; this and the next three come
    /// together, in this order.
    /// @param uploadId            id of the upload
    /// @param currentUploadFiles  absolute local paths in ascending order; a file that has just ended is still among them
    void currentUploadFilesChanged(unsigned int uploadId, const QStringList &currentUploadFiles);
    /// Progress of the whole upload, by bytes.
    /// @param uploadId  id of the upload
    /// @param value     percent, 0 to 100; 100 also when there is nothing to send
    void uploadTotalProgressChanged(unsigned int uploadId, int value);
    /// Number of files of the upload.
    /// @param uploadId  id of the upload
    /// @param value     number of files that the folder holds, what is left out not counted
    void filesToUploadTotalChanged(unsigned int uploadId, int value);
    /// Number of files that have arrived whole.
    /// @param uploadId  id of the upload
    /// @param value     number of files
    void completedUploadFilesChanged(unsigned int uploadId, int value);
    /// An upload was taken up, or has ended. Emitted by the worker; the end comes exactly once, before uploadFinished() or
    /// errorOccurred(), and is the only signal of an end that names the upload whatever the end is.
    /// @param uploadId  id of the upload
    /// @param bValue    true when it is taken up, false when it has ended in whatever way; a pause is no end
    void uploadActiveChanged(unsigned int uploadId, bool bValue);
    /// Change signal of anyUploadActive. Emitted by the worker, after uploadFinished() of the last upload, but before
    /// errorOccurred() of one that failed.
    /// @param bValue  true with the first upload, false with the end of the last one
    void anyUploadActiveChanged(bool bValue);
    /// Every file has arrived, and the notice to the server is on its way. Does not come after a failure or an abort.
    ///
    /// Keep this object alive until the notice has arrived: queryUploadProjectStatus() tells. Should it fail,
    /// errorOccurred() comes afterwards.
    /// @param uploadId  id of the upload
    void uploadFinished(unsigned int uploadId);
    /// Never emitted; kept for the compatibility of the interface. Failures come through errorOccurred().
    /// @param uploadId   id of the upload
    /// @param errorCode  what failed
    void uploadErrorOccurred(unsigned int uploadId, KorvoWebApi::UploadError errorCode);

    /// Bytes of one file have been written. Emitted by the project download for each step of a file; does not come for
    /// Quickview and single-file downloads.
    /// @param downloadId  id of the download
    /// @param fileName    the file's name (key) in the project's storage
    /// @param progress    percent of that file, 0 to 100; falls back to 0 when the file is asked for again
    void downloadFileProgressChanged(unsigned int downloadId, const QString &fileName, int progress);
    /// The files in flight. Emitted by the project download with each step and with each file that ends; this and the next
    /// three come together, in this order.
    /// @param downloadId            id of the download
    /// @param currentDownloadFiles  names (keys) in the project's storage in ascending order; a file that has just ended is
    ///                              still among them
    void currentDownloadFilesChanged(unsigned int downloadId, const QStringList &currentDownloadFiles);
    /// Progress of the whole download, by bytes.
    /// @param downloadId  id of the download
    /// @param value       percent, 0 to 100; 100 also when there is nothing to fetch
    void downloadTotalProgressChanged(unsigned int downloadId, int value);
    /// Number of files to fetch; files that are there already, empty ones, web copies of videos and refused names are not
    /// counted.
    /// @param downloadId  id of the download
    /// @param value       number of files
    void filesToDownloadTotalChanged(unsigned int downloadId, int value);
    /// Number of files that have arrived whole; the download is whole when it equals the number of files to fetch.
    /// @param downloadId  id of the download
    /// @param value       number of files
    void completedDownloadFilesChanged(unsigned int downloadId, int value);
    /// A download was taken up, or has ended. Emitted by the worker; the end comes exactly once, after the first
    /// downloadFinished() or with an abort.
    /// @param downloadId  id of the download
    /// @param bValue      true when it is taken up, false when it has ended; a pause is no end
    void downloadActiveChanged(unsigned int downloadId, bool bValue);
    /// Never emitted: hosts poll anyDownloadActive.
    /// @param bValue  whether any download is under way
    void anyDownloadActiveChanged(bool bValue);
    /// No file is left to start. Emitted by the worker; can come early and again, see downloadProject(). Comes after a
    /// failure too. Does not come after an abort.
    /// @param downloadId  id of the download
    void downloadFinished(unsigned int downloadId);
    /// Never emitted; kept for the compatibility of the interface. Failures come through errorOccurred().
    /// @param downloadId  id of the download
    /// @param errorCode   what failed
    void downloadErrorOccurred(unsigned int downloadId, KorvoWebApi::DownloadError errorCode);

    /// The confirmed user name has changed. Emitted at the end of a login, before loginResult(); does not come when the same
    /// user logs in again, nor with logout().
    /// @param user  the name; empty after a failed login
    void currentUserChanged(const QString &user);
    /// How a login ended. Emitted by the worker, once for each login whose password was sent. Does not come when the second
    /// factor is asked for (tokenAuthenticationNeeded() comes instead) or when a newer login replaces one that had not come
    /// that far.
    /// @param userName     the server's spelling, as a rule empty when the login failed
    /// @param loginResult  how it ended
    void loginResult(const QString &userName, KorvoWebApi::LoginResult loginResult);
    /// Read loginStatus and the details of the user again. Emitted at the start and at the end of a login and by every
    /// logout(). Does not come when the token runs out, see loginExpired().
    void loginStatusChanged();
    /// Answer to queryRemoteProjects().
    /// @param projectInfoList  all projects of the user's company, in the order of the server; may be empty
    void projectInfoReceived(const QList<ProjectInfo> &projectInfoList);
    /// Answer to queryUploadProjectStatus(); also comes, with an empty list, after errorOccurred() when the request failed.
    /// @param uploadsStatusInfoList  one entry per project that the server tells of
    void uploadStatusInfoReceived(const QList<UploadStatusInfo> &uploadsStatusInfoList);
    /// Something failed, see Error. Emitted by the worker for requests, uploads and downloads alike, without an id; also
    /// emitted inside a call whose argument is rejected, before it returns 0. Does not come for queryRemoteProjects(), nor
    /// for credentials that were refused.
    /// @param error  what failed
    void errorOccurred(Korvo::Web::Error error);
    /// queryRemoteProjects() failed; errorOccurred() is not emitted besides.
    /// @param error  what failed
    void queryRemoteProjectsError(Korvo::Web::Error error);
    /// Answer to startSingleProjectFileDownload(); does not come when there is no such file, see there.
    /// @param mediaDataLink  the link
    void singleFileDownloadLinkReceived(const SingleMediaFileLinkData &mediaDataLink);
    /// Answer to startAllProjectsMediaDownload(); also comes, with an empty list, after errorOccurred() when the request
    /// failed.
    /// @param mediaDataLink  the links; may be empty
    void allProjectsMediaDownloadLinkReceived(const QList<SingleMediaFileLinkData> &mediaDataLink);
    /// The access token ends in ten minutes and counts as invalid from now on: let the user log in again. loginStatus has
    /// changed with it; loginStatusChanged() is not emitted. Emitted by the worker once per login; does not come after
    /// logout(), nor for a token that lasts no longer than ten minutes from the start.
    void loginExpired();
    /// The account asks for a second factor: let the user type the code, then call loginWithToken(). Emitted after
    /// loginStatusChanged(); no loginResult() has come or will come for that call of login().
    void tokenAuthenticationNeeded();

private:
    Q_DISABLE_COPY(KorvoWebApi)
    const QScopedPointer<KorvoWebApiPrivate> d;
};

} // namespace Korvo::Web
