#include "SharedLineTelephone.h"

using CloudAnswers::grants;

namespace {

class SharedLineDiscovery : public SharedLineTelephone {
protected:
    bool download() { return service->getBcaLinesExtension(removed, added); }
    Exchange& expectPage(int page) {
        return platform.network.expectGet(page == 0 ? grantPath() : grantPath() + "?page=" + std::to_string(page));
    }
    bool handle(int status, std::string body) {
        return service->handleBcaLinesExtension(static_cast<HttpClientIfc::eStatusCode>(status), body, nextPage, found);
    }

    std::vector<BcaLineType> removed;
    std::vector<std::string> added;
    int nextPage = 7;
    std::map<std::string, BcaLineType> found;
};

} // namespace

// ---- The walk over the pages -------------------------------------------------------------------------------------

TEST_F(SharedLineDiscovery, ASinglePageIsOneRequestWithoutAQuery) {
    connectWithLines({});
    expectPage(0).answers(200, grants({{"201", "Sales"}}, 1, 1));

    EXPECT_TRUE(download());

    EXPECT_EQ(1u, platform.network.requests.size());
    EXPECT_EQ((std::vector<std::string>{"201"}), added);
}

TEST_F(SharedLineDiscovery, EveryFurtherPageIsAskedForByItsNumber) {
    connectWithLines({});
    expectPage(0).answers(200, grants({{"203", "C"}}, 1, 3));
    expectPage(2).answers(200, grants({{"201", "A"}}, 2, 3));
    expectPage(3).answers(200, grants({{"202", "B"}}, 3, 3));

    EXPECT_TRUE(download());

    EXPECT_EQ((std::vector<std::string>{"201", "202", "203"}), added) << "in key order";
}

TEST_F(SharedLineDiscovery, PagesAreAskedForByNumberFromTheFirstOn) {
    connectWithLines({});
    expectPage(0).answers(200, "{\"page\":-3,\"totalPages\":1,\"records\":[]}"); // next: -2
    expectPage(0).answers(200, "{\"page\":-1,\"totalPages\":1,\"records\":[]}"); // next: 0
    expectPage(0).answers(200, "{\"page\":0,\"totalPages\":1,\"records\":[]}");  // next: 1
    expectPage(1).answers(200, grants({{"201", "A"}}, 1, 1));

    EXPECT_TRUE(download());

    EXPECT_EQ((std::vector<std::string>{"201"}), added);
}

TEST_F(SharedLineDiscovery, AnAnswerWithoutPageIsTheLastOne) {
    connectWithLines({});
    expectPage(0).answers(200, "{\"totalPages\":3,\"records\":[]}");

    EXPECT_FALSE(download());
}

TEST_F(SharedLineDiscovery, ALaterPageWithoutAnAnswerIsAskedForAgainAtOnce) {
    connectWithLines({});
    expectPage(0).answers(200, grants({{"201", "A"}}, 1, 2));
    expectPage(2).answers(500, "trouble");
    expectPage(2).answers(401, grants({{"666", "Stranger"}}, 2, 2));
    expectPage(2).failsToSend();
    expectPage(2).answers(200, grants({{"202", "B"}}, 2, 2));

    EXPECT_TRUE(download());

    EXPECT_EQ((std::vector<std::string>{"201", "202"}), added);
    EXPECT_TRUE(platform.threads.sleepsSeconds.empty());
}

TEST_F(SharedLineDiscovery, ALaterPageThatIsNotFoundEndsTheDownload) {
    connectWithLines({});
    expectPage(0).answers(200, grants({{"201", "A"}}, 1, 2));
    expectPage(2).answers(404, "none");

    EXPECT_TRUE(download());

    EXPECT_EQ((std::vector<std::string>{"201"}), added);
}

// ---- The merge ---------------------------------------------------------------------------------------------------

TEST_F(SharedLineDiscovery, AnEmptyListThatStaysEmptyIsNoChange) {
    connectWithLines({});
    expectPage(0).answers(200, grants({}, 1, 1));

    EXPECT_FALSE(download());

    EXPECT_TRUE(removed.empty());
    EXPECT_TRUE(added.empty());
}

TEST_F(SharedLineDiscovery, ANewLineIsDiscoveredAndEmpty) {
    connectWithLines({{"201", "Sales"}});

    const BcaLineType sales = line("201");

    EXPECT_EQ("201", sales.extensionId);
    EXPECT_EQ("Sales", sales.name);
    EXPECT_EQ("", sales.phoneNumber);
    EXPECT_EQ(BCA_LINE_STATUS_DISCOVERED, sales.status);
    EXPECT_EQ("", sales.callLogSyncToken);
    EXPECT_FALSE(sales.fullSyncPending);
    EXPECT_TRUE(sales.m_bcaLinesCcallLogMap.empty());
    EXPECT_EQ(0, sales.voicemail.unreadVoicemailMessageCount);
    EXPECT_EQ(1u, service->getBcaLineListSize());
}

TEST_F(SharedLineDiscovery, AKnownLineKeepsNumberNameTokenAndLog) {
    connectWithLines({{"201", "Sales"}});
    expectFullLineLog("201", "t1", {CloudAnswers::call("c1")});
    overview("+4930@example", "Sales");
    expectPage(0).answers(200, grants({{"201", "Renamed"}}, 1, 1));

    EXPECT_FALSE(download());

    const BcaLineType sales = line("201");
    EXPECT_EQ("Sales", sales.name);
    EXPECT_EQ("+4930", sales.phoneNumber);
    EXPECT_EQ(BCA_LINE_STATUS_READY, sales.status);
    EXPECT_EQ("t1", sales.callLogSyncToken);
    EXPECT_EQ(1u, sales.m_bcaLinesCcallLogMap.size());
    EXPECT_TRUE(logged(6, "getBcaLinesExtension() - BCA line with extensionId[201] already exists!"));
}

TEST_F(SharedLineDiscovery, ALineThatIsNoLongerGrantedIsErasedAndHandedOut) {
    connectWithReadyLines({{"201", "Sales"}, {"202", "Support"}});
    expectPage(0).answers(200, grants({{"202", "Support"}, {"203", "New"}}, 1, 1));

    EXPECT_TRUE(download());

    ASSERT_EQ(1u, removed.size());
    EXPECT_EQ("201", removed[0].extensionId);
    EXPECT_EQ("+49201", removed[0].phoneNumber);
    EXPECT_EQ("t201", removed[0].callLogSyncToken);
    EXPECT_EQ((std::vector<std::string>{"203"}), added);
    EXPECT_FALSE(hasLine("201"));
    EXPECT_TRUE(hasLine("202"));
    EXPECT_TRUE(logged(6, "getBcaLinesExtension() - erase BCA line with extensionId[201]"));
}

struct Failure {
    const char* name;
    void (*apply)(Exchange&);
};
class FailedDiscovery : public SharedLineDiscovery, public testing::WithParamInterface<Failure> {};

TEST_P(FailedDiscovery, AListThatCouldNotBeFetchedRemovesAllLines) {
    connectWithReadyLines({{"201", "Sales"}, {"202", "Support"}});
    GetParam().apply(expectPage(0));

    EXPECT_TRUE(download());

    EXPECT_EQ(0u, service->getBcaLineListSize());
    ASSERT_EQ(2u, removed.size());
    EXPECT_EQ("201", removed[0].extensionId) << "in key order";
    EXPECT_EQ("202", removed[1].extensionId);
    EXPECT_EQ(1u, platform.network.requests.size());
}

INSTANTIATE_TEST_SUITE_P(AllKinds, FailedDiscovery,
                         testing::Values(Failure{"NoAnswer", [](Exchange& answer) { answer.failsToSend(); }},
                                         Failure{"NotFound", [](Exchange& answer) { answer.answers(404, "none"); }},
                                         Failure{"Unreadable", [](Exchange& answer) { answer.answers(200, "{"); }},
                                         Failure{"Empty", [](Exchange& answer) { answer.answers(200, ""); }}),
                         [](const testing::TestParamInfo<Failure>& info) { return std::string(info.param.name); });

TEST_F(SharedLineDiscovery, LinesThatComeBackAreUnmatched) {
    connectWithReadyLines({{"201", "Sales"}});
    expectPage(0).answers(404);
    download();
    expectPage(0).answers(200, grants({{"201", "Sales"}}, 1, 1));

    EXPECT_TRUE(download());

    EXPECT_EQ(BCA_LINE_STATUS_DISCOVERED, line("201").status);
    EXPECT_EQ("", line("201").callLogSyncToken);
}

// ---- One answer --------------------------------------------------------------------------------------------------

TEST_F(SharedLineDiscovery, AnotherStatusIsReportedWithTheBodysLength) {
    nextPage = 7;

    EXPECT_FALSE(handle(404, "abc"));

    EXPECT_TRUE(logged(2, "handleBcaLinesExtension() failed! statusCode[404], responseData length[3]"));
    EXPECT_EQ(7, nextPage);
}

TEST_F(SharedLineDiscovery, AnEmptyBodyIsReportedWithItsStatus) {
    EXPECT_FALSE(handle(200, ""));

    EXPECT_TRUE(logged(2, "handleBcaLinesExtension() failed! statusCode[200], responseData length[0]"));
}

TEST_F(SharedLineDiscovery, AnUnreadableBodyIsReportedInTheNameOfTheTokenParser) {
    EXPECT_FALSE(handle(200, "["));

    EXPECT_TRUE(logged(2, "handleTokenResponse() error on line 1:1(1) ']' expected near end of file"))
        << platform.log.text(2);
}

TEST_F(SharedLineDiscovery, PageBelowTotalPagesAsksForTheNextPage) {
    EXPECT_TRUE(handle(200, grants({}, 2, 3)));

    EXPECT_EQ(3, nextPage);
}

TEST_F(SharedLineDiscovery, TheLastPageResetsTheNextPage) {
    EXPECT_FALSE(handle(200, grants({}, 3, 3)));

    EXPECT_EQ(0, nextPage);
}

TEST_F(SharedLineDiscovery, APageBeyondTheLastResetsTheNextPage) {
    EXPECT_FALSE(handle(200, grants({}, 4, 3)));

    EXPECT_EQ(0, nextPage);
}

TEST_F(SharedLineDiscovery, WithoutPageOrTotalPagesTheNextPageStays) {
    EXPECT_FALSE(handle(200, "{\"page\":1,\"records\":[]}"));
    EXPECT_EQ(7, nextPage);

    EXPECT_FALSE(handle(200, "{\"totalPages\":3,\"records\":[]}"));
    EXPECT_EQ(7, nextPage);
}

TEST_F(SharedLineDiscovery, RecordsThatAreNoArrayStillLeadToTheNextPage) {
    EXPECT_TRUE(handle(200, "{\"page\":1,\"totalPages\":2,\"records\":{}}"));

    EXPECT_TRUE(logged(2, "handleBcaLinesExtension() records not an array"));
    EXPECT_EQ(2, nextPage);
    EXPECT_TRUE(found.empty());
}

TEST_F(SharedLineDiscovery, ARecordWithoutExtensionIsSkippedAlone) {
    handle(200, "{\"records\":[{\"extension\":5},17,{\"extension\":{\"id\":\"1\",\"extensionNumber\":\"9\","
                "\"type\":\"User\",\"name\":\"N\"}}]}");

    EXPECT_EQ(2, platform.log.count(2, "handleBcaLinesExtension() - item[extension] not found!"));
    EXPECT_EQ(1u, found.size());
}

TEST_F(SharedLineDiscovery, ARecordThatMissesAMemberIsSkippedAlone) {
    handle(200, "{\"records\":["
                "{\"extension\":{\"extensionNumber\":\"9\",\"type\":\"User\",\"name\":\"N\"}},"
                "{\"extension\":{\"id\":\"1\",\"type\":\"User\",\"name\":\"N\"}},"
                "{\"extension\":{\"id\":\"1\",\"extensionNumber\":\"9\",\"name\":\"N\"}},"
                "{\"extension\":{\"id\":\"1\",\"extensionNumber\":\"9\",\"type\":\"User\"}},"
                "{\"extension\":{\"id\":4,\"extensionNumber\":\"9\",\"type\":\"User\",\"name\":\"N\"}},"
                "{\"extension\":{\"id\":\"2\",\"extensionNumber\":\"9\",\"type\":\"User\",\"name\":\"M\"}}]}");

    const std::string begin = "handleBcaLinesExtension() - error parsing ";
    EXPECT_EQ(2, platform.log.count(2, begin + "id[], extensionNumber[], type[], name[]"));
    EXPECT_TRUE(logged(2, begin + "id[1], extensionNumber[], type[], name[]"));
    EXPECT_TRUE(logged(2, begin + "id[1], extensionNumber[9], type[], name[]"));
    EXPECT_TRUE(logged(2, begin + "id[1], extensionNumber[9], type[User], name[]"));
    ASSERT_EQ(1u, found.size());
    EXPECT_EQ("M", found.at("2").name);
}

TEST_F(SharedLineDiscovery, TheFirstOfTwoRecordsWithOneIdStays) {
    handle(200, grants({{"1", "First"}, {"1", "Second"}}));

    ASSERT_EQ(1u, found.size());
    EXPECT_EQ("First", found.at("1").name);
}

TEST_F(SharedLineDiscovery, NoTypeIsFilteredOut) {
    handle(200, "{\"records\":[{\"extension\":{\"id\":\"1\",\"extensionNumber\":\"9\",\"type\":\"Lift\","
                "\"name\":\"N\"}}]}");

    EXPECT_EQ(1u, found.size());
}

// ---- The list ----------------------------------------------------------------------------------------------------

TEST_F(SharedLineDiscovery, ACopyOfAnUnknownLineLeavesTheArgumentAlone) {
    BcaLineType copy;
    copy.name = "as it was";

    EXPECT_FALSE(service->getCopyOfBcaLineFromList("404", copy));

    EXPECT_EQ("as it was", copy.name);
}

TEST_F(SharedLineDiscovery, ALineThatWentAwayIsNotCreatedAnew) {
    BcaLineType gone;
    gone.extensionId = "404";

    EXPECT_FALSE(service->replaceBcaLineInList(gone));

    EXPECT_EQ(0u, service->getBcaLineListSize());
}

TEST_F(SharedLineDiscovery, ReplacingALineOverwritesAllItsFields) {
    connectWithLines({{"201", "Sales"}});
    BcaLineType changed = line("201");
    changed.name = "New";
    changed.phoneNumber = "1";
    changed.status = BCA_LINE_STATUS_READY;
    changed.callLogSyncToken = "t";
    changed.fullSyncPending = true;
    changed.m_bcaLinesCcallLogMap["x"] = "{x}";
    changed.voicemail.unreadVoicemailMessageCount = 3;

    EXPECT_TRUE(service->replaceBcaLineInList(changed));

    const BcaLineType now = line("201");
    EXPECT_EQ("New", now.name);
    EXPECT_EQ("1", now.phoneNumber);
    EXPECT_EQ(BCA_LINE_STATUS_READY, now.status);
    EXPECT_EQ("t", now.callLogSyncToken);
    EXPECT_TRUE(now.fullSyncPending);
    EXPECT_EQ(1u, now.m_bcaLinesCcallLogMap.count("x"));
    EXPECT_EQ(3, now.voicemail.unreadVoicemailMessageCount);
}

TEST_F(SharedLineDiscovery, AModelWithoutTheFeatureDownloadsLinesAtStartAndNeverMatchesThem) {
    platform.model = "MODEL";
    connectWithLines({{"201", "Sales"}});

    overview("+49201@example", "Sales");

    EXPECT_EQ(BCA_LINE_STATUS_DISCOVERED, line("201").status);
    EXPECT_TRUE(platform.network.requests.empty());
}
