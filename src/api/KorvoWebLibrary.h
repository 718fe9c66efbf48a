#pragma once

#include <NQKorvoWeb/KorvoWebExport.h>

namespace Korvo::Web {

/// Prepares the library for use.
class NQKORVOWEB_EXPORT KorvoWebLibrary
{
public:
    /// Registers the types that travel in the signals of KorvoWebApi with Qt's meta-type system.
    ///
    /// Call it once, from any thread, before the first KorvoWebApi is created; further calls are harmless. Without it
    /// loginResult(), projectInfoReceived() and every other signal with a type of this library never arrive. It emits
    /// nothing and cannot fail.
    static void initialize();

    /// Does nothing: there is nothing to give back. Call it as the counterpart of initialize(), or leave it out.
    static void finalize();

    KorvoWebLibrary() = delete;
};

} // namespace Korvo::Web
