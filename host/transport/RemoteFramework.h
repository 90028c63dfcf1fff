#pragma once

#include "framework/FrameworkContext.h"
#include "transport/JsonProtocolAdapter.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

class Executable;
class Invoker;
class LineConnection;
class Proxy;

/// The framework's side of remote methods: hands messages to a service's invoker and keeps one proxy a subscriber,
/// bound to the subscriber's connection. Any thread may call the operations.
class RemoteFramework : public FrameworkContext {
public:
    using ProxyFactory = Proxy* (*)();

    /// Owns the invoker. Invoker and factory may be null: nothing can be called then, or nobody can subscribe.
    /// `service` is not owned.
    RemoteFramework(Executable* service, Invoker* invoker, ProxyFactory proxyFactory);
    ~RemoteFramework() override;

    /// False without an invoker: call() is then not to be used.
    bool isCallable() const { return m_invoker != nullptr; }

    /// One message in the adapter's text; runs on this thread to the end. The reply and the end of the call go to the
    /// connection under the number `sequence`.
    void call(LineConnection& connection, long long sequence, const std::string& message);

    /// The client has gone: its proxy unsubscribes and goes.
    void dropSubscriber(const LineConnection& connection);

    ProtocolAdapterIfc* findProtocolAdapter(std::string& name) override;
    Proxy* findProxy(std::string& interfaceName, std::string& subscriber) override;

private:
    struct Subscriber;

    Executable* m_service;
    std::unique_ptr<Invoker> m_invoker;
    ProxyFactory m_proxyFactory;
    JsonProtocolAdapter m_adapter;
    std::mutex m_mutex;
    std::map<std::string, std::unique_ptr<Subscriber>> m_subscribers;
};
