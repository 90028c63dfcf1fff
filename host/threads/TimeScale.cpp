#include "threads/TimeScale.h"

#include <atomic>

namespace {

std::atomic<double> currentFactor{1.0};

} // namespace

void TimeScale::set(double factor) {
    currentFactor = factor;
}

double TimeScale::factor() {
    return currentFactor;
}

std::chrono::nanoseconds TimeScale::scaled(std::chrono::milliseconds duration) {
    return std::chrono::nanoseconds(
        static_cast<long long>(static_cast<double>(std::chrono::nanoseconds(duration).count()) / currentFactor));
}
