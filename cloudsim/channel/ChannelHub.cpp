#include "channel/ChannelHub.h"

#include "base/Identifiers.h"
#include "base/WholeNumber.h"

#include <limits>

namespace cloudsim {
namespace {

using Clock = std::chrono::steady_clock;

std::string contextToken(const Session& session, int sequence) {
    return session.id + "-" + std::to_string(sequence);
}

std::string halved(const std::string& text) {
    return text.substr(0, text.size() / 2);
}

} // namespace

ChannelHub::ChannelHub(Guarded<State>& state, const RestRouter& router, Scheduler& scheduler)
    : m_state(state), m_router(router), m_scheduler(scheduler) {}

std::optional<AccessTokens::Holder> ChannelHub::findHolder(const std::string& socketToken) {
    return m_state.with([&](State& state) { return state.socketTokens.find(socketToken); });
}

Session* ChannelHub::sessionOf(const std::shared_ptr<ChannelLink>& link) {
    for (auto& session : m_sessions)
        if (session.link == link)
            return &session;
    return nullptr;
}

Session& ChannelHub::begin(const AccessTokens::Holder& holder) {
    Settings settings = m_state.with([](State& state) { return state.settings; });
    auto now = Clock::now();
    Session& session = m_sessions.emplace_back();
    session.id = randomToken(32);
    session.holder = holder;
    session.absoluteEnd = settings.absoluteTimeoutSeconds > 0
                              ? now + std::chrono::seconds(settings.absoluteTimeoutSeconds)
                              : SteadyTime::max();
    session.recoveryTime = std::chrono::seconds(settings.recoveryTimeoutSeconds);
    session.bufferSize = static_cast<std::size_t>(settings.recoveryBufferSize);
    session.creationTime = newCreationTime();
    return session;
}

void ChannelHub::purge() {
    auto now = Clock::now();
    m_sessions.remove_if([now](const Session& session) {
        return !session.link && (now >= session.detachedAt + session.recoveryTime || now >= session.absoluteEnd);
    });
}

/// The session and the last sequence that the client has seen, if it can go on from there.
Session* ChannelHub::recoverable(const std::string& context, const AccessTokens::Holder& holder, int& lastSequence) {
    auto dash = context.rfind('-');
    if (dash == std::string::npos || m_faults.refuseRecovery)
        return nullptr;
    auto seen = wholeNumber<int>(std::string_view(context).substr(dash + 1));
    if (!seen)
        return nullptr;
    lastSequence = *seen;
    for (auto& session : m_sessions)
        if (session.id == context.substr(0, dash) && session.holder.extensionId == holder.extensionId &&
            lastSequence <= session.sequence && lastSequence >= session.lostSequence)
            return &session;
    return nullptr;
}

ChannelHub::Limits ChannelHub::open(const std::shared_ptr<ChannelLink>& link, const AccessTokens::Holder& holder,
                                    const std::string& context) {
    std::lock_guard lock(m_mutex);
    purge();
    int lastSequence = 0;
    Session* session = context.empty() ? nullptr : recoverable(context, holder, lastSequence);
    bool recovered = session != nullptr;
    if (!recovered)
        session = &begin(holder);
    // A client that comes back before its loss was noticed takes its session over.
    if (session->link)
        session->link->reset();
    session->link = link;
    sendDetails(*session, context.empty() ? nullptr : recovered ? "Successful" : "Failed");
    if (recovered)
        sendAgain(*session, lastSequence);
    int idle = m_state.with([](State& state) { return state.settings.idleTimeoutSeconds; });
    return {std::chrono::seconds(idle), session->absoluteEnd};
}

void ChannelHub::sendDetails(Session& session, const char* recoveryState) {
    Settings settings = m_state.with([](State& state) { return state.settings; });
    Json details{{"creationTime", session.creationTime},
                 {"maxConnectionsPerSession", settings.maxConnectionsPerSession},
                 {"recoveryBufferSize", settings.recoveryBufferSize},
                 {"recoveryTimeout", settings.recoveryTimeoutSeconds},
                 {"idleTimeout", settings.idleTimeoutSeconds},
                 {"absoluteTimeout", settings.absoluteTimeoutSeconds}};
    if (recoveryState != nullptr)
        details["recoveryState"] = recoveryState;
    details.merge_patch(m_faults.connectionDetails);
    send(session, "ConnectionDetails", randomUuid(), 200, &details);
}

/// What the client has not seen goes out again, in order.
void ChannelHub::sendAgain(Session& session, int lastSequence) {
    while (!session.sent.empty() && session.sent.front().sequence != 0 && session.sent.front().sequence <= lastSequence)
        session.sent.pop_front();
    for (auto& sent : session.sent)
        sendNotification(session, sent);
}

void ChannelHub::ended(const std::shared_ptr<ChannelLink>& link) {
    std::lock_guard lock(m_mutex);
    if (Session* session = sessionOf(link)) {
        session->link.reset();
        session->detachedAt = Clock::now();
    }
    purge();
}

void ChannelHub::forget(const std::shared_ptr<ChannelLink>& link) {
    std::lock_guard lock(m_mutex);
    m_sessions.remove_if([&](const Session& session) { return session.link == link; });
}

void ChannelHub::send(Session& session, const std::string& type, const std::string& messageId, int status,
                      const Json* data) {
    int sequence = ++session.sequence;
    if (!session.link)
        return;
    Json metadata{{"type", type}, {"messageId", messageId}, {"status", status}};
    metadata["headers"] = {{"Request-Id", randomUuid()}};
    if (!m_faults.omitContext)
        metadata["wsc"] = {{"token", contextToken(session, sequence)},
                           {"sequence", m_faults.stuckSequence ? 1 : sequence}};
    Json frame = Json::array({metadata});
    if (data != nullptr)
        frame.push_back(*data);
    std::string text = toText(scalarsFirst(frame));
    auto fragmentBytes = static_cast<std::size_t>(m_faults.fragmentBytes);
    if (m_faults.corruptFrames > 0) {
        --m_faults.corruptFrames;
        return session.link->sendText(halved(text), fragmentBytes);
    }
    session.link->sendText(text, fragmentBytes);
    if (m_faults.duplicateFrames > 0) {
        --m_faults.duplicateFrames;
        session.link->sendText(text, fragmentBytes);
    }
}

void ChannelHub::reply(Session& session, const std::string& type, const std::string& messageId, int status,
                       const Json* data) {
    if (m_faults.loseReplies > 0) {
        --m_faults.loseReplies;
        return;
    }
    if (m_faults.replyDelayMilliseconds == 0)
        return send(session, type, messageId, status, data);
    auto content = data == nullptr ? std::optional<Json>() : std::optional(*data);
    m_scheduler.after(std::chrono::milliseconds(m_faults.replyDelayMilliseconds),
                      [this, id = session.id, type, messageId, status, content] {
                          std::lock_guard lock(m_mutex);
                          for (auto& entry : m_sessions)
                              if (entry.id == id)
                                  send(entry, type, messageId, status, content ? &*content : nullptr);
                      });
}

void ChannelHub::notify(Session& session, const Json& data) {
    if (session.sent.size() >= session.bufferSize && !session.sent.empty()) {
        int sequence = session.sent.front().sequence;
        session.lostSequence = sequence == 0 ? std::numeric_limits<int>::max() : sequence;
        session.sent.pop_front();
    }
    if (session.bufferSize == 0 && !session.link)
        session.lostSequence = std::numeric_limits<int>::max();
    session.sent.push_back({0, data});
    if (session.link)
        sendNotification(session, session.sent.back());
}

void ChannelHub::sendNotification(Session& session, Session::Sent& sent) {
    send(session, "ServerNotification", randomUuid(), 200, &sent.data);
    sent.sequence = session.sequence;
}

void ChannelHub::publish(const CloudEvent& event) {
    std::lock_guard lock(m_mutex);
    publishLocked(event);
}

void ChannelHub::publishLocked(const CloudEvent& event) {
    purge();
    for (auto& session : m_sessions) {
        for (auto& [id, subscription] : session.subscriptions) {
            if (Clock::now() >= subscription.expires)
                continue;
            for (const auto& filter : subscription.filters)
                if (filter.concerns(event))
                    notify(session, {{"uuid", randomUuid()},
                                     {"event", filter.text},
                                     {"timestamp", toTimestamp(std::chrono::system_clock::now())},
                                     {"subscriptionId", subscription.id},
                                     {"ownerId", std::to_string(session.holder.extensionId)},
                                     {"body", event.body}});
        }
    }
}

std::string ChannelHub::newCreationTime() {
    // Times are compared as texts, so that no two may be equal.
    auto now = std::chrono::system_clock::now();
    std::string text = toTimestamp(now);
    while (text <= m_lastCreationTime) {
        now += std::chrono::milliseconds(1);
        text = toTimestamp(now);
    }
    m_lastCreationTime = text;
    return text;
}

} // namespace cloudsim
