#include "CallLogTelephone.h"

using namespace CloudAnswers;

namespace {

class CallLogSync : public CallLogTelephone {};

TEST_F(CallLogSync, TheFirstSynchronisationIsAFullOneAndPublishesAllRecordsInTheirOrder) {
    connectWith({call("2"), call("1")});

    EXPECT_EQ((Batch{received(call("2")), received(call("1"))}), fullBatch());
    EXPECT_TRUE(logged(4, "handleCallLogResponse() m_callLogMap.size[2] fullSync[true] callRecordsVector.size[2] "
                          "m_syncViewedMissedCallIds[true], m_needToSaveViewedMissedCallIds[false]"));
}

TEST_F(CallLogSync, TheNextSynchronisationUsesTheTokenAsItStands) {
    connectWith({}, "a b/+?");
    expectIncrementalCallLog("a b/+?", "c2", {});

    passSeconds(60);

    EXPECT_EQ(Batch(), incrementalBatch());
}

TEST_F(CallLogSync, ANewAChangedAndADeletedCallAreThreeEntries) {
    connectWith({call("1"), call("2")});
    Call changed = call("1");
    changed.durationSeconds = 70;
    expectIncrementalCallLog("c1", "c2", {call("3"), changed, call("2").gone()});

    passSeconds(60);

    EXPECT_EQ((Batch{received(call("3")), received(changed), "2"}), incrementalBatch());
    EXPECT_TRUE(logged(6, "handleCallLogResponse() create new entry [" + received(call("3")) + "]"));
    EXPECT_TRUE(logged(4, "handleCallLogResponse() updating changed record [" + received(changed) + "]"));
    EXPECT_TRUE(logged(4, "handleCallLogResponse() deleting record [2]"));
}

TEST_F(CallLogSync, ARepeatedRecordIsIgnored) {
    connectWith({call("1")});
    expectIncrementalCallLog("c1", "c2", {call("1")});

    passSeconds(60);

    EXPECT_EQ(Batch(), incrementalBatch());
    EXPECT_TRUE(logged(4, "handleCallLogResponse() ignoring same entry, not updating [" + received(call("1")) + "]"));
}

TEST_F(CallLogSync, ADeletedRecordThatIsNotThereChangesNothing) {
    connectWith({});
    expectIncrementalCallLog("c1", "c2", {call("9").gone()});

    passSeconds(60);

    EXPECT_EQ(Batch(), incrementalBatch());
    EXPECT_TRUE(logged(4, "handleCallLogResponse() something went wrong with callId [9]"));
}

} // namespace
