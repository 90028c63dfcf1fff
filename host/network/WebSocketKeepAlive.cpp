#include "network/WebSocketKeepAlive.h"

#include "network/NetworkControl.h"
#include "threads/TimeScale.h"

#include <algorithm>
#include <utility>

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

namespace {

/// A limit that is noticed later than that has waited behind a callback, and so may the pong.
constexpr milliseconds punctual{100};
constexpr milliseconds graceBehindCallback{500};

bool isFrozen() {
    return !NetworkControl::instance().isInterfaceUp();
}

/// A factor that makes it nothing would have the loop do nothing else.
nanoseconds scaled(milliseconds duration) {
    return std::max<nanoseconds>(milliseconds(1), TimeScale::scaled(duration));
}

nanoseconds pongLimit() {
    return scaled(milliseconds(NetworkControl::instance().limits().pongMilliseconds));
}

} // namespace

WebSocketKeepAlive::WebSocketKeepAlive(boost::asio::io_context& context, std::function<void()> sendPing,
                                       std::function<void()> reportTimeout)
    : m_sendPing(std::move(sendPing)), m_reportTimeout(std::move(reportTimeout)), m_pingTimer(context),
      m_pongTimer(context) {}

void WebSocketKeepAlive::start(std::weak_ptr<void> owner) {
    m_owner = std::move(owner);
    m_running = true;
    schedulePing();
}

void WebSocketKeepAlive::stop() {
    m_running = false;
    m_pingTimer.cancel();
    m_pongTimer.cancel();
}

void WebSocketKeepAlive::pongArrived() {
    m_pongAwaited = false;
    m_timeoutReported = false;
    // A cancelled timer would still wake the thread up at its time: one that expires at once lets the event loop set
    // the next time anew.
    m_pongTimer.expires_after(nanoseconds(0));
    m_pongTimer.async_wait([](const boost::system::error_code&) {});
}

void WebSocketKeepAlive::interfaceUp() {
    if (!m_running) {
        return;
    }
    schedulePing();
    if (m_pongAwaited && !m_timeoutReported) {
        awaitPong(pongLimit());
    }
}

void WebSocketKeepAlive::schedulePing() {
    m_pingTimer.expires_after(scaled(milliseconds(NetworkControl::instance().limits().pingIntervalMilliseconds)));
    m_pingTimer.async_wait([this, owner = m_owner](const boost::system::error_code& cancelled) {
        const std::shared_ptr<void> alive = owner.lock();
        if (!cancelled && alive && m_running && m_pingTimer.expiry() <= Clock::now()) {
            onPingDue();
        }
    });
}

void WebSocketKeepAlive::onPingDue() {
    if (isFrozen()) {
        return;
    }
    m_sendPing();
    if (!m_pongAwaited) {
        m_pongAwaited = true;
        m_graceGiven = false;
        awaitPong(pongLimit());
    }
    schedulePing();
}

void WebSocketKeepAlive::awaitPong(nanoseconds limit) {
    m_pongTimer.expires_after(limit);
    m_pongTimer.async_wait([this, owner = m_owner](const boost::system::error_code& cancelled) {
        const std::shared_ptr<void> alive = owner.lock();
        if (!cancelled && alive && m_running && m_pongTimer.expiry() <= Clock::now()) {
            onPongLimit();
        }
    });
}

void WebSocketKeepAlive::onPongLimit() {
    if (!m_pongAwaited || isFrozen()) {
        return;
    }
    if (!m_graceGiven && Clock::now() - m_pongTimer.expiry() > punctual) {
        m_graceGiven = true;
        awaitPong(graceBehindCallback);
        return;
    }
    m_timeoutReported = true;
    m_reportTimeout();
}
