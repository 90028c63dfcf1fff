#pragma once

#include <chrono>

/// How much faster than real time the telephone's timers, pings and sleeps run. Set once at start-up; any thread may
/// ask.
class TimeScale {
public:
    /// A factor above 0.
    static void set(double factor);

    static std::chrono::nanoseconds scaled(std::chrono::milliseconds duration);
};
