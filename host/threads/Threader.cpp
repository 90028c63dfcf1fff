#include "threads/Threader.h"

#include "threads/ThreadRegistry.h"

#include <mutex>
#include <vector>

struct Threader::Representation {
    std::mutex mutex;
    std::vector<unsigned long> ids;
};

Threader::Threader() : m_representation(std::make_unique<Representation>()) {}

Threader::~Threader() {
    for (const unsigned long id : m_representation->ids) {
        ThreadRegistry::instance().waitFor(id);
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
    m_representation->ids.push_back(ownCopy);
    return true;
}

void Threader::detach(unsigned long) {
    // Nothing to do: the registry reaps every thread, and a detached one may still be waited for.
}

void Threader::waitForThreadCompletion(unsigned long id) {
    ThreadRegistry::instance().waitFor(id);
}
