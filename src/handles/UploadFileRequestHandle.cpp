#include "handles/UploadFileRequestHandle.h"

namespace Korvo::Web {

UploadFileRequestHandle::UploadFileRequestHandle(const UploadFileDescriptor &file, qint64 fileBytes, QObject *parent)
    : AbstractUploadFileRequestHandle(file, parent)
{
    totalFileBytes = fileBytes;
}

void UploadFileRequestHandle::abort()
{
    RequestHandle::abort();
}

void UploadFileRequestHandle::handleResponse(const QString &data, QNetworkReply::NetworkError error)
{
    Q_UNUSED(data) // the outcome says it all
    UploadFileResponse response;
    response.setOutcome(error);
    uploaded = response.isSuccess();
    Q_EMIT requestFinished(response);
}

void UploadFileRequestHandle::handleUploadProgress(qint64 bytesSent, qint64 bytesTotal)
{
    if (bytesTotal <= 0) // Qt closes every upload with (0, 0)
        return;
    countSent(bytesSent - (bytesTotal - totalFileBytes));
}

} // namespace Korvo::Web
