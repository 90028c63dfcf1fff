#include "channel/Frames.h"

#include "base/Identifiers.h"

#include <cstdint>

namespace cloudsim {
namespace {

constexpr std::size_t maximumMessageBytes = 16 * 1024 * 1024;
constexpr std::size_t maximumControlBytes = 125;

void appendNumber(std::string& bytes, std::uint64_t number, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes += static_cast<char>((number >> shift) & 0xff);
}

std::uint64_t readNumber(std::string_view bytes) {
    std::uint64_t number = 0;
    for (unsigned char byte : bytes)
        number = number << 8 | byte;
    return number;
}

} // namespace

std::string encodeFrame(const Frame& frame) {
    std::string bytes;
    bytes += static_cast<char>((frame.isFinal ? 0x80 : 0) | (frame.opcode & 0x0f));
    if (frame.payload.size() < 126) {
        bytes += static_cast<char>(frame.payload.size());
    } else if (frame.payload.size() <= 0xffff) {
        bytes += static_cast<char>(126);
        appendNumber(bytes, frame.payload.size(), 2);
    } else {
        bytes += static_cast<char>(127);
        appendNumber(bytes, frame.payload.size(), 8);
    }
    return bytes + frame.payload;
}

std::string encodeText(std::string_view text, std::size_t fragmentBytes) {
    if (fragmentBytes == 0 || text.size() <= fragmentBytes)
        return encodeFrame({Frame::TEXT, true, std::string(text)});
    std::string bytes;
    for (std::size_t begin = 0; begin < text.size(); begin += fragmentBytes)
        bytes += encodeFrame({begin == 0 ? Frame::TEXT : Frame::CONTINUATION, begin + fragmentBytes >= text.size(),
                              std::string(text.substr(begin, fragmentBytes))});
    return bytes;
}

std::string encodeClose(int code, std::string_view reason) {
    std::string payload;
    if (code != 0) {
        appendNumber(payload, static_cast<std::uint64_t>(code), 2);
        payload += reason.substr(0, maximumControlBytes - 2);
    }
    return encodeFrame({Frame::CLOSE, true, payload});
}

std::string acceptKey(const std::string& key) {
    return toBase64(sha1(key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11"));
}

FrameDecoder::Result FrameDecoder::nextRaw(Frame& frame) {
    constexpr std::size_t maskBytes = 4;
    if (m_buffer.size() < 2)
        return Result::INCOMPLETE;
    auto first = static_cast<unsigned char>(m_buffer[0]);
    auto second = static_cast<unsigned char>(m_buffer[1]);
    bool masked = (second & 0x80) != 0;
    bool reserved = (first & 0x70) != 0;
    if (!masked || reserved)
        return Result::BROKEN;
    std::size_t lengthBytes = (second & 0x7f) == 126 ? 2 : (second & 0x7f) == 127 ? 8 : 0;
    std::size_t head = 2 + lengthBytes + maskBytes;
    if (m_buffer.size() < head)
        return Result::INCOMPLETE;
    std::uint64_t length =
        lengthBytes == 0 ? second & 0x7f : readNumber(std::string_view(m_buffer).substr(2, lengthBytes));
    if (length > maximumMessageBytes)
        return Result::BROKEN;
    if (m_buffer.size() < head + length)
        return Result::INCOMPLETE;
    frame.opcode = first & 0x0f;
    frame.isFinal = (first & 0x80) != 0;
    frame.payload = m_buffer.substr(head, length);
    for (std::size_t i = 0; i < frame.payload.size(); ++i)
        frame.payload[i] = static_cast<char>(frame.payload[i] ^ m_buffer[2 + lengthBytes + i % maskBytes]);
    m_buffer.erase(0, head + length);
    return Result::FRAME;
}

FrameDecoder::Result FrameDecoder::next(Frame& frame) {
    while (true) {
        Result result = nextRaw(frame);
        if (result != Result::FRAME)
            return result;
        if (frame.opcode >= Frame::CLOSE)
            return frame.isFinal && frame.payload.size() <= maximumControlBytes ? Result::FRAME : Result::BROKEN;
        bool begins = frame.opcode != Frame::CONTINUATION;
        if (begins == (m_messageOpcode != 0) || m_message.size() + frame.payload.size() > maximumMessageBytes)
            return Result::BROKEN;
        if (begins)
            m_messageOpcode = frame.opcode;
        m_message += frame.payload;
        if (!frame.isFinal)
            continue;
        frame.opcode = m_messageOpcode;
        frame.payload = std::move(m_message);
        m_message.clear();
        m_messageOpcode = 0;
        return Result::FRAME;
    }
}

} // namespace cloudsim
