#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

class CertificateMgmtSvcIfc;
class TlsContextCache;

/// Switches that the telephone has over everything that uses its network: the interface, the end of the program, and
/// the limits. One object a process, which is never destroyed, since threads of
/// the network may run to the very end of the process. Every operation may be called from any thread.
class NetworkControl {
public:
    /// Bounds of the network's operations. Time limits are real time, whatever the time scale.
    struct Limits {
        int connectMilliseconds = 10'000;  ///< name look-up, TCP connection and TLS handshake together; WebSocket: its
                                           ///< opening handshake too
        int progressMilliseconds = 30'000; ///< a read or write that moves no byte
        std::size_t bodyBytes = 64 * 1024 * 1024; ///< a whole response body
        int closeMilliseconds = 1'000;            ///< closing handshake of the WebSocket
        int pingIntervalMilliseconds = 30'000;    ///< follows TimeScale
        int pongMilliseconds = 10'000;            ///< from a ping to its pong; follows TimeScale
    };

    static NetworkControl& instance();

    NetworkControl(const NetworkControl&) = delete;
    NetworkControl& operator=(const NetworkControl&) = delete;

    /// Down: every REST step in progress fails and has ended when this returns, new ones fail until up, and an open
    /// WebSocket is frozen. Up: the WebSocket goes on. Not to be called from inside a step.
    void setInterfaceUp(bool up);
    bool isInterfaceUp() const { return m_up; }

    /// The program is ending: every REST step in progress fails, and so do all new ones.
    void abort();
    /// Takes abort back.
    void resume();

    void setLimits(const Limits& limits);
    Limits limits() const;

    /// Where the WebSocket takes its certificates from; not owned, null for none.
    void setCertificates(CertificateMgmtSvcIfc* certificates) { m_certificates = certificates; }
    CertificateMgmtSvcIfc* certificates() const { return m_certificates; }

    /// Where every connection takes its TLS context from.
    TlsContextCache& tlsContexts() { return *m_tlsContexts; }

    /// Why no step is possible now; null when one is.
    const char* refusal() const;

    /// One REST step in progress. While it lives, `end` is called, on another thread, when the step has to fail.
    class Step {
    public:
        Step(NetworkControl& control, std::function<void()> end);
        ~Step();
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

        /// The reason why the step must fail; null as long as it need not.
        const char* refusal() const { return m_control.refusal(); }

    private:
        NetworkControl& m_control;
        int m_id;
    };

    /// `changed` is called after every change of the interface, with a lock held: it must not wait or call back in.
    /// Returns an id.
    int addListener(std::function<void()> changed);
    /// When it returns, the listener is not being called any more.
    void removeListener(int id);

private:
    NetworkControl();
    void endSteps(std::unique_lock<std::mutex>& lock);

    std::atomic<bool> m_up{true};
    std::atomic<bool> m_aborted{false};
    std::atomic<CertificateMgmtSvcIfc*> m_certificates{nullptr};

    const std::unique_ptr<TlsContextCache> m_tlsContexts;

    mutable std::mutex m_mutex;
    std::condition_variable m_stepEnded;
    Limits m_limits;
    int m_lastId = 0;
    std::map<int, std::function<void()>> m_steps;
    std::map<int, std::function<void()>> m_listeners;
};
