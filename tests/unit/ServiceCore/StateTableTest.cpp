#include "StatefulTelephone.h"

namespace {

using StateTable = StatefulTelephone;

class EveryState : public StatefulTelephone, public testing::WithParamInterface<ServiceState> {
protected:
    bool is(std::initializer_list<ServiceState> states) const {
        for (const ServiceState one : states) {
            if (one == GetParam()) {
                return true;
            }
        }
        return false;
    }
};

INSTANTIATE_TEST_SUITE_P(StateTable, EveryState, testing::ValuesIn(reachableStates()), stateName);

} // namespace

// ---- Each row through its own trigger ----------------------------------------------------------------------------

TEST_F(StateTable, ConstructionIsInitialized) {
    EXPECT_EQ(INITIALIZED, state());
    EXPECT_FALSE(service->isRunning());
}

TEST_F(StateTable, InitWithoutAServerIsDeconfiguredOnInit) {
    platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, "");

    initialise();

    EXPECT_EQ(DECONFIGURED_ON_INIT, state());
    EXPECT_EQ(0u, platform.threads.spawned.size());
}

TEST_F(StateTable, InitWithAServerIsConfiguredOnInit) {
    platform.threads.refuse = true;

    initialise();

    EXPECT_EQ(CONFIGURED_ON_INIT, state());
    EXPECT_TRUE(loginWasAdmitted());
}

TEST_F(StateTable, ALoginIsStartUntilTheTokenIsThere) {
    ServiceState during = INITIALIZED;
    ServiceState afterToken = INITIALIZED;
    initialise();
    expectToken().whileAwaited([&] { during = state(); });
    expectExtension().whileAwaited([&] { afterToken = state(); });
    expectGrants();

    runThreads();

    EXPECT_EQ(START, during);
    EXPECT_EQ(CONNECTED, afterToken);
    EXPECT_EQ(CONNECTED, state());
}

TEST_F(StateTable, AGroupDuringALoginLeavesItInStart) {
    ServiceState during = INITIALIZED;
    initialise();
    expectToken().whileAwaited([&] {
        deliverGroup();
        during = state();
    });
    expectExtension();
    expectGrants();

    runThreads();

    EXPECT_EQ(START, during);
    EXPECT_EQ(CONNECTED, state());
}

TEST_F(StateTable, AFailedTokenIsStop) {
    initialise();
    expectToken().answers(500);

    runThreads();

    EXPECT_EQ(STOP, state());
}

TEST_F(StateTable, ATokenThatFailsWhileConnectedIsStop) {
    connected();
    expectToken().answers(404);

    service->getToken();

    EXPECT_EQ(STOP, state());
}

TEST_F(StateTable, ARefusedLoginIsRepeatedFromStopByTheTokenTimer) {
    initialise();
    expectToken().answers(500);
    runThreads();
    const int delay = platform.context.runningDurations().back();
    EXPECT_GE(delay, 60000);
    EXPECT_LE(delay, 300000);
    expectToken();
    expectExtension();
    expectGrants();

    pass(delay);

    EXPECT_EQ(CONNECTED, state());
}

TEST_F(StateTable, ATokenRequestWithoutAServerIsDeconfigured) {
    deconfiguredOnInit();

    service->start();

    EXPECT_EQ(DECONFIGURED, state());
    EXPECT_TRUE(logged(2, "start() - acess token is not downloaded!"));
    EXPECT_TRUE(platform.context.runningDurations().empty()) << "no retry";
}

TEST_F(StateTable, ResettingARunningServiceIsDeconfigured) {
    connected();

    EXPECT_TRUE(service->resetUserData());

    EXPECT_EQ(DECONFIGURED, state());
    EXPECT_TRUE(logged(4, "resetUserData() stopping and deconfiguring service"));
}

TEST_F(StateTable, AGroupThatChangesTheServerOfARunningServiceIsConfiguredAnew) {
    connected();

    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example"}});

    EXPECT_EQ(CONFIGURED, state());
    EXPECT_TRUE(logged(6, "validateGroupAndSetData() stop"));
    EXPECT_TRUE(logged(6, "validateGroupAndSetData() deconfigure"));
    EXPECT_TRUE(logged(4, "deconfigure()"));
    EXPECT_TRUE(loginWasAdmitted());
}

TEST_F(StateTable, AGroupThatTakesTheServerAwayIsDeconfiguredForGood) {
    connected();

    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, ""}});

    EXPECT_EQ(DECONFIGURED, state());
    EXPECT_FALSE(loginWasAdmitted());
    EXPECT_TRUE(logged(4, "validateGroupAndSetData() OUT m_state[DECONFIGURED]"));
}

TEST_F(StateTable, AGroupWithAServerLeadsOutOfDeconfigured) {
    deconfigured();
    forgetRecords();

    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, server}});

    EXPECT_EQ(CONFIGURED, state());
    EXPECT_TRUE(loginWasAdmitted());
}

TEST_F(StateTable, AFirstServerLeadsOutOfDeconfiguredOnInit) {
    deconfiguredOnInit();

    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, server}});

    EXPECT_EQ(CONFIGURED, state());
}

TEST_F(StateTable, AChangedGroupInStopGoesThroughDeconfigured) {
    stopped();
    forgetRecords();

    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example"}});

    EXPECT_EQ(CONFIGURED, state());
    EXPECT_FALSE(logged(6, "validateGroupAndSetData() stop"));
    EXPECT_TRUE(logged(6, "validateGroupAndSetData() deconfigure"));
}

TEST_F(StateTable, TheInterfaceGoesDownAndComesUp) {
    connected();

    interfaceChanges("down");
    EXPECT_EQ(STOP_ON_NETWORK_DOWN, state());
    EXPECT_FALSE(loginWasAdmitted());

    interfaceChanges("up");
    EXPECT_EQ(CONFIGURED_ON_NETWORK_UP, state());
    EXPECT_TRUE(loginWasAdmitted());
}

TEST_F(StateTable, TheInterfaceGoesDownDuringALoginOfTheTokenTimer) {
    initialise();
    expectToken().answers(500);
    runThreads();
    ServiceState during = INITIALIZED;
    expectToken().asksToWait(1);
    platform.threads.duringSleep = [&] {
        interfaceChanges("down");
        during = state();
    };

    passSeconds(300);

    EXPECT_EQ(STOP_ON_NETWORK_DOWN, during);
    EXPECT_EQ(STOP, state()) << "the failed token of the login that was on its way";
}

TEST_F(StateTable, TheReturnOfTheInterfaceLogsIn) {
    stoppedOnNetworkDown();
    platform.threads.refuse = false;

    interfaceChanges("up");
    expectLogin();
    runThreads();

    EXPECT_EQ(CONNECTED, state());
}

TEST_F(StateTable, AnAcceptedGroupBeforeTheFirstLoginMakesItThatOfANewUser) {
    configuredOnInit();
    platform.threads.refuse = false;

    deliverGroup();
    expectLogin();
    runThreads();

    EXPECT_TRUE(logged(6, "start() first start for new user. cleanup"));
    EXPECT_EQ(1, platform.journal.cleanUps);
    EXPECT_EQ(CONNECTED, state());
}

TEST_F(StateTable, AnAcceptedGroupBeforeTheFirstLoginForgetsTheViewedCallsInTheStoreToo) {
    platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\"");
    configuredOnInit();
    platform.threads.refuse = false;
    ASSERT_TRUE(service->isMissedCallViewed("7"));
    std::vector<std::string> held;
    platform.store.whileWriting = [&] { held = platform.locks.held(); };

    deliverGroup();
    expectLogin();
    runThreads();

    EXPECT_FALSE(service->isMissedCallViewed("7"));
    EXPECT_EQ("", platform.store.get(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS));
    EXPECT_EQ(std::vector<std::string>{"m_callLogSem"}, held);
}

// ---- The same trigger in every state -----------------------------------------------------------------------------

TEST_P(EveryState, OnlyStartAndConnectedAreRunning) {
    reach(GetParam());

    EXPECT_EQ(GetParam() == CONNECTED, service->isRunning());
}

TEST_P(EveryState, StopIsStop) {
    reach(GetParam());

    service->stop();

    EXPECT_EQ(STOP, state());
}

TEST_P(EveryState, DeconfigureIsDeconfigured) {
    reach(GetParam());

    service->deconfigure();

    EXPECT_EQ(DECONFIGURED, state());
}

TEST_P(EveryState, ResetIsDeconfigured) {
    reach(GetParam());

    EXPECT_TRUE(service->resetUserData());

    EXPECT_EQ(DECONFIGURED, state());
    EXPECT_EQ(GetParam() == CONNECTED, logged(4, "stop()")) << "only a running service is stopped";
}

TEST_P(EveryState, ALoginIsAdmittedFromThreeOfThem) {
    reach(GetParam());

    service->asyncLogin();

    const bool admitted = is({CONFIGURED_ON_INIT, CONFIGURED, CONFIGURED_ON_NETWORK_UP});
    EXPECT_EQ(admitted, loginWasAdmitted());
    EXPECT_EQ(GetParam(), state());
}

TEST_P(EveryState, AStartIsRefusedWithTheInterfaceDown) {
    reach(GetParam());
    // Told before the service looks: a running one stops.
    interfaceChanges("down");
    const ServiceState before = state();

    service->start();

    EXPECT_EQ(before, state());
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_P(EveryState, AStartIsRefusedWithAnotherServerType) {
    reach(GetParam());
    serverTypeChanges("8");

    service->start();

    EXPECT_EQ(GetParam(), state());
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_P(EveryState, TheInterfacesLossChangesARunningServiceOnly) {
    reach(GetParam());

    interfaceChanges("down");

    EXPECT_EQ(GetParam() == CONNECTED ? STOP_ON_NETWORK_DOWN : GetParam(), state());
}

TEST_P(EveryState, TheInterfacesReturnChangesOnlyTheStateOfItsLoss) {
    reach(GetParam());

    interfaceChanges("up");

    EXPECT_EQ(GetParam() == STOP_ON_NETWORK_DOWN ? CONFIGURED_ON_NETWORK_UP : GetParam(), state());
}

TEST_P(EveryState, AnUnchangedGroupConfiguresAllButARunningOne) {
    reach(GetParam());
    std::string error;

    EXPECT_TRUE(service->validateGroupAndSetData(error, "orvane_config_group"));

    if (is({INITIALIZED, DECONFIGURED_ON_INIT, CONNECTED, DECONFIGURED})) {
        // Not initialised, without a server (before the first one and after the reset), or running.
        EXPECT_EQ(GetParam(), state());
    } else {
        EXPECT_EQ(CONFIGURED, state());
    }
}

TEST_P(EveryState, AGroupWithoutAServerStopsWhatRunsAndKeepsTheRest) {
    reach(GetParam());
    std::string error;
    service->OrvaneApiServerAddressSetter("", error);

    EXPECT_TRUE(service->validateGroupAndSetData(error, "orvane_config_group"));

    EXPECT_EQ(is({CONNECTED, STOP}) ? DECONFIGURED : GetParam(), state());
    EXPECT_EQ(is({CONFIGURED_ON_INIT, CONFIGURED, CONFIGURED_ON_NETWORK_UP}), loginWasAdmitted());
}

TEST_P(EveryState, AForeignGroupIsRefusedAndChangesNothing) {
    reach(GetParam());
    std::string error;

    EXPECT_FALSE(service->validateGroupAndSetData(error, "other_config_group"));

    EXPECT_EQ("wrong groupname", error);
    EXPECT_EQ(GetParam(), state());
    EXPECT_FALSE(loginWasAdmitted());
}

TEST_P(EveryState, AStartCleansUpForANewUserInConfiguredOnly) {
    platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\"");
    reach(GetParam());
    platform.network.answersUnexpected = [](const ScriptedNetwork::Request& request, Exchange& exchange) {
        exchange.answers(200, CloudAnswers::answerTo(request.target));
    };

    service->start();

    const int expected = is({CONFIGURED}) ? 1 : 0;
    EXPECT_EQ(expected, platform.journal.cleanUps);
    EXPECT_EQ(expected, platform.store.countWrites(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, ""));
    EXPECT_EQ(expected, platform.log.count(6, "start() first start for new user. cleanup"));
}

TEST_P(EveryState, AnotherServerTypeChangesNoStateByItself) {
    reach(GetParam());

    serverTypeChanges("8");

    EXPECT_EQ(GetParam(), state());
}

TEST_F(StateTable, AConnectedServiceRefusesToStart) {
    connected();

    service->start();

    EXPECT_TRUE(logged(2, "start() - cannot launch start(). m_interface_status[true], m_ov_server_type[true], "
                          "m_state[CONNECTED]"));
    EXPECT_TRUE(service->isRunning());
}

TEST_F(StateTable, ATokenTimerThatFiresWithTheInterfaceDownIsADeadEndUntilAGroupComes) {
    initialise();
    expectToken().answers(500);
    runThreads();
    interfaceChanges("down");
    platform.threads.refuse = true;
    passSeconds(300);
    EXPECT_EQ(STOP, state());
    EXPECT_TRUE(platform.context.runningDurations().empty());

    interfaceChanges("up");
    EXPECT_EQ(STOP, state()) << "from here a login is not admitted";
    EXPECT_FALSE(loginWasAdmitted());

    deliverGroup();
    EXPECT_EQ(CONFIGURED, state());
    EXPECT_TRUE(loginWasAdmitted());
}
