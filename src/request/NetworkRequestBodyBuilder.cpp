#include "request/NetworkRequestBodyBuilder.h"

#include "request/Base64.h"

#include <utility>

namespace Korvo::Web {

namespace {

constexpr int LARGE_VALUE_BYTES = 64 * 1024;
// What usually follows the content of a file: its end tag, its path and folder name, the end of the root.
constexpr int SPACE_BEHIND_LARGE_VALUE_BYTES = 2 * 1024;

// The content of a file makes up nearly the whole body. Left to grow by itself, the array would round its size up by
// megabytes.
void makeRoomForValue(QByteArray &output, int valueBytes)
{
    if (valueBytes >= LARGE_VALUE_BYTES)
        output.reserve(output.size() + valueBytes + SPACE_BEHIND_LARGE_VALUE_BYTES);
}

} // namespace

// Memory that was not reserved would be given back when the array is emptied.
NetworkRequestBodyBuilder &NetworkRequestBodyBuilder::intoMemoryOf(QByteArray spent)
{
    openElements.clear();
    output.clear();
    if (!spent.isDetached())
        return *this;
    output = std::move(spent);
    output.reserve(output.size());
    output.resize(0);
    return *this;
}

NetworkRequestBodyBuilder &NetworkRequestBodyBuilder::startElement(const QByteArray &name, const QByteArray &attributes)
{
    if (name.isEmpty())
        return *this;
    openElements.append(name);
    output.append('<').append(name);
    if (!attributes.isEmpty())
        output.append(' ').append(attributes);
    output.append('>');
    return *this;
}

NetworkRequestBodyBuilder &NetworkRequestBodyBuilder::addElement(const QByteArray &name, const QByteArray &value)
{
    if (name.isEmpty())
        return *this;
    return startElement(name).addValue(value).closeElement();
}

NetworkRequestBodyBuilder &NetworkRequestBodyBuilder::addValue(const QByteArray &value)
{
    makeRoomForValue(output, value.size());
    output.append(value);
    return *this;
}

// Encoded in place: a text of its own would be one more copy of the whole file.
NetworkRequestBodyBuilder &NetworkRequestBodyBuilder::addBase64(const QByteArray &bytes)
{
    const int start = output.size();
    const int length = base64Length(bytes.size());
    makeRoomForValue(output, length);
    output.resize(start + length);
    writeBase64(bytes, output.data() + start);
    return *this;
}

NetworkRequestBodyBuilder &NetworkRequestBodyBuilder::closeElement()
{
    if (openElements.isEmpty())
        return *this;
    output.append("</").append(openElements.takeLast()).append('>');
    return *this;
}

QByteArray NetworkRequestBodyBuilder::generate()
{
    while (!openElements.isEmpty())
        closeElement();
    return output;
}

} // namespace Korvo::Web
