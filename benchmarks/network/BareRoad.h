#pragma once

#include "network/BareClient.h"
#include "network/LoopbackServer.h"

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/// One thread that waits for frames, and for each does what an event asks of a client at the least: parses it, gets the
/// call log and parses that. The same threads of the server take part in it as in the telephone's road.
class BareRoad {
public:
    using Clock = LoopbackServer::Clock;

    /// A server has one such road at a time, and no telephone with it.
    BareRoad(LoopbackServer& server, const std::string& authorities, const std::string& target);
    ~BareRoad();
    BareRoad(const BareRoad&) = delete;
    BareRoad& operator=(const BareRoad&) = delete;

    /// From the frame's first byte to the end of the answer's parsing.
    Clock::duration goes(const std::string& frame);

private:
    void follow(const std::string& target);
    bool isEnding();

    LoopbackServer& m_server;
    BareClient m_rest;
    BareClient m_channel;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_arrived = false;
    bool m_ending = false;
    Clock::time_point m_end;
    std::thread m_thread;
};
