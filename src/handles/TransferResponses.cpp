#include "handles/TransferResponses.h"

#include "handles/XmlReply.h"

namespace Korvo::Web {

void UploadFileMultiPartInitResponse::parse(const QString &text)
{
    setValues({lastText(text, QLatin1String("MultipartUploadId"))});
}

} // namespace Korvo::Web
