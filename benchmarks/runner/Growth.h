#pragma once

#include "runner/Programs.h"

namespace Korvo::Bench {

/// Whether memory stays flat with files of 20 GiB and projects of 100,000 files: a table.
QString growthTable(const Place &place);

} // namespace Korvo::Bench
