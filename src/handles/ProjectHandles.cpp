#include "handles/ProjectHandles.h"

namespace Korvo::Web {

UserProjectsRequestHandle::UserProjectsRequestHandle(QObject *parent)
    : RequestHandle(parent)
{
    readsBytes = true;
}

void UserProjectsRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_UNUSED(data)
    UserProjectsResponse response;
    response.setOutcome(error);
    response.parse(responseData);
    Q_EMIT requestFinished(response, response.error());
}

void UploadProjectsStatusHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<UploadProjectsStatusResponse>(data, error));
}

void BeginUploadProjectRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<BeginUploadProjectResponse>(data, error));
}

void SingleProjectFileDownloadRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<SingleProjectFileDownloadResponse>(data, error));
}

} // namespace Korvo::Web
