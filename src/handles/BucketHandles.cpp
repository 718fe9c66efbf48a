#include "handles/BucketHandles.h"

#include <utility>

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

ListFilesFromLocationsRequestHandle::ListFilesFromLocationsRequestHandle(QObject *parent)
    : RequestHandle(parent)
{
    readsBytes = true;
}

// The reply may have tens of megabytes; it goes before whoever hears of the listing makes more of it.
void ListFilesFromLocationsRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_UNUSED(data)
    ListOfFilesFromLocationResponse response;
    response.setOutcome(error);
    response.parse(std::exchange(responseData, QByteArray()));
    Q_EMIT requestFinished(response);
}

} // namespace Korvo::Web
