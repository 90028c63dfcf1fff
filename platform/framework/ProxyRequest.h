#pragma once

class Method;

/// The way from a proxy to the one service that it stands for. Owned by the framework.
class ProxyRequest {
public:
    virtual ~ProxyRequest() = default;

    /// Delivers the message on the caller's thread, without a result; the message is not kept.
    virtual void send(const Method& method) = 0;
};
