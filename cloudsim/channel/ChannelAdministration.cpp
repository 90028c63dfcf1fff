#include "channel/ChannelHub.h"

#include <algorithm>

namespace cloudsim {
namespace {

Json subscriptionSummary(const Subscription& subscription) {
    auto left =
        std::chrono::duration_cast<std::chrono::seconds>(subscription.expires - std::chrono::steady_clock::now());
    Json json{{"id", subscription.id},
              {"creationTime", subscription.creationTime},
              {"expiresInSeconds", std::max<long long>(0, left.count())}};
    json["eventFilters"] = Json::array();
    for (const auto& filter : subscription.filters)
        json["eventFilters"].push_back(filter.text);
    json["disabledFilters"] = subscription.disabledFilters;
    return json;
}

} // namespace

Json ChannelHub::sessions() {
    std::lock_guard lock(m_mutex);
    purge();
    Json result = Json::array();
    for (const auto& session : m_sessions) {
        Json json{{"id", session.id},
                  {"extensionId", session.holder.extensionId},
                  {"mac", session.holder.mac},
                  {"connected", session.link != nullptr},
                  {"connection", session.link ? Json(session.link->connectionNumber()) : Json()},
                  {"sequence", session.sequence},
                  {"kept", session.sent.size()}};
        json["subscriptions"] = Json::array();
        for (const auto& [id, subscription] : session.subscriptions)
            json["subscriptions"].push_back(subscriptionSummary(subscription));
        result.push_back(std::move(json));
    }
    return result;
}

std::vector<std::shared_ptr<ChannelLink>> ChannelHub::links(const std::string& sessionId) {
    std::lock_guard lock(m_mutex);
    std::vector<std::shared_ptr<ChannelLink>> result;
    for (const auto& session : m_sessions)
        if (session.link && (sessionId == "all" || session.id == sessionId))
            result.push_back(session.link);
    return result;
}

bool ChannelHub::expire(const std::string& sessionId) {
    std::lock_guard lock(m_mutex);
    bool found = sessionId == "all";
    for (auto session = m_sessions.begin(); session != m_sessions.end();) {
        if (sessionId != "all" && session->id != sessionId) {
            ++session;
            continue;
        }
        constexpr int goingAway = 1001;
        if (session->link)
            session->link->close(goingAway, "session expired");
        session = m_sessions.erase(session);
        found = true;
    }
    return found;
}

void ChannelHub::notifyRaw(std::int64_t extensionId, const Json& data) {
    std::lock_guard lock(m_mutex);
    for (auto& session : m_sessions)
        if (session.holder.extensionId == extensionId && !session.subscriptions.empty())
            notify(session, data);
}

Json ChannelHub::frames(std::uint64_t after) {
    std::lock_guard lock(m_mutex);
    Json result = Json::array();
    for (const auto& frame : m_frames)
        if (frame.number > after)
            result.push_back({{"number", frame.number},
                              {"session", frame.session},
                              {"time", std::chrono::duration<double>(frame.time.time_since_epoch()).count()},
                              {"text", frame.text}});
    return result;
}

void ChannelHub::clearFrames() {
    std::lock_guard lock(m_mutex);
    m_frames.clear();
}

Json ChannelHub::faults() {
    std::lock_guard lock(m_mutex);
    return toJson(m_faults);
}

void ChannelHub::setFaults(ChannelFaults faults) {
    std::lock_guard lock(m_mutex);
    m_faults = std::move(faults);
}

} // namespace cloudsim
