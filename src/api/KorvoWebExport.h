#pragma once

#include <QtCore/QtGlobal>

/// @file
/// What the shared library exports and a host imports. NQKORVOWEB_STATIC is defined by the CMake target when the library is
/// static; NQKORVOWEB_BUILDING only while the library itself is built.

/// @def NQKORVOWEB_EXPORT
/// Marks what hosts may use; everything else stays hidden in the library.
#if defined(NQKORVOWEB_STATIC)
#define NQKORVOWEB_EXPORT
#elif defined(NQKORVOWEB_BUILDING)
#define NQKORVOWEB_EXPORT Q_DECL_EXPORT
#else
#define NQKORVOWEB_EXPORT Q_DECL_IMPORT
#endif
