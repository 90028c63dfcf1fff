#include "ChannelTelephone.h"

namespace {

using Calls = std::vector<std::string>;

class SessionTest : public ChannelTelephone {
protected:
    /// A session that is about to hear "ConnectionDetails"; two messages wait in the buffer.
    void openSocketWithBuffer() {
        openSession();
        service->setWebSocketState(OrvaneService::WS_STATE_RECOVERING);
        service->sendMessageOnWebsocket("first");
        service->sendMessageOnWebsocket("second");
        service->onOpen(0);
        clearRecords();
    }
    bool wasSubscribed() {
        for (const std::string& frame : frames()) {
            if (frame.find("eventFilters") != std::string::npos) {
                return true;
            }
        }
        return false;
    }
    static std::string heartbeatReply(const std::string& id) {
        return R"([{"type":"Heartbeat","messageId":")" + id + R"("}])";
    }
};

TEST_F(SessionTest, ConnectionDetailsAreLoggedAndMakeTheChannelReady) {
    logIn();
    service->onOpen(0);
    receive(connectionDetails(Details()));
    EXPECT_TRUE(logged(4, "handleMsgConnectioDetails()"));
    EXPECT_TRUE(logged(5, "handleMsgConnectioDetails() - creationDate[2026-01-01T00:00:00Z], "
                          "maxConnectionsPerSession[5], recoveryBufferSize[3],recoveryTimeout[120], idleTimeout[60], "
                          "absoluteTimeout[86400]"));
    EXPECT_TRUE(logged(6, "handleMsgConnectioDetails() - m_webSocketState = 1"));
    EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
}

TEST_F(SessionTest, ConnectionDetailsMakeTheChannelReadyFromEveryState) {
    openSession();
    for (int state = OrvaneService::WS_STATE_OPENED; state <= OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER;
         ++state) {
        for (const std::string recoveryState : {"", "Successful", "Failed", "Odd"}) {
            service->setWebSocketState(static_cast<OrvaneService::WebSocketState>(state));
            receive(connectionDetails({recoveryState, 3, 120, 60}));
            EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState()) << state << recoveryState;
        }
    }
}

TEST_F(SessionTest, ConnectionDetailsWithoutDataChangeNothing) {
    logIn();
    service->onOpen(0);
    receive(R"([{"type":"ConnectionDetails","messageId":"1"}])");
    EXPECT_EQ(OrvaneService::WS_STATE_OPENED, service->getWebSocketState());
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(SessionTest, TheResultTellsWhetherTheDetailsWentThrough) {
    openSession();
    const TestJson::Value frame = TestJson::parse(connectionDetails(Details()));
    json_t* details = json_array_get(frame.get(), 1);
    EXPECT_TRUE(service->handleMsgConnectionDetails(nullptr, details));
    json_object_del(details, "idleTimeout");
    EXPECT_FALSE(service->handleMsgConnectionDetails(nullptr, details));
    EXPECT_FALSE(service->handleMsgConnectionDetails(nullptr, nullptr));
}

TEST_F(SessionTest, AMissingKeyLeavesEverythingAsItWas) {
    openSession(Setup(), {"", 3, 120, 60});
    const std::string idleTimer = std::to_string(runningTimer(idleMilliseconds));
    service->setRecoverWebSocketConnection(true);
    service->setWebSocketState(OrvaneService::WS_STATE_OPENED);
    for (const std::string key : {"creationTime", "maxConnectionsPerSession", "recoveryBufferSize", "recoveryTimeout",
                                  "idleTimeout", "absoluteTimeout"}) {
        std::string frame = connectionDetails({"", 5, 300, 200});
        frame.replace(frame.find("\"" + key + "\""), key.size() + 2, "\"other\"");
        clearRecords();
        receive(frame);
        EXPECT_EQ(OrvaneService::WS_STATE_OPENED, service->getWebSocketState()) << key;
        EXPECT_TRUE(logged(4, "handleMsgConnectioDetails()")) << key;
        EXPECT_FALSE(log().contains("creationDate")) << key;
        // The frame itself counts as activity.
        EXPECT_EQ((Calls{"reset " + idleTimer}), timers().calls) << key;
        EXPECT_TRUE(service->getRecoverWebSocketConnection()) << key;
    }
    // The limits of the session that stood before are still in force.
    service->setRecoverWebSocketConnection(false);
    service->onPongTimeout();
    EXPECT_TRUE(logged(6, "onPongTimeout() - web socket connection recovery start. Start timer -44880 seconds"));
    for (const char* message : {"1", "2", "3", "4"}) {
        service->sendMessageOnWebsocket(message);
    }
    EXPECT_EQ((Calls{"2", "3", "4"}), flushed());
}

TEST_F(SessionTest, AKeyOfAnotherTypeCountsAsMissing) {
    service->setWebSocketState(OrvaneService::WS_STATE_OPENED);
    std::string frame = connectionDetails(Details());
    frame.replace(frame.find(":60"), 3, ":\"60\"");
    receive(frame);
    EXPECT_EQ(OrvaneService::WS_STATE_OPENED, service->getWebSocketState());
}

TEST_F(SessionTest, TheTimersAreMadeOfTheIdleTime) {
    logIn();
    service->onOpen(0);
    timers().calls.clear();
    receive(connectionDetails(Details()));
    const int idleTimer = runningTimer(54000);
    ASSERT_EQ(1u, timers().withDuration(600).size());
    const int heartbeatTimer = timers().withDuration(600).front();
    EXPECT_FALSE(timers().isTimerRunning(heartbeatTimer));
    EXPECT_TRUE(logged(5, "handleMsgConnectioDetails() - start the idle timer[0]"));
    EXPECT_TRUE(logged(5, "handleMsgConnectioDetails() - create and run web socket idle timer[" +
                              std::to_string(idleTimer) + "] 54000 ms!, heartbeatDelay[" +
                              std::to_string(heartbeatTimer) + "] 600 ms"));
}

TEST_F(SessionTest, FurtherDetailsReplaceTheTimers) {
    openSession();
    const int idleTimer = runningTimer(idleMilliseconds);
    const int heartbeatTimer = timers().withDuration(heartbeatMilliseconds).front();
    log().clear();
    receive(connectionDetails({"", 3, 120, 200}));
    EXPECT_TRUE(logged(5, "handleMsgConnectioDetails() - start the idle timer[" + std::to_string(idleTimer) + "]"));
    EXPECT_FALSE(timers().exists(idleTimer));
    EXPECT_FALSE(timers().exists(heartbeatTimer));
    EXPECT_TRUE(isTimerRunning(180000));
    EXPECT_EQ(1u, timers().withDuration(2000).size());
}

TEST_F(SessionTest, AnIdleTimeOfZeroOrLessLeavesTheOldTimers) {
    openSession();
    const int idleTimer = runningTimer(idleMilliseconds);
    for (const int idleTimeout : {0, -1}) {
        clearRecords();
        receive(connectionDetails({"Successful", 3, 120, idleTimeout}));
        EXPECT_EQ(idleTimer, runningTimer(idleMilliseconds)) << idleTimeout;
        EXPECT_EQ((Calls{"reset " + std::to_string(idleTimer)}), timers().calls) << idleTimeout;
        EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
    }
}

TEST_F(SessionTest, AnIdleTimeBeyondWhatATimerTakesIsClamped) {
    logIn();
    service->onOpen(0);
    receive(connectionDetails({"", 3, 120, 2147483647}));
    EXPECT_TRUE(isTimerRunning(2147483647));
}

TEST_F(SessionTest, WithoutTheFrameworksContextTheChannelBecomesReadyWithoutTimers) {
    service->setWebSocketState(OrvaneService::WS_STATE_OPENED);
    receive(connectionDetails({"Successful", 3, 120, 60}));
    EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(SessionTest, ASuccessfulRecoveryFlushesTheBufferAndKeepsTheSubscription) {
    openSocketWithBuffer();
    receive(connectionDetails({"Successful", 3, 120, 60}));
    EXPECT_TRUE(logged(4, "handleMsgConnectioDetails() - recovery state is successful"));
    EXPECT_TRUE(logged(6, "handleMsgConnectioDetails() - send recovery buffer"));
    EXPECT_TRUE(logged(5, "setWebSocketState() change the web socket state from 1 to 4"));
    EXPECT_TRUE(logged(5, "setWebSocketState() change the web socket state from 4 to 2"));
    EXPECT_EQ((Calls{"first", "second"}), frames());
    EXPECT_TRUE(flushed().empty());
}

TEST_F(SessionTest, ASuccessfulRecoveryWithAnEmptyBufferPassesThroughStateFourToo) {
    openSession();
    log().clear();
    receive(connectionDetails({"Successful", 3, 120, 60}));
    EXPECT_TRUE(logged(5, "setWebSocketState() change the web socket state from 2 to 4"));
    EXPECT_TRUE(logged(5, "setWebSocketState() change the web socket state from 4 to 2"));
}

TEST_F(SessionTest, AFailedRecoveryEmptiesTheBufferAndSubscribesAnew) {
    openSocketWithBuffer();
    receive(connectionDetails({"Failed", 3, 120, 60}));
    EXPECT_TRUE(logged(4, "handleMsgConnectioDetails() - recovery state is failed"));
    EXPECT_TRUE(logged(6, "handleMsgConnectioDetails() - send OV Events subscription."));
    EXPECT_FALSE(logged(6, "handleMsgConnectioDetails() - send recovery buffer"));
    EXPECT_EQ(1u, frames().size());
    EXPECT_TRUE(wasSubscribed());
    EXPECT_TRUE(flushed().empty());
}

TEST_F(SessionTest, AnUnknownRecoveryStateEmptiesTheBufferAndDoesNothingElse) {
    openSocketWithBuffer();
    receive(connectionDetails({"successful", 3, 120, 60}));
    EXPECT_TRUE(logged(3, "handleMsgConnectioDetails() - recovery state is unknown 'successful'"));
    EXPECT_TRUE(frames().empty());
    EXPECT_TRUE(flushed().empty());
}

TEST_F(SessionTest, AFreshSessionEmptiesTheBufferAndSubscribesAnew) {
    openSocketWithBuffer();
    receive(connectionDetails(Details()));
    EXPECT_TRUE(logged(4, "handleMsgConnectioDetails() - new WebSocket connection was opened!"));
    EXPECT_EQ(1u, frames().size());
    EXPECT_TRUE(wasSubscribed());
    EXPECT_TRUE(flushed().empty());
}

TEST_F(SessionTest, WithoutRecoveryStateDuringARecoveryTheBufferIsKeptAndNothingIsSent) {
    openSocketWithBuffer();
    service->setRecoverWebSocketConnection(true);
    receive(connectionDetails(Details()));
    EXPECT_TRUE(frames().empty());
    EXPECT_EQ("", log().text(3) + log().text(2));
    EXPECT_FALSE(log().contains("new WebSocket connection was opened!"));
    EXPECT_EQ((Calls{"first", "second"}), flushed());
}

TEST_F(SessionTest, TheTableHoldsDuringARecoveryToo) {
    for (const std::string recoveryState : {"Successful", "Failed", "Odd"}) {
        service->setRecoverWebSocketConnection(true);
        log().clear();
        receive(connectionDetails({recoveryState, 3, 120, 60}));
        EXPECT_TRUE(log().contains("handleMsgConnectioDetails() - recovery state is")) << recoveryState;
        EXPECT_FALSE(service->getRecoverWebSocketConnection()) << recoveryState;
    }
}

TEST_F(SessionTest, ARecoveryStateThatIsNoTextCountsAsAbsent) {
    openSocketWithBuffer();
    std::string frame = connectionDetails(Details());
    frame.insert(frame.size() - 2, R"(,"recoveryState":1)");
    receive(frame);
    EXPECT_TRUE(logged(4, "handleMsgConnectioDetails() - new WebSocket connection was opened!"));
}

TEST_F(SessionTest, DetailsEndTheRecovery) {
    openSession();
    service->setRecoverWebSocketConnection(true);
    receive(connectionDetails(Details()));
    EXPECT_FALSE(service->getRecoverWebSocketConnection());
}

TEST_F(SessionTest, ANewSubscriptionBeginsWithAnEmptyListOfEvents) {
    subscribeAll({true, true, {}, {}});
    ASSERT_TRUE(service->isOvEventSubscribed("/restapi/v1.0/account/~/extension/4711/presence/dnd", true));
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, "false");
    platform.threads.runAll();
    receive(connectionDetails({"Failed", 3, 120, 60}));
    EXPECT_FALSE(service->isOvEventSubscribed("/restapi/v1.0/account/~/extension/4711/presence/dnd", true));
    EXPECT_TRUE(service->isOvEventSubscribed(
        "/restapi/v1.0/account/~/extension/4711/presence?detailedTelephonyState=true", true));
}

TEST_F(SessionTest, AfterTheIdleTimeAHeartbeatIsSent) {
    openSession();
    clearRecords();
    const int idleTimer = runningTimer(idleMilliseconds);
    pass(idleMilliseconds);
    EXPECT_TRUE(
        logged(6, "timerEvent(" + std::to_string(idleTimer) + ") - web socket idleTimer expired, state[CONNECTED]"));
    ASSERT_EQ(1u, frames().size());
    EXPECT_TRUE(TestJson::frameEqual(lastFrame(), R"([{"type":"Heartbeat","messageId":"ID"}])"));
    EXPECT_EQ(36u, TestJson::messageId(lastFrame()).size());
    EXPECT_TRUE(logged(6, "sendHeartbeatMsg() - start m_webSocketHeartbeatTimer"));
    EXPECT_TRUE(isTimerRunning(heartbeatMilliseconds));
    EXPECT_FALSE(isTimerRunning(idleMilliseconds));
}

TEST_F(SessionTest, AnAnsweredHeartbeatStartsTheIdleTimeAnew) {
    openSession();
    pass(idleMilliseconds);
    log().clear();
    receive(heartbeatReply(TestJson::messageId(lastFrame())));
    EXPECT_TRUE(logged(6, "handleMsgHeartbeat"));
    EXPECT_TRUE(logged(6, "handleMsgHeartbeat() - startTimer"));
    EXPECT_FALSE(isTimerRunning(heartbeatMilliseconds));
    EXPECT_TRUE(isTimerRunning(idleMilliseconds));
    frames().clear();
    pass(idleMilliseconds);
    EXPECT_EQ(1u, frames().size());
}

TEST_F(SessionTest, AnUnansweredHeartbeatIsLoggedAndNothingElse) {
    openSession();
    pass(idleMilliseconds);
    const std::string id = TestJson::messageId(lastFrame());
    const int timer = runningTimer(heartbeatMilliseconds);
    clearRecords();
    pass(heartbeatMilliseconds);
    EXPECT_EQ("timerEvent(" + std::to_string(timer) +
                  ") - web socket hearbeatTimer expired! Web socket connection are closing by server! "
                  "state[CONNECTED]\n",
              log().text(2));
    EXPECT_TRUE(timers().calls.empty());
    EXPECT_TRUE(timers().exists(timer));
    EXPECT_EQ(1u, socketsOpened());
    // The late answer is recognised, but starts nothing.
    receive(heartbeatReply(id));
    EXPECT_FALSE(logged(6, "handleMsgHeartbeat() - startTimer"));
    EXPECT_FALSE(isTimerRunning(idleMilliseconds));
}

TEST_F(SessionTest, AnAnswerWithoutAHeartbeatPendingTouchesNoTimer) {
    openSession();
    ASSERT_TRUE(service->storeUuidMessage("known"));
    const std::string idleTimer = std::to_string(runningTimer(idleMilliseconds));
    timers().calls.clear();
    receive(heartbeatReply("known"));
    // The frame itself counts as activity.
    EXPECT_EQ((Calls{"reset " + idleTimer}), timers().calls);
}

TEST_F(SessionTest, AHeartbeatIsAnsweredOnce) {
    openSession();
    pass(idleMilliseconds);
    receive(heartbeatReply(TestJson::messageId(lastFrame())));
    ASSERT_TRUE(service->storeUuidMessage("known"));
    timers().stopTimer(runningTimer(idleMilliseconds));
    clearRecords();
    receive(heartbeatReply("known"));
    EXPECT_FALSE(logged(6, "handleMsgHeartbeat() - startTimer"));
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(SessionTest, AnAnswerWhileTheIdleTimerRunsDoesNotStartIt) {
    openSession();
    pass(idleMilliseconds);
    const std::string id = TestJson::messageId(lastFrame());
    timers().startTimer(timers().withDuration(idleMilliseconds).front());
    log().clear();
    receive(heartbeatReply(id));
    EXPECT_FALSE(logged(6, "handleMsgHeartbeat() - startTimer"));
    EXPECT_TRUE(isTimerRunning(idleMilliseconds));
}

TEST_F(SessionTest, AnUnknownHeartbeatIsRefused) {
    openSession();
    receive(heartbeatReply("unknown"));
    EXPECT_TRUE(logged(2, "findUuidMessageAndDeleteIt() uuid[unknown] not found!"));
    EXPECT_TRUE(logged(2, "handleMsgHeartbeat() - messageId not found!"));
    const TestJson::Value metadata = TestJson::parse(R"({"type":"Heartbeat","messageId":"unknown"})");
    EXPECT_FALSE(service->handleMsgHeartbeat(metadata.get(), nullptr));
}

TEST_F(SessionTest, AHeartbeatWithoutMetadataOrIdIsRefused) {
    EXPECT_FALSE(service->handleMsgHeartbeat(nullptr, nullptr));
    const TestJson::Value metadata = TestJson::parse(R"({"type":"Heartbeat"})");
    EXPECT_FALSE(service->handleMsgHeartbeat(metadata.get(), nullptr));
    EXPECT_EQ(2, log().count(2, "handleMsgHeartbeat() - message parse failed!"));
}

TEST_F(SessionTest, TheResultOfAHeartbeatIsFalseInEveryCase) {
    openSession();
    pass(idleMilliseconds);
    const TestJson::Value metadata =
        TestJson::parse(R"({"type":"Heartbeat","messageId":")" + TestJson::messageId(lastFrame()) + R"("})");
    EXPECT_FALSE(service->handleMsgHeartbeat(metadata.get(), nullptr));
}

TEST_F(SessionTest, AHeartbeatThatCannotBeSentEndsTheCycle) {
    openSession();
    clearRecords();
    platform.webSocket.running = false;
    pass(idleMilliseconds);
    EXPECT_FALSE(isTimerRunning(idleMilliseconds));
    EXPECT_FALSE(isTimerRunning(heartbeatMilliseconds));
    EXPECT_FALSE(logged(6, "sendHeartbeatMsg() - start m_webSocketHeartbeatTimer"));
    // It goes on with the next details.
    receive(connectionDetails({"Successful", 3, 120, 60}));
    EXPECT_TRUE(isTimerRunning(idleMilliseconds));
}

TEST_F(SessionTest, AHeartbeatInStateThreeWaitsInTheBuffer) {
    openSession();
    clearRecords();
    service->setWebSocketState(OrvaneService::WS_STATE_RECOVERING);
    EXPECT_FALSE(service->sendHeartbeatMsg());
    EXPECT_TRUE(timers().calls.empty());
    const std::vector<std::string> waiting = flushed();
    ASSERT_EQ(1u, waiting.size());
    EXPECT_TRUE(TestJson::frameEqual(waiting[0], R"([{"type":"Heartbeat","messageId":"ID"}])"));
}

TEST_F(SessionTest, TrafficPutsTheHeartbeatOff) {
    openSession();
    clearRecords();
    for (int count = 0; count < 5; ++count) {
        pass(idleMilliseconds - 1);
        receive(R"([{"type":"Error","messageId":"1"}])");
    }
    EXPECT_TRUE(frames().empty());
    pass(idleMilliseconds);
    EXPECT_EQ(1u, frames().size());
}

} // namespace
