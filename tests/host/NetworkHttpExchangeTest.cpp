#include "support/NetworkFixture.h"

#include <ctime>

namespace {

constexpr std::size_t mebibyte = 1024 * 1024;
const std::string emptyAnswer = "HTTP/1.1 204 No Content\r\n\r\n";

std::string answerWith(const std::string& body, const std::string& headers = "") {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + headers + "\r\n" + body;
}

std::string chunk(const std::string& data) {
    char length[32];
    std::snprintf(length, sizeof length, "%zx\r\n", data.size());
    return length + data + "\r\n";
}

/// A body of that length in which every byte depends on its place.
std::string patternBody(std::size_t length) {
    std::string body(length, '\0');
    for (std::size_t index = 0; index < length; ++index) {
        body[index] = static_cast<char>('a' + (index * 7 + index / 26) % 26);
    }
    return body;
}

class HttpExchange : public NetworkFixture {
protected:
    /// Starts a server that runs the script, and connects to it.
    void connectTo(ScriptedTlsServer::Script script) {
        m_server = std::make_unique<ScriptedTlsServer>(serverOptions(), std::move(script));
        m_establisher = std::make_unique<SecureConnectionEstablisher>(&service);
        ASSERT_TRUE(m_establisher->connect(m_server->url()));
    }

    /// One exchange against a server that gives that answer and then waits for the client.
    Answer exchangeFor(const std::string& answer, const Request& request = {}) {
        connectTo([answer](ScriptedPeer& peer) {
            peer.readRequest();
            peer.write(answer);
            peer.waitForEnd();
        });
        return exchange(*m_establisher, request);
    }

    /// What the server reads of that request.
    std::string sentText(const Request& request) {
        std::string text;
        connectTo([&text](ScriptedPeer& peer) {
            text = peer.readRequest();
            peer.write(emptyAnswer);
        });
        EXPECT_EQ(exchange(*m_establisher, request).status, 204);
        return text;
    }

    bool isOpen() { return m_establisher->getConnection()->isOpen(); }
    std::string authority() const { return "127.0.0.1:" + std::to_string(m_server->port()); }

    std::unique_ptr<ScriptedTlsServer> m_server;
    std::unique_ptr<SecureConnectionEstablisher> m_establisher;
};

TEST_F(HttpExchange, AGetHasHostAndContentTypeAndNoLength) {
    Request request;
    request.target = "/restapi/v1.0/path?query=1";
    const std::string text = sentText(request);
    EXPECT_EQ(text, "GET /restapi/v1.0/path?query=1 HTTP/1.1\r\nHost: " + authority() +
                        "\r\nContent-Type: application/json\r\n\r\n");
}

TEST_F(HttpExchange, GivenHeadersGoOut) {
    Request request;
    request.headers = {{"Authorization", "Bearer abc"}, {"X-Test", "1"}};
    const std::string text = sentText(request);
    EXPECT_NE(text.find("\r\nAuthorization: Bearer abc\r\n"), std::string::npos);
    EXPECT_NE(text.find("\r\nX-Test: 1\r\n"), std::string::npos);
}

TEST_F(HttpExchange, AGivenContentTypeReplacesTheSetOne) {
    Request request;
    request.headers = {{"content-type", "text/plain"}};
    const std::string text = sentText(request);
    EXPECT_NE(text.find("content-type: text/plain\r\n"), std::string::npos);
    EXPECT_EQ(text.find("application/json"), std::string::npos);
}

TEST_F(HttpExchange, EmptyBodiesOfPostPutAndDeleteHaveLengthZero) {
    for (const auto& [method, name] : {std::pair{HttpClientIfc::HTTP_POST, "POST"},
                                       {HttpClientIfc::HTTP_PUT, "PUT"},
                                       {HttpClientIfc::HTTP_DELETE, "DELETE"}}) {
        Request request;
        request.method = method;
        const std::string text = sentText(request);
        EXPECT_EQ(text.rfind(std::string(name) + " / HTTP/1.1\r\n", 0), 0U) << text;
        EXPECT_NE(text.find("\r\nContent-Length: 0\r\n"), std::string::npos) << text;
    }
}

TEST_F(HttpExchange, ABodyArrivesWholeWithItsLength) {
    Request request;
    request.method = HttpClientIfc::HTTP_POST;
    request.body = patternBody(3 * mebibyte) + std::string("\0end", 4);
    const std::string text = sentText(request);
    EXPECT_NE(text.find("\r\nContent-Length: " + std::to_string(request.body.size()) + "\r\n"), std::string::npos);
    EXPECT_TRUE(text.substr(text.find("\r\n\r\n") + 4) == request.body);
}

TEST_F(HttpExchange, AnEmptyTargetIsASendFailureAndSendsNothing) {
    std::atomic<bool> heard{false};
    connectTo([&heard](ScriptedPeer& peer) { heard = !peer.readRequest().empty(); });
    Request request;
    request.target.clear();
    EXPECT_EQ(exchange(*m_establisher, request).sent, HttpClientIfc::FAILURE);
    m_establisher.reset();
    m_server.reset();
    EXPECT_FALSE(heard);
}

TEST_F(HttpExchange, WhatWouldSplitARequestIsNotSent) {
    std::atomic<bool> heard{false};
    connectTo([&heard](ScriptedPeer& peer) { heard = !peer.readRequest().empty(); });
    Request splitTarget;
    splitTarget.target = "/a HTTP/1.1\r\nHost: x\r\n\r\n";
    Request splitHeader;
    splitHeader.headers = {{"X-Test", "a\r\nX-Other: b"}};
    Request splitName;
    splitName.headers = {{"X-Test: a\r\nX-Other", "b"}};
    for (const Request& request : {splitTarget, splitHeader, splitName}) {
        EXPECT_EQ(exchange(*m_establisher, request).sent, HttpClientIfc::FAILURE);
    }
    m_establisher.reset();
    m_server.reset();
    EXPECT_FALSE(heard);
}

TEST_F(HttpExchange, WithoutAConnectionEveryStepFails) {
    SecureConnectionEstablisher unconnected(&service);
    EXPECT_EQ(exchange(unconnected).sent, HttpClientIfc::FAILURE);
    HttpClient client;
    std::string data = "old";
    int total = 1;
    auto status = HttpClientIfc::STATUS_NONE;
    HttpClientIfc::Headers headers{{"old", "old"}};
    EXPECT_EQ(client.readResponse(nullptr, data, 10, status, total, headers), HttpClientIfc::FAILURE);
    EXPECT_EQ(data, "");
    EXPECT_TRUE(headers.empty());
    EXPECT_EQ(client.readMore(nullptr, data, 10), HttpClientIfc::FAILURE);
    EXPECT_EQ(client.getLocation(), "");
    EXPECT_EQ(client.getRetryAfter(), -1);
}

TEST_F(HttpExchange, StatusHeadersAndBodyAreRead) {
    const Answer answer =
        exchangeFor("HTTP/1.1 404 Not Found\r\nContent-Length: 5\r\nX-Test: a\r\nX-Test: b\r\n\r\nhello");
    EXPECT_EQ(answer.result, HttpClientIfc::SUCCESS);
    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, "hello");
    EXPECT_EQ(answer.totalLength, 5);
    EXPECT_EQ(answer.headers.count("X-Test"), 2U);
    EXPECT_EQ(answer.headers.find("Content-Length")->second, "5");
    EXPECT_EQ(answer.location, "");
    EXPECT_EQ(answer.retryAfterSeconds, -1);
    EXPECT_TRUE(isOpen());
}

TEST_F(HttpExchange, TheConnectionServesManyRequests) {
    connectTo([](ScriptedPeer& peer) {
        for (int count = 0;; ++count) {
            const std::string request = peer.readRequest();
            if (request.empty()) {
                return;
            }
            peer.write(answerWith(request.substr(0, request.find(" HTTP"))));
        }
    });
    for (int count = 0; count < 20; ++count) {
        Request request;
        request.target = "/" + std::to_string(count);
        EXPECT_EQ(exchange(*m_establisher, request).body, "GET /" + std::to_string(count));
        ASSERT_TRUE(isOpen());
    }
    EXPECT_EQ(m_server->connections(), 1);
}

TEST_F(HttpExchange, AChunkedBodyOfThreeMebibytesTakesThreeReads) {
    const std::string body = patternBody(3 * mebibyte);
    std::string text = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (std::size_t offset = 0; offset < body.size(); offset += 50'000) {
        text += chunk(body.substr(offset, 50'000));
    }
    const Answer answer = exchangeFor(text + "0\r\n\r\n");
    EXPECT_EQ(answer.result, HttpClientIfc::SUCCESS);
    EXPECT_EQ(answer.reads, 3);
    EXPECT_EQ(answer.totalLength, static_cast<int>(mebibyte));
    EXPECT_TRUE(answer.body == body);
    EXPECT_TRUE(isOpen());
}

TEST_F(HttpExchange, ALongBodyIsReadInPartsOfTheMaximumLength) {
    const std::string body = patternBody(2 * mebibyte + 1);
    const Answer answer = exchangeFor(answerWith(body));
    EXPECT_EQ(answer.reads, 3);
    EXPECT_EQ(answer.totalLength, static_cast<int>(body.size()));
    EXPECT_TRUE(answer.body == body);
    EXPECT_TRUE(isOpen());
}

TEST_F(HttpExchange, AReadNeverGivesMoreThanItsMaximum) {
    connectTo([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write(answerWith("abcdefg"));
        peer.waitForEnd();
    });
    HttpClient client;
    SecureConnection* connection = m_establisher->getConnection();
    ASSERT_EQ(client.send(connection, HttpClientIfc::HTTP_GET, 0, {}, "/", nullptr, 0, "", "", 1, 0),
              HttpClientIfc::SUCCESS);
    std::string part;
    int total = 0;
    auto status = HttpClientIfc::STATUS_NONE;
    HttpClientIfc::Headers headers;
    EXPECT_EQ(client.readResponse(connection, part, 3, status, total, headers), HttpClientIfc::MORE_DATA);
    EXPECT_EQ(part, "abc");
    EXPECT_EQ(total, 7);
    EXPECT_FALSE(connection->isOpen()) << "the rest of the body is in the way of another request";
    EXPECT_EQ(client.readMore(connection, part, 3), HttpClientIfc::MORE_DATA);
    EXPECT_EQ(part, "def");
    EXPECT_EQ(client.readMore(connection, part, 3), HttpClientIfc::SUCCESS);
    EXPECT_EQ(part, "g");
    EXPECT_TRUE(connection->isOpen());
    EXPECT_EQ(client.readMore(connection, part, 3), HttpClientIfc::FAILURE) << "nothing is left";
}

TEST_F(HttpExchange, AnEmptyBodyIsComplete) {
    const Answer answer = exchangeFor(answerWith(""));
    EXPECT_EQ(answer.result, HttpClientIfc::SUCCESS);
    EXPECT_EQ(answer.reads, 1);
    EXPECT_EQ(answer.totalLength, 0);
    EXPECT_TRUE(isOpen());
}

TEST_F(HttpExchange, StatusesWithoutABodyDoNotWaitForOne) {
    for (const char* text :
         {"HTTP/1.1 204 No Content\r\n\r\n", "HTTP/1.1 304 Not Modified\r\nContent-Length: 10\r\n\r\n"}) {
        const Answer answer = exchangeFor(text);
        EXPECT_EQ(answer.result, HttpClientIfc::SUCCESS) << text;
        EXPECT_EQ(answer.body, "");
        EXPECT_EQ(answer.totalLength, 0);
        EXPECT_TRUE(isOpen());
    }
}

TEST_F(HttpExchange, InterimResponsesAreSkipped) {
    const Answer answer = exchangeFor("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLocation: /no\r\n\r\n" +
                                      answerWith("yes"));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "yes");
    EXPECT_EQ(answer.location, "");
}

TEST_F(HttpExchange, AnAnswerWithConnectionCloseIsCompleteAndEndsTheConnection) {
    const Answer answer = exchangeFor(answerWith("last", "Connection: close\r\n"));
    EXPECT_EQ(answer.result, HttpClientIfc::SUCCESS);
    EXPECT_EQ(answer.body, "last");
    EXPECT_FALSE(isOpen());
}

TEST_F(HttpExchange, ABodyDelimitedByTheEndOfTheConnectionIsComplete) {
    connectTo([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 200 OK\r\n\r\nuntil the ");
        peer.write("end");
        peer.end();
    });
    const Answer answer = exchange(*m_establisher);
    EXPECT_EQ(answer.result, HttpClientIfc::SUCCESS);
    EXPECT_EQ(answer.body, "until the end");
    EXPECT_EQ(answer.totalLength, 13);
    EXPECT_FALSE(isOpen());
}

TEST_F(HttpExchange, AnHttp10AnswerEndsTheConnection) {
    const Answer answer = exchangeFor("HTTP/1.0 200 OK\r\nContent-Length: 2\r\n\r\nok");
    EXPECT_EQ(answer.body, "ok");
    EXPECT_FALSE(isOpen());
}

TEST_F(HttpExchange, ABodyThatTricklesInArrivesWhole) {
    const std::string text = answerWith(patternBody(40));
    connectTo([&text](ScriptedPeer& peer) {
        peer.readRequest();
        for (const char byte : text) {
            peer.write(std::string(1, byte));
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
        }
        peer.waitForEnd();
    });
    setLimits([](NetworkControl::Limits& limits) { limits.progressMilliseconds = 150; });
    const Answer answer = exchange(*m_establisher);
    EXPECT_EQ(answer.body, patternBody(40));
    EXPECT_TRUE(isOpen());
}

TEST_F(HttpExchange, LocationIsGivenAsItStands) {
    EXPECT_EQ(exchangeFor("HTTP/1.1 302 Found\r\nContent-Length: 0\r\nlocation: /relative?a=b\r\n\r\n").location,
              "/relative?a=b");
    EXPECT_EQ(exchangeFor("HTTP/1.1 307 Temporary Redirect\r\nContent-Length: 0\r\nLocation: https://host:1/x\r\n\r\n")
                  .location,
              "https://host:1/x");
    EXPECT_EQ(exchangeFor("HTTP/1.1 301 Moved Permanently\r\nContent-Length: 0\r\n\r\n").location, "");
}

TEST_F(HttpExchange, RetryAfterIsGivenInSeconds) {
    const auto retryAfter = [this](const std::string& header) {
        return exchangeFor("HTTP/1.1 429 Too Many Requests\r\nContent-Length: 0\r\n" + header + "\r\n")
            .retryAfterSeconds;
    };
    EXPECT_EQ(retryAfter("Retry-After: 5\r\n"), 5);
    EXPECT_EQ(retryAfter("retry-after: 0\r\n"), 0);
    EXPECT_EQ(retryAfter("Retry-After: later\r\n"), -1);
    EXPECT_EQ(retryAfter(""), -1);

    const std::time_t then = std::time(nullptr) + 100;
    char date[64];
    std::tm parts{};
    std::strftime(date, sizeof date, "Retry-After: %a, %d %b %Y %H:%M:%S GMT\r\n", gmtime_r(&then, &parts));
    const int seconds = retryAfter(date);
    EXPECT_GE(seconds, 90);
    EXPECT_LE(seconds, 100);
}

TEST_F(HttpExchange, TheTokenStaysOutOfTheLog) {
    Request request;
    request.headers = {{"Authorization", "Bearer verySecret"}};
    request.target = "/?access_token=verySecret";
    exchangeFor("garbage\r\n\r\n", request);
    exchangeFor(answerWith("verySecret"), request);
    EXPECT_FALSE(RecordedHostLog::mentions("verySecret"));
}

} // namespace
