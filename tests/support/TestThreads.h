#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

class Threader;

/// Worker threads as jobs that run on the test's own thread, when the test wants them to.
class TestThreads {
public:
    struct Job {
        unsigned long id;
        void* (*runner)(void*);
        void* argument;
        std::string name;
        int priority;
        int stackSize;
        const void* threader;
        bool detached = false;
    };

    bool runAtSpawn = false; ///< run a job as soon as it is made
    bool refuse = false;     ///< no thread can be made
    int threadersLeft = -1;  ///< so many more threaders can be made; -1 for any number
    std::vector<unsigned long> waitedFor;
    std::vector<unsigned long> waitedForItself;
    std::vector<Job> spawned; ///< all that were ever made
    std::vector<int> sleepsSeconds;
    std::function<void()> duringSleep; ///< runs in every sleep, when no semaphore is held

    std::size_t pendingCount() const { return m_pending.size(); }
    /// Runs the oldest job that has not run yet.
    void runNext();
    /// Runs jobs until there is none.
    void runAll();

    /// 0 for the test itself.
    unsigned long runningThread() const { return m_running.empty() ? 0 : m_running.back(); }

    // For Threader.
    unsigned long spawn(Job job);
    void detach(unsigned long id);
    /// Ends at once for a thread that another threader made: one need not know the other's ids.
    void waitFor(unsigned long id, const void* threader);
    void waitForAllOf(const void* threader);

private:
    void run(unsigned long id);

    std::map<unsigned long, Job> m_pending;
    std::vector<unsigned long> m_running;
    unsigned long m_lastId = 0;
};
