#include "transport/ControlServer.h"

#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

bool makeAddress(const std::string& path, sockaddr_un& address, std::string& error) {
    address = sockaddr_un{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        error = "the path of the control socket is too long: " + path;
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

bool isAnswered(const sockaddr_un& address) {
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool answered = ::connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(probe);
    return answered;
}

} // namespace

ControlServer::~ControlServer() {
    stop();
}

std::string ControlServer::defaultPath() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    return std::string(runtime != nullptr && *runtime != '\0' ? runtime : "/tmp") + "/orvane-phone.sock";
}

bool ControlServer::listen(const std::string& path, LineConnection::LineHandler lineCame,
                           LineConnection::EndHandler ended, std::string& error) {
    sockaddr_un address{};
    if (!makeAddress(path, address, error)) {
        return false;
    }
    if (isAnswered(address)) {
        error = "another telephone listens on " + path;
        return false;
    }
    ::unlink(path.c_str());
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, SOMAXCONN) != 0) {
        error = "cannot listen on " + path + ": " + std::strerror(errno);
        ::close(listener);
        return false;
    }
    m_socket = listener;
    m_path = path;
    m_lineCame = std::move(lineCame);
    m_ended = std::move(ended);
    m_thread = std::thread([this] { accept(); });
    return true;
}

void ControlServer::stop() {
    if (m_socket < 0) {
        return;
    }
    ::shutdown(m_socket, SHUT_RDWR);
    m_thread.join();
    ::close(m_socket);
    m_socket = -1;
    ::unlink(m_path.c_str());
    std::list<std::unique_ptr<LineConnection>> connections;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        connections.swap(m_connections);
    }
    for (const auto& connection : connections) {
        connection->end();
    }
    connections.clear();
}

void ControlServer::accept() {
    pthread_setname_np(pthread_self(), "control");
    for (;;) {
        const int client = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) {
            if (errno == EINTR || errno == ECONNABORTED) {
                continue;
            }
            return;
        }
        dropEnded();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_connections.push_back(std::make_unique<LineConnection>(
            client, "client-" + std::to_string(++m_connectionCount), m_lineCame, m_ended));
    }
}

void ControlServer::dropEnded() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_connections.remove_if([](const std::unique_ptr<LineConnection>& connection) { return connection->hasEnded(); });
}
