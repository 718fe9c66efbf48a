#include "request/WebCommunicator.h"

#include "handles/BucketHandles.h"
#include "request/RequestBodies.h"

#include <NQKorvoWeb/Constants.h>

#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

namespace Korvo::Web {

BucketCreateRequestHandle *WebCommunicator::createBucket(const QString &bucket)
{
    return follow<BucketCreateRequestHandle>(
        put(serviceRequest(Constants::Route::BUCKET, PUT), RequestBodies::createBucket(bucket)));
}

// A bucket is asked for as the object with an empty path.
BucketGetRequestHandle *WebCommunicator::queryBucket(const QString &bucket)
{
    return follow<BucketGetRequestHandle>(
        post(serviceRequest(Constants::Route::BUCKET_EXISTS, POST), RequestBodies::objectExists(bucket, QString())));
}

ObjectDeleteRequestHandle *WebCommunicator::deleteObject(const QString &bucket, const QString &relativePath)
{
    return follow<ObjectDeleteRequestHandle>(
        post(serviceRequest(Constants::Route::BUCKET_DELETE, POST), RequestBodies::deleteObject(bucket, relativePath)));
}

ObjectSpaceRequestHandle *WebCommunicator::queryUsedSpace(const QString &bucket, const QString &relativePath)
{
    return follow<ObjectSpaceRequestHandle>(
        post(serviceRequest(Constants::Route::BUCKET_SPACE, POST), RequestBodies::usedSpace(bucket, relativePath)));
}

ObjectExistsRequestHandle *WebCommunicator::queryObjectExists(const QString &bucket, const QString &relativePath)
{
    return follow<ObjectExistsRequestHandle>(
        post(serviceRequest(Constants::Route::BUCKET_EXISTS, POST), RequestBodies::objectExists(bucket, relativePath)));
}

ObjectCleanupRequestHandle *WebCommunicator::cleanUpVersions(const QString &bucket, const QString &relativePath,
                                                             int keepNewest)
{
    return follow<ObjectCleanupRequestHandle>(post(serviceRequest(Constants::Route::BUCKET_CLEANUP, POST),
                                                   RequestBodies::cleanUpVersions(bucket, relativePath, keepNewest)));
}

QNetworkReply *WebCommunicator::sendListing(const QByteArray &body)
{
    return post(serviceRequest(Constants::Route::BUCKET_FILES_FROM_LOCATIONS, POST), body);
}

ListFilesFromLocationsRequestHandle *WebCommunicator::listFiles(const QString &bucket, const QString &delimiter,
                                                                const QStringList &prefixes)
{
    return follow<ListFilesFromLocationsRequestHandle>(
        sendListing(RequestBodies::listFiles(bucket, delimiter, prefixes)));
}

ListFilesFromLocationsRequestHandle *
WebCommunicator::listFilesForDownload(const QString &bucket, const QString &delimiter, const QStringList &prefixes)
{
    const QByteArray body = RequestBodies::listFiles(bucket, delimiter, prefixes);
    auto *const handle = follow<ListFilesFromLocationsRequestHandle>(sendListing(body));
    handle->enableRetry(manager.data(), body);
    return handle;
}

} // namespace Korvo::Web
