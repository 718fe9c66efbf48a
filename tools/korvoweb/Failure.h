#pragma once

#include "Outcome.h"

#include <NQKorvoWeb/Error.h>

namespace Korvo::Cli {

class LibraryLog;

/// The enumerator's name, as it stands in JSON.
QString errorName(Web::Error error);
/// What happened and what to do, with the cause that the library logged.
QString errorText(Web::Error error, const LibraryLog &log);
ExitCode exitCodeFor(Web::Error error, const LibraryLog &log);
Outcome failureOf(Web::Error error, const LibraryLog &log);

} // namespace Korvo::Cli
