#include "ManualContext.h"

#include "TestPlatform.h"
#include "framework/Executable.h"

#include <algorithm>

Executable* ManualContext::getService(const std::string& name) {
    TestPlatform::current().steps.add("look up ", name);
    m_lookups.push_back(name);
    const auto service = m_services.find(name);
    return service == m_services.end() ? nullptr : service->second;
}

void ManualContext::noteCall(const std::string& call) {
    TestPlatform::current().steps.add("timer ", call);
    calls.push_back(call);
}

int ManualContext::createTimer(Executable* service, int milliseconds) {
    const int id = ++m_lastId;
    noteCall("create " + std::to_string(id) + " " + std::to_string(milliseconds));
    m_timers[id] = {service, milliseconds, false, 0};
    return id;
}

void ManualContext::startTimer(int id) {
    noteCall("start " + std::to_string(id));
    const auto timer = m_timers.find(id);
    if (timer != m_timers.end() && !timer->second.running) {
        timer->second.running = true;
        timer->second.due = m_now + std::max(0, timer->second.milliseconds);
    }
}

void ManualContext::stopTimer(int id) {
    noteCall("stop " + std::to_string(id));
    const auto timer = m_timers.find(id);
    if (timer != m_timers.end()) {
        timer->second.running = false;
    }
}

void ManualContext::resetTimer(int id) {
    noteCall("reset " + std::to_string(id));
    const auto timer = m_timers.find(id);
    if (timer != m_timers.end() && timer->second.running) {
        timer->second.due = m_now + std::max(0, timer->second.milliseconds);
    }
}

void ManualContext::deleteTimer(int id) {
    noteCall("delete " + std::to_string(id));
    m_timers.erase(id);
}

bool ManualContext::isTimerRunning(int id) {
    const auto timer = m_timers.find(id);
    return timer != m_timers.end() && timer->second.running;
}

void ManualContext::advance(long long milliseconds) {
    const long long end = m_now + milliseconds;
    for (;;) {
        auto next = m_timers.end();
        for (auto timer = m_timers.begin(); timer != m_timers.end(); ++timer) {
            if (timer->second.running && timer->second.due <= std::max(end, m_now) &&
                (next == m_timers.end() || timer->second.due < next->second.due)) {
                next = timer;
            }
        }
        if (next == m_timers.end()) {
            break;
        }
        m_now = std::max(m_now, next->second.due);
        next->second.running = false;
        next->second.service->timerEvent(next->first);
    }
    m_now = std::max(m_now, end);
}

std::vector<int> ManualContext::running(int milliseconds) const {
    std::vector<int> ids;
    for (const auto& [id, timer] : m_timers) {
        if (timer.running && timer.milliseconds == milliseconds) {
            ids.push_back(id);
        }
    }
    return ids;
}

std::vector<int> ManualContext::runningDurations() const {
    std::vector<int> durations;
    for (const auto& entry : m_timers) {
        if (entry.second.running) {
            durations.push_back(entry.second.milliseconds);
        }
    }
    return durations;
}

std::vector<int> ManualContext::withDuration(int milliseconds) const {
    std::vector<int> ids;
    for (const auto& [id, timer] : m_timers) {
        if (timer.milliseconds == milliseconds) {
            ids.push_back(id);
        }
    }
    return ids;
}
