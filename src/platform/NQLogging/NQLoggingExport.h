#pragma once

#include <QtCore/QtGlobal>

#if defined(NQLOGGING_STATIC)
#define NQLOGGING_EXPORT
#elif defined(NQLOGGING_BUILDING)
#define NQLOGGING_EXPORT Q_DECL_EXPORT
#else
#define NQLOGGING_EXPORT Q_DECL_IMPORT
#endif
