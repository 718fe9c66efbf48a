#include "handles/BucketHandles.h"

namespace Korvo::Web {

void BucketCreateRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<BucketCreateResponse>(data, error));
}

void BucketGetRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<BucketGetResponse>(data, error));
}

void ObjectCleanupRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<ObjectCleanupResponse>(data, error));
}

void ObjectDeleteRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<ObjectDeleteResponse>(data, error));
}

void ObjectExistsRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<ObjectExistsResponse>(data, error));
}

void ObjectSpaceRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<ObjectSpaceResponse>(data, error));
}

void ListFilesFromLocationsRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<ListOfFilesFromLocationResponse>(data, error));
}

} // namespace Korvo::Web
