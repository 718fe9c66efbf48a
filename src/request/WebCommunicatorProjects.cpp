#include "request/WebCommunicator.h"

#include "handles/AuthenticationHandles.h"
#include "handles/ProjectHandles.h"
#include "request/RequestBodies.h"

#include <NQKorvoWeb/Constants.h>
#include <NQKorvoWeb/NetworkRequestBuilder.h>

#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

namespace Korvo::Web {

namespace {

// One page of a million stands for all projects.
const QString PAGE_SIZE = QStringLiteral("1000000");

const QString QUICKVIEW = QStringLiteral("Quickview");
const QString SURVEYS = QStringLiteral("Surveys");
const QString MANHOLES = QStringLiteral("Manholes");
const QString MEDIA = QStringLiteral("Media");
const QString DOWNLOAD = QStringLiteral("Download");

QString quickviewPath(const QString &projectId, const QStringList &parts)
{
    return (QStringList{Constants::Route::PROJECT, projectId, QUICKVIEW} + parts).join(QLatin1Char('/'));
}

// Without compression the announced length can be compared with what has arrived.
QNetworkRequest uncompressed(QNetworkRequest request)
{
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

} // namespace

UserProjectsRequestHandle *WebCommunicator::queryProjects()
{
    const QNetworkRequest request = builder->initializeWebRequest(Constants::Route::PROJECT)
                                        .usingMethod(GET)
                                        .withParam(QStringLiteral("pageSize"), PAGE_SIZE)
                                        .withAuthHeader();
    return follow<UserProjectsRequestHandle>(get(request));
}

UploadProjectsStatusHandle *WebCommunicator::queryUploadStatuses(const QStringList &projectIds)
{
    const QNetworkRequest request = builder->initializeRequest(true, Constants::Route::UPLOAD_STATUS)
                                        .usingMethod(POST)
                                        .withUserAgentHeader()
                                        .withContentTypeHeader("application/json; charset=UTF-8")
                                        .withAuthHeader();
    return follow<UploadProjectsStatusHandle>(post(request, RequestBodies::uploadStatuses(projectIds)));
}

BeginUploadProjectRequestHandle *WebCommunicator::beginUpload(const QString &projectId, const QString &projectName,
                                                              const QDateTime &creationDate)
{
    const QString email = loginData ? loginData->userName() : QString();
    const QByteArray body = RequestBodies::uploadBegin({companyId(), email, projectId, projectName, creationDate});
    return follow<BeginUploadProjectRequestHandle>(post(webRequest(Constants::Route::PROJECT_UPLOAD_INIT, POST), body));
}

void WebCommunicator::finishUpload(const QString &projectId, ImportType importType)
{
    const QNetworkRequest request = webRequest(Constants::Route::PROJECT_UPLOAD_UPLOADED, POST);
    auto *const handle = followNotice(post(request, RequestBodies::uploadFinished(projectId, importType)));
    // Without this notice the platform does not take the project over.
    connect(handle, &NoticeRequestHandle::requestFinished, this,
            [this](const StatusResponse &response) { raise(response.error()); });
}

void WebCommunicator::cancelUpload(const QString &projectId)
{
    followNotice(
        post(webRequest(Constants::Route::PROJECT_UPLOAD_CANCEL, POST), RequestBodies::uploadCancelled(projectId)));
}

SingleProjectFileDownloadRequestHandle *WebCommunicator::queryMediaLink(const QString &projectId,
                                                                        const QString &fileName)
{
    return follow<SingleProjectFileDownloadRequestHandle>(
        get(dataRequest(quickviewPath(projectId, {MEDIA, fileName, DOWNLOAD}))));
}

SingleProjectFileDownloadRequestHandle *WebCommunicator::queryAllMediaLinks(const QString &projectId)
{
    return follow<SingleProjectFileDownloadRequestHandle>(
        get(dataRequest(quickviewPath(projectId, {MEDIA, DOWNLOAD}))));
}

QNetworkReply *WebCommunicator::downloadQuickviewProjectData(const QString &projectId)
{
    return get(uncompressed(dataRequest(quickviewPath(projectId, {}))));
}

QNetworkReply *WebCommunicator::downloadQuickviewSurveyData(const QString &projectId)
{
    return get(uncompressed(dataRequest(quickviewPath(projectId, {SURVEYS}))));
}

QNetworkReply *WebCommunicator::downloadQuickviewManholeData(const QString &projectId)
{
    return get(uncompressed(dataRequest(quickviewPath(projectId, {MANHOLES}))));
}

QNetworkRequest WebCommunicator::dataRequest(const QString &path)
{
    return builder->initializeRequest(true, path)
        .usingMethod(GET)
        .withAcceptHeader(QStringLiteral("application/xml"))
        .withAuthHeader();
}

} // namespace Korvo::Web
