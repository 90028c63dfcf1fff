#include "threads/TimeScale.h"

#include <algorithm>
#include <atomic>

namespace {

std::atomic<double> currentFactor{1.0};

// A slowed duration is added to the present time and must stay in the clock's range.
constexpr std::chrono::hours longestDuration(24 * 365 * 100);

} // namespace

void TimeScale::set(double factor) {
    currentFactor = factor;
}

std::chrono::nanoseconds TimeScale::scaled(std::chrono::milliseconds duration) {
    const double slowed = std::chrono::duration<double, std::nano>(duration).count() / currentFactor;
    const double longest = std::chrono::duration<double, std::nano>(longestDuration).count();
    return std::chrono::nanoseconds(static_cast<long long>(std::min(slowed, longest)));
}
