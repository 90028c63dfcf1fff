#pragma once

#include <string>
#include <vector>

namespace SemaphoreNames {

/// Members of the service that are semaphores, in the order in which they are built.
const std::vector<std::string>& ofService();

} // namespace SemaphoreNames
