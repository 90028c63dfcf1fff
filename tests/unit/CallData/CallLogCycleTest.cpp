#include "CallLogTelephone.h"
#include "unit/EventChannel/ChannelTelephone.h"

using namespace CloudAnswers;

namespace {

class CallLogCycle : public CallLogTelephone {};

TEST_F(CallLogCycle, RestsBetweenTwoPolls) {
    connectWith({});
    EXPECT_TRUE(isPolling());
    EXPECT_TRUE(logged(4, "getCallLogsAndVoicemails() - start polling timer 60 second(s)"));

    pass(59999);
    expectPoll("c1", "c2");
    pass(1);

    EXPECT_TRUE(isPolling());
    expectPoll("c2", "c3");
    poll();
}

TEST_F(CallLogCycle, StopsPollingWhileItRuns) {
    connectWith({});
    const int pollingTimer = platform.context.running(60000).at(0);
    expectPoll("c1", "c2").whileAwaited([this] { EXPECT_FALSE(isPolling()); });

    // Before its time, as an event of the provider does it.
    service->timerEvent(pollingTimer);

    EXPECT_TRUE(isPolling());
}

TEST_F(CallLogCycle, EndsWhenTheSynchronisationIsSwitchedOff) {
    connectWith({call("1")});
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_CALL_LOG, "false");
    observer.clear();

    poll();

    ASSERT_EQ(1u, observer.events.size());
    EXPECT_EQ(Batch(), fullBatch());
    EXPECT_FALSE(isPolling());
    passSeconds(600);
}

TEST_F(CallLogCycle, ThatIsSwitchedOffTouchesNoTimer) {
    connectWith({});
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_CALL_LOG, "false");
    platform.context.calls.clear();

    service->getCallLogsAndVoicemails();

    EXPECT_TRUE(platform.context.calls.empty());
    EXPECT_TRUE(isPolling());
}

TEST_F(CallLogCycle, BringsTheVoicemailsAsWell) {
    connectWith({});
    observer.clear();
    expectPoll("c1", "c2");

    poll();

    EXPECT_EQ(1u, observer.of("orvaneVoicemail").size());
}

TEST_F(CallLogCycle, SendsNothingUnlessConnected) {
    connectWith({});
    expectToken().answers(500, "");
    service->getToken();
    observer.clear();

    pass(59999);
    pass(1);

    EXPECT_EQ(Batch(), incrementalBatch()) << "the cycle publishes all the same";
}

TEST_F(CallLogCycle, TakesANewIntervalAtItsNextExpiry) {
    connectWith({});
    service->stop();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_INTERVAL, "30");
    expectToken();
    expectExtension();
    expectGrants();
    expectPoll("c1", "c2");
    expectWebSocketToken();
    service->start();
    expectPoll("c2", "c3");
    poll();
    expectPoll("c3", "c4");
    passSeconds(30);
}

class Refresh : public CallLogTelephone {
protected:
    std::size_t threadsMade() const { return platform.threads.spawned.size(); }
};

TEST_F(Refresh, RunsOnAThreadOfItsOwn) {
    connectWith({});
    observer.clear();

    service->refreshCallLogEntries();

    ASSERT_EQ(1u, platform.threads.pendingCount());
    const TestThreads::Job& job = platform.threads.spawned.back();
    EXPECT_EQ("", job.name);
    EXPECT_EQ(1, job.priority);
    EXPECT_EQ(0, job.stackSize);
    EXPECT_TRUE(job.detached);
    expectPoll("c1", "c2", {call("1")});
    runThreads();
    EXPECT_EQ((Batch{received(call("1"))}), incrementalBatch());
    EXPECT_EQ(1u, observer.events.size()) << "no voicemail";
    EXPECT_TRUE(isPolling()) << "no timer is touched";
}

TEST_F(Refresh, IsOneAtATime) {
    connectWith({});
    service->refreshCallLogEntries();
    service->refreshCallLogEntries();
    EXPECT_EQ(1u, platform.threads.pendingCount());
    expectPoll("c1", "c2");
    runThreads();

    service->refreshCallLogEntries();

    EXPECT_EQ(1u, platform.threads.pendingCount());
    expectPoll("c2", "c3");
    runThreads();
}

TEST_F(Refresh, IsUnderWayUntilTheCallsAreRead) {
    connectWith({});
    service->refreshCallLogEntries();
    const std::size_t made = threadsMade();
    expectPoll("c1", "c2").whileAwaited([this] { service->refreshCallLogEntries(); });

    runThreads();

    EXPECT_EQ(made, threadsMade());
}

TEST_F(Refresh, DoesNothingWhileTheInterfaceIsDown) {
    platform.store.set(PldsTags::INTERFACE_STATUS, "down");
    initialise();

    service->refreshCallLogEntries();

    EXPECT_EQ(0u, threadsMade());
}

TEST_F(Refresh, DoesNothingWhileTheCycleRuns) {
    connectWith({});
    const std::size_t made = threadsMade();
    expectPoll("c1", "c2").whileAwaited([this] { service->refreshCallLogEntries(); });

    poll();

    EXPECT_EQ(made, threadsMade());
    service->refreshCallLogEntries();
    EXPECT_EQ(made + 1, threadsMade());
    expectPoll("c2", "c3");
    runThreads();
}

TEST_F(Refresh, DoesNotKeepTheCycleFromRunning) {
    connectWith({});
    service->refreshCallLogEntries();
    expectPoll("c1", "c2");

    poll();

    expectPoll("c2", "c3");
    runThreads();
}

TEST_F(Refresh, ThatCannotBeMadeIsLoggedAndMayBeTriedAgain) {
    connectWith({});
    platform.threads.refuse = true;

    service->refreshCallLogEntries();

    EXPECT_TRUE(logged(2, "refreshCallLogEntries() failed to create thread!"));
    platform.threads.refuse = false;
    service->refreshCallLogEntries();
    expectPoll("c1", "c2");
    runThreads();
}

TEST_F(Refresh, DoesNothingWithoutAService) {
    platform.log.clear();

    EXPECT_EQ(nullptr, OrvaneService::asyncRefreshCallLogRunner(nullptr));

    EXPECT_TRUE(platform.log.lines().empty());
}

/// A call that has ended and whose record has not arrived yet.
class AwaitedRecord : public ChannelTelephone {
protected:
    AwaitedRecord() {
        // Without an observer at login the first cycle is brought by the channel.
        subscribeAll(Setup{true, false, {}, {}});
    }
    static std::string presence(const std::string& calls) {
        return notification("/restapi/v1.0/account/~/extension/4711/presence?detailedTelephonyState=true", "",
                            "{\"activeCalls\":[" + calls + "]}");
    }
    static std::string ended(const std::string& session) {
        return R"({"telephonyStatus":"NoCall","telephonySessionId":")" + session + "\"}";
    }
    bool awaitsRecord() { return isTimerRunning(callRecordMilliseconds); }
    bool isPolling() { return isTimerRunning(pollingMilliseconds); }
};

TEST_F(AwaitedRecord, IsLookedForAtOnceAndThenEveryTenSeconds) {
    expectFullCallLog("c1");
    receive(presence(ended("s-1")));
    EXPECT_TRUE(awaitsRecord());
    EXPECT_FALSE(isPolling());

    pass(9999);
    expectIncrementalCallLog("c1", "c2");
    pass(1);
    EXPECT_TRUE(awaitsRecord());

    expectIncrementalCallLog("c2", "c3", {call("1")});
    pass(10000);

    EXPECT_TRUE(logged(6, "handleCallLogResponse() received record for telephony session [s-1]"));
    EXPECT_FALSE(awaitsRecord());
    EXPECT_TRUE(isPolling());
}

TEST_F(AwaitedRecord, IsNotOneThatWasDropped) {
    expectFullCallLog("c1");
    receive(presence(ended("s-1")));
    Call dropped = call("1");
    dropped.action = "FindMe";
    expectIncrementalCallLog("c1", "c2", {dropped, call("2")});

    pass(10000);

    EXPECT_TRUE(awaitsRecord());
}

TEST_F(AwaitedRecord, MayBeARepeatedOne) {
    expectFullCallLog("c1", {call("1")});
    receive(presence(ended("s-2")));
    Call repeated = call("1");
    repeated.sessionId = "s-2";
    expectIncrementalCallLog("c1", "c2", {repeated});

    pass(10000);

    EXPECT_FALSE(awaitsRecord());
    EXPECT_TRUE(isPolling());
}

TEST_F(AwaitedRecord, IsWaitedForUntilTheLastOneHasCome) {
    expectFullCallLog("c1");
    expectIncrementalCallLog("c1", "c2");
    receive(presence(ended("s-1") + "," + ended("s-2")));

    expectIncrementalCallLog("c2", "c3", {call("1")});
    pass(10000);
    EXPECT_TRUE(awaitsRecord());
    expectIncrementalCallLog("c3", "c4", {call("2")});
    pass(10000);

    EXPECT_TRUE(isPolling());
}

TEST_F(AwaitedRecord, MakesARefreshUnnecessary) {
    expectFullCallLog("c1");
    receive(presence(ended("s-1")));
    const std::size_t made = platform.threads.spawned.size();

    service->refreshCallLogEntries();

    EXPECT_EQ(made, platform.threads.spawned.size());
}

TEST_F(AwaitedRecord, IsNotForgottenByStopOrDeletion) {
    expectFullCallLog("c1");
    receive(presence(ended("s-1")));
    service->stop();
    service->deleteAllData(true);
    withObserver();
    expectToken();
    expectExtension();
    expectGrants();
    expectFullCallLog("c2");
    expectWebSocketToken();

    service->start();

    EXPECT_TRUE(awaitsRecord());
}

TEST_F(AwaitedRecord, ChecksTheIntervalLikeThePollingTimer) {
    expectFullCallLog("c1");
    receive(presence(ended("s-1")));
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_INTERVAL, "90");
    expectIncrementalCallLog("c1", "c2", {call("1")});

    pass(10000);

    EXPECT_TRUE(logged(6, "timerEvent() sync interval changed, recreating timer"));
    EXPECT_TRUE(isTimerRunning(90000));
    EXPECT_TRUE(timers().withDuration(pollingMilliseconds).empty());
}

} // namespace
