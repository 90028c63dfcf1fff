#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

/// The thread on which the sibling services raise their events.
class SiblingThread {
public:
    SiblingThread();
    ~SiblingThread();
    SiblingThread(const SiblingThread&) = delete;
    SiblingThread& operator=(const SiblingThread&) = delete;

    /// Runs the event on this thread and returns when it is over; false when the thread has been stopped. Not to be
    /// called from an event.
    bool raise(std::function<void()> event);

    /// Raises no further event; returns when none is in progress.
    void stop();

private:
    struct Event {
        std::function<void()> action;
        bool over = false;
    };

    void run();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Event*> m_events;
    bool m_stopped = false;
    std::thread m_thread;
};
