#include "CallLogTelephone.h"

#include <algorithm>

using namespace CloudAnswers;

namespace {

class ViewedMissedCalls : public CallLogTelephone {
protected:
    void haveViewed(const std::string& item) { platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, item); }
    std::size_t writes() const {
        return static_cast<std::size_t>(
            std::count_if(platform.store.writes.begin(), platform.store.writes.end(), [](const auto& write) {
                return write.first == PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS;
            }));
    }
    bool viewed(const std::string& id) { return service->isMissedCallViewed(id); }
};

TEST_F(ViewedMissedCalls, AreRememberedAndSavedAtOnce) {
    connectWith({missedCall("7")});
    observer.clear();

    service->ageMissedCall("7");

    EXPECT_TRUE(viewed("7"));
    EXPECT_FALSE(viewed("8"));
    EXPECT_EQ("\"7\"", viewedItem());
    EXPECT_TRUE(observer.events.empty());
}

TEST_F(ViewedMissedCalls, AreSavedInOrderWithOneWriteForSeveral) {
    connectWith({});

    service->ageMissedCalls({"9", "10", "a"});

    EXPECT_EQ("\"10\",\"9\",\"a\"", viewedItem());
    EXPECT_EQ(1u, writes());
    EXPECT_TRUE(viewed("9") && viewed("10") && viewed("a"));
}

TEST_F(ViewedMissedCalls, NeedNotBelongToAKnownRecord) {
    connectWith({});

    service->ageMissedCall("unheard of");

    EXPECT_TRUE(viewed("unheard of"));
}

TEST_F(ViewedMissedCalls, AreNotWrittenAgainWhenNothingChanged) {
    haveViewed("\"7\"");
    connectWith({missedCall("7")});
    const std::size_t before = writes();

    service->ageMissedCall("7");
    service->ageMissedCalls({"7"});
    service->ageMissedCalls({});

    EXPECT_EQ(before, writes());
}

TEST_F(ViewedMissedCalls, CanBeNoneWithoutAWrite) {
    initialise();

    service->ageMissedCalls({});

    EXPECT_EQ(0u, writes());
    expectLogin();
    runThreads();
}

TEST_F(ViewedMissedCalls, StayInMemoryWithoutAStore) {
    platform.context.removeService("LocalMgmtIfc");
    initialise();

    service->ageMissedCall("7");

    EXPECT_TRUE(viewed("7"));
    EXPECT_EQ(0u, writes());
    EXPECT_FALSE(platform.log.contains("setPLDSValue()"));
}

TEST_F(ViewedMissedCalls, CountAsSavedEvenWhenTheStoreRefuses) {
    connectWith({});
    platform.store.refuseWrites = true;
    service->ageMissedCall("7");
    EXPECT_EQ(1u, writes());

    service->ageMissedCall("7");

    EXPECT_EQ(1u, writes());
}

TEST_F(ViewedMissedCalls, MayBeMarkedByAnObserverInsideItsCall) {
    connectWith({});
    observer.reaction = [&](Batch&) { service->ageMissedCall("7"); };
    expectPoll("c1", "c2");

    poll();

    EXPECT_TRUE(viewed("7"));
}

TEST_F(ViewedMissedCalls, ThatAFullSynchronisationConfirmsStay) {
    haveViewed("\"7\",\"8\"");

    connectWith({missedCall("7"), missedCall("8"), missedCall("9")});

    EXPECT_TRUE(viewed("7") && viewed("8"));
    EXPECT_FALSE(viewed("9"));
    EXPECT_EQ("\"7\",\"8\"", viewedItem());
    EXPECT_TRUE(logged(6, "handleCallLogResponse()  [7] keeps in m_viewedMissedCallIds"));
    EXPECT_TRUE(logged(4, "handleCallLogResponse() m_callLogMap.size[3] fullSync[true] callRecordsVector.size[3] "
                          "m_syncViewedMissedCallIds[true], m_needToSaveViewedMissedCallIds[true]"));
}

TEST_F(ViewedMissedCalls, ThatAFullSynchronisationDoesNotConfirmGo) {
    haveViewed("\"7\",\"8\"");

    connectWith({missedCall("8")});

    EXPECT_FALSE(viewed("7"));
    EXPECT_TRUE(viewed("8"));
    EXPECT_EQ("\"8\"", viewedItem());
}

TEST_F(ViewedMissedCalls, AreConfirmedAsMissedCallsOnly) {
    haveViewed("\"7\",\"8\"");

    connectWith({call("7"), missedCall("8")});

    EXPECT_FALSE(viewed("7")) << "it is no missed call any more";
    EXPECT_TRUE(viewed("8"));
}

TEST_F(ViewedMissedCalls, AreConfirmedByRecordsInTheLogOnly) {
    haveViewed("\"7\",\"8\"");

    connectWith({missedCall("7").gone(), missedCall("8")});

    EXPECT_FALSE(viewed("7")) << "a deleted record is missed, but not in the log";
    EXPECT_TRUE(viewed("8"));
}

TEST_F(ViewedMissedCalls, ThatNobodyConfirmsGoFromMemoryAndStayInTheStore) {
    haveViewed("\"7\",\"8\"");

    connectWith({});

    EXPECT_FALSE(viewed("7") || viewed("8"));
    EXPECT_EQ("\"7\",\"8\"", viewedItem());
    EXPECT_EQ(0u, writes());
    service->ageMissedCall("9");
    EXPECT_EQ("\"9\"", viewedItem()) << "the next save writes the smaller set";
}

TEST_F(ViewedMissedCalls, AreWrittenWhenTheirNewFormIsAsLongAsTheOldOne) {
    haveViewed("\"7\"");
    connectWith({});

    service->ageMissedCall("8");

    EXPECT_EQ("\"8\"", viewedItem());
}

TEST_F(ViewedMissedCalls, ThatWereDroppedLeaveTheStoreWithTheNextMarkThoughItAddsNothing) {
    haveViewed("\"7\"");
    expectToken();
    expectExtension();
    expectGrants();
    expectFullCallLog("c1").whileAwaited([this] { service->ageMissedCall("8"); });
    expectWebSocketToken();
    connect();
    EXPECT_EQ("\"7\",\"8\"", viewedItem()) << "nothing was confirmed, so nothing was saved";

    service->ageMissedCall("8");
    EXPECT_EQ("\"8\"", viewedItem());

    service->clearSyncTokens();
    expectFullCallLog("c2").whileAwaited([this] { service->ageMissedCall("9"); });
    poll();
    EXPECT_EQ("\"8\",\"9\"", viewedItem());

    service->ageMissedCalls({});
    EXPECT_EQ("\"9\"", viewedItem());
}

TEST_F(ViewedMissedCalls, GoFromMemoryWhenAFullSynchronisationGetsNoAnswer) {
    haveViewed("\"7\"");
    expectToken();
    expectExtension();
    expectGrants();
    expectFullCallLog().answers(500, "");
    expectWebSocketToken();
    connect();

    EXPECT_FALSE(viewed("7"));
    EXPECT_EQ("\"7\"", viewedItem());
}

TEST_F(ViewedMissedCalls, AreLeftAloneByIncrementalSynchronisations) {
    connectWith({missedCall("7"), missedCall("8")});
    service->ageMissedCalls({"7", "8"});
    const std::size_t before = writes();
    expectPoll("c1", "c2", {missedCall("7").gone(), missedCall("9")});

    poll();

    EXPECT_TRUE(viewed("7") && viewed("8"));
    EXPECT_EQ(before, writes());
    EXPECT_FALSE(platform.log.contains("keeps in m_viewedMissedCallIds"));
}

TEST_F(ViewedMissedCalls, AreReconciledAnewByEachFullSynchronisation) {
    connectWith({missedCall("7"), missedCall("8")});
    service->ageMissedCalls({"7", "8"});
    service->clearSyncTokens();
    expectFullCallLog("c2", {missedCall("7")});
    poll();
    EXPECT_EQ("\"7\"", viewedItem());
    service->clearSyncTokens();
    expectFullCallLog("c3", {missedCall("7")});

    poll();

    EXPECT_TRUE(viewed("7"));
    EXPECT_FALSE(viewed("8"));
    EXPECT_EQ("\"7\"", viewedItem());
}

TEST_F(ViewedMissedCalls, ConfirmedByAReconciliationThatBeginsAnewStay) {
    haveViewed("\"7\"");
    connectWith({missedCall("7")});
    service->clearSyncTokens();
    expectFullCallLog("c2", {missedCall("7")});
    Batch unpublished;
    bool fullSync = false;
    service->getCallLog(unpublished, fullSync);
    service->clearSyncTokens();
    expectFullCallLog("c3", {});

    service->getCallLogs();

    EXPECT_TRUE(viewed("7"));
}

TEST_F(ViewedMissedCalls, MarkedDuringAReconciliationStay) {
    haveViewed("\"7\"");
    expectToken();
    expectExtension();
    expectGrants();
    expectFullCallLog("c1", {missedCall("7")}).whileAwaited([this] { service->ageMissedCall("8"); });
    expectWebSocketToken();
    connect();

    EXPECT_TRUE(viewed("7") && viewed("8"));
    EXPECT_EQ("\"7\",\"8\"", viewedItem());
}

} // namespace
