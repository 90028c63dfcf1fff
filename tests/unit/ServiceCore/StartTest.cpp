#include "TestTelephone.h"

using namespace CloudAnswers;
using namespace OrvaneServiceTypes;

namespace {

class Start : public TestTelephone {
protected:
    void expectRefusal(const std::string& gates) {
        EXPECT_TRUE(logged(2, "start() - cannot launch start(). " + gates));
        EXPECT_FALSE(logged(6, "start() - end"));
    }
    std::vector<std::string> targets() const {
        std::vector<std::string> all;
        for (const auto& request : platform.network.requests) {
            all.push_back(request.target);
        }
        return all;
    }
};

TEST_F(Start, AsksForEverythingThatIsSwitchedOnInOrder) {
    withCallLog();
    withPhonebook();
    withDnd();
    withObserver();
    expectLogin();

    connect();

    EXPECT_EQ((std::vector<std::string>{
                  path("/auth/token"), path(own("")), path(own("/presence")), path(own("/grant")),
                  path(own("/call-log-sync")) +
                      "?syncType=FSync&recordCount=100&view=Simple&showDeleted=false&statusGroup=All",
                  path(own("/address-book-sync")) + "?syncType=FSync&perPage=50", path("/restapi/oauth/wstoken")}),
              targets());
    EXPECT_EQ(std::vector<std::string>{"wss://events.example/ws?access_token=W1"}, platform.webSocket.urls);
    EXPECT_TRUE(logged(6, "start() web socket enabled[true]"));
}

TEST_F(Start, WithoutObserversLeavesTheDownloadsForLater) {
    withCallLog();
    withPhonebook();
    withDnd();
    expectLogin();

    connect();

    EXPECT_EQ((std::vector<std::string>{path("/auth/token"), path(own("")), path(own("/presence")), path(own("/grant")),
                                        path("/restapi/oauth/wstoken")}),
              targets());
    EXPECT_TRUE(
        logged(5, "start() - no observer subscribed; CallLog, Voicemail and Phonebook will not be downloaded now"));
    EXPECT_TRUE(platform.context.running(60000).empty()) << "polling does not begin";
    EXPECT_EQ(1u, platform.webSocket.urls.size());
}

TEST_F(Start, WithNothingSwitchedOnLeavesTheChannelClosed) {
    withObserver();
    expectLogin();

    connect();

    EXPECT_TRUE(logged(6, "start() web socket enabled[false]"));
    EXPECT_TRUE(platform.webSocket.urls.empty());
    EXPECT_TRUE(lastBatch("orvaneFullSync", DATA_CALL_LOG).empty());
    EXPECT_TRUE(platform.context.running(60000).empty());
}

TEST_F(Start, OpensTheChannelForDndAlone) {
    withDnd();
    expectLogin();

    connect();

    EXPECT_TRUE(logged(6, "start() web socket enabled[true]"));
    EXPECT_EQ(1u, platform.webSocket.urls.size());
}

TEST_F(Start, DecidesOnTheChannelBeforeItAsksForAToken) {
    expectToken().whileAwaited(
        [this] { platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_CALL_LOG, PldsTags::VALUE_TRUE); });
    expectExtension();
    expectGrants();
    connect();
    EXPECT_TRUE(platform.webSocket.urls.empty());
    service->stop();

    expectToken().whileAwaited(
        [this] { platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_CALL_LOG, PldsTags::VALUE_FALSE); });
    expectExtension();
    expectGrants();
    expectWebSocketToken();
    service->start();
    EXPECT_EQ(1u, platform.webSocket.urls.size());
}

TEST_F(Start, WithoutAChannelGoesOnPolling) {
    withCallLog();
    withObserver();
    expectToken();
    expectExtension();
    expectGrants();
    expectFullCallLog();
    expectWebSocketToken().answers(500, "");

    connect();

    EXPECT_TRUE(platform.webSocket.urls.empty());
    EXPECT_TRUE(service->isRunning());
    EXPECT_EQ(1u, platform.context.running(60000).size());
}

TEST_F(Start, WithoutATokenEndsAtOnce) {
    withCallLog();
    withDnd();
    withObserver();
    expectToken().answers(404, "");

    connect();

    EXPECT_TRUE(logged(2, "start() - acess token is not downloaded!"));
    EXPECT_TRUE(logged(6, "start() - end"));
    EXPECT_FALSE(service->isRunning());
    EXPECT_TRUE(platform.webSocket.urls.empty());
}

TEST_F(Start, GoesOnWhenTheExtensionCannotBeRead) {
    expectToken();
    expectExtension().answers(500, "");
    expectGrants();

    connect();

    EXPECT_TRUE(service->isRunning());
}

TEST_F(Start, IsRefusedWhileTheInterfaceIsDown) {
    platform.store.set(PldsTags::INTERFACE_STATUS, "down");
    initialise();

    service->start();

    EXPECT_TRUE(logged(4, "start()"));
    expectRefusal("m_interface_status[false], m_ov_server_type[true], m_state[CONFIGURED_ON_INIT]");
    EXPECT_FALSE(service->isRunning());
}

TEST_F(Start, IsRefusedForAnotherServerType) {
    platform.store.set(PldsTags::SERVER_TYPE, "");
    initialise();

    service->start();

    expectRefusal("m_interface_status[true], m_ov_server_type[false], m_state[CONFIGURED_ON_INIT]");
}

TEST_F(Start, IsRefusedWhenTheServiceIsConnected) {
    connectWithEmptyCloud();
    platform.log.clear();

    service->start();

    expectRefusal("m_interface_status[true], m_ov_server_type[true], m_state[CONNECTED]");
}

TEST_F(Start, IsRefusedWhileAnotherOneIsUnderWay) {
    initialise();
    expectToken().whileAwaited([this] {
        service->start();
        EXPECT_TRUE(service->isRunning());
        expectRefusal("m_interface_status[true], m_ov_server_type[true], m_state[START]");
    });
    expectExtension();
    expectGrants();

    runThreads();
}

TEST_F(Start, OfADeconfiguredServiceFindsNoServer) {
    platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, "");
    initialise();
    service->deconfigure();

    service->start();

    EXPECT_TRUE(logged(2, "getToken() missing data. m_server[]"));
    EXPECT_TRUE(logged(2, "start() - acess token is not downloaded!"));
    EXPECT_FALSE(service->isRunning());
    EXPECT_TRUE(platform.context.runningDurations().empty());
}

TEST_F(Start, AfterAStopIsNoNewUsers) {
    platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\"");
    connectWithEmptyCloud();
    service->stop();
    expectLogin();

    service->start();

    EXPECT_TRUE(service->isRunning());
    EXPECT_EQ(0, platform.journal.cleanUps);
    EXPECT_TRUE(service->isMissedCallViewed("7"));
}

TEST_F(Start, AfterARestartOfTheTelephoneIsNoNewUsers) {
    platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\"");

    connectWithEmptyCloud();

    EXPECT_EQ(0, platform.journal.cleanUps);
    EXPECT_TRUE(service->isMissedCallViewed("7"));
    EXPECT_FALSE(platform.log.contains("first start for new user"));
}

TEST_F(Start, ForANewUserCleansUp) {
    platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\"");
    connectWithEmptyCloud();
    platform.dataManager.deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example"}});
    EXPECT_EQ(1u, platform.threads.pendingCount());
    expectLogin();

    runThreads();

    EXPECT_TRUE(logged(6, "start() first start for new user. cleanup"));
    EXPECT_EQ(1, platform.journal.cleanUps);
    EXPECT_FALSE(service->isMissedCallViewed("7"));
    EXPECT_EQ("", platform.store.get(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS));
    EXPECT_EQ("other.example", platform.network.connects.back());
    EXPECT_FALSE(service->hasCallLogConfigChanged()) << "the new server is the old one now";
    EXPECT_FALSE(service->hasPhonebookConfigChanged());
}

TEST_F(Start, ForANewUserTakesOverTheSyncFlags) {
    connectWithEmptyCloud();
    platform.dataManager.deliverGroup(
        {{PldsTags::ORVANE_API_SYNC_CALL_LOG, "true"}, {PldsTags::ORVANE_API_SYNC_PHONEBOOK, "true"}});
    EXPECT_TRUE(service->hasCallLogConfigChanged());
    EXPECT_TRUE(service->hasPhonebookConfigChanged());
    expectToken();
    expectExtension();
    expectGrants();
    expectWebSocketToken();

    runThreads();

    EXPECT_FALSE(service->hasCallLogConfigChanged());
    EXPECT_FALSE(service->hasPhonebookConfigChanged());
}

TEST_F(Start, ForANewUserDoesWithoutAJournal) {
    platform.context.removeService("JournalServiceIfc");
    connectWithEmptyCloud();
    platform.dataManager.deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example"}});
    expectLogin();

    runThreads();

    EXPECT_TRUE(service->isRunning());
    EXPECT_EQ(0, platform.journal.cleanUps);
}

TEST_F(Start, BacksOffTheRefreshOperationsWhileItDownloads) {
    withCallLog();
    withPhonebook();
    withObserver();
    expectToken();
    expectExtension();
    expectGrants();
    expectFullCallLog().whileAwaited([this] { service->refreshCallLogEntries(); });
    expectFullPhonebook().whileAwaited([this] {
        service->refreshPhonebookEntries();
        EXPECT_EQ(1u, platform.threads.spawned.size());
        service->refreshCallLogEntries();
        EXPECT_EQ(2u, platform.threads.spawned.size()) << "the call log is done";
    });
    expectWebSocketToken();
    initialise();
    platform.threads.runNext();

    expectIncrementalCallLog("c1", "c2");
    runThreads();
    expectIncrementalPhonebook("p1", "p2");
    service->refreshPhonebookEntries();
    runThreads();
}

struct Refresh {
    const char* name;
    void (OrvaneService::*begin)();
    bool leavesCallLog;
    bool leavesPhonebook;
};

class RefreshBeforeStart : public Start, public testing::WithParamInterface<Refresh> {};

INSTANTIATE_TEST_SUITE_P(Each, RefreshBeforeStart,
                         testing::Values(Refresh{"CallLog", &OrvaneService::refreshCallLogEntries, true, false},
                                         Refresh{"Voicemail", &OrvaneService::refreshVoicemailEntries, true, false},
                                         Refresh{"Phonebook", &OrvaneService::refreshPhonebookEntries, false, true}),
                         [](const testing::TestParamInfo<Refresh>& info) { return std::string(info.param.name); });

TEST_P(RefreshBeforeStart, IsLeftItsOwnDataOnly) {
    withCallLog();
    withPhonebook();
    withObserver();
    initialise();
    (service.get()->*GetParam().begin)();
    expectToken();
    expectExtension();
    expectGrants();
    if (!GetParam().leavesCallLog) {
        expectFullCallLog();
    }
    if (!GetParam().leavesPhonebook) {
        expectFullPhonebook();
    }
    expectWebSocketToken();

    platform.threads.runNext();

    EXPECT_TRUE(service->isRunning());
    EXPECT_EQ(1u, platform.threads.pendingCount());
    checkQuiet();
    service->stop();
}

} // namespace
