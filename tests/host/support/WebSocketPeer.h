#pragma once

#include "support/ScriptedTlsServer.h"

#include <string>

/// The server's side of a WebSocket (RFC 6455), frame by frame, over a scripted peer. It checks nothing that a test
/// does not ask for, so that it can also do what it must not.
class WebSocketPeer {
public:
    enum Opcode : int { CONTINUATION = 0, TEXT = 1, BINARY = 2, CLOSE = 8, PING = 9, PONG = 10 };

    struct Frame {
        int opcode = -1; ///< -1 when the stream has ended
        bool last = false;
        bool masked = false;
        std::string payload;

        /// Status of a close frame, 0 without one.
        int closeCode() const;
    };

    explicit WebSocketPeer(ScriptedPeer& peer) : m_peer(peer) {}

    /// Answers the opening handshake and keeps the request.
    bool accept();
    const std::string& request() const { return m_request; }
    /// Value of a header of the request, empty without one.
    std::string header(const std::string& name) const;

    Frame readFrame();
    /// The next frame that is no ping; pings are answered.
    Frame readMessage();

    bool sendFrame(int opcode, const std::string& payload, bool last = true);
    bool sendText(const std::string& text) { return sendFrame(TEXT, text); }
    /// A close frame; without a code it is empty.
    bool sendClose(int code, const std::string& reason = "");
    /// Sends a close frame, and waits for the client's answer and end. The code of the answer.
    int close(int code, const std::string& reason = "");

    static std::string frame(int opcode, const std::string& payload, bool last = true);

    ScriptedPeer& peer() { return m_peer; }

private:
    ScriptedPeer& m_peer;
    std::string m_request;
};
