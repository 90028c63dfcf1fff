#include "support/ScriptedTlsServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <strings.h>
#include <utility>

namespace {

constexpr int readLimitSeconds = 10;

void require(bool good, const char* what) {
    if (!good) {
        throw std::runtime_error(std::string("scripted server: ") + what);
    }
}

int boundSocket(int& port) {
    const int handle = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    require(handle >= 0 && bind(handle, reinterpret_cast<sockaddr*>(&address), length) == 0, "cannot bind");
    require(getsockname(handle, reinterpret_cast<sockaddr*>(&address), &length) == 0, "no port");
    port = ntohs(address.sin_port);
    return handle;
}

std::size_t announcedLength(const std::string& header) {
    std::size_t line = 0;
    while ((line = header.find("\r\n", line)) != std::string::npos) {
        line += 2;
        static constexpr char name[] = "content-length:";
        if (strncasecmp(header.c_str() + line, name, sizeof name - 1) == 0) {
            return std::stoul(header.substr(line + sizeof name - 1));
        }
    }
    return 0;
}

} // namespace

ScriptedPeer::ScriptedPeer(int socket, SSL* connection, int number, const std::atomic<bool>& ending)
    : m_socket(socket), m_connection(connection), m_number(number), m_ending(ending) {}

ScriptedPeer::~ScriptedPeer() = default;

std::string ScriptedPeer::readRequest() {
    static const std::string headerEnd = "\r\n\r\n";
    std::string request;
    while (request.size() < headerEnd.size() ||
           request.compare(request.size() - headerEnd.size(), headerEnd.size(), headerEnd) != 0) {
        const std::string byte = read(1);
        if (byte.empty()) {
            return {};
        }
        request += byte;
    }
    return request + read(announcedLength(request));
}

std::string ScriptedPeer::read(std::size_t length) {
    std::string bytes(length, '\0');
    std::size_t filled = 0;
    while (filled < length) {
        const int count = SSL_read(m_connection, bytes.data() + filled, static_cast<int>(length - filled));
        if (count <= 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return bytes;
}

bool ScriptedPeer::write(const std::string& bytes) {
    return bytes.empty() ||
           SSL_write(m_connection, bytes.data(), static_cast<int>(bytes.size())) == static_cast<int>(bytes.size());
}

bool ScriptedPeer::waitForData(std::chrono::milliseconds limit) {
    if (SSL_pending(m_connection) > 0) {
        return true;
    }
    pollfd wanted{m_socket, POLLIN, 0};
    return poll(&wanted, 1, static_cast<int>(limit.count())) == 1;
}

bool ScriptedPeer::waitForEnd(std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || !waitForData(left)) {
            return false;
        }
        if (read(1).empty()) {
            return true;
        }
    }
}

void ScriptedPeer::end() {
    SSL_shutdown(m_connection);
    shutdown(m_socket, SHUT_WR);
}

void ScriptedPeer::cut() {
    SSL_set_quiet_shutdown(m_connection, 1);
    shutdown(m_socket, SHUT_RDWR);
}

void ScriptedPeer::reset() {
    SSL_set_quiet_shutdown(m_connection, 1);
    // Connecting to nothing drops a TCP connection at once; bytes on their way are lost, as in a real reset.
    const linger atOnce{1, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    sockaddr nothing{};
    nothing.sa_family = AF_UNSPEC;
    connect(m_socket, &nothing, sizeof nothing);
}

std::string ScriptedPeer::requestedName() const {
    const char* name = SSL_get_servername(m_connection, TLSEXT_NAMETYPE_host_name);
    return name == nullptr ? "" : name;
}

std::string ScriptedPeer::clientName() const {
    X509* certificate = SSL_get0_peer_certificate(m_connection);
    char name[256] = "";
    if (certificate != nullptr) {
        X509_NAME_get_text_by_NID(X509_get_subject_name(certificate), NID_commonName, name, sizeof name);
    }
    return name;
}

std::string ScriptedPeer::protocol() const {
    return SSL_get_version(m_connection);
}

ScriptedTlsServer::ScriptedTlsServer(const Options& options, Script script)
    : m_options(options), m_script(std::move(script)), m_context(SSL_CTX_new(TLS_server_method())) {
    std::signal(SIGPIPE, SIG_IGN); // OpenSSL writes to sockets without MSG_NOSIGNAL
    SSL_CTX* context = m_context.get();
    SSL_CTX_set_security_level(context, 0); // the old protocol versions that a test may ask for need it
    require(SSL_CTX_use_certificate_chain_file(context, options.certificate.c_str()) == 1, "certificate");
    require(SSL_CTX_use_PrivateKey_file(context, options.key.c_str(), SSL_FILETYPE_PEM) == 1, "key");
    SSL_CTX_set_min_proto_version(context, options.lowestVersion);
    SSL_CTX_set_max_proto_version(context, options.highestVersion);
    SSL_CTX_set_num_tickets(context, static_cast<std::size_t>(options.sessionTickets));
    SSL_CTX_set_options(context, SSL_OP_IGNORE_UNEXPECTED_EOF);
    if (!options.clientAuthority.empty()) {
        require(SSL_CTX_load_verify_file(context, options.clientAuthority.c_str()) == 1, "client authority");
        SSL_CTX_set_verify(context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
        static constexpr unsigned char sessionContext[] = "scripted";
        SSL_CTX_set_session_id_context(context, sessionContext, sizeof sessionContext - 1);
    }
    m_listener = boundSocket(m_port);
    require(listen(m_listener, 16) == 0, "cannot listen");
    m_acceptor = std::thread([this] { acceptConnections(); });
}

ScriptedTlsServer::~ScriptedTlsServer() {
    m_ending = true;
    shutdown(m_listener, SHUT_RDWR);
    m_acceptor.join();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const int socket : m_sockets) {
            shutdown(socket, SHUT_RDWR);
        }
    }
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    ::close(m_listener);
}

std::string ScriptedTlsServer::url(const std::string& scheme, const std::string& host) const {
    return scheme + "://" + host + ":" + std::to_string(m_port);
}

void ScriptedTlsServer::acceptConnections() {
    for (int number = 0; !m_ending; ++number) {
        const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) {
            return;
        }
        ++m_accepted;
        const timeval limit{readLimitSeconds, 0};
        setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        const int noDelay = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_sockets.push_back(socket);
        m_threads.emplace_back([this, socket, number] { serve(socket, number); });
    }
}

void ScriptedTlsServer::serve(int socket, int number) {
    SSL* connection = SSL_new(m_context.get());
    SSL_set_fd(connection, socket);
    if (!m_options.handshake) {
        char byte = 0;
        while (recv(socket, &byte, 1, 0) > 0) {
        }
    } else if (SSL_accept(connection) == 1) {
        ++m_connections;
        ScriptedPeer peer(socket, connection, number, m_ending);
        m_script(peer);
        SSL_shutdown(connection);
    }
    SSL_free(connection);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sockets.remove(socket);
    ::close(socket);
    ERR_clear_error();
}

int unusedPort() {
    int port = 0;
    ::close(boundSocket(port));
    return port;
}
