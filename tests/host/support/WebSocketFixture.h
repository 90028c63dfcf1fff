#pragma once

#include "network/WebSocketAppIfc.h"
#include "network/WebSocketThread.h"
#include "support/NetworkFixture.h"
#include "support/WebSocketPeer.h"
#include "threads/ThreaderIfc.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// Remembers what is reported, one text a report: "open 0", "message text", "close code localCode", "error", "pong",
/// "pongTimeout".
class RecordingApp : public WebSocketAppIfc {
public:
    void onOpen(int code) override { record("open " + std::to_string(code)); }
    void onClose(int code, int localCode, const std::string& msg) override {
        closeText = msg;
        record("close " + std::to_string(code) + " " + std::to_string(localCode));
    }
    void onError(int code, const std::string& msg) override {
        errorCode = code;
        errorText = msg;
        record("error");
    }
    void onMessage(const std::string& msg) override { record("message " + msg); }
    void onPong() override { record("pong"); }
    void onPongTimeout() override { record("pongTimeout"); }
    bool continueOnLoginError() override { return false; }

    std::vector<std::string> reports() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_reports;
    }
    long count(const std::string& report) const {
        const std::vector<std::string> now = reports();
        return std::count(now.begin(), now.end(), report);
    }
    bool waitFor(const std::string& report, long times = 1,
                 std::chrono::milliseconds limit = std::chrono::seconds(10)) const {
        return eventually([this, &report, times] { return count(report) >= times; }, limit);
    }
    /// Callbacks that run now; more than one would be a fault.
    int running() const { return m_running; }
    int mostAtOnce() const { return m_mostAtOnce; }

    /// Runs inside each callback, with its report.
    std::function<void(const std::string&)> inside;
    std::string closeText;
    std::string errorText;
    int errorCode = 0;

private:
    void record(const std::string& report) {
        const int now = ++m_running;
        m_mostAtOnce = std::max(m_mostAtOnce.load(), now);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_reports.push_back(report);
        }
        if (inside) {
            inside(report);
        }
        --m_running;
    }

    mutable std::mutex m_mutex;
    std::vector<std::string> m_reports;
    std::atomic<int> m_running{0};
    std::atomic<int> m_mostAtOnce{0};
};

/// Makes plain threads and remembers what it was asked for.
class TestThreader : public ThreaderIfc {
public:
    ~TestThreader() override {
        for (auto& [id, thread] : m_threads) {
            if (thread.joinable()) {
                thread.join();
            }
        }
    }

    bool spawn(unsigned long& id, Runner runner, void* argument, const std::string& name, OSALThreadPriority,
               int) override {
        if (refuse) {
            return false;
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        id = ++m_lastId;
        names.push_back(name);
        m_threads.emplace(id, std::thread([this, runner, argument] {
                              runner(argument);
                              ++ended;
                          }));
        return true;
    }
    void detach(unsigned long) override {}
    void waitForThreadCompletion(unsigned long id) override {
        std::thread thread;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            thread = std::move(m_threads[id]);
        }
        if (thread.joinable()) {
            thread.join();
        }
    }

    std::atomic<bool> refuse{false};
    std::atomic<int> ended{0};
    std::vector<std::string> names;

private:
    std::mutex m_mutex;
    unsigned long m_lastId = 0;
    std::map<unsigned long, std::thread> m_threads;
};

/// A WebSocket server that runs a script for every connection, and the client under test.
class WebSocketFixture : public NetworkFixture {
protected:
    using Script = std::function<void(WebSocketPeer&)>;

    WebSocketFixture() { NetworkControl::instance().setCertificates(&service); }
    ~WebSocketFixture() override {
        NetworkControl::instance().setInterfaceUp(true);
        WebSocketThread::terminate();
        WebSocketThread::setThreader(nullptr);
    }

    /// Both ends go before the members of a test's own class, which their threads may use.
    void TearDown() override {
        WebSocketThread::terminate();
        server.reset();
    }

    /// Starts a server whose script begins when the opening handshake is over.
    void serve(Script script) {
        serveRaw([script = std::move(script)](ScriptedPeer& peer) {
            WebSocketPeer socket(peer);
            if (socket.accept()) {
                script(socket);
            }
        });
    }
    void serveRaw(ScriptedTlsServer::Script script) {
        server = std::make_unique<ScriptedTlsServer>(serverOptions(), std::move(script));
    }
    /// A server that answers pings and closings, and hands every message to `heard`.
    void serveQuietly() {
        serve([this](WebSocketPeer& peer) {
            for (;;) {
                const WebSocketPeer::Frame frame = peer.readMessage();
                if (frame.opcode == WebSocketPeer::TEXT) {
                    const std::lock_guard<std::mutex> lock(heardMutex);
                    heard.push_back(frame.payload);
                } else {
                    if (frame.opcode == WebSocketPeer::CLOSE) {
                        closeCode = frame.closeCode();
                        peer.sendClose(frame.closeCode());
                    }
                    ++ended;
                    return;
                }
            }
        });
    }
    std::vector<std::string> heardTexts() {
        const std::lock_guard<std::mutex> lock(heardMutex);
        return heard;
    }

    std::string url(const std::string& rest = "/") const { return server->url("wss") + rest; }
    void open(const std::string& rest = "/") { WebSocketThread::init(&app, url(rest), "", ""); }
    static void pause(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

    std::mutex heardMutex;
    std::vector<std::string> heard;
    std::atomic<int> closeCode{-1};
    std::atomic<int> ended{0};
    RecordingApp app;
    std::unique_ptr<ScriptedTlsServer> server;
};
