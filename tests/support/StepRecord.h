#pragma once

#include <string>
#include <vector>

/// What the service did to its platform, step after step: log lines, semaphores, requests, timers, threads, store,
/// siblings, socket and observers, one text each. Off until a test asks for it.
class StepRecord {
public:
    /// Forgets what was recorded and records from now on.
    void begin() {
        m_records = true;
        m_steps.clear();
    }
    void add(const char* what, const std::string& detail = std::string()) {
        if (m_records) {
            m_steps.push_back(what + detail);
        }
    }
    const std::vector<std::string>& steps() const { return m_steps; }

private:
    bool m_records = false;
    std::vector<std::string> m_steps;
};
