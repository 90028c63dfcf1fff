#include "net/Listener.h"

#include "base/BadInput.h"
#include "base/WholeNumber.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace cloudsim {
namespace {

struct ResolvedDeleter {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using Resolved = std::unique_ptr<addrinfo, ResolvedDeleter>;

Resolved resolve(const Address& address) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE;
    addrinfo* list = nullptr;
    int error = getaddrinfo(address.host.c_str(), std::to_string(address.port).c_str(), &hints, &list);
    if (error != 0)
        throw BadInput("cannot listen on " + toText(address) + ": " + gai_strerror(error));
    return Resolved(list);
}

std::uint16_t boundPort(int socket) {
    sockaddr_storage bound{};
    socklen_t length = sizeof bound;
    getsockname(socket, reinterpret_cast<sockaddr*>(&bound), &length);
    auto port = bound.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(&bound)->sin6_port
                                            : reinterpret_cast<sockaddr_in*>(&bound)->sin_port;
    return ntohs(port);
}

} // namespace

Address parseAddress(std::string_view text) {
    auto colon = text.rfind(':');
    std::string_view host = text.substr(0, colon == std::string_view::npos ? 0 : colon);
    if (host.size() >= 2 && host.front() == '[' && host.back() == ']')
        host = host.substr(1, host.size() - 2);
    else if (host.find(':') != std::string_view::npos)
        host = {};
    std::string_view port = colon == std::string_view::npos ? std::string_view() : text.substr(colon + 1);
    auto number = wholeNumber<std::uint16_t>(port);
    if (host.empty() || !number)
        throw BadInput("'" + std::string(text) + "' is not HOST:PORT");
    return {std::string(host), *number};
}

std::string toText(const Address& address) {
    bool bracketed = address.host.find(':') != std::string::npos;
    return (bracketed ? "[" + address.host + "]" : address.host) + ":" + std::to_string(address.port);
}

Listener::Listener(const Address& address) : m_address(address) {
    Resolved resolved = resolve(address);
    m_socket = FileDescriptor(
        ::socket(resolved->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, resolved->ai_protocol));
    int on = 1;
    if (!m_socket || ::setsockopt(m_socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        ::bind(m_socket.get(), resolved->ai_addr, resolved->ai_addrlen) != 0 || ::listen(m_socket.get(), 128) != 0)
        throw BadInput("cannot listen on " + toText(address) + ": " + std::strerror(errno));
    m_address.port = boundPort(m_socket.get());
}

Listener::~Listener() {
    ::shutdown(m_socket.get(), SHUT_RDWR);
}

FileDescriptor Listener::accept() {
    FileDescriptor socket(::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (socket) {
        int on = 1;
        setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }
    return socket;
}

} // namespace cloudsim
