#include "network/BareClient.h"

#include "network/TlsStream.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

BareClient::BareClient(int port, const std::string& authorities)
    : m_context(SSL_CTX_new(TLS_client_method())), m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    SSL_CTX_load_verify_locations(m_context, authorities.c_str(), nullptr);
    SSL_CTX_set_verify(m_context, SSL_VERIFY_PEER, nullptr);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const int on = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    m_tls = SSL_new(m_context);
    SSL_set_fd(m_tls, m_socket);
    X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(m_tls), "127.0.0.1");
    if (connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        SSL_connect(m_tls) != 1) {
        throw std::runtime_error("the bare client cannot connect");
    }
}

BareClient::~BareClient() {
    SSL_free(m_tls);
    close(m_socket);
    SSL_CTX_free(m_context);
}

std::string BareClient::request(const std::string& method, const std::string& target) {
    TlsStream::write(m_tls, method + " " + target +
                                " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
                                "Authorization: Bearer T1\r\nContent-Length: 0\r\n\r\n");
    std::size_t bodyBegin = std::string::npos;
    std::size_t length = 0;
    while (bodyBegin == std::string::npos || m_buffer.size() < bodyBegin + length) {
        if (!TlsStream::readSome(m_tls, m_buffer)) {
            throw std::runtime_error("the server ended an answer early");
        }
        const std::size_t headEnd = bodyBegin == std::string::npos ? m_buffer.find("\r\n\r\n") : std::string::npos;
        if (headEnd != std::string::npos) {
            bodyBegin = headEnd + 4;
            length = std::stoul(TlsStream::header(m_buffer.substr(0, bodyBegin), "content-length"));
            m_buffer.reserve(bodyBegin + length);
        }
    }
    std::string body = m_buffer.substr(bodyBegin, length);
    m_buffer.erase(0, bodyBegin + length);
    return body;
}

void BareClient::openWebSocket(const std::string& target) {
    TlsStream::write(m_tls, "GET " + target +
                                " HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                                "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n");
    std::size_t headEnd = std::string::npos;
    while ((headEnd = m_buffer.find("\r\n\r\n")) == std::string::npos) {
        if (!TlsStream::readSome(m_tls, m_buffer)) {
            throw std::runtime_error("the server refused a WebSocket");
        }
    }
    m_buffer.erase(0, headEnd + 4);
}

std::string BareClient::readFrame() {
    int opcode = 0;
    std::string text;
    while (!TlsStream::takeFrame(m_buffer, opcode, text)) {
        if (!TlsStream::readSome(m_tls, m_buffer)) {
            throw std::runtime_error("the server ended a WebSocket");
        }
    }
    return text;
}

void BareClient::sendFrame(const std::string& text) {
    TlsStream::write(m_tls, TlsStream::textFrame(text, true));
}
