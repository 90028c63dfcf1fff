#include "framework/Invoker.h"
#include "framework/InvokerResponse.h"
#include "framework/Method.h"
#include "framework/Proxy.h"
#include "framework/ProxyRequest.h"
#include "framework/Service.h"
#include "support/TransportFixture.h"
#include "transport/RemoteFramework.h"

#include <atomic>
#include <mutex>
#include <set>
#include <sstream>

namespace {

class SilentService : public Service {
public:
    void init(Context&) override {}
    void shutdown() override {}
    void timerEvent(int) override {}
    void run() override {}
};

/// Who has subscribed; told on the connections' threads.
class Subscribers {
public:
    void add(Proxy* proxy) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_all.insert(proxy);
    }
    void remove(Proxy* proxy) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_all.erase(proxy);
    }
    std::size_t count() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_all.size();
    }
    Proxy* first() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return *m_all.begin();
    }

private:
    mutable std::mutex m_mutex;
    std::set<Proxy*> m_all;
};

/// Counts the living; sends an event whenever it is told to.
class EventProxy : public Proxy {
public:
    explicit EventProxy(std::atomic<int>& living) : m_living(living) { ++m_living; }
    ~EventProxy() override { --m_living; }
    void initProxy(ProxyRequest& request) override { m_request = &request; }
    void raise(const std::string& name) {
        Method method(name, Method::REQUEST);
        method.addIntParameter("type", 6, Parameter::DIRECTION_IN);
        m_request->send(method);
    }

private:
    std::atomic<int>& m_living;
    ProxyRequest* m_request = nullptr;
};

std::atomic<int> livingProxies{0};

Proxy* makeEventProxy() {
    return new EventProxy(livingProxies);
}

/// Knows "echo" (replies), "silent" (does not), "subscribe" and "unsubscribe".
class EchoInvoker : public Invoker {
public:
    explicit EchoInvoker(Subscribers& subscribers) : m_subscribers(subscribers) {}
    void initInvoker(FrameworkContext* context) override { m_context = context; }
    void handleMessage(Executable*, const char* message, int length, InvokerResponse* response) override {
        const std::unique_ptr<InvokerResponse> owned(response);
        std::string protocol = response->getProtocolName();
        ProtocolAdapterIfc* adapter = m_context->findProtocolAdapter(protocol);
        std::istringstream text(std::string(message, static_cast<std::size_t>(length)));
        Method request;
        if (adapter == nullptr || !adapter->decode(text, request)) {
            return;
        }
        std::string interfaceName = "OrvaneServiceObserverIfc";
        std::string subscriber = response->getSubscriberName();
        if (request.getName() == "subscribe") {
            m_subscribers.add(m_context->findProxy(interfaceName, subscriber));
        } else if (request.getName() == "unsubscribe") {
            m_subscribers.remove(m_context->findProxy(interfaceName, subscriber));
        } else if (request.getName() == "echo") {
            Method reply("echo", Method::RESPONSE);
            reply.addBoolParameter("result", true, Parameter::DIRECTION_OUT);
            std::ostringstream encoded;
            adapter->encode(encoded, reply);
            response->send(encoded.str().data(), static_cast<int>(encoded.str().size()));
        }
    }

private:
    Subscribers& m_subscribers;
    FrameworkContext* m_context = nullptr;
};

class RemoteMethods : public Transport {
protected:
    void SetUp() override {
        Transport::SetUp();
        m_framework = std::make_unique<RemoteFramework>(&m_service, new EchoInvoker(m_subscribers), makeEventProxy);
        m_server = std::make_unique<ControlServer>();
        std::string error;
        // A line is a number, a blank and a message.
        ASSERT_EQ(ControlServer::Listening::BEGUN,
                  m_server->listen(
                      m_path,
                      [this](LineConnection& connection, const std::string& line) {
                          const std::size_t blank = line.find(' ');
                          m_framework->call(connection, std::stoll(line.substr(0, blank)), line.substr(blank + 1));
                      },
                      [this](LineConnection& connection) {
                          m_framework->dropSubscriber(connection);
                          m_ended.add(connection.name());
                      },
                      error));
    }
    void TearDown() override {
        Transport::TearDown();
        m_framework.reset();
        EXPECT_EQ(0, livingProxies);
    }

    static std::string call(int sequence, const std::string& name) {
        return std::to_string(sequence) + R"( {"name":")" + name + R"(","type":0,"parameters":[]})" + "\n";
    }

    SilentService m_service;
    Subscribers m_subscribers;
    std::unique_ptr<RemoteFramework> m_framework;
};

} // namespace

TEST_F(RemoteMethods, AReplyComesBeforeTheEndOfItsCall) {
    Client client(m_path);
    client.send(call(7, "echo"));
    EXPECT_EQ(R"({"seq":7,"method":{"name":"echo","type":1,"parameters":[)"
              R"({"name":"result","kind":"bool","direction":1,"value":true}]}})",
              client.readLine());
    EXPECT_EQ(R"({"seq":7,"end":true})", client.readLine());
}

TEST_F(RemoteMethods, ACallWithoutReplyEndsAllTheSame) {
    Client client(m_path);
    client.send(call(1, "silent"));
    EXPECT_EQ(R"({"seq":1,"end":true})", client.readLine());
    client.send("2 no message at all\n");
    EXPECT_EQ(R"({"seq":2,"end":true})", client.readLine());
}

TEST_F(RemoteMethods, EventsGoToTheSubscriberWithoutANumber) {
    Client other(m_path);
    Client client(m_path);
    client.send(call(1, "subscribe"));
    ASSERT_EQ(R"({"seq":1,"end":true})", client.readLine());
    ASSERT_EQ(1U, m_subscribers.count());

    dynamic_cast<EventProxy*>(m_subscribers.first())->raise("orvaneEvent");

    EXPECT_EQ(R"({"method":{"name":"orvaneEvent","type":0,"parameters":[)"
              R"({"name":"type","kind":"int","direction":0,"value":6}]}})",
              client.readLine());
    other.send(call(9, "silent"));
    EXPECT_EQ(R"({"seq":9,"end":true})", other.readLine());
}

TEST_F(RemoteMethods, AConnectionHasOneProxyHoweverOftenItSubscribes) {
    Client client(m_path);
    client.send(call(1, "subscribe") + call(2, "subscribe"));
    client.readLine();
    client.readLine();
    EXPECT_EQ(1U, m_subscribers.count());

    client.send(call(3, "unsubscribe"));
    client.readLine();
    EXPECT_EQ(0U, m_subscribers.count());
}

TEST_F(RemoteMethods, AClientThatGoesIsUnsubscribedBeforeItsProxyGoes) {
    Client client(m_path);
    client.send(call(1, "subscribe"));
    client.readLine();
    ASSERT_EQ(1, livingProxies);

    client.close();

    ASSERT_TRUE(m_ended.waitForCount(1));
    EXPECT_EQ(0U, m_subscribers.count());
    EXPECT_EQ(0, livingProxies);
}

TEST_F(RemoteMethods, EveryClientHasAProxyOfItsOwn) {
    Client first(m_path);
    Client second(m_path);
    first.send(call(1, "subscribe"));
    first.readLine();
    second.send(call(1, "subscribe"));
    second.readLine();
    EXPECT_EQ(2U, m_subscribers.count());
}

TEST_F(RemoteMethods, KnowsOneProtocolAndOneInterface) {
    std::string unknown = "xml";
    EXPECT_EQ(nullptr, m_framework->findProtocolAdapter(unknown));
    std::string interfaceName = "OtherIfc";
    std::string subscriber = "client-1";
    EXPECT_EQ(nullptr, m_framework->findProxy(interfaceName, subscriber));
    interfaceName = "OrvaneServiceObserverIfc";
    EXPECT_EQ(nullptr, m_framework->findProxy(interfaceName, subscriber));
}

TEST(RemoteFrameworkWithoutInvoker, CannotBeCalled) {
    SilentService service;
    EXPECT_FALSE(RemoteFramework(&service, nullptr, makeEventProxy).isCallable());
}
