#pragma once

#include "faults/Fault.h"
#include "net/Connection.h"

namespace cloudsim {

/// Sends an answer in the way that the actions say. False when the connection is of no further use.
bool deliver(Connection& connection, const HttpResponse& response, const FaultActions& actions);

} // namespace cloudsim
