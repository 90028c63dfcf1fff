#include "TestTelephone.h"

namespace {

/// A worker that is no longer there, or never was, leaves nothing behind that could be waited for.
class WorkerThreadTest : public TestTelephone {
protected:
    WorkerThreadTest() {
        withCallLog();
        withPhonebook();
        withObserver();
    }
    void refreshEverything() {
        service->refreshCallLogEntries();
        service->refreshPhonebookEntries();
        service->refreshVoicemailEntries();
    }
    void expectNoWaits() {
        EXPECT_TRUE(platform.threads.waitedFor.empty());
        EXPECT_FALSE(platform.log.contains("stop() - stop"));
    }
};

TEST_F(WorkerThreadTest, AStopDoesNotWaitForWorkersThatHaveEnded) {
    connectWithEmptyCloud();
    refreshEverything();
    expectIncrementalCallLog("c1", "c2");
    expectIncrementalPhonebook("p1", "p2");
    runThreads();
    ASSERT_EQ(4u, platform.threads.spawned.size()) << "the login and three refreshes";

    service->stop();

    expectNoWaits();
}

TEST_F(WorkerThreadTest, AStopDoesNotWaitForRefreshesThatCouldNotBeMade) {
    connectWithEmptyCloud();
    platform.threads.refuse = true;
    refreshEverything();

    service->stop();

    expectNoWaits();
}

TEST_F(WorkerThreadTest, TheEndDoesNotWaitForARecoveryThatCouldNotBeMade) {
    connectWithEmptyCloud();
    platform.threads.refuse = true;
    service->asyncRecoverWebSocketConnection();

    service.reset();

    expectNoWaits();
}

} // namespace
