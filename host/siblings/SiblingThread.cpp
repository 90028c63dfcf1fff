#include "siblings/SiblingThread.h"

#include "logging/ExceptionBoundary.h"
#include "logging/HostLog.h"

#include <pthread.h>

#include <algorithm>

SiblingThread::SiblingThread() : m_thread([this] { run(); }) {}

SiblingThread::~SiblingThread() {
    stop();
}

bool SiblingThread::raise(std::function<void()> action) {
    Event event{std::move(action)};
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_stopped) {
        return false;
    }
    m_events.push_back(&event);
    m_changed.notify_all();
    m_changed.wait(lock, [this, &event] {
        return event.over || (m_stopped && std::find(m_events.begin(), m_events.end(), &event) != m_events.end());
    });
    m_events.erase(std::remove(m_events.begin(), m_events.end(), &event), m_events.end());
    return event.over;
}

void SiblingThread::stop() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped = true;
        m_changed.notify_all();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void SiblingThread::run() {
    pthread_setname_np(pthread_self(), "siblings");
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopped || !m_events.empty(); });
        if (m_stopped) {
            return;
        }
        Event* event = m_events.front();
        m_events.pop_front();
        lock.unlock();
        containExceptions(event->action, [](const char* colon, const char* text) {
            HOST_LOG(HostLog::ERROR, "sibling event ended by an exception%s%s", colon, text);
        });
        lock.lock();
        event->over = true;
        m_changed.notify_all();
    }
}
