#include "net/Connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace cloudsim {
namespace {

using Clock = std::chrono::steady_clock;
/// A peer that takes nothing for so long is as good as dead.
constexpr std::chrono::seconds writeTimeout(60);
constexpr std::chrono::seconds handshakeTimeout(20);

int remaining(Clock::time_point deadline) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count() + 1;
    return static_cast<int>(std::clamp<long long>(left, 0, 3600 * 1000));
}

} // namespace

Connection::Connection(FileDescriptor socket, std::uint64_t number, std::uint16_t localPort)
    : m_socket(std::move(socket)), m_number(number), m_localPort(localPort) {}

void Connection::wake() {
    m_wakeUp.wake();
}

void Connection::requestClose(Closing how) {
    m_closing = how;
    wake();
}

Connection::Waiting Connection::wait(Milliseconds timeout, bool forInput) {
    if (forInput && m_stream && m_stream->hasBufferedInput() && m_closing == Closing::NONE)
        return Waiting::INPUT;
    auto deadline = Clock::now() + timeout;
    pollfd entries[2] = {{m_wakeUp.descriptor(), POLLIN, 0}, {m_socket.get(), POLLIN, 0}};
    while (m_closing == Closing::NONE) {
        int ready = ::poll(entries, forInput ? 2 : 1, remaining(deadline));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            return Waiting::TIMED_OUT;
        if (entries[0].revents != 0) {
            m_wakeUp.clear();
            return m_closing == Closing::NONE ? Waiting::WOKEN : Waiting::CLOSING;
        }
        return Waiting::INPUT;
    }
    return Waiting::CLOSING;
}

bool Connection::pause(Milliseconds duration) {
    auto deadline = Clock::now() + duration;
    while (Clock::now() < deadline)
        if (wait(Milliseconds(remaining(deadline)), false) == Waiting::CLOSING)
            return false;
    return m_closing == Closing::NONE;
}

/// Waits for the socket alone. A wake-up stays pending for the next wait(), but a request to close ends it.
bool Connection::waitFor(short events, Milliseconds timeout) {
    auto deadline = Clock::now() + timeout;
    bool woken = false;
    while (m_closing == Closing::NONE) {
        pollfd entries[2] = {{m_socket.get(), events, 0}, {woken ? -1 : m_wakeUp.descriptor(), POLLIN, 0}};
        int left = remaining(deadline);
        // With a wake-up pending its descriptor is of no use any more, and the request to close is looked for.
        constexpr int sliceMilliseconds = 100;
        int ready = ::poll(entries, 2, woken ? std::min(left, sliceMilliseconds) : left);
        if (ready < 0 && errno != EINTR)
            return false;
        if (ready > 0 && entries[0].revents != 0)
            return true;
        if (ready > 0)
            woken = true;
        if (left == 0)
            return false;
    }
    return false;
}

bool Connection::complete(const std::function<Stream::Outcome()>& step, Milliseconds timeout) {
    while (true) {
        if (m_closing != Closing::NONE)
            return false;
        switch (step()) {
        case Stream::Outcome::PROGRESS:
            return true;
        case Stream::Outcome::ENDED:
            return false;
        case Stream::Outcome::WOULD_BLOCK:
            if (!waitFor(m_stream->wantedEvents(), timeout))
                return false;
        }
    }
}

bool Connection::begin(std::unique_ptr<Stream> stream) {
    m_stream = std::move(stream);
    return complete([this] { return m_stream->handshake(); }, handshakeTimeout);
}

bool Connection::read(char* buffer, std::size_t capacity, std::size_t& count, Milliseconds timeout) {
    return complete([&] { return m_stream->readSome(buffer, capacity, count); }, timeout);
}

bool Connection::readAvailable(char* buffer, std::size_t capacity, std::size_t& count) {
    count = 0;
    return m_stream->readSome(buffer, capacity, count) != Stream::Outcome::ENDED;
}

bool Connection::write(std::string_view bytes) {
    while (!bytes.empty()) {
        std::size_t count = 0;
        if (!complete([&] { return m_stream->writeSome(bytes.data(), bytes.size(), count); }, writeTimeout))
            return false;
        bytes.remove_prefix(count);
    }
    return true;
}

void Connection::finish() {
    if (m_closing == Closing::RESET)
        return reset();
    if (m_socket) {
        if (m_stream)
            m_stream->sayGoodbye();
        ::shutdown(m_socket.get(), SHUT_WR);
        // Closing over unread input would reset the connection, and the peer might lose the end of the answer.
        char unread[4096];
        while (::recv(m_socket.get(), unread, sizeof unread, MSG_DONTWAIT) > 0) {
        }
    }
    m_socket.close();
}

void Connection::reset() {
    linger immediately{1, 0};
    if (m_socket)
        ::setsockopt(m_socket.get(), SOL_SOCKET, SO_LINGER, &immediately, sizeof immediately);
    m_socket.close();
}

} // namespace cloudsim
