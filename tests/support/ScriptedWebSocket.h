#pragma once

#include "network/WebSocketAppIfc.h"
#include "network/WebSocketThread.h"

#include <functional>
#include <string>
#include <vector>

class ThreaderIfc;

/// The one WebSocket client: records what the service does with it. The test calls the service's callbacks itself.
class ScriptedWebSocket : public WebSocketThread {
public:
    std::vector<std::string> urls;   ///< of every init
    std::vector<std::string> frames; ///< sent, oldest first
    int stops = 0;
    int terminations = 0;
    bool running = false; ///< instance() gives this object
    ThreaderIfc* threader = nullptr;
    WebSocketAppIfc* app = nullptr;
    std::function<void()> whileStopping; ///< runs inside every stop
    std::function<void()> whileSending;  ///< runs inside every send, for what happens to a connection meanwhile

    void send(const std::string& message) override;
};
