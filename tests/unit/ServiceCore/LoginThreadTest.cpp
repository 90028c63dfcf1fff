#include "TestTelephone.h"

#include <stdexcept>

namespace {

class LoginThread : public TestTelephone {};

TEST_F(LoginThread, IsMadeByInitAndRunsTheStartSequence) {
    expectLogin();

    initialise();

    EXPECT_FALSE(service->isRunning());
    ASSERT_EQ(1u, platform.threads.spawned.size());
    runThreads();
    EXPECT_TRUE(service->isRunning());
    EXPECT_TRUE(logged(4, "asyncLoginRunner()"));
    EXPECT_TRUE(logged(4, "start()"));
    EXPECT_TRUE(logged(6, "start() - end"));
}

TEST_F(LoginThread, IsDetachedAndHasNoNameAndNormalPriority) {
    expectLogin();
    connect();

    const TestThreads::Job& job = platform.threads.spawned.at(0);
    EXPECT_EQ("", job.name);
    EXPECT_EQ(1, job.priority);
    EXPECT_EQ(0, job.stackSize);
    EXPECT_EQ(service.get(), job.argument);
    EXPECT_TRUE(job.detached);
}

TEST_F(LoginThread, IsOneAtATime) {
    expectLogin();
    initialise();

    service->asyncLogin();

    EXPECT_TRUE(logged(2, "asyncLogin() thread is already running!"));
    EXPECT_EQ(1u, platform.threads.spawned.size());
    runThreads();
}

TEST_F(LoginThread, MayComeAgainWhenTheFormerOneHasEnded) {
    connectWithEmptyCloud();
    platform.store.change(PldsTags::INTERFACE_STATUS, "down");
    expectLogin();

    platform.store.change(PldsTags::INTERFACE_STATUS, "up");
    runThreads();

    EXPECT_EQ(2u, platform.threads.spawned.size());
    EXPECT_TRUE(service->isRunning());
}

TEST_F(LoginThread, MayComeAgainWhenTheFormerOneEndedWhileItWasMade) {
    platform.threads.runAtSpawn = true;
    connectWithEmptyCloud();
    platform.store.change(PldsTags::INTERFACE_STATUS, "down");
    expectLogin();

    platform.store.change(PldsTags::INTERFACE_STATUS, "up");

    EXPECT_EQ(2u, platform.threads.spawned.size());
    EXPECT_TRUE(service->isRunning());
}

TEST_F(LoginThread, ThatCannotBeMadeIsLoggedAndMayBeTriedAgain) {
    platform.threads.refuse = true;
    initialise();
    EXPECT_TRUE(logged(2, "asyncLogin() failed to create thread!"));
    EXPECT_EQ(0u, platform.threads.pendingCount());
    platform.threads.refuse = false;
    expectLogin();

    service->asyncLogin();
    runThreads();

    EXPECT_TRUE(service->isRunning());
    EXPECT_FALSE(logged(2, "asyncLogin() thread is already running!"));
}

TEST_F(LoginThread, DoesNothingWithoutAService) {
    EXPECT_EQ(nullptr, OrvaneService::asyncLoginRunner(nullptr));

    EXPECT_TRUE(logged(4, "asyncLoginRunner()"));
    EXPECT_FALSE(logged(4, "start()"));
}

TEST_F(LoginThread, IsNotMadeWhileTheInterfaceIsDown) {
    platform.store.set(PldsTags::INTERFACE_STATUS, "down");

    initialise();

    EXPECT_TRUE(logged(
        5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[false] m_state[CONFIGURED_ON_INIT]"));
    EXPECT_TRUE(platform.threads.spawned.empty());
}

TEST_F(LoginThread, IsNotMadeForAnotherServerType) {
    platform.store.set(PldsTags::SERVER_TYPE, "8");

    initialise();

    EXPECT_TRUE(logged(
        5, "asyncLogin() ignored. m_ov_server_type[false] m_interface_status[true] m_state[CONFIGURED_ON_INIT]"));
    EXPECT_TRUE(platform.threads.spawned.empty());
}

TEST_F(LoginThread, IsNotMadeWithoutAServer) {
    platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, "");

    initialise();

    EXPECT_TRUE(logged(
        5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] m_state[DECONFIGURED_ON_INIT]"));
}

TEST_F(LoginThread, IsNotMadeWhenTheServiceRunsOrHasStopped) {
    connectWithEmptyCloud();
    service->asyncLogin();
    EXPECT_TRUE(logged(5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] m_state[CONNECTED]"));

    service->stop();
    service->asyncLogin();
    EXPECT_TRUE(logged(5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] m_state[STOP]"));
    EXPECT_EQ(1u, platform.threads.spawned.size());
}

TEST_F(LoginThread, IsRefusedByALoginThatIsOverMeanwhile) {
    // The group of a configuration change logs in by itself while the first login thread has not begun.
    initialise();
    expectLogin();
    service->start();
    EXPECT_TRUE(service->isRunning());

    runThreads();

    EXPECT_TRUE(logged(
        2, "start() - cannot launch start(). m_interface_status[true], m_ov_server_type[true], m_state[CONNECTED]"));
}

TEST_F(LoginThread, KeepsItsFlagAndItsIdWhenItsStartIsRefused) {
    initialise();
    platform.store.change(PldsTags::INTERFACE_STATUS, "down");
    runThreads();
    EXPECT_TRUE(logged(2, "start() - cannot launch start(). m_interface_status[false], m_ov_server_type[true], "
                          "m_state[CONFIGURED_ON_INIT]"));

    platform.store.change(PldsTags::INTERFACE_STATUS, "up");

    EXPECT_TRUE(logged(2, "asyncLogin() thread is already running!"));
    EXPECT_EQ(1u, platform.threads.spawned.size());
    service->stop();
    EXPECT_TRUE(logged(6, "stop() - stop async login Thread"));
}

TEST_F(LoginThread, ThatARedirectionToNowhereEndsLeavesItsFlagAndTheStateStart) {
    initialise();
    expectToken().redirectsTo(302, "https://other");
    EXPECT_THROW(runThreads(), std::out_of_range);
    EXPECT_TRUE(service->isRunning());
    EXPECT_TRUE(platform.context.runningDurations().empty()) << "nothing renews the login";

    platform.store.change(PldsTags::INTERFACE_STATUS, "down");
    platform.store.change(PldsTags::INTERFACE_STATUS, "up");

    EXPECT_FALSE(service->isRunning());
    EXPECT_TRUE(logged(2, "asyncLogin() thread is already running!"));
    EXPECT_EQ(1u, platform.threads.spawned.size());
}

TEST_F(LoginThread, HasItsFlagClearedByEveryCompletedStart) {
    initialise();
    platform.store.change(PldsTags::INTERFACE_STATUS, "down");
    runThreads();
    platform.store.change(PldsTags::INTERFACE_STATUS, "up");
    expectLogin();
    service->start();
    platform.store.change(PldsTags::INTERFACE_STATUS, "down");
    expectLogin();

    platform.store.change(PldsTags::INTERFACE_STATUS, "up");
    runThreads();

    EXPECT_EQ(2u, platform.threads.spawned.size());
    EXPECT_TRUE(service->isRunning());
}

} // namespace
