#include "PresenceTelephone.h"

namespace {

/// Answers about colleagues, and the lamps of the keys that watch them.
class FunctionKeyPresence : public PresenceTelephone {
protected:
    static FpkPresenceDataType record(const std::string& extensionId, const std::string& fpk = "100") {
        FpkPresenceDataType data;
        data.fpk = fpk;
        data.extensionId = extensionId;
        return data;
    }
    bool handleColleague(int status, std::string response) {
        return service->handleServerDndStatusBlfResponse(static_cast<HttpClientIfc::eStatusCode>(status), response);
    }
    /// Whether the lamp's flag of a record is set: turning the feature off clears those keys that show it.
    Lamps lampsClearedByTurningOff() {
        platform.team.lamps.clear();
        platform.locks.allowAcrossRequests("m_dndSem");
        setFeature(PldsTags::VALUE_FALSE);
        runThreads();
        return lamps();
    }
};

} // namespace

// ---- The records -------------------------------------------------------------------------------------------------

TEST_F(FunctionKeyPresence, ThereIsOneRecordAnExtension) {
    EXPECT_TRUE(service->isFpkPresenceMapEmpty());

    EXPECT_TRUE(service->insertFpkPresenceDataIntoMap(record("11", "100")));
    EXPECT_TRUE(service->insertFpkPresenceDataIntoMap(record("22", "101")));
    EXPECT_FALSE(service->insertFpkPresenceDataIntoMap(record("11", "102")));

    EXPECT_EQ(2u, service->getFpkPresenceMapSize());
    EXPECT_FALSE(service->isFpkPresenceMapEmpty());
    EXPECT_TRUE(service->doesFpkPresenceDataExist("11"));
    EXPECT_FALSE(service->doesFpkPresenceDataExist("1"));
}

TEST_F(FunctionKeyPresence, ARefusedRecordChangesNothing) {
    withWatchedColleague("100", "11", "First");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});
    FpkPresenceDataType other = record("11", "999");
    other.keyLabel = "Other";

    service->insertFpkPresenceDataIntoMap(other);

    expectPresence();
    expectColleaguePresence("11");
    service->getServerDndStatus();
    EXPECT_TRUE(logged(4, "getServerDndStatus() - fpk[100], extensionId[11], keyLabel[First]"));
}

// ---- The request -------------------------------------------------------------------------------------------------

TEST_F(FunctionKeyPresence, AColleagueIsAskedForById) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});
    expectColleaguePresence("11", "DoNotAcceptAnyCalls");

    service->getServerDndStatus("11");

    EXPECT_EQ((Lamps{{"blf11", true}}), lamps());
    EXPECT_TRUE(logged(4, "getServerDndStatus() - extId[11]"));
    EXPECT_TRUE(logged(6, "getServerDndStatus - realPath[" + colleaguePath("11") + "], statusCode[200], responseData[" +
                              CloudAnswers::presence("DoNotAcceptAnyCalls", 11) + "]"));
}

TEST_F(FunctionKeyPresence, WithTheFeatureOffNothingIsAsked) {
    platform.store.set(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    connectWithEmptyCloud();
    forgetRecords();

    service->getServerDndStatus("11");

    EXPECT_TRUE(logged(2, "getServerDndStatus() - server DND disabled!"));
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(FunctionKeyPresence, AFailedRequestLeavesTheLampAsItWas) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "DoNotAcceptAnyCalls"}});
    expectColleaguePresence("11").answers(500, "no");

    service->getServerDndStatus("11");

    EXPECT_TRUE(logged(2, "getServerDndStatus() - request failed for extensionId[11]! Status code[500], response[no]"));
    EXPECT_TRUE(lamps().empty());
    EXPECT_EQ((Lamps{{"blf11", false}}), lampsClearedByTurningOff());
}

// ---- The answer --------------------------------------------------------------------------------------------------

struct LampCase {
    const char* status;
    bool lit;
};
class ColleagueStatus : public PresenceTelephone, public testing::WithParamInterface<LampCase> {};

TEST_P(ColleagueStatus, LightsTheKeyOnlyForAllCalls) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});
    expectColleaguePresence("11", GetParam().status);

    service->getServerDndStatus("11");

    EXPECT_EQ((Lamps{{"blf11", GetParam().lit}}), lamps());
    EXPECT_TRUE(logged(6, "handleServerDndStatusResponse() - dndStatusString[" + std::string(GetParam().status) + "]"));
}

INSTANTIATE_TEST_SUITE_P(AllFour, ColleagueStatus,
                         testing::Values(LampCase{"TakeAllCalls", false}, LampCase{"DoNotAcceptAnyCalls", true},
                                         LampCase{"DoNotAcceptDepartmentCalls", false},
                                         LampCase{"TakeDepartmentCallsOnly", false}),
                         [](const testing::TestParamInfo<LampCase>& info) { return std::string(info.param.status); });

TEST_F(FunctionKeyPresence, TheLampIsReportedAtEveryAnswer) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});

    EXPECT_TRUE(handleColleague(200, CloudAnswers::presence("DoNotAcceptAnyCalls", 11)));
    EXPECT_TRUE(handleColleague(200, CloudAnswers::presence("DoNotAcceptAnyCalls", 11)));

    EXPECT_EQ((Lamps{{"blf11", true}, {"blf11", true}}), lamps());
    EXPECT_EQ(0, dndWrites()) << "the telephone's own switch is not concerned";
}

TEST_F(FunctionKeyPresence, TheIdInTheAnswerDecides) {
    withWatchedColleague("100", "11");
    withWatchedColleague("101", "22");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}, {"22", "TakeAllCalls"}});
    expectColleaguePresence("11").answers(200, CloudAnswers::presence("DoNotAcceptAnyCalls", 22));

    service->getServerDndStatus("11");

    EXPECT_EQ((Lamps{{"blf22", true}}), lamps());
    EXPECT_TRUE(logged(6, "handleServerDndStatusBlfResponse() - m_fpkPresenceMap.size[2], extId[22]"));
}

TEST_F(FunctionKeyPresence, AnAnswerAboutSomebodyElseChangesNothing) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});

    EXPECT_FALSE(handleColleague(200, CloudAnswers::presence("DoNotAcceptAnyCalls", 5000000000)));

    EXPECT_TRUE(logged(2, "handleServerDndStatusResponse() fpk for extensionId[5000000000] is not found!"));
    EXPECT_TRUE(lamps().empty());
}

TEST_F(FunctionKeyPresence, AnAnswerAboutSomebodyElseIsReadNoFurther) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});

    EXPECT_FALSE(handleColleague(200, R"({"extension":{"id":99}})"));

    EXPECT_EQ("handleServerDndStatusResponse() fpk for extensionId[99] is not found!\n", platform.log.text(2));
}

TEST_F(FunctionKeyPresence, AnswersThatCannotBeUsedAreReported) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "DoNotAcceptAnyCalls"}});

    EXPECT_FALSE(handleColleague(404, "none"));
    EXPECT_FALSE(handleColleague(200, ""));
    EXPECT_FALSE(handleColleague(200, "["));
    EXPECT_FALSE(handleColleague(200, "{\"dndStatus\":\"TakeAllCalls\"}"));
    EXPECT_FALSE(handleColleague(200, "{\"dndStatus\":\"TakeAllCalls\",\"extension\":{\"id\":\"11\"}}"));
    EXPECT_FALSE(handleColleague(200, "{\"extension\":{\"id\":11}}"));

    EXPECT_TRUE(logged(4, "handleServerDndStatusBlfResponse() - statusCode[404], responseData[none]"));
    EXPECT_TRUE(logged(2, "handleServerDndStatusResponse() HTTP[404] responseData:\nnone"));
    EXPECT_TRUE(logged(2, "handleServerDndStatusResponse() HTTP[200] responseData:\n"));
    EXPECT_TRUE(logged(2, "handleServerDndStatusResponse() error on line 1:1(1) ']' expected near end of file"));
    EXPECT_TRUE(logged(2, "handleServerDndStatusResponse() not found the parameter 'extension'"));
    EXPECT_TRUE(logged(2, "handleServerDndStatusResponse() not found the parameter 'id'"));
    EXPECT_TRUE(logged(2, "handleServerDndStatusResponse() not found the parameter 'dndStatus'"));
    EXPECT_TRUE(lamps().empty());
    EXPECT_EQ((Lamps{{"blf11", false}}), lampsClearedByTurningOff()) << "the record is as it was";
}

TEST_F(FunctionKeyPresence, AnUnsupportedStatusLeavesTheLampsFlag) {
    withWatchedColleague("100", "11");
    withWatchedColleague("101", "22");
    connectWith("TakeAllCalls", {{"11", "DoNotAcceptAnyCalls"}, {"22", "TakeAllCalls"}});

    EXPECT_FALSE(handleColleague(200, CloudAnswers::presence("Gone fishing", 11)));
    EXPECT_FALSE(handleColleague(200, CloudAnswers::presence("Gone fishing", 22)));

    EXPECT_EQ(2, platform.log.count(2, "handleServerDndStatusResponse() not supported value of dndStatus [Gone "
                                       "fishing]"));
    EXPECT_TRUE(lamps().empty());
    EXPECT_EQ((Lamps{{"blf11", false}}), lampsClearedByTurningOff());
}

TEST_F(FunctionKeyPresence, TheAnswerIsReadWhateverTheFeaturesState) {
    withWatchedColleague("100", "11");
    platform.store.set(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    connectWithEmptyCloud();

    EXPECT_TRUE(handleColleague(200, CloudAnswers::presence("DoNotAcceptAnyCalls", 11)));

    EXPECT_EQ((Lamps{{"blf11", true}}), lamps());
}

// ---- The lamp ----------------------------------------------------------------------------------------------------

TEST_F(FunctionKeyPresence, TheTeamServiceIsCalledWithTheMapFree) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});
    std::vector<std::string> held;
    platform.team.reaction = [&] { held = platform.locks.held(); };

    handleColleague(200, CloudAnswers::presence("DoNotAcceptAnyCalls", 11));

    EXPECT_EQ((std::vector<std::string>{"m_dndSem"}), held);
}

TEST_F(FunctionKeyPresence, AMissingTeamServiceIsReported) {
    service->setDNDStatusForBLF("11", true);
    service->setDNDStatusForBLF("22", false);

    EXPECT_TRUE(logged(2, "setDNDStatusForBLF(11, true) - null pointer to Team Service!"));
    EXPECT_TRUE(logged(2, "setDNDStatusForBLF(22, false) - null pointer to Team Service!"));
}

TEST_F(FunctionKeyPresence, TwelveKeysAreAskedOneAfterTheOtherAtStart) {
    std::vector<std::pair<std::string, std::string>> colleagues;
    for (int key = 0; key < 12; ++key) {
        const std::string id = std::to_string(50 + key);
        withWatchedColleague(std::to_string(100 + key), id);
        colleagues.emplace_back(id, key % 2 == 0 ? "DoNotAcceptAnyCalls" : "TakeAllCalls");
    }
    expectToken();
    expectExtension();
    expectPresence();
    for (const auto& [id, status] : colleagues) {
        expectColleaguePresence(id, status);
    }
    expectGrants();
    expectWebSocketToken();

    connect();

    ASSERT_EQ(12u, lamps().size());
    EXPECT_EQ(std::make_pair(std::string("blf50"), true), lamps()[0]);
    EXPECT_EQ(std::make_pair(std::string("blf61"), false), lamps()[11]);
}
