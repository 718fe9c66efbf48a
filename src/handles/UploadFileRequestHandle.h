#pragma once

#include "handles/AbstractUploadFileRequestHandle.h"
#include "handles/TransferResponses.h"

namespace Korvo::Web {

/// Uploads one file of up to 4 MiB in a single request.
class UploadFileRequestHandle : public AbstractUploadFileRequestHandle
{
    Q_OBJECT

public:
    /// @param fileBytes  bytes of the file that the request carries
    UploadFileRequestHandle(const UploadFileDescriptor &file, qint64 fileBytes, QObject *parent = nullptr);

    void abort() override;

Q_SIGNALS:
    void requestFinished(UploadFileResponse response);

protected:
    void handleResponse(const QString &data, QNetworkReply::NetworkError error) override;
    void handleUploadProgress(qint64 bytesSent, qint64 bytesTotal) override;
};

} // namespace Korvo::Web
