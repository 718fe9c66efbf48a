#include "handles/AuthenticationHandles.h"

namespace Korvo::Web {

void LoginRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<LoginResponse>(data, error));
}

void Check2StepAuthenticationRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<Check2StepAuthenticationResponse>(data, error));
}

void ClientCredentialsRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<ClientCredentialsResponse>(data, error));
}

void NoticeRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_EMIT requestFinished(answered<StatusResponse>(data, error));
}

void ResetPasswordRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_UNUSED(data)
    Q_UNUSED(error)
    deleteLater();
}

} // namespace Korvo::Web
