#include "RestTelephone.h"

namespace {

class RestRequest : public RestTelephone {};

TEST_F(RestRequest, BringsStatusBodyAndHeaders) {
    expectPath().answers(200, "body").responseHeaders = {{"X", "1"}};

    EXPECT_TRUE(get());

    EXPECT_EQ(200, status);
    EXPECT_EQ("body", response);
    EXPECT_EQ((Headers{{"X", "1"}}), responseHeaders);
    EXPECT_TRUE(logged(6, "connectionHandler() statusCode[200] result[0] maxResponseLength[1048576] totalLength[4] "
                          "responseData.length[4]"));
    EXPECT_EQ(std::vector<int>{1048576}, platform.network.readLimits);
}

TEST_F(RestRequest, CarriesMethodAndBody) {
    platform.network.expect(HttpClientIfc::HTTP_PUT, "/put", "{\"a\":1}").answers(200, "");
    platform.network.expect(HttpClientIfc::HTTP_POST, "/post", std::string("a\0b", 3)).answers(201, "");
    platform.network.expect(HttpClientIfc::HTTP_DELETE, "/delete").answers(204, "");

    EXPECT_TRUE(request(HttpClientIfc::HTTP_PUT, "/put", "{\"a\":1}"));
    EXPECT_TRUE(request(HttpClientIfc::HTTP_POST, "/post", std::string("a\0b", 3)));
    EXPECT_TRUE(request(HttpClientIfc::HTTP_DELETE, "/delete"));
}

TEST_F(RestRequest, IsRefusedWhileTheInterfaceIsDown) {
    interfaceGoesDown();

    EXPECT_FALSE(get());

    EXPECT_TRUE(logged(2, "connectionHandler() m_interface_status[false] m_ov_server_type[true]"));
    EXPECT_EQ(999, status);
    EXPECT_EQ("former response", response);
    EXPECT_TRUE(platform.network.connects.empty());
}

TEST_F(RestRequest, IsRefusedForAnotherServerType) {
    platform.store.change(PldsTags::SERVER_TYPE, "8");

    EXPECT_FALSE(get());

    EXPECT_TRUE(logged(2, "connectionHandler() m_interface_status[true] m_ov_server_type[false]"));
    EXPECT_TRUE(platform.network.connects.empty());
}

TEST_F(RestRequest, SetsUpTheConnectionWithCertificatesAndOptions) {
    expectPath();

    EXPECT_TRUE(get());

    EXPECT_EQ(std::vector<std::string>{server}, platform.network.connects);
    EXPECT_EQ(std::vector<int>{44}, platform.network.clients);
    EXPECT_EQ((std::vector<int>{36, 37}), platform.network.options);
    EXPECT_EQ(std::vector<CertificateMgmtSvcIfc*>{&platform.certificates}, platform.certificatesUsed);
}

TEST_F(RestRequest, KeepsTheConnectionForTheNext) {
    expectPath();
    expectPath();

    EXPECT_TRUE(get());
    EXPECT_TRUE(get());

    EXPECT_EQ(1u, platform.network.connects.size());
    EXPECT_EQ(1, platform.network.requests[1].connection);
    EXPECT_EQ(1, platform.network.connectionsAlive);
    EXPECT_TRUE(platform.log.hasBeginning(4, "clearSecureConnection() force[false] m_secureConnEstablisher[0x"));
}

TEST_F(RestRequest, ReplacesAConnectionThatThePeerHasClosed) {
    expectPath();
    expectPath();

    EXPECT_TRUE(get());
    platform.network.closeByPeer();
    EXPECT_TRUE(get());

    EXPECT_EQ(2u, platform.network.connects.size());
    EXPECT_EQ(2, platform.network.requests[1].connection);
    EXPECT_EQ(1, platform.network.connectionsAlive);
    EXPECT_EQ(0, platform.network.closes) << "it was closed already";
}

TEST_F(RestRequest, DropsAConnectionThatEndsWithTheAnswer) {
    expectPath().thenCloses();

    EXPECT_TRUE(get());

    EXPECT_EQ(0, platform.network.connectionsAlive);
    EXPECT_TRUE(logged(4, "clearSecureConnection() force[false] m_secureConnEstablisher[(nil)]"));
}

TEST_F(RestRequest, FailsWithoutAConnection) {
    platform.network.connectFails = true;

    EXPECT_FALSE(get());

    EXPECT_TRUE(logged(3, "connectionHandler() no connection possible."));
    EXPECT_TRUE(logged(4, "clearSecureConnection() force[true] m_secureConnEstablisher[(nil)]"));
    EXPECT_EQ(std::vector<std::string>{server}, platform.network.connects);
    EXPECT_EQ(0u, requestCount());
}

TEST_F(RestRequest, TriesToConnectAnewAfterAFailure) {
    platform.network.connectFails = true;
    EXPECT_FALSE(get());
    platform.network.connectFails = false;
    expectPath();

    EXPECT_TRUE(get());

    EXPECT_EQ(2u, platform.network.connects.size());
}

TEST_F(RestRequest, ClosesTheConnectionWhenItCannotBeSent) {
    expectPath().failsToSend();

    EXPECT_FALSE(get());

    EXPECT_TRUE(logged(2, "connectionHandler() HttpClient::FAILURE"));
    EXPECT_EQ(0, status);
    EXPECT_EQ(1, platform.network.closes);
    EXPECT_EQ(0, platform.network.connectionsAlive);
    EXPECT_TRUE(platform.network.readLimits.empty());
}

TEST_F(RestRequest, KeepsTheConnectionAndWhatWasReadWhenReadingFails) {
    expectPath().answers(200, "half").breaksOff();

    EXPECT_FALSE(get());

    EXPECT_TRUE(logged(2, "connectionHandler() HttpClient::FAILURE on reading response"));
    EXPECT_EQ(200, status);
    EXPECT_EQ("half", response);
    EXPECT_EQ(1, platform.network.connectionsAlive);
    EXPECT_EQ(0, platform.network.closes);
}

TEST_F(RestRequest, DropsAConnectionThatEndsBeforeTheAnswerIsWhole) {
    expectPath().answers(200, "half").breaksOff().thenCloses();

    EXPECT_FALSE(get());

    EXPECT_EQ(0, platform.network.connectionsAlive);
}

TEST_F(RestRequest, HasNoStatusAndNoLengthWhenNothingCanBeRead) {
    expectPath().bringsNothing();

    EXPECT_FALSE(get());

    EXPECT_EQ(0, status);
    EXPECT_TRUE(logged(6, "connectionHandler() statusCode[0] result[1] maxResponseLength[1048576] totalLength[0] "
                          "responseData.length[15]"));
}

TEST_F(RestRequest, KeepsAConnectionThatCannotBeAskedWhetherItIsOpen) {
    expectPath().whileAwaited([this] { platform.network.hidesConnection = true; });
    expectPath();

    EXPECT_TRUE(get());
    platform.network.hidesConnection = false;
    EXPECT_TRUE(get());

    EXPECT_EQ(1u, platform.network.connects.size());
}

class SendResult : public RestTelephone, public testing::WithParamInterface<int> {};

TEST_P(SendResult, OtherThanFailureMeansSent) {
    expectPath().answers(200, "body").sendResult = static_cast<HttpClientIfc::eResult>(GetParam());

    EXPECT_TRUE(get());

    EXPECT_EQ("body", response);
}

INSTANTIATE_TEST_SUITE_P(Number, SendResult, testing::Values(-1, 0, 2, 3, 2147483647));

class ReadResult : public RestTelephone, public testing::WithParamInterface<int> {};

TEST_P(ReadResult, OtherThanFailureAndMoreMeansTheEnd) {
    expectPath().answers(200, "body").readResult = static_cast<HttpClientIfc::eResult>(GetParam());

    EXPECT_TRUE(get());

    EXPECT_EQ("body", response);
    EXPECT_EQ(1u, platform.network.readLimits.size());
}

INSTANTIATE_TEST_SUITE_P(Number, ReadResult, testing::Values(-1, 0, 3, 2147483647));

TEST_F(RestRequest, CollectsALongBodyChunkByChunk) {
    expectPath().answers(200, "one ").moreChunks = {"two ", "", "three"};

    EXPECT_TRUE(get());

    EXPECT_EQ("one two three", response);
    EXPECT_EQ((std::vector<int>{1048576, 1048576, 1048576, 1048576}), platform.network.readLimits);
    EXPECT_TRUE(logged(6, "connectionHandler() statusCode[200] result[2] maxResponseLength[1048576] totalLength[13] "
                          "responseData.length[4]"));
}

TEST_F(RestRequest, AppendsTheChunkOfAReadThatFailed) {
    Exchange& exchange = expectPath().answers(200, "one ").breaksOff();
    exchange.moreChunks = {"two ", "thr"};

    EXPECT_FALSE(get());

    EXPECT_EQ("one two thr", response);
    EXPECT_TRUE(logged(2, "connectionHandler() HttpClient::FAILURE on reading response"));
}

TEST_F(RestRequest, GoesOutWithoutAuthorisationWhileThereIsNoToken) {
    expectPath().withHeaders({});

    EXPECT_TRUE(get());

    EXPECT_FALSE(platform.log.contains("populateToken()"));
}

TEST_F(RestRequest, CarriesTheToken) {
    haveToken("abc");
    expectPath().withHeaders({{"Authorization", "Bearer abc"}});

    EXPECT_TRUE(get());

    EXPECT_TRUE(logged(6, "populateToken() m_accessToken[abc]"));
    EXPECT_EQ((Headers{{"Authorization", "Bearer abc"}}), requestHeaders);
}

TEST_F(RestRequest, KeepsTheAuthorisationThatTheCallerGave) {
    haveToken("abc");
    requestHeaders = {{"Authorization", "Basic x"}, {"B", "2"}};
    expectPath().withHeaders({{"Authorization", "Basic x"}, {"B", "2"}});

    EXPECT_TRUE(get());

    EXPECT_FALSE(platform.log.contains("populateToken()"));
}

class Answered : public RestTelephone, public testing::WithParamInterface<int> {};

TEST_P(Answered, CountsAsAnAnswer) {
    expectPath().answers(GetParam(), "body");

    EXPECT_TRUE(get());

    EXPECT_EQ(GetParam(), status);
    EXPECT_EQ("body", response);
    EXPECT_EQ(1u, requestCount());
}

INSTANTIATE_TEST_SUITE_P(Status, Answered, testing::Values(200, 201, 204, 304, 404));

class Unexpected : public RestTelephone, public testing::WithParamInterface<int> {};

TEST_P(Unexpected, IsNoAnswerAndNotRepeated) {
    expectPath().answers(GetParam(), "why").location = "https://elsewhere/x";

    EXPECT_FALSE(get());

    EXPECT_EQ(GetParam(), status);
    EXPECT_TRUE(logged(6, "connectionHandler() unexpected response\nwhy\n"));
    EXPECT_EQ(1u, requestCount());
    EXPECT_EQ(1, platform.network.connectionsAlive);
}

INSTANTIATE_TEST_SUITE_P(Status, Unexpected,
                         testing::Values(0, 100, 202, 203, 205, 300, 303, 305, 306, 308, 400, 401, 403, 405, 428, 430,
                                         500, 502, 503));

TEST_F(RestRequest, HoldsNoSemaphoreButTheConnectionsWhileItWaits) {
    std::vector<std::string> held;
    expectPath().whileAwaited([&] { held = platform.locks.held(); });

    EXPECT_TRUE(get());

    EXPECT_EQ(std::vector<std::string>{"m_connectionSem"}, held);
}

TEST_F(RestRequest, WaitsForAnotherThatIsUnderWay) {
    std::string waitedFor;
    expectPath().whileAwaited([&] {
        try {
            get("/other");
        } catch (const WouldBlockForEver& block) {
            waitedFor = block.semaphore;
        }
    });

    EXPECT_TRUE(get());

    EXPECT_EQ("m_connectionSem", waitedFor);
}

TEST_F(RestRequest, StopClosesTheConnectionUnderItsSemaphore) {
    expectPath();
    EXPECT_TRUE(get());

    service->stop();

    EXPECT_EQ(1, platform.network.closes);
    EXPECT_EQ(0, platform.network.connectionsAlive);
    EXPECT_TRUE(logged(4, "clearSecureConnection() force[true] m_secureConnEstablisher[(nil)]"));
}

TEST_F(RestRequest, DestructionClosesTheConnection) {
    expectPath();
    EXPECT_TRUE(get());

    service.reset();

    EXPECT_EQ(1, platform.network.closes);
    EXPECT_EQ(0, platform.network.connectionsAlive);
}

} // namespace
