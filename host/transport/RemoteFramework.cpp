#include "transport/RemoteFramework.h"

#include "OrvaneServiceIfc.h"
#include "OrvaneServiceObserverIfc.h"
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

} // namespace

struct RemoteFramework::Subscriber {
    Subscriber(LineConnection& subscriberConnection, Proxy* newProxy) : request(subscriberConnection), proxy(newProxy) {
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
    if (!m_invoker) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        auto& subscriber = m_subscribers[connection.name()];
        if (!subscriber) {
            subscriber = std::make_unique<Subscriber>(connection, m_proxyFactory());
        }
    }
    m_invoker->handleMessage(m_service, message.data(), static_cast<int>(message.size()), response.release());
}

void RemoteFramework::dropSubscriber(const LineConnection& connection) {
    std::unique_ptr<Subscriber> subscriber;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto entry = m_subscribers.find(connection.name());
        if (entry == m_subscribers.end()) {
            return;
        }
        subscriber = std::move(entry->second);
        m_subscribers.erase(entry);
    }
    auto* observer = dynamic_cast<OrvaneServiceObserverIfc*>(subscriber->proxy.get());
    auto* service = dynamic_cast<OrvaneServiceIfc*>(m_service);
    if (observer != nullptr && service != nullptr) {
        service->unsubscribe(observer);
    }
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
