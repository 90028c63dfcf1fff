#include "ChannelTelephone.h"

namespace {

/// What a stop of the service does to its event channel.
class ChannelStopTest : public ChannelTelephone {
protected:
    void startWithoutChannel() {
        expectToken();
        expectExtension();
        expectPresence();
        expectGrants();
        expectWebSocketToken().answers(500);
        service->start();
        clearRecords();
    }
};

TEST_F(ChannelStopTest, LeadsToStateZeroFromEveryState) {
    for (int state = OrvaneService::WS_STATE_OPENED; state <= OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER;
         ++state) {
        service->setWebSocketState(static_cast<OrvaneService::WebSocketState>(state));
        service->stop();
        EXPECT_EQ(OrvaneService::WS_STATE_CLOSED, service->getWebSocketState()) << "from " << state;
    }
    EXPECT_EQ(4, platform.webSocket.stops);
}

TEST_F(ChannelStopTest, EndsEveryTimerOfTheChannel) {
    subscribeAll();
    service->onClose(0, 1006, "gone");
    service->onPongTimeout();
    service->stop();
    EXPECT_TRUE(timers().runningDurations().empty());
    for (const int duration :
         {idleMilliseconds, heartbeatMilliseconds, recoveryMilliseconds, restoreMilliseconds, renewalMilliseconds}) {
        EXPECT_TRUE(timers().withDuration(duration).empty()) << duration;
    }
}

TEST_F(ChannelStopTest, ForgetsTheHeldMessages) {
    openSession();
    service->setWebSocketState(OrvaneService::WS_STATE_RECOVERING);
    service->sendMessageOnWebsocket("held");
    service->stop();
    platform.webSocket.running = true;
    EXPECT_TRUE(flushed().empty());
}

TEST_F(ChannelStopTest, ForgetsTheSubscribedEvents) {
    subscribeAll();
    const std::string event = "/restapi/v1.0/account/~/extension/4711/presence/dnd";
    ASSERT_TRUE(service->isOvEventSubscribed(event, true));
    service->stop();
    EXPECT_FALSE(service->isOvEventSubscribed(event, true));
}

TEST_F(ChannelStopTest, ForgetsTheHeartbeatThatIsNotAnswered) {
    openSession();
    pass(idleMilliseconds);
    const std::string id = TestJson::messageId(lastFrame());
    service->stop();
    clearRecords();
    receive(R"([{"type":"Heartbeat","messageId":")" + id + R"("}])");
    EXPECT_FALSE(logged(2, "handleMsgHeartbeat() - messageId not found!"));
    EXPECT_FALSE(logged(6, "handleMsgHeartbeat() - startTimer"));
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(ChannelStopTest, ForgetsTheLimitOfHeldMessages) {
    openSession();
    service->stop();
    service->setWebSocketState(OrvaneService::WS_STATE_RECOVERING);
    platform.webSocket.running = true;
    for (const char* message : {"1", "2", "3", "4"}) {
        service->sendMessageOnWebsocket(message);
    }
    EXPECT_EQ(4u, flushed().size());
}

TEST_F(ChannelStopTest, ForgetsTheSessionsContextAndItsSequence) {
    openSession();
    receive(contextFrame("wsc-1", 7));
    service->stop();
    startWithoutChannel();
    EXPECT_EQ("", sessionContext());
    receive(contextFrame("wsc-2", 1));
    EXPECT_TRUE(logged(6, "getMsgTypeAndStoreWsc() - WebSocket Session Context: token[wsc-2], sequence[1]"));
}

TEST_F(ChannelStopTest, ForgetsThatThereWasAChannel) {
    openSession();
    service->stop();
    startWithoutChannel();

    interfaceChanges("down");

    EXPECT_TRUE(logged(6, "manageableDataChanged() - m_webSocketConnectionEstablished is not established."));
    EXPECT_FALSE(service->isRunning());
}

TEST_F(ChannelStopTest, ForgetsTheRecoveryTime) {
    openSession();
    service->stop();
    service->onPongTimeout();
    EXPECT_TRUE(logged(6, "onPongTimeout() - web socket connection recovery start. Start timer -45000 seconds"));
    service->stop();
}

TEST_F(ChannelStopTest, ForgetsWhatItsSocketStillBringsWhileItCloses) {
    logIn();
    platform.webSocket.whileStopping = [this] {
        platform.webSocket.running = true;
        service->onOpen(0);
        receive(connectionDetails(Details()));
        receive(reply(TestJson::messageId(lastFrame()),
                      subscription("sub-1", "2026-01-01T00:00:00Z", "Active", 1800, requestedFilters(lastFrame()))));
        receive(contextFrame("wsc-1", 7));
        service->setWebSocketState(OrvaneService::WS_STATE_RECOVERING);
        service->sendMessageOnWebsocket("held");
    };

    service->stop();
    platform.webSocket.whileStopping = nullptr;

    EXPECT_EQ(OrvaneService::WS_STATE_CLOSED, service->getWebSocketState());
    EXPECT_FALSE(service->isOvEventSubscribed("/restapi/v1.0/account/~/extension/4711/presence/dnd", true));
    EXPECT_TRUE(flushed().empty());
    service->setWebSocketState(OrvaneService::WS_STATE_RECOVERING);
    for (const char* message : {"1", "2", "3", "4"}) {
        service->sendMessageOnWebsocket(message);
    }
    EXPECT_EQ(4u, flushed().size());
    service->onPongTimeout();
    EXPECT_TRUE(logged(6, "onPongTimeout() - web socket connection recovery start. Start timer -45000 seconds"));
    startWithoutChannel();
    EXPECT_EQ("", sessionContext());
    receive(contextFrame("wsc-2", 1));
    EXPECT_EQ("wsc-2", sessionContext());
    interfaceChanges("down");
    EXPECT_TRUE(logged(6, "manageableDataChanged() - m_webSocketConnectionEstablished is not established."));
}

TEST_F(ChannelStopTest, StillAwaitsTheHeartbeatThatIsSentWhileItsSocketCloses) {
    logIn();
    std::string id;
    platform.webSocket.whileStopping = [&] {
        platform.webSocket.running = true;
        service->onOpen(0);
        receive(connectionDetails(Details()));
        timers().advance(idleMilliseconds);
        id = TestJson::messageId(lastFrame());
    };

    service->stop();
    platform.webSocket.whileStopping = nullptr;

    receive(R"([{"type":"Heartbeat","messageId":")" + id + R"("}])");
    EXPECT_TRUE(logged(6, "handleMsgHeartbeat() - startTimer"));
}

} // namespace
