#pragma once

class ProxyRequest;

/// Stands in this process for an object of another service. Made through an exported factory; the caller of the
/// factory owns it.
class Proxy {
public:
    virtual ~Proxy() = default;

    /// Binds the proxy, before its first use, to the request through which it sends. `request` is not owned and
    /// outlives the proxy.
    virtual void initProxy(ProxyRequest& request) = 0;
};
