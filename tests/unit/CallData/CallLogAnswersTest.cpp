#include "CallLogTelephone.h"

#include <algorithm>

using namespace CloudAnswers;

namespace {

const std::string summary = "handleCallLogResponse() m_callLogMap.size[";

class CallLogAnswers : public CallLogTelephone {};

TEST_F(CallLogAnswers, OfAnyStatusBut200MakeTheNextSynchronisationFull) {
    connectWith({call("1")});
    observer.clear();
    expectPoll("c1", "c2").answers(404, "gone");

    poll();

    EXPECT_TRUE(logged(2, "handleCallLogResponse() HTTP[404] responseData:\ngone"));
    EXPECT_EQ(Batch(), incrementalBatch());
    EXPECT_TRUE(observer.of("orvaneFullSync").empty());
    expectFullCallLog("c3");
    poll();
}

TEST_F(CallLogAnswers, WithoutABodyMakeTheNextSynchronisationFull) {
    connectWith({});
    expectPoll("c1", "c2").answers(200, "");

    poll();

    EXPECT_TRUE(logged(2, "handleCallLogResponse() HTTP[200] responseData:\n"));
    expectFullCallLog("c3");
    poll();
}

TEST_F(CallLogAnswers, ThatDoNotComeMakeTheNextSynchronisationFull) {
    connectWith({});
    platform.log.clear();
    expectPoll("c1", "c2").answers(500, "");

    poll();

    EXPECT_FALSE(platform.log.contains("handleCallLogResponse()"));
    EXPECT_EQ(Batch(), incrementalBatch());
    expectFullCallLog("c3");
    poll();
}

TEST_F(CallLogAnswers, ThatDoNotComeDuringARecoveryKeepTheToken) {
    connectWith({});
    openChannel(60, 120);
    platform.store.change(PldsTags::INTERFACE_STATUS, "down");
    ASSERT_EQ(1u, platform.context.running(120000).size());

    poll();

    EXPECT_TRUE(logged(2, "connectionHandler() m_interface_status[false] m_ov_server_type[true]"));
    // The interface comes back before the recovery begins; the recovery itself stays pending.
    platform.store.change(PldsTags::INTERFACE_STATUS, "up");
    expectPoll("c1", "c2");
    poll();
    expectWebSocketToken();
    runThreads();
}

TEST_F(CallLogAnswers, ThatDoNotParseLeaveTheToken) {
    connectWith({call("1")});
    observer.clear();
    expectPoll("c1", "").answers(200, "{\"records\":[");

    poll();

    EXPECT_TRUE(platform.log.hasBeginning(2, "handleCallLogResponse() error on line 1:12(12) "));
    EXPECT_TRUE(logged(4, summary + "1] fullSync[false] callRecordsVector.size[0] m_syncViewedMissedCallIds[false], "
                                    "m_needToSaveViewedMissedCallIds[false]"));
    EXPECT_EQ(Batch(), incrementalBatch());
    expectPoll("c1", "c2");
    poll();
}

TEST_F(CallLogAnswers, ThatDoNotParseEmptyTheObserversAfterAFullRequest) {
    expectToken();
    expectExtension();
    expectGrants();
    expectFullCallLog().answers(200, "no json");
    expectWebSocketToken();
    connect();

    EXPECT_EQ(Batch(), fullBatch());
    EXPECT_TRUE(observer.of("orvaneIncrementalSync").empty());
    expectFullCallLog("c1");
    poll();
}

TEST_F(CallLogAnswers, OfAnyStatusBut200AreIncrementalEvenAfterAFullRequest) {
    expectToken();
    expectExtension();
    expectGrants();
    expectFullCallLog().answers(404, "x");
    expectWebSocketToken();
    connect();

    EXPECT_EQ(Batch(), incrementalBatch());
    EXPECT_TRUE(observer.of("orvaneFullSync").empty());
}

TEST_F(CallLogAnswers, WithoutSyncInfoLeaveTheTokenAndStillCount) {
    connectWith({});
    expectPoll("c1", "").answers(200, "{\"records\":[" + call("1").json() + "]}");

    poll();

    EXPECT_EQ((Batch{received(call("1"))}), incrementalBatch());
    expectPoll("c1", "c2");
    poll();
}

TEST_F(CallLogAnswers, WhoseSyncInfoHasNoTokenLeaveTheToken) {
    connectWith({});
    expectPoll("c1", "").answers(200, R"({"syncInfo":{"syncToken":7},"records":[]})");

    poll();

    expectPoll("c1", "c2");
    poll();
}

TEST_F(CallLogAnswers, WithoutRecordsStoreTheTokenAllTheSame) {
    connectWith({});
    expectPoll("c1", "").answers(200, R"({"syncInfo":{"syncToken":"c2"},"records":{}})");

    poll();

    EXPECT_TRUE(logged(2, "handleCallLogResponse() records not an array"));
    EXPECT_TRUE(logged(4, summary + "0] fullSync[false] callRecordsVector.size[0] m_syncViewedMissedCallIds[false], "
                                    "m_needToSaveViewedMissedCallIds[false]"));
    expectPoll("c2", "c3");
    poll();
}

TEST_F(CallLogAnswers, WithEmptyRecordsAreNoFault) {
    connectWith({});
    observer.clear();
    expectPoll("c1", "c2");

    poll();

    EXPECT_FALSE(logged(2, "handleCallLogResponse() records not an array"));
    EXPECT_EQ(Batch(), incrementalBatch());
    EXPECT_TRUE(observer.of("orvaneFullSync").empty());
    expectPoll("c2", "c3");
    poll();
}

TEST_F(CallLogAnswers, WithBadRecordsGiveTheGoodOnes) {
    connectWith({});
    expectPoll("c1", "").answers(200, R"({"syncInfo":{"syncToken":"c2"},"records":[7,null,[],{},)" + call("1").json() +
                                          ",\"x\"]}");

    poll();

    EXPECT_EQ((Batch{received(call("1"))}), incrementalBatch());
}

TEST_F(CallLogAnswers, DropADeletionThatLacksAMember) {
    connectWith({call("1")});
    expectPoll("c1", "").answers(200, R"({"syncInfo":{"syncToken":"c2"},"records":[{"id":"1","deleted":true}]})");

    poll();

    EXPECT_EQ(Batch(), incrementalBatch());
    EXPECT_TRUE(logged(3, R"(getCallLogRecordFromObject() data missing from [{"id": "1", "deleted": true}])"));
}

TEST_F(CallLogAnswers, CountEachElementsDeletionForItselfAlone) {
    connectWith({call("1"), call("2")});
    Call changed = call("2");
    changed.durationSeconds = 3;
    expectPoll("c1", "c2", {call("1").gone(), changed});

    poll();

    EXPECT_EQ((Batch{"1", received(changed)}), incrementalBatch());
}

TEST_F(CallLogAnswers, MayCreateChangeAndDeleteOneRecordInOneBatch) {
    connectWith({});
    Call changed = call("1");
    changed.durationSeconds = 3;
    expectPoll("c1", "c2", {call("1"), changed, call("1").gone(), call("1")});

    poll();

    EXPECT_EQ((Batch{received(call("1")), received(changed), "1", received(call("1"))}), incrementalBatch());
}

TEST_F(CallLogAnswers, ForgetADeletedRecordSoThatItCanComeAnew) {
    connectWith({call("1")});
    expectPoll("c1", "c2", {call("1").gone()});
    poll();
    expectPoll("c2", "c3", {call("1")});

    poll();

    EXPECT_EQ((Batch{received(call("1"))}), incrementalBatch());
}

TEST_F(CallLogAnswers, KeepAChangedRecordAsItIsNow) {
    connectWith({call("1")});
    Call changed = call("1");
    changed.durationSeconds = 3;
    expectPoll("c1", "c2", {changed});
    poll();
    expectPoll("c2", "c3", {changed});
    poll();
    EXPECT_EQ(Batch(), incrementalBatch());

    expectPoll("c3", "c4", {call("1")});
    poll();

    EXPECT_EQ((Batch{received(call("1"))}), incrementalBatch()) << "the former text is a change again";
}

TEST_F(CallLogAnswers, AreMergedOneRecordAfterTheOtherEachWithAllThatFollowsFromIt) {
    connectWith({});
    platform.log.clear();
    expectPoll("c1", "c2", {dialledCall("1", "+111"), call("2")});

    poll();

    std::vector<std::string> steps;
    for (const auto& line : platform.log.lines()) {
        for (const char* step : {"create new entry", "setPLDSValue()", "m_callLogMap.size"}) {
            if (line.text.find(step) != std::string::npos) {
                steps.push_back(step);
            }
        }
    }
    EXPECT_EQ((std::vector<std::string>{"create new entry", "setPLDSValue()", "create new entry", "m_callLogMap.size"}),
              steps);
}

TEST_F(CallLogAnswers, ToAFullRequestReplaceWhatIsThere) {
    connectWith({call("1"), call("2")});
    service->clearSyncTokens();
    expectFullCallLog("c2", {call("2")});
    poll();
    EXPECT_EQ((Batch{received(call("2"))}), fullBatch());

    expectPoll("c2", "c3", {call("1").gone()});
    poll();

    EXPECT_TRUE(logged(4, "handleCallLogResponse() something went wrong with callId [1]"));
}

TEST_F(CallLogAnswers, ThatFailAfterAFullRequestLeaveTheLogEmpty) {
    connectWith({call("1")});
    service->clearSyncTokens();
    expectFullCallLog().answers(500, "");
    poll();

    expectFullCallLog("c2", {call("1")});
    poll();

    EXPECT_EQ((Batch{received(call("1"))}), fullBatch()) << "nothing was kept to compare with";
}

TEST_F(CallLogAnswers, OfSeveralRecordsKeepTheirOrder) {
    connectWith({call("b"), call("a"), call("c")});

    EXPECT_EQ((Batch{received(call("b")), received(call("a")), received(call("c"))}), fullBatch());
}

class LastDialledNumber : public CallLogTelephone {
protected:
    long writes() const {
        return std::count_if(platform.store.writes.begin(), platform.store.writes.end(),
                             [](const auto& write) { return write.first == PldsTags::LAST_DIALLED_NUMBER; });
    }
};

TEST_F(LastDialledNumber, IsThatOfTheFirstDialledCall) {
    connectWith({call("1"), dialledCall("2", "+111"), dialledCall("3", "+222")});

    EXPECT_EQ("+111", lastDialled());
    EXPECT_EQ(1, writes());
    EXPECT_TRUE(logged(4, "setPLDSValue() key[" + PldsTags::LAST_DIALLED_NUMBER + "] retVal[true]"));
}

TEST_F(LastDialledNumber, PassesOverACallWithoutANumber) {
    Call unknown = dialledCall("1", "");
    connectWith({unknown, dialledCall("2", "+222")});

    EXPECT_EQ("+222", lastDialled());
    EXPECT_EQ(1, writes());
}

TEST_F(LastDialledNumber, PassesOverADeletedCall) {
    connectWith({});
    expectPoll("c1", "c2", {dialledCall("1", "+111").gone(), dialledCall("2", "+222")});

    poll();

    EXPECT_EQ("+222", lastDialled());
}

TEST_F(LastDialledNumber, PassesOverCallsThatWereNotDialled) {
    connectWith({call("1"), missedCall("2")});

    EXPECT_EQ(0, writes());
}

TEST_F(LastDialledNumber, IsWrittenForARepeatedRecordToo) {
    connectWith({dialledCall("1", "+111")});
    platform.store.set(PldsTags::LAST_DIALLED_NUMBER, "");
    expectPoll("c1", "c2", {dialledCall("1", "+111")});

    poll();

    EXPECT_EQ("+111", lastDialled());
    EXPECT_EQ(Batch(), incrementalBatch());
}

} // namespace
