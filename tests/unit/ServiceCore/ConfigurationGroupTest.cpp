#include "StatefulTelephone.h"

#include "utilities/Serializer.h"

using OrvaneServiceTypes::DATA_CALL_LOG;
using OrvaneServiceTypes::DATA_PHONEBOOK;

namespace {

class ConfigurationGroup : public StatefulTelephone {
protected:
    void expectPlainInformEvent() {
        const auto events = observer.of("informUserEvent");
        ASSERT_EQ(1u, events.size());
        EXPECT_EQ("", events[0].message);
        EXPECT_EQ(OrvaneServiceTypes::USER_MSG_NONE, events[0].type);
    }
    /// Operations and data types of all synchronisation events.
    std::vector<std::pair<std::string, int>> syncEvents() const {
        std::vector<std::pair<std::string, int>> found;
        for (const auto& event : observer.events) {
            if (event.operation != "informUserEvent" && event.operation != "orvaneVoicemail") {
                found.emplace_back(event.operation, event.type);
            }
        }
        return found;
    }
};

} // namespace

TEST_F(ConfigurationGroup, AForeignGroupIsRefusedWithoutALine) {
    withObserver();
    connected();
    forgetRecords();
    std::string error;

    EXPECT_FALSE(service->validateGroupAndSetData(error, "Orvane_config_group"));

    EXPECT_EQ("wrong groupname", error);
    EXPECT_TRUE(platform.log.lines().empty());
    EXPECT_TRUE(observer.events.empty());
}

TEST_F(ConfigurationGroup, BeforeInitTheGroupIsNotActedOn) {
    withObserver();
    std::string error = "as it was";

    EXPECT_TRUE(service->validateGroupAndSetData(error, "orvane_config_group"));

    EXPECT_EQ("as it was", error);
    EXPECT_TRUE(logged(4, "validateGroupAndSetData() IN m_server[] m_sync_callLog[false] m_sync_phonebook[false] "
                          "m_state[INITIALIZED]"));
    EXPECT_TRUE(logged(6, "validateGroupAndSetData() initialized waiting init() to complete"));
    EXPECT_TRUE(logged(4, "validateGroupAndSetData() OUT m_state[INITIALIZED]"));
    EXPECT_TRUE(logged(5, "asyncLogin() ignored. m_ov_server_type[false] m_interface_status[false] "
                          "m_state[INITIALIZED]"));
    EXPECT_TRUE(observer.events.empty());
}

TEST_F(ConfigurationGroup, AnAcceptedGroupTellsTheObserversSo) {
    withObserver();
    connected();
    forgetRecords();

    EXPECT_TRUE(deliverGroup().accepted);

    expectPlainInformEvent();
    EXPECT_EQ(1u, observer.events.size());
}

TEST_F(ConfigurationGroup, IntervalAndFeatureSwitchLeaveARunningServiceAlone) {
    withDnd();
    connected();
    forgetRecords();

    deliverGroup({{PldsTags::ORVANE_API_SYNC_INTERVAL, "90"}, {PldsTags::ORVANE_API_SYNC_DND, "false"}});

    EXPECT_TRUE(service->isRunning());
    EXPECT_FALSE(platform.log.contains("stop()"));
    EXPECT_TRUE(logged(5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] m_state[CONNECTED]"));
}

TEST_F(ConfigurationGroup, AnotherServerClearsWhatTheFormerOneGave) {
    withCallLog();
    withPhonebook();
    withObserver();
    connected();
    service->ageMissedCall("seen");
    forgetRecords();

    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example"}});

    EXPECT_EQ((std::vector<std::pair<std::string, int>>{{"orvaneFullSync", DATA_CALL_LOG},
                                                        {"orvaneFullSync", DATA_PHONEBOOK}}),
              syncEvents());
    EXPECT_FALSE(service->isMissedCallViewed("seen"));
    EXPECT_TRUE(logged(4, "validateGroupAndSetData() IN m_server[other.example] m_sync_callLog[true] "
                          "m_sync_phonebook[true] m_state[CONNECTED]"));
    EXPECT_TRUE(logged(4, "validateGroupAndSetData() OUT m_state[CONFIGURED]"));
    ASSERT_EQ(1u, platform.securityLog.records.size());
    EXPECT_EQ("Orvane Service: Server address change: old[cloud.example], new[other.example]",
              platform.securityLog.records[0].text);
}

TEST_F(ConfigurationGroup, AnotherServerIsLoggedInToAtOnceAsANewUser) {
    connected();
    platform.threads.refuse = false;

    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example"}});
    expectLogin();
    runThreads();

    EXPECT_EQ(CONNECTED, state());
    EXPECT_EQ(1, platform.journal.cleanUps);
    EXPECT_EQ("other.example", platform.network.connects.back());
}

TEST_F(ConfigurationGroup, AfterTheLoginTheChangeIsSettled) {
    connected();
    platform.threads.refuse = false;
    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example"}});
    expectLogin();
    runThreads();
    forgetRecords();

    deliverGroup();

    EXPECT_TRUE(service->isRunning());
    EXPECT_FALSE(platform.log.contains("stop()"));
}

TEST_F(ConfigurationGroup, TheCallLogsSwitchClearsTheCallLogAlone) {
    withCallLog();
    withPhonebook();
    withObserver();
    connected();
    forgetRecords();

    deliverGroup({{PldsTags::ORVANE_API_SYNC_CALL_LOG, "false"}});

    EXPECT_EQ((std::vector<std::pair<std::string, int>>{{"orvaneFullSync", DATA_CALL_LOG}}), syncEvents());
    EXPECT_EQ(CONFIGURED, state());
}

TEST_F(ConfigurationGroup, ThePhonebooksSwitchClearsThePhonebookAlone) {
    withCallLog();
    withPhonebook();
    withObserver();
    connected();
    forgetRecords();

    deliverGroup({{PldsTags::ORVANE_API_SYNC_PHONEBOOK, "false"}});

    EXPECT_EQ((std::vector<std::pair<std::string, int>>{{"orvaneFullSync", DATA_PHONEBOOK}}), syncEvents());
    EXPECT_EQ(CONFIGURED, state());
}

TEST_F(ConfigurationGroup, WithoutAServerTheServiceStaysDeconfigured) {
    withObserver();
    connected();
    forgetRecords();

    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, ""}});

    expectPlainInformEvent();
    EXPECT_EQ(DECONFIGURED, state());
    EXPECT_TRUE(logged(5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] "
                          "m_state[DECONFIGURED]"));
}

TEST_F(ConfigurationGroup, AnyGroupLeadsOutOfStop) {
    stopped();
    forgetRecords();

    deliverGroup();

    EXPECT_EQ(CONFIGURED, state());
    EXPECT_FALSE(logged(6, "validateGroupAndSetData() deconfigure")) << "nothing had changed";
    EXPECT_TRUE(loginWasAdmitted());
}

TEST_F(ConfigurationGroup, TheServiceStopsBeforeTheGroupReturns) {
    connected();
    platform.threads.refuse = false;
    service->refreshPhonebookEntries();
    const unsigned long worker = platform.threads.spawned.back().id;
    platform.threads.waitedFor.clear();

    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example"}});

    EXPECT_EQ((std::vector<unsigned long>{worker}), platform.threads.waitedFor);
    expectLogin();
    runThreads();
}

// ---- Reset of the user's data ------------------------------------------------------------------------------------

TEST_F(ConfigurationGroup, AResetWritesTheSixItemsInOrder) {
    connected();
    forgetRecords();

    EXPECT_TRUE(service->resetUserData());

    EXPECT_EQ((std::vector<std::pair<std::string, std::string>>{{PldsTags::ORVANE_API_SERVER_ADDRESS, ""},
                                                                {PldsTags::ORVANE_API_SYNC_CALL_LOG, "false"},
                                                                {PldsTags::ORVANE_API_SYNC_PHONEBOOK, "false"},
                                                                {PldsTags::ORVANE_API_SYNC_INTERVAL, "60"},
                                                                {PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, ""},
                                                                {PldsTags::ORVANE_API_SYNC_DND, "true"}}),
              platform.store.writes);
    std::vector<std::string> steps;
    for (const RecordedLog::Line& line : platform.log.lines()) {
        if (line.text == "stop()" || line.text.find("resetUserData()") == 0) {
            EXPECT_EQ(4, line.level);
            steps.push_back(line.text);
        }
    }
    EXPECT_EQ((std::vector<std::string>{"resetUserData() stopping and deconfiguring service", "stop()",
                                        "resetUserData() clearing configuration"}),
              steps);
}

TEST_F(ConfigurationGroup, AResetIsRecordedInTheSecurityLog) {
    connected();
    forgetRecords();

    service->resetUserData();

    ASSERT_EQ(1u, platform.securityLog.records.size());
    const auto& record = platform.securityLog.records[0];
    EXPECT_EQ("Orvane Service: Reseting user data", record.text);
    EXPECT_EQ(0, record.failure);
    EXPECT_EQ((std::vector<int>{4, 1, 5, 3}), record.classes);
}

TEST_F(ConfigurationGroup, AResetLeavesThePhonebooksSwitchAndTheInterval) {
    withCallLog();
    withPhonebook();
    platform.store.set(PldsTags::ORVANE_API_SYNC_INTERVAL, "120");
    connected();

    service->resetUserData();

    EXPECT_EQ("", platform.dataManager.read(PldsTags::ORVANE_API_SERVER_ADDRESS));
    EXPECT_EQ(PldsTags::VALUE_FALSE, platform.dataManager.read(PldsTags::ORVANE_API_SYNC_CALL_LOG));
    EXPECT_EQ(PldsTags::VALUE_TRUE, platform.dataManager.read(PldsTags::ORVANE_API_SYNC_PHONEBOOK));
    EXPECT_EQ("120", platform.dataManager.read(PldsTags::ORVANE_API_SYNC_INTERVAL));
    EXPECT_EQ(PldsTags::VALUE_TRUE, platform.dataManager.read(PldsTags::ORVANE_API_SYNC_DND));
}

TEST_F(ConfigurationGroup, AResetOfAServiceThatIsNotRunningSkipsTheStop) {
    configuredOnInit();
    forgetRecords();

    EXPECT_TRUE(service->resetUserData());

    EXPECT_FALSE(platform.log.contains("stop()"));
    EXPECT_FALSE(platform.log.contains("resetUserData() stopping"));
    EXPECT_TRUE(logged(4, "deconfigure()"));
}

TEST_F(ConfigurationGroup, AResetKeepsTheDataIfNoChangeWasPending) {
    withCallLog();
    withPhonebook();
    withObserver();
    connected();
    service->ageMissedCall("seen");
    forgetRecords();

    service->resetUserData();

    EXPECT_TRUE(syncEvents().empty());
    EXPECT_TRUE(service->isMissedCallViewed("seen"));
    service->ageMissedCall("seen");
    EXPECT_EQ("", platform.store.get(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS)) << "it counts as saved";
}

TEST_F(ConfigurationGroup, AResetClearsTheDataIfAChangeWasPending) {
    withCallLog();
    withPhonebook();
    withObserver();
    connected();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example");
    forgetRecords();

    service->resetUserData();

    EXPECT_EQ(2u, syncEvents().size());
}

TEST_F(ConfigurationGroup, AResetThatTheStoreRefusesGoesThrough) {
    connected();
    platform.store.refuseWrites = true;

    EXPECT_TRUE(service->resetUserData());

    EXPECT_TRUE(logged(4, "setPLDSValue() key[" + PldsTags::ORVANE_API_SYNC_DND + "] retVal[false]"));
    EXPECT_EQ(DECONFIGURED, state());
}

TEST_F(ConfigurationGroup, TheNextTurnOfTheFeatureAfterAResetIsFromOn) {
    platform.locks.allowAcrossRequests("m_dndSem");
    connected();
    service->resetUserData();
    platform.threads.refuse = false;
    deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, server}});
    expectToken();
    expectExtension();
    expectPresence();
    expectGrants();
    expectWebSocketToken();
    runThreads();

    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, "false");
    runThreads();

    EXPECT_TRUE(logged(6, "syncDnd() - sync DND was turned off!"));
}
