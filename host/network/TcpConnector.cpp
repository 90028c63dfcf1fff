#include "network/TcpConnector.h"

#include "network/NameLookup.h"
#include "network/NetworkControl.h"

#include <boost/asio/post.hpp>

#include <utility>

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

TcpConnector::Clock::time_point newDeadline() {
    return TcpConnector::Clock::now() +
           std::chrono::milliseconds(NetworkControl::instance().limits().connectMilliseconds);
}

} // namespace

TcpConnector::TcpConnector(const std::shared_ptr<asio::io_context>& context) : m_context(context), m_limit(*context) {}

void TcpConnector::start(const ServerAddress& server, Socket& socket, std::weak_ptr<void> owner, Finished finished) {
    m_server = server;
    m_socket = &socket;
    m_owner = std::move(owner);
    m_finished = std::move(finished);
    m_deadline = newDeadline();
    if (m_server.isIpAddress) {
        m_addresses = {m_server.host};
        connectNext();
    } else {
        armLimit(m_deadline);
        lookUp();
    }
}

void TcpConnector::stop() {
    m_finished = nullptr;
    m_limit.cancel();
}

void TcpConnector::interfaceUp() {
    m_deadline = newDeadline();
    if (m_finished) {
        armLimit(m_deadline);
    }
}

void TcpConnector::lookUp() {
    NameLookup::start(m_server.host, [this, owner = m_owner, context = m_context](NameLookup::Result result) {
        const std::shared_ptr<asio::io_context> shared = context.lock();
        if (!shared) {
            return;
        }
        asio::post(*shared, [this, owner, result = std::move(result)] {
            const std::shared_ptr<void> alive = owner.lock();
            if (alive && m_finished) {
                m_error = result.error;
                m_addresses = result.addresses;
                connectNext();
            }
        });
    });
}

void TcpConnector::connectNext() {
    if (m_nextAddress == m_addresses.size()) {
        finish(m_error);
        return;
    }
    // What is left is shared out, so that an address that does not answer leaves time for the next one.
    const auto left = static_cast<long>(m_addresses.size() - m_nextAddress);
    armLimit(Clock::now() + (m_deadline - Clock::now()) / left);
    error_code failed;
    const asio::ip::address address = asio::ip::make_address(m_addresses[m_nextAddress++], failed);
    const auto port = static_cast<unsigned short>(std::stoi(m_server.port));
    error_code ignored;
    m_socket->close(ignored);
    m_socket->async_connect(asio::ip::tcp::endpoint(address, port), [this, owner = m_owner](const error_code& refused) {
        const std::shared_ptr<void> alive = owner.lock();
        if (alive && m_finished) {
            onConnected(refused);
        }
    });
}

void TcpConnector::onConnected(const error_code& refused) {
    if (refused) {
        m_error = m_limitHit ? "time limit" : refused.message();
        connectNext();
        return;
    }
    error_code ignored;
    m_socket->set_option(asio::ip::tcp::no_delay(true), ignored);
    finish(std::string());
}

void TcpConnector::armLimit(Clock::time_point limit) {
    m_limitHit = false;
    m_limit.expires_at(limit);
    m_limit.async_wait([this, owner = m_owner](const error_code& cancelled) {
        const std::shared_ptr<void> alive = owner.lock();
        const bool due = !cancelled && alive && m_finished && m_limit.expiry() <= Clock::now();
        if (!due || !NetworkControl::instance().isInterfaceUp()) {
            return;
        }
        m_limitHit = true;
        if (m_addresses.empty()) {
            finish("time limit");
        } else {
            error_code ignored;
            m_socket->close(ignored); // the attempt ends, and with it the turn of its address
        }
    });
}

void TcpConnector::finish(const std::string& error) {
    m_limit.cancel();
    if (const Finished finished = std::exchange(m_finished, nullptr)) {
        finished(error);
    }
}
