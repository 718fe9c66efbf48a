#pragma once

#include <QtCore/QtGlobal>

#if defined(NQKORVOWEB_STATIC)
#define NQKORVOWEB_EXPORT
#elif defined(NQKORVOWEB_BUILDING)
#define NQKORVOWEB_EXPORT Q_DECL_EXPORT
#else
#define NQKORVOWEB_EXPORT Q_DECL_IMPORT
#endif
