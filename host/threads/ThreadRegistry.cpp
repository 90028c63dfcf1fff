#include "threads/ThreadRegistry.h"

#include "logging/ExceptionBoundary.h"
#include "logging/HostLog.h"

#include <pthread.h>

#include <system_error>

namespace {

thread_local unsigned long ownId = 0;

} // namespace

ThreadRegistry& ThreadRegistry::instance() {
    // Never destroyed: threads may run to the very end of the process.
    static auto* const registry = new ThreadRegistry;
    return *registry;
}

bool ThreadRegistry::spawn(unsigned long& id, ThreaderIfc::Runner runner, void* argument, const std::string& name,
                           unsigned long& sameId) {
    std::unique_lock<std::mutex> lock(m_mutex);
    reapEnded(lock);
    const unsigned long newId = ++m_lastId;
    const unsigned long formerId = id;
    id = newId;
    sameId = newId;
    try {
        // The new thread begins by taking the lock, so the entry is there before its runner runs.
        m_threads[newId].thread =
            std::thread([this, newId, runner, argument, name] { run(newId, runner, argument, name); });
    } catch (const std::system_error&) {
        m_threads.erase(newId);
        id = formerId;
        return false;
    }
    return true;
}

void ThreadRegistry::run(unsigned long id, ThreaderIfc::Runner runner, void* argument, const std::string& name) {
    EndListener listener;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ownId = id;
        listener = m_endListener;
    }
    const std::string threadName = name.empty() ? "worker-" + std::to_string(id) : name;
    pthread_setname_np(pthread_self(), threadName.substr(0, 15).c_str());
    containExceptions([&] { runner(argument); },
                      [&threadName](const char* colon, const char* text) {
                          HOST_LOG(HostLog::ERROR, "thread %s ended by an exception%s%s", threadName.c_str(), colon,
                                   text);
                      });
    if (listener) {
        listener(id);
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_threads.at(id).ended = true;
    m_ended.notify_all();
}

void ThreadRegistry::reapEnded(std::unique_lock<std::mutex>&) {
    for (auto entry = m_threads.begin(); entry != m_threads.end();) {
        if (entry->second.ended) {
            // Its last act was to set the flag under this lock: the join takes no time.
            entry->second.thread.join();
            entry = m_threads.erase(entry);
        } else {
            ++entry;
        }
    }
}

void ThreadRegistry::waitFor(unsigned long id) {
    if (id != 0 && id == ownId) {
        HOST_LOG(HostLog::ERROR, "thread %lu waits for itself", id);
        return;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    m_ended.wait(lock, [this, id] {
        const auto entry = m_threads.find(id);
        return entry == m_threads.end() || entry->second.ended;
    });
    reapEnded(lock);
}

bool ThreadRegistry::isRunning(unsigned long id) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto entry = m_threads.find(id);
    return entry != m_threads.end() && !entry->second.ended;
}

unsigned long ThreadRegistry::lastId() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lastId;
}

std::size_t ThreadRegistry::running() {
    std::unique_lock<std::mutex> lock(m_mutex);
    reapEnded(lock);
    return m_threads.size();
}

void ThreadRegistry::setEndListener(EndListener listener) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_endListener = std::move(listener);
}
