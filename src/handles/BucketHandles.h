#pragma once

#include "handles/BucketResponses.h"
#include "handles/RequestHandle.h"

namespace Korvo::Web {

class BucketCreateRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;
    BucketCreateResponse waitForResponse(int timeoutMs) { return awaited<BucketCreateResponse>(*this, timeoutMs); }

Q_SIGNALS:
    void requestFinished(BucketCreateResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class BucketGetRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;
    BucketGetResponse waitForResponse(int timeoutMs) { return awaited<BucketGetResponse>(*this, timeoutMs); }

Q_SIGNALS:
    void requestFinished(BucketGetResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class ObjectCleanupRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

Q_SIGNALS:
    void requestFinished(ObjectCleanupResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class ObjectDeleteRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

Q_SIGNALS:
    void requestFinished(ObjectDeleteResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class ObjectExistsRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

Q_SIGNALS:
    void requestFinished(ObjectExistsResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class ObjectSpaceRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

Q_SIGNALS:
    void requestFinished(ObjectSpaceResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class ListFilesFromLocationsRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    explicit ListFilesFromLocationsRequestHandle(QObject *parent = nullptr);

Q_SIGNALS:
    void requestFinished(ListOfFilesFromLocationResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

} // namespace Korvo::Web
