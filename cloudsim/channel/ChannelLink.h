#pragma once

#include "base/Timestamps.h"
#include "net/Connection.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <string>

namespace cloudsim {

/// What other threads may do with an open channel. Outlives the connection; then nothing has any effect.
class ChannelLink {
public:
    struct Outgoing {
        enum class Kind { BYTES, CLOSE, RESET };
        Kind kind = Kind::BYTES;
        std::string bytes;
        bool isMessage = false; ///< counts as activity
    };

    explicit ChannelLink(Connection& connection) : m_connection(&connection), m_number(connection.number()) {}

    std::uint64_t connectionNumber() const { return m_number; }

    void sendText(std::string_view text, std::size_t fragmentBytes = 0);
    /// Bytes that go onto the stream as they are.
    void sendBytes(std::string bytes);
    void close(int code, const std::string& reason);
    void reset();

    /// Neither reads nor writes until it is thawed.
    void setSilent(bool silent);
    /// Pings stay without an answer until it is thawed; the answers then come late.
    void setPongsFrozen(bool frozen);

    // For the connection's own thread.
    std::deque<Outgoing> takeOutgoing();
    bool isSilent() const { return m_silent; }
    bool arePongsFrozen() const { return m_pongsFrozen; }
    void detach();

private:
    void post(Outgoing outgoing);
    void wake();

    std::mutex m_mutex;
    Connection* m_connection;
    std::uint64_t m_number;
    std::deque<Outgoing> m_outgoing;
    std::atomic<bool> m_silent{false};
    std::atomic<bool> m_pongsFrozen{false};
};

} // namespace cloudsim
