#pragma once

#include <chrono>
#include <string>

namespace cloudsim {

using WallTime = std::chrono::system_clock::time_point;
using SteadyTime = std::chrono::steady_clock::time_point;

/// "2026-11-20T12:00:00.123Z"
std::string toTimestamp(WallTime time);

} // namespace cloudsim
