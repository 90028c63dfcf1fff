#pragma once

#include "base/Guarded.h"
#include "base/Scheduler.h"
#include "channel/ChannelFaults.h"
#include "channel/Session.h"
#include "rest/RestRouter.h"

#include <list>
#include <optional>

namespace cloudsim {

/// The sessions of the event channel: recovery, requests inside frames, subscriptions, notifications.
class ChannelHub {
public:
    struct Limits {
        std::chrono::seconds idle{0};
        SteadyTime absoluteEnd;
    };

    ChannelHub(Guarded<State>& state, const RestRouter& router, Scheduler& scheduler);

    // For connections.
    std::optional<AccessTokens::Holder> findHolder(const std::string& socketToken);
    /// A new session, or the one that the context names. The details go out at once.
    Limits open(const std::shared_ptr<ChannelLink>& link, const AccessTokens::Holder& holder,
                const std::string& context);
    void received(const std::shared_ptr<ChannelLink>& link, const std::string& text);
    void ended(const std::shared_ptr<ChannelLink>& link);
    /// The session is over, and cannot be recovered.
    void forget(const std::shared_ptr<ChannelLink>& link);

    /// Tells all who subscribed to it.
    void publish(const CloudEvent& event);

    // For administration.
    Json sessions();
    /// The links of one session, or of all ("all").
    std::vector<std::shared_ptr<ChannelLink>> links(const std::string& sessionId);
    /// Ends sessions as if their time had run out, connected or not; false for an unknown id.
    bool expire(const std::string& sessionId);
    /// A notification as it stands, to every session with a subscription of this extension.
    void notifyRaw(std::int64_t extensionId, const Json& data);
    /// The frames that clients sent: {"number", "session", "time", "text"}.
    Json frames(std::uint64_t after);
    void clearFrames();
    Json faults();
    void setFaults(ChannelFaults faults);

private:
    struct ReceivedFrame {
        std::uint64_t number;
        std::string session;
        WallTime time;
        std::string text;
    };

    Session* sessionOf(const std::shared_ptr<ChannelLink>& link);
    Session& begin(const AccessTokens::Holder& holder);
    Session* recoverable(const std::string& context, const AccessTokens::Holder& holder, int& lastSequence);
    void sendDetails(Session& session, const char* recoveryState);
    void sendAgain(Session& session, int lastSequence);
    void purge();

    void send(Session& session, const std::string& type, const std::string& messageId, int status, const Json* data);
    void reply(Session& session, const std::string& type, const std::string& messageId, int status, const Json* data);
    void notify(Session& session, const Json& data);
    void publishLocked(const CloudEvent& event);
    void sendNotification(Session& session, Session::Sent& sent);

    void handleRequest(Session& session, const Json& metadata, const Json& body);
    void handleSubscription(Session& session, const std::vector<std::string>& segments, const std::string& method,
                            const std::string& messageId, const Json& body);
    void confirm(Session& session, Subscription& subscription, const std::string& messageId, const Json* body);
    Json confirmation(const Subscription& subscription, const Settings& settings) const;
    std::string newCreationTime();

    Guarded<State>& m_state;
    const RestRouter& m_router;
    Scheduler& m_scheduler;
    std::mutex m_mutex;
    std::list<Session> m_sessions;
    std::deque<ReceivedFrame> m_frames;
    std::uint64_t m_lastFrame = 0;
    ChannelFaults m_faults;
    std::string m_lastCreationTime;
};

} // namespace cloudsim
