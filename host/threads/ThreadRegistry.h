#pragma once

#include "threads/ThreaderIfc.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

/// All threads that the process's Threaders made. Every operation may be called from any thread.
class ThreadRegistry {
public:
    /// Called on the thread that has just ended, behind its runner.
    using EndListener = std::function<void(unsigned long id)>;

    static ThreadRegistry& instance();

    /// False when no thread could be made. `id` is stored before the runner begins, which may clear it; `sameId` is
    /// not touched by the runner.
    bool spawn(unsigned long& id, ThreaderIfc::Runner runner, void* argument, const std::string& name,
               unsigned long& sameId);
    /// Returns at once for an id that is unknown, has ended or is the calling thread's own.
    void waitFor(unsigned long id);
    bool isRunning(unsigned long id);
    /// Of the thread that was made last; ids are counted up.
    unsigned long lastId();
    /// How many threads have not ended.
    std::size_t running();

    void setEndListener(EndListener listener);

private:
    struct Entry {
        std::thread thread;
        bool ended = false;
    };

    ThreadRegistry() = default;
    void run(unsigned long id, ThreaderIfc::Runner runner, void* argument, const std::string& name);
    void reapEnded(std::unique_lock<std::mutex>& lock);

    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::map<unsigned long, Entry> m_threads;
    unsigned long m_lastId = 0;
    EndListener m_endListener;
};
