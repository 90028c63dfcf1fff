#include "framework/HostContext.h"
#include "framework/Service.h"
#include "logging/LogSink.h"
#include "support/TemporaryFolder.h"
#include "threads/TimeScale.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto soon = 5s;
constexpr int hour = 3'600'000; ///< a duration that does not pass during a test

/// Remembers the expiries, and does what a test wants in them.
class TimerService : public Service {
public:
    void init(Context&) override {}
    void shutdown() override {}
    void run() override {}
    void timerEvent(int id) override {
        if (inExpiry) {
            inExpiry(id);
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_expired.push_back(id);
        m_threads.insert(std::this_thread::get_id());
        m_changed.notify_all();
    }

    /// The expiries so far, once there are that many or too much time has passed.
    std::vector<int> expired(std::size_t wanted) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, soon, [this, wanted] { return m_expired.size() >= wanted; });
        return m_expired;
    }
    std::set<std::thread::id> threads() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_threads;
    }

    std::function<void(int)> inExpiry;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<int> m_expired;
    std::set<std::thread::id> m_threads;
};

struct Timers : public ::testing::Test {
    void TearDown() override { TimeScale::set(1); }

    /// Starts a timer that expires at once, so that everything due before has been delivered when it is.
    void letDueTimersExpire() {
        const int id = context.createTimer(&fence, 0);
        context.startTimer(id);
        ++m_fences;
        ASSERT_EQ(m_fences, fence.expired(m_fences).size());
    }

    TimerService service;
    TimerService fence;
    HostContext context;

private:
    std::size_t m_fences = 0;
};

} // namespace

TEST(Services, AreFoundByName) {
    TimerService service;
    HostContext context;
    context.addService("TeamServiceIfc", &service);

    EXPECT_EQ(&service, context.getService("TeamServiceIfc"));
    EXPECT_EQ(nullptr, context.getService("LocalMgmtIfc"));
}

TEST_F(Timers, ExpireInOrderOfTheirDueTimesOnOneThread) {
    const int late = context.createTimer(&service, 300);
    const int early = context.createTimer(&service, 100);
    const int middle = context.createTimer(&service, 200);
    context.startTimer(late);
    context.startTimer(early);
    context.startTimer(middle);

    EXPECT_EQ((std::vector<int>{early, middle, late}), service.expired(3));
    EXPECT_EQ(1U, service.threads().size());
    EXPECT_EQ(0U, service.threads().count(std::this_thread::get_id()));
}

TEST_F(Timers, DoNotExpireBeforeTheirTime) {
    const int id = context.createTimer(&service, 30);
    const auto begin = Clock::now();

    context.startTimer(id);

    ASSERT_EQ(1U, service.expired(1).size());
    EXPECT_GE(Clock::now() - begin, 30ms);
}

TEST_F(Timers, WithoutADurationExpireAtOnceButNotSynchronously) {
    std::promise<void> hold;
    std::shared_future<void> held = hold.get_future().share();
    service.inExpiry = [held](int) { held.wait(); };
    const int zero = context.createTimer(&service, 0);
    const int negative = context.createTimer(&service, -500);

    context.startTimer(zero);
    context.startTimer(negative); // would hang here if it were delivered by this call
    hold.set_value();

    EXPECT_EQ(2U, service.expired(2).size());
}

TEST_F(Timers, HaveIdsAboveZeroThatAreNeverUsedAgain) {
    const int first = context.createTimer(&service, hour);
    context.deleteTimer(first);
    const int second = context.createTimer(&service, hour);

    EXPECT_GT(first, 0);
    EXPECT_GT(second, first);
}

TEST_F(Timers, DoNotRunBeforeTheyAreStartedNorOnceTheirExpiryIsDelivered) {
    const int id = context.createTimer(&service, 0);
    std::atomic<bool> ranInExpiry{true};
    service.inExpiry = [this, &ranInExpiry](int expired) { ranInExpiry = context.isTimerRunning(expired); };
    EXPECT_FALSE(context.isTimerRunning(id));

    context.startTimer(id);
    ASSERT_EQ(1U, service.expired(1).size());

    EXPECT_FALSE(ranInExpiry);
    EXPECT_FALSE(context.isTimerRunning(id));
}

TEST_F(Timers, ExpireOnceForOneStart) {
    const int id = context.createTimer(&service, 0);
    context.startTimer(id);
    ASSERT_EQ(1U, service.expired(1).size());
    letDueTimersExpire();

    EXPECT_EQ(1U, service.expired(1).size());
}

TEST_F(Timers, KeepTheirDueTimeWhenStartedAgainWhileRunning) {
    const int id = context.createTimer(&service, 200);
    const int between = context.createTimer(&service, 150);
    context.startTimer(id);
    std::this_thread::sleep_for(100ms);

    context.startTimer(between);
    context.startTimer(id); // a restart would bring it behind the other

    EXPECT_EQ((std::vector<int>{id, between}), service.expired(2));
}

TEST_F(Timers, BeginAnewWhenReset) {
    const int id = context.createTimer(&service, 300);
    context.startTimer(id);
    std::this_thread::sleep_for(30ms);
    const auto reset = Clock::now();

    context.resetTimer(id);

    ASSERT_EQ(1U, service.expired(1).size());
    EXPECT_GE(Clock::now() - reset, 300ms);
}

TEST_F(Timers, AreNotStartedByAReset) {
    const int id = context.createTimer(&service, 0);

    context.resetTimer(id);
    letDueTimersExpire();

    EXPECT_FALSE(context.isTimerRunning(id));
    EXPECT_TRUE(service.expired(0).empty());
}

TEST_F(Timers, ThatWereStoppedDoNotExpireAndMayBeStartedAgain) {
    const int id = context.createTimer(&service, 100);
    context.startTimer(id);
    context.stopTimer(id);
    EXPECT_FALSE(context.isTimerRunning(id));
    std::this_thread::sleep_for(130ms);
    EXPECT_TRUE(service.expired(0).empty());

    context.startTimer(id);

    EXPECT_EQ(std::vector<int>{id}, service.expired(1));
}

TEST_F(Timers, ThatWereDeletedDoNotExpire) {
    const int id = context.createTimer(&service, 100);
    context.startTimer(id);

    context.deleteTimer(id);
    std::this_thread::sleep_for(130ms);
    letDueTimersExpire();

    EXPECT_TRUE(service.expired(0).empty());
    EXPECT_FALSE(context.isTimerRunning(id));
}

TEST_F(Timers, MayBeDeletedAndMadeAnewInTheirOwnExpiry) {
    const int id = context.createTimer(&service, 0);
    std::atomic<int> next{0};
    service.inExpiry = [this, id, &next](int expired) {
        if (expired == id) {
            context.deleteTimer(id);
            next = context.createTimer(&service, 0);
            context.startTimer(next);
        }
    };

    context.startTimer(id);

    const std::vector<int> expired = service.expired(2);
    EXPECT_EQ((std::vector<int>{id, next}), expired);
}

TEST_F(Timers, MayBeStartedAgainInTheirOwnExpiry) {
    const int id = context.createTimer(&service, 0);
    std::atomic<int> rounds{0};
    service.inExpiry = [this, &rounds](int expired) {
        if (++rounds < 3) {
            context.startTimer(expired);
        }
    };

    context.startTimer(id);

    EXPECT_EQ(3U, service.expired(3).size());
}

TEST_F(Timers, ThatAreUnknownAreLeftAlone) {
    for (const int id : {0, -1, 4711}) {
        context.startTimer(id);
        context.resetTimer(id);
        context.stopTimer(id);
        context.deleteTimer(id);
        EXPECT_FALSE(context.isTimerRunning(id));
    }
    letDueTimersExpire();
}

TEST_F(Timers, AreOperatedWhileAnExpiryIsInProgress) {
    std::promise<void> begun;
    std::promise<void> hold;
    std::shared_future<void> held = hold.get_future().share();
    service.inExpiry = [&begun, held](int) {
        begun.set_value();
        held.wait();
    };
    const int id = context.createTimer(&service, 0);
    context.startTimer(id);
    ASSERT_EQ(std::future_status::ready, begun.get_future().wait_for(soon));

    // Each would hang here if it waited for the expiry.
    const int other = context.createTimer(&fence, hour);
    context.startTimer(other);
    context.resetTimer(other);
    EXPECT_TRUE(context.isTimerRunning(other));
    context.stopTimer(id);
    context.deleteTimer(id);
    context.deleteTimer(other);
    hold.set_value();

    EXPECT_EQ(1U, service.expired(1).size());
}

TEST_F(Timers, FollowTheTimeScale) {
    TimeScale::set(1'000'000);
    const int id = context.createTimer(&service, hour);

    context.startTimer(id);

    EXPECT_EQ(std::vector<int>{id}, service.expired(1));
}

TEST_F(Timers, GoOnBehindAnExpiryThatThrows) {
    TemporaryFolder folder;
    std::string error;
    ASSERT_TRUE(LogSink::configure({2, folder.file("log"), false}, error)) << error;
    std::atomic<int> throws{0};
    service.inExpiry = [&throws](int) {
        if (++throws == 1) {
            throw std::runtime_error("out of order");
        }
        if (throws == 2) {
            throw 7;
        }
    };
    const int id = context.createTimer(&service, 0);
    context.startTimer(id);
    letDueTimersExpire();
    context.startTimer(id);
    letDueTimersExpire();

    context.startTimer(id);

    EXPECT_EQ(std::vector<int>{id}, service.expired(1));
    EXPECT_NE(std::string::npos, folder.read("log").find("ended by an exception: out of order"));
}

TEST_F(Timers, AreNotDeliveredOnceDeliveryHasStopped) {
    std::atomic<bool> ended{false};
    std::promise<void> begun;
    service.inExpiry = [&begun, &ended](int) {
        begun.set_value();
        std::this_thread::sleep_for(30ms);
        ended = true;
    };
    const int id = context.createTimer(&service, 0);
    context.startTimer(id);
    begun.get_future().wait();

    context.stopDelivery();
    const bool endedBeforeReturn = ended;
    service.inExpiry = nullptr;
    context.startTimer(id);
    std::this_thread::sleep_for(20ms);

    EXPECT_TRUE(endedBeforeReturn);
    EXPECT_EQ(1U, service.expired(1).size());
}
