#include "threads/Threader.h"
#include "logging/LogSink.h"
#include "support/TemporaryFolder.h"
#include "threads/OSALSleep.h"
#include "threads/ThreadRegistry.h"

#include <pthread.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto soon = 5s; ///< far beyond what a sound thread layer takes

using Body = std::function<void()>;

void* runBody(void* argument) {
    (*static_cast<Body*>(argument))();
    return nullptr;
}

/// Declared before the Threader, so that a body outlives its thread.
struct Threads : public ::testing::Test {
    unsigned long spawn(Body& body, const std::string& name = "worker") {
        unsigned long id = 0;
        EXPECT_TRUE(threader->spawn(id, runBody, &body, name, OSAL_THREAD_PRIORITY_NORMAL, 0));
        return id;
    }

    std::unique_ptr<Threader> threader = std::make_unique<Threader>();
};

/// Whether `operation` returns in time on a thread of its own.
bool returnsSoon(const Body& operation) {
    std::promise<void> returned;
    std::future<void> future = returned.get_future();
    std::thread thread([&operation, &returned] {
        operation();
        returned.set_value();
    });
    const bool inTime = future.wait_for(soon) == std::future_status::ready;
    thread.join();
    return inTime;
}

} // namespace

TEST_F(Threads, RunTheBodyUnderTheirName) {
    std::string name;
    Body body = [&name] {
        std::array<char, 16> text{};
        pthread_getname_np(pthread_self(), text.data(), text.size());
        name = text.data();
    };

    threader->waitForThreadCompletion(spawn(body, "login"));

    EXPECT_EQ("login", name);
}

TEST_F(Threads, WithALongNameKeepItsFront) {
    std::string name;
    Body body = [&name] {
        std::array<char, 16> text{};
        pthread_getname_np(pthread_self(), text.data(), text.size());
        name = text.data();
    };

    threader->waitForThreadCompletion(spawn(body, "websocket-recovery-thread"));

    EXPECT_EQ("websocket-recov", name);
}

TEST_F(Threads, FindTheirIdStoredBeforeTheBodyRunsAndMayClearIt) {
    for (int round = 0; round < 50; ++round) {
        unsigned long id = 0;
        unsigned long seen = 0;
        Body body = [&id, &seen] {
            seen = id;
            id = 0;
        };
        ASSERT_TRUE(threader->spawn(id, runBody, &body, "w", OSAL_THREAD_PRIORITY_NORMAL, 0));
        threader.reset(); // waits for the thread, whose id is gone from where the caller kept it
        threader = std::make_unique<Threader>();
        ASSERT_NE(0UL, seen);
        ASSERT_EQ(0UL, id);
    }
}

TEST_F(Threads, NeverShareAnId) {
    Body body = [] {};
    unsigned long last = 0;
    for (int round = 0; round < 100; ++round) {
        const unsigned long id = spawn(body);
        threader->waitForThreadCompletion(id);
        ASSERT_GT(id, last);
        last = id;
    }
}

TEST_F(Threads, AreWaitedForThoughDetached) {
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<bool> ended{false};
    Body body = [released, &ended] {
        released.wait();
        std::this_thread::sleep_for(10ms);
        ended = true;
    };
    const unsigned long id = spawn(body);
    threader->detach(id);

    release.set_value();
    threader->waitForThreadCompletion(id);

    EXPECT_TRUE(ended);
}

TEST_F(Threads, AreWaitedForBySeveralAtOnce) {
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<bool> ended{false};
    Body body = [released, &ended] {
        released.wait();
        ended = true;
    };
    const unsigned long id = spawn(body);
    std::atomic<int> sawTheEnd{0};
    const auto wait = [this, id, &ended, &sawTheEnd] {
        threader->waitForThreadCompletion(id);
        sawTheEnd += ended ? 1 : 0;
    };
    std::thread first(wait);
    std::thread second(wait);

    release.set_value();
    first.join();
    second.join();

    EXPECT_EQ(2, sawTheEnd);
}

TEST_F(Threads, ThatAreUnknownOrHaveEndedAreNotWaitedFor) {
    Body body = [] {};
    const unsigned long ended = spawn(body);
    threader->waitForThreadCompletion(ended);

    EXPECT_TRUE(returnsSoon([&] {
        threader->waitForThreadCompletion(0);
        threader->waitForThreadCompletion(ended);
        threader->waitForThreadCompletion(ended + 1'000'000);
        threader->detach(0);
        threader->detach(ended);
        threader->detach(ended + 1'000'000);
    }));
}

TEST_F(Threads, ThatWaitForThemselvesGoOnAndAreLogged) {
    TemporaryFolder folder;
    std::string error;
    ASSERT_TRUE(LogSink::configure({2, folder.file("log"), false}, error)) << error;
    std::atomic<bool> wentOn{false};
    unsigned long id = 0;
    Body body = [this, &id, &wentOn] {
        threader->waitForThreadCompletion(id);
        wentOn = true;
    };

    ASSERT_TRUE(threader->spawn(id, runBody, &body, "w", OSAL_THREAD_PRIORITY_NORMAL, 0));
    threader->waitForThreadCompletion(id);

    EXPECT_TRUE(wentOn);
    EXPECT_NE(std::string::npos, folder.read("log").find("waits for itself"));
}

TEST_F(Threads, ThatThrowEndAloneAndAreLogged) {
    TemporaryFolder folder;
    std::string error;
    ASSERT_TRUE(LogSink::configure({2, folder.file("log"), false}, error)) << error;
    Body standard = [] { throw std::runtime_error("out of paper"); };
    Body other = [] { throw 7; };

    threader->waitForThreadCompletion(spawn(standard, "printer"));
    threader->waitForThreadCompletion(spawn(other, "plotter"));

    const std::string log = folder.read("log");
    EXPECT_NE(std::string::npos, log.find("[printer] thread printer ended by an exception: out of paper"));
    EXPECT_NE(std::string::npos, log.find("[plotter] thread plotter ended by an exception"));
}

TEST_F(Threads, AreWaitedForWhenTheirThreaderGoes) {
    std::atomic<int> ended{0};
    Body body = [&ended] {
        std::this_thread::sleep_for(20ms);
        ++ended;
    };
    spawn(body);
    spawn(body);

    threader.reset();

    EXPECT_EQ(2, ended);
}

TEST_F(Threads, MayDestroyTheirOwnThreader) {
    std::promise<void> destroyed;
    Body body = [this, &destroyed] {
        threader.reset();
        destroyed.set_value();
    };
    std::future<void> future = destroyed.get_future();
    const unsigned long id = spawn(body);

    ASSERT_EQ(std::future_status::ready, future.wait_for(soon));
    ThreadRegistry::instance().waitFor(id);
}

TEST_F(Threads, AreReaped) {
    Body body = [] {};
    for (int round = 0; round < 20; ++round) {
        threader->detach(spawn(body));
    }
    threader.reset();

    EXPECT_EQ(0U, ThreadRegistry::instance().running());
}

TEST_F(Threads, TellTheListenerOfTheirEndBeforeTheyCountAsEnded) {
    std::atomic<unsigned long> told{0};
    ThreadRegistry::instance().setEndListener([&told](unsigned long id) { told = id; });
    Body body = [] {};

    const unsigned long id = spawn(body);
    threader->waitForThreadCompletion(id);
    ThreadRegistry::instance().setEndListener(nullptr);

    EXPECT_EQ(id, told);
}
