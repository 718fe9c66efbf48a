#pragma once

#include "Exchange.h"

namespace LocalPlatform {

/// The steps at which the fault of a request strikes: before its body is read, when its answer stands, and when the
/// answer's headers stand.
void damageRequest(Exchange &exchange);
void damageAnswer(Exchange &exchange);
void damageHeaders(Exchange &exchange);

} // namespace LocalPlatform
