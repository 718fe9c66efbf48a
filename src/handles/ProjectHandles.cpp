#include "handles/ProjectHandles.h"

namespace Korvo::Web {

void UserProjectsRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    const auto response = answered<UserProjectsResponse>(data, error);
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
