#include "LockDiscipline.h"

#include "TestPlatform.h"
#include "threads/Semaphore.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr const char* unnamed = "a semaphore of the test";

/// What may be held while what is taken.
const std::set<std::pair<std::string, std::string>> orders = {
    {"m_dndSem", "m_fpkPresenceMapSem"},
    {"m_dndSem", "m_bcaLineListSem"},
    {"m_dndSem", "m_uuidMessagesSem"},
    {"m_dndSem", "m_subscriptionIdSem"},
    {"m_dndSem", "m_webSocketStateSem"},
    {"m_bcaLineListSem", "m_callLogSem"},
    {"m_callLogSyncTokenSem", "m_callLogSem"},
    {"m_callLogResponseSem", "m_callLogSem"},
    {"m_callLogResponseSem", "m_telephonySessionsSem"},
};

} // namespace

void LockDiscipline::nameNext(std::vector<std::string> names) {
    m_names.assign(names.begin(), names.end());
}

std::string LockDiscipline::takeName() {
    if (m_names.empty()) {
        return unnamed;
    }
    std::string name = m_names.front();
    m_names.pop_front();
    return name;
}

bool LockDiscipline::mayBeTakenInside(const std::string& outer, const std::string& inner) const {
    if (outer == unnamed || inner == unnamed || outer == "m_observersSem" || m_allowedLeftTaken.count(outer) != 0) {
        return true;
    }
    return orders.count({outer, inner}) != 0 ||
           (inner == "m_connectionSem" && m_allowedAcrossRequests.count(outer) != 0);
}

void LockDiscipline::taken(const std::string& semaphore) {
    const auto ownBegin = m_held.begin() + static_cast<std::ptrdiff_t>(m_heldByOthers);
    const bool again = std::find(ownBegin, m_held.end(), semaphore) != m_held.end();
    for (auto outer = ownBegin; !again && outer != m_held.end(); ++outer) {
        EXPECT_TRUE(mayBeTakenInside(*outer, semaphore))
            << *outer << " is held while " << semaphore << " is taken: there is no such order";
    }
    m_held.push_back(semaphore);
    addToTrace(semaphore + "{");
    TestPlatform::current().steps.add("take ", semaphore);
}

void LockDiscipline::given(const std::string& semaphore) {
    TestPlatform::current().steps.add("give ", semaphore);
    const auto last = std::find(m_held.rbegin(), m_held.rend(), semaphore);
    if (last != m_held.rend()) {
        m_held.erase(std::next(last).base());
    }
    if (m_keepsTrace) {
        m_trace += "}";
    }
}

void LockDiscipline::keepTrace() {
    m_keepsTrace = true;
    m_trace.clear();
}

void LockDiscipline::addToTrace(const std::string& step) {
    if (!m_keepsTrace) {
        return;
    }
    if (!m_trace.empty() && m_trace.back() != '{') {
        m_trace += " ";
    }
    m_trace += step;
}

void LockDiscipline::checkRequest() {
    addToTrace("request");
    for (const std::string& semaphore : m_held) {
        EXPECT_TRUE(semaphore == "m_connectionSem" || m_allowedAcrossRequests.count(semaphore) != 0 ||
                    m_allowedLeftTaken.count(semaphore) != 0)
            << semaphore << " is held across a request";
    }
}

void LockDiscipline::checkSleep() {
    for (const std::string& semaphore : m_held) {
        EXPECT_TRUE(m_allowedAcrossRequests.count(semaphore) != 0 || m_allowedLeftTaken.count(semaphore) != 0)
            << semaphore << " is held across a sleep";
    }
}

void LockDiscipline::checkConnectionUse() {
    const auto guards = [](const std::string& semaphore) {
        return semaphore == "m_connectionSem" || semaphore == unnamed;
    };
    EXPECT_TRUE(std::any_of(m_held.begin(), m_held.end(), guards)) << "the connection is used without its semaphore";
}

void LockDiscipline::checkNothingHeld() {
    for (const std::string& semaphore : m_held) {
        EXPECT_EQ(1u, m_allowedLeftTaken.count(semaphore)) << semaphore << " is still held";
    }
}

struct Semaphore::Representation {
    std::string name;
    int count;
    int maximum;
    bool reentrant;
    unsigned long owner = 0;
    int depth = 0;
};

Semaphore::Semaphore(int initialCount, int maximumCount, bool reentrant)
    : m_representation(std::make_unique<Representation>()) {
    m_representation->name = TestPlatform::current().locks.takeName();
    m_representation->count = initialCount;
    m_representation->maximum = maximumCount;
    m_representation->reentrant = reentrant;
    TestPlatform::current().locks.made.push_back({m_representation->name, initialCount, maximumCount, reentrant});
}

Semaphore::~Semaphore() {
    TestPlatform::current().steps.add("semaphore ends ", m_representation->name);
}

bool Semaphore::take(int timeoutMilliseconds) {
    Representation& self = *m_representation;
    TestPlatform& platform = TestPlatform::current();
    EXPECT_EQ(-1, timeoutMilliseconds) << self.name << " is taken with a time limit";
    const unsigned long thread = platform.threads.runningThread();
    if (self.reentrant && self.depth > 0 && self.owner == thread) {
        ++self.depth;
    } else if (self.count > 0) {
        --self.count;
        self.owner = thread;
        self.depth = 1;
    } else {
        throw WouldBlockForEver(self.name);
    }
    platform.locks.taken(self.name);
    return true;
}

void Semaphore::give() {
    Representation& self = *m_representation;
    TestPlatform::current().locks.given(self.name);
    if (self.depth > 1) {
        --self.depth;
        return;
    }
    self.depth = 0;
    self.count = std::min(self.count + 1, self.maximum);
}
