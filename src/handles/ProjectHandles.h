#pragma once

#include "handles/ProjectResponses.h"
#include "handles/RequestHandle.h"

namespace Korvo::Web {

class UserProjectsRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    explicit UserProjectsRequestHandle(QObject *parent = nullptr);

Q_SIGNALS:
    void requestFinished(UserProjectsResponse response, Korvo::Web::Error error);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class UploadProjectsStatusHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

Q_SIGNALS:
    void requestFinished(UploadProjectsStatusResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class BeginUploadProjectRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;
    BeginUploadProjectResponse waitForResponse(int timeoutMs)
    {
        return awaited<BeginUploadProjectResponse>(*this, timeoutMs);
    }

Q_SIGNALS:
    void requestFinished(BeginUploadProjectResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class SingleProjectFileDownloadRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

Q_SIGNALS:
    void requestFinished(SingleProjectFileDownloadResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

} // namespace Korvo::Web
