#include "ChannelTelephone.h"

namespace {

using Steps = std::vector<std::string>;

class WebSocketRecoveryTest : public ChannelTelephone {
protected:
    std::string recoveredUrl() {
        expectWebSocketToken().answers(200, CloudAnswers::webSocketToken("W2"));
        runThreads();
        return lastUrl();
    }
};

TEST_F(WebSocketRecoveryTest, ARecoveryRunsOnAThreadOfItsOwnThatIsNeitherDetachedNorWaitedFor) {
    openSession();
    const std::size_t spawnedBefore = platform.threads.spawned.size();
    service->asyncRecoverWebSocketConnection();
    ASSERT_EQ(spawnedBefore + 1, platform.threads.spawned.size());
    EXPECT_EQ("", platform.threads.spawned.back().name);
    EXPECT_EQ(1, platform.threads.spawned.back().priority);
    EXPECT_EQ(0, platform.threads.spawned.back().stackSize);
    EXPECT_FALSE(platform.threads.spawned.back().detached);
    EXPECT_EQ("wss://events.example/ws?access_token=W2", recoveredUrl());
    EXPECT_FALSE(platform.threads.spawned.back().detached);
    // It has ended, so nobody waits for it at the end of the service either.
    service.reset();
    EXPECT_TRUE(platform.threads.waitedFor.empty());
}

TEST_F(WebSocketRecoveryTest, AThreadThatEndsBeforeItsMakerGoesOnLeavesTheWayFree) {
    openSession();
    platform.threads.runAtSpawn = true;
    for (std::size_t recovery = 1; recovery <= 2; ++recovery) {
        expectWebSocketToken();
        service->asyncRecoverWebSocketConnection();
        EXPECT_EQ(1u + recovery, socketsOpened());
    }
    EXPECT_FALSE(logged(5, "asyncRecoverWebSocketConnection() already running"));
}

TEST_F(WebSocketRecoveryTest, OnlyOneRecoveryThreadRuns) {
    openSession();
    service->asyncRecoverWebSocketConnection();
    service->asyncRecoverWebSocketConnection();
    EXPECT_TRUE(logged(5, "asyncRecoverWebSocketConnection() already running"));
    EXPECT_EQ(1u, platform.threads.pendingCount());
    recoveredUrl();
    // The thread has cleared its flag: the next one may run.
    log().clear();
    service->asyncRecoverWebSocketConnection();
    EXPECT_EQ(1u, platform.threads.pendingCount());
    EXPECT_TRUE(log().lines().empty());
    recoveredUrl();
}

TEST_F(WebSocketRecoveryTest, WithoutAThreadTheRecoveryMayBeTriedAgain) {
    openSession();
    platform.threads.refuse = true;
    service->asyncRecoverWebSocketConnection();
    EXPECT_TRUE(logged(2, "asyncRecoverWebSocketConnection() failed to create thread!"));
    platform.threads.refuse = false;
    service->asyncRecoverWebSocketConnection();
    EXPECT_EQ(1u, platform.threads.pendingCount());
    recoveredUrl();
}

TEST_F(WebSocketRecoveryTest, TheDestructorWaitsForTheRecoveryThread) {
    openSession();
    service->asyncRecoverWebSocketConnection();
    const unsigned long id = platform.threads.spawned.back().id;
    // stop() leaves that thread out. It finds the service stopped: no token, so stop() and start() again.
    expectToken().answers(500, "no");
    service.reset();
    EXPECT_EQ((std::vector<unsigned long>{id}), platform.threads.waitedFor);
    EXPECT_EQ(0u, platform.threads.pendingCount());
}

TEST_F(WebSocketRecoveryTest, ARunnerWithoutServiceDoesNothing) {
    EXPECT_EQ(nullptr, OrvaneService::asyncRecoverWebSocketConnectionRunner(nullptr));
    EXPECT_TRUE(log().lines().empty());
}

TEST_F(WebSocketRecoveryTest, ARecoveryClosesTheSocketAndOpensItAgainWithAFreshToken) {
    openSession();
    const int stopsBefore = platform.webSocket.stops;
    expectWebSocketToken()
        .answers(200, CloudAnswers::webSocketToken("W2", "wss://moved.example/ws"))
        .whileAwaited([this] {
            EXPECT_EQ(OrvaneService::WS_STATE_CLOSED, service->getWebSocketState());
            EXPECT_TRUE(service->getRecoverWebSocketConnection());
            EXPECT_FALSE(platform.webSocket.running);
        });
    service->recoverWebSocketConnection();
    EXPECT_TRUE(logged(6, "recoverWebSocketConnection()"));
    EXPECT_EQ(stopsBefore + 1, platform.webSocket.stops);
    EXPECT_EQ("wss://moved.example/ws?access_token=W2", lastUrl());
    EXPECT_FALSE(service->getRecoverWebSocketConnection());
    EXPECT_EQ(OrvaneService::WS_STATE_CLOSED, service->getWebSocketState());
}

TEST_F(WebSocketRecoveryTest, ARecoveryPresentsTheSessionContextThatItStillHas) {
    openSession();
    receive(contextFrame("context", 1));
    expectWebSocketToken();
    service->recoverWebSocketConnection();
    EXPECT_EQ("wss://events.example/ws?access_token=W1&wsc=context", lastUrl());
}

TEST_F(WebSocketRecoveryTest, AfterAnAbnormalClosureTheSessionContextIsGone) {
    openSession();
    receive(contextFrame("context", 1));
    service->onClose(0, 1006, "gone");
    expectWebSocketToken();
    pass(restoreMilliseconds);
    EXPECT_EQ("wss://events.example/ws?access_token=W1", lastUrl());
}

TEST_F(WebSocketRecoveryTest, ATokenThatFailsOnceIsAskedForOnceMore) {
    openSession();
    expectWebSocketToken().answers(500, "no");
    expectWebSocketToken().answers(200, CloudAnswers::webSocketToken("W2"));
    service->recoverWebSocketConnection();
    EXPECT_TRUE(logged(6, "recoverWebSocketConnection() - tries once again"));
    EXPECT_FALSE(log().contains("reconnect Orvane Service"));
    EXPECT_EQ("wss://events.example/ws?access_token=W2", lastUrl());
}

TEST_F(WebSocketRecoveryTest, ATokenThatFailsTwiceBringsTheWholeServiceDownAndUp) {
    openSession();
    receive(contextFrame("context", 1));
    clearRecords();
    expectWebSocketToken().answers(500, "no");
    expectWebSocketToken().answers(500, "no");
    expectToken();
    expectExtension();
    expectPresence();
    expectGrants();
    expectWebSocketToken().answers(200, CloudAnswers::webSocketToken("W3"));
    service->recoverWebSocketConnection();
    EXPECT_TRUE(logged(6, "recoverWebSocketConnection() - tries once again"));
    EXPECT_TRUE(logged(6, "recoverWebSocketConnection() - reconnect Orvane Service"));
    EXPECT_TRUE(logged(4, "stop()"));
    EXPECT_TRUE(logged(4, "start()"));
    EXPECT_EQ("wss://events.example/ws?access_token=W3", lastUrl());
    // By start() alone: the recovery opens none besides.
    EXPECT_EQ(2u, socketsOpened());
    EXPECT_TRUE(service->isRunning());
    EXPECT_FALSE(service->getRecoverWebSocketConnection());
}

TEST_F(WebSocketRecoveryTest, AServiceThatIsSwitchedOffOnlyClosesTheSocket) {
    logIn({false, false});
    service->setWebSocketState(OrvaneService::WS_STATE_READY);
    const int stopsBefore = platform.webSocket.stops;
    service->recoverWebSocketConnection();
    EXPECT_EQ(stopsBefore + 1, platform.webSocket.stops);
    EXPECT_EQ(OrvaneService::WS_STATE_CLOSED, service->getWebSocketState());
    EXPECT_FALSE(service->getRecoverWebSocketConnection());
    EXPECT_EQ(0u, socketsOpened());
    // The flag of the thread is cleared as well.
    service->asyncRecoverWebSocketConnection();
    EXPECT_EQ(1u, platform.threads.pendingCount());
    runThreads();
}

TEST_F(WebSocketRecoveryTest, TheRestorationDoesNotHeedARecoveryThatRuns) {
    openSession();
    service->asyncRecoverWebSocketConnection();
    service->onClose(0, 1006, "gone");
    expectWebSocketToken();
    pass(restoreMilliseconds);
    EXPECT_EQ(2u, socketsOpened());
    recoveredUrl();
    EXPECT_EQ(3u, socketsOpened());
}

TEST_F(WebSocketRecoveryTest, TheExpiryOfTheRecoveryTimerRecoversWhenTheInterfaceIsUp) {
    openSession(Setup(), {"", 3, 45001, 60});
    service->onPongTimeout();
    const int timer = runningTimer(1000);
    pass(1000);
    EXPECT_TRUE(logged(6, "timerEvent(" + std::to_string(timer) +
                              ") web socket recovery timer expired. Interface status[true], state[CONNECTED]"));
    EXPECT_FALSE(timers().exists(timer));
    EXPECT_EQ(1u, platform.threads.pendingCount());
    recoveredUrl();
    EXPECT_EQ(2u, socketsOpened());
}

TEST_F(WebSocketRecoveryTest, WithoutInterfaceTheExpiryWaitsUntilItComesUp) {
    openSession();
    interfaceChanges("down");
    const int timer = runningTimer(interfaceRecoveryMilliseconds);
    pass(interfaceRecoveryMilliseconds);
    EXPECT_TRUE(logged(6, "timerEvent(" + std::to_string(timer) +
                              ") web socket recovery timer expired. Interface status[false], state[CONNECTED]"));
    EXPECT_FALSE(timers().exists(timer));
    EXPECT_TRUE(service->getRecoverWebSocketConnectionWaitForLanInterfaceUp());
    EXPECT_EQ(0u, platform.threads.pendingCount());

    interfaceChanges("up");
    EXPECT_TRUE(logged(6, "manageableDataChanged() - recover web socket connection"));
    EXPECT_FALSE(service->getRecoverWebSocketConnectionWaitForLanInterfaceUp());
    EXPECT_EQ(1u, platform.threads.pendingCount());
    recoveredUrl();
    EXPECT_EQ(2u, socketsOpened());
}

TEST_F(WebSocketRecoveryTest, AnInterfaceThatComesBackInTimeRecoversAtOnce) {
    openSession();
    receive(contextFrame("context", 1));
    interfaceChanges("down");
    EXPECT_TRUE(logged(6, "manageableDataChanged() - m_webSocketConnectionEstablished is established."));
    EXPECT_EQ(OrvaneService::WS_STATE_RECOVERING, service->getWebSocketState());
    EXPECT_TRUE(service->isRunning());
    EXPECT_TRUE(logged(6, "manageableDataChanged() - start web socket connection recovery timer[0]! Timeout is 120 "
                          "seconds"));
    const std::string timer = std::to_string(runningTimer(interfaceRecoveryMilliseconds));
    platform.steps.begin();
    interfaceChanges("up");
    EXPECT_EQ((Steps{"log 4 manageableDataChanged() id[interface-status] itemVal[up]",
                     "log 6 manageableDataChanged() - state CONNECTED", "take m_recoverWebSocketSem",
                     "give m_recoverWebSocketSem", "log 6 manageableDataChanged() - recover web socket connection",
                     "log 6 stopAndDeleteTimer(" + timer + ")", "timer stop " + timer, "timer delete " + timer,
                     "spawn " + std::to_string(platform.threads.spawned.back().id) + " "}),
              platform.steps.steps());
    EXPECT_EQ("wss://events.example/ws?access_token=W2&wsc=context", recoveredUrl());
}

TEST_F(WebSocketRecoveryTest, WithoutAChannelALostInterfaceStopsTheServiceAndItsReturnLogsIn) {
    logIn();
    interfaceChanges("down");
    EXPECT_TRUE(logged(6, "manageableDataChanged() - stop"));
    EXPECT_FALSE(service->isRunning());
    interfaceChanges("up");
    EXPECT_TRUE(logged(6, "manageableDataChanged() - Login"));
    expectLogin();
    runThreads();
    EXPECT_TRUE(service->isRunning());
}

TEST_F(WebSocketRecoveryTest, BeforeTheConnectionDetailsTheInterfaceTimerHasNoLength) {
    logIn();
    service->onOpen(0);
    interfaceChanges("down");
    EXPECT_TRUE(isTimerRunning(0));
    pass(0);
    EXPECT_TRUE(service->getRecoverWebSocketConnectionWaitForLanInterfaceUp());
}

TEST_F(WebSocketRecoveryTest, ASuccessfulRecoveryLosesNothingThatWasSaidMeanwhile) {
    subscribeAll();
    receive(contextFrame("context", 1));
    interfaceChanges("down");
    EXPECT_FALSE(service->sendMessageOnWebsocket("first"));
    EXPECT_FALSE(service->sendMessageOnWebsocket("second"));
    interfaceChanges("up");
    recoveredUrl();
    service->onOpen(0);
    receive(connectionDetails({"Successful", 3, 120, 60}));
    EXPECT_EQ((std::vector<std::string>{"first", "second"}), frames());
    EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
    // The subscription goes on as it was.
    EXPECT_TRUE(service->isOvEventSubscribed("/restapi/v1.0/account/~/extension/4711/presence/dnd", true));
}

TEST_F(WebSocketRecoveryTest, AFailedRecoverySubscribesAnew) {
    subscribeAll();
    interfaceChanges("down");
    service->sendMessageOnWebsocket("first");
    interfaceChanges("up");
    recoveredUrl();
    service->onOpen(0);
    receive(connectionDetails({"Failed", 3, 120, 60}));
    ASSERT_EQ(1u, frames().size());
    EXPECT_NE(std::string::npos, lastFrame().find("eventFilters"));
}

TEST_F(WebSocketRecoveryTest, ARecoveryLeadsToStateZeroFromEveryState) {
    logIn({false, false});
    for (int state = OrvaneService::WS_STATE_OPENED; state <= OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER;
         ++state) {
        service->setWebSocketState(static_cast<OrvaneService::WebSocketState>(state));
        service->recoverWebSocketConnection();
        EXPECT_EQ(OrvaneService::WS_STATE_CLOSED, service->getWebSocketState()) << "from " << state;
    }
}

} // namespace
