#pragma once

#include "request/PartRequestBody.h"

namespace Korvo::Web::TestSupport {

/// The body that carries @p content as one part, put together in one go.
inline QByteArray partBody(const QByteArray &content, const QString &uploadId, int partNumber)
{
    PartRequestBody body;
    body.begin(content.size(), QByteArray());
    body.add(content);
    return body.finish(uploadId, partNumber);
}

} // namespace Korvo::Web::TestSupport
