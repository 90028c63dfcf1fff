#include "TestTelephone.h"

using namespace CloudAnswers;
using namespace OrvaneServiceTypes;

namespace {

class Deletion : public TestTelephone {
protected:
    Deletion() {
        withCallLog();
        withPhonebook();
        withObserver();
        platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\"");
    }
    void connectWithData() {
        expectToken();
        expectExtension();
        expectGrants();
        expectFullCallLog("c1", {missedCall("7")});
        expectFullPhonebook("p1", {{1, "A", "B", "", "Alive"}});
        expectWebSocketToken();
        connect();
        observer.clear();
        ASSERT_TRUE(service->isMissedCallViewed("7"));
    }
    /// Types of the empty full events that came.
    std::vector<int> emptied() const {
        std::vector<int> types;
        for (const auto& event : observer.of("orvaneFullSync")) {
            EXPECT_TRUE(event.data.empty());
            types.push_back(event.type);
        }
        return types;
    }
    void pollAndRefresh() {
        service->refreshPhonebookEntries();
        runThreads();
        passSeconds(60);
    }
};

TEST_F(Deletion, WithoutAChangeClearsNothing) {
    connectWithData();

    service->deleteAllData(false);

    EXPECT_TRUE(logged(6, "deleteAllData() hotDesking[false]"));
    EXPECT_TRUE(emptied().empty());
    EXPECT_TRUE(service->isMissedCallViewed("7"));
    expectIncrementalPhonebook("p1", "p2");
    expectIncrementalCallLog("c1", "c2");
    pollAndRefresh();
}

TEST_F(Deletion, ForAnotherUserClearsAll) {
    connectWithData();

    service->deleteAllData(true);

    EXPECT_TRUE(logged(6, "deleteAllData() hotDesking[true]"));
    EXPECT_EQ((std::vector<int>{0, 5}), emptied());
    EXPECT_FALSE(service->isMissedCallViewed("7"));
    EXPECT_EQ("", platform.store.get(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS));
    std::vector<std::string> contacts;
    service->prepareDataForObservers(contacts);
    EXPECT_TRUE(contacts.empty());
    expectFullPhonebook("p2");
    expectFullCallLog("c2");
    pollAndRefresh();
}

TEST_F(Deletion, AfterAChangeOfTheCallLogAloneKeepsThePhonebook) {
    connectWithData();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_CALL_LOG, "false");
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_PHONEBOOK, "true");

    service->deconfigure();

    EXPECT_TRUE(logged(4, "deconfigure()"));
    EXPECT_EQ((std::vector<int>{0}), emptied());
    EXPECT_FALSE(service->isMissedCallViewed("7"));
    std::vector<std::string> contacts;
    service->prepareDataForObservers(contacts);
    EXPECT_EQ(1u, contacts.size());
    EXPECT_FALSE(service->isRunning());
}

TEST_F(Deletion, AfterAChangeOfThePhonebookAloneKeepsTheCallLog) {
    connectWithData();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_PHONEBOOK, "false");

    service->deconfigure();

    EXPECT_EQ((std::vector<int>{5}), emptied());
    EXPECT_TRUE(service->isMissedCallViewed("7"));
}

TEST_F(Deletion, AfterAChangeOfTheServerClearsBoth) {
    connectWithData();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example");

    service->deconfigure();

    EXPECT_EQ((std::vector<int>{0, 5}), emptied());
    service->asyncLogin();
    EXPECT_TRUE(
        logged(5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] m_state[DECONFIGURED]"));
}

TEST_F(Deletion, OfTheTokensMakesTheNextSynchronisationsFull) {
    connectWithData();

    service->clearSyncTokens();

    EXPECT_TRUE(logged(4, "clearSyncTokens()"));
    EXPECT_TRUE(observer.events.empty());
    expectFullPhonebook("p2", {{1, "A", "B", "", "Alive"}});
    expectFullCallLog("c2");
    pollAndRefresh();
}

TEST_F(Deletion, OfTheTokensHoldsAgainstAnAnswerOnItsWay) {
    connectWithData();
    expectIncrementalCallLog("c1", "c2").whileAwaited([this] { service->clearSyncTokens(); });
    passSeconds(60);

    expectFullCallLog("c3");
    passSeconds(60);
    expectIncrementalCallLog("c3", "c4");
    passSeconds(60);
}

TEST_F(Deletion, LeavesNoCallBehind) {
    connectWithData();
    service->deleteAllData(true);
    // A call that is not known has no path of its own.
    platform.network.expect(HttpClientIfc::HTTP_DELETE, path("")).answers(404);

    service->deleteCallLogEntry("7");
}

TEST_F(Deletion, TakesEachSemaphoreForItsOwnStep) {
    connectWithData();
    platform.locks.keepTrace();

    service->deleteAllData(true);

    EXPECT_EQ("m_bcaLineListSem{} m_callLogSem{write} m_callLogSyncTokenSem{} m_observersSem{} m_observersSem{}",
              platform.locks.trace());
}

TEST_F(Deletion, WithoutAServerForgetsTheDndStatusUnderItsSemaphore) {
    connectWithData();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, "");
    platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, "");
    platform.locks.keepTrace();

    service->deleteAllData(false);

    EXPECT_EQ("m_dndSem{}", platform.locks.trace());
}

TEST_F(Deletion, ByADeconfigurationComesInTheStateDeconfigured) {
    connectWithData();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example");
    observer.reaction = [this](std::vector<std::string>&) {
        EXPECT_FALSE(service->isRunning());
        service->asyncLogin();
    };

    service->deconfigure();

    EXPECT_EQ(2, platform.log.count(5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] "
                                       "m_state[DECONFIGURED]"));
}

TEST_F(Deletion, OfTheTokensTakesTheirSemaphoresOneAfterTheOther) {
    connectWithData();
    platform.locks.keepTrace();

    service->clearSyncTokens();

    EXPECT_EQ("m_callLogSyncTokenSem{} m_bcaLineListSem{} m_phonebookSyncTokenSem{}", platform.locks.trace());
}

class Reload : public TestTelephone {};

TEST_F(Reload, ComesOneSecondAfterTheLastRequest) {
    connectWithEmptyCloud();

    service->reloadAllData();
    pass(600);
    service->reloadAllData();
    pass(999);
    EXPECT_EQ(3u, platform.network.requests.size());
    EXPECT_TRUE(logged(6, "reloadAllData() m_interface_status[true] m_ov_server_type[true]"));

    expectToken();
    expectExtension();
    pass(1);

    EXPECT_TRUE(logged(6, "timerEvent(" + std::to_string(platform.context.withDuration(1000).at(1)) +
                              ") reload all data timer expired, state[CONNECTED]"));
    EXPECT_TRUE(logged(6, "hasUserChanged() retVal[false]"));
}

TEST_F(Reload, DoesNothingWhileTheInterfaceIsDown) {
    platform.store.set(PldsTags::INTERFACE_STATUS, "down");
    initialise();

    service->reloadAllData();

    EXPECT_TRUE(logged(6, "reloadAllData() m_interface_status[false] m_ov_server_type[true]"));
    EXPECT_TRUE(platform.context.runningDurations().empty());
}

TEST_F(Reload, DoesNothingForAnotherServerType) {
    platform.store.set(PldsTags::SERVER_TYPE, "");
    initialise();

    service->reloadAllData();

    EXPECT_TRUE(platform.context.runningDurations().empty());
}

} // namespace
