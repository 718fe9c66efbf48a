#pragma once

#include "runner/Programs.h"

namespace Korvo::Bench {

/// Sends and fetches the same projects with library and peer and compares every request, header and body, and every file
/// on disk. Throws std::runtime_error at the first difference; one sentence otherwise.
QString compareBytes(const Place &place);

} // namespace Korvo::Bench
