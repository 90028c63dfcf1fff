#pragma once

#include <cstddef>
#include <deque>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// Thrown by a take that nobody could ever end: everything runs on the test's one thread.
class WouldBlockForEver : public std::runtime_error {
public:
    explicit WouldBlockForEver(const std::string& semaphore)
        : std::runtime_error(semaphore + " would be waited for without end"), semaphore(semaphore) {}

    const std::string semaphore;
};

/// Knows who holds which semaphore and fails the test when a rule of docs/threads-and-locks.md is broken:
/// - no two are held together but in the orders that are drawn there (under m_observersSem, whatever an observer's
///   call takes);
/// - across a request nothing but m_connectionSem, across a sleep nothing at all (but for named exemptions);
/// - the connection is never touched without m_connectionSem.
class LockDiscipline {
public:
    /// The semaphores that are built next take these names, in order.
    void nameNext(std::vector<std::string> names);
    std::string takeName();

    /// A semaphore that is held across requests and sleeps on purpose, and so while the connection's is taken.
    void allowAcrossRequests(const std::string& semaphore) { m_allowedAcrossRequests.insert(semaphore); }
    /// A semaphore that is left taken on purpose: all else is taken behind it.
    void allowLeftTaken(const std::string& semaphore) { m_allowedLeftTaken.insert(semaphore); }

    /// How a semaphore was built.
    struct Made {
        std::string name;
        int initialCount;
        int maximumCount;
        bool reentrant;
    };
    std::vector<Made> made;

    /// While it lives, the test plays what another thread does: what was held before is not held by that one.
    class OtherThread {
    public:
        explicit OtherThread(LockDiscipline& locks) : m_locks(locks), m_before(locks.m_heldByOthers) {
            locks.m_heldByOthers = locks.m_held.size();
        }
        ~OtherThread() { m_locks.m_heldByOthers = m_before; }
        OtherThread(const OtherThread&) = delete;
        OtherThread& operator=(const OtherThread&) = delete;

    private:
        LockDiscipline& m_locks;
        std::size_t m_before;
    };

    void taken(const std::string& semaphore);
    void given(const std::string& semaphore);

    void checkRequest();
    void checkSleep();
    /// The connection, and what belongs to it, is touched under its semaphore only.
    void checkConnectionUse();
    /// To be called between driven events: nobody holds anything.
    void checkNothingHeld();

    const std::vector<std::string>& held() const { return m_held; }

    /// Starts a trace: what is taken and given back from now on, in one line:
    /// "m_outerSem{m_innerSem{write}} m_connectionSem{request}".
    void keepTrace();
    const std::string& trace() const { return m_trace; }
    /// Something that the platform was asked for.
    void addToTrace(const std::string& step);

private:
    bool mayBeTakenInside(const std::string& outer, const std::string& inner) const;

    std::deque<std::string> m_names;
    bool m_keepsTrace = false; ///< off by default: long runs would fill the memory
    std::string m_trace;
    std::vector<std::string> m_held; ///< in the order of taking; a re-entrant one as often as it is taken
    std::size_t m_heldByOthers = 0;  ///< so many of them, from the first
    std::set<std::string> m_allowedAcrossRequests;
    std::set<std::string> m_allowedLeftTaken;
};
