#include "PresenceTelephone.h"

#include "threads/OSALThreadPriority.h"

namespace {

/// The item that turns the feature on and off.
class DndSwitch : public PresenceTelephone {
protected:
    DndSwitch() { platform.locks.allowAcrossRequests("m_dndSem"); }

    void connectWithFeatureOff() {
        platform.store.set(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
        withCallLog();
        connectWithEmptyCloud();
        forgetRecords();
    }
};

} // namespace

// ---- The item ----------------------------------------------------------------------------------------------------

TEST_F(DndSwitch, TheGetterGivesTheStoresTexts) {
    connectWith("TakeAllCalls");

    platform.steps.begin();
    EXPECT_EQ(PldsTags::VALUE_TRUE, service->OrvaneApiSyncDndGetter());
    EXPECT_EQ((std::vector<std::string>{"take m_dndSem", "log 4 OrvaneApiSyncDndGetter() - m_sync_dnd[true]",
                                        "give m_dndSem"}),
              platform.steps.steps());
    setFeature("no");
    EXPECT_EQ(PldsTags::VALUE_FALSE, service->OrvaneApiSyncDndGetter());
    EXPECT_TRUE(logged(4, "OrvaneApiSyncDndGetter() - m_sync_dnd[false]"));
    runThreads();
}

TEST_F(DndSwitch, AnyOtherTextTurnsItOff) {
    connectWith("TakeAllCalls");
    std::string error = "as it was";

    EXPECT_TRUE(service->OrvaneApiSyncDndSetter("True", error));

    EXPECT_EQ(PldsTags::VALUE_FALSE, service->OrvaneApiSyncDndGetter());
    EXPECT_EQ("as it was", error);
    EXPECT_TRUE(logged(4, "OrvaneApiSyncDndSetter() - m_sync_dnd[true], newVal[True], m_state[CONNECTED]"));
    runThreads();
}

TEST_F(DndSwitch, OutsideOfConnectedTheValueWaitsForTheNextStart) {
    platform.store.set(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    initialise();
    const std::size_t before = threadCount();

    EXPECT_TRUE(setFeature(PldsTags::VALUE_TRUE).accepted);

    EXPECT_EQ(before, threadCount());
    EXPECT_TRUE(logged(6, "OrvaneApiSyncDndSetter() - service is not in connected state[CONFIGURED_ON_INIT]"));
    expectToken();
    expectExtension();
    expectPresence("DoNotAcceptAnyCalls");
    expectGrants();
    expectWebSocketToken();
    runThreads();
    EXPECT_EQ(PldsTags::VALUE_TRUE, dndItem());
}

TEST_F(DndSwitch, DuringALoginNoThreadIsStarted) {
    platform.store.set(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    initialise();
    expectToken().whileAwaited([this] { setFeature(PldsTags::VALUE_FALSE); });
    expectExtension();
    expectGrants();

    runThreads();

    EXPECT_TRUE(logged(6, "OrvaneApiSyncDndSetter() - service is not in connected state[START]"));
    EXPECT_EQ(1u, threadCount());
}

// ---- The thread --------------------------------------------------------------------------------------------------

TEST_F(DndSwitch, AChangeRunsOnAThreadOfItsOwn) {
    connectWithFeatureOff();
    const std::size_t before = threadCount();

    setFeature(PldsTags::VALUE_TRUE);

    ASSERT_EQ(before + 1, threadCount());
    const TestThreads::Job& job = platform.threads.spawned.back();
    EXPECT_EQ("", job.name);
    EXPECT_EQ(1, job.priority);
    EXPECT_EQ(0, job.stackSize);
    EXPECT_TRUE(job.detached);
    EXPECT_TRUE(logged(4, "asyncSyncDnd()"));
    EXPECT_TRUE(platform.network.requests.empty());
    expectPresence("TakeAllCalls");
    runThreads();
    EXPECT_TRUE(logged(4, "asyncSyncDndRunner()"));
}

TEST_F(DndSwitch, QuickSwitchesRunOneAfterTheOther) {
    connectWithFeatureOff();
    setFeature(PldsTags::VALUE_TRUE);
    const unsigned long first = platform.threads.spawned.back().id;
    platform.threads.waitedFor.clear();

    // The value is off again when the first thread comes to run: it finds the pair of the second switch.
    setFeature(PldsTags::VALUE_FALSE);

    const unsigned long second = platform.threads.spawned.back().id;
    EXPECT_EQ((std::vector<unsigned long>{first}), platform.threads.waitedFor);
    EXPECT_EQ(1, platform.log.count(6, "syncDnd() - sync DND was turned off!"));
    EXPECT_EQ(1u, platform.threads.pendingCount());
    EXPECT_TRUE(platform.network.requests.empty());
    expectPresence();
    setFeature(PldsTags::VALUE_TRUE);
    EXPECT_EQ((std::vector<unsigned long>{first, second}), platform.threads.waitedFor);
    EXPECT_EQ(1u, platform.threads.pendingCount());
    expectPresence();
    runThreads();
    EXPECT_EQ(2, platform.log.count(6, "SyncDnd() - sync DND was turned on!"));
}

TEST_F(DndSwitch, AThreadIsThereToBeWaitedForUntilItsEnd) {
    connectWithFeatureOff();
    setFeature(PldsTags::VALUE_TRUE);
    const unsigned long first = platform.threads.spawned.back().id;
    expectPresence().whileAwaited([this] { setFeature(PldsTags::VALUE_FALSE); });

    runThreads();

    // On a telephone the switch comes from another thread; here it can only come from the one that is waited for.
    EXPECT_EQ((std::vector<unsigned long>{first}), platform.threads.waitedForItself);
    platform.threads.waitedForItself.clear();
}

TEST_F(DndSwitch, AfterTheEndOfTheFirstASecondSwitchNeedsNoWait) {
    connectWithFeatureOff();
    setFeature(PldsTags::VALUE_TRUE);
    expectPresence("TakeAllCalls");
    runThreads();
    platform.threads.waitedFor.clear();

    setFeature(PldsTags::VALUE_FALSE);
    runThreads();

    EXPECT_TRUE(platform.threads.waitedFor.empty());
}

TEST_F(DndSwitch, WithoutAThreadTheChangeIsReportedAndTheNextOneIsNotHeldUp) {
    connectWithFeatureOff();
    platform.threads.refuse = true;
    setFeature(PldsTags::VALUE_TRUE);
    EXPECT_TRUE(logged(2, "asyncSyncDnd() failed to create thread!"));
    platform.threads.refuse = false;
    platform.threads.waitedFor.clear();

    setFeature(PldsTags::VALUE_FALSE);

    EXPECT_TRUE(platform.threads.waitedFor.empty());
    EXPECT_EQ(1u, platform.threads.pendingCount());
    runThreads();
}

TEST_F(DndSwitch, ARunnerWithoutAServiceReturns) {
    EXPECT_EQ(nullptr, OrvaneService::asyncSyncDndRunner(nullptr));

    EXPECT_TRUE(logged(4, "asyncSyncDndRunner()"));
}

TEST_F(DndSwitch, StopWaitsForTheThread) {
    connectWithFeatureOff();
    setFeature(PldsTags::VALUE_TRUE);
    expectPresence("TakeAllCalls");

    service->stop();

    EXPECT_TRUE(logged(6, "stop() - stop enabling or disabling DND synchronisation feature"));
    EXPECT_EQ(0u, platform.threads.pendingCount());
}

// ---- On and off --------------------------------------------------------------------------------------------------

TEST_F(DndSwitch, TurningOnFetchesTheStatusAndSubscribes) {
    connectWithFeatureOff();
    openChannel();
    forgetRecords();
    setFeature(PldsTags::VALUE_TRUE);
    expectPresence("DoNotAcceptAnyCalls");

    runThreads();

    EXPECT_TRUE(logged(6, "SyncDnd() - sync DND was turned on!"));
    EXPECT_EQ(PldsTags::VALUE_TRUE, dndItem());
    ASSERT_EQ(1u, subscriptionUpdates());
    EXPECT_NE(std::string::npos, platform.webSocket.frames.back().find("/extension/~/presence/dnd"));
}

TEST_F(DndSwitch, TurningOffUnsubscribesAndLeavesTheTelephonesSwitch) {
    withCallLog();
    connectWith("DoNotAcceptAnyCalls");
    openChannel();
    forgetRecords();
    setFeature(PldsTags::VALUE_FALSE);

    runThreads();

    EXPECT_TRUE(logged(6, "syncDnd() - sync DND was turned off!"));
    EXPECT_EQ(PldsTags::VALUE_TRUE, dndItem());
    EXPECT_EQ(0, dndWrites());
    ASSERT_EQ(1u, subscriptionUpdates());
    EXPECT_EQ(std::string::npos, platform.webSocket.frames.back().find("presence/dnd"));
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(DndSwitch, TurningOffForgetsTheStatusSoThatTurningOnWritesItAgain) {
    connectWith("DoNotAcceptAnyCalls");
    setFeature(PldsTags::VALUE_FALSE);
    runThreads();
    forgetRecords();
    setFeature(PldsTags::VALUE_TRUE);
    expectPresence("DoNotAcceptAnyCalls");

    runThreads();

    EXPECT_EQ(1, dndWrites());
}

TEST_F(DndSwitch, TurningOffClearsTheLitKeysAndOnlyThose) {
    withWatchedColleague("100", "33");
    withWatchedColleague("101", "11");
    withWatchedColleague("102", "22");
    connectWith("TakeAllCalls", {{"11", "DoNotAcceptAnyCalls"}, {"22", "TakeAllCalls"}, {"33", "DoNotAcceptAnyCalls"}});
    setFeature(PldsTags::VALUE_FALSE);

    runThreads();

    EXPECT_EQ((Lamps{{"blf11", false}, {"blf33", false}}), lamps());
    EXPECT_EQ(3u, service->getFpkPresenceMapSize()) << "the records stay";
}

TEST_F(DndSwitch, KeysThatWereClearedAreNotClearedAgain) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "DoNotAcceptAnyCalls"}});
    setFeature(PldsTags::VALUE_FALSE);
    runThreads();
    setFeature(PldsTags::VALUE_TRUE);
    expectPresence("TakeAllCalls");
    expectColleaguePresence("11").answers(500);
    runThreads();
    forgetRecords();

    setFeature(PldsTags::VALUE_FALSE);
    runThreads();

    EXPECT_TRUE(lamps().empty());
}

TEST_F(DndSwitch, TheSameValueAgainIsReportedAndChangesNothing) {
    connectWith("TakeAllCalls");
    setFeature(PldsTags::VALUE_TRUE);

    runThreads();

    EXPECT_TRUE(logged(2, "syncDnd() - oops something is wrong! m_sync_dnr[true], m_sync_dnd_old[true]"));
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(DndSwitch, OffAgainIsReportedToo) {
    connectWithFeatureOff();
    setFeature(PldsTags::VALUE_FALSE);

    runThreads();

    EXPECT_TRUE(logged(2, "syncDnd() - oops something is wrong! m_sync_dnr[false], m_sync_dnd_old[false]"));
}

TEST_F(DndSwitch, TheLockIsHeldAcrossTheRequestAndTheWaitThatTheCloudAsksFor) {
    connectWithFeatureOff();
    std::vector<std::string> heldInRequest;
    std::vector<std::string> heldInSleep;
    setFeature(PldsTags::VALUE_TRUE);
    expectPresence().asksToWait(2).whileAwaited([&] { heldInRequest = platform.locks.held(); });
    expectPresence("TakeAllCalls");
    platform.threads.duringSleep = [&] { heldInSleep = platform.locks.held(); };

    runThreads();

    EXPECT_EQ((std::vector<std::string>{"m_dndSem", "m_connectionSem"}), heldInRequest);
    EXPECT_EQ((std::vector<std::string>{"m_dndSem"}), heldInSleep);
    EXPECT_EQ((std::vector<int>{2}), platform.threads.sleepsSeconds);
}

TEST_F(DndSwitch, LampsAreClearedWithTheMapFree) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "DoNotAcceptAnyCalls"}});
    std::vector<std::string> held;
    platform.team.reaction = [&] { held = platform.locks.held(); };
    setFeature(PldsTags::VALUE_FALSE);

    runThreads();

    EXPECT_EQ((std::vector<std::string>{"m_dndSem"}), held);
}
