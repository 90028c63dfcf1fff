#include "network/WebSocketThread.h"

#include "logging/ExceptionBoundary.h"
#include "logging/HostLog.h"
#include "network/ChannelState.h"
#include "network/WebSocketAppIfc.h"
#include "network/WebSocketEventLoop.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace {

/// Passes everything on, and remembers whether the connection is open.
class StateKeeper final : public WebSocketAppIfc {
public:
    StateKeeper(WebSocketAppIfc& app, std::atomic<bool>& open) : m_app(app), m_open(open) {}

    void onOpen(int code) override {
        m_open = true;
        m_app.onOpen(code);
    }
    void onClose(int code, int localCode, const std::string& msg) override {
        m_open = false;
        m_app.onClose(code, localCode, msg);
    }
    void onError(int code, const std::string& msg) override { m_app.onError(code, msg); }
    void onMessage(const std::string& msg) override { m_app.onMessage(msg); }
    void onPong() override { m_app.onPong(); }
    void onPongTimeout() override { m_app.onPongTimeout(); }
    bool continueOnLoginError() override { return m_app.continueOnLoginError(); }

private:
    WebSocketAppIfc& m_app;
    std::atomic<bool>& m_open;
};

/// The telephone's one client: the session of now, the thread under it, and the rule that what belongs to a former
/// session is not delivered.
class Client final : public WebSocketThread {
public:
    static Client& get() {
        // Never destroyed: its thread may run to the very end of the process.
        static Client* const client = new Client;
        return *client;
    }

    void useThreader(ThreaderIfc* threader);
    void open(WebSocketAppIfc* app, const std::string& url);
    void endSession();
    void endThread();
    bool isRunning();
    bool isOpen() const { return m_open; }
    void send(const std::string& message) override;

private:
    void dropSession();
    void deliver(unsigned long number, const WebSocketSession::Report& report);
    bool isCallbackThread() const { return m_inCallback && m_callbackThread == std::this_thread::get_id(); }

    std::mutex m_mutex;
    std::condition_variable m_callbackEnded;
    ThreaderIfc* m_threader = nullptr;
    std::shared_ptr<WebSocketEventLoop> m_loop;
    std::shared_ptr<WebSocketSession> m_session;
    WebSocketAppIfc* m_app = nullptr;
    unsigned long m_sessionNumber = 0; ///< news of any other session are dropped
    bool m_inCallback = false;
    std::thread::id m_callbackThread;
    std::atomic<bool> m_open{false};
};

void Client::useThreader(ThreaderIfc* threader) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_threader = threader;
}

void Client::open(WebSocketAppIfc* app, const std::string& url) {
    // The lock is held to the end: no callback of the new session comes before init has returned.
    const std::lock_guard<std::mutex> lock(m_mutex);
    dropSession();
    if (app == nullptr) {
        return;
    }
    if (!m_loop) {
        m_loop = WebSocketEventLoop::start(m_threader);
    }
    if (!m_loop) {
        HOST_LOG(HostLog::ERROR, "WebSocket: no thread");
        return;
    }
    m_app = app;
    m_session = m_loop->makeSession(
        url, [this, number = m_sessionNumber](const WebSocketSession::Report& report) { deliver(number, report); });
    m_loop->post([session = m_session] { session->begin(); });
}

void Client::dropSession() {
    ++m_sessionNumber;
    m_app = nullptr;
    m_open = false;
    if (m_session) {
        m_loop->post([session = std::move(m_session)] { session->close(); });
        m_session.reset();
    }
}

void Client::endSession() {
    std::unique_lock<std::mutex> lock(m_mutex);
    dropSession();
    if (!isCallbackThread()) {
        m_callbackEnded.wait(lock, [this] { return !m_inCallback; });
    }
}

void Client::endThread() {
    endSession();
    std::shared_ptr<WebSocketEventLoop> loop;
    bool wait = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        dropSession(); // of an init in between
        loop = std::move(m_loop);
        m_loop.reset();
        wait = !isCallbackThread();
    }
    if (loop) {
        loop->finish(wait);
    }
}

bool Client::isRunning() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_session != nullptr;
}

void Client::send(const std::string& message) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_session) {
        m_session->send(message);
    } else {
        HOST_LOG(HostLog::WARNING, "WebSocket: frame of %zu bytes dropped, there is no connection", message.size());
    }
}

void Client::deliver(unsigned long number, const WebSocketSession::Report& report) {
    std::unique_lock<std::mutex> lock(m_mutex);
    // A thread that was ended from inside its callback may still be in it.
    m_callbackEnded.wait(lock, [this] { return !m_inCallback; });
    if (number != m_sessionNumber || m_app == nullptr) {
        return;
    }
    StateKeeper app(*m_app, m_open);
    m_inCallback = true;
    m_callbackThread = std::this_thread::get_id();
    lock.unlock();
    containExceptions([&] { report(app); },
                      [](const char* colon, const char* text) {
                          HOST_LOG(HostLog::ERROR, "WebSocket: a callback threw%s%s", colon, text);
                      });
    lock.lock();
    m_inCallback = false;
    m_callbackEnded.notify_all();
}

} // namespace

void WebSocketThread::setThreader(ThreaderIfc* threader) {
    Client::get().useThreader(threader);
}

void WebSocketThread::init(WebSocketAppIfc* app, const std::string& url, const std::string&, const std::string&) {
    Client::get().open(app, url);
}

WebSocketThread* WebSocketThread::instance() {
    return Client::get().isRunning() ? &Client::get() : nullptr;
}

void WebSocketThread::stop() {
    Client::get().endSession();
}

void WebSocketThread::terminate() {
    Client::get().endThread();
}

bool ChannelState::isOpen() {
    return Client::get().isOpen();
}
