#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QSet>
#include <QtCore/QString>

namespace Korvo::Web {

/// Relative paths of the media files that belong to nodes (manholes), "/" between folders, no leading "/".
using MediaNamesList = QSet<QString>;

} // namespace Korvo::Web
