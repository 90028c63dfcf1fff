#include "HeapUse.h"
#include "LoadedTelephone.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

// What the library needs of a telephone's memory, measured and held to a limit. The figures are printed: they are those
// of docs/integration.md for the telephone's processor.

namespace {

constexpr std::size_t stackBytes = 1024 * 1024;
constexpr unsigned char paint = 0xA5;

/// Runs an action on a painted stack and returns how many bytes of it were written to, those of the thread library
/// included.
std::size_t stackUse(std::function<void()> action) {
    std::vector<unsigned char> stack(stackBytes + 4096, paint);
    auto* const begin = stack.data() + (4096 - reinterpret_cast<std::uintptr_t>(stack.data()) % 4096);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, begin, stackBytes - 4096);
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    EXPECT_EQ(0, pthread_create(&thread, &attributes, run, &action));
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    const auto* const deepest =
        std::find_if(begin, begin + stackBytes - 4096, [](unsigned char byte) { return byte != paint; });
    return static_cast<std::size_t>(begin + stackBytes - 4096 - deepest);
}

// Limits are those of the telephone's processor; pointers and alignment cost twice as much on a PC.
constexpr std::size_t widthFactor = sizeof(void*) / 4;

struct Contents {
    int calls;
    int contacts;
    std::size_t heldLimitBytes;
    std::size_t peakLimitBytes;
};

class Needs : public testing::TestWithParam<Contents> {};

TEST_P(Needs, OfHeap) {
    LoadedTelephone telephone;
    telephone.expectLogin(GetParam().calls, GetParam().contacts);
    telephone.initialise();
    const std::size_t before = HeapUse::now();
    HeapUse::beginPeak();
    telephone.runLogin();
    const std::size_t peak = HeapUse::peak() - before;
    ASSERT_TRUE(telephone.isRunning());
    telephone.forgetRecords();
    const std::size_t loggedIn = HeapUse::now();
    telephone.destroyService();
    const std::size_t held = loggedIn - HeapUse::now();

    std::printf("heap with %4d calls and %4d contacts: %7zu bytes held, %8zu at the peak of the login\n",
                GetParam().calls, GetParam().contacts, held, peak);
    EXPECT_LE(held, GetParam().heldLimitBytes * widthFactor);
    EXPECT_LE(peak, GetParam().peakLimitBytes * widthFactor);
}

INSTANTIATE_TEST_SUITE_P(Sizes, Needs,
                         testing::Values(Contents{0, 0, 4'500, 4'000}, Contents{100, 0, 25'000, 170'000},
                                         Contents{100, 50, 40'000, 170'000}, Contents{1000, 50, 220'000, 1'600'000}));

constexpr std::size_t roadLimitBytes = 12'000;
// The parser of the texts goes one level deeper with every bracket, up to 2048 of them.
constexpr std::size_t nestedFrameLimitBytes = 120'000;

void measureStack(const char* road, std::size_t limitBytes, std::function<void()> action) {
    const std::size_t bytes = stackUse(std::move(action));
    std::printf("stack of %-26s %6zu bytes\n", road, bytes);
    EXPECT_LE(bytes, limitBytes * widthFactor) << road;
}

TEST(StackNeeds, OfEachRoad) {
    const std::string nested = std::string(2000, '[') + std::string(2000, ']');
    LoadedTelephone telephone;
    telephone.expectLogin(100, 50);

    measureStack("a thread that does nothing", roadLimitBytes, [] {});
    measureStack("init", roadLimitBytes, [&] { telephone.initialise(); });
    measureStack("login", roadLimitBytes, [&] { telephone.runLogin(); });
    ASSERT_TRUE(telephone.isRunning());
    measureStack("timerEvent, a poll", roadLimitBytes, [&] { telephone.poll(100); });
    measureStack("a frame nested 2000 deep", nestedFrameLimitBytes, [&] { telephone.receive(nested); });
    measureStack("destruction", roadLimitBytes, [&] { telephone.destroyService(); });

    telephone.platform.network.verify();
}

} // namespace
