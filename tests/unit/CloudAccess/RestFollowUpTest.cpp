#include "RestTelephone.h"
#include "data/ServiceDataManager.h"
#include "threads/Threader.h"

#include <stdexcept>

namespace {

class Redirection : public RestTelephone {};

class RedirectingStatus : public RestTelephone, public testing::WithParamInterface<int> {};

TEST_P(RedirectingStatus, IsFollowed) {
    expectPath().redirectsTo(GetParam(), "https://other/b?x=1");
    expectPath("/b?x=1").answers(200, "there");

    EXPECT_TRUE(get());

    EXPECT_EQ(200, status);
    EXPECT_EQ("there", response);
    EXPECT_TRUE(logged(4, "connectionHandler() requestCount[1] redirectionUrl[https://other/b?x=1]"));
}

INSTANTIATE_TEST_SUITE_P(Status, RedirectingStatus, testing::Values(301, 302, 307));

TEST_F(Redirection, ReachesTheOldServerWhileItsConnectionIsOpen) {
    expectPath().redirectsTo(302, "https://other/b");
    expectPath("/b");

    EXPECT_TRUE(get());

    EXPECT_EQ(std::vector<std::string>{server}, platform.network.connects);
    EXPECT_EQ(server, platform.network.requests[1].server);
}

TEST_F(Redirection, ReachesTheNewServerWhenTheOldOneHasClosed) {
    expectPath().redirectsTo(302, "https://other/b").thenCloses();
    expectPath("/b");

    EXPECT_TRUE(get());

    EXPECT_EQ((std::vector<std::string>{server, "https://other/b"}), platform.network.connects);
    EXPECT_EQ("https://other/b", platform.network.requests[1].server);
}

TEST_F(Redirection, ToARelativeLocationIsHandedToConnectAsItStands) {
    expectPath().redirectsTo(302, "/b").thenCloses().whileAwaited([this] { platform.network.connectFails = true; });

    EXPECT_FALSE(get());

    EXPECT_EQ((std::vector<std::string>{server, "/b"}), platform.network.connects);
    EXPECT_EQ(302, status);
    EXPECT_TRUE(logged(3, "connectionHandler() no connection possible."));
}

TEST_F(Redirection, ToARelativeLocationGoesOverTheOpenConnection) {
    expectPath().redirectsTo(301, "/b");
    expectPath("/b");

    EXPECT_TRUE(get());
}

TEST_F(Redirection, RepeatsMethodBodyAndHeaders) {
    haveToken("abc");
    requestHeaders = {{"A", "1"}};
    const Headers sent = {{"A", "1"}, {"Authorization", "Bearer abc"}};
    platform.network.expect(HttpClientIfc::HTTP_PUT, "/path", "text")
        .withHeaders(sent)
        .redirectsTo(307, "https://other/b");
    platform.network.expect(HttpClientIfc::HTTP_PUT, "/b", "text").withHeaders(sent).answers(200, "");

    EXPECT_TRUE(request(HttpClientIfc::HTTP_PUT, "/path", "text"));
}

TEST_F(Redirection, KeepsTheAuthorisationOfTheFirstAttemptThroughTheChain) {
    haveToken("first");
    expectPath()
        .withHeaders({{"Authorization", "Bearer first"}})
        .redirectsTo(302, "https://other/b")
        .whileAwaited([this] { haveToken("second"); });
    expectPath("/b").withHeaders({{"Authorization", "Bearer first"}});

    EXPECT_TRUE(get());
}

TEST_F(Redirection, ReplacesBodyAndHeadersOfTheAnswerBefore) {
    expectPath().answers(302, "moved").redirectsTo(302, "https://other/b").responseHeaders = {{"Old", "1"}};
    expectPath("/b").answers(200, "new").responseHeaders = {{"New", "2"}};

    EXPECT_TRUE(get());

    EXPECT_EQ("new", response);
    EXPECT_EQ((Headers{{"New", "2"}}), responseHeaders);
}

TEST_F(Redirection, SucceedsThreeTimesInAChain) {
    expectPath().redirectsTo(301, "https://s/1");
    expectPath("/1").redirectsTo(302, "https://s/2");
    expectPath("/2").redirectsTo(307, "https://s/3");
    expectPath("/3").answers(200, "end");

    EXPECT_TRUE(get());

    EXPECT_EQ("end", response);
    EXPECT_TRUE(logged(4, "connectionHandler() requestCount[3] redirectionUrl[https://s/3]"));
}

TEST_F(Redirection, FailsTheFourthTime) {
    expectPath().redirectsTo(301, "https://s/1");
    expectPath("/1").redirectsTo(301, "https://s/2");
    expectPath("/2").redirectsTo(301, "https://s/3");
    expectPath("/3").redirectsTo(302, "https://nowhere"); // the count comes before the path, which it does not have

    EXPECT_FALSE(get());

    EXPECT_EQ(302, status);
    EXPECT_TRUE(logged(2, "connectionHandler() too many redirects"));
    EXPECT_EQ(4u, requestCount());
}

TEST_F(Redirection, WithoutAPathThrowsAndLeavesNoSemaphoreTaken) {
    expectPath().redirectsTo(302, "https://other");

    EXPECT_THROW(get(), std::out_of_range);

    EXPECT_TRUE(logged(4, "connectionHandler() requestCount[1] redirectionUrl[https://other]"));
    EXPECT_TRUE(platform.locks.held().empty());
    expectPath();
    EXPECT_TRUE(get());
}

class Retry : public RestTelephone {};

TEST_F(Retry, WaitsAsLongAsTheCloudAsks) {
    expectPath().asksToWait(30);
    expectPath().answers(200, "now");
    bool toldBefore = false;
    platform.threads.duringSleep = [&] {
        toldBefore = logged(4, "connectionHandler() requestCount[1] retryAfter[30]");
    };

    EXPECT_TRUE(get());

    EXPECT_TRUE(toldBefore);
    EXPECT_EQ("now", response);
    EXPECT_EQ(std::vector<int>{30}, platform.threads.sleepsSeconds);
    EXPECT_EQ(30000, platform.context.nowMilliseconds());
}

TEST_F(Retry, ComesAtOnceForZeroSeconds) {
    expectPath().asksToWait(0);
    expectPath();

    EXPECT_TRUE(get());

    EXPECT_EQ(std::vector<int>{0}, platform.threads.sleepsSeconds);
}

class TooLongAWait : public RestTelephone, public testing::WithParamInterface<int> {};

TEST_P(TooLongAWait, IsNotWaitedFor) {
    expectPath().asksToWait(GetParam());

    EXPECT_FALSE(get());

    EXPECT_EQ(429, status);
    EXPECT_TRUE(logged(2, "connectionHandler() retry-after value is too high [" + std::to_string(GetParam()) + "]"));
    EXPECT_TRUE(platform.threads.sleepsSeconds.empty());
    EXPECT_EQ(1u, requestCount());
}

INSTANTIATE_TEST_SUITE_P(Seconds, TooLongAWait, testing::Values(31, 3600, 2147483647, -1, -30));

TEST_F(Retry, RepeatsMethodBodyAndTarget) {
    platform.network.expect(HttpClientIfc::HTTP_POST, "/path", "text").asksToWait(1);
    platform.network.expect(HttpClientIfc::HTTP_POST, "/path", "text").answers(201, "");

    EXPECT_TRUE(request(HttpClientIfc::HTTP_POST, "/path", "text"));
}

TEST_F(Retry, GoesToTheDefaultServerWhenTheConnectionHasClosed) {
    expectPath().asksToWait(1).thenCloses();
    expectPath();

    EXPECT_TRUE(get());

    EXPECT_EQ((std::vector<std::string>{server, server}), platform.network.connects);
}

TEST_F(Retry, GoesToTheLocationOfTheAnswerWhenItHasOne) {
    Exchange& busy = expectPath().asksToWait(1).thenCloses();
    busy.location = "https://other/b";
    expectPath();

    EXPECT_TRUE(get());

    EXPECT_EQ((std::vector<std::string>{server, "https://other/b"}), platform.network.connects);
}

TEST_F(Retry, FailsTheFourthTime) {
    for (int attempt = 0; attempt < 4; ++attempt) {
        expectPath().asksToWait(2);
    }

    EXPECT_FALSE(get());

    EXPECT_EQ(429, status);
    EXPECT_TRUE(logged(2, "connectionHandler() too many requests"));
    EXPECT_EQ((std::vector<int>{2, 2, 2}), platform.threads.sleepsSeconds);
    EXPECT_EQ(4u, requestCount());
}

TEST_F(Retry, LooksAtTheWaitBeforeTheCount) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        expectPath().asksToWait(0);
    }
    expectPath().asksToWait(40);

    EXPECT_FALSE(get());

    EXPECT_TRUE(logged(2, "connectionHandler() retry-after value is too high [40]"));
    EXPECT_FALSE(logged(2, "connectionHandler() too many requests"));
}

TEST_F(Retry, SharesTheCountWithRedirections) {
    expectPath().redirectsTo(302, "https://s/1");
    expectPath("/1").asksToWait(1);
    expectPath("/1").redirectsTo(302, "https://s/2");
    expectPath("/2").asksToWait(1);

    EXPECT_FALSE(get());

    EXPECT_TRUE(logged(2, "connectionHandler() too many requests"));
    EXPECT_EQ(4u, requestCount());
}

TEST_F(Retry, IsRefusedWhenTheInterfaceWentDownMeanwhile) {
    expectPath().asksToWait(1).whileAwaited([this] { interfaceGoesDown(); });

    EXPECT_FALSE(get());

    EXPECT_EQ(1u, requestCount());
    EXPECT_EQ(429, status);
    EXPECT_TRUE(logged(2, "connectionHandler() m_interface_status[false] m_ov_server_type[true]"));
}

/// Counts the attempts of the engine, follow-ups included.
class CountingService : public OrvaneService {
public:
    using OrvaneService::OrvaneService;

    bool connectionHandler(const std::string& path, std::string body, HttpClientIfc::HTTPMETHOD method,
                           std::string& responseData, Headers& requestHeaders, Headers& responseHeaders,
                           StatusCode& statusCode, std::string redirectionUrl, int requestCount) override {
        counts.push_back(requestCount);
        redirectionUrls.push_back(redirectionUrl);
        return OrvaneService::connectionHandler(path, body, method, responseData, requestHeaders, responseHeaders,
                                                statusCode, redirectionUrl, requestCount);
    }

    std::vector<int> counts;
    std::vector<std::string> redirectionUrls;
};

class FollowUp : public RestTelephone {
protected:
    void expectNone() {
        EXPECT_FALSE(get());
        EXPECT_TRUE(logged(2, "connectionHandler() HttpClient::FAILURE on reading response"));
        EXPECT_EQ(1u, requestCount());
        EXPECT_TRUE(platform.threads.sleepsSeconds.empty());
    }
};

TEST_F(FollowUp, DoesNotComeBehindARedirectionThatBreaksOff) {
    expectPath().redirectsTo(302, "https://s/1").breaksOff();
    expectNone();
}

TEST_F(FollowUp, DoesNotComeBehindARequestToWaitThatBreaksOff) {
    expectPath().asksToWait(1).breaksOff();
    expectNone();
}

TEST_F(FollowUp, GoesThroughTheVirtualOperation) {
    platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, "");
    nameSemaphoresOfNextService();
    CountingService counting(new ServiceDataManager, new Threader);
    counting.init(platform.context);
    platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, server);
    expectPath().redirectsTo(302, "https://s/1");
    expectPath("/1").asksToWait(0);
    expectPath("/1");

    EXPECT_TRUE(counting.connectionHandler("/path", "", HttpClientIfc::HTTP_GET, response, requestHeaders,
                                           responseHeaders, status, "", 0));

    EXPECT_EQ((std::vector<int>{0, 1, 2}), counting.counts);
    EXPECT_EQ((std::vector<std::string>{"", "https://s/1", ""}), counting.redirectionUrls);
}

} // namespace
