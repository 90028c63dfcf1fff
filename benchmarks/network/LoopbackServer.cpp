#include "network/LoopbackServer.h"

#include "network/TlsStream.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace {

/// Value of Sec-WebSocket-Accept (RFC 6455, section 4.2.2).
std::string acceptanceOf(const std::string& key) {
    const std::string text = key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(text.data(), text.size(), digest, &length, EVP_sha1(), nullptr);
    unsigned char encoded[64];
    EVP_EncodeBlock(encoded, digest, static_cast<int>(length));
    return reinterpret_cast<const char*>(encoded);
}

} // namespace

LoopbackServer::LoopbackServer(const std::string& certificate, const std::string& key, Body body)
    : m_context(SSL_CTX_new(TLS_server_method())), m_body(std::move(body)) {
    if (SSL_CTX_use_certificate_chain_file(m_context, certificate.c_str()) != 1 ||
        SSL_CTX_use_PrivateKey_file(m_context, key.c_str(), SSL_FILETYPE_PEM) != 1) {
        throw std::runtime_error("the server's certificate cannot be used");
    }
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(m_listener, 16) != 0 ||
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        throw std::runtime_error("the server cannot listen");
    }
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { accept(); });
}

LoopbackServer::~LoopbackServer() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
        shutdown(m_listener, SHUT_RDWR);
        for (const int one : m_sockets) {
            shutdown(one, SHUT_RDWR);
        }
    }
    m_acceptor.join();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    close(m_listener);
    SSL_CTX_free(m_context);
}

void LoopbackServer::greetWith(const std::string& frame) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_greeting = frame;
}

void LoopbackServer::answerFrames(std::function<std::string(const std::string&)> answer) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_answer = std::move(answer);
}

void LoopbackServer::send(const std::string& frame) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_wake != -1; });
    m_outgoing.push_back(frame);
    eventfd_write(m_wake, 1);
}

LoopbackServer::Clock::time_point LoopbackServer::lastSent() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_sendBegan;
}

std::size_t LoopbackServer::framesReceived() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_received;
}

LoopbackServer::Clock::time_point LoopbackServer::awaitFrames(std::size_t count) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_changed.wait_for(lock, std::chrono::seconds(20), [this, count] { return m_received >= count; })) {
        throw std::runtime_error("a frame that was awaited did not come");
    }
    return m_lastReceived;
}

void LoopbackServer::accept() {
    for (;;) {
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (socket == -1 || m_stopping) {
            return;
        }
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        m_sockets.push_back(socket);
        m_threads.emplace_back([this, socket] {
            try {
                serve(socket);
            } catch (const std::exception&) {
                // The client went away, which is its right.
            }
            const std::lock_guard<std::mutex> ending(m_mutex);
            m_sockets.erase(std::find(m_sockets.begin(), m_sockets.end(), socket));
            close(socket);
        });
    }
}

void LoopbackServer::serve(int socket) {
    const std::unique_ptr<SSL, decltype(&SSL_free)> tls(SSL_new(m_context), &SSL_free);
    SSL_set_fd(tls.get(), socket);
    if (SSL_accept(tls.get()) != 1) {
        return;
    }
    std::string buffer;
    for (;;) {
        std::size_t headEnd = buffer.find("\r\n\r\n");
        if (headEnd == std::string::npos) {
            if (!TlsStream::readSome(tls.get(), buffer)) {
                return;
            }
            continue;
        }
        const std::string head = buffer.substr(0, headEnd + 2);
        const std::string length = TlsStream::header(head, "content-length");
        const std::size_t end = headEnd + 4 + (length.empty() ? 0 : std::stoul(length));
        while (buffer.size() < end) {
            if (!TlsStream::readSome(tls.get(), buffer)) {
                return;
            }
        }
        buffer.erase(0, end);
        const std::string key = TlsStream::header(head, "sec-websocket-key");
        if (!key.empty()) {
            TlsStream::write(tls.get(),
                             "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                             "Sec-WebSocket-Accept: " +
                                 acceptanceOf(key) + "\r\n\r\n");
            serveWebSocket(tls.get(), socket);
            return;
        }
        const std::size_t target = head.find(' ') + 1;
        const std::string body = m_body(head.substr(target, head.find(' ', target) - target));
        TlsStream::write(tls.get(), "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
                                        std::to_string(body.size()) + "\r\n\r\n" + body);
    }
}

void LoopbackServer::serveWebSocket(SSL* tls, int socket) {
    const int wake = eventfd(0, EFD_CLOEXEC);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_greeting.empty()) {
            TlsStream::write(tls, TlsStream::textFrame(m_greeting, false));
        }
        m_wake = wake;
        m_changed.notify_all();
    }
    std::string buffer;
    bool open = true;
    while (open) {
        pollfd ready[] = {{socket, POLLIN, 0}, {wake, POLLIN, 0}};
        if (SSL_pending(tls) == 0) {
            poll(ready, 2, -1);
        }
        if ((ready[1].revents & POLLIN) != 0) {
            eventfd_t count = 0;
            eventfd_read(wake, &count);
            drainOutgoing(tls);
            continue;
        }
        open = TlsStream::readSome(tls, buffer);
        int opcode = 0;
        std::string text;
        while (open && TlsStream::takeFrame(buffer, opcode, text)) {
            open = opcode != 8;
            if (opcode != 1) {
                continue;
            }
            std::string answer;
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_lastReceived = Clock::now();
                ++m_received;
                answer = m_answer ? m_answer(text) : std::string();
            }
            if (!answer.empty()) {
                TlsStream::write(tls, TlsStream::textFrame(answer, false));
            }
            m_changed.notify_all();
        }
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_wake = m_wake == wake ? -1 : m_wake;
    close(wake);
}

void LoopbackServer::drainOutgoing(SSL* tls) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const std::string& frame : m_outgoing) {
        const std::string bytes = TlsStream::textFrame(frame, false);
        m_sendBegan = Clock::now();
        TlsStream::write(tls, bytes);
    }
    m_outgoing.clear();
}
