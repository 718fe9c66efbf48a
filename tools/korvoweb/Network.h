#pragma once

#include "Outcome.h"

namespace Korvo::Cli {

struct CommonOptions;

/// Sets proxy and authorities for the whole program; not successful when the file of authorities cannot be used.
Outcome setUpNetwork(const CommonOptions &options);

} // namespace Korvo::Cli
