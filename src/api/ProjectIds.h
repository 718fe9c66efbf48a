#pragma once

#include <QtCore/QString>

namespace Korvo::Web {

/// Id of a project of the import tool, which has none of its own: made of its name, the same for the same name.
/// @return 32 lower-case hexadecimal digits in groups of 8, 4, 4, 4 and 12, without braces
QString derivedProjectId(const QString &projectName);

} // namespace Korvo::Web
