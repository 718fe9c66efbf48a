#include "request/PartRequestBody.h"

#include "request/Base64.h"

#include <NQKorvoWeb/Constants.h>

#include <utility>

namespace Korvo::Web {

namespace {

namespace Xml = Constants::Xml;

// What stands around the content: tags, upload id and number.
constexpr int SPACE_AROUND_CONTENT_BYTES = 4 * 1024;

} // namespace

// All the room at once: an array that grows with each slice would be moved again and again.
void PartRequestBody::begin(int expectedBytes, QByteArray spent)
{
    builder = NetworkRequestBodyBuilder();
    if (!spent.isDetached())
        spent.clear();
    spent.reserve(base64Length(expectedBytes) + SPACE_AROUND_CONTENT_BYTES);
    builder.intoMemoryOf(std::move(spent))
        .startElement(Xml::UPLOAD_MULIT_PART_REQUEST.toUtf8(), Xml::NAMESPACE_SERVICE.toUtf8())
        .startElement(Xml::INPUT_FILE_PART_ARRAY.toUtf8());
}

void PartRequestBody::add(const QByteArray &bytes)
{
    builder.addBase64(bytes);
}

void PartRequestBody::drop()
{
    builder = NetworkRequestBodyBuilder();
}

QByteArray PartRequestBody::finish(const QString &uploadId, int partNumber)
{
    const QByteArray body = builder.closeElement()
                                .addElement(Xml::MULTIPART_UPLOAD_ID.toUtf8(), uploadId.toUtf8())
                                .addElement(Xml::PART_NUMBER.toUtf8(), QByteArray::number(partNumber))
                                .generate();
    builder = NetworkRequestBodyBuilder(); // the request has it to itself
    return body;
}

} // namespace Korvo::Web
