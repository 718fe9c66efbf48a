#pragma once

#include "faults/Cells.h"
#include "faults/Outcome.h"

namespace Korvo::Web::Faults {

/// What has to be seen in a cell: how the course of the struck request shows, by the rules for its kind.
Outcome expectedOutcome(const Cell &cell);

/// The same when the request behind the struck one's last attempt is taken along by the close of its connection, unsent.
Outcome outcomeTakenAlong(const Cell &cell);

/// The expected outcome in a few characters, for the table.
QString codeOf(const Cell &cell);

} // namespace Korvo::Web::Faults
