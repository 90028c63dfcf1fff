#pragma once

#include <string>
#include <string_view>

namespace cloudsim {

/// One WebSocket frame, or a whole message once its fragments are joined.
struct Frame {
    enum Opcode : int { CONTINUATION = 0, TEXT = 1, BINARY = 2, CLOSE = 8, PING = 9, PONG = 10 };
    int opcode = TEXT;
    bool isFinal = true;
    std::string payload;
};

/// The server's side: not masked.
std::string encodeFrame(const Frame& frame);
std::string encodeText(std::string_view text, std::size_t fragmentBytes = 0);
std::string encodeClose(int code, std::string_view reason);

/// The value of Sec-WebSocket-Accept for a key.
std::string acceptKey(const std::string& key);

/// Takes apart what a client sends: masked frames, fragments joined.
class FrameDecoder {
public:
    enum class Result { FRAME, INCOMPLETE, BROKEN };

    void feed(std::string_view bytes) { m_buffer += bytes; }
    Result next(Frame& frame);

private:
    Result nextRaw(Frame& frame);

    std::string m_buffer;
    std::string m_message;
    int m_messageOpcode = 0;
};

} // namespace cloudsim
