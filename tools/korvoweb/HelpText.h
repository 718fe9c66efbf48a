#pragma once

#include <QtCore/QString>

namespace Korvo::Cli {

struct CommandInfo;

/// What --help prints; @p command may be null.
QString helpText(const CommandInfo *command);

} // namespace Korvo::Cli
