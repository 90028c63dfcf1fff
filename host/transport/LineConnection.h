#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

/// One client of the control socket: lines in on a thread of its own, lines out through a bounded queue that never
/// blocks the sender. A queue that runs over ends the connection.
class LineConnection {
public:
    static constexpr std::size_t longestLine = 4 * 1024 * 1024;
    static constexpr std::size_t mostWaitingBytes = 64 * 1024 * 1024;

    using LineHandler = std::function<void(LineConnection& connection, const std::string& line)>;
    using EndHandler = std::function<void(LineConnection& connection)>;

    /// Owns the socket. Both handlers run on the connection's reading thread; `ended` is the last call.
    LineConnection(int socket, std::string name, LineHandler lineCame, EndHandler ended);
    /// Ends the connection and waits for its threads.
    ~LineConnection();
    LineConnection(const LineConnection&) = delete;
    LineConnection& operator=(const LineConnection&) = delete;

    const std::string& name() const { return m_name; }

    /// Queues a line; any thread.
    void send(const std::string& line);
    /// Shuts the socket; the threads end by themselves.
    void end();
    bool hasEnded() const;

private:
    void read();
    void write();
    /// Takes whole lines off `pending`; false when the rest can never become a line.
    bool takeLines(std::string& pending);

    const int m_socket;
    const std::string m_name;
    const LineHandler m_lineCame;
    const EndHandler m_endedHandler;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::string> m_waiting;
    std::size_t m_waitingBytes = 0;
    bool m_closing = false;
    bool m_ended = false;
    std::thread m_writer;
    std::thread m_reader;
};
