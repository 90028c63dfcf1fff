#pragma once

#include "transport/LineConnection.h"

#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

/// Listens on a Unix domain socket; each client gets a thread of its own.
class ControlServer {
public:
    ControlServer() = default;
    ~ControlServer();
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

    /// A stale socket is replaced; false with the reason in `error` when a live telephone has it, or it cannot be made.
    bool listen(const std::string& path, LineConnection::LineHandler lineCame, LineConnection::EndHandler ended,
                std::string& error);

    /// Ends all connections and waits for their threads. Not to be called from a handler.
    void stop();

    /// Where both programs look when nothing is said: "orvane-phone.sock" in $XDG_RUNTIME_DIR, else in /tmp.
    static std::string defaultPath();

private:
    void accept();
    void dropEnded();

    int m_socket = -1;
    std::string m_path;
    LineConnection::LineHandler m_lineCame;
    LineConnection::EndHandler m_ended;
    std::thread m_thread;
    std::mutex m_mutex;
    std::list<std::unique_ptr<LineConnection>> m_connections;
    int m_connectionCount = 0;
};
