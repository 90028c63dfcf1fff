#pragma once

#include <string>

class ThreaderIfc;
class WebSocketAppIfc;

/// The telephone's one WebSocket client, on a thread of its own, with keep-alive pings (RFC 6455). The static
/// operations may be called from any thread, callbacks included, and concurrently.
class WebSocketThread {
public:
    WebSocketThread() = default;
    virtual ~WebSocketThread() = default;
    WebSocketThread(const WebSocketThread&) = delete;
    WebSocketThread& operator=(const WebSocketThread&) = delete;

    /// Gives the threading service on which the connection's thread is made; not owned, and outlives terminate().
    static void setThreader(ThreaderIfc* threader);

    /// Connects to a "wss" URL and reports through `app`, which is not owned. Over a live connection, that one is
    /// closed silently first. Returns before any callback. The two further texts belong to the platform.
    static void init(WebSocketAppIfc* app, const std::string& url, const std::string& user,
                     const std::string& password);

    /// The running client, or null.
    static WebSocketThread* instance();

    /// Queues one text frame; never waits for the connection's thread. A frame without a connection, behind too many
    /// that wait, or on a connection that ends first is lost, without an error.
    virtual void send(const std::string& message) = 0;

    /// Closes the connection without onClose. Returns when no callback is running, but does not wait for itself
    /// when called from one. A later init opens a new connection.
    static void stop();

    /// Ends the thread for good; safe when there is none.
    static void terminate();
};
