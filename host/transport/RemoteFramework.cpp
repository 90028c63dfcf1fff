#include "transport/RemoteFramework.h"

#include "framework/Executable.h"
#include "framework/Invoker.h"
#include "framework/InvokerResponse.h"
#include "framework/Method.h"
#include "framework/Proxy.h"
#include "framework/ProxyRequest.h"
#include "transport/LineConnection.h"

#include <sstream>

namespace {

/// Events to one client: {"method":{…}} without a number.
class ConnectionRequest : public ProxyRequest {
public:
    explicit ConnectionRequest(LineConnection& connection) : m_connection(connection) {}

    void send(const Method& method) override {
        std::ostringstream text;
        JsonProtocolAdapter().encode(text, method);
        m_connection.send("{\"method\":" + text.str() + "}");
    }

private:
    LineConnection& m_connection;
};

/// The answer to one call: {"seq":7,"method":{…}}, and {"seq":7,"end":true} when there will be no other.
class ConnectionResponse : public InvokerResponse {
public:
    ConnectionResponse(LineConnection& connection, long long sequence)
        : m_connection(connection), m_sequence(sequence) {}
    ~ConnectionResponse() override { m_connection.send("{\"seq\":" + std::to_string(m_sequence) + ",\"end\":true}"); }

    std::string getProtocolName() const override { return JsonProtocolAdapter::protocol; }
    std::string getSubscriberName() const override { return m_connection.name(); }
    void send(const char* text, int length) override {
        m_connection.send("{\"seq\":" + std::to_string(m_sequence) +
                          ",\"method\":" + std::string(text, static_cast<std::size_t>(length)) + "}");
    }

private:
    LineConnection& m_connection;
    const long long m_sequence;
};

/// Stands for a client that has gone: what would be answered goes nowhere.
class GoneSubscriberResponse : public InvokerResponse {
public:
    explicit GoneSubscriberResponse(const std::string& subscriber) : m_subscriber(subscriber) {}

    std::string getProtocolName() const override { return JsonProtocolAdapter::protocol; }
    std::string getSubscriberName() const override { return m_subscriber; }
    void send(const char*, int) override {}

private:
    const std::string m_subscriber;
};

} // namespace

struct RemoteFramework::Subscriber {
    Subscriber(LineConnection& connection, Proxy* newProxy) : request(connection), proxy(newProxy) {
        proxy->initProxy(request);
    }

    ConnectionRequest request;
    std::unique_ptr<Proxy> proxy;
};

RemoteFramework::RemoteFramework(Executable* service, Invoker* invoker, ProxyFactory proxyFactory)
    : m_service(service), m_invoker(invoker), m_proxyFactory(proxyFactory) {
    if (m_invoker) {
        m_invoker->initInvoker(this);
    }
}

RemoteFramework::~RemoteFramework() = default;

void RemoteFramework::call(LineConnection& connection, long long sequence, const std::string& message) {
    auto response = std::make_unique<ConnectionResponse>(connection, sequence);
    if (m_proxyFactory != nullptr) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        auto& subscriber = m_subscribers[connection.name()];
        if (!subscriber) {
            subscriber = std::make_unique<Subscriber>(connection, m_proxyFactory());
        }
    }
    m_invoker->handleMessage(m_service, message.data(), static_cast<int>(message.size()), response.release());
}

void RemoteFramework::dropSubscriber(const LineConnection& connection) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_subscribers.count(connection.name()) == 0) {
            return;
        }
    }
    // What a client that takes its leave sends, in its name: the framework knows no service's own interface.
    std::ostringstream message;
    m_adapter.encode(message, Method("unsubscribe", Method::REQUEST));
    const std::string text = message.str();
    m_invoker->handleMessage(m_service, text.data(), static_cast<int>(text.size()),
                             new GoneSubscriberResponse(connection.name()));

    const std::lock_guard<std::mutex> lock(m_mutex);
    m_subscribers.erase(connection.name());
}

ProtocolAdapterIfc* RemoteFramework::findProtocolAdapter(std::string& name) {
    return name == JsonProtocolAdapter::protocol ? &m_adapter : nullptr;
}

Proxy* RemoteFramework::findProxy(std::string& interfaceName, std::string& subscriber) {
    if (interfaceName != "OrvaneServiceObserverIfc") {
        return nullptr;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto entry = m_subscribers.find(subscriber);
    return entry == m_subscribers.end() ? nullptr : entry->second->proxy.get();
}
