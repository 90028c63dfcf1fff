#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

class Output;

/// Takes the signals to end, and ends the process when the telephone does not come down in time or when a second
/// signal asks for it. Its thread takes no part in anything that may block: neither printing nor the service.
class EndWatch {
public:
    /// Before all other threads, which inherit that the signals are blocked.
    EndWatch();
    ~EndWatch();
    EndWatch(const EndWatch&) = delete;
    EndWatch& operator=(const EndWatch&) = delete;

    enum class Stage {
        PREPARING,   ///< there is nothing to bring down: a signal ends the process at once
        STARTING,    ///< a signal asks for the end from here on
        RUNNING,     ///< the main thread waits and prints
        COMING_DOWN, ///< the time runs, signal or not
        LAST_LINE    ///< the service has come down
    };
    /// `output` gets its last line when the process is ended here.
    void enter(Stage stage, Output& output);

    /// Until the end is asked for: by a signal, or by an output that has failed.
    void wait();
    /// For as long at most; whether the end is asked for.
    bool waitFor(std::chrono::milliseconds time);

private:
    using Clock = std::chrono::steady_clock;

    void watch();
    int pollMilliseconds();
    void outputFailed();
    // With m_mutex held.
    void signalCame();
    void askForEnd();
    void leave(const std::string& reason);
    std::string reason() const;

    const int m_signals; ///< descriptors that the thread waits on
    const int m_wake;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Stage m_stage = Stage::PREPARING;
    Output* m_output = nullptr;
    bool m_signalled = false;
    bool m_asked = false; ///< to end; what an output asks for is no first signal
    bool m_done = false;
    std::optional<Clock::time_point> m_limit;
    std::thread m_thread;
};
