#pragma once

#include "handles/RequestHandle.h"
#include "handles/UploadFileDescriptor.h"

namespace Korvo::Web {

/// What the two ways of uploading a file share: the file's description and the counting of its bytes.
class AbstractUploadFileRequestHandle : public RequestHandle
{
    Q_OBJECT

public:
    explicit AbstractUploadFileRequestHandle(const UploadFileDescriptor &file, QObject *parent = nullptr);

    /// Stops the upload of this file; the handle still ends with its own requestFinished().
    virtual void abort() = 0;

    /// Reports 0 bytes, so that a file shows up before any of its data moves.
    void reportStart();

    const UploadFileDescriptor &description() const { return descriptor; }
    qint64 uploadedSize() const { return totalUploadedSize; }
    /// Whether the whole file has arrived; known once the handle has finished.
    bool isUploaded() const { return uploaded; }

Q_SIGNALS:
    /// @p stepUploadedSize are the bytes that are new since the last report, never negative.
    void uploadedBytes(qint64 totalUploadedSize, qint64 stepUploadedSize, qint64 totalFileBytes, QString uploadFile);

protected:
    /// Counts up to @p sentFileBytes of the request in flight, the bytes of the file alone.
    void countSent(qint64 sentFileBytes);

    UploadFileDescriptor descriptor;
    qint64 stepUploadedSize = 0;
    qint64 totalFileBytes = 0;
    qint64 totalUploadedSize = 0;
    bool uploaded = false;
};

} // namespace Korvo::Web
