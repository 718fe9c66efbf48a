#pragma once

#include <NQKorvoWeb/KorvoWebExport.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>

namespace Korvo::Web {

/// Writes the XML bodies that both servers read: one root element in a namespace, children without prefixes.
///
/// @code
/// const QByteArray body = NetworkRequestBodyBuilder()
///     .startElement(Xml::BUCKET_REQUEST.toUtf8(), Xml::NAMESPACE_SERVICE.toUtf8())
///     .addElement(Xml::BUCKET_NAME.toUtf8(), bucketName.toUtf8())
///     .generate();
/// @endcode
///
/// All texts are UTF-8 and are written as they are, **without any escaping**: pass only what is safe in the content of
/// an element, such as identifiers, paths, numbers and Base64. The servers are built for exactly these bytes. There is
/// no XML declaration. Nothing here can fail; an empty name is no error, see addElement().
///
/// A plain value: copies are independent of each other. Use one object on one thread at a time.
class NQKORVOWEB_EXPORT NetworkRequestBodyBuilder
{
public:
    /// Takes over the memory of @p spent, a body that is no longer needed, and writes into that; its bytes are forgotten.
    ///
    /// For whoever builds one large body after another: memory that is new each time costs more than filling it. Call it
    /// first; what was written before is forgotten too. A @p spent that somebody else still holds stays as it is.
    /// @return this builder, for the next call
    NetworkRequestBodyBuilder &intoMemoryOf(QByteArray spent);

    /// Opens an element, which stays open until closeElement() or generate().
    ///
    /// @param name        name of the element; when empty, nothing is written and nothing is to be closed
    /// @param attributes  the whole attribute list, such as Constants::Xml::NAMESPACE_WEB; may be empty
    /// @return this builder, for the next call
    NetworkRequestBodyBuilder &startElement(const QByteArray &name, const QByteArray &attributes = QByteArray());

    /// Writes an element with its value, as a start and an end tag even when @p value is empty.
    ///
    /// An empty @p name writes nothing, so that an optional element can be passed without a condition.
    /// @return this builder, for the next call
    NetworkRequestBodyBuilder &addElement(const QByteArray &name, const QByteArray &value);

    /// Writes @p value into the element that is open.
    /// @return this builder, for the next call
    NetworkRequestBodyBuilder &addValue(const QByteArray &value);

    /// Writes the Base64 of @p bytes into the element that is open, with padding and without line breaks.
    /// @return this builder, for the next call
    NetworkRequestBodyBuilder &addBase64(const QByteArray &bytes);

    /// Closes the innermost open element; does nothing when none is open.
    /// @return this builder, for the next call
    NetworkRequestBodyBuilder &closeElement();

    /// Closes every element that is still open, innermost first.
    /// @return the body; empty when nothing was written
    ///
    /// The body shares its bytes with the builder: it is not duplicated unless the builder is written to afterwards.
    QByteArray generate();

private:
    QList<QByteArray> openElements;
    QByteArray output;
};

} // namespace Korvo::Web
