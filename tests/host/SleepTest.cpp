#include "threads/OSALSleep.h"
#include "threads/SleepControl.h"
#include "threads/TimeScale.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

} // namespace

// The end of sleeping is for good: the test of it must come last.

TEST(Sleeping, OfNothingReturnsAtOnce) {
    const auto begin = Clock::now();

    OSALSleep::secSleep(0);
    OSALSleep::secSleep(-60);

    EXPECT_LT(Clock::now() - begin, 1s);
}

TEST(Sleeping, FollowsTheTimeScale) {
    TimeScale::set(1'000);
    const auto begin = Clock::now();

    OSALSleep::secSleep(30);

    const auto slept = Clock::now() - begin;
    TimeScale::set(1);
    EXPECT_GE(slept, 30ms);
    EXPECT_LT(slept, 5s);
}

TEST(TheTimeScale, DividesDurations) {
    TimeScale::set(4);
    const auto quarter = TimeScale::scaled(1'000ms);
    TimeScale::set(0.5);
    const auto twice = TimeScale::scaled(1'000ms);
    TimeScale::set(1);

    EXPECT_EQ(250ms, quarter);
    EXPECT_EQ(2'000ms, twice);
}

TEST(TheTimeScale, KeepsTheLongestDurationsInTheClocksRange) {
    TimeScale::set(0.001);
    const auto longest = TimeScale::scaled(std::chrono::milliseconds(std::numeric_limits<int>::max()));
    TimeScale::set(1);

    EXPECT_GT(longest, 24h);
    EXPECT_GT(Clock::now() + longest, Clock::now());
}

TEST(SleepingWhenTheProgramEnds, EndsInTheMiddleAndDoesNotBeginAgain) {
    const auto begin = Clock::now();
    std::thread sleeper([] { OSALSleep::secSleep(600); });
    std::this_thread::sleep_for(10ms);

    SleepControl::endSleeps();
    sleeper.join();
    OSALSleep::secSleep(600);

    EXPECT_LT(Clock::now() - begin, 60s);
}
