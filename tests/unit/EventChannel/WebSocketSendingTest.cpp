#include "ChannelTelephone.h"

namespace {

using Frames = std::vector<std::string>;

class WebSocketSendingTest : public ChannelTelephone {
protected:
    void openReadySession(int recoveryBufferSize = 3) {
        openSession(Setup(), {"", recoveryBufferSize, 120, 60});
        clearRecords();
    }
    void buffer(const Frames& messages) {
        service->setWebSocketState(OrvaneService::WS_STATE_RECOVERING);
        for (const std::string& message : messages) {
            EXPECT_FALSE(service->sendMessageOnWebsocket(message));
        }
    }
};

TEST_F(WebSocketSendingTest, MessagesAreSentInStatesTwoAndFour) {
    openReadySession();
    EXPECT_TRUE(service->sendMessageOnWebsocket("ready"));
    service->setWebSocketState(OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER);
    EXPECT_TRUE(service->sendMessageOnWebsocket("flushing"));
    EXPECT_EQ((Frames{"ready", "flushing"}), frames());
    EXPECT_TRUE(logged(6, "sendMessageOnWebsocket() m_webSocketState[2]"));
    EXPECT_TRUE(logged(6, "sendMessageOnWebsocket() m_webSocketState[4]"));
}

TEST_F(WebSocketSendingTest, MessagesAreLostInStatesZeroAndOne) {
    openReadySession();
    for (const auto state : {OrvaneService::WS_STATE_CLOSED, OrvaneService::WS_STATE_OPENED}) {
        service->setWebSocketState(state);
        EXPECT_FALSE(service->sendMessageOnWebsocket("lost"));
    }
    EXPECT_TRUE(frames().empty());
    EXPECT_TRUE(flushed().empty());
}

TEST_F(WebSocketSendingTest, WithoutASocketAMessageIsNotSent) {
    openReadySession();
    platform.webSocket.running = false;
    EXPECT_FALSE(service->sendMessageOnWebsocket("lost"));
    EXPECT_TRUE(frames().empty());
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(WebSocketSendingTest, SendingCountsAsActivity) {
    openReadySession();
    const int idleTimer = runningTimer(idleMilliseconds);
    EXPECT_TRUE(service->sendMessageOnWebsocket("text"));
    EXPECT_EQ((Frames{"reset " + std::to_string(idleTimer)}), timers().calls);
}

TEST_F(WebSocketSendingTest, AnIdleTimerThatDoesNotRunIsLeftAlone) {
    openReadySession();
    timers().stopTimer(runningTimer(idleMilliseconds));
    timers().calls.clear();
    EXPECT_TRUE(service->sendMessageOnWebsocket("text"));
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(WebSocketSendingTest, WithoutTheFrameworksContextAMessageIsSentAllTheSame) {
    service->setWebSocketState(OrvaneService::WS_STATE_READY);
    platform.webSocket.running = true;
    EXPECT_TRUE(service->sendMessageOnWebsocket("text"));
    EXPECT_EQ((Frames{"text"}), frames());
}

TEST_F(WebSocketSendingTest, InStateThreeMessagesWaitAndCountAsNotSent) {
    openReadySession();
    buffer({"first", "second"});
    EXPECT_TRUE(frames().empty());
    EXPECT_TRUE(logged(4, "sendMessageOnWebsocket() - message is not sent! Web socket is in the state running! Number "
                          "messages in the recovery buffer 1"));
    EXPECT_TRUE(logged(4, "sendMessageOnWebsocket() - message is not sent! Web socket is in the state running! Number "
                          "messages in the recovery buffer 2"));
    EXPECT_EQ((Frames{"first", "second"}), flushed());
    EXPECT_TRUE(flushed().empty());
}

TEST_F(WebSocketSendingTest, TheFourthMessagePushesTheOldestOutOfABufferOfThree) {
    openReadySession(3);
    buffer({"1", "2", "3", "4"});
    EXPECT_EQ(2, log().count(4, "sendMessageOnWebsocket() - message is not sent! Web socket is in the state running! "
                                "Number messages in the recovery buffer 3"));
    EXPECT_EQ((Frames{"2", "3", "4"}), flushed());
}

TEST_F(WebSocketSendingTest, ABufferOfSizeOneKeepsTheNewest) {
    openReadySession(1);
    buffer({"1", "2", "3"});
    EXPECT_EQ((Frames{"3"}), flushed());
}

TEST_F(WebSocketSendingTest, AnEmptyBufferHasNothingToDropEvenWhenItsSizeIsZero) {
    // Only a buffer of exactly that size drops its oldest entry, so this one grows without bound.
    openReadySession(0);
    buffer({"1", "2"});
    EXPECT_EQ((Frames{"1", "2"}), flushed());
}

TEST_F(WebSocketSendingTest, ANegativeBufferSizeNeverDropsAnything) {
    openReadySession(-1);
    buffer({"1", "2"});
    EXPECT_EQ((Frames{"1", "2"}), flushed());
}

TEST_F(WebSocketSendingTest, AnEntryThatCannotBeSentIsRemovedAllTheSame) {
    openReadySession();
    buffer({"1", "2"});
    platform.webSocket.running = false;
    EXPECT_TRUE(flushed().empty());
    platform.webSocket.running = true;
    EXPECT_TRUE(flushed().empty());
}

TEST_F(WebSocketSendingTest, AnEmptyBufferIsFlushedWithoutATrace) {
    openReadySession();
    service->sendRecoveryBuffer();
    EXPECT_TRUE(log().lines().empty());
}

TEST_F(WebSocketSendingTest, AConnectionThatFallsBackIntoDoubtWhileTheBufferIsSentDoesNotLoop) {
    openReadySession(5);
    buffer({"1", "2", "3"});
    platform.webSocket.whileSending = [this] {
        platform.webSocket.whileSending = nullptr;
        service->setWebSocketState(OrvaneService::WS_STATE_RECOVERING);
    };
    EXPECT_EQ((Frames{"1"}), flushed());
    // "1" was both sent and put back, as the state was 3 when it was read anew; the others wait for the next flush.
    EXPECT_EQ((Frames{"1", "2", "3"}), flushed());
}

TEST_F(WebSocketSendingTest, AStopWhileTheBufferIsSentEndsTheFlush) {
    openReadySession();
    buffer({"1", "2", "3"});
    platform.webSocket.whileSending = [this] { service->stop(); };
    EXPECT_EQ((Frames{"1"}), flushed());
}

TEST_F(WebSocketSendingTest, EveryChangeOfTheStateIsLogged) {
    service->setWebSocketState(OrvaneService::WS_STATE_RECOVERING);
    service->setWebSocketState(OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER);
    EXPECT_TRUE(logged(5, "setWebSocketState() change the web socket state from 0 to 3"));
    EXPECT_TRUE(logged(5, "setWebSocketState() change the web socket state from 3 to 4"));
    EXPECT_EQ(OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER, service->getWebSocketState());
}

TEST_F(WebSocketSendingTest, ANewServiceHasAClosedSocket) {
    EXPECT_EQ(OrvaneService::WS_STATE_CLOSED, service->getWebSocketState());
    EXPECT_FALSE(service->getRecoverWebSocketConnection());
    EXPECT_FALSE(service->getRecoverWebSocketConnectionWaitForLanInterfaceUp());
    EXPECT_EQ("", service->getSubscriptionId());
}

} // namespace
