#pragma once

#include "channel/ChannelLink.h"
#include "channel/EventFilter.h"

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace cloudsim {

struct Subscription {
    std::string id;
    std::string creationTime;
    std::vector<EventFilter> filters;
    Json disabledFilters = Json::array();
    SteadyTime expires;
    WallTime expirationTime;
};

/// One subscriber's channel. It outlives its connection for the recovery time.
struct Session {
    /// A notification that may have to be sent again.
    struct Sent {
        int sequence = 0; ///< of the frame that carried it; 0: none has
        Json data;
    };

    std::string id;
    AccessTokens::Holder holder;
    std::shared_ptr<ChannelLink> link; ///< null while nobody is connected
    int sequence = 0;
    std::deque<Sent> sent;
    int lostSequence = 0; ///< notifications up to this one are out of reach
    std::map<std::string, Subscription> subscriptions;
    SteadyTime absoluteEnd;
    SteadyTime detachedAt;
    std::chrono::seconds recoveryTime{0};
    std::size_t bufferSize = 0;
    std::string creationTime;
};

} // namespace cloudsim
