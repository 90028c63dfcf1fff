#pragma once

#include "network/WebSocketSession.h"

#include <functional>
#include <memory>
#include <string>

class ThreaderIfc;

/// The thread on which WebSocket sessions live. Any thread may call it.
class WebSocketEventLoop {
public:
    /// Starts the thread through `threader`, or without one as a plain thread. Null when there can be none.
    static std::shared_ptr<WebSocketEventLoop> start(ThreaderIfc* threader);
    ~WebSocketEventLoop();
    WebSocketEventLoop(const WebSocketEventLoop&) = delete;
    WebSocketEventLoop& operator=(const WebSocketEventLoop&) = delete;

    /// Makes a session of this thread.
    std::shared_ptr<WebSocketSession> makeSession(const std::string& url, WebSocketSession::Reporter reporter);
    void post(std::function<void()> task);

    /// Ends the thread, leaving sessions that are closing a short time. With `wait` it returns when the thread has
    /// ended; the thread itself must not ask for that.
    void finish(bool wait);

private:
    struct Representation;
    explicit WebSocketEventLoop(std::unique_ptr<Representation> representation);
    static void* run(void* argument);

    std::unique_ptr<Representation> m_representation;
};
