#include "HeapUse.h"
#include "LoadedTelephone.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

namespace {

/// What a process may gather without noticing.
struct Holdings {
    std::size_t heapBytes;
    std::ptrdiff_t threads;
    std::ptrdiff_t descriptors;

    static Holdings now() {
        // The descriptor of the listing itself is counted each time.
        return {HeapUse::now(), entries("/proc/self/task"), entries("/proc/self/fd")};
    }

private:
    static std::ptrdiff_t entries(const char* folder) {
        return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
    }
};

void loadRunAndUnload() {
    {
        LoadedTelephone telephone;
        ASSERT_TRUE(LoadedTelephone::isLoaded());
        telephone.expectLogin(100, 50);
        telephone.initialise();
        telephone.runLogin();
        ASSERT_TRUE(telephone.isRunning());
        telephone.poll(1);
        ASSERT_EQ(2U, telephone.observer.of("orvaneFullSync").size());
        ASSERT_EQ(1U, telephone.observer.of("orvaneIncrementalSync").size());
        telephone.platform.network.verify();
    }
    ASSERT_FALSE(LoadedTelephone::isLoaded()) << "something keeps the library in the process";
}

TEST(LoadAndUnload, AHundredTimesWithoutGrowth) {
    // What the loader and the libraries below keep once and for all.
    for (int round = 0; round < 3; ++round) {
        ASSERT_NO_FATAL_FAILURE(loadRunAndUnload());
    }
    const Holdings before = Holdings::now();

    for (int round = 0; round < 100; ++round) {
        ASSERT_NO_FATAL_FAILURE(loadRunAndUnload()) << "round " << round;
    }

    const Holdings after = Holdings::now();
    EXPECT_EQ(before.heapBytes, after.heapBytes);
    EXPECT_EQ(before.threads, after.threads);
    EXPECT_EQ(before.descriptors, after.descriptors);
}

TEST(LoadAndUnload, HeapUseSeesWhatIsKept) {
    const std::size_t before = HeapUse::now();
    void* kept = ::operator new(10'000);
    EXPECT_LE(before + 10'000, HeapUse::now());
    ::operator delete(kept);
    EXPECT_EQ(before, HeapUse::now());
}

} // namespace
