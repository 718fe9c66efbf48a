#include "handles/AbstractUploadFileRequestHandle.h"

namespace Korvo::Web {

AbstractUploadFileRequestHandle::AbstractUploadFileRequestHandle(const UploadFileDescriptor &file, QObject *parent)
    : RequestHandle(parent)
    , descriptor(file)
{
}

void AbstractUploadFileRequestHandle::reportStart()
{
    Q_EMIT uploadedBytes(0, 0, totalFileBytes, descriptor.localFilePath);
}

void AbstractUploadFileRequestHandle::countSent(qint64 sentFileBytes)
{
    const qint64 sent = qMax(sentFileBytes, qint64(0));
    const qint64 step = qMax(sent - stepUploadedSize, qint64(0));
    stepUploadedSize = sent; // also when the network layer reports less than before
    totalUploadedSize += step;
    Q_EMIT uploadedBytes(totalUploadedSize, step, totalFileBytes, descriptor.localFilePath);
}

} // namespace Korvo::Web
