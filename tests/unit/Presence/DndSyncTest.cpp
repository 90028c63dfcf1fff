#include "JsonAllocations.h"
#include "PresenceTelephone.h"

namespace {

class DndSync : public PresenceTelephone {
protected:
    /// One line, under the semaphore, and nothing else.
    void expectRefused(int status, const std::string& response, const std::string& line) {
        platform.steps.begin();
        EXPECT_FALSE(handle(status, response));
        EXPECT_EQ((std::vector<std::string>{"take m_dndSem", "log 2 handleServerDndStatusResponse() " + line,
                                            "give m_dndSem"}),
                  platform.steps.steps());
    }
};

} // namespace

// ---- From the telephone to the cloud -----------------------------------------------------------------------------

TEST_F(DndSync, SwitchingOnIsPutAndTheAnswerIsTaken) {
    connectWith("TakeAllCalls");
    expectPut(true).answers(200, CloudAnswers::presence("DoNotAcceptAnyCalls"));

    service->updateUserPresenceStatus(true);

    EXPECT_EQ(PldsTags::VALUE_TRUE, dndItem());
    EXPECT_TRUE(logged(4,
                       "updateUserPresenceStatus() - new DND state[true], DND feature is enabled[true], is orvane in "
                       "state running[true]"));
}

TEST_F(DndSync, SwitchingOffIsPut) {
    connectWith("DoNotAcceptAnyCalls");
    expectPut(false).answers(200, CloudAnswers::presence("TakeAllCalls"));

    service->updateUserPresenceStatus(false);

    EXPECT_EQ(PldsTags::VALUE_FALSE, dndItem());
}

TEST_F(DndSync, TheAnswerDoesNotBounce) {
    connectWith("TakeAllCalls");
    expectPut(true).answers(200, CloudAnswers::presence("DoNotAcceptAnyCalls"));
    service->updateUserPresenceStatus(true);
    expectPut(true).answers(200, CloudAnswers::presence("DoNotAcceptAnyCalls"));

    service->updateUserPresenceStatus(true);

    EXPECT_EQ(1, dndWrites());
    EXPECT_EQ(2u, platform.network.requests.size());
}

TEST_F(DndSync, TheCloudsAnswerCountsNotWhatWasSent) {
    connectWith("TakeAllCalls");
    expectPut(true).answers(200, CloudAnswers::presence("DoNotAcceptDepartmentCalls"));

    service->updateUserPresenceStatus(true);

    EXPECT_EQ(0, dndWrites());
    EXPECT_TRUE(logged(4, "fireOrvaneDndStatus() - dndStatus[3]"));
}

TEST_F(DndSync, WithTheFeatureOffNothingIsSent) {
    platform.store.set(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    connectWithEmptyCloud();
    forgetRecords();

    service->updateUserPresenceStatus(true);
    service->getServerDndStatus();

    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_TRUE(logged(4, "updateUserPresenceStatus() - new DND state[true], DND feature is enabled[false], is orvane "
                          "in state running[true]"));
}

TEST_F(DndSync, AServiceThatIsNotRunningSendsNothing) {
    connectWith("TakeAllCalls");
    service->stop();
    forgetRecords();

    service->updateUserPresenceStatus(false);

    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_TRUE(logged(4, "updateUserPresenceStatus() - new DND state[false], DND feature is enabled[true], is orvane "
                          "in state running[false]"));
}

TEST_F(DndSync, WithoutMemoryForTheBodyNothingIsSent) {
    connectWith("TakeAllCalls");
    std::size_t allocations = 0;
    platform.network.answersUnexpected = [&](const ScriptedNetwork::Request&, Exchange& exchange) {
        allocations = JsonAllocations::count();
        exchange.answers(500);
    };
    {
        const JsonAllocations enough(0);
        service->updateUserPresenceStatus(true);
    }
    ASSERT_GE(allocations, 2u);
    forgetRecords();

    for (std::size_t failing = 1; failing <= allocations; ++failing) {
        const JsonAllocations scarce(failing);
        service->updateUserPresenceStatus(true);

        EXPECT_TRUE(platform.network.requests.empty()) << failing;
    }
}

TEST_F(DndSync, ARefusedChangeLeavesTheSwitchAndIsNotRepeated) {
    connectWith("TakeAllCalls");
    expectPut(true).answers(403, "no");

    service->updateUserPresenceStatus(true);

    EXPECT_TRUE(logged(2, "updateUserPresenceStatus() failed! HTTP status[403], Error:[no]"));
    EXPECT_EQ(PldsTags::VALUE_FALSE, dndItem());
    EXPECT_EQ(0, dndWrites());
}

TEST_F(DndSync, AnAnswerWithoutABodyIsReportedByTheReader) {
    connectWith("TakeAllCalls");
    expectPut(true).answers(204);

    service->updateUserPresenceStatus(true);

    EXPECT_TRUE(logged(2, "handleServerDndStatusResponse() HTTP[204] responseData:\n"));
}

TEST_F(DndSync, TheServicesOwnDoNotDisturbCallbackDoesNothing) {
    connectWith("TakeAllCalls");

    service->doNotDisturbSet();

    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_EQ(0, dndWrites());
}

// ---- From the cloud to the telephone -----------------------------------------------------------------------------

TEST_F(DndSync, StartTakesTheCloudsStatus) {
    connectWith("DoNotAcceptAnyCalls");

    EXPECT_EQ(PldsTags::VALUE_TRUE, dndItem());
}

TEST_F(DndSync, AskingForTheStatusLogsTheExchange) {
    connectWith("TakeAllCalls");
    const std::string body = CloudAnswers::presence("DoNotAcceptAnyCalls");
    expectPresence("DoNotAcceptAnyCalls");

    service->getServerDndStatus();

    EXPECT_TRUE(logged(4, "getServerDndStatus()"));
    EXPECT_TRUE(logged(6, "getServerDndStatus - realPath[" + presencePath() + "], statusCode[200], responseData[" +
                              body + "]"));
    EXPECT_EQ(PldsTags::VALUE_TRUE, dndItem());
}

TEST_F(DndSync, AFailedRequestIsReportedAndTheColleaguesAreAskedAllTheSame) {
    withWatchedColleague("100", "22", "Second");
    withWatchedColleague("101", "11", "First");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}, {"22", "TakeAllCalls"}});
    expectPresence().answers(500, "no");
    expectColleaguePresence("11");
    expectColleaguePresence("22");

    service->getServerDndStatus();

    EXPECT_TRUE(logged(2, "getServerDndStatus() - request failed! Status code[500], response[no]"));
    EXPECT_TRUE(logged(4, "getServerDndStatus() - fpk[101], extensionId[11], keyLabel[First]"));
    EXPECT_TRUE(logged(4, "getServerDndStatus() - fpk[100], extensionId[22], keyLabel[Second]"));
}

TEST_F(DndSync, WithTheFeatureOffNothingIsAsked) {
    withWatchedColleague("100", "22");
    platform.store.set(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    connectWithEmptyCloud();
    forgetRecords();

    service->getServerDndStatus();

    ASSERT_EQ(1u, platform.log.lines().size());
    EXPECT_TRUE(logged(4, "getServerDndStatus()"));
}

struct StatusCase {
    const char* text;
    int number;
    const char* item; ///< what the telephone's switch is set to, null for nothing
};
class DndStatusTexts : public PresenceTelephone, public testing::WithParamInterface<StatusCase> {};

TEST_P(DndStatusTexts, ReachTheSwitchOnlyIfTheyConcernAllCalls) {
    const bool startsWithAllCalls = std::string(GetParam().text) != "TakeAllCalls";
    connectWith(startsWithAllCalls ? "TakeAllCalls" : "DoNotAcceptAnyCalls");

    EXPECT_TRUE(handle(200, CloudAnswers::presence(GetParam().text)));

    EXPECT_TRUE(logged(4, "fireOrvaneDndStatus() - dndStatus[" + std::to_string(GetParam().number) + "]"));
    if (GetParam().item == nullptr) {
        EXPECT_EQ(0, dndWrites());
    } else {
        EXPECT_EQ(1, platform.store.countWrites(PldsTags::CALL_DND_ACTIVATED, GetParam().item));
    }
}

INSTANTIATE_TEST_SUITE_P(AllFour, DndStatusTexts,
                         testing::Values(StatusCase{"TakeAllCalls", 1, "false"},
                                         StatusCase{"DoNotAcceptAnyCalls", 2, "true"},
                                         StatusCase{"DoNotAcceptDepartmentCalls", 3, nullptr},
                                         StatusCase{"TakeDepartmentCallsOnly", 4, nullptr}),
                         [](const testing::TestParamInfo<StatusCase>& info) { return std::string(info.param.text); });

TEST_F(DndSync, TheSameStatusTwiceIsWrittenOnce) {
    connectWith("TakeAllCalls");

    EXPECT_TRUE(handle(200, CloudAnswers::presence("DoNotAcceptAnyCalls")));
    EXPECT_TRUE(handle(200, CloudAnswers::presence("DoNotAcceptAnyCalls")));

    EXPECT_EQ(1, dndWrites());
}

TEST_F(DndSync, ADepartmentStatusIsRememberedSoThatTheReturnIsAChange) {
    connectWith("TakeAllCalls");

    handle(200, CloudAnswers::presence("TakeDepartmentCallsOnly"));
    handle(200, CloudAnswers::presence("TakeAllCalls"));

    EXPECT_EQ(1, platform.store.countWrites(PldsTags::CALL_DND_ACTIVATED, PldsTags::VALUE_FALSE));
}

TEST_F(DndSync, AnswersArePassedOverWithTheFeatureOff) {
    platform.store.set(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    connectWithEmptyCloud();

    expectRefused(200, CloudAnswers::presence("DoNotAcceptAnyCalls"), "- server DND disabled!");
    expectRefused(404, "none", "- server DND disabled!");

    EXPECT_EQ("", dndItem());
}

TEST_F(DndSync, AnswersThatCannotBeUsedAreReportedAndKeepTheStoredStatus) {
    connectWith("TakeAllCalls");

    expectRefused(404, "none", "HTTP[404] responseData:\nnone");
    expectRefused(200, "", "HTTP[200] responseData:\n");
    expectRefused(200, "[", "error on line 1:1(1) ']' expected near end of file");
    expectRefused(200, "{\"dndStatus\":5}", "not found the parameter dndStatus");
    expectRefused(200, "{\"dndStatus\":\"takeAllCalls\"}", "not supported value of dndStatus [takeAllCalls]");

    EXPECT_TRUE(handle(200, CloudAnswers::presence("TakeAllCalls")));
    EXPECT_EQ(0, dndWrites()) << "the last one is no change";
}

TEST_F(DndSync, AnUnknownStatusIsNoReasonToWrite) {
    connectWith("TakeAllCalls");

    service->fireOrvaneDndStatus(OrvaneServiceTypes::DND_UNKNOWN);

    EXPECT_TRUE(logged(4, "fireOrvaneDndStatus() - dndStatus[0]"));
    EXPECT_EQ(0, dndWrites());
}

TEST_F(DndSync, NoObserverIsToldOfTheStatus) {
    connectWith("TakeAllCalls");
    withObserver();

    handle(200, CloudAnswers::presence("DoNotAcceptAnyCalls"));

    EXPECT_TRUE(observer.events.empty());
}
