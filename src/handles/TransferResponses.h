#pragma once

#include "handles/Response.h"

#include <QtCore/QString>

namespace Korvo::Web {

/// The end of a file sent in one piece; only the outcome matters.
class UploadFileResponse : public Response
{
public:
    void parse(const QString &) { }
};

/// The end of a file fetched; the content has gone to disk, only the outcome matters.
class DownloadFileResponse : public Response
{
public:
    void parse(const QString &) { }
};

struct UploadFileMultiPartInitValues
{
    QString multipartUploadId;
};

/// Answer to the start of a multipart upload.
class UploadFileMultiPartInitResponse : public ResponseOf<UploadFileMultiPartInitValues>
{
public:
    /// Names the upload in the requests for its parts.
    QString multipartUploadId() const { return values().multipartUploadId; }

    void parse(const QString &text);
};

struct UploadFileMultiPartFinishedValues
{
    bool completed = false;
};

/// The end of a multipart upload. Its outcome is a success either way; the handle says how it ended.
class UploadFileMultiPartFinishedResponse : public ResponseOf<UploadFileMultiPartFinishedValues>
{
public:
    /// True when the upload was completed, false when it was aborted.
    bool completed() const { return values().completed; }
    void setCompleted(bool isCompleted) { setValues({isCompleted}); }

    void parse(const QString &) { }
};

} // namespace Korvo::Web

Q_DECLARE_METATYPE(Korvo::Web::UploadFileResponse)
Q_DECLARE_METATYPE(Korvo::Web::DownloadFileResponse)
Q_DECLARE_METATYPE(Korvo::Web::UploadFileMultiPartInitResponse)
Q_DECLARE_METATYPE(Korvo::Web::UploadFileMultiPartFinishedResponse)
