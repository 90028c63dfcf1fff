#pragma once

#include "Cloud.h"

namespace cloudsim {

/// A call that is made to happen.
struct PlayedCall {
    std::int64_t extensionId = 0; ///< a user or a shared line
    Json members;                 ///< of the record; "direction", "result", "from", "to" and the like
    std::chrono::milliseconds ring{1000};
    std::chrono::milliseconds talk{0}; ///< 0: nobody answers
    std::chrono::milliseconds recordDelay{500};
    bool withRecord = true;
};

/// Lets calls ring, connect and end: presence notifications first, then the record in the log.
class CallPlayer {
public:
    explicit CallPlayer(Cloud& cloud) : m_cloud(cloud) {}

    /// Returns the telephony session's id at once; the call goes on by itself.
    std::string play(PlayedCall call);
    /// Somebody left a message: a notification for the extension.
    void leaveMessage(std::int64_t extensionId);

private:
    void announce(const PlayedCall& call, const char* telephonyStatus);

    Cloud& m_cloud;
};

/// The presence event of an extension with these active calls.
CloudEvent presenceEvent(std::int64_t extensionId, const Json& activeCalls);

} // namespace cloudsim
