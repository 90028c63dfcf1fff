#pragma once

#include <string>

/// What WebSocketThread reports, one call at a time, on its own thread (RFC 6455).
class WebSocketAppIfc {
public:
    virtual ~WebSocketAppIfc() = default;

    /// The opening handshake is over; 0 is success.
    virtual void onOpen(int code) = 0;

    /// The connection is gone. `code` is the status of the peer's close frame, 0 without one. `localCode` is the
    /// close status as seen locally (RFC 6455, section 7.4): 1006 when the connection was lost without a close.
    virtual void onClose(int code, int localCode, const std::string& msg) = 0;

    /// The connection could not be set up; onClose follows, with local code 1006. `code` is the HTTP status of a
    /// refused opening handshake, else an error number of the platform. Both arguments are for the log.
    virtual void onError(int code, const std::string& msg) = 0;

    /// One whole text message.
    virtual void onMessage(const std::string& msg) = 0;

    /// An answer to a keep-alive ping, a late one too.
    virtual void onPong() = 0;

    /// A keep-alive ping was not answered in time.
    virtual void onPongTimeout() = 0;

    /// Whether to go on after a refused login.
    virtual bool continueOnLoginError() = 0;
};
