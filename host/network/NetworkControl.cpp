#include "network/NetworkControl.h"

#include "network/TlsContextCache.h"

#include <chrono>
#include <utility>

namespace {

/// A step ends within milliseconds once it is told to; the bound keeps a caller from hanging should one not.
constexpr std::chrono::seconds stepEndLimit{1};

} // namespace

NetworkControl::NetworkControl() : m_tlsContexts(std::make_unique<TlsContextCache>()) {}

NetworkControl& NetworkControl::instance() {
    static NetworkControl* const control = new NetworkControl; // lives to the end of the process, see the class
    return *control;
}

void NetworkControl::setInterfaceUp(bool up) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_up.exchange(up) == up) {
        return;
    }
    for (const auto& listener : m_listeners) {
        listener.second();
    }
    if (!up) {
        endSteps(lock);
    }
}

void NetworkControl::abort() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_aborted = true;
    endSteps(lock);
}

void NetworkControl::resume() {
    m_aborted = false;
}

void NetworkControl::endSteps(std::unique_lock<std::mutex>& lock) {
    for (const auto& step : m_steps) {
        step.second();
    }
    // A step that begins later is refused, so waiting for those of now is enough; they are numbered in order.
    const int lastOfNow = m_lastId;
    m_stepEnded.wait_for(lock, stepEndLimit,
                         [this, lastOfNow] { return m_steps.empty() || m_steps.begin()->first > lastOfNow; });
}

void NetworkControl::setLimits(const Limits& limits) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_limits = limits;
}

NetworkControl::Limits NetworkControl::limits() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_limits;
}

const char* NetworkControl::refusal() const {
    if (m_aborted) {
        return "the program is ending";
    }
    return m_up ? nullptr : "the interface is down";
}

int NetworkControl::addListener(std::function<void()> changed) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listeners.emplace(++m_lastId, std::move(changed));
    return m_lastId;
}

void NetworkControl::removeListener(int id) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listeners.erase(id);
}

NetworkControl::Step::Step(NetworkControl& control, std::function<void()> end) : m_control(control) {
    const std::lock_guard<std::mutex> lock(m_control.m_mutex);
    m_id = ++m_control.m_lastId;
    m_control.m_steps.emplace(m_id, std::move(end));
}

NetworkControl::Step::~Step() {
    {
        const std::lock_guard<std::mutex> lock(m_control.m_mutex);
        m_control.m_steps.erase(m_id);
    }
    m_control.m_stepEnded.notify_all();
}
