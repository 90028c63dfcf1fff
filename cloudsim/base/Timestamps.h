#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace cloudsim {

using WallTime = std::chrono::system_clock::time_point;
using SteadyTime = std::chrono::steady_clock::time_point;

/// "2026-11-20T12:00:00.123Z"
std::string toTimestamp(WallTime time);
/// The inverse; nothing when the text has another form.
std::optional<WallTime> fromTimestamp(const std::string& text);

} // namespace cloudsim
