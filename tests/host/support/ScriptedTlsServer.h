#pragma once

#include <openssl/ssl.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// One TLS connection as its server sees it: bytes in, bytes out, and the ways in which a connection ends. Reads wait
/// at most ten seconds. Used by the connection's own thread.
class ScriptedPeer {
public:
    ScriptedPeer(int socket, SSL* connection, int number, const std::atomic<bool>& ending);
    ~ScriptedPeer();
    ScriptedPeer(const ScriptedPeer&) = delete;
    ScriptedPeer& operator=(const ScriptedPeer&) = delete;

    /// Counts the server's connections from 0.
    int number() const { return m_number; }

    /// True once the server is going down: a script that waits must end.
    bool isServerEnding() const { return m_ending; }

    /// One HTTP request: request line, headers, and the body that Content-Length announces. Empty at the end.
    std::string readRequest();
    /// So many bytes; fewer at the end.
    std::string read(std::size_t length);
    bool write(const std::string& bytes);

    /// True when the client ends the connection in time; what it sends until then is dropped.
    bool waitForEnd(std::chrono::milliseconds limit = std::chrono::seconds(10));
    /// True when the client sends something in time; it is left to be read.
    bool waitForData(std::chrono::milliseconds limit);

    void end();   ///< in order, with TLS's closing alert
    void cut();   ///< without the alert
    void reset(); ///< by a TCP reset

    /// Name that the client asked for in the handshake, empty without one.
    std::string requestedName() const;
    /// Common name of the client's certificate, empty without one.
    std::string clientName() const;
    std::string protocol() const;

private:
    int m_socket;
    SSL* m_connection;
    int m_number;
    const std::atomic<bool>& m_ending;
};

/// A TLS server on a free port of 127.0.0.1. Every connection runs the script on a thread of its own; when the script
/// returns, the connection ends in order.
class ScriptedTlsServer {
public:
    struct Options {
        std::string certificate;
        std::string key;
        std::string clientAuthority; ///< asks for a client certificate of this authority, and insists on it
        int lowestVersion = TLS1_2_VERSION;
        int highestVersion = 0; ///< 0 for the newest
        bool handshake = true;  ///< without, connections are accepted and then left alone
        int sessionTickets = 2;
    };
    using Script = std::function<void(ScriptedPeer&)>;

    ScriptedTlsServer(const Options& options, Script script);
    ~ScriptedTlsServer();
    ScriptedTlsServer(const ScriptedTlsServer&) = delete;
    ScriptedTlsServer& operator=(const ScriptedTlsServer&) = delete;

    int port() const { return m_port; }
    /// "https://127.0.0.1:port", or with another scheme and host.
    std::string url(const std::string& scheme = "https", const std::string& host = "127.0.0.1") const;
    /// Connections whose handshake succeeded.
    int connections() const { return m_connections; }
    /// Connections that were accepted.
    int accepted() const { return m_accepted; }

private:
    struct Release {
        void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
    };
    void acceptConnections();
    void serve(int socket, int number);

    Options m_options;
    Script m_script;
    std::unique_ptr<SSL_CTX, Release> m_context;
    int m_listener = -1;
    int m_port = 0;
    std::atomic<bool> m_ending{false};
    std::atomic<int> m_connections{0};
    std::atomic<int> m_accepted{0};
    std::mutex m_mutex;
    std::list<int> m_sockets;
    std::vector<std::thread> m_threads;
    std::thread m_acceptor;
};

/// A port of 127.0.0.1 on which nobody listens.
int unusedPort();
