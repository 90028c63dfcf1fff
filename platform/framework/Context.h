#pragma once

#include <string>

class Executable;

/// Run-time environment that the framework hands to Executable::init: service lookup and one-shot timers. Every
/// operation may be called from any thread and never waits for an expiry in progress. Outlives the service.
///
/// Timers. An id is above 0 and never used again; an operation on 0 or on an unknown id does nothing. A timer is
/// not running once delivery of its expiry has begun. An expiry is delivered through Executable::timerEvent on a
/// framework thread, never synchronously from one of these operations.
class Context {
public:
    virtual ~Context() = default;

    /// The service of that name, owned by the framework, or null when this telephone has none.
    virtual Executable* getService(const std::string& name) = 0;

    /// A new timer that is not running. A duration of 0 or less expires at once when started. Returns its id.
    virtual int createTimer(Executable* service, int milliseconds) = 0;

    /// Starts the timer with its full duration; does nothing if it is running.
    virtual void startTimer(int id) = 0;

    /// Stops the timer; it keeps its duration and may be started again.
    virtual void stopTimer(int id) = 0;

    /// Sets a running timer back to its full duration; does nothing if it is not running.
    virtual void resetTimer(int id) = 0;

    /// Removes the timer, running or not; allowed inside its own expiry.
    virtual void deleteTimer(int id) = 0;

    virtual bool isTimerRunning(int id) = 0;
};
