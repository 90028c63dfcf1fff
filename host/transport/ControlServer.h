#pragma once

#include "transport/LineConnection.h"

#include <sys/types.h>

#include <atomic>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

/// Listens on a Unix domain socket, which only the user may use; each client gets a thread of its own.
class ControlServer {
public:
    explicit ControlServer(LineConnection::Limits limits = {}) : m_limits(limits) {}
    ~ControlServer();
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

    enum class Listening {
        BEGUN,
        UNUSABLE_PATH, ///< too long, no place for a socket, or something else stands there
        OCCUPIED       ///< a live process listens there
    };
    /// A stale socket is replaced. The reason of a refusal goes to `error`.
    Listening listen(const std::string& path, LineConnection::LineHandler lineCame, LineConnection::EndHandler ended,
                     std::string& error);

    /// Ends all connections and waits for their threads. Not to be called from a handler.
    void stop();

    /// Where both programs look when nothing is said: "orvane-phone.sock" in $XDG_RUNTIME_DIR, else in /tmp.
    static std::string defaultPath();

private:
    bool makeSocket(std::string& error);
    /// Unless the path is another's by now.
    void removeSocket() const;
    void accept();
    void welcome(int client);
    void dropEnded();

    const LineConnection::Limits m_limits;
    int m_socket = -1;
    std::string m_path;
    dev_t m_device = 0; ///< of the socket's file, with its inode: whose it is
    ino_t m_inode = 0;
    LineConnection::LineHandler m_lineCame;
    LineConnection::EndHandler m_ended;
    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
    std::mutex m_mutex;
    std::list<std::unique_ptr<LineConnection>> m_connections;
    int m_connectionCount = 0;
};
