#pragma once

#include <QtCore/QtGlobal>

#if defined(NQSHAREDBASE_STATIC)
#define NQSHAREDBASE_EXPORT
#elif defined(NQSHAREDBASE_BUILDING)
#define NQSHAREDBASE_EXPORT Q_DECL_EXPORT
#else
#define NQSHAREDBASE_EXPORT Q_DECL_IMPORT
#endif
