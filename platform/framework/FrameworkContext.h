#pragma once

#include <string>

class ProtocolAdapterIfc;
class Proxy;

/// What the framework offers to an invoker. Outlives it. The operations may be called from any thread.
class FrameworkContext {
public:
    virtual ~FrameworkContext();

    /// The adapter for a protocol, owned by the framework, or null. The base class knows none.
    virtual ProtocolAdapterIfc* findProtocolAdapter(std::string& name);

    /// The one proxy, bound and owned by the framework, that stands for `subscriber` with that interface, or null.
    /// The base class knows none.
    virtual Proxy* findProxy(std::string& interfaceName, std::string& subscriber);
};
