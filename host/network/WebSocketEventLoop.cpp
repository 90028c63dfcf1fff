#include "network/WebSocketEventLoop.h"

#include "logging/HostLog.h"
#include "network/NetworkControl.h"
#include "threads/ThreaderIfc.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include <algorithm>
#include <chrono>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace asio = boost::asio;

namespace {

/// For closing handshakes in progress: short enough for a program that must end within two seconds.
constexpr std::chrono::milliseconds closingTime{500};
constexpr std::chrono::milliseconds closingCheckInterval{5};

} // namespace

struct WebSocketEventLoop::Representation {
    std::shared_ptr<asio::io_context> context = std::make_shared<asio::io_context>(1);
    asio::executor_work_guard<asio::io_context::executor_type> work{context->get_executor()};
    asio::steady_timer closingCheck{*context};
    std::vector<std::weak_ptr<WebSocketSession>> sessions; ///< of the loop's thread
    int listener = 0;
    ThreaderIfc* threader = nullptr;
    unsigned long threadId = 0;
    std::thread thread; ///< without a threader

    void runToTheEnd();
    void tellSessions();
    void stopWhenClosed(std::chrono::steady_clock::time_point deadline);
};

void WebSocketEventLoop::Representation::runToTheEnd() {
    for (bool ended = false; !ended;) {
        try {
            context->run();
            ended = true;
        } catch (const std::exception& failure) {
            HOST_LOG(HostLog::ERROR, "WebSocket thread: %s", failure.what());
        }
    }
    NetworkControl::instance().removeListener(listener);
}

void WebSocketEventLoop::Representation::tellSessions() {
    std::vector<std::shared_ptr<WebSocketSession>> present;
    std::vector<std::weak_ptr<WebSocketSession>> kept;
    for (const auto& each : sessions) {
        if (auto session = each.lock()) {
            present.push_back(std::move(session));
            kept.push_back(each);
        }
    }
    sessions = std::move(kept);
    for (const auto& session : present) {
        session->interfaceChanged();
    }
}

void WebSocketEventLoop::Representation::stopWhenClosed(std::chrono::steady_clock::time_point deadline) {
    const bool closed = std::all_of(sessions.begin(), sessions.end(), [](const auto& each) { return each.expired(); });
    if (closed || std::chrono::steady_clock::now() >= deadline) {
        context->stop();
        return;
    }
    closingCheck.expires_after(closingCheckInterval);
    closingCheck.async_wait([this, deadline](const boost::system::error_code&) { stopWhenClosed(deadline); });
}

WebSocketEventLoop::WebSocketEventLoop(std::unique_ptr<Representation> representation)
    : m_representation(std::move(representation)) {}

WebSocketEventLoop::~WebSocketEventLoop() = default;

void* WebSocketEventLoop::run(void* argument) {
    // The thread keeps its loop alive to its own end: a loop that is ended from a callback has no other owner.
    const std::unique_ptr<std::shared_ptr<WebSocketEventLoop>> loop(
        static_cast<std::shared_ptr<WebSocketEventLoop>*>(argument));
    (*loop)->m_representation->runToTheEnd();
    return nullptr;
}

std::shared_ptr<WebSocketEventLoop> WebSocketEventLoop::start(ThreaderIfc* threader) {
    std::shared_ptr<WebSocketEventLoop> loop(new WebSocketEventLoop(std::make_unique<Representation>()));
    Representation& my = *loop->m_representation;
    my.threader = threader;
    my.listener =
        NetworkControl::instance().addListener([&my] { asio::post(*my.context, [&my] { my.tellSessions(); }); });
    auto argument = std::make_unique<std::shared_ptr<WebSocketEventLoop>>(loop);
    bool started = false;
    if (threader != nullptr) {
        started = threader->spawn(my.threadId, run, argument.get(), "WebSocket", OSAL_THREAD_PRIORITY_NORMAL, 0);
    } else {
        try {
            my.thread = std::thread(run, argument.get());
            started = true;
        } catch (const std::system_error&) {
            started = false;
        }
    }
    if (!started) {
        NetworkControl::instance().removeListener(my.listener);
        return nullptr;
    }
    argument.release(); // the thread's own now
    return loop;
}

std::shared_ptr<WebSocketSession> WebSocketEventLoop::makeSession(const std::string& url,
                                                                  WebSocketSession::Reporter reporter) {
    Representation& my = *m_representation;
    std::shared_ptr<WebSocketSession> session = WebSocketSession::make(my.context, url, std::move(reporter));
    post([&my, weak = std::weak_ptr<WebSocketSession>(session)] { my.sessions.push_back(weak); });
    return session;
}

void WebSocketEventLoop::post(std::function<void()> task) {
    asio::post(*m_representation->context, std::move(task));
}

void WebSocketEventLoop::finish(bool wait) {
    Representation& my = *m_representation;
    post([&my] { my.stopWhenClosed(std::chrono::steady_clock::now() + closingTime); });
    if (my.threader != nullptr) {
        if (wait) {
            my.threader->waitForThreadCompletion(my.threadId);
        } else {
            my.threader->detach(my.threadId);
        }
    } else if (wait) {
        my.thread.join();
    } else {
        my.thread.detach();
    }
}
