#include "network/BareRoad.h"

#include <jansson.h>

BareRoad::BareRoad(LoopbackServer& server, const std::string& authorities, const std::string& target)
    : m_server(server), m_rest(server.port(), authorities), m_channel(server.port(), authorities) {
    m_channel.openWebSocket("/ws?access_token=W1");
    m_channel.readFrame();
    m_thread = std::thread([this, target] { follow(target); });
}

BareRoad::~BareRoad() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
    }
    m_server.send("[]");
    m_thread.join();
}

BareRoad::Clock::duration BareRoad::goes(const std::string& frame) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_arrived = false;
    m_server.send(frame);
    m_changed.wait(lock, [this] { return m_arrived; });
    return m_end - m_server.lastSent();
}

void BareRoad::follow(const std::string& target) {
    for (;;) {
        json_decref(json_loads(m_channel.readFrame().c_str(), 0, nullptr));
        if (isEnding()) {
            return;
        }
        json_decref(json_loads(m_rest.request("GET", target).c_str(), 0, nullptr));
        const Clock::time_point end = Clock::now();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_end = end;
        m_arrived = true;
        m_changed.notify_all();
    }
}

bool BareRoad::isEnding() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_ending;
}
