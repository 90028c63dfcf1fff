#include "SharedLineTelephone.h"

using CloudAnswers::call;
using CloudAnswers::recordText;
using OrvaneServiceTypes::DATA_CALL_LOG;

namespace {

class SharedLineCallLog : public SharedLineTelephone {
protected:
    /// An established channel whose interface goes down: a recovery is under way and no request gets through.
    void startRecovery() {
        openChannel();
        platform.store.change(PldsTags::INTERFACE_STATUS, "down");
    }
};

} // namespace

// ---- The walk over the lines -------------------------------------------------------------------------------------

TEST_F(SharedLineCallLog, ReadyLinesFollowTheUsersOwnLineInKeyOrder) {
    withObserver();
    connectWithReadyLines({{"203", "C"}, {"201", "A"}, {"202", "B"}});
    expectIncrementalCallLog("c1", "c2", {call("own")});
    expectIncrementalLineLog("201", "t201", "u201", {call("a")});
    expectIncrementalLineLog("202", "t202", "u202", {call("b")});
    expectIncrementalLineLog("203", "t203", "u203", {call("c")});

    service->getCallLogs();

    const std::string own = recordText(call("own"), "Received", "+49301", "Anna");
    EXPECT_EQ((std::vector<std::string>{own, received("a", "201"), received("b", "202"), received("c", "203")}),
              lastBatch("orvaneIncrementalSync", DATA_CALL_LOG));
    EXPECT_EQ(1u, observer.of("orvaneIncrementalSync").size());
    EXPECT_EQ("u202", line("202").callLogSyncToken);
}

TEST_F(SharedLineCallLog, ADiscoveredLineGetsNoRequest) {
    connectWithReadyLines({{"202", "B"}});
    expectGrants({{"201", "A"}, {"202", "B"}, {"203", "C"}});
    service->devicesChanged();
    forgetRecords();
    expectFullCallLog();
    expectIncrementalLineLog("202", "t202", "u202");

    service->getCallLogs();

    EXPECT_TRUE(logged(6, "getBcaCallLog() - BCA Line (201) is not ready"));
    EXPECT_TRUE(logged(6, "getBcaCallLog() - BCA Line (203) is not ready"));
}

TEST_F(SharedLineCallLog, TheWalkSendsNothingBeforeTheLogin) {
    initialise();
    std::vector<std::string> batch;

    service->getBcaCallLog(batch);

    EXPECT_TRUE(platform.network.requests.empty());
    expectLogin();
    runThreads();
}

TEST_F(SharedLineCallLog, AModelWithoutTheFeatureAsksForTheUsersOwnLineOnly) {
    platform.model = "MODEL";
    connectWithLines({{"201", "A"}});
    BcaLineType ready = line("201");
    ready.status = BCA_LINE_STATUS_READY;
    service->replaceBcaLineInList(ready);
    expectFullCallLog();

    service->getCallLogs();

    EXPECT_EQ(1u, platform.network.requests.size());
}

TEST_F(SharedLineCallLog, TwentyReadyLinesAreTwentyOneRequestsOverOneConnection) {
    Lines lines;
    for (int index = 10; index < 30; ++index) {
        lines.push_back({std::to_string(index), "Line " + std::to_string(index)});
    }
    connectWithReadyLines(lines);
    expectFullCallLog();
    for (const auto& granted : lines) {
        expectIncrementalLineLog(granted.id, "t" + granted.id, "u" + granted.id);
    }

    service->getCallLogs();

    ASSERT_EQ(21u, platform.network.requests.size());
    for (const auto& request : platform.network.requests) {
        EXPECT_EQ(platform.network.requests.front().connection, request.connection);
    }
}

TEST_F(SharedLineCallLog, LinesComeAndGoWhileTheWalkRuns) {
    connectWithReadyLines({{"201", "A"}, {"203", "C"}});
    expectFullCallLog();
    // While the first line's request waits, the third one goes and a second one comes and is matched.
    expectIncrementalLineLog("201", "t201", "").asksToWait(1);
    expectGrants({{"201", "A"}, {"202", "B"}});
    expectFullLineLog("202", "t202");
    expectIncrementalLineLog("201", "t201", "u201");
    expectIncrementalLineLog("202", "t202", "u202");
    platform.threads.duringSleep = [this] {
        service->devicesChanged();
        overview("+49202@example", "B");
    };

    service->getCallLogs();

    EXPECT_EQ("u201", line("201").callLogSyncToken);
    EXPECT_EQ("u202", line("202").callLogSyncToken);
    EXPECT_FALSE(hasLine("203"));
}

TEST_F(SharedLineCallLog, ALineThatGoesAwayDuringItsRequestEndsTheWalk) {
    withObserver();
    connectWithReadyLines({{"201", "A"}, {"202", "B"}});
    expectIncrementalCallLog("c1", "c2");
    expectIncrementalLineLog("201", "t201", "u201", {call("a")}).whileAwaited([this] { service->deleteAllData(true); });

    service->getCallLogs();

    EXPECT_TRUE(logged(2, "getBcaCallLog() - BCA Line (201) disappeared meanwhile"));
    EXPECT_TRUE(logged(2, "getBcaCallLog() - cannot find last extensionId(201)"));
    EXPECT_EQ(0u, service->getBcaLineListSize());
    EXPECT_EQ((std::vector<std::string>{received("a", "201")}), lastBatch("orvaneIncrementalSync", DATA_CALL_LOG))
        << "the batch holds what was fetched";
}

TEST_F(SharedLineCallLog, AWalkThatHasBegunGoesOnWhenTheLoginEnds) {
    connectWithReadyLines({{"201", "A"}, {"202", "B"}});
    expectFullCallLog();
    expectIncrementalLineLog("201", "t201", "u201").whileAwaited([this] { service->deconfigure(); });
    expectIncrementalLineLog("202", "t202", "u202");

    service->getCallLogs();

    EXPECT_EQ("u202", line("202").callLogSyncToken);
}

TEST_F(SharedLineCallLog, ALineWithAnEmptyExtensionIdIsWalkedOnce) {
    connectWithLines({});
    expectGrants().answers(200, "{\"records\":[{\"extension\":{\"id\":\"\",\"extensionNumber\":\"1\",\"type\":\"User\","
                                "\"name\":\"N\"}}]}");
    service->devicesChanged();
    platform.network
        .expectGet(linePath("") + "?syncType=FSync&recordCount=25&view=Simple&showDeleted=false&statusGroup=All")
        .answers(200, CloudAnswers::callLog("t", {}));
    overview("1", "N");
    expectFullCallLog();
    expectIncrementalLineLog("", "t", "u");

    service->getCallLogs();

    EXPECT_EQ("u", line("").callLogSyncToken);
}

// ---- Tokens of a line --------------------------------------------------------------------------------------------

TEST_F(SharedLineCallLog, AnEmptyTokenAsksForEverythingAndEmptiesTheLinesMapFirst) {
    connectWithLines({{"201", "A"}});
    expectFullLineLog("201", "t1", {call("old")});
    overview("+49201@example", "A");
    service->clearSyncTokens();
    EXPECT_TRUE(line("201").fullSyncPending);
    expectFullCallLog();
    expectFullLineLog("201", "t2", {call("new")});

    service->getCallLogs();

    EXPECT_EQ(1u, line("201").m_bcaLinesCcallLogMap.size());
    EXPECT_EQ(1u, line("201").m_bcaLinesCcallLogMap.count("new"));
    EXPECT_EQ("t2", line("201").callLogSyncToken);
    EXPECT_FALSE(line("201").fullSyncPending);
}

TEST_F(SharedLineCallLog, WithoutAnAnswerTheLinesNextSynchronisationIsAFullOne) {
    connectWithReadyLines({{"201", "A"}});
    expectFullCallLog();
    withoutAnswer(expectIncrementalLineLog("201", "t201", "u201"));

    service->getCallLogs();

    EXPECT_EQ("", line("201").callLogSyncToken);
}

TEST_F(SharedLineCallLog, AFullSynchronisationWithoutAnAnswerLeavesTheLinesMapEmptyInTheListToo) {
    connectWithLines({{"201", "A"}});
    expectFullLineLog("201", "t1", {call("old")});
    overview("+49201@example", "A");
    service->clearSyncTokens();
    expectFullCallLog();
    withoutAnswer(expectFullLineLog("201", "t2"));

    service->getCallLogs();

    EXPECT_TRUE(line("201").m_bcaLinesCcallLogMap.empty());
}

TEST_F(SharedLineCallLog, AFullSynchronisationEmptiesTheLineInTheListBeforeItsRequest) {
    connectWithLines({{"201", "A"}});
    expectFullLineLog("201", "t1", {call("old")});
    overview("+49201@example", "A");
    service->clearSyncTokens();
    expectFullCallLog();
    expectFullLineLog("201", "t2").whileAwaited([this] {
        EXPECT_TRUE(line("201").m_bcaLinesCcallLogMap.empty());
        EXPECT_FALSE(line("201").fullSyncPending);
    });

    service->getCallLogs();
}

TEST_F(SharedLineCallLog, DuringARecoveryOfTheChannelTheTokenIsKept) {
    connectWithReadyLines({{"201", "A"}});
    startRecovery();

    service->getCallLogs();

    EXPECT_EQ("t201", line("201").callLogSyncToken);
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(SharedLineCallLog, ClearingTheTokensDuringALinesRequestIsOverwrittenByTheCopy) {
    connectWithReadyLines({{"201", "A"}});
    expectFullCallLog();
    expectIncrementalLineLog("201", "t201", "u201").whileAwaited([this] { service->clearSyncTokens(); });

    service->getCallLogs();

    EXPECT_EQ("u201", line("201").callLogSyncToken);
    EXPECT_FALSE(line("201").fullSyncPending);
}

TEST_F(SharedLineCallLog, ClearingTheTokensTouchesLinesOnlyOnModelsWithTheFeature) {
    platform.model = "MODEL";
    connectWithLines({{"201", "A"}});
    BcaLineType withToken = line("201");
    withToken.callLogSyncToken = "t";
    service->replaceBcaLineInList(withToken);

    service->clearSyncTokens();

    EXPECT_EQ("t", line("201").callLogSyncToken);
    EXPECT_FALSE(line("201").fullSyncPending);
}

TEST_F(SharedLineCallLog, DeletingAllCallsLeavesTheLinesTokensAndLogs) {
    connectWithLines({{"201", "A"}});
    expectFullLineLog("201", "t1", {call("a")});
    overview("+49201@example", "A");
    platform.network.expect(HttpClientIfc::HTTP_DELETE, path(own("/call-log"))).answers(204);

    EXPECT_TRUE(service->deleteAllCallLogEntries());

    EXPECT_EQ("t1", line("201").callLogSyncToken);
    EXPECT_EQ(1u, line("201").m_bcaLinesCcallLogMap.size());
    // The refresh that follows.
    expectFullCallLog();
    expectIncrementalLineLog("201", "t1", "t2");
    runThreads();
}

// ---- One line on the caller's copy -------------------------------------------------------------------------------

TEST_F(SharedLineCallLog, OneLineIsDownloadedInAnyStateAndTheFlagIsLeftAlone) {
    initialise();
    BcaLineType copy;
    copy.extensionId = "201";
    copy.phoneNumber = "+49201";
    copy.fullSyncPending = true;
    copy.m_bcaLinesCcallLogMap["old"] = "{old}";
    std::vector<std::string> batch;
    bool fullSync = true;
    expectFullLineLog("201", "t1", {call("a")});

    service->getBcaCallLog(copy, batch, fullSync);

    EXPECT_TRUE(fullSync);
    EXPECT_EQ((std::vector<std::string>{received("a", "201")}), batch);
    EXPECT_EQ("t1", copy.callLogSyncToken);
    EXPECT_FALSE(copy.fullSyncPending);
    EXPECT_EQ(0u, copy.m_bcaLinesCcallLogMap.count("old"));
    EXPECT_EQ(0u, service->getBcaLineListSize()) << "writing back is the caller's task";
    expectLogin();
    runThreads();
}

TEST_F(SharedLineCallLog, OneLineWithATokenIsAskedForChanges) {
    connectWithLines({});
    BcaLineType copy;
    copy.extensionId = "201";
    copy.callLogSyncToken = "a b&c";
    std::vector<std::string> batch;
    bool fullSync = false;
    expectIncrementalLineLog("201", "a b&c", "t2");

    service->getBcaCallLog(copy, batch, fullSync);

    EXPECT_FALSE(fullSync);
    EXPECT_EQ("t2", copy.callLogSyncToken);
}

// ---- The kind of the event ---------------------------------------------------------------------------------------

TEST_F(SharedLineCallLog, ALinesFullSynchronisationInAnIncrementalCycleIsAnIncrementalEvent) {
    withObserver();
    connectWithLines({{"201", "A"}});
    expectFullLineLog("201", "t1", {call("gone"), call("kept")});
    overview("+49201@example", "A");
    emptyLineToken("201");
    expectIncrementalCallLog("c1", "c2");
    expectFullLineLog("201", "t2", {call("kept")});

    service->getCallLogs();

    EXPECT_EQ((std::vector<std::string>{received("kept", "201")}), lastBatch("orvaneIncrementalSync", DATA_CALL_LOG))
        << "no deletion entry for the record that is gone";
}

TEST_F(SharedLineCallLog, AFullOwnSynchronisationCarriesTheLinesChangesInTheFullEvent) {
    connectWithReadyLines({{"201", "A"}});
    withObserver();
    BcaLineType withToken = line("201");
    withToken.callLogSyncToken = "t1";
    service->replaceBcaLineInList(withToken);
    expectFullCallLog("c1", {call("own")});
    expectIncrementalLineLog("201", "t1", "t2", {call("change")});

    service->getCallLogs();

    EXPECT_EQ(
        (std::vector<std::string>{recordText(call("own"), "Received", "+49301", "Anna"), received("change", "201")}),
        lastBatch("orvaneFullSync", DATA_CALL_LOG));
}
