#include "RestTelephone.h"

namespace {

int nextRandomNumber = 0;

} // namespace

/// The service draws its delays with the system's generator; here the test says what comes.
int rand() noexcept {
    return nextRandomNumber;
}

namespace {

class Token : public RestTelephone {
protected:
    Token() { nextRandomNumber = 0; }

    Exchange& expectTokenAnswer(int answerStatus, const std::string& body) {
        return expectToken().answers(answerStatus, body);
    }
    Exchange& expectValidity(int seconds) { return expectTokenAnswer(200, CloudAnswers::token("T1", seconds)); }
    /// The one timer that runs now.
    int delayMilliseconds() {
        const std::vector<int> durations = platform.context.runningDurations();
        EXPECT_EQ(1u, durations.size());
        return durations.empty() ? -1 : durations.front();
    }
    std::size_t timersMade() const {
        std::size_t made = 0;
        for (const std::string& call : platform.context.calls) {
            made += call.rfind("create ", 0) == 0 ? 1 : 0;
        }
        return made;
    }
};

TEST_F(Token, IsAskedForWithoutAnyCredential) {
    haveToken("former");
    expectToken().withHeaders({});

    EXPECT_TRUE(service->getToken());

    EXPECT_EQ("/MODEL/MAC1/auth/token", platform.network.requests[0].target);
    EXPECT_TRUE(logged(4, "getToken()"));
    EXPECT_TRUE(logged(6, "handleTokenResponse() m_accessToken[T1] m_expiresIn[3600]"));
    EXPECT_TRUE(logged(6, "getToken() retVal[true] delay[3240000]"));
    EXPECT_TRUE(service->isRunning());
}

TEST_F(Token, IsCarriedByTheNextRequest) {
    expectTokenAnswer(200, R"({"other":1,"accessToken":"abc","expiresIn":60})");
    EXPECT_TRUE(service->getToken());
    expectPath().withHeaders({{"Authorization", "Bearer abc"}});

    EXPECT_TRUE(get());
}

TEST_F(Token, IsRenewedAt90PercentOfItsValidityAtTheEarliest) {
    expectValidity(3600);

    EXPECT_TRUE(service->getToken());

    EXPECT_EQ(3240000, delayMilliseconds());
}

TEST_F(Token, IsRenewedAt100PercentOfItsValidityAtTheLatest) {
    nextRandomNumber = 360000;
    expectValidity(3600);

    EXPECT_TRUE(service->getToken());

    EXPECT_EQ(3600000, delayMilliseconds());
}

TEST_F(Token, IsNeverRenewedAfterItsEnd) {
    nextRandomNumber = 360001;
    expectValidity(3600);

    EXPECT_TRUE(service->getToken());

    EXPECT_EQ(3240000, delayMilliseconds());
}

TEST_F(Token, OfOneSecondIsRenewedInItsLastTenth) {
    nextRandomNumber = 100;
    expectValidity(1);

    EXPECT_TRUE(service->getToken());

    EXPECT_EQ(1000, delayMilliseconds());
}

TEST_F(Token, WithoutValidityIsRenewedAtOnce) {
    nextRandomNumber = 12345;
    expectValidity(0);

    EXPECT_TRUE(service->getToken());

    EXPECT_EQ(0, delayMilliseconds());
}

TEST_F(Token, OfMoreThanATimerTakesGetsTheLongestTimer) {
    nextRandomNumber = 5;
    expectValidity(2147483647);

    EXPECT_TRUE(service->getToken());

    EXPECT_EQ(2147483647, delayMilliseconds());
}

TEST_F(Token, OfTheLargestValidityThatATimerTakesIsExact) {
    expectValidity(2386092);

    EXPECT_TRUE(service->getToken());

    EXPECT_EQ(2147482800, delayMilliseconds());
}

TEST_F(Token, ReplacesTheTimerOfTheFormerOne) {
    expectValidity(3600);
    expectValidity(100);

    EXPECT_TRUE(service->getToken());
    const int former = platform.context.running(3240000).at(0);
    EXPECT_TRUE(service->getToken());

    EXPECT_FALSE(platform.context.exists(former));
    EXPECT_EQ(90000, delayMilliseconds());
    EXPECT_TRUE(logged(6, "stopAndDeleteTimer(" + std::to_string(former) + ")"));
}

TEST_F(Token, CannotBeHadWithoutAServer) {
    withObserver();
    expectValidity(3600);
    EXPECT_TRUE(service->getToken());
    const std::size_t timers = timersMade();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, "");

    EXPECT_FALSE(service->getToken());

    EXPECT_TRUE(logged(2, "getToken() missing data. m_server[]"));
    EXPECT_FALSE(logged(2, "getToken() failed"));
    EXPECT_FALSE(service->isRunning());
    EXPECT_EQ(timers, timersMade());
    EXPECT_EQ(3240000, delayMilliseconds()) << "the timer is not touched";
    EXPECT_TRUE(observer.events.empty());
    expectPath().withHeaders({{"Authorization", "Bearer T1"}});
    EXPECT_TRUE(get()) << "the former token stays";
}

TEST_F(Token, WithoutAServerTheServiceCountsAsDeconfigured) {
    platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, "");
    EXPECT_FALSE(service->getToken());

    service->asyncLogin();

    EXPECT_TRUE(
        logged(5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] m_state[DECONFIGURED]"));
}

class TokenFailure : public Token {
protected:
    TokenFailure() { withObserver(); }

    void expectFailure() {
        EXPECT_FALSE(service->getToken());
        EXPECT_TRUE(logged(2, "getToken() failed"));
        EXPECT_TRUE(logged(6, "getToken() retVal[false] delay[60000]"));
        EXPECT_FALSE(service->isRunning());
        EXPECT_EQ(0, platform.network.connectionsAlive);
        EXPECT_TRUE(logged(4, "clearSecureConnection() force[true] m_secureConnEstablisher[(nil)]"));
        ASSERT_EQ(1u, observer.of("orvaneEvent").size());
        EXPECT_EQ(6, observer.of("orvaneEvent")[0].type);
        EXPECT_EQ(60000, delayMilliseconds());
        service->asyncLogin();
        EXPECT_TRUE(logged(5, "asyncLogin() ignored. m_ov_server_type[true] m_interface_status[true] m_state[STOP]"));
    }
};

TEST_F(TokenFailure, ByAStatusThatIsNoAnswer) {
    expectTokenAnswer(500, "oops");
    expectFailure();
    EXPECT_FALSE(platform.log.contains("handleTokenResponse()"));
}

TEST_F(TokenFailure, ByAStatusOtherThan200) {
    expectTokenAnswer(404, "who");
    expectFailure();
    EXPECT_TRUE(logged(2, "handleTokenResponse() HTTP[404] responseData:\nwho"));
}

TEST_F(TokenFailure, ByAnEmptyBody) {
    expectTokenAnswer(200, "");
    expectFailure();
    EXPECT_TRUE(logged(2, "handleTokenResponse() HTTP[200] responseData:\n"));
}

TEST_F(TokenFailure, ByABodyThatDoesNotParse) {
    expectTokenAnswer(200, "{\n\"a\":");
    expectFailure();
    EXPECT_TRUE(platform.log.hasBeginning(2, "handleTokenResponse() error on line 2:4(6) "));
}

TEST_F(TokenFailure, ByABodyThatIsNoObject) {
    expectTokenAnswer(200, "[]");
    expectFailure();
    EXPECT_TRUE(logged(2, "handleTokenResponse() not an object"));
    EXPECT_FALSE(platform.log.contains("not a valid response"));
}

TEST_F(TokenFailure, ByAMissingToken) {
    expectTokenAnswer(200, R"({"expiresIn":60})");
    expectFailure();
    EXPECT_TRUE(logged(2, "handleTokenResponse() not a valid response\n{\"expiresIn\":60}"));
}

TEST_F(TokenFailure, ByATokenThatIsNoText) {
    expectTokenAnswer(200, R"({"accessToken":5,"expiresIn":60})");
    expectFailure();
}

TEST_F(TokenFailure, ByAValidityThatIsNoInteger) {
    expectTokenAnswer(200, R"({"accessToken":"abc","expiresIn":"60"})");
    expectFailure();
    EXPECT_TRUE(
        logged(2, "handleTokenResponse() not a valid response\n{\"accessToken\":\"abc\",\"expiresIn\":\"60\"}"));
}

TEST_F(TokenFailure, ByAMissingValidityKeepsTheNewToken) {
    expectTokenAnswer(200, R"({"accessToken":"abc"})");
    expectFailure();
    expectPath().withHeaders({{"Authorization", "Bearer abc"}});
    EXPECT_TRUE(get());
}

TEST_F(TokenFailure, ByAMissingConnectionLeavesNoToken) {
    haveToken("former");
    platform.network.connectFails = true;
    expectFailure();
    platform.network.connectFails = false;
    expectPath().withHeaders({});
    EXPECT_TRUE(get());
}

TEST_F(TokenFailure, IsRepeatedAfterFiveMinutesAtTheLatest) {
    nextRandomNumber = 240000;
    expectTokenAnswer(500, "");

    EXPECT_FALSE(service->getToken());

    EXPECT_EQ(300000, delayMilliseconds());
}

TEST_F(TokenFailure, IsRepeatedAfterOneMinuteAtTheEarliest) {
    nextRandomNumber = 240001;
    expectTokenAnswer(500, "");

    EXPECT_FALSE(service->getToken());

    EXPECT_EQ(60000, delayMilliseconds());
}

TEST_F(TokenFailure, ReplacesTheTimerOfTheTokenBefore) {
    expectValidity(3600);
    expectTokenAnswer(500, "");

    EXPECT_TRUE(service->getToken());
    EXPECT_FALSE(service->getToken());

    EXPECT_EQ(60000, delayMilliseconds());
}

} // namespace
