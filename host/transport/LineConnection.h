#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

/// One client of the control socket: lines in on a thread of its own, lines out through a bounded queue that never
/// blocks the sender. A queue that runs over, or a client that takes nothing for too long, ends the connection.
class LineConnection {
public:
    struct Limits {
        std::size_t longestLine = 4 * 1024 * 1024;
        std::size_t mostWaitingBytes = 8 * 1024 * 1024; ///< one line may exceed it when nothing else waits
        int sendMilliseconds = 30'000;                  ///< without the client taking a byte
    };

    using LineHandler = std::function<void(LineConnection& connection, const std::string& line)>;
    using EndHandler = std::function<void(LineConnection& connection)>;

    /// Owns the socket. Both handlers run on the connection's reading thread. `ended` is the last call: the client
    /// sends no more lines, though it may still read what waits for it. Throws, and leaves the socket to the caller,
    /// when there can be no thread.
    LineConnection(int socket, std::string name, LineHandler lineCame, EndHandler ended, Limits limits);
    /// Ends the connection and waits for its threads.
    ~LineConnection();
    LineConnection(const LineConnection&) = delete;
    LineConnection& operator=(const LineConnection&) = delete;

    const std::string& name() const { return m_name; }

    /// Queues a line; any thread.
    void send(const std::string& line);
    /// Shuts the socket, whatever still waits; the threads end by themselves.
    void end();
    /// Whether both threads are done.
    bool hasEnded() const;

private:
    void read();
    void write();
    void writeLines();
    /// Takes whole lines off `pending`; false when the rest can never become a line.
    bool takeLines(std::string& pending);
    void take(const std::string& line);
    /// With m_mutex held.
    void shut();

    const int m_socket;
    const std::string m_name;
    const LineHandler m_lineCame;
    const EndHandler m_endedHandler;
    const Limits m_limits;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::string> m_waiting;
    std::size_t m_waitingBytes = 0; ///< the line that is being sent included
    bool m_draining = false;        ///< no lines come in any more; what waits still goes out
    bool m_shut = false;
    bool m_readerEnded = false;
    bool m_writerEnded = false;
    std::thread m_writer;
    std::thread m_reader;
};
