#include "SharedLineTelephone.h"

using CloudAnswers::call;
using CloudAnswers::missedCall;
using CloudAnswers::recordText;
using OrvaneServiceTypes::DATA_CALL_LOG;

namespace {

/// Lines that have just become ready, and lines that are gone.
class SharedLineChanges : public SharedLineTelephone {};

} // namespace

// ---- New lines ---------------------------------------------------------------------------------------------------

TEST_F(SharedLineChanges, ANewLinesRecordsGoOutAsAnIncrementalEventAndVoicemailFollows) {
    withObserver();
    connectWithLines({{"201", "A"}});
    expectFullLineLog("201", "t1", {call("a")});

    overview("+49201@example", "A");

    ASSERT_EQ(2u, observer.events.size());
    EXPECT_EQ("orvaneIncrementalSync", observer.events[0].operation);
    EXPECT_EQ((std::vector<std::string>{received("a", "201")}), observer.events[0].data);
    EXPECT_EQ("orvaneVoicemail", observer.events[1].operation);
    EXPECT_EQ(1u, line("201").m_bcaLinesCcallLogMap.size());
}

TEST_F(SharedLineChanges, BeforeTheFirstOwnSynchronisationANewLinesRecordsAreAFullEvent) {
    connectWithLines({{"201", "A"}});
    withObserver();
    expectFullLineLog("201", "t1", {call("a")});

    overview("+49201@example", "A");

    EXPECT_EQ((std::vector<std::string>{received("a", "201")}), lastBatch("orvaneFullSync", DATA_CALL_LOG));
}

TEST_F(SharedLineChanges, NoNewLinesPublishNothing) {
    withObserver();
    connectWithLines({});

    service->syncDataForBcaLines({});

    EXPECT_TRUE(observer.events.empty());
}

TEST_F(SharedLineChanges, AnUnknownNewLineIsPassedOver) {
    withObserver();
    connectWithReadyLines({{"202", "B"}});
    expectIncrementalLineLog("202", "t202", "u202");

    service->syncDataForBcaLines({"404", "202"});

    EXPECT_TRUE(logged(2, "syncDataForBcaLines() - BCA Line (404) not found"));
    EXPECT_EQ("u202", line("202").callLogSyncToken);
    EXPECT_EQ(1u, observer.of("orvaneIncrementalSync").size());
}

TEST_F(SharedLineChanges, AnUnknownNewLineAloneStillPublishes) {
    withObserver();
    connectWithLines({});

    service->syncDataForBcaLines({"404"});

    ASSERT_EQ(2u, observer.events.size());
    EXPECT_EQ("orvaneIncrementalSync", observer.events[0].operation);
    EXPECT_TRUE(observer.events[0].data.empty());
    EXPECT_EQ("orvaneVoicemail", observer.events[1].operation);
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(SharedLineChanges, SeveralNewLinesArePublishedOnceWithTheirViewedCallsKept) {
    withObserver();
    connectWithLines({{"201", "Sales"}, {"203", "Sales"}});
    service->ageMissedCalls({"a", "c"});
    expectFullLineLog("201", "t1", {missedCall("a")});
    expectFullLineLog("203", "t3", {missedCall("c")});

    overview("+4930@example", "Sales");

    ASSERT_EQ(2u, observer.events.size());
    EXPECT_EQ("orvaneIncrementalSync", observer.events[0].operation);
    EXPECT_EQ((std::vector<std::string>{recordText(missedCall("a"), "Missed", "+49301", "Anna", "Bert", "+4930"),
                                        recordText(missedCall("c"), "Missed", "+49301", "Anna", "Bert", "+4930")}),
              observer.events[0].data);
    EXPECT_EQ("orvaneVoicemail", observer.events[1].operation);
    EXPECT_TRUE(service->isMissedCallViewed("a")) << "the second line's answer does not begin anew";
    EXPECT_TRUE(service->isMissedCallViewed("c"));
}

TEST_F(SharedLineChanges, ANewLineThatGoesAwayDuringItsRequestIsReportedAndItsRecordsAreStillPublished) {
    withObserver();
    connectWithLines({{"201", "A"}});
    expectFullLineLog("201", "t1", {call("a")}).whileAwaited([this] { service->deleteAllData(true); });

    overview("+49201@example", "A");

    EXPECT_TRUE(logged(2, "syncDataForBcaLines() - BCA Line (201) disappeared meanwhile"));
    EXPECT_EQ(0u, service->getBcaLineListSize());
    EXPECT_EQ((std::vector<std::string>{received("a", "201")}), lastBatch("orvaneFullSync", DATA_CALL_LOG));
}

// ---- Lines that went away ----------------------------------------------------------------------------------------

TEST_F(SharedLineChanges, RecordsOfRemovedLinesGoAsBareIdsInOrder) {
    withObserver();
    connectWithLines({});
    BcaLineType first;
    first.m_bcaLinesCcallLogMap = {{"z", "{z}"}, {"y", "{y}"}};
    BcaLineType second;
    second.m_bcaLinesCcallLogMap = {{"a", "{a}"}};

    service->removeSyncedDataForBcaLines({first, second});

    ASSERT_EQ(2u, observer.events.size());
    EXPECT_EQ("orvaneIncrementalSync", observer.events[0].operation);
    EXPECT_EQ((std::vector<std::string>{"y", "z", "a"}), observer.events[0].data);
    EXPECT_EQ("orvaneVoicemail", observer.events[1].operation);
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(SharedLineChanges, WithoutATokenTheIdsOfRemovedLinesAreAFullEvent) {
    connectWithLines({});
    withObserver();
    BcaLineType removed;
    removed.m_bcaLinesCcallLogMap = {{"a", "{a}"}};

    service->removeSyncedDataForBcaLines({removed});

    EXPECT_EQ((std::vector<std::string>{"a"}), lastBatch("orvaneFullSync", DATA_CALL_LOG));
}

TEST_F(SharedLineChanges, NoRemovedLinesPublishNothing) {
    withObserver();
    connectWithLines({});

    service->removeSyncedDataForBcaLines({});

    EXPECT_TRUE(observer.events.empty());
}

TEST_F(SharedLineChanges, WithdrawnIdsStayViewed) {
    connectWithLines({{"201", "A"}});
    expectFullLineLog("201", "t1", {missedCall("a")});
    overview("+49201@example", "A");
    service->ageMissedCall("a");
    expectGrants({});

    service->devicesChanged();

    EXPECT_TRUE(service->isMissedCallViewed("a"));
}
