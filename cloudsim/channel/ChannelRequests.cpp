#include "channel/ChannelHub.h"

#include "base/Identifiers.h"

#include <algorithm>

namespace cloudsim {
namespace {

using Clock = std::chrono::steady_clock;
using Texts = std::vector<std::string>;

bool containsOneOf(const std::string& text, const Texts& parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [&](const std::string& part) { return text.find(part) != std::string::npos; });
}

Json errorObject(const std::string& code, const std::string& message) {
    return {{"errorCode", code}, {"message", message}};
}

Query queryOf(const Json& metadata) {
    Query query;
    auto member = metadata.find("query");
    if (member == metadata.end() || !member->is_object())
        return query;
    for (const auto& [key, value] : member->items()) {
        if (value.is_string())
            query.emplace_back(key, value);
        for (const auto& element : value.is_array() ? value : Json::array())
            if (element.is_string())
                query.emplace_back(key, element);
    }
    return query;
}

} // namespace

void ChannelHub::received(const std::shared_ptr<ChannelLink>& link, const std::string& text) {
    std::lock_guard lock(m_mutex);
    Session* session = sessionOf(link);
    m_frames.push_back({++m_lastFrame, session == nullptr ? "" : session->id, std::chrono::system_clock::now(), text});
    constexpr std::size_t frameCapacity = 20000;
    if (m_frames.size() > frameCapacity)
        m_frames.pop_front();
    if (session == nullptr)
        return;
    Json frame = fromText(text);
    bool readable = frame.is_array() && !frame.empty() && frame.size() <= 2 && frame[0].is_object();
    std::string type = readable ? textMember(frame[0], "type") : "";
    std::string messageId = readable ? textMember(frame[0], "messageId") : "";
    if (type == "Heartbeat" && !messageId.empty()) {
        if (!m_faults.ignoreHeartbeats)
            reply(*session, type, messageId, 200, nullptr);
    } else if (type == "ClientRequest" && !messageId.empty()) {
        handleRequest(*session, frame[0], frame.size() == 2 ? frame[1] : Json());
    } else {
        Json error = errorObject("WSG-901", "Message cannot be read");
        send(*session, "Error", messageId.empty() ? randomUuid() : messageId, 400, &error);
    }
}

void ChannelHub::handleRequest(Session& session, const Json& metadata, const Json& body) {
    std::string messageId = textMember(metadata, "messageId");
    std::string method = textMember(metadata, "method");
    auto segments = pathSegments(splitTarget(textMember(metadata, "path")).path);
    if (m_faults.replyStatus != 0) {
        Json error = errorObject("CMN-211", "The request was not carried out");
        return reply(session, "ClientRequest", messageId, m_faults.replyStatus, &error);
    }
    if (segments.size() >= 3 && segments[0] == "restapi" && segments[1] == "v1.0" && segments[2] == "subscription")
        return handleSubscription(session, segments, method, messageId, body);

    RestRequest request{method, segments, queryOf(metadata), body.is_null() ? "" : toText(body), "", session.holder};
    std::vector<CloudEvent> events;
    HttpResponse response = m_state.with([&](State& state) { return m_router.answer(state, request, events); });
    Json data = Json::parse(response.body, nullptr, false);
    reply(session, "ClientRequest", messageId, response.status, data.is_discarded() ? nullptr : &data);
    for (const auto& event : events)
        publishLocked(event);
}

void ChannelHub::handleSubscription(Session& session, const Texts& segments, const std::string& method,
                                    const std::string& messageId, const Json& body) {
    auto refuse = [&](int status, const char* code, const char* message) {
        Json error = errorObject(code, message);
        reply(session, "ClientRequest", messageId, status, &error);
    };
    if (segments.size() == 3) {
        if (method != "POST")
            return refuse(405, "CMN-201", "Method is not supported");
        Subscription subscription;
        subscription.id = randomUuid();
        std::string id = subscription.id;
        confirm(session, session.subscriptions[id] = std::move(subscription), messageId, &body);
        if (session.subscriptions[id].creationTime.empty())
            session.subscriptions.erase(id);
        return;
    }
    auto entry = session.subscriptions.find(segments[3]);
    bool renews = segments.size() == 5 && segments[4] == "renew";
    if (entry == session.subscriptions.end() || Clock::now() >= entry->second.expires ||
        (segments.size() > 4 && !renews))
        return refuse(404, "SUB-505", "Subscription is not found");
    if (renews && method == "POST")
        return confirm(session, entry->second, messageId, nullptr);
    if (!renews && method == "PUT")
        return confirm(session, entry->second, messageId, &body);
    if (!renews && method == "DELETE") {
        session.subscriptions.erase(entry);
        return reply(session, "ClientRequest", messageId, 204, nullptr);
    }
    refuse(405, "CMN-201", "Method is not supported");
}

/// Sets the filters from the body (a renewal has none) and the times, and replies.
void ChannelHub::confirm(Session& session, Subscription& subscription, const std::string& messageId, const Json* body) {
    bool readable =
        body == nullptr || (body->is_object() && body->contains("eventFilters") && (*body)["eventFilters"].is_array() &&
                            body->contains("deliveryMode") && (*body)["deliveryMode"].is_object() &&
                            textMember((*body)["deliveryMode"], "transportType") == "WebSocket");
    if (!readable) {
        Json error = errorObject("SUB-501", "Subscription cannot be read");
        return reply(session, "ClientRequest", messageId, 400, &error);
    }
    Settings settings = m_state.with([&](State& state) {
        if (body == nullptr)
            return state.settings;
        subscription.filters.clear();
        subscription.disabledFilters = Json::array();
        for (const auto& element : (*body)["eventFilters"]) {
            std::string text = element.is_string() ? element.get<std::string>() : toText(element);
            auto filter = readFilter(text, state, session.holder.extensionId);
            if (containsOneOf(text, m_faults.unansweredFilters))
                continue;
            bool disabled = containsOneOf(text, m_faults.disabledFilters);
            if (filter && !disabled && isPermitted(*filter, state, session.holder.extensionId)) {
                subscription.filters.push_back(*filter);
                continue;
            }
            std::string name = filter ? filter->text : text;
            if (m_faults.disabledAsTexts)
                subscription.disabledFilters.push_back(name);
            else
                subscription.disabledFilters.push_back({{"filter", name},
                                                        {"reason", !filter    ? "Unknown"
                                                                   : disabled ? "Disabled"
                                                                              : "InsufficientPermissions"},
                                                        {"message", "No events are sent for this filter"}});
        }
        return state.settings;
    });
    auto lifetime = std::chrono::seconds(settings.subscriptionLifetimeSeconds);
    subscription.expires = Clock::now() + lifetime;
    subscription.expirationTime = std::chrono::system_clock::now() + lifetime;
    if (subscription.creationTime.empty() || !settings.renewalKeepsCreationTime)
        subscription.creationTime = newCreationTime();
    Json data = confirmation(subscription, settings);
    reply(session, "ClientRequest", messageId, 200, &data);
}

Json ChannelHub::confirmation(const Subscription& subscription, const Settings& settings) const {
    Json data{{"id", m_faults.foreignSubscriptionId ? randomUuid() : subscription.id},
              {"creationTime", subscription.creationTime},
              {"status", "Active"},
              {"expirationTime", toTimestamp(subscription.expirationTime)},
              {"expiresIn", settings.subscriptionLifetimeSeconds}};
    data["eventFilters"] = Json::array();
    for (const auto& filter : subscription.filters)
        data["eventFilters"].push_back(filter.text);
    if (!subscription.disabledFilters.empty())
        data["disabledFilters"] = subscription.disabledFilters;
    data["deliveryMode"] = {{"transportType", "WebSocket"}, {"encryption", false}};
    return data;
}

} // namespace cloudsim
