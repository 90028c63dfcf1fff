#include "framework/HostContext.h"

#include "framework/Executable.h"
#include "logging/ExceptionBoundary.h"
#include "logging/HostLog.h"
#include "threads/TimeScale.h"

#include <pthread.h>

#include <algorithm>

HostContext::HostContext() : m_thread([this] { deliver(); }) {}

HostContext::~HostContext() {
    stopDelivery();
}

void HostContext::addService(const std::string& name, Executable* service) {
    m_services[name] = service;
}

Executable* HostContext::getService(const std::string& name) {
    const auto service = m_services.find(name);
    return service == m_services.end() ? nullptr : service->second;
}

void HostContext::stopDelivery() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped = true;
        m_changed.notify_all();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

int HostContext::createTimer(Executable* service, int milliseconds) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_timers[++m_lastId] = {service, milliseconds, false, Clock::time_point()};
    return m_lastId;
}

void HostContext::startTimer(int id) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto timer = m_timers.find(id);
    if (timer != m_timers.end() && !timer->second.running) {
        timer->second.running = true;
        timer->second.due = dueTime(timer->second.milliseconds);
        wakeBefore(timer->second.due);
    }
}

void HostContext::stopTimer(int id) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto timer = m_timers.find(id);
    if (timer != m_timers.end()) {
        timer->second.running = false;
    }
}

void HostContext::resetTimer(int id) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto timer = m_timers.find(id);
    if (timer != m_timers.end() && timer->second.running) {
        timer->second.due = dueTime(timer->second.milliseconds);
        wakeBefore(timer->second.due);
    }
}

void HostContext::deleteTimer(int id) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_timers.erase(id);
}

bool HostContext::isTimerRunning(int id) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto timer = m_timers.find(id);
    return timer != m_timers.end() && timer->second.running;
}

HostContext::Clock::time_point HostContext::dueTime(int milliseconds) {
    return Clock::now() + TimeScale::scaled(std::chrono::milliseconds(std::max(milliseconds, 0)));
}

void HostContext::wakeBefore(Clock::time_point due) {
    if (due < m_waitsUntil) {
        m_changed.notify_all();
    }
}

std::map<int, HostContext::Timer>::iterator HostContext::earliest() {
    auto first = m_timers.end();
    for (auto timer = m_timers.begin(); timer != m_timers.end(); ++timer) {
        if (timer->second.running && (first == m_timers.end() || timer->second.due < first->second.due)) {
            first = timer;
        }
    }
    return first;
}

void HostContext::deliver() {
    pthread_setname_np(pthread_self(), "timers");
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stopped) {
        const auto next = earliest();
        if (next == m_timers.end()) {
            m_waitsUntil = Clock::time_point::max();
            m_changed.wait(lock);
            continue;
        }
        if (next->second.due > Clock::now()) {
            m_waitsUntil = next->second.due;
            m_changed.wait_until(lock, m_waitsUntil);
            continue;
        }
        next->second.running = false;
        const int id = next->first;
        Executable* service = next->second.service;
        lock.unlock();
        containExceptions([&] { service->timerEvent(id); },
                          [id](const char* colon, const char* text) {
                              HOST_LOG(HostLog::ERROR, "timer %d ended by an exception%s%s", id, colon, text);
                          });
        lock.lock();
    }
}
