#pragma once

#include <algorithm>
#include <limits>

/// Durations for the framework's timers, which take an int of milliseconds.
namespace OrvaneDuration {

/// Products of seconds from the cloud can leave the range of int; a timer then gets the nearest value.
inline int clampToMilliseconds(long long value) {
    constexpr long long lowest = std::numeric_limits<int>::min();
    constexpr long long highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value, lowest, highest));
}

} // namespace OrvaneDuration
