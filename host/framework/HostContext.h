#pragma once

#include "framework/Context.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <thread>

/// The framework's context on a PC: services by name, and one-shot timers whose expiries come on one thread, in order
/// of their due times. Durations follow TimeScale.
class HostContext : public Context {
public:
    HostContext();
    ~HostContext() override;
    HostContext(const HostContext&) = delete;
    HostContext& operator=(const HostContext&) = delete;

    /// `service` is not owned. Before the service that looks it up is initialised.
    void addService(const std::string& name, Executable* service);

    /// Delivers no further expiry; returns when none is in progress. Not to be called from one.
    void stopDelivery();

    Executable* getService(const std::string& name) override;
    int createTimer(Executable* service, int milliseconds) override;
    void startTimer(int id) override;
    void stopTimer(int id) override;
    void resetTimer(int id) override;
    void deleteTimer(int id) override;
    bool isTimerRunning(int id) override;

private:
    using Clock = std::chrono::steady_clock;

    struct Timer {
        Executable* service;
        int milliseconds;
        bool running;
        Clock::time_point due;
    };

    static Clock::time_point dueTime(int milliseconds);
    void deliver();
    /// Tells the delivering thread of a new due time if it would sleep longer. One that is put off tells it nothing:
    /// it wakes at the former time, once, and waits anew.
    void wakeBefore(Clock::time_point due);
    std::map<int, Timer>::iterator earliest();

    std::map<std::string, Executable*> m_services;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<int, Timer> m_timers;
    int m_lastId = 0;
    bool m_stopped = false;
    Clock::time_point m_waitsUntil; ///< written by the delivering thread
    std::thread m_thread;
};
