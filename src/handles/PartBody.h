#pragma once

#include <QtCore/QByteArray>

namespace Korvo::Web {

/// The body of the request that carries a part, while the part is being read. Whoever sends the request knows its form;
/// the handle only passes on what it reads, so that a part need not be encoded in one go.
class PartBody
{
public:
    virtual ~PartBody() = default;

    /// Begins with a new part; what there was of another is forgotten.
    /// @param expectedBytes  of the part, before they are encoded
    /// @param spent  the body of an earlier request, or empty: its memory can be used again
    virtual void begin(int expectedBytes, QByteArray spent) = 0;
    /// @param bytes  the next of the part. All but the last are a multiple of three long, so that each can be encoded by
    ///               itself. Not to be kept: the memory is the caller's.
    virtual void add(const QByteArray &bytes) = 0;
    /// The part is not going to be sent now; keeps no memory.
    virtual void drop() = 0;
};

} // namespace Korvo::Web
