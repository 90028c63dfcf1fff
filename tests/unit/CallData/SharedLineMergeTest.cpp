#include "SharedLineTelephone.h"

using CloudAnswers::call;
using CloudAnswers::Call;
using CloudAnswers::callLog;
using CloudAnswers::dialledCall;
using CloudAnswers::missedCall;
using CloudAnswers::recordText;

namespace {

/// The merge of one answer into a line that is not in the list: the merge works on the copy that it is given.
class SharedLineMerge : public SharedLineTelephone {
protected:
    SharedLineMerge() {
        shared.extensionId = "201";
        shared.phoneNumber = "+49201";
        shared.callLogSyncToken = "before";
    }
    void merge(int status, std::string body) {
        service->handleBcaCallLogResponse(static_cast<HttpClientIfc::eStatusCode>(status), body, shared, batch);
    }
    void merge(const std::vector<Call>& calls) { merge(200, callLog("after", calls)); }
    static std::string received(const Call& one) {
        return recordText(one, "Received", one.fromNumber, one.fromName, one.toName, "+49201");
    }
    int redialWrites() const {
        int count = 0;
        for (const auto& write : platform.store.writes) {
            count += write.first == PldsTags::LAST_DIALLED_NUMBER ? 1 : 0;
        }
        return count;
    }
    std::string redial() const { return platform.store.get(PldsTags::LAST_DIALLED_NUMBER); }

    BcaLineType shared;
    std::vector<std::string> batch;
};

} // namespace

// ---- Answers that hold nothing -----------------------------------------------------------------------------------

TEST_F(SharedLineMerge, AnotherStatusClearsTheToken) {
    merge(404, "gone");

    EXPECT_EQ("", shared.callLogSyncToken);
    EXPECT_TRUE(logged(2, "handleBcaCallLogResponse() HTTP[404] responseData:\ngone"));
    EXPECT_FALSE(platform.log.contains("m_bcaLinesCcallLogMap.size"));
}

TEST_F(SharedLineMerge, AnEmptyBodyClearsTheToken) {
    merge(200, "");

    EXPECT_EQ("", shared.callLogSyncToken);
    EXPECT_TRUE(logged(2, "handleBcaCallLogResponse() HTTP[200] responseData:\n"));
}

TEST_F(SharedLineMerge, AnUnreadableBodyKeepsTheToken) {
    merge(200, "[");

    EXPECT_EQ("before", shared.callLogSyncToken);
    EXPECT_TRUE(logged(2, "handleBcaCallLogResponse() error on line 1:1(1) ']' expected near end of file"));
    EXPECT_TRUE(logged(4, "handleBcaCallLogResponse() m_bcaLinesCcallLogMap.size[0] callRecordsVector.size[0] "
                          "m_syncViewedMissedCallIds[false] m_needToSaveViewedMissedCallIds[false]"));
}

TEST_F(SharedLineMerge, RecordsThatAreNoArrayStillBringTheToken) {
    merge(200, "{\"syncInfo\":{\"syncToken\":\"after\"},\"records\":{}}");

    EXPECT_EQ("after", shared.callLogSyncToken);
    EXPECT_TRUE(logged(2, "handleBcaCallLogResponse() records not an array"));
}

// ---- The token ---------------------------------------------------------------------------------------------------

TEST_F(SharedLineMerge, TheAnswersTokenIsStored) {
    merge(std::vector<Call>{});

    EXPECT_EQ("after", shared.callLogSyncToken);
}

TEST_F(SharedLineMerge, WithAFullSynchronisationPendingTheTokenIsClearedInstead) {
    shared.fullSyncPending = true;

    merge(std::vector<Call>{});

    EXPECT_EQ("", shared.callLogSyncToken);
}

TEST_F(SharedLineMerge, WithoutSyncInfoTheTokenStays) {
    merge(200, "{\"records\":[]}");
    EXPECT_EQ("before", shared.callLogSyncToken);

    merge(200, "{\"syncInfo\":{},\"records\":[]}");
    EXPECT_EQ("before", shared.callLogSyncToken);

    shared.fullSyncPending = true;
    merge(200, "{\"syncInfo\":{\"syncToken\":5},\"records\":[]}");
    EXPECT_EQ("before", shared.callLogSyncToken);
}

// ---- The records -------------------------------------------------------------------------------------------------

TEST_F(SharedLineMerge, ANewRecordCarriesTheLinesPartyAndNumber) {
    merge({call("a")});

    const std::string record = "{Received,a,2026-01-02T03:04:05.000Z,01:05,+49301,Anna,Bert,+49201}";
    EXPECT_EQ((std::vector<std::string>{record}), batch);
    EXPECT_EQ(record, shared.m_bcaLinesCcallLogMap.at("a"));
    EXPECT_TRUE(logged(6, "handleBcaCallLogResponse() create new entry [" + record + "]"));
    EXPECT_TRUE(logged(4, "handleBcaCallLogResponse() m_bcaLinesCcallLogMap.size[1] callRecordsVector.size[1] "
                          "m_syncViewedMissedCallIds[false] m_needToSaveViewedMissedCallIds[false]"));
}

TEST_F(SharedLineMerge, AnOutboundRecordIsTaggedWithItsOwnSide) {
    merge({dialledCall("a", "+4999")});

    EXPECT_EQ(
        (std::vector<std::string>{recordText(dialledCall("a", "+4999"), "Dialled", "+4999", "Bert", "Anna", "+49201")}),
        batch);
}

TEST_F(SharedLineMerge, ADelegatedCallStaysIn) {
    Call delegated = call("a");
    delegated.delegated = true;

    merge({delegated});

    EXPECT_EQ(1u, shared.m_bcaLinesCcallLogMap.size());
}

TEST_F(SharedLineMerge, AnEqualRecordIsIgnored) {
    merge({call("a")});
    batch.clear();

    merge({call("a")});

    EXPECT_TRUE(batch.empty());
    EXPECT_TRUE(
        logged(4, "handleBcaCallLogResponse() ignoring same entry, not updating [" + received(call("a")) + "]"));
}

TEST_F(SharedLineMerge, AChangedRecordIsReplaced) {
    merge({call("a")});
    batch.clear();
    Call changed = call("a");
    changed.fromName = "Annabel";

    merge({changed});

    EXPECT_EQ((std::vector<std::string>{received(changed)}), batch);
    EXPECT_EQ(received(changed), shared.m_bcaLinesCcallLogMap.at("a"));
    EXPECT_TRUE(logged(4, "handleBcaCallLogResponse() - update"));
}

TEST_F(SharedLineMerge, ADeletedRecordGoesAsABareId) {
    merge({call("a")});
    batch.clear();

    merge({call("a").gone()});

    EXPECT_EQ((std::vector<std::string>{"a"}), batch);
    EXPECT_TRUE(shared.m_bcaLinesCcallLogMap.empty());
    EXPECT_TRUE(logged(4, "handleBcaCallLogResponse() deleting record [a]"));
}

TEST_F(SharedLineMerge, ADeletedRecordThatIsUnknownIsPassedOverWithoutALine) {
    platform.log.clear();

    merge({call("a").gone()});

    EXPECT_TRUE(batch.empty());
    EXPECT_TRUE(shared.m_bcaLinesCcallLogMap.empty());
    EXPECT_FALSE(platform.log.contains("something went wrong"));
    EXPECT_FALSE(platform.log.contains("deleting record"));
}

TEST_F(SharedLineMerge, ABadRecordIsDroppedAlone) {
    Call bad = call("bad");
    bad.sessionId = "";

    merge({bad, call("good")});

    EXPECT_EQ((std::vector<std::string>{received(call("good"))}), batch);
}

TEST_F(SharedLineMerge, ACallOfTheUsersOwnLogIsNotTheLines) {
    withObserver();
    expectToken();
    expectExtension();
    expectGrants();
    expectFullCallLog("c1", {call("both")});
    expectWebSocketToken();
    connect();
    platform.store.writes.clear();
    Call changedOnTheLine = dialledCall("both", "+4999");

    merge({changedOnTheLine, call("both").gone()});

    EXPECT_TRUE(batch.empty());
    EXPECT_TRUE(shared.m_bcaLinesCcallLogMap.empty());
    EXPECT_EQ(0, redialWrites());
}

TEST_F(SharedLineMerge, ACallOfBothLogsStaysOnTheLineAsItIs) {
    withObserver();
    connectWithLines({});
    expectIncrementalCallLog("c1", "c2", {call("both")});
    service->getCallLogs();
    shared.m_bcaLinesCcallLogMap["both"] = "{both}";

    merge({missedCall("both"), call("both").gone()});

    EXPECT_TRUE(batch.empty());
    EXPECT_EQ((std::map<std::string, std::string>{{"both", "{both}"}}), shared.m_bcaLinesCcallLogMap);
}

// ---- The number for redial ---------------------------------------------------------------------------------------

TEST_F(SharedLineMerge, TheFirstQualifyingDialledCallSetsTheNumberForRedial) {
    connectWithLines({});
    Call withoutNumber = dialledCall("a", "");
    withoutNumber.toName = "Nobody";

    merge({call("in"), withoutNumber, dialledCall("b", "+491").gone(), dialledCall("c", "+492"),
           dialledCall("d", "+493")});

    EXPECT_EQ("+492", redial());
    EXPECT_EQ(1, redialWrites());
}

TEST_F(SharedLineMerge, AnUnchangedDialledCallSetsItAgain) {
    connectWithLines({});
    merge({dialledCall("a", "+491")});
    platform.store.set(PldsTags::LAST_DIALLED_NUMBER, "other");

    merge({dialledCall("a", "+491")});

    EXPECT_EQ("+491", redial());
}

TEST_F(SharedLineMerge, TheLastLineOfACycleWinsTheNumberForRedial) {
    connectWithReadyLines({{"201", "A"}, {"202", "B"}});
    expectFullCallLog("c1", {dialledCall("own", "+490")});
    expectIncrementalLineLog("201", "t201", "u", {dialledCall("a", "+491")});
    expectIncrementalLineLog("202", "t202", "u", {dialledCall("b", "+492")});

    service->getCallLogs();

    EXPECT_EQ("+492", redial());
    EXPECT_EQ(3, redialWrites());
}

// ---- Sessions that wait for their record -------------------------------------------------------------------------

class SharedLineSessions : public SharedLineTelephone {
protected:
    void SetUp() override {
        connectWithReadyLines({{"201", "A"}});
        openChannel();
        const std::string& frame = platform.webSocket.frames.back();
        const std::size_t begin = frame.find("\"messageId\"");
        ASSERT_NE(std::string::npos, begin);
        const std::size_t open = frame.find('"', frame.find(':', begin)) + 1;
        const std::string messageId = frame.substr(open, frame.find('"', open) - open);
        service->onMessage("[{\"type\":\"ClientRequest\",\"messageId\":\"" + messageId +
                           "\",\"status\":200},{\"id\":\"sub\",\"creationTime\":\"2026-01-01T00:00:00Z\","
                           "\"status\":\"Active\",\"eventFilters\":[\"" +
                           event() + "\"],\"expirationTime\":\"x\",\"expiresIn\":3600}]");
    }
    static std::string event() { return "/restapi/v1.0/account/~/extension/4711/presence?detailedTelephonyState=true"; }
    void callEnds(const std::string& sessionId) {
        service->onMessage("[{\"type\":\"ServerNotification\",\"messageId\":\"n\"},{\"event\":\"" + event() +
                           "\",\"ownerId\":\"4711\",\"body\":{\"activeCalls\":[{\"telephonyStatus\":\"NoCall\","
                           "\"telephonySessionId\":\"" +
                           sessionId + "\"}]}}]");
    }
    bool waits() const { return !platform.context.running(10000).empty(); }
};

TEST_F(SharedLineSessions, ARecordOnALineEndsTheWait) {
    expectFullCallLog();
    expectIncrementalLineLog("201", "t201", "u1");
    callEnds("s-a");
    ASSERT_TRUE(waits());
    expectIncrementalCallLog("c1", "c2");
    expectIncrementalLineLog("201", "u1", "u2", {call("a")});

    passSeconds(10);

    EXPECT_FALSE(waits());
    EXPECT_TRUE(logged(6, "handleBcaCallLogResponse() received record for telephony session [s-a]"));
}

TEST_F(SharedLineSessions, ADeletedRecordThatIsUnknownEndsTheWaitToo) {
    expectFullCallLog();
    expectIncrementalLineLog("201", "t201", "u1", {call("a").gone()});

    callEnds("s-a");

    EXPECT_FALSE(waits());
}

TEST_F(SharedLineSessions, ARecordOfTheUsersOwnLogEndsTheWaitAndIsNotConfirmedByTheLine) {
    service->ageMissedCall("a");
    expectFullCallLog("c1", {missedCall("a")});
    expectIncrementalLineLog("201", "t201", "u1");
    service->getCallLogs();
    service->clearSyncTokens();
    // The line's answer alone brings the call of the session that is waited for.
    CloudAnswers::Call again = missedCall("a");
    again.sessionId = "s-other";
    expectFullCallLog("c2", {missedCall("a")});
    expectFullLineLog("201", "t2", {again});

    callEnds("s-other");

    EXPECT_FALSE(waits());
    EXPECT_TRUE(line("201").m_bcaLinesCcallLogMap.empty());
    EXPECT_FALSE(platform.log.contains("handleBcaCallLogResponse() [a] keeps"));
}

// ---- Viewed missed calls -----------------------------------------------------------------------------------------

TEST_F(SharedLineMerge, AViewedCallThatTheLineConfirmsIsMarkedForSaving) {
    connectWithLines({{"201", "A"}});
    service->ageMissedCall("a");
    expectFullLineLog("201", "t1", {missedCall("a")});

    overview("+49201@example", "A");

    EXPECT_TRUE(logged(6, "handleBcaCallLogResponse() [a] keeps in m_viewedMissedCallIds"));
    EXPECT_TRUE(logged(4, "handleBcaCallLogResponse() m_bcaLinesCcallLogMap.size[1] callRecordsVector.size[1] "
                          "m_syncViewedMissedCallIds[true] m_needToSaveViewedMissedCallIds[true]"));
}

TEST_F(SharedLineMerge, AMissedCallThatIsDeletedIsNotConfirmed) {
    connectWithLines({{"201", "A"}});
    service->ageMissedCall("a");
    expectFullLineLog("201", "t1", {missedCall("a").gone()});

    overview("+49201@example", "A");

    EXPECT_FALSE(service->isMissedCallViewed("a"));
}
