#pragma once

#include "base/Timestamps.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace cloudsim {

/// Runs operations later, one after the other, on a thread of its own.
class Scheduler {
public:
    using Operation = std::function<void()>;

    Scheduler();
    ~Scheduler();

    void after(std::chrono::milliseconds delay, Operation operation);
    /// What is still waiting is dropped; returns when nothing runs any more.
    void stop();

private:
    void run();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::multimap<SteadyTime, Operation> m_waiting;
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace cloudsim
