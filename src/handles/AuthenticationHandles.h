#pragma once

#include "handles/AuthenticationResponses.h"
#include "handles/RequestHandle.h"

namespace Korvo::Web {

class LoginRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

Q_SIGNALS:
    void requestFinished(LoginResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class Check2StepAuthenticationRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

Q_SIGNALS:
    void requestFinished(Check2StepAuthenticationResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

class ClientCredentialsRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;
    ClientCredentialsResponse waitForResponse(int timeoutMs)
    {
        return awaited<ClientCredentialsResponse>(*this, timeoutMs);
    }

Q_SIGNALS:
    void requestFinished(ClientCredentialsResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

/// Follows a request of which only the outcome matters: a notice to a server, or the clock, whose text is awaited.
class NoticeRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

Q_SIGNALS:
    void requestFinished(StatusResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

/// Follows a password reset: fire and forget. It builds no response, emits nothing and deletes itself, alone of all handles.
class ResetPasswordRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    using RequestHandle::RequestHandle;

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
};

} // namespace Korvo::Web
