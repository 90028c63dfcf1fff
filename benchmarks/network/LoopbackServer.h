#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct ssl_ctx_st;
struct ssl_st;

/// A provider of canned answers over TLS on 127.0.0.1, as lean as it can be: a thread for each connection, one write
/// for each answer, and one WebSocket at a time.
class LoopbackServer {
public:
    using Clock = std::chrono::steady_clock;
    using Body = std::function<std::string(const std::string& target)>;

    LoopbackServer(const std::string& certificate, const std::string& key, Body body);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    int port() const { return m_port; }
    /// Sent on a WebSocket as soon as it is open; empty for nothing.
    void greetWith(const std::string& frame);
    /// Answers each text frame of a client; an empty answer is not sent.
    void answerFrames(std::function<std::string(const std::string& frame)> answer);
    /// Has a text frame sent on the WebSocket that is open, by its own thread. Nobody waits for that: who is woken
    /// while the frame is on its road would take a processor from it.
    void send(const std::string& frame);
    /// When the last frame that was sent so began to be written.
    Clock::time_point lastSent();
    /// How many text frames came in so far, over all WebSockets, and when the last one had come.
    std::size_t framesReceived();
    /// Waits until that many frames have come; the time at which the last of them had.
    Clock::time_point awaitFrames(std::size_t count);

private:
    void accept();
    void serve(int socket);
    void serveWebSocket(ssl_st* tls, int socket);
    void drainOutgoing(ssl_st* tls);

    ssl_ctx_st* m_context;
    Body m_body;
    int m_listener = -1;
    int m_port = 0;
    std::thread m_acceptor;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<int> m_sockets;
    std::list<std::thread> m_threads;
    bool m_stopping = false;
    std::string m_greeting;
    std::function<std::string(const std::string&)> m_answer;
    std::vector<std::string> m_outgoing;
    Clock::time_point m_sendBegan;
    int m_wake = -1; ///< event descriptor of the WebSocket that is open
    std::size_t m_received = 0;
    Clock::time_point m_lastReceived;
};
