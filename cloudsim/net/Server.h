#pragma once

#include "net/Connection.h"
#include "net/Listener.h"

#include <atomic>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace cloudsim {

/// What is done on an accepted connection, on the connection's own thread.
class ConnectionHandler {
public:
    virtual ~ConnectionHandler() = default;
    /// Returns when the connection is done with; the server then closes it in order unless it was reset.
    virtual void serve(Connection& connection) = 0;
};

/// Accepts connections and gives each a thread.
class Server {
public:
    /// Listens at once, accepts from `start` on. The counter numbers connections across servers.
    Server(const Address& address, ConnectionHandler& handler, std::atomic<std::uint64_t>& connectionCounter);
    ~Server();

    const Address& address() const { return m_address; }
    void start();
    /// Ends all connections and returns when their threads are gone.
    void stop();

    void closeConnections(Connection::Closing how);
    std::size_t connectionCount();
    /// The port is down: nobody listens, connections are reset.
    void takeDown();
    /// Listens on the same port again. Throws BadInput when somebody else has taken it.
    void bringUp();

private:
    struct Client {
        std::unique_ptr<Connection> connection;
        std::thread thread;
        std::atomic<bool> ended{false};
    };

    void acceptLoop();
    void admit(FileDescriptor socket);
    void serve(Client& client);
    void reap();

    ConnectionHandler& m_handler;
    std::atomic<std::uint64_t>& m_counter;
    std::mutex m_mutex;
    std::optional<Listener> m_listener;
    Address m_address;
    std::list<Client> m_clients;
    WakeUp m_wakeUp;
    std::thread m_thread;
    bool m_stopping = false;
};

} // namespace cloudsim
