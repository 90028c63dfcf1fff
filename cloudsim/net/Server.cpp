#include "net/Server.h"

#include <poll.h>

#include <exception>
#include <iostream>
#include <system_error>

namespace cloudsim {
namespace {

void report(std::uint64_t connectionNumber, const std::exception& error) {
    std::cerr << "connection " << connectionNumber << ": " << error.what() << '\n';
}

} // namespace

Server::Server(const Address& address, ConnectionHandler& handler, std::atomic<std::uint64_t>& connectionCounter)
    : m_handler(handler), m_counter(connectionCounter), m_listener(std::in_place, address),
      m_address(m_listener->address()) {}

Server::~Server() {
    stop();
}

void Server::start() {
    m_thread = std::thread([this] { acceptLoop(); });
}

void Server::acceptLoop() {
    while (true) {
        pollfd entries[2] = {{m_wakeUp.descriptor(), POLLIN, 0}, {-1, POLLIN, 0}};
        {
            std::lock_guard lock(m_mutex);
            if (m_stopping)
                return;
            if (m_listener)
                entries[1].fd = m_listener->descriptor();
        }
        constexpr int reapMilliseconds = 1000;
        ::poll(entries, 2, reapMilliseconds);
        m_wakeUp.clear();
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

/// With the mutex held. A client for whom there is no thread any more is turned away.
void Server::admit(FileDescriptor socket) {
    auto number = ++m_counter;
    Client& client = m_clients.emplace_back();
    try {
        client.connection = std::make_unique<Connection>(std::move(socket), number, m_address.port);
        client.thread = std::thread([this, &client] { serve(client); });
    } catch (const std::system_error& error) {
        m_clients.pop_back();
        report(number, error);
    }
}

void Server::serve(Client& client) {
    try {
        m_handler.serve(*client.connection);
    } catch (const std::exception& error) {
        report(client.connection->number(), error);
    }
    client.connection->finish();
    client.ended = true;
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
    m_wakeUp.wake();
}

void Server::stop() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_listener.reset();
        m_wakeUp.wake();
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
