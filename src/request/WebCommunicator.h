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

    explicit WebCommunicator(QObject *parent = nullptr);
    ~WebCommunicator() override;

    /// Name of the bucket that belongs to company, project and project folder: at most 9 characters of the first two,
    /// then the third; lower case, letters, digits and "-" only.
    static QString bucketName(const QString &companyId, const QString &projectId, const QString &projectFolderName);

    // Authenticated state
    Check2StepAuthenticationRequestHandle *checkTwoStepAuthentication(const QString &user);
    LoginRequestHandle *login(const QString &user, const QString &password);
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
    UserProjectsRequestHandle *queryProjects();
    UploadProjectsStatusHandle *queryUploadStatuses(const QStringList &projectIds);
    BeginUploadProjectRequestHandle *beginUpload(const QString &projectId, const QString &projectName,
                                                 const QDateTime &creationDate);
    /// Fire and forget; a failure is raised as errorOccurred().
    void finishUpload(const QString &projectId, ImportType importType);
    /// Fire and forget; a failure is logged.
    void cancelUpload(const QString &projectId);
    SingleProjectFileDownloadRequestHandle *queryMediaLink(const QString &projectId, const QString &fileName);
    SingleProjectFileDownloadRequestHandle *queryAllMediaLinks(const QString &projectId);

    // Buckets of the storage service
    BucketCreateRequestHandle *createBucket(const QString &bucket);
    BucketGetRequestHandle *queryBucket(const QString &bucket);
    ObjectDeleteRequestHandle *deleteObject(const QString &bucket, const QString &relativePath);
    ObjectSpaceRequestHandle *queryUsedSpace(const QString &bucket, const QString &relativePath);
    ObjectExistsRequestHandle *queryObjectExists(const QString &bucket, const QString &relativePath);
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
    QNetworkReply *downloadQuickviewProjectData(const QString &projectId);
    QNetworkReply *downloadQuickviewSurveyData(const QString &projectId);
    QNetworkReply *downloadQuickviewManholeData(const QString &projectId);
    /// Plain GET of a link, which may lead on to another; null unless it is http or https.
    QNetworkReply *downloadLink(const QString &link);

Q_SIGNALS:
    void errorOccurred(Korvo::Web::Error error);
    void loginExpired();

protected:
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
