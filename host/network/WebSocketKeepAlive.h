#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <functional>
#include <memory>

/// When pings are due, and when a pong has failed to come. While the interface is down nothing is due; when it is back,
/// the times begin anew. Its times follow TimeScale. Used on the thread that runs its context.
class WebSocketKeepAlive {
public:
    WebSocketKeepAlive(boost::asio::io_context& context, std::function<void()> sendPing,
                       std::function<void()> reportTimeout);

    /// Begins; nothing is called once `owner` is gone.
    void start(std::weak_ptr<void> owner);
    /// Nothing is called any more.
    void stop();
    void pongArrived();
    void interfaceUp();

private:
    void schedulePing();
    void onPingDue();
    void awaitPong(std::chrono::nanoseconds limit);
    void onPongLimit();

    const std::function<void()> m_sendPing;
    const std::function<void()> m_reportTimeout;
    std::weak_ptr<void> m_owner;
    boost::asio::steady_timer m_pingTimer;
    boost::asio::steady_timer m_pongTimer;
    bool m_running = false;
    bool m_pongAwaited = false; ///< from a ping to the next pong, beyond the limit as well: one silence, one report
    bool m_timeoutReported = false;
    bool m_graceGiven = false;
};
