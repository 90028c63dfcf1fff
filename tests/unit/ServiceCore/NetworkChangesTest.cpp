#include "StatefulTelephone.h"

#include "data/ManageableData.h"

#include <climits>

namespace {

/// Interface, server type and the other items that the store reports.
class NetworkChanges : public StatefulTelephone {
protected:
    static constexpr int recoveryMilliseconds = 120000;
    static constexpr int restartMilliseconds = 1000;

    /// Logged in, with a session on the channel.
    void established(int recoveryTimeoutSeconds = 120) {
        withCallLog();
        connected();
        openChannel(60, recoveryTimeoutSeconds);
        ASSERT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
        forgetRecords();
    }
    std::vector<int> runningTimers(int milliseconds) const { return platform.context.running(milliseconds); }
    bool recoveryWasAsked() const { return platform.log.contains("asyncRecoverWebSocketConnection()"); }
    bool gatesAreOpen() {
        platform.log.clear();
        std::string response;
        HttpClientIfc::Headers headers;
        HttpClientIfc::eStatusCode status = HttpClientIfc::STATUS_NONE;
        platform.network.connectFails = true;
        service->connectionHandler("/x", "", HttpClientIfc::HTTP_GET, response, headers, headers, status, "", 0);
        platform.network.connectFails = false;
        return !platform.log.contains("connectionHandler() m_interface_status");
    }
};

} // namespace

// ---- The interface goes down -------------------------------------------------------------------------------------

TEST_F(NetworkChanges, AChangeIsLoggedWithItsValue) {
    connected();

    interfaceChanges("down");

    EXPECT_TRUE(logged(4, "manageableDataChanged() id[" + PldsTags::INTERFACE_STATUS + "] itemVal[down]"));
}

TEST_F(NetworkChanges, WithoutAnEstablishedChannelTheServiceStops) {
    connected();
    forgetRecords();

    interfaceChanges("down");

    EXPECT_TRUE(logged(6, "manageableDataChanged() - m_webSocketConnectionEstablished is not established."));
    EXPECT_TRUE(logged(6, "manageableDataChanged() - stop"));
    EXPECT_TRUE(logged(4, "stop()"));
    EXPECT_EQ(STOP_ON_NETWORK_DOWN, state());
}

struct DownValue {
    const char* title;
    const char* value;
};
class AnyOtherValue : public StatefulTelephone, public testing::WithParamInterface<DownValue> {};

TEST_P(AnyOtherValue, CountsAsDown) {
    connected();

    interfaceChanges(GetParam().value);

    EXPECT_EQ(STOP_ON_NETWORK_DOWN, state());
}

INSTANTIATE_TEST_SUITE_P(Interface, AnyOtherValue,
                         testing::Values(DownValue{"Empty", ""}, DownValue{"UpperCase", "UP"},
                                         DownValue{"WithBlank", "up "}),
                         [](const testing::TestParamInfo<DownValue>& info) { return std::string(info.param.title); });

TEST_F(NetworkChanges, WithAnEstablishedChannelARecoveryTimerStarts) {
    established();

    interfaceChanges("down");

    EXPECT_TRUE(logged(6, "manageableDataChanged() - m_webSocketConnectionEstablished is established."));
    EXPECT_TRUE(logged(6, "manageableDataChanged() - start web socket connection recovery timer[0]! Timeout is 120 "
                          "seconds"));
    EXPECT_EQ(OrvaneService::WS_STATE_RECOVERING, service->getWebSocketState());
    EXPECT_EQ(1u, runningTimers(recoveryMilliseconds).size());
    EXPECT_EQ(CONNECTED, state());
}

TEST_F(NetworkChanges, WhileTheInterfaceIsDownMessagesWait) {
    established();
    interfaceChanges("down");
    const std::size_t frames = platform.webSocket.frames.size();

    EXPECT_FALSE(service->sendMessageOnWebsocket("[\"kept back\"]"));

    EXPECT_EQ(frames, platform.webSocket.frames.size());
}

TEST_F(NetworkChanges, ASecondDownMakesANewTimerAndForgetsTheFirst) {
    established();
    interfaceChanges("down");
    const int first = runningTimers(recoveryMilliseconds).at(0);

    interfaceChanges("down");

    ASSERT_EQ(2u, runningTimers(recoveryMilliseconds).size());
    service->timerEvent(first);
    EXPECT_FALSE(platform.log.contains("web socket recovery timer expired")) << "nobody knows the first one";
    EXPECT_TRUE(logged(6, "manageableDataChanged() - start web socket connection recovery timer[" +
                              std::to_string(first) + "]! Timeout is 120 seconds"));
}

TEST_F(NetworkChanges, AnEndlessRecoveryTimeIsClampedToWhatATimerTakes) {
    established(INT_MAX);

    interfaceChanges("down");

    EXPECT_EQ(1u, runningTimers(INT_MAX).size());
}

TEST_F(NetworkChanges, AServiceThatIsNotRunningOnlyClosesTheGate) {
    configuredOnInit();
    forgetRecords();

    interfaceChanges("down");

    EXPECT_EQ(1u, platform.log.lines().size());
    EXPECT_EQ(CONFIGURED_ON_INIT, state());
    EXPECT_FALSE(gatesAreOpen());
}

// ---- The interface comes up --------------------------------------------------------------------------------------

TEST_F(NetworkChanges, AfterAStopTheReturnLogsIn) {
    stoppedOnNetworkDown();
    forgetRecords();

    interfaceChanges("up");

    EXPECT_TRUE(logged(6, "manageableDataChanged() - state CONFIGURED_ON_NETWORK_UP"));
    EXPECT_TRUE(logged(6, "manageableDataChanged() - Login"));
    EXPECT_TRUE(loginWasAdmitted());
    EXPECT_TRUE(gatesAreOpen());
}

TEST_F(NetworkChanges, BeforeTheTimersEndTheReturnRecoversTheChannel) {
    established();
    interfaceChanges("down");
    passSeconds(119);

    interfaceChanges("up");

    EXPECT_TRUE(logged(6, "manageableDataChanged() - state CONNECTED"));
    EXPECT_TRUE(logged(6, "manageableDataChanged() - recover web socket connection"));
    EXPECT_FALSE(logged(6, "manageableDataChanged() - Login"));
    EXPECT_TRUE(runningTimers(recoveryMilliseconds).empty());
    EXPECT_TRUE(recoveryWasAsked());
    EXPECT_EQ(CONNECTED, state());
}

TEST_F(NetworkChanges, AfterTheTimersEndTheReturnRecoversTheChannelToo) {
    established();
    interfaceChanges("down");
    passSeconds(120);
    EXPECT_TRUE(service->getRecoverWebSocketConnectionWaitForLanInterfaceUp());
    EXPECT_FALSE(recoveryWasAsked());

    interfaceChanges("up");

    EXPECT_FALSE(service->getRecoverWebSocketConnectionWaitForLanInterfaceUp());
    EXPECT_TRUE(logged(6, "manageableDataChanged() - recover web socket connection"));
    EXPECT_TRUE(recoveryWasAsked());
}

TEST_F(NetworkChanges, AnUpWithoutADownBeforeAsksForALoginThatIsIgnored) {
    connected();
    forgetRecords();

    interfaceChanges("up");

    EXPECT_TRUE(logged(6, "manageableDataChanged() - Login"));
    EXPECT_TRUE(logged(5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] m_state[CONNECTED]"));
}

// ---- The server type ---------------------------------------------------------------------------------------------

TEST_F(NetworkChanges, TheSameServerTypeDoesNothing) {
    connected();
    forgetRecords();

    serverTypeChanges("7");

    ASSERT_EQ(1u, platform.log.lines().size());
    EXPECT_TRUE(logged(4, "manageableDataChanged() id[" + PldsTags::SERVER_TYPE + "] itemVal[7]"));
}

TEST_F(NetworkChanges, AllOtherServerTypesAreOne) {
    connected();
    serverTypeChanges("8");
    forgetRecords();

    serverTypeChanges("");

    EXPECT_EQ(1u, platform.log.lines().size());
    EXPECT_FALSE(gatesAreOpen());
}

TEST_F(NetworkChanges, ALeftServerTypeStopsTheServiceASecondLater) {
    connected();
    forgetRecords();

    serverTypeChanges("8");

    EXPECT_TRUE(logged(6, "manageableDataChanged() id[" + PldsTags::SERVER_TYPE +
                              "] changed, old value[true], new value[false]"));
    EXPECT_EQ(CONNECTED, state());
    ASSERT_EQ(1u, runningTimers(restartMilliseconds).size());
    pass(999);
    EXPECT_EQ(CONNECTED, state());
    pass(1);
    EXPECT_EQ(STOP, state());
    EXPECT_TRUE(platform.log.contains("restart timer expired, state[CONNECTED]"));
    EXPECT_TRUE(logged(2, "start() - cannot launch start(). m_interface_status[true], m_ov_server_type[false], "
                          "m_state[STOP]"));
}

TEST_F(NetworkChanges, AQuickReturnOfTheServerTypeRestartsTheService) {
    connected();
    serverTypeChanges("8");
    pass(500);
    serverTypeChanges("7");
    expectLogin();

    pass(500);

    EXPECT_EQ(CONNECTED, state());
    EXPECT_TRUE(logged(4, "stop()"));
}

TEST_F(NetworkChanges, EachLeavingStartsTheSecondAnew) {
    connected();
    serverTypeChanges("8");
    pass(800);
    serverTypeChanges("7");
    serverTypeChanges("8");

    pass(800);
    EXPECT_EQ(CONNECTED, state());
    pass(200);
    EXPECT_EQ(STOP, state());
}

TEST_F(NetworkChanges, TheReturnOfTheServerTypeIsIgnoredInStop) {
    connected();
    serverTypeChanges("8");
    passSeconds(1);
    forgetRecords();

    serverTypeChanges("7");

    EXPECT_TRUE(logged(6, "manageableDataChanged() id[" + PldsTags::SERVER_TYPE +
                              "] changed, old value[false], new value[true]"));
    EXPECT_TRUE(logged(5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] m_state[STOP]"));
    EXPECT_EQ(STOP, state());
}

TEST_F(NetworkChanges, TheServerTypeOpensTheGateOfAConfiguredService) {
    platform.store.set(PldsTags::SERVER_TYPE, "8");
    configuredOnInit();
    EXPECT_TRUE(logged(5, "asyncLogin() ignored. m_ov_server_type[false] m_interface_status[true] "
                          "m_state[CONFIGURED_ON_INIT]"));

    serverTypeChanges("7");

    EXPECT_TRUE(loginWasAdmitted());
}

TEST_F(NetworkChanges, AServiceThatIsNotRunningIsNotRestarted) {
    stopped();

    serverTypeChanges("8");

    EXPECT_TRUE(runningTimers(restartMilliseconds).empty());
}

// ---- Other items -------------------------------------------------------------------------------------------------

TEST_F(NetworkChanges, OtherItemsArePassedOver) {
    connected();
    forgetRecords();

    platform.store.change(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"x\"");
    ManageableData data;
    data.populate("unknown-item", "unknown-item", "v");
    const std::string likeAKey = "x-" + PldsTags::FUNCTION_KEY_ID + "100";
    data.populate(likeAKey, likeAKey, "59");
    service->manageableDataChanged(data);

    EXPECT_EQ(3u, platform.log.lines().size());
    EXPECT_EQ(0u, service->getFpkPresenceMapSize());
    EXPECT_TRUE(logged(4, "manageableDataChanged() id[unknown-item] itemVal[v]"));
    EXPECT_FALSE(service->isMissedCallViewed("x"));
}

TEST_F(NetworkChanges, SeveralItemsAreTakenInTheirOrder) {
    connected();
    ManageableData data;
    data.populate(PldsTags::INTERFACE_STATUS, PldsTags::INTERFACE_STATUS, "down");
    data.populate("unknown-item", "unknown-item", "v");
    data.populate(PldsTags::SERVER_TYPE, PldsTags::SERVER_TYPE, "8");

    service->manageableDataChanged(data);

    EXPECT_EQ(STOP_ON_NETWORK_DOWN, state());
    EXPECT_TRUE(runningTimers(restartMilliseconds).empty()) << "the service had stopped before";
}

TEST_F(NetworkChanges, AnItemWithoutAValueCountsAsEmpty) {
    connected();
    ManageableData data;
    data.addRootId(PldsTags::INTERFACE_STATUS, nullptr);

    service->manageableDataChanged(data);

    EXPECT_EQ(STOP_ON_NETWORK_DOWN, state());
    EXPECT_TRUE(logged(4, "manageableDataChanged() id[" + PldsTags::INTERFACE_STATUS + "] itemVal[]"));
}
