#include "SharedLineTelephone.h"

#include "utilities/Serializer.h"

using CloudAnswers::missedCall;

namespace {

/// Which viewed missed calls a synchronisation in which shared lines take part confirms, and which it drops.
class SharedLineReconciliation : public SharedLineTelephone {
protected:
    bool viewed(const std::string& id) { return service->isMissedCallViewed(id); }
};

} // namespace

TEST_F(SharedLineReconciliation, ALinesFullSynchronisationAloneDropsTheViewedIdsOfAllOthers) {
    withObserver();
    connectWithLines({{"201", "A"}});
    service->ageMissedCalls({"elsewhere", "here"});
    expectFullLineLog("201", "t1", {missedCall("here")});

    overview("+49201@example", "A");

    EXPECT_TRUE(viewed("here"));
    EXPECT_FALSE(viewed("elsewhere"));
    EXPECT_TRUE(logged(6, "getBcaCallLog() - full sync! oldViewedMissedCallIds [2] viewedMissedCallIds [2]"));
    EXPECT_EQ(Serializer::serialize(std::set<std::string>{"here"}),
              platform.store.get(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS));
}

TEST_F(SharedLineReconciliation, ARunningReconciliationIsNotBegunAgain) {
    connectWithReadyLines({{"201", "A"}});
    withObserver(); // empties the tokens
    service->ageMissedCalls({"own", "line"});
    expectFullCallLog("c1", {missedCall("own")});
    expectFullLineLog("201", "t1", {missedCall("line")});

    service->getCallLogs();

    EXPECT_TRUE(viewed("own")) << "confirmed by the answer for the user's own line";
    EXPECT_TRUE(viewed("line"));
    EXPECT_FALSE(platform.log.contains("getBcaCallLog() - full sync!"));
}

TEST_F(SharedLineReconciliation, AnIncrementalAnswerOfALaterLineConfirmsToo) {
    connectWithReadyLines({{"201", "A"}, {"202", "B"}});
    emptyLineToken("201");
    expectFullCallLog();
    expectFullLineLog("201", "t1");
    expectIncrementalLineLog("202", "t202", "u202", {missedCall("late")});
    service->ageMissedCall("late");

    service->getCallLogs();

    EXPECT_TRUE(viewed("late"));
    EXPECT_TRUE(logged(6, "handleBcaCallLogResponse() [late] keeps in m_viewedMissedCallIds"));
}

TEST_F(SharedLineReconciliation, ThatALineBeginsInTheWalkComesTooLateForTheUsersOwnLine) {
    withObserver();
    connectWithReadyLines({{"201", "A"}, {"202", "B"}});
    emptyLineToken("201");
    service->ageMissedCalls({"own", "late"});
    expectIncrementalCallLog("c1", "c2", {missedCall("own")});
    expectFullLineLog("201", "t1");
    expectIncrementalLineLog("202", "t202", "u202", {missedCall("late")});
    platform.locks.keepTrace();

    service->getCallLogs();

    EXPECT_FALSE(viewed("own"));
    EXPECT_TRUE(viewed("late"));
    EXPECT_TRUE(logged(6, "getBcaCallLog() - full sync! oldViewedMissedCallIds [2] viewedMissedCallIds [2]"));
    EXPECT_NE(std::string::npos, platform.locks.trace().find("m_bcaLineListSem{m_callLogSem{}}"))
        << platform.locks.trace();
}

TEST_F(SharedLineReconciliation, ThatALineHasBegunIsConfirmedByAnIncrementalAnswerForTheUsersOwnLineToo) {
    withObserver();
    connectWithLines({});
    service->ageMissedCall("own");
    BcaLineType copy;
    copy.extensionId = "201";
    std::vector<std::string> batch;
    bool fullSync = false;
    expectFullLineLog("201", "t1");
    service->getBcaCallLog(copy, batch, fullSync); // nothing is published, so the reconciliation goes on
    expectIncrementalCallLog("c1", "c2", {missedCall("own")});

    service->getCallLogs();

    EXPECT_TRUE(viewed("own"));
}

TEST_F(SharedLineReconciliation, ACallOfTheUsersOwnLogIsNotConfirmedByALine) {
    withObserver();
    connectWithReadyLines({{"201", "A"}});
    expectIncrementalCallLog("c1", "c2", {missedCall("own")});
    expectIncrementalLineLog("201", "t201", "u201");
    service->getCallLogs();
    service->ageMissedCall("own");
    emptyLineToken("201");
    expectIncrementalCallLog("c2", "c3");
    expectFullLineLog("201", "t1", {missedCall("own")});

    service->getCallLogs();

    EXPECT_FALSE(viewed("own"));
}
