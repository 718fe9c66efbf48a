#pragma once

#include "runner/Programs.h"
#include "runner/Rows.h"
#include "runner/Sizes.h"

namespace Korvo::Bench {

/// What the library does without a network: reading replies, scanning folders.
QVector<Row> innerRows(const Place &place, const Sizes &sizes);

} // namespace Korvo::Bench
