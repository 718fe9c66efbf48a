#pragma once

#include "faults/Lanes.h"

namespace Korvo::Web::Faults {

/// The whole matrix as a document: each cell's outcome in a few characters, and a mark at those that did not hold.
/// @p run is a line about the run that wrote it.
QString matrixDocument(const Differences &differences, const QString &run);

} // namespace Korvo::Web::Faults
