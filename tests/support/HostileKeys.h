#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Korvo::Web::TestSupport {

/// Several hundred keys that try to lead a file out of the download folder, or into a device, a stream or another file:
/// each way out with each kind of name, so that they come alone and combined.
///
/// @param target  an absolute path outside the download folder, for keys that name it
QStringList hostileKeys(const QString &target);

/// More than fifty keys that look odd and are good names all the same.
QStringList oddKeys();

} // namespace Korvo::Web::TestSupport
