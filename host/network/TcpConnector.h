#pragma once

#include "network/ServerAddress.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Looks a server's addresses up and connects a socket to the first one that answers. A time in which the interface is
/// down does not count. Used on the thread that runs its context.
class TcpConnector {
public:
    /// Called once; an empty error is success.
    using Finished = std::function<void(const std::string& error)>;
    using Socket = boost::asio::ip::tcp::socket::lowest_layer_type;
    using Clock = std::chrono::steady_clock;

    explicit TcpConnector(const std::shared_ptr<boost::asio::io_context>& context);

    /// `socket` belongs to `owner`; nothing is called and nothing touched once that is gone.
    void start(const ServerAddress& server, Socket& socket, std::weak_ptr<void> owner, Finished finished);
    /// Nothing is called any more.
    void stop();
    /// The interface is back: the time limit begins anew.
    void interfaceUp();

    /// When everything up to the end of the opening handshakes must be over.
    Clock::time_point deadline() const { return m_deadline; }

private:
    void lookUp();
    void connectNext();
    void onConnected(const boost::system::error_code& refused);
    void armLimit(Clock::time_point limit);
    void finish(const std::string& error);

    std::weak_ptr<boost::asio::io_context> m_context; ///< a name look-up may outlive it
    boost::asio::steady_timer m_limit;
    ServerAddress m_server;
    Socket* m_socket = nullptr;
    std::weak_ptr<void> m_owner;
    Finished m_finished;
    Clock::time_point m_deadline;
    std::vector<std::string> m_addresses;
    std::size_t m_nextAddress = 0;
    std::string m_error;
    bool m_limitHit = false;
};
