#pragma once

#include <string>

/// The answer side of one received message. The invoker that is handed the object owns it; its destruction tells
/// the framework that no further answer comes.
class InvokerResponse {
public:
    virtual ~InvokerResponse() = default;

    /// Name of the protocol in which the message was written, for FrameworkContext::findProtocolAdapter.
    virtual std::string getProtocolName() const = 0;

    /// Name of the sender as a subscriber, for FrameworkContext::findProxy.
    virtual std::string getSubscriberName() const = 0;

    /// Sends `length` bytes of an encoded reply to the sender. A sender that has gone away is no error.
    virtual void send(const char* text, int length) = 0;
};
