#include "support/WebSocketPeer.h"

#include <openssl/evp.h>
#include <openssl/sha.h>

#include <strings.h>

namespace {

std::string acceptValue(const std::string& key) {
    const std::string text = key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11"; // RFC 6455, section 1.3
    unsigned char digest[SHA_DIGEST_LENGTH];
    SHA1(reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest);
    unsigned char encoded[2 * SHA_DIGEST_LENGTH];
    const int length = EVP_EncodeBlock(encoded, digest, sizeof digest);
    return {reinterpret_cast<char*>(encoded), static_cast<std::size_t>(length)};
}

std::size_t numberFrom(const std::string& bytes) {
    std::size_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

std::string bytesOf(std::size_t number, int count) {
    std::string bytes;
    for (int index = count - 1; index >= 0; --index) {
        bytes += static_cast<char>(number >> (8 * index) & 0xff);
    }
    return bytes;
}

} // namespace

int WebSocketPeer::Frame::closeCode() const {
    return payload.size() < 2 ? 0 : static_cast<int>(numberFrom(payload.substr(0, 2)));
}

bool WebSocketPeer::accept() {
    m_request = m_peer.readRequest();
    return !m_request.empty() &&
           m_peer.write("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                        "Sec-WebSocket-Accept: " +
                        acceptValue(header("Sec-WebSocket-Key")) + "\r\n\r\n");
}

std::string WebSocketPeer::header(const std::string& name) const {
    std::size_t line = 0;
    while ((line = m_request.find("\r\n", line)) != std::string::npos) {
        line += 2;
        if (strncasecmp(m_request.c_str() + line, (name + ": ").c_str(), name.size() + 2) == 0) {
            const std::size_t begin = line + name.size() + 2;
            return m_request.substr(begin, m_request.find("\r\n", begin) - begin);
        }
    }
    return {};
}

WebSocketPeer::Frame WebSocketPeer::readFrame() {
    Frame frame;
    const std::string head = m_peer.read(2);
    if (head.size() < 2) {
        return frame;
    }
    frame.last = (head[0] & 0x80) != 0;
    frame.masked = (head[1] & 0x80) != 0;
    std::size_t length = head[1] & 0x7f;
    if (length >= 126) {
        length = numberFrom(m_peer.read(length == 126 ? 2 : 8));
    }
    const std::string mask = frame.masked ? m_peer.read(4) : std::string(4, '\0');
    frame.payload = m_peer.read(length);
    if (mask.size() < 4 || frame.payload.size() < length) {
        return {};
    }
    for (std::size_t index = 0; index < frame.payload.size(); ++index) {
        frame.payload[index] = static_cast<char>(frame.payload[index] ^ mask[index % 4]);
    }
    frame.opcode = head[0] & 0x0f;
    return frame;
}

WebSocketPeer::Frame WebSocketPeer::readMessage() {
    for (;;) {
        Frame frame = readFrame();
        if (frame.opcode != PING) {
            return frame;
        }
        sendFrame(PONG, frame.payload);
    }
}

std::string WebSocketPeer::frame(int opcode, const std::string& payload, bool last) {
    std::string bytes(1, static_cast<char>((last ? 0x80 : 0) | opcode));
    if (payload.size() < 126) {
        bytes += static_cast<char>(payload.size());
    } else if (payload.size() < 65536) {
        bytes += static_cast<char>(126) + bytesOf(payload.size(), 2);
    } else {
        bytes += static_cast<char>(127) + bytesOf(payload.size(), 8);
    }
    return bytes + payload;
}

bool WebSocketPeer::sendFrame(int opcode, const std::string& payload, bool last) {
    return m_peer.write(frame(opcode, payload, last));
}

bool WebSocketPeer::sendClose(int code, const std::string& reason) {
    return sendFrame(CLOSE, code == 0 ? std::string() : bytesOf(static_cast<std::size_t>(code), 2) + reason);
}

int WebSocketPeer::close(int code, const std::string& reason) {
    sendClose(code, reason);
    const Frame answer = readMessage();
    m_peer.end();
    m_peer.waitForEnd();
    return answer.opcode == CLOSE ? answer.closeCode() : -1;
}
