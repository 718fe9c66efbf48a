#pragma once

#include "server/Connection.h"
#include "server/Record.h"

namespace Korvo::Bench {

/// Answers the requests of one connection until the client goes.
void serve(Connection &connection, Record &record);

} // namespace Korvo::Bench
