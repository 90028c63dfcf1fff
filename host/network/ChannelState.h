#pragma once

/// Whether the telephone's WebSocket is open, for those who show it. Any thread may ask.
class ChannelState {
public:
    static bool isOpen();
};
