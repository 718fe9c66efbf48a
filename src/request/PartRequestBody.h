#pragma once

#include "handles/PartBody.h"

#include <NQKorvoWeb/NetworkRequestBodyBuilder.h>

#include <QtCore/QString>

namespace Korvo::Web {

/// The body of the request that uploads one part, written while the part is being read.
class PartRequestBody : public PartBody
{
public:
    void begin(int expectedBytes, QByteArray spent) override;
    void add(const QByteArray &bytes) override;
    void drop() override;

    /// @return the whole body; the next part begins anew
    QByteArray finish(const QString &uploadId, int partNumber);

private:
    NetworkRequestBodyBuilder builder;
};

} // namespace Korvo::Web
