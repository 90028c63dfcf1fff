#include "threads/Threader.h"

#include "threads/ThreadRegistry.h"

#include <algorithm>
#include <mutex>
#include <vector>

struct Threader::Representation {
    std::mutex mutex;
    std::vector<unsigned long> ids;
};

Threader::Threader() : m_representation(std::make_unique<Representation>()) {}

Threader::~Threader() {
    // Threads may spawn others until they end, so the list is read anew after each.
    for (std::unique_lock<std::mutex> lock(m_representation->mutex); !m_representation->ids.empty();) {
        const unsigned long id = m_representation->ids.back();
        m_representation->ids.pop_back();
        lock.unlock();
        ThreadRegistry::instance().waitFor(id);
        lock.lock();
    }
}

bool Threader::spawn(unsigned long& id, Runner runner, void* argument, const std::string& name, OSALThreadPriority,
                     int) {
    // The thread may clear the caller's id before spawn returns: a copy is kept for the destructor.
    const std::lock_guard<std::mutex> lock(m_representation->mutex);
    unsigned long ownCopy = 0;
    if (!ThreadRegistry::instance().spawn(id, runner, argument, name, ownCopy)) {
        return false;
    }
    // Only threads that still run are waited for at the end; a poll that spawns for years must not add up.
    std::vector<unsigned long>& ids = m_representation->ids;
    ids.erase(std::remove_if(ids.begin(), ids.end(),
                             [](unsigned long former) { return !ThreadRegistry::instance().isRunning(former); }),
              ids.end());
    ids.push_back(ownCopy);
    return true;
}

void Threader::detach(unsigned long) {
    // Nothing to do: the registry reaps every thread, and a detached one may still be waited for.
}

void Threader::waitForThreadCompletion(unsigned long id) {
    ThreadRegistry::instance().waitFor(id);
}
