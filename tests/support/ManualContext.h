#pragma once

#include "framework/Context.h"

#include <map>
#include <string>
#include <vector>

/// The framework's context on a clock that moves only when the test moves it. Advancing fires the timers in order of
/// their due times, on the test's thread.
class ManualContext : public Context {
public:
    struct Timer {
        Executable* service;
        int milliseconds;
        bool running;
        long long due;
    };

    Executable* getService(const std::string& name) override;
    int createTimer(Executable* service, int milliseconds) override;
    void startTimer(int id) override;
    void stopTimer(int id) override;
    void resetTimer(int id) override;
    void deleteTimer(int id) override;
    bool isTimerRunning(int id) override;

    void addService(const std::string& name, Executable* service) { m_services[name] = service; }
    void removeService(const std::string& name) { m_services.erase(name); }

    long long nowMilliseconds() const { return m_now; }
    /// Moves the clock and delivers what falls due, also what earlier deliveries start.
    void advance(long long milliseconds);
    /// Delivers what is due now; a duration of 0 or less is.
    void deliverDue() { advance(0); }
    void advanceWithoutExpiries(long long milliseconds) { m_now += milliseconds; }

    bool exists(int id) const { return m_timers.count(id) != 0; }
    std::size_t timerCount() const { return m_timers.size(); }
    const Timer& timer(int id) const { return m_timers.at(id); }
    /// Ids of the running timers with that duration, oldest first.
    std::vector<int> running(int milliseconds) const;
    /// All running timers, as durations, oldest first.
    std::vector<int> runningDurations() const;
    /// Ids of all timers with that duration, running or not.
    std::vector<int> withDuration(int milliseconds) const;
    const std::vector<std::string>& lookups() const { return m_lookups; }
    /// What was done to timers, such as "create 1 1000", "start 1", "stop 1", "reset 1", "delete 1".
    std::vector<std::string> calls;

private:
    void noteCall(const std::string& call);

    std::map<std::string, Executable*> m_services;
    std::vector<std::string> m_lookups;
    std::map<int, Timer> m_timers;
    int m_lastId = 0;
    long long m_now = 0;
};
