#include "ChannelTelephone.h"

namespace {

using Calls = std::vector<std::string>;
using Steps = std::vector<std::string>;

class WebSocketCallbacksTest : public ChannelTelephone {
protected:
    /// Loses the connection and lets the delay until its restoration pass.
    void loseAndRestore() {
        service->onClose(0, 1006, "gone");
        expectWebSocketToken();
        pass(restoreMilliseconds);
    }
};

TEST_F(WebSocketCallbacksTest, AGoodOpenAwaitsTheConnectionDetails) {
    logIn();
    service->onOpen(0);
    EXPECT_EQ(OrvaneService::WS_STATE_OPENED, service->getWebSocketState());
    EXPECT_TRUE(logged(4, "onOpen() - code[0]"));
    EXPECT_TRUE(logged(5, "setWebSocketState() change the web socket state from 0 to 1"));
}

TEST_F(WebSocketCallbacksTest, AGoodOpenResetsTheSessionContext) {
    openSession();
    receive(contextFrame("context", 5));
    ASSERT_EQ("context", sessionContext());
    service->onOpen(0);
    EXPECT_EQ("", sessionContext());
    // The sequence begins anew, and has to be above 0.
    receive(contextFrame("zero", 0));
    EXPECT_EQ("", sessionContext());
    receive(contextFrame("one", 1));
    EXPECT_EQ("one", sessionContext());
}

TEST_F(WebSocketCallbacksTest, AGoodOpenLeadsToStateOneFromEveryState) {
    logIn();
    for (int state = OrvaneService::WS_STATE_CLOSED; state <= OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER;
         ++state) {
        service->setWebSocketState(static_cast<OrvaneService::WebSocketState>(state));
        service->onOpen(0);
        EXPECT_EQ(OrvaneService::WS_STATE_OPENED, service->getWebSocketState()) << "from " << state;
    }
}

TEST_F(WebSocketCallbacksTest, ARefusedOpenChangesNothing) {
    openSession();
    receive(contextFrame("context", 5));
    service->onOpen(7);
    EXPECT_TRUE(logged(4, "onOpen() - code[7]"));
    EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
    EXPECT_EQ("context", sessionContext());
}

TEST_F(WebSocketCallbacksTest, ARefusedOpenDoesNotEstablishTheConnection) {
    logIn();
    service->onOpen(1);
    interfaceChanges("down");
    EXPECT_FALSE(service->isRunning());
}

TEST_F(WebSocketCallbacksTest, AnErrorIsOnlyLogged) {
    openSession();
    timers().calls.clear();
    service->onError(3, "refused");
    EXPECT_TRUE(logged(2, "onError() code[3] msg[refused]"));
    EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(WebSocketCallbacksTest, ACloseForgetsTheSessionAndItsEventsButNotTheState) {
    subscribeAll();
    receive(contextFrame("context", 5));
    ASSERT_TRUE(service->isOvEventSubscribed("/restapi/v1.0/account/~/extension/4711/presence/dnd", true));
    service->onClose(1000, 1001, "bye");
    EXPECT_TRUE(logged(3, "onClose() code[1000] localCode[1001] msg[bye]"));
    EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
    EXPECT_EQ("", sessionContext());
    EXPECT_FALSE(service->isOvEventSubscribed("/restapi/v1.0/account/~/extension/4711/presence/dnd", true));
    // No longer established: without its interface the service stops.
    interfaceChanges("down");
    EXPECT_FALSE(service->isRunning());
}

TEST_F(WebSocketCallbacksTest, AfterACloseTheSequenceBeginsAnew) {
    openSession();
    receive(contextFrame("context", 5));
    service->onClose(1000, 1000, "bye");
    receive(contextFrame("one", 1));
    EXPECT_EQ("one", sessionContext());
}

TEST_F(WebSocketCallbacksTest, AfterACloseFramesAreStillHandedToTheSocket) {
    openSession();
    service->onClose(1000, 1000, "bye");
    frames().clear();
    EXPECT_TRUE(service->sendMessageOnWebsocket("text"));
    EXPECT_EQ((std::vector<std::string>{"text"}), frames());
}

TEST_F(WebSocketCallbacksTest, OnlyAnAbnormalClosureIsRestored) {
    openSession();
    timers().calls.clear();
    for (const int localCode : {0, 1000, 1001, 1005, 1007, 1009, 1011}) {
        service->onClose(1006, localCode, "bye");
    }
    EXPECT_TRUE(timers().calls.empty());
    EXPECT_FALSE(log().contains("abnormally"));
}

TEST_F(WebSocketCallbacksTest, AnAbnormalClosureIsRestoredAfterThirtySeconds) {
    openSession();
    service->onClose(0, 1006, "gone");
    EXPECT_TRUE(logged(3, "onClose() localCode[1006] indicating abnormally closed event received"));
    const int timer = runningTimer(restoreMilliseconds);
    pass(restoreMilliseconds - 1);
    EXPECT_EQ(1u, socketsOpened());
    expectWebSocketToken();
    pass(1);
    EXPECT_TRUE(logged(2, "timerEvent(" + std::to_string(timer) +
                              ") - web socket restoreAfterErrorTimer expired! Web socket connection will be restored, "
                              "state[CONNECTED]"));
    EXPECT_EQ(2u, socketsOpened());
    // On the thread of the timers, not on one of its own; the timer is kept.
    EXPECT_EQ(0u, platform.threads.pendingCount());
    EXPECT_TRUE(timers().exists(timer));
}

TEST_F(WebSocketCallbacksTest, TheNextClosureUsesTheSameTimerAgain) {
    openSession();
    loseAndRestore();
    timers().calls.clear();
    service->onClose(0, 1006, "gone");
    const std::string timer = std::to_string(runningTimer(restoreMilliseconds));
    EXPECT_EQ((Calls{"reset " + timer, "start " + timer}), timers().calls);
}

TEST_F(WebSocketCallbacksTest, AClosureWhileTheTimerRunsUsesUpARestoreAllTheSame) {
    openSession();
    service->onClose(0, 1006, "first");
    timers().calls.clear();
    service->onClose(0, 1006, "second");
    EXPECT_TRUE(logged(6, "onClose() m_webSocketRestoreAfterErrorTimer is already running - no action will be done"));
    EXPECT_TRUE(timers().calls.empty());
    service->onClose(0, 1006, "third");
    expectWebSocketToken();
    pass(restoreMilliseconds);
    service->onClose(0, 1006, "fourth");
    EXPECT_FALSE(isTimerRunning(restoreMilliseconds));
}

TEST_F(WebSocketCallbacksTest, AfterThreeAbnormalClosuresTheChannelIsGivenUpSilently) {
    openSession();
    for (int closure = 0; closure < 3; ++closure) {
        loseAndRestore();
    }
    ASSERT_EQ(4u, socketsOpened());
    clearRecords();
    service->onClose(0, 1006, "gone");
    EXPECT_TRUE(timers().calls.empty());
    EXPECT_EQ(2u, log().lines().size());
    EXPECT_TRUE(logged(3, "onClose() localCode[1006] indicating abnormally closed event received"));
    pass(restoreMilliseconds);
    EXPECT_EQ(4u, socketsOpened());
}

TEST_F(WebSocketCallbacksTest, ARenewalOfTheSubscriptionBringsAllThreeRestoresBack) {
    subscribeAll();
    for (int closure = 0; closure < 3; ++closure) {
        loseAndRestore();
    }
    pass(renewalMilliseconds);
    // As many as before: three.
    for (int closure = 0; closure < 3; ++closure) {
        loseAndRestore();
    }
    EXPECT_EQ(7u, socketsOpened());
    service->onClose(0, 1006, "gone");
    EXPECT_FALSE(isTimerRunning(restoreMilliseconds));
}

TEST_F(WebSocketCallbacksTest, WithoutTheFrameworksContextNothingIsArmed) {
    for (int closure = 0; closure < 4; ++closure) {
        service->onClose(0, 1006, "gone");
    }
    EXPECT_EQ(4, log().count(3, "onClose() localCode[1006] indicating abnormally closed event received"));
    EXPECT_EQ(8u, log().lines().size());
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(WebSocketCallbacksTest, AnUnansweredPingPutsTheConnectionInDoubtFromEveryState) {
    openSession();
    for (int state = OrvaneService::WS_STATE_CLOSED; state <= OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER;
         ++state) {
        service->setWebSocketState(static_cast<OrvaneService::WebSocketState>(state));
        timers().calls.clear();
        log().clear();
        service->onPongTimeout();
        EXPECT_EQ(OrvaneService::WS_STATE_RECOVERING, service->getWebSocketState()) << "from " << state;
        EXPECT_TRUE(logged(6, "onPongTimeout() - web socket connection recovery start. Start timer -44880 seconds"));
        const std::string timer = std::to_string(runningTimer(recoveryMilliseconds));
        EXPECT_EQ((Calls{"create " + timer + " -44880000", "start " + timer}), timers().calls);
        // The difference is negative: the timer has expired as soon as it is started.
        expectWebSocketToken();
        timers().deliverDue();
        runThreads();
    }
}

TEST_F(WebSocketCallbacksTest, ALongRecoveryTimeIsWaitedOut) {
    openSession(Setup(), {"", 3, 45010, 60});
    service->onPongTimeout();
    EXPECT_TRUE(logged(6, "onPongTimeout() - web socket connection recovery start. Start timer 10 seconds"));
    pass(9999);
    EXPECT_EQ(0u, platform.threads.pendingCount());
    pass(1);
    EXPECT_EQ(1u, platform.threads.pendingCount());
    expectWebSocketToken();
    runThreads();
}

TEST_F(WebSocketCallbacksTest, ARecoveryTimeBeyondWhatATimerTakesIsClamped) {
    openSession(Setup(), {"", 3, 2147483647, 60});
    service->onPongTimeout();
    EXPECT_TRUE(isTimerRunning(2147483647));
}

TEST_F(WebSocketCallbacksTest, ARecoveryTimeBelowWhatATimerTakesIsClampedToo) {
    openSession(Setup(), {"", 3, -2147483647, 60});
    service->onPongTimeout();
    EXPECT_EQ(1u, timers().running(-2147483647 - 1).size());
}

TEST_F(WebSocketCallbacksTest, AnotherUnansweredPingWhileTheRecoveryTimerRunsDoesNothing) {
    openSession();
    service->onPongTimeout();
    service->setWebSocketState(OrvaneService::WS_STATE_READY);
    clearRecords();
    service->onPongTimeout();
    EXPECT_TRUE(timers().calls.empty());
    EXPECT_TRUE(log().lines().empty());
    EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
}

TEST_F(WebSocketCallbacksTest, AnUnansweredPingDuringARecoveryDoesNothing) {
    openSession();
    service->setRecoverWebSocketConnection(true);
    clearRecords();
    service->onPongTimeout();
    EXPECT_TRUE(timers().calls.empty());
    EXPECT_TRUE(log().lines().empty());
    EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
}

TEST_F(WebSocketCallbacksTest, ANormalPongDoesNothing) {
    openSession();
    clearRecords();
    service->onPong();
    EXPECT_TRUE(timers().calls.empty());
    EXPECT_TRUE(log().lines().empty());
}

TEST_F(WebSocketCallbacksTest, ALatePongRebuildsTheConnectionAtOnce) {
    openSession();
    service->onPongTimeout();
    const std::string timer = std::to_string(runningTimer(recoveryMilliseconds));
    platform.steps.begin();
    service->onPong();
    ASSERT_EQ(1u, platform.threads.pendingCount());
    EXPECT_EQ((Steps{"log 6 onPong() - web socket connection recovery timer is running! Interface status[true]",
                     "log 6 stopAndDeleteTimer(" + timer + ")", "timer stop " + timer, "timer delete " + timer,
                     "spawn " + std::to_string(platform.threads.spawned.back().id) + " "}),
              platform.steps.steps());
    expectWebSocketToken();
    runThreads();
    EXPECT_EQ(2u, socketsOpened());
    // The timer is forgotten: a further pong is a normal one.
    log().clear();
    service->onPong();
    EXPECT_TRUE(log().lines().empty());
}

TEST_F(WebSocketCallbacksTest, ALatePongWithoutInterfaceWaitsForIt) {
    openSession();
    interfaceChanges("down");
    const std::string timer = std::to_string(runningTimer(interfaceRecoveryMilliseconds));
    platform.steps.begin();
    service->onPong();
    EXPECT_EQ((Steps{"log 6 onPong() - web socket connection recovery timer is running! Interface status[false]",
                     "log 6 stopAndDeleteTimer(" + timer + ")", "timer stop " + timer, "timer delete " + timer,
                     "take m_recoverWebSocketSem", "give m_recoverWebSocketSem"}),
              platform.steps.steps());
    EXPECT_TRUE(service->getRecoverWebSocketConnectionWaitForLanInterfaceUp());
    EXPECT_EQ(0u, platform.threads.pendingCount());
}

} // namespace
