#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

namespace Korvo::Desktop {

QString sizeText(quint64 bytes);
/// In local time; a dash when the date is not known.
QString dateText(const QDateTime &date);

/// A folder name that every file system takes, made of a name that a server told.
QString folderNameFor(const QString &projectName);
/// A path below @p parent that does not exist yet, "name", "name (2)" and so on.
QString freePath(const QString &parent, const QString &name);

} // namespace Korvo::Desktop
