#pragma once

#include "network/HttpClientIfc.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// One exchange as the test expects it and what comes back.
struct Exchange {
    // What the request has to be.
    HttpClientIfc::HTTPMETHOD method = HttpClientIfc::HTTP_GET;
    std::string target;
    std::string body;
    std::optional<HttpClientIfc::Headers> requestHeaders; ///< all of them, when given

    // What comes back.
    int status = 200;
    std::string responseBody;
    HttpClientIfc::Headers responseHeaders;
    std::string location;
    int retryAfterSeconds = -1;
    std::vector<std::string> moreChunks; ///< parts of the body behind `responseBody`
    HttpClientIfc::eResult sendResult = HttpClientIfc::SUCCESS;
    HttpClientIfc::eResult readResult = HttpClientIfc::SUCCESS; ///< of the last part
    bool readsNothing = false;    ///< reading fails before anything of the answer is known
    bool closesAfter = false;     ///< the peer closes the connection behind the answer
    std::function<void()> during; ///< runs while the answer is awaited

    Exchange& answers(int newStatus, std::string newBody = std::string()) {
        status = newStatus;
        responseBody = std::move(newBody);
        return *this;
    }
    Exchange& redirectsTo(int newStatus, std::string newLocation) {
        location = std::move(newLocation);
        return answers(newStatus);
    }
    Exchange& asksToWait(int seconds) {
        retryAfterSeconds = seconds;
        return answers(429);
    }
    Exchange& failsToSend() {
        sendResult = HttpClientIfc::FAILURE;
        return *this;
    }
    Exchange& breaksOff() {
        readResult = HttpClientIfc::FAILURE;
        return *this;
    }
    /// The connection ends before anything of the answer is there.
    Exchange& bringsNothing() {
        readsNothing = true;
        return *this;
    }
    Exchange& thenCloses() {
        closesAfter = true;
        return *this;
    }
    Exchange& withHeaders(HttpClientIfc::Headers headers) {
        requestHeaders = std::move(headers);
        return *this;
    }
    Exchange& whileAwaited(std::function<void()> action) {
        during = std::move(action);
        return *this;
    }
};

/// The server side of every REST exchange. A request that is not the next expected one fails the test.
class ScriptedNetwork {
public:
    struct Request {
        HttpClientIfc::HTTPMETHOD method;
        std::string target;
        std::string body;
        HttpClientIfc::Headers headers;
        std::string contentType;
        std::string server; ///< name of the server that the connection was made to
        int connection;     ///< number of the connection, from 1
    };

    Exchange& expect(HttpClientIfc::HTTPMETHOD method, const std::string& target,
                     const std::string& body = std::string());
    Exchange& expectGet(const std::string& target) { return expect(HttpClientIfc::HTTP_GET, target); }

    /// Answers what no expectation was made for; without it such a request fails the test.
    std::function<void(const Request&, Exchange&)> answersUnexpected;
    bool connectFails = false;
    bool hidesConnection = false;      ///< establishers have no connection object to show
    std::vector<std::string> connects; ///< URLs, failed ones too
    std::vector<int> clients;          ///< argument of setupClient, for each establisher
    std::vector<int> options;
    std::vector<int> readLimits;
    std::vector<Request> requests;
    int connectionsAlive = 0;
    int clientsAlive = 0;
    int closes = 0; ///< connections that the service closed

    /// The peer closes the connection that is open now.
    void closeByPeer();
    /// Fails the test when an expected request did not come.
    void verify();

    // For the connection classes.
    std::unique_ptr<Exchange> accept(const Request& request);
    std::shared_ptr<bool> open(const std::string& url, int& number);

private:
    std::deque<std::unique_ptr<Exchange>> m_expected;
    std::shared_ptr<bool> m_open; ///< of the latest connection
    int m_connectionCount = 0;
};
