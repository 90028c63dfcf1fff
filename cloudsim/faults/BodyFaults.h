#pragma once

#include "faults/Fault.h"

namespace cloudsim {

/// Applies what the actions say to a JSON answer: keys taken out or given another type, nested first, a huge body,
/// malformed text.
std::string spoiled(const std::string& body, const FaultActions& actions);

} // namespace cloudsim
