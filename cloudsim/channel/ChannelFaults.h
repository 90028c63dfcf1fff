#pragma once

#include "base/Json.h"

#include <string>
#include <vector>

namespace cloudsim {

/// What goes wrong on the event channel, for all sessions, until it is changed.
struct ChannelFaults {
    bool refuseRecovery = false;
    Json connectionDetails = Json::object();    ///< merged over the details; null takes a member out
    std::vector<std::string> disabledFilters;   ///< filters that contain one of these are disabled
    bool disabledAsTexts = false;               ///< named by a text in place of an object
    std::vector<std::string> unansweredFilters; ///< filters that contain one of these are not mentioned at all
    int loseReplies = 0;                        ///< so many replies are never sent
    int replyDelayMilliseconds = 0;
    int replyStatus = 0; ///< in place of 200, with an error object
    bool ignoreHeartbeats = false;
    bool stuckSequence = false; ///< every session context has the sequence 1
    bool omitContext = false;
    bool foreignSubscriptionId = false; ///< replies name another subscription
    int corruptFrames = 0;              ///< so many frames are cut in the middle of their JSON
    int duplicateFrames = 0;            ///< so many frames are sent twice
    int fragmentBytes = 0;              ///< text frames go out in pieces of this size
};

Json toJson(const ChannelFaults& faults);
/// All that is not named is off. Throws BadInput.
ChannelFaults channelFaultsFromJson(const Json& json);

} // namespace cloudsim
