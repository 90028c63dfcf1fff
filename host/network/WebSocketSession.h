#pragma once

#include "network/WebSocketAppIfc.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace boost::asio {
class io_context;
}

/// One WebSocket connection, from the name look-up to its end. It lives on the thread that runs its context: all
/// operations but `send` belong to that thread.
class WebSocketSession {
public:
    using Report = std::function<void(WebSocketAppIfc&)>;
    /// Takes the session's news, in order, on its thread.
    using Reporter = std::function<void(const Report&)>;

    static constexpr std::size_t maximumMessageBytes = 1024 * 1024;
    static constexpr std::size_t maximumWaitingFrames = 256;

    /// Makes a session to a "wss" URL, which does nothing yet.
    static std::shared_ptr<WebSocketSession> make(const std::shared_ptr<boost::asio::io_context>& context,
                                                  const std::string& url, Reporter reporter);
    virtual ~WebSocketSession() = default;

    /// Connects. A connection that cannot be established is reported by onError, then onClose with local code 1006.
    virtual void begin() = 0;
    /// Sends what is queued, then closes in order, both within the close limit; reports nothing any more.
    virtual void close() = 0;
    /// The interface went down or came up.
    virtual void interfaceChanged() = 0;

    /// Queues one text frame, from any thread; drops and logs it when too many wait, or the connection has ended.
    virtual void send(const std::string& message) = 0;
};
