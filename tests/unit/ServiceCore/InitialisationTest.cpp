#include "TestTelephone.h"
#include "data/ServiceDataManager.h"
#include "threads/Threader.h"

#include <sstream>

namespace {

const std::vector<std::string> siblings = {"LocalMgmtIfc",      "CertificateMgmtSvcIfc",
                                           "JournalServiceIfc", "CommunicationsServiceIfc",
                                           "TeamServiceIfc",    "SecurityLogServiceIfc"};

class Initialisation : public TestTelephone {
protected:
    /// No login, so that a test needs no answers.
    void initialiseOnly() {
        platform.store.set(PldsTags::SERVER_TYPE, "8");
        initialise();
    }
    static std::vector<std::string> indices() {
        std::vector<std::string> all;
        for (int bank = 100; bank <= 1000; bank += 100) {
            for (int key = 0; key < 16; ++key) {
                all.push_back(std::to_string(bank + key));
            }
        }
        return all;
    }
};

TEST_F(Initialisation, LooksUpTheServicesInOrder) {
    initialiseOnly();

    EXPECT_EQ(siblings, platform.context.lookups());
    EXPECT_FALSE(platform.log.contains("not available"));
}

TEST_F(Initialisation, ToleratesThatEveryServiceIsMissing) {
    for (const std::string& name : siblings) {
        platform.context.removeService(name);
    }

    initialise();

    for (const std::string& name : siblings) {
        EXPECT_EQ(1, platform.log.count(2, "init() " + name + " not available")) << name;
    }
    EXPECT_FALSE(platform.log.contains("subscribe"));
    EXPECT_TRUE(logged(
        5, "asyncLogin() ignored. m_ov_server_type[false] m_interface_status[false] m_state[CONFIGURED_ON_INIT]"));
    EXPECT_EQ(4u, platform.context.calls.size()) << "the timers are made all the same";
    EXPECT_EQ(nullptr, platform.communications.listener);
}

class MissingService : public Initialisation, public testing::WithParamInterface<std::string> {};

TEST_P(MissingService, IsLoggedAndPassedOver) {
    platform.context.removeService(GetParam());

    initialiseOnly();

    for (const std::string& name : siblings) {
        EXPECT_EQ(name == GetParam() ? 1 : 0, platform.log.count(2, "init() " + name + " not available"));
    }
    EXPECT_EQ(GetParam() == "CommunicationsServiceIfc",
              platform.communications.listener != static_cast<CommunicationsServiceEventIfc*>(service.get()));
    EXPECT_EQ(GetParam() == "TeamServiceIfc",
              platform.team.listener != static_cast<TeamServiceEventIfc*>(service.get()));
}

INSTANTIATE_TEST_SUITE_P(Each, MissingService, testing::ValuesIn(siblings));

TEST_F(Initialisation, ToleratesAServiceOfAnotherKind) {
    platform.context.addService("TeamServiceIfc", &platform.journal);

    initialiseOnly();

    EXPECT_TRUE(logged(2, "init() TeamServiceIfc not available"));
}

TEST_F(Initialisation, SubscribesToTheSiblingsThatReport) {
    initialiseOnly();

    EXPECT_EQ(static_cast<CommunicationsServiceEventIfc*>(service.get()), platform.communications.listener);
    EXPECT_EQ(static_cast<TeamServiceEventIfc*>(service.get()), platform.team.listener);
    EXPECT_TRUE(logged(6, "init() - subscribe CommunicationService"));
    EXPECT_TRUE(logged(6, "init() - subscribe TeamServiceIfc"));
}

TEST_F(Initialisation, AsksForTheStorageArea) {
    initialiseOnly();

    const std::vector<std::pair<int, std::string>> areaOfImages = {{3, "/data/images/"}};
    EXPECT_EQ(areaOfImages, platform.store.storageAreas);
}

TEST_F(Initialisation, ObservesGatesViewedIdsAndFunctionKeys) {
    initialiseOnly();

    std::vector<std::string> expected = {PldsTags::INTERFACE_STATUS, PldsTags::SERVER_TYPE,
                                         PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS};
    for (const std::string& index : indices()) {
        expected.push_back(PldsTags::FUNCTION_KEY_ID + index);
    }
    EXPECT_EQ(163u, expected.size());
    EXPECT_EQ(expected, platform.store.observed);
}

TEST_F(Initialisation, ReadsAllItemsInOneGo) {
    initialiseOnly();

    std::vector<std::string> expected = {PldsTags::INTERFACE_STATUS, PldsTags::SERVER_TYPE,
                                         PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, PldsTags::MAC_ADDRESS};
    for (const std::string& index : indices()) {
        expected.push_back(PldsTags::FUNCTION_KEY_ID + index);
        expected.push_back(PldsTags::FUNCTION_KEY_LABEL + index);
        expected.push_back(PldsTags::BLF_DEST + index);
    }
    EXPECT_EQ(std::vector<std::vector<std::string>>{expected}, platform.store.reads);
}

TEST_F(Initialisation, GoesOnWhenNothingCanBeObserved) {
    platform.store.refuseObservation = true;
    expectLogin();

    connect();

    EXPECT_TRUE(logged(2, "init() error observing data"));
    EXPECT_TRUE(service->isRunning());
}

TEST_F(Initialisation, GoesOnWhenTheStoreDoesNotAnswer) {
    platform.store.refuseReads = true;
    platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\"");

    initialise();

    EXPECT_TRUE(logged(
        5, "asyncLogin() ignored. m_ov_server_type[false] m_interface_status[false] m_state[CONFIGURED_ON_INIT]"));
    EXPECT_FALSE(service->isMissedCallViewed("7"));
    EXPECT_FALSE(platform.log.contains("init() m_apiPath"));
    EXPECT_FALSE(platform.log.contains("init() BCA feature"));
    EXPECT_EQ(siblings, platform.context.lookups());
}

TEST_F(Initialisation, RestoresTheViewedMissedCalls) {
    platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\",\"8\"");

    initialiseOnly();

    EXPECT_TRUE(service->isMissedCallViewed("7"));
    EXPECT_TRUE(service->isMissedCallViewed("8"));
    EXPECT_FALSE(service->isMissedCallViewed("9"));
    EXPECT_TRUE(logged(5, "init() viewedMissedCallIds.size[2] m_viewed_missed_call_ids.length[7]"));
    EXPECT_TRUE(platform.store.writes.empty());
}

TEST_F(Initialisation, StartsWithNoViewedMissedCallFromAnItemThatIsDamaged) {
    platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\",\"8");

    initialiseOnly();

    EXPECT_TRUE(logged(5, "init() viewedMissedCallIds.size[0] m_viewed_missed_call_ids.length[6]"));
}

TEST_F(Initialisation, BuildsThePathPrefixFromModelAndAddress) {
    platform.model = "X";
    platform.store.set(PldsTags::MAC_ADDRESS, "Y");

    initialiseOnly();

    EXPECT_TRUE(logged(5, "init() m_apiPath[/X/Y]"));
}

struct Model {
    const char* name;
    const char* sharedLines;
};

class SharedLineModel : public Initialisation, public testing::WithParamInterface<Model> {};

TEST_P(SharedLineModel, DecidesOnSharedLines) {
    platform.model = GetParam().name;

    initialiseOnly();

    EXPECT_TRUE(logged(5, std::string("init() BCA feature is allowed[") + GetParam().sharedLines + "]"));
}

TEST_F(Initialisation, AsksForTheModelsWithSharedLinesInOrder) {
    platform.steps.begin();

    initialiseOnly();

    std::vector<std::string> models;
    for (const std::string& step : platform.steps.steps()) {
        if (step.rfind("ask for model ", 0) == 0) {
            models.push_back(step);
        }
    }
    EXPECT_EQ((std::vector<std::string>{"ask for model KD24", "ask for model KD26", "ask for model KD36",
                                        "ask for model KD46"}),
              models);
}

INSTANTIATE_TEST_SUITE_P(Models, SharedLineModel,
                         testing::Values(Model{"KD24", "true"}, Model{"KD26", "true"}, Model{"KD36A", "true"},
                                         Model{"KD46G", "true"}, Model{"KL1", "false"}, Model{"X", "false"}),
                         [](const testing::TestParamInfo<Model>& info) { return std::string(info.param.name); });

TEST_F(Initialisation, MakesThePermanentTimersInOrderAndStartsNone) {
    platform.store.set(PldsTags::ORVANE_API_SYNC_INTERVAL, "120");

    initialiseOnly();

    EXPECT_EQ((std::vector<std::string>{"create 1 1000", "create 2 10000", "create 3 120000", "create 4 1000"}),
              platform.context.calls);
}

TEST_F(Initialisation, WithoutAServerIsDeconfigured) {
    platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, "");

    initialise();

    EXPECT_TRUE(
        platform.log.hasBeginning(6, "init() m_interface_status[true] m_state[DECONFIGURED_ON_INIT] m_pThreader[0x"));
    EXPECT_FALSE(service->isRunning());
}

TEST_F(Initialisation, WithAServerIsConfiguredAndCountsNothingAsChanged) {
    withCallLog();
    withPhonebook();

    initialiseOnly();

    EXPECT_TRUE(
        platform.log.hasBeginning(6, "init() m_interface_status[true] m_state[CONFIGURED_ON_INIT] m_pThreader[0x"));
    EXPECT_FALSE(service->hasCallLogConfigChanged());
    EXPECT_FALSE(service->hasPhonebookConfigChanged());
}

TEST_F(Initialisation, WithAServerRemembersItAsTheOldOne) {
    initialiseOnly();

    platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, "other");

    EXPECT_TRUE(logged(6, "OrvaneApiServerAddressSetter() m_server[cloud.example] m_server_old[cloud.example] "
                          "newVal[other]"));
}

TEST_F(Initialisation, WithoutAServerLeavesTheOldValuesAlone) {
    platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, "");
    withCallLog();
    withPhonebook();

    initialise();

    EXPECT_TRUE(service->hasCallLogConfigChanged());
    EXPECT_TRUE(service->hasPhonebookConfigChanged());
}

TEST_F(Initialisation, HandsTheThreaderThatItWasGivenToTheWebSocket) {
    nameSemaphoresOfNextService();
    auto owned = std::make_unique<Threader>();
    const ThreaderIfc* threader = owned.get();
    service = std::make_unique<OrvaneService>(new ServiceDataManager, owned.release());

    initialiseOnly();

    EXPECT_EQ(threader, platform.webSocket.threader);
    EXPECT_FALSE(platform.log.contains("alocate thread"));
    std::ostringstream line;
    line << "init() m_interface_status[true] m_state[CONFIGURED_ON_INIT] m_pThreader[" << threader << "]";
    EXPECT_TRUE(logged(6, line.str()));
}

TEST_F(Initialisation, HandsItsThreaderToTheWebSocketBeforeALoginCouldOpenOne) {
    platform.threads.runAtSpawn = true;
    expectToken().whileAwaited([this] { EXPECT_NE(nullptr, platform.webSocket.threader); });
    expectExtension();
    expectGrants();

    initialise();

    EXPECT_TRUE(service->isRunning());
}

TEST_F(Initialisation, MakesAThreaderWhenItHasNone) {
    nameSemaphoresOfNextService();
    OrvaneService without(new ServiceDataManager, nullptr);

    platform.store.set(PldsTags::SERVER_TYPE, "8");
    without.init(platform.context);

    EXPECT_TRUE(logged(6, "init() - alocate thread for WebsocketThread"));
    ASSERT_NE(nullptr, platform.webSocket.threader);
    std::ostringstream line;
    line << "init() m_interface_status[true] m_state[CONFIGURED_ON_INIT] m_pThreader[" << platform.webSocket.threader
         << "]";
    EXPECT_TRUE(logged(6, line.str()));
}

TEST_F(Initialisation, FindsNoFunctionKeyInAStoreWithoutAny) {
    initialiseOnly();

    EXPECT_TRUE(logged(6, "init() fpkPresenceData map size[0]"));
    EXPECT_TRUE(service->isFpkPresenceMapEmpty());
}

TEST_F(Initialisation, FindsTheFunctionKeysThatWatchSomebody) {
    withWatchedColleague("100", "201");
    withWatchedColleague("1015", "202");
    withWatchedColleague("116", "203");
    withWatchedColleague("101", "204");
    platform.store.set(PldsTags::FUNCTION_KEY_ID + "101", "60");

    initialiseOnly();

    EXPECT_TRUE(logged(6, "init() fpkPresenceData map size[2]"));
    EXPECT_TRUE(service->doesFpkPresenceDataExist("201"));
    EXPECT_TRUE(service->doesFpkPresenceDataExist("202"));
}

TEST_F(Initialisation, LogsASecondKeyForTheSameColleague) {
    withWatchedColleague("100", "201");
    withWatchedColleague("205", "201");

    initialiseOnly();

    EXPECT_TRUE(logged(2, "init() fpkPresenceData structure for fpk[205] was not inserted into map"));
    EXPECT_TRUE(logged(6, "init() fpkPresenceData map size[1]"));
}

TEST_F(Initialisation, PassesOverAFunctionKeyThatCannotBeRead) {
    withWatchedColleague("100", "201");
    withWatchedColleague("101", "202");
    platform.store.withoutValue = {PldsTags::FUNCTION_KEY_LABEL + "100"};

    initialiseOnly();

    EXPECT_TRUE(platform.log.hasBeginning(2, "getFpkConfiguration() failed for FPK[100]"));
    EXPECT_FALSE(platform.log.contains("was not inserted into map"));
    EXPECT_TRUE(logged(6, "init() fpkPresenceData map size[1]"));
    EXPECT_TRUE(service->doesFpkPresenceDataExist("202"));
}

class Gate : public Initialisation, public testing::WithParamInterface<std::pair<std::string, std::string>> {};

TEST_P(Gate, IsOpenForTheExactTextsOnly) {
    platform.store.set(PldsTags::INTERFACE_STATUS, GetParam().first);
    platform.store.set(PldsTags::SERVER_TYPE, GetParam().second);

    initialise();

    EXPECT_TRUE(platform.threads.spawned.empty());
    EXPECT_TRUE(platform.log.hasBeginning(
        5, "asyncLogin() ignored. m_ov_server_type[" + std::string(GetParam().second == "7" ? "true" : "false") +
               "] m_interface_status[" + std::string(GetParam().first == "up" ? "true" : "false") + "]"));
}

INSTANTIATE_TEST_SUITE_P(Texts, Gate,
                         testing::Values(std::make_pair("UP", "7"), std::make_pair("down", "7"),
                                         std::make_pair("", "7"), std::make_pair("up", "77"), std::make_pair("up", ""),
                                         std::make_pair("up", "07"), std::make_pair("no", "no")));

} // namespace
