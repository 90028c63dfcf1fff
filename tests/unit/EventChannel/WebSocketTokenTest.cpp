#include "ChannelTelephone.h"

namespace {

class WebSocketTokenTest : public ChannelTelephone {
protected:
    bool handle(int status, std::string body) {
        return service->handleWebSocketAccessTokenResponse(static_cast<OrvaneService::StatusCode>(status), body);
    }
    /// URL that the socket would be opened with now.
    std::string url() {
        service->openWebSocketConnection();
        return lastUrl();
    }
};

TEST_F(WebSocketTokenTest, ALoginEndsWithATokenAndASocketToTheUriThatItNames) {
    withCallLog();
    connectWithEmptyCloud();
    EXPECT_EQ("/MODEL/MAC1/restapi/oauth/wstoken", platform.network.requests.back().target);
    EXPECT_EQ((std::vector<std::string>{"wss://events.example/ws?access_token=W1"}), platform.webSocket.urls);
    EXPECT_EQ(service.get(), platform.webSocket.app);
}

TEST_F(WebSocketTokenTest, ALoginWithDndAloneOpensASocketToo) {
    logIn({false, true});
    EXPECT_EQ(1u, socketsOpened());
}

TEST_F(WebSocketTokenTest, WithoutCallLogAndDndThereIsNoSocket) {
    logIn({false, false});
    EXPECT_EQ(0u, socketsOpened());
}

TEST_F(WebSocketTokenTest, ALoginGoesOnWithoutASocketWhenTheTokenIsRefused) {
    withCallLog();
    expectToken();
    expectExtension();
    expectGrants();
    expectWebSocketToken().answers(403, "no");
    connect();
    EXPECT_TRUE(service->isRunning());
    EXPECT_EQ(0u, socketsOpened());
    // Nothing asks again.
    passSeconds(600);
    EXPECT_EQ(0u, socketsOpened());
}

TEST_F(WebSocketTokenTest, TheRequestIsAPostWithoutBodyAndWithTheBearerTokenAlone) {
    logIn();
    expectWebSocketToken().withHeaders({{"Authorization", "Bearer T1"}});
    EXPECT_TRUE(service->getWebSocketAccessToken());
    EXPECT_TRUE(logged(4, "getWebSocketAccessToken()"));
}

TEST_F(WebSocketTokenTest, AServiceThatIsNotRunningAsksForNothing) {
    EXPECT_FALSE(service->getWebSocketAccessToken());
    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_TRUE(logged(4, "getWebSocketAccessToken()"));
}

TEST_F(WebSocketTokenTest, AnExchangeThatFailsIsNotLookedAt) {
    logIn();
    platform.network.connectFails = true;
    platform.network.closeByPeer();
    EXPECT_FALSE(service->getWebSocketAccessToken());
    EXPECT_FALSE(log().contains("handleWebSocketAccessTokenResponse"));
}

TEST_F(WebSocketTokenTest, AGoodAnswerIsStoredAndLogged) {
    logIn();
    EXPECT_TRUE(handle(200, R"({"uri":"wss://other/ws","ws_access_token":"fresh","expires_in":600})"));
    EXPECT_TRUE(
        logged(5, "handleWebSocketAccessTokenResponse() access token expires in[600], webSocket URI[wss://other/ws]"));
    EXPECT_EQ("wss://other/ws?access_token=fresh", url());
}

TEST_F(WebSocketTokenTest, AnotherStatusOrAnEmptyBodyIsRefused) {
    EXPECT_FALSE(handle(500, "sorry"));
    EXPECT_TRUE(logged(2, "handleWebSocketAccessTokenResponse() HTTP[500] responseData:\nsorry"));
    EXPECT_FALSE(handle(200, ""));
    EXPECT_TRUE(logged(2, "handleWebSocketAccessTokenResponse() HTTP[200] responseData:\n"));
}

TEST_F(WebSocketTokenTest, ABodyThatDoesNotParseIsRefused) {
    EXPECT_FALSE(handle(200, "{\n\"uri\":}"));
    EXPECT_TRUE(logged(2, "handleWebSocketAccessTokenResponse() error on line 2:7(9) unexpected token near '}'"))
        << log().text(2);
}

TEST_F(WebSocketTokenTest, ARootThatIsNoObjectIsRefused) {
    EXPECT_FALSE(handle(200, "[]"));
    EXPECT_TRUE(logged(2, "handleWebSocketAccessTokenResponse() not an object"));
}

TEST_F(WebSocketTokenTest, AMissingKeyIsRefusedAndWhatWasReadBeforeItStays) {
    logIn();
    const std::string noUri = R"({"ws_access_token":"fresh","expires_in":600})";
    EXPECT_FALSE(handle(200, noUri));
    EXPECT_TRUE(logged(2, "handleWebSocketAccessTokenResponse() not a valid response\n" + noUri));
    EXPECT_EQ("wss://events.example/ws?access_token=fresh", url());

    EXPECT_FALSE(handle(200, R"({"uri":"wss://other/ws","expires_in":600})"));
    EXPECT_EQ("wss://events.example/ws?access_token=fresh", url());

    EXPECT_FALSE(handle(200, R"({"ws_access_token":"third","uri":"wss://third/ws","expires_in":"600"})"));
    EXPECT_EQ("wss://third/ws?access_token=third", url());
}

TEST_F(WebSocketTokenTest, TheUrlTakesItsValuesAsTheyStand) {
    logIn();
    ASSERT_TRUE(handle(200, R"({"ws_access_token":"a b&c=d%","uri":"wss://x/y?z","expires_in":1})"));
    EXPECT_EQ("wss://x/y?z?access_token=a b&c=d%", url());
}

TEST_F(WebSocketTokenTest, AServiceThatIsNotRunningOpensNoSocket) {
    service->openWebSocketConnection();
    EXPECT_EQ(0u, socketsOpened());
    EXPECT_TRUE(logged(4, "openWebSocketConnection()"));
}

TEST_F(WebSocketTokenTest, TheSessionContextGoesIntoTheUrlDuringARecoveryOnly) {
    openSession();
    receive(contextFrame("context", 1));
    EXPECT_EQ("wss://events.example/ws?access_token=W1", url());
    service->setRecoverWebSocketConnection(true);
    EXPECT_EQ("wss://events.example/ws?access_token=W1&wsc=context", url());
}

TEST_F(WebSocketTokenTest, WithoutASessionContextARecoveryOpensAFreshSession) {
    openSession();
    service->setRecoverWebSocketConnection(true);
    EXPECT_EQ("wss://events.example/ws?access_token=W1", url());
}

} // namespace
