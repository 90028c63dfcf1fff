#include "threads/Semaphore.h"

#include <condition_variable>
#include <mutex>
#include <thread>

struct Semaphore::Representation {
    std::mutex mutex;
    std::condition_variable given;
    int count = 0;
    int maximum = 0;
    bool reentrant = false;
    std::thread::id owner; ///< of a re-entrant one that is taken
    int depth = 0;
};

Semaphore::Semaphore(int initialCount, int maximumCount, bool reentrant)
    : m_representation(std::make_unique<Representation>()) {
    m_representation->count = initialCount;
    m_representation->maximum = maximumCount;
    m_representation->reentrant = reentrant;
}

Semaphore::~Semaphore() = default;

bool Semaphore::take(int timeoutMilliseconds) {
    Representation& self = *m_representation;
    std::unique_lock<std::mutex> lock(self.mutex);
    if (self.reentrant && self.depth > 0 && self.owner == std::this_thread::get_id()) {
        ++self.depth;
        return true;
    }
    const auto available = [&self] { return self.count > 0; };
    if (timeoutMilliseconds < 0) {
        self.given.wait(lock, available);
    } else if (!self.given.wait_for(lock, std::chrono::milliseconds(timeoutMilliseconds), available)) {
        return false;
    }
    --self.count;
    if (self.reentrant) {
        self.owner = std::this_thread::get_id();
        self.depth = 1;
    }
    return true;
}

void Semaphore::give() {
    Representation& self = *m_representation;
    const std::lock_guard<std::mutex> lock(self.mutex);
    if (self.reentrant) {
        if (self.depth == 0 || self.owner != std::this_thread::get_id() || --self.depth > 0) {
            return;
        }
        self.owner = std::thread::id();
    }
    if (self.count < self.maximum) {
        ++self.count;
        self.given.notify_one();
    }
}
