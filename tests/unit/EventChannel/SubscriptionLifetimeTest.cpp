#include "ChannelTelephone.h"

#include <functional>

namespace {

using Calls = std::vector<std::string>;

const std::string filters = R"("/restapi/v1.0/account/1/extension/4711/presence/dnd")";

/// What the service keeps of its subscription from reply to reply, whatever becomes of the channel in between.
class SubscriptionLifetimeTest : public ChannelTelephone {
protected:
    void beginSession() {
        service->onOpen(0);
        receive(connectionDetails(Details()));
    }
    void stopAndStart() {
        service->stop();
        expectLogin();
        service->start();
    }
    /// The reply to the last request; only what it does is recorded.
    void answer(const std::string& id, const std::string& creationTime, const std::string& status, int expiresIn) {
        const std::string messageId = TestJson::messageId(lastFrame());
        clearRecords();
        receive(reply(messageId, subscription(id, creationTime, status, expiresIn, filters)));
    }
    bool wasKnownAs(const std::string& creationTime, const std::string& status) {
        return log().contains("m_subscriptionOvEventsCreationTime[" + creationTime + "]") &&
               log().contains("m_subscriptionOvStatus[" + status + "]");
    }
    bool areNotificationsTaken() {
        log().clear();
        receive(notification("anything", "", ""));
        return log().contains("m_receiveOvEventEnable[true]");
    }
};

TEST_F(SubscriptionLifetimeTest, NeitherANewSessionNorACloseNorAStopForgetsTheSubscription) {
    subscribeAll();
    const std::string timer = std::to_string(runningTimer(renewalMilliseconds));
    const auto close = [this] { service->onClose(1000, 1000, ""); };
    const auto stop = [this] { stopAndStart(); };
    struct End {
        std::string name;
        std::function<void()> act;
        std::string timer;
    };
    int year = 2026;
    std::string known = "2026-01-01T00:00:00Z";
    // The stop comes last: it deletes the timer, and with the same expiry no other one is made.
    for (const End& end : {End{"session", [] {}, timer}, End{"close", close, timer}, End{"stop", stop, "0"}}) {
        const std::string id = service->getSubscriptionId();

        end.act();

        EXPECT_EQ(id, service->getSubscriptionId()) << end.name;
        EXPECT_TRUE(areNotificationsTaken()) << end.name;
        beginSession();
        EXPECT_TRUE(areNotificationsTaken()) << end.name;
        EXPECT_EQ(id, service->getSubscriptionId()) << end.name;
        const std::string next = std::to_string(++year);
        answer("sub-" + next, next, "Active", 1800);
        EXPECT_TRUE(wasKnownAs(known, "Active")) << end.name;
        EXPECT_EQ((Calls{"stop " + end.timer, "start " + end.timer}), timerCalls()) << end.name;
        EXPECT_EQ("sub-" + next, service->getSubscriptionId()) << end.name;
        known = next;
    }
    EXPECT_FALSE(isTimerRunning(renewalMilliseconds));
}

TEST_F(SubscriptionLifetimeTest, AReplyThatIsNotLaterLeavesWhatIsKnownOfTheSubscription) {
    subscribeAll();
    for (const std::string older : {"2026-01-01T00:00:00Z", "2025", ""}) {
        service->updateSubscriptionOvEvents();
        answer("sub-2", older, "Closed", 900);
        EXPECT_TRUE(wasKnownAs("2026-01-01T00:00:00Z", "Active")) << older;
        EXPECT_EQ("sub-1", service->getSubscriptionId()) << older;
    }
    const std::string timer = std::to_string(runningTimer(renewalMilliseconds));
    service->updateSubscriptionOvEvents();
    answer("sub-2", "2027", "Active", 1800);
    EXPECT_TRUE(wasKnownAs("2026-01-01T00:00:00Z", "Active"));
    EXPECT_EQ((Calls{"stop " + timer, "start " + timer}), timerCalls());
}

TEST_F(SubscriptionLifetimeTest, AfterAStopAnOlderSubscriptionIsNotTaken) {
    subscribeAll();
    stopAndStart();
    beginSession();
    answer("sub-2", "2025", "Active", 900);
    EXPECT_EQ("sub-1", service->getSubscriptionId());
    EXPECT_TRUE(timerCalls().empty());
}

TEST_F(SubscriptionLifetimeTest, AfterAStopAChangedExpiryRunsANewTimer) {
    subscribeAll();
    stopAndStart();
    beginSession();
    answer("sub-2", "2027", "Active", 900);
    EXPECT_TRUE(isTimerRunning(900000));
}

TEST_F(SubscriptionLifetimeTest, ATimerThatEndedWithItsSubscriptionIsNotEndedAgain) {
    subscribeAll();
    const std::string timer = std::to_string(runningTimer(renewalMilliseconds));
    service->updateSubscriptionOvEvents();
    answer("sub-1", "2027", "Suspended", 1800);
    ASSERT_EQ((Calls{"stop " + timer, "delete " + timer}), timerCalls());
    timers().calls.clear();

    service->stop();

    for (const std::string& call : timers().calls) {
        EXPECT_NE("stop " + timer, call);
        EXPECT_NE("delete " + timer, call);
    }
}

TEST_F(SubscriptionLifetimeTest, BeforeAnyTimerTheKnownExpiryIsMinusOne) {
    // An active subscription from before init, which could not make a timer.
    ASSERT_TRUE(service->storeUuidMessage("early"));
    receive(reply("early", subscription("sub-1", "1", "Active", 1800, filters)));
    openSession();

    answer("sub-1", "2", "Active", -1);
    EXPECT_EQ((Calls{"stop 0", "start 0"}), timerCalls());

    service->updateSubscriptionOvEvents();
    answer("sub-1", "3", "Active", 1800);
    EXPECT_TRUE(isTimerRunning(renewalMilliseconds));
}

} // namespace
