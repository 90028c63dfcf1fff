#pragma once

#include "channel/ChannelHub.h"
#include "channel/ChannelLink.h"
#include "channel/Frames.h"
#include "net/HttpMessage.h"

#include <memory>
#include <vector>

namespace cloudsim {

/// An upgraded connection: frames in and out, on the connection's own thread.
class ChannelConnection {
public:
    ChannelConnection(Connection& connection, ChannelHub& hub);

    /// Answers the upgrade; returns the status that was sent.
    int upgrade(const HttpRequest& request);
    /// Until the channel ends. Does nothing after a refused upgrade.
    void run(const std::string& leftover);

private:
    bool writeOutgoing();
    bool readInput();
    bool handle(const Frame& frame);
    bool checkTimes();
    void sendLatePongs();

    Connection& m_connection;
    ChannelHub& m_hub;
    std::shared_ptr<ChannelLink> m_link;
    ChannelHub::Limits m_limits;
    AccessTokens::Holder m_holder;
    std::string m_context;
    bool m_accepted = false;
    FrameDecoder m_decoder;
    std::vector<std::string> m_heldPongs;
    SteadyTime m_lastMessage;
    SteadyTime m_closeDeadline = SteadyTime::max();
};

} // namespace cloudsim
