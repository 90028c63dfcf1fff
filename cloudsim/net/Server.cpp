#include "net/Server.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <exception>
#include <iostream>

namespace cloudsim {

Server::Server(const Address& address, ConnectionHandler& handler, std::atomic<std::uint64_t>& connectionCounter)
    : m_handler(handler), m_counter(connectionCounter), m_listener(std::in_place, address),
      m_address(m_listener->address()), m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

Server::~Server() {
    stop();
}

void Server::start() {
    m_thread = std::thread([this] { acceptLoop(); });
}

void Server::acceptLoop() {
    while (true) {
        pollfd entries[2] = {{m_wakeUp.get(), POLLIN, 0}, {-1, POLLIN, 0}};
        {
            std::lock_guard lock(m_mutex);
            if (m_stopping)
                return;
            if (m_listener)
                entries[1].fd = m_listener->descriptor();
        }
        constexpr int reapMilliseconds = 1000;
        ::poll(entries, 2, reapMilliseconds);
        std::uint64_t count = 0;
        [[maybe_unused]] auto taken = ::read(m_wakeUp.get(), &count, sizeof count);
        std::lock_guard lock(m_mutex);
        reap();
        while (m_listener && !m_stopping) {
            FileDescriptor socket = m_listener->accept();
            if (!socket)
                break;
            admit(std::move(socket));
        }
    }
}

/// With the mutex held.
void Server::admit(FileDescriptor socket) {
    Client& client = m_clients.emplace_back();
    client.connection = std::make_unique<Connection>(std::move(socket), ++m_counter, m_address.port);
    client.thread = std::thread([this, &client] {
        try {
            m_handler.serve(*client.connection);
        } catch (const std::exception& error) {
            std::cerr << "connection " << client.connection->number() << ": " << error.what() << std::endl;
        }
        client.connection->finish();
        client.ended = true;
    });
}

/// With the mutex held. A thread that has ended needs no lock any more.
void Server::reap() {
    for (auto client = m_clients.begin(); client != m_clients.end();) {
        if (client->ended) {
            client->thread.join();
            client = m_clients.erase(client);
        } else {
            ++client;
        }
    }
}

void Server::closeConnections(Connection::Closing how) {
    std::lock_guard lock(m_mutex);
    for (auto& client : m_clients)
        client.connection->requestClose(how);
}

std::size_t Server::connectionCount() {
    std::lock_guard lock(m_mutex);
    reap();
    return m_clients.size();
}

void Server::takeDown() {
    {
        std::lock_guard lock(m_mutex);
        m_listener.reset();
    }
    closeConnections(Connection::Closing::RESET);
}

void Server::bringUp() {
    std::lock_guard lock(m_mutex);
    if (!m_listener)
        m_listener.emplace(m_address);
    std::uint64_t one = 1;
    [[maybe_unused]] auto written = ::write(m_wakeUp.get(), &one, sizeof one);
}

void Server::stop() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_listener.reset();
        std::uint64_t one = 1;
        [[maybe_unused]] auto written = ::write(m_wakeUp.get(), &one, sizeof one);
    }
    if (m_thread.joinable())
        m_thread.join();
    closeConnections(Connection::Closing::IN_ORDER);
    for (auto& client : m_clients)
        if (client.thread.joinable())
            client.thread.join();
    m_clients.clear();
}

} // namespace cloudsim
