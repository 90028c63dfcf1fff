#include "base/Scheduler.h"

#include <iostream>

namespace cloudsim {

Scheduler::Scheduler() : m_thread([this] { run(); }) {}

Scheduler::~Scheduler() {
    stop();
}

void Scheduler::after(std::chrono::milliseconds delay, Operation operation) {
    std::lock_guard lock(m_mutex);
    m_waiting.emplace(std::chrono::steady_clock::now() + delay, std::move(operation));
    m_changed.notify_one();
}

void Scheduler::stop() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_waiting.clear();
        m_changed.notify_one();
    }
    if (m_thread.joinable())
        m_thread.join();
}

void Scheduler::run() {
    std::unique_lock lock(m_mutex);
    while (!m_stopping) {
        if (m_waiting.empty()) {
            m_changed.wait(lock);
            continue;
        }
        auto next = m_waiting.begin();
        if (std::chrono::steady_clock::now() < next->first) {
            m_changed.wait_until(lock, SteadyTime(next->first));
            continue;
        }
        Operation operation = std::move(next->second);
        m_waiting.erase(next);
        lock.unlock();
        try {
            operation();
        } catch (const std::exception& error) {
            std::cerr << "a scheduled operation failed: " << error.what() << '\n';
        }
        lock.lock();
    }
}

} // namespace cloudsim
