#include "CallLogTelephone.h"

using namespace CloudAnswers;

namespace {

class CallDeletion : public CallLogTelephone {
protected:
    Exchange& expectDeletion(const std::string& target) {
        return platform.network.expect(HttpClientIfc::HTTP_DELETE, target).answers(204, "");
    }
    Exchange& expectDeletionOf(const std::string& id) { return expectDeletion(path(own("/call-log/")) + id); }
};

TEST_F(CallDeletion, ReachesTheCloud) {
    connectWith({call("1"), call("2")});
    observer.clear();
    expectDeletionOf("1");

    service->deleteCallLogEntry("1");

    EXPECT_TRUE(logged(6, "deleteCallLogEntry() statusCode[204] responseData[]"));
    EXPECT_TRUE(observer.events.empty());
    expectPoll("c1", "c2", {call("1").gone()});
    poll();
    EXPECT_TRUE(logged(4, "handleCallLogResponse() something went wrong with callId [1]")) << "it was gone already";
}

TEST_F(CallDeletion, OfAViewedCallForgetsItBeforeTheCloudIsAsked) {
    connectWith({missedCall("7"), missedCall("8")});
    service->ageMissedCalls({"7", "8"});
    expectDeletionOf("7").whileAwaited([this] {
        EXPECT_EQ("\"8\"", viewedItem());
        EXPECT_FALSE(service->isMissedCallViewed("7"));
    });

    service->deleteCallLogEntry("7");

    EXPECT_TRUE(service->isMissedCallViewed("8"));
}

TEST_F(CallDeletion, OfACallThatIsNotViewedWritesNothing) {
    connectWith({missedCall("7"), missedCall("8")});
    service->ageMissedCall("8");
    const std::size_t writes = platform.store.writes.size();
    expectDeletionOf("7");

    service->deleteCallLogEntry("7");

    EXPECT_EQ(writes, platform.store.writes.size());
}

TEST_F(CallDeletion, OfACallThatIsNotViewedLeavesTheStoreEvenWhenItHoldsMoreThanTheMemory) {
    platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\",\"8\"");
    connectWith({}); // nobody confirms them: gone from memory, kept in the store
    expectDeletion(prefix);

    service->deleteCallLogEntry("9");

    EXPECT_EQ("\"7\",\"8\"", viewedItem());
}

TEST_F(CallDeletion, TakesTheCallOutOfTheLogBeforeTheCloudIsAsked) {
    connectWith({call("1")});
    Batch batch;
    expectDeletionOf("1").whileAwaited([&] {
        std::string body = callLog("c2", {call("1").gone()});
        bool fullSync = false;
        service->handleCallLogResponse(HttpClientIfc::STATUS_OK, body, batch, fullSync);
    });

    service->deleteCallLogEntry("1");

    EXPECT_EQ(Batch(), batch);
    EXPECT_TRUE(logged(4, "handleCallLogResponse() something went wrong with callId [1]"));
}

TEST_F(CallDeletion, OfAnUnknownCallGoesToTheBarePrefix) {
    connectWith({call("1")});
    expectDeletion(prefix).answers(404, "what");

    service->deleteCallLogEntry("9");

    EXPECT_TRUE(logged(2, "deleteCallLogEntry() statusCode[404] responseData[what]"));
}

TEST_F(CallDeletion, ThatTheCloudRefusesIsLoggedAndTheCallComesBack) {
    connectWith({missedCall("7")});
    service->ageMissedCall("7");
    expectDeletionOf("7").answers(200, "no");
    service->deleteCallLogEntry("7");
    EXPECT_TRUE(logged(2, "deleteCallLogEntry() statusCode[200] responseData[no]"));

    service->clearSyncTokens();
    expectFullCallLog("c2", {missedCall("7")});
    poll();

    EXPECT_EQ((Batch{missed(missedCall("7"))}), fullBatch());
    EXPECT_FALSE(service->isMissedCallViewed("7"));
}

TEST_F(CallDeletion, WithoutAnAnswerIsLogged) {
    connectWith({call("1")});
    expectDeletionOf("1").answers(500, "");

    service->deleteCallLogEntry("1");

    EXPECT_TRUE(logged(2, "deleteCallLogEntry() error contacting server"));
    expectPoll("c1", "c2", {call("1")});
    poll();
    EXPECT_EQ((Batch{received(call("1"))}), incrementalBatch()) << "it was gone here all the same";
}

TEST_F(CallDeletion, HoldsNoSemaphoreWhileTheCloudIsAsked) {
    connectWith({call("1")});
    std::vector<std::string> held;
    expectDeletionOf("1").whileAwaited([&] { held = platform.locks.held(); });

    service->deleteCallLogEntry("1");

    EXPECT_EQ(std::vector<std::string>{"m_connectionSem"}, held);
}

class TotalDeletion : public CallDeletion {
protected:
    Exchange& expectTotalDeletion() { return expectDeletion(path(own("/call-log"))); }
    /// The viewed call is there, and the next synchronisation is an incremental one.
    void expectNothingChanged() {
        EXPECT_TRUE(service->isMissedCallViewed("7"));
        EXPECT_EQ(0u, platform.threads.pendingCount());
        expectPoll("c1", "c2");
        poll();
    }
    void connectWithViewedCall() {
        connectWith({missedCall("7")});
        service->ageMissedCall("7");
        observer.clear();
    }
};

TEST_F(TotalDeletion, StartsAFullSynchronisation) {
    connectWithViewedCall();
    expectTotalDeletion();

    EXPECT_TRUE(service->deleteAllCallLogEntries());

    EXPECT_FALSE(service->isMissedCallViewed("7"));
    EXPECT_EQ("", viewedItem());
    EXPECT_TRUE(observer.events.empty());
    ASSERT_EQ(1u, platform.threads.pendingCount());
    expectFullCallLog("c2");
    runThreads();
    EXPECT_EQ(Batch(), fullBatch());
}

TEST_F(TotalDeletion, LeavesTheCallsToTheFullSynchronisation) {
    connectWithViewedCall();
    expectTotalDeletion();
    service->deleteAllCallLogEntries();

    // It is known still: the request goes to its own path.
    expectDeletion(path(own("/call-log/7")));
    service->deleteCallLogEntry("7");

    expectFullCallLog("c2");
    runThreads();
}

TEST_F(TotalDeletion, MakesTheNextCycleFullWhenTheRefreshBacksOff) {
    connectWithViewedCall();
    service->refreshCallLogEntries();
    expectTotalDeletion();

    EXPECT_TRUE(service->deleteAllCallLogEntries());

    EXPECT_EQ(1u, platform.threads.pendingCount());
    expectFullCallLog("c2");
    runThreads();
}

TEST_F(TotalDeletion, ThatIsRefusedChangesNothing) {
    connectWithViewedCall();
    expectTotalDeletion().answers(200, "no");

    EXPECT_FALSE(service->deleteAllCallLogEntries());

    EXPECT_TRUE(logged(2, "deleteAllCallLogEntries() statusCode[200] responseData[no]"));
    expectNothingChanged();
}

TEST_F(TotalDeletion, WithoutAnAnswerChangesNothing) {
    connectWithViewedCall();
    expectTotalDeletion().answers(503, "");

    EXPECT_FALSE(service->deleteAllCallLogEntries());

    EXPECT_TRUE(logged(2, "deleteAllCallLogEntries() error contacting server"));
    expectNothingChanged();
}

} // namespace
