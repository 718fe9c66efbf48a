#pragma once

#include "faults/Lanes.h"

namespace Korvo::Web::Faults {

/// The whole matrix as a document: each cell's outcome in a few characters, and a mark at those that did not hold.
QString matrixDocument(const Differences &differences);

} // namespace Korvo::Web::Faults
