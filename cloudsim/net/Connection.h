#pragma once

#include "net/FileDescriptor.h"
#include "net/Stream.h"
#include "net/WakeUp.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace cloudsim {

/// One accepted connection. Its own thread reads and writes; any thread may wake it or ask it to close.
class Connection {
public:
    enum class Closing { NONE, IN_ORDER, RESET };
    enum class Waiting { INPUT, WOKEN, TIMED_OUT, CLOSING };
    using Milliseconds = std::chrono::milliseconds;

    Connection(FileDescriptor socket, std::uint64_t number, std::uint16_t localPort);

    std::uint64_t number() const { return m_number; }
    std::uint16_t localPort() const { return m_localPort; }
    int socket() const { return m_socket.get(); }
    std::string peerName() const { return m_stream->peerName(); }

    /// Takes the stream over and completes its handshake.
    bool begin(std::unique_ptr<Stream> stream);
    /// At least one byte; false when the peer or somebody here ends the connection, or the time is over.
    bool read(char* buffer, std::size_t capacity, std::size_t& count, Milliseconds timeout);
    /// All bytes.
    bool write(std::string_view bytes);
    /// What is there now; false at the end. `count` is 0 when nothing is there.
    bool readAvailable(char* buffer, std::size_t capacity, std::size_t& count);
    /// Waits for input (if wanted), a wake-up or a request to close.
    Waiting wait(Milliseconds timeout, bool forInput);
    /// Passes time; false when the connection is to be closed meanwhile.
    bool pause(Milliseconds duration);

    /// Ends in order, or so that the peer sees a reset. On the own thread.
    void finish();
    void reset();

    /// For other threads.
    void wake();
    void requestClose(Closing how);

private:
    bool waitFor(short events, Milliseconds timeout);
    bool complete(const std::function<Stream::Outcome()>& step, Milliseconds timeout);

    FileDescriptor m_socket;
    WakeUp m_wakeUp;
    std::uint64_t m_number;
    std::uint16_t m_localPort;
    std::unique_ptr<Stream> m_stream;
    std::atomic<Closing> m_closing{Closing::NONE};
};

} // namespace cloudsim
