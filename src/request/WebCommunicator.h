#pragma once

#include <NQKorvoWeb/Error.h>
#include <NQKorvoWeb/ImportType.h>
#include <NQKorvoWeb/KorvoWebExport.h>
#include <NQKorvoWeb/RequestMethod.h>

#include <QtCore/QBasicTimer>
#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QObject>
#include <QtCore/QPair>
#include <QtCore/QScopedPointer>
#include <QtCore/QSharedPointer>
#include <QtCore/QStringList>

class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;

namespace Korvo::Web {

class BeginUploadProjectRequestHandle;
class BucketCreateRequestHandle;
class BucketGetRequestHandle;
class Check2StepAuthenticationRequestHandle;
class DownloadFileHandle;
class ListFilesFromLocationsRequestHandle;
class LoginRequestHandle;
class LoginResponse;
class NetworkRequestBuilder;
class NoticeRequestHandle;
class ObjectCleanupRequestHandle;
class ObjectDeleteRequestHandle;
class ObjectExistsRequestHandle;
class ObjectSpaceRequestHandle;
class RequestHandle;
class SingleProjectFileDownloadRequestHandle;
class UploadFileMultiPartRequestHandle;
class UploadFileRequestHandle;
class UploadProjectsStatusHandle;
class UserProjectsRequestHandle;
struct UploadFileDescriptor;

/// Turns each operation of the library into a request and sends it.
///
/// Of this class only the two import-type helpers are open to hosts; everything else is used by the library itself, on
/// its worker thread. Each function that returns a handle has sent the request: connect to the handle's signals and
/// dispose of it with deleteLater() when it has answered. Handles are children of the communicator until the caller
/// takes them over.
class WebCommunicator : public QObject
{
    Q_OBJECT

public:
    /// Name and value of the element that tells the web server the kind of project; both null for ImportType::Standard.
    NQKORVOWEB_EXPORT static QPair<QByteArray, QByteArray> importTypeToXmlElement(ImportType importType);
    /// The same as a finished piece of XML; empty for ImportType::Standard.
    NQKORVOWEB_EXPORT static QByteArray importTypeToStr(ImportType importType);

    /// Makes the network access manager, and with it everything that belongs to the thread of the call.
    explicit WebCommunicator(QObject *parent = nullptr);
    /// Deletes the requests in flight without a signal.
    ~WebCommunicator() override;

    /// Name of the bucket that belongs to company, project and project folder: at most 9 characters of the first two,
    /// then the third; lower case, letters, digits and "-" only.
    static QString bucketName(const QString &companyId, const QString &projectId, const QString &projectFolderName);

    // Authenticated state
    /// Asks whether the account of @p user needs a second factor.
    Check2StepAuthenticationRequestHandle *checkTwoStepAuthentication(const QString &user);
    /// Asks for an access token. storeLogin() makes use of the answer.
    LoginRequestHandle *login(const QString &user, const QString &password);
    /// Asks for an access token with the code of the second factor.
    LoginRequestHandle *loginWithCode(const QString &user, const QString &password, const QString &code);
    /// Reads the clock of the storage service, 3 seconds at most; without an answer the offset stays as it was.
    void readServerClock();
    /// Keeps the login: requests carry its token from now on, loginExpired() comes ten minutes before it ends.
    void storeLogin(const LoginResponse &response);
    /// Fetches what storage requests are signed with, 10 seconds at most; without an answer nothing changes.
    void fetchClientCredentials();
    /// Forgets token, client credentials and cookies. No server is told.
    void logout();
    /// Whether the token lasts for another ten minutes at least.
    bool hasValidToken() const;
    /// Company of the login; empty when logged out.
    QString companyId() const;
    /// Fire and forget; a failure is raised as errorOccurred().
    void resetPassword(const QString &user);

    // Projects on the web server
    /// Asks for all projects of the company, in one page.
    UserProjectsRequestHandle *queryProjects();
    /// Asks what has become of uploads.
    UploadProjectsStatusHandle *queryUploadStatuses(const QStringList &projectIds);
    /// Begins an upload in the name of the user who is logged in; the answer names the bucket.
    BeginUploadProjectRequestHandle *beginUpload(const QString &projectId, const QString &projectName,
                                                 const QDateTime &creationDate);
    /// Fire and forget; a failure is raised as errorOccurred().
    void finishUpload(const QString &projectId, ImportType importType);
    /// Fire and forget; a failure is logged.
    void cancelUpload(const QString &projectId);
    /// Asks for the link of one media file. Both texts go into the address as they are.
    SingleProjectFileDownloadRequestHandle *queryMediaLink(const QString &projectId, const QString &fileName);
    /// Asks for the links of all media of a project.
    SingleProjectFileDownloadRequestHandle *queryAllMediaLinks(const QString &projectId);

    // Buckets of the storage service
    /// Creates a bucket; its name is lower-cased.
    BucketCreateRequestHandle *createBucket(const QString &bucket);
    /// Asks whether there is a bucket of that name.
    BucketGetRequestHandle *queryBucket(const QString &bucket);
    /// Deletes one object, or what lies below a folder.
    ObjectDeleteRequestHandle *deleteObject(const QString &bucket, const QString &relativePath);
    /// Asks how many bytes an object, or what lies below a folder, takes.
    ObjectSpaceRequestHandle *queryUsedSpace(const QString &bucket, const QString &relativePath);
    /// Asks whether there is such an object.
    ObjectExistsRequestHandle *queryObjectExists(const QString &bucket, const QString &relativePath);
    /// Removes old versions of an object but the newest @p keepNewest.
    ObjectCleanupRequestHandle *cleanUpVersions(const QString &bucket, const QString &relativePath, int keepNewest);
    /// Sent once. An empty list of prefixes lists the whole bucket.
    ListFilesFromLocationsRequestHandle *listFiles(const QString &bucket, const QString &delimiter,
                                                   const QStringList &prefixes);
    /// Sent again when it fails.
    ListFilesFromLocationsRequestHandle *listFilesForDownload(const QString &bucket, const QString &delimiter,
                                                              const QStringList &prefixes);

    // Files of the storage service
    /// Uploads a file of up to 4 MiB. Null when it cannot be read whole: that is logged, and nothing is sent.
    UploadFileRequestHandle *uploadFile(const UploadFileDescriptor &file);
    /// Uploads a file in parts of 4 MiB. Null when it cannot be opened: that is logged, and nothing is sent.
    UploadFileMultiPartRequestHandle *uploadFileInParts(const UploadFileDescriptor &file);
    /// Fire and forget; a failure is logged.
    void startTranscoding(const UploadFileDescriptor &file);
    /// Fetches a file; when the handle's fileError() is set, nothing has been sent.
    DownloadFileHandle *downloadFile(const QString &bucket, const QString &key, const QString &localPath,
                                     qint64 expectedBytes);

    // Data that is written as it arrives; the reply is the caller's
    /// Fetches the Quickview data of a project.
    QNetworkReply *downloadQuickviewProjectData(const QString &projectId);
    /// Fetches the survey data of a Quickview project.
    QNetworkReply *downloadQuickviewSurveyData(const QString &projectId);
    /// Fetches the manhole data of a Quickview project.
    QNetworkReply *downloadQuickviewManholeData(const QString &projectId);
    /// Plain GET of a link, which may lead on to another; null unless it is http or https.
    QNetworkReply *downloadLink(const QString &link);

Q_SIGNALS:
    /// A request that nobody waits for has failed: the notice of a finished upload, or a password reset.
    void errorOccurred(Korvo::Web::Error error);
    /// The access token ends in ten minutes. Comes once per login; does not come after logout().
    void loginExpired();

protected:
    /// Watches the token's time.
    void timerEvent(QTimerEvent *event) override;

private:
    QNetworkRequest formRequest();
    QNetworkRequest webRequest(const QString &route, RequestMethod method);
    QNetworkRequest serviceRequest(const QString &route, RequestMethod method);
    QNetworkRequest dataRequest(const QString &path);
    QNetworkReply *get(const QNetworkRequest &request);
    QNetworkReply *post(const QNetworkRequest &request, const QByteArray &body);
    QNetworkReply *put(const QNetworkRequest &request, const QByteArray &body);
    template <class Handle>
    Handle *follow(QNetworkReply *reply);
    NoticeRequestHandle *followNotice(QNetworkReply *reply);
    QNetworkReply *sendListing(const QByteArray &body);
    void sendStep(UploadFileMultiPartRequestHandle *handle, const QString &route, const QByteArray &body);
    void raise(Error error);
    void applyServerDate(const QDateTime &serverDate);
    qint64 millisecondsToExpiry() const;
    void armTokenTimer();

    QScopedPointer<NetworkRequestBuilder> builder;
    QSharedPointer<const LoginResponse> loginData;
    QScopedPointer<QNetworkAccessManager> manager;
    bool loggedIn = false;
    QBasicTimer tokenTimer;
};

template <class Handle>
Handle *WebCommunicator::follow(QNetworkReply *reply)
{
    auto *const handle = new Handle(this);
    handle->setReply(reply);
    return handle;
}

} // namespace Korvo::Web
