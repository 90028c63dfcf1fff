#include "threads/Semaphore.h"
#include "threads/CriticalSection.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr int shortMilliseconds = 20;
constexpr int longMilliseconds = 5'000;

/// Whether another thread gets the semaphore within that time; gives it back.
bool anotherTakes(Semaphore& semaphore, int timeoutMilliseconds) {
    return std::async(std::launch::async,
                      [&semaphore, timeoutMilliseconds] {
                          const bool taken = semaphore.take(timeoutMilliseconds);
                          if (taken) {
                              semaphore.give();
                          }
                          return taken;
                      })
        .get();
}

} // namespace

TEST(CountingSemaphore, IsTakenAsOftenAsItCounts) {
    Semaphore semaphore(2, 2, false);

    EXPECT_TRUE(semaphore.take(0));
    EXPECT_TRUE(semaphore.take(0));
    EXPECT_FALSE(semaphore.take(0));
}

TEST(CountingSemaphore, GivesUpBehindTheTimeLimitAndNotBefore) {
    Semaphore semaphore(0, 1, false);
    const auto begin = std::chrono::steady_clock::now();

    EXPECT_FALSE(semaphore.take(shortMilliseconds));

    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(shortMilliseconds));
}

TEST(CountingSemaphore, IsGivenByAnotherThread) {
    Semaphore semaphore(0, 1, false);
    std::thread giver([&semaphore] {
        std::this_thread::sleep_for(10ms);
        semaphore.give();
    });

    EXPECT_TRUE(semaphore.take(longMilliseconds));
    giver.join();
}

TEST(CountingSemaphore, DoesNotCountBeyondItsMaximum) {
    Semaphore semaphore(1, 1, false);

    semaphore.give();
    semaphore.give();

    EXPECT_TRUE(semaphore.take(0));
    EXPECT_FALSE(semaphore.take(0));
}

TEST(CountingSemaphore, IsNotTakenTwiceByOneThread) {
    Semaphore semaphore(1, 1, false);
    ASSERT_TRUE(semaphore.take(-1));

    EXPECT_FALSE(semaphore.take(shortMilliseconds));
}

TEST(ReentrantSemaphore, IsFreeWhenItWasGivenAsOftenAsTaken) {
    Semaphore semaphore(1, 1, true);
    ASSERT_TRUE(semaphore.take(-1));
    ASSERT_TRUE(semaphore.take(-1));

    semaphore.give();
    EXPECT_FALSE(anotherTakes(semaphore, shortMilliseconds));

    semaphore.give();
    EXPECT_TRUE(anotherTakes(semaphore, longMilliseconds));
}

TEST(ReentrantSemaphore, IsNotGivenByAThreadThatDoesNotOwnIt) {
    Semaphore semaphore(1, 1, true);
    ASSERT_TRUE(semaphore.take(-1));

    std::thread([&semaphore] { semaphore.give(); }).join();

    EXPECT_FALSE(anotherTakes(semaphore, shortMilliseconds));
}

TEST(CriticalSectionScope, ExcludesOtherThreadsAndEndsWithTheScope) {
    Semaphore semaphore(1, 1, false);
    int counter = 0;
    const auto count = [&semaphore, &counter] {
        for (int round = 0; round < 2'000; ++round) {
            const CriticalSection section(semaphore);
            counter = counter + 1;
        }
    };
    std::thread first(count);
    std::thread second(count);
    first.join();
    second.join();

    EXPECT_EQ(4'000, counter);
    EXPECT_TRUE(semaphore.take(0));
}
