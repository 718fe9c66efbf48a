#pragma once

#include "runner/Programs.h"
#include "runner/Sizes.h"

namespace Korvo::Bench {

/// Where the processor time of a large upload goes, by thread and library and by function, as perf sees it.
QString uploadProfile(const Place &place, const Sizes &sizes);

} // namespace Korvo::Bench
