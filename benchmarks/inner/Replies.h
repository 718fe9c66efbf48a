#pragma once

#include "support/Figures.h"

namespace Korvo::Bench {

/// From the last byte of a reply to its parsed response: seconds, and the memory that this takes at its peak, the reply
/// itself included.
Figures listingByLibrary(int entries);
/// The same with expat into plain structs.
Figures listingByExpat(int entries);
/// The list of so many projects; seconds alone.
Figures projectsByLibrary(int projects);

} // namespace Korvo::Bench
