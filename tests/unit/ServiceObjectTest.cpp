#include "SemaphoreNames.h"
#include "TestTelephone.h"
#include "data/ManageableData.h"

#include <new>
#include <set>

using namespace OrvaneServiceTypes;

namespace {

class ServiceObject : public TestTelephone {
protected:
    /// The recorded steps that begin like one of these.
    std::vector<std::string> stepsOf(const std::vector<std::string>& beginnings) const {
        std::vector<std::string> found;
        for (const std::string& step : platform.steps.steps()) {
            for (const std::string& beginning : beginnings) {
                if (step.compare(0, beginning.size(), beginning) == 0) {
                    found.push_back(step);
                }
            }
        }
        return found;
    }
};

struct StateText {
    int value;
    const char* text;
};

class StateName : public TestTelephone, public testing::WithParamInterface<StateText> {};

TEST_P(StateName, IsTheEnumerators) {
    platform.log.clear();

    EXPECT_EQ(GetParam().text, OrvaneService::getStateAsText(static_cast<ServiceState>(GetParam().value)));

    EXPECT_TRUE(platform.log.lines().empty());
}

INSTANTIATE_TEST_SUITE_P(All, StateName,
                         testing::Values(StateText{0, "INITIALIZED"}, StateText{1, "CONFIGURED_ON_INIT"},
                                         StateText{2, "DECONFIGURED_ON_INIT"}, StateText{3, "CONFIGURED"},
                                         StateText{4, "CONFIGURED_MOBILITY_WAITING"},
                                         StateText{5, "CONFIGURED_MOBILITY_READY"},
                                         StateText{6, "CONFIGURED_ON_NETWORK_UP"}, StateText{7, "START"},
                                         StateText{8, "CONNECTED"}, StateText{9, "DECONFIGURING"},
                                         StateText{10, "DECONFIGURED"}, StateText{11, "STOP"},
                                         StateText{12, "STOP_ON_MOBILITY"}, StateText{13, "STOP_ON_NETWORK_DOWN"}),
                         [](const testing::TestParamInfo<StateText>& info) { return std::string(info.param.text); });

TEST_F(ServiceObject, NamesNoOtherState) {
    EXPECT_EQ("UNKNOWN", OrvaneService::getStateAsText(static_cast<ServiceState>(14)));
    EXPECT_EQ("UNKNOWN", OrvaneService::getStateAsText(static_cast<ServiceState>(-1)));

    EXPECT_TRUE(logged(2, "getStateAsText() unknown state[14]"));
    EXPECT_TRUE(logged(2, "getStateAsText() unknown state[-1]"));
}

TEST_F(ServiceObject, IsNewAndDoesNotRun) {
    EXPECT_FALSE(service->isRunning());
    EXPECT_EQ("60", service->OrvaneApiSyncIntervalGetter());
    EXPECT_EQ("", service->OrvaneApiServerAddressGetter());
    EXPECT_EQ("false", service->OrvaneApiSyncCallLogGetter());
    EXPECT_EQ("false", service->OrvaneApiSyncPhonebookGetter());
    EXPECT_EQ("false", service->OrvaneApiSyncDndGetter());
    EXPECT_EQ(0u, service->getNoOfObservers());
    EXPECT_TRUE(service->isFpkPresenceMapEmpty());
    EXPECT_EQ(0u, service->getBcaLineListSize());
    EXPECT_EQ(OrvaneService::WS_STATE_CLOSED, service->getWebSocketState());
    EXPECT_FALSE(service->getRecoverWebSocketConnection());
    EXPECT_FALSE(service->getRecoverWebSocketConnectionWaitForLanInterfaceUp());
    EXPECT_EQ("", service->getSubscriptionId());
    service->asyncLogin();
    EXPECT_TRUE(
        logged(5, "asyncLogin() ignored. m_ov_server_type[false] m_interface_status[false] m_state[INITIALIZED]"));
}

TEST_F(ServiceObject, RunsWhileItLogsInAndWhenItIsConnected) {
    initialise();
    EXPECT_FALSE(service->isRunning());
    expectToken().whileAwaited([this] { EXPECT_TRUE(service->isRunning()); });
    expectExtension();
    expectGrants();

    runThreads();

    EXPECT_TRUE(service->isRunning());
    service->stop();
    EXPECT_FALSE(service->isRunning());
    service->deconfigure();
    EXPECT_FALSE(service->isRunning());
}

TEST_F(ServiceObject, DoesNothingOnEventsOfItsSiblingsThatDoNotConcernIt) {
    connectWithEmptyCloud();
    platform.log.clear();
    CommunicationsServiceEventIfc& communications = *service;
    TeamServiceEventIfc& team = *service;

    communications.callStateChange();
    communications.registrationStateChange();
    communications.incomingCall();
    communications.incomingPickupCall();
    communications.callHeld();
    communications.callRetrieved();
    communications.featureSuccess();
    communications.featureFailed();
    communications.remoteEndpointDetailsChanged();
    communications.incomingCallMissed();
    communications.callForwarded();
    communications.incomingAssociatedCall();
    communications.messageWaiting();
    communications.doNotDisturbSet();
    communications.agentStateSet();
    communications.securityStatusChanged();
    communications.callRecordingStatus();
    communications.preemptionStatusChanged();
    communications.impactLevelChanged();
    communications.serverFeatureStatusChange();
    communications.b2buaCSTAResponse();
    communications.b2buaCSTAEventOrRequest();
    communications.conferenceStatusEvent();
    communications.callCompletionEvent();
    communications.callCompletionFailedEvent();
    communications.bluetoothAudioStatusChanged();
    communications.csCommunicationsServiceEvent();

    team.dssInitiatedCall();
    team.blfInitiatedCall();
    team.blfGPUCallFailed();
    team.bridgeInitiatedCall();
    team.setOriginatingLine();
    team.setLineStatus();
    team.setBLFStatus();
    team.callPartyChanged();
    team.allLinesIdle();
    team.lineBusyRemoteWarning();
    team.reservationTimeoutWarning();
    team.reservationFailureWarning();
    team.urlSendFailure();
    team.linePreSelectStatus();
    team.dssFailureWarning();
    team.convertHoldStatus();
    team.linePreviewStatus();
    team.setForwardingAlternativeStatus();
    team.linePreviewModeEnabled();
    team.eaCockpitStateChanged();
    team.callAnswered();
    team.generateNotificationEvent();
    team.makeCallRequestForDO();
    team.callParkedAtParkLocation();
    team.parkCallRequestStatus();
    team.showParkedCallInformation();
    team.showLineKeyCallInformation();
    team.bmwActionEvent();
    team.showAllowedBMWModes();

    EXPECT_TRUE(platform.log.lines().empty());
    EXPECT_TRUE(service->isRunning());
}

TEST_F(ServiceObject, DoesNothingAsAnExecutableAndAsAValidatorOfSingleItems) {
    connectWithEmptyCloud();
    platform.log.clear();
    ValidatorIfc& validator = *service;

    service->run();
    service->shutdown();
    validator.setValidation(true);
    validator.addItemForValidationAsPartOfGroup("OrvaneApiServerAddress", "host");
    validator.allowInvalidData(true);
    validator.clearValidation();

    EXPECT_FALSE(validator.isGroupNeedingValidation("OrvaneApi"));
    EXPECT_TRUE(platform.log.lines().empty());
    EXPECT_TRUE(service->isRunning());
}

TEST_F(ServiceObject, WritesItsNameAndSourceIntoEveryLine) {
    connectWithEmptyCloud();

    ASSERT_FALSE(platform.log.lines().empty());
    for (const RecordedLog::Line& line : platform.log.lines()) {
        EXPECT_EQ("Orvane Service", line.tag);
        EXPECT_EQ("./src/OrvaneService", line.source);
        EXPECT_GE(line.level, 2);
        EXPECT_LE(line.level, 6);
    }
}

TEST_F(ServiceObject, WritesNoLineThatIsNotWanted) {
    platform.log.level = 2;

    connectWithEmptyCloud();

    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(ServiceObject, ForwardsDataToItsManagerAndItsAnswerBack) {
    ManageableData read;
    ManageableData written;

    EXPECT_TRUE(service->getData(read));
    EXPECT_TRUE(service->setData(written));
    platform.dataManager.refuseData = true;
    EXPECT_FALSE(service->getData(written));
    EXPECT_FALSE(service->setData(read));

    EXPECT_EQ((std::vector<const ManageableData*>{&read, &written}), platform.dataManager.dataRead);
    EXPECT_EQ((std::vector<const ManageableData*>{&written, &read}), platform.dataManager.dataWritten);
}

TEST_F(ServiceObject, HasRecordsOfLinesAndKeysInTheirOrder) {
    BcaLineType line;
    line.extensionId = "900";
    line.phoneNumber = "+49900";
    line.name = "line 900";
    line.status = BCA_LINE_STATUS_READY;
    line.callLogSyncToken = "t1";
    line.fullSyncPending = true;
    line.m_bcaLinesCcallLogMap["1"] = "{record}";
    line.voicemail.name = "own";
    const auto& [extensionId, phoneNumber, name, status, callLogSyncToken, pending, callLogMap, voicemail] = line;
    EXPECT_EQ("900", extensionId);
    EXPECT_EQ("+49900", phoneNumber);
    EXPECT_EQ("line 900", name);
    EXPECT_EQ(2, status);
    EXPECT_EQ("t1", callLogSyncToken);
    EXPECT_TRUE(pending);
    EXPECT_EQ(1u, callLogMap.count("1"));
    EXPECT_EQ("own", voicemail.name);
    EXPECT_EQ(1, BcaLineType().status);
    EXPECT_EQ(1, BCA_LINE_STATUS_DISCOVERED);

    const FpkPresenceDataType key = {"100", "59", "5001", "Colleague", DND_TAKE_ALL_CALLS, true};
    EXPECT_EQ("100", key.fpk);
    EXPECT_EQ("59", key.fpkFunction);
    EXPECT_EQ("5001", key.extensionId);
    EXPECT_EQ("Colleague", key.keyLabel);
    EXPECT_EQ(DND_TAKE_ALL_CALLS, key.dndStatus);
    EXPECT_TRUE(key.dndActive);
}

TEST_F(ServiceObject, HasSlotsThatDoNothing) {
    platform.log.clear();

    service->run();
    service->shutdown();
    service->handleMsg("message");
    service->allowInvalidData(true);
    service->setValidation(true);
    service->addItemForValidationAsPartOfGroup("item", "group");
    service->clearValidation();
    EXPECT_FALSE(service->isGroupNeedingValidation("orvane_config_group"));
    EXPECT_FALSE(service->continueOnLoginError());
    service->callStateChange();
    service->incomingCallMissed();
    service->messageWaiting();
    service->doNotDisturbSet();
    service->setBLFStatus();
    service->callAnswered();

    EXPECT_TRUE(platform.log.lines().empty());
    EXPECT_TRUE(platform.context.calls.empty());
    EXPECT_TRUE(platform.store.writes.empty());
}

TEST_F(ServiceObject, HasFifteenSemaphoresOfWhichSevenMayBeTakenAgain) {
    const std::set<std::string> reentrant = {"m_callLogSem",    "m_callLogResponseSem", "m_phonebookResponseSem",
                                             "m_dndSem",        "m_fpkPresenceMapSem",  "m_observersSem",
                                             "m_bcaLineListSem"};
    const std::vector<std::string>& names = SemaphoreNames::ofService();

    ASSERT_EQ(15u, platform.locks.made.size());
    for (std::size_t index = 0; index < names.size(); ++index) {
        const LockDiscipline::Made& made = platform.locks.made[index];
        EXPECT_EQ(names[index], made.name);
        EXPECT_EQ(1, made.initialCount) << made.name;
        EXPECT_EQ(1, made.maximumCount) << made.name;
        EXPECT_EQ(reentrant.count(made.name) == 1, made.reentrant) << made.name;
    }
}

TEST_F(ServiceObject, ThatCannotBeMadeLeavesNothingBehind) {
    // One threader is the service's own argument, six belong to its worker threads.
    for (int threaders = 0; threaders < 7; ++threaders) {
        platform.dataManager.calls.clear();
        platform.threads.threadersLeft = threaders;

        EXPECT_THROW(createOrvaneService(), std::bad_alloc);

        EXPECT_EQ(std::vector<std::string>{"destroyed"}, platform.dataManager.calls) << threaders << " threaders";
    }
    platform.threads.threadersLeft = -1;
}

TEST_F(ServiceObject, AsksForNoThreadOfItsOwn) {
    EXPECT_EQ(0, service->type());
}

TEST_F(ServiceObject, EndsInOrder) {
    connectWithEmptyCloud();
    platform.dataManager.calls.clear();
    platform.log.clear();

    service.reset();

    EXPECT_TRUE(logged(4, "stop()"));
    EXPECT_EQ(1, platform.webSocket.terminations);
    EXPECT_EQ((std::vector<std::string>{"unregisterAgent", "releaseItems", "destroyed"}), platform.dataManager.calls);
    EXPECT_EQ(0, platform.network.connectionsAlive);
    EXPECT_TRUE(platform.context.runningDurations().empty());
}

TEST_F(ServiceObject, WaitsAtItsEndForARecoveryThatHasNotBegun) {
    withDnd();
    connectWithEmptyCloud();
    service->asyncRecoverWebSocketConnection();
    ASSERT_EQ(1u, platform.threads.pendingCount());
    const unsigned long recovery = platform.threads.spawned.back().id;
    platform.threads.waitedFor.clear();
    // The recovery finds a stopped service and begins anew.
    expectLogin();
    platform.steps.begin();

    service.reset();

    EXPECT_EQ(std::vector<unsigned long>{recovery}, platform.threads.waitedFor);
    EXPECT_EQ(0u, platform.threads.pendingCount());
    EXPECT_EQ((std::vector<std::string>{"socket stops", "wait for " + std::to_string(recovery), "socket stops",
                                        "socket stops", "socket to wss://events.example/ws?access_token=W1",
                                        "socket terminates"}),
              stepsOf({"socket ", "wait for "}));
}

TEST_F(ServiceObject, EndsEvenWhenItWasNeverInitialised) {
    service.reset();

    EXPECT_EQ((std::vector<std::string>{"unregisterAgent", "releaseItems", "destroyed"}), platform.dataManager.calls);
}

} // namespace
