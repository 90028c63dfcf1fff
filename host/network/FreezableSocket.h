#pragma once

#include "network/NetworkControl.h"

#include <boost/asio/compose.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/websocket/teardown.hpp>

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>

/// The TCP layer under the WebSocket. While the telephone's interface is down it neither sends nor hands on what has
/// arrived; whatever lies above simply waits. Used on one thread.
class FreezableSocket {
public:
    using Socket = boost::asio::ip::tcp::socket;
    using executor_type = Socket::executor_type;
    using lowest_layer_type = Socket::lowest_layer_type;

    explicit FreezableSocket(boost::asio::io_context& context)
        : m_socket(context), m_thaw(context), m_closeLimit(context) {
        m_thaw.expires_at(boost::asio::steady_timer::time_point::max());
    }

    executor_type get_executor() { return m_socket.get_executor(); }
    lowest_layer_type& lowest_layer() { return m_socket.lowest_layer(); }
    const lowest_layer_type& lowest_layer() const { return m_socket.lowest_layer(); }

    bool isFrozen() const { return !m_closed && !NetworkControl::instance().isInterfaceUp(); }
    /// The interface has changed: what waits looks again.
    void interfaceChanged() { m_thaw.cancel(); }

    /// Ends everything in progress.
    void close() {
        boost::system::error_code ignored;
        m_closed = true;
        m_socket.close(ignored);
        m_thaw.cancel();
        m_closeLimit.cancel();
    }

    /// Closes in any case after that time.
    void closeAfter(std::chrono::milliseconds limit) {
        m_closeLimit.expires_after(limit);
        m_closeLimit.async_wait([this, life = std::weak_ptr<bool>(m_life)](const boost::system::error_code& cancelled) {
            if (!cancelled && !life.expired()) {
                close();
            }
        });
    }

    template <typename Buffers, typename Handler>
    auto async_read_some(const Buffers& buffers, Handler&& handler) {
        return boost::asio::async_compose<Handler, void(boost::system::error_code, std::size_t)>(
            Operation<Buffers, Read>{*this, buffers}, handler, m_socket);
    }

    template <typename Buffers, typename Handler>
    auto async_write_some(const Buffers& buffers, Handler&& handler) {
        return boost::asio::async_compose<Handler, void(boost::system::error_code, std::size_t)>(
            Operation<Buffers, Write>{*this, buffers}, handler, m_socket);
    }

    /// Reads and drops, at most until the close limit: a socket closed over unread bytes resets the connection, and
    /// the peer may lose what was sent last.
    template <typename Handler>
    auto asyncDrain(Handler&& handler) {
        return m_socket.async_read_some(boost::asio::buffer(m_dropped), std::forward<Handler>(handler));
    }

    friend void beast_close_socket(FreezableSocket& socket) { socket.close(); }

private:
    struct Read {
        template <typename Buffers, typename Handler>
        static void start(Socket& socket, const Buffers& buffers, Handler&& handler) {
            socket.async_read_some(buffers, std::forward<Handler>(handler));
        }
    };
    struct Write {
        template <typename Buffers, typename Handler>
        static void start(Socket& socket, const Buffers& buffers, Handler&& handler) {
            socket.async_write_some(buffers, std::forward<Handler>(handler));
        }
    };

    template <typename Buffers, typename Kind>
    struct Operation {
        FreezableSocket& socket;
        Buffers buffers;
        enum { BEFORE, DURING, AFTER } phase = BEFORE;
        boost::system::error_code result{};
        std::size_t length = 0;

        template <typename Self>
        void operator()(Self& self, boost::system::error_code ec = {}, std::size_t count = 0) {
            if (phase == DURING) {
                result = ec;
                length = count;
                phase = AFTER;
            }
            if (socket.isFrozen()) {
                socket.m_thaw.async_wait(std::move(self));
            } else if (phase == BEFORE) {
                phase = DURING;
                Kind::start(socket.m_socket, buffers, std::move(self));
            } else {
                self.complete(result, length);
            }
        }
    };

    Socket m_socket;
    boost::asio::steady_timer m_thaw; ///< never expires: waiting on it is waiting for interfaceChanged
    boost::asio::steady_timer m_closeLimit;
    std::array<char, 4096> m_dropped{};
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true); ///< tells a handler that comes late
    bool m_closed = false;
};

using FreezableTlsStream = boost::asio::ssl::stream<FreezableSocket>;

/// The end of a WebSocket's TLS stream: says so to the peer, and waits for the peer's end, but not for long. How the
/// stream ended does not matter any more, so it always succeeds.
struct TlsTeardown {
    FreezableTlsStream& stream;
    enum { BEFORE, SHUTTING, DRAINING } phase = BEFORE;

    template <typename Self>
    void operator()(Self& self, boost::system::error_code ec = {}, std::size_t = 0) {
        switch (phase) {
        case BEFORE:
            phase = SHUTTING;
            stream.next_layer().closeAfter(
                std::chrono::milliseconds(NetworkControl::instance().limits().closeMilliseconds));
            stream.async_shutdown(std::move(self));
            return;
        case SHUTTING:
            phase = DRAINING;
            stream.next_layer().asyncDrain(std::move(self));
            return;
        case DRAINING:
            if (!ec) {
                stream.next_layer().asyncDrain(std::move(self));
                return;
            }
            stream.next_layer().close();
            self.complete({});
        }
    }
};

template <typename Handler>
void async_teardown(boost::beast::role_type, FreezableTlsStream& stream, Handler&& handler) {
    boost::asio::async_compose<Handler, void(boost::system::error_code)>(TlsTeardown{stream}, handler, stream);
}
