#include "orvane-ctl/ControlClient.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace {

constexpr int connectRetryMilliseconds = 20;

} // namespace

ControlClient::~ControlClient() {
    if (m_socket >= 0) {
        ::close(m_socket);
    }
}

bool ControlClient::connect(const std::string& path, TimePoint until, std::string& error) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        error = "the path of the control socket is too long: " + path;
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    while (m_socket < 0 || ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        // The queue of clients is full, and nothing tells when there is room.
        if (m_socket < 0 || errno != EAGAIN) {
            error = "no telephone on " + path + ": " + std::strerror(errno);
            return false;
        }
        if (std::chrono::steady_clock::now() >= until) {
            error = "no answer in time";
            return false;
        }
        ::poll(nullptr, 0, connectRetryMilliseconds);
    }
    return true;
}

bool ControlClient::wait(short events, TimePoint until) const {
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now()).count();
        pollfd ready{m_socket, events, 0};
        const int count = ::poll(&ready, 1, static_cast<int>(std::clamp<long long>(left + 1, 0, 86'400'000)));
        if (count >= 0 || errno != EINTR) {
            return count > 0;
        }
    }
}

bool ControlClient::send(const std::string& line, TimePoint until) {
    const std::string text = line + "\n";
    std::size_t sent = 0;
    while (sent < text.size()) {
        const ssize_t count = ::send(m_socket, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count >= 0) {
            sent += static_cast<std::size_t>(count);
        } else if ((errno != EAGAIN && errno != EINTR) || !wait(POLLOUT, until)) {
            return false;
        }
    }
    return true;
}

ControlClient::Reading ControlClient::read(std::string& line, TimePoint until) {
    for (;;) {
        const std::size_t end = m_pending.find('\n');
        if (end != std::string::npos) {
            line = m_pending.substr(0, end);
            m_pending.erase(0, end + 1);
            return Reading::LINE;
        }
        if (!wait(POLLIN, until)) {
            return Reading::TIMEOUT;
        }
        std::array<char, 65536> part{};
        const ssize_t count = ::recv(m_socket, part.data(), part.size(), 0);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
            continue;
        }
        if (count <= 0) {
            return Reading::ENDED;
        }
        m_pending.append(part.data(), static_cast<std::size_t>(count));
    }
}
