#pragma once

#include "Exchange.h"
#include "Platform.h"

namespace LocalPlatform {

/// Each answers the exchange or throws Refusal.
void handleWebRequest(Platform &platform, Exchange &exchange);
void handleServiceRequest(Platform &platform, Exchange &exchange);
void handleControlRequest(Platform &platform, Exchange &exchange);
void handlePageRequest(Platform &platform, Exchange &exchange);

/// Refuses a request whose body is announced as anything else.
void requireContentType(const Exchange &exchange, const char *type);

} // namespace LocalPlatform
