#include "ScriptedNetwork.h"

#include "TestPlatform.h"
#include "network/HttpClient.h"
#include "network/SecureConnection.h"
#include "network/SecureConnectionEstablisher.h"

#include <gtest/gtest.h>

Exchange& ScriptedNetwork::expect(HttpClientIfc::HTTPMETHOD method, const std::string& target,
                                  const std::string& body) {
    m_expected.push_back(std::make_unique<Exchange>());
    Exchange& exchange = *m_expected.back();
    exchange.method = method;
    exchange.target = target;
    exchange.body = body;
    return exchange;
}

void ScriptedNetwork::closeByPeer() {
    if (m_open) {
        *m_open = false;
    }
}

void ScriptedNetwork::verify() {
    for (const auto& exchange : m_expected) {
        ADD_FAILURE() << "expected request did not come: method " << exchange->method << " " << exchange->target;
    }
    m_expected.clear();
}

std::unique_ptr<Exchange> ScriptedNetwork::accept(const Request& request) {
    static const char* const methods[] = {"GET", "POST", "DELETE", "PUT"};
    TestPlatform::current().locks.checkRequest();
    TestPlatform::current().steps.add("request ", methods[request.method] + (" " + request.target));
    requests.push_back(request);
    if (m_expected.empty() && answersUnexpected) {
        auto exchange = std::make_unique<Exchange>();
        answersUnexpected(request, *exchange);
        return exchange;
    }
    if (m_expected.empty()) {
        ADD_FAILURE() << "unexpected request: method " << request.method << " " << request.target;
        return nullptr;
    }
    std::unique_ptr<Exchange> exchange = std::move(m_expected.front());
    m_expected.pop_front();
    EXPECT_EQ(exchange->method, request.method) << request.target;
    EXPECT_EQ(exchange->target, request.target);
    EXPECT_EQ(exchange->body, request.body) << request.target;
    EXPECT_EQ("application/json", request.contentType) << request.target;
    if (exchange->requestHeaders) {
        EXPECT_EQ(*exchange->requestHeaders, request.headers) << request.target;
    }
    return exchange;
}

std::shared_ptr<bool> ScriptedNetwork::open(const std::string& url, int& number) {
    TestPlatform::current().steps.add("connect ", url);
    connects.push_back(url);
    if (connectFails) {
        return nullptr;
    }
    number = ++m_connectionCount;
    m_open = std::make_shared<bool>(true);
    return m_open;
}

namespace {

class ScriptedConnection : public SecureConnection {
public:
    ScriptedConnection(std::shared_ptr<bool> open, int number, std::string server)
        : number(number), server(std::move(server)), m_open(std::move(open)) {
        ++TestPlatform::current().network.connectionsAlive;
    }
    ~ScriptedConnection() override { --TestPlatform::current().network.connectionsAlive; }

    bool isOpen() override {
        TestPlatform::current().locks.checkConnectionUse();
        return *m_open;
    }
    void close() override {
        TestPlatform::current().locks.checkConnectionUse();
        *m_open = false;
        TestPlatform::current().steps.add("close connection");
        ++TestPlatform::current().network.closes;
    }
    void closeByPeer() { *m_open = false; }

    const int number;
    const std::string server;

private:
    std::shared_ptr<bool> m_open;
};

} // namespace

struct SecureConnectionEstablisher::Representation {
    std::string url;
    std::unique_ptr<ScriptedConnection> connection;
};

SecureConnectionEstablisher::SecureConnectionEstablisher(CertificateMgmtSvcIfc* certificates)
    : m_representation(std::make_unique<Representation>()) {
    TestPlatform& platform = TestPlatform::current();
    platform.locks.checkRequest();
    platform.locks.checkConnectionUse();
    platform.certificatesUsed.push_back(certificates);
}

SecureConnectionEstablisher::~SecureConnectionEstablisher() {
    TestPlatform& platform = TestPlatform::current();
    platform.locks.checkConnectionUse();
    EXPECT_EQ(0, platform.network.clientsAlive) << "a client outlives its connection";
}

void SecureConnectionEstablisher::setupClient(CertificateMgmt::eInterface client) {
    TestPlatform::current().steps.add("set up client ", std::to_string(client));
    TestPlatform::current().network.clients.push_back(client);
}

void SecureConnectionEstablisher::addOption(int option) {
    TestPlatform::current().steps.add("connection option ", std::to_string(option));
    TestPlatform::current().network.options.push_back(option);
}

bool SecureConnectionEstablisher::connect(const std::string& url) {
    int number = 0;
    m_representation->url = url;
    const std::shared_ptr<bool> open = TestPlatform::current().network.open(url, number);
    if (open) {
        m_representation->connection = std::make_unique<ScriptedConnection>(open, number, url);
    }
    return open != nullptr;
}

std::string SecureConnectionEstablisher::getServerName() const {
    return m_representation->url;
}

std::string SecureConnectionEstablisher::getServerPort() const {
    return "443";
}

int SecureConnectionEstablisher::getConnectionKind() const {
    return 7;
}

SecureConnection* SecureConnectionEstablisher::getConnection() {
    return TestPlatform::current().network.hidesConnection ? nullptr : m_representation->connection.get();
}

struct HttpClient::Representation {
    std::string serverName;
    std::string serverPort;
    std::string contentType;
    std::unique_ptr<Exchange> exchange;
    std::size_t chunksRead = 0;
    bool answerRead = false; ///< the answer's headers are known
    std::string noLocation;

    eResult resultAfterPart() const {
        if (chunksRead < exchange->moreChunks.size()) {
            return MORE_DATA;
        }
        return exchange->readResult;
    }
};

HttpClient::HttpClient() : m_representation(std::make_unique<Representation>()) {
    EXPECT_EQ(1, ++TestPlatform::current().network.clientsAlive) << "one attempt at a time";
}

HttpClient::~HttpClient() {
    --TestPlatform::current().network.clientsAlive;
}

void HttpClient::setServer(const std::string& name, const std::string& port) {
    m_representation->serverName = name;
    m_representation->serverPort = port;
}

void HttpClient::setHttpRequestContentType(const std::string& contentType) {
    m_representation->contentType = contentType;
}

HttpClientIfc::eResult HttpClient::send(SecureConnection* connection, HTTPMETHOD method, int connectionKind,
                                        const Headers& headers, const std::string& target, const char* body,
                                        std::size_t bodyLength, const std::string& user, const std::string& password,
                                        int persistent, int reserved) {
    auto* scripted = dynamic_cast<ScriptedConnection*>(connection);
    if (scripted == nullptr) {
        ADD_FAILURE() << "send without a connection: " << target;
        return FAILURE;
    }
    EXPECT_EQ(nullptr, m_representation->exchange) << "a client serves one attempt";
    EXPECT_EQ(scripted->server, m_representation->serverName);
    EXPECT_EQ("443", m_representation->serverPort);
    EXPECT_EQ(7, connectionKind);
    EXPECT_EQ("", user);
    EXPECT_EQ("", password);
    EXPECT_EQ(1, persistent);
    EXPECT_EQ(0, reserved);
    m_representation->exchange =
        TestPlatform::current().network.accept({method, target, std::string(body, bodyLength), headers,
                                                m_representation->contentType, scripted->server, scripted->number});
    return m_representation->exchange ? m_representation->exchange->sendResult : FAILURE;
}

HttpClientIfc::eResult HttpClient::readResponse(SecureConnection* connection, std::string& responseData,
                                                int maximumLength, eStatusCode& statusCode, int& totalLength,
                                                Headers& headers) {
    Exchange& exchange = *m_representation->exchange;
    TestPlatform::current().network.readLimits.push_back(maximumLength);
    if (exchange.during) {
        const LockDiscipline::OtherThread meanwhile(TestPlatform::current().locks);
        exchange.during();
    }
    if (exchange.closesAfter) {
        static_cast<ScriptedConnection*>(connection)->closeByPeer();
    }
    if (exchange.readsNothing) {
        return FAILURE;
    }
    m_representation->answerRead = true;
    statusCode = static_cast<eStatusCode>(exchange.status);
    responseData = exchange.responseBody;
    headers = exchange.responseHeaders;
    totalLength = static_cast<int>(exchange.responseBody.size());
    for (const std::string& chunk : exchange.moreChunks) {
        totalLength += static_cast<int>(chunk.size());
    }
    return m_representation->resultAfterPart();
}

HttpClientIfc::eResult HttpClient::readMore(SecureConnection*, std::string& chunk, int maximumLength) {
    EXPECT_TRUE(chunk.empty()) << "a chunk is read into a fresh text";
    TestPlatform::current().network.readLimits.push_back(maximumLength);
    chunk = m_representation->exchange->moreChunks.at(m_representation->chunksRead++);
    return m_representation->resultAfterPart();
}

const std::string& HttpClient::getLocation() const {
    return m_representation->answerRead ? m_representation->exchange->location : m_representation->noLocation;
}

int HttpClient::getRetryAfter() const {
    return m_representation->answerRead ? m_representation->exchange->retryAfterSeconds : -1;
}
