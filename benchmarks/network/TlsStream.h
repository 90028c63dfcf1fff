#pragma once

#include <openssl/ssl.h>

#include <cstddef>
#include <stdexcept>
#include <string>

/// Blocking reads and writes of whole pieces on a TLS connection.
namespace TlsStream {

inline void write(SSL* tls, const std::string& bytes) {
    if (SSL_write(tls, bytes.data(), static_cast<int>(bytes.size())) != static_cast<int>(bytes.size())) {
        throw std::runtime_error("a TLS connection ended while it was written to");
    }
}

/// Appends what there is; false at the end of the connection.
inline bool readSome(SSL* tls, std::string& buffer) {
    char piece[16384];
    const int count = SSL_read(tls, piece, sizeof piece);
    if (count > 0) {
        buffer.append(piece, static_cast<std::size_t>(count));
    }
    return count > 0;
}

/// Text frame of RFC 6455; `masked` as a client sends it, with a mask of zeros.
inline std::string textFrame(const std::string& text, bool masked) {
    const char maskBit = masked ? '\x80' : '\0';
    std::string frame = "\x81";
    if (text.size() < 126) {
        frame += static_cast<char>(static_cast<char>(text.size()) | maskBit);
    } else if (text.size() < 65536) {
        frame += static_cast<char>(126 | maskBit);
        frame += static_cast<char>(text.size() >> 8);
        frame += static_cast<char>(text.size() & 0xFF);
    } else {
        throw std::runtime_error("a frame is too long for this benchmark");
    }
    return frame + (masked ? std::string(4, '\0') : std::string()) + text;
}

/// Takes the first whole frame off the buffer; false when there is none. The opcode of a text is 1.
inline bool takeFrame(std::string& buffer, int& opcode, std::string& text) {
    const auto byte = [&buffer](std::size_t index) { return static_cast<unsigned char>(buffer[index]); };
    if (buffer.size() < 2) {
        return false;
    }
    std::size_t header = 2;
    std::size_t length = byte(1) & 0x7F;
    if (length == 126) {
        header = 4;
        length = buffer.size() < header ? buffer.size() : std::size_t{byte(2)} << 8 | byte(3);
    }
    const bool masked = (byte(1) & 0x80) != 0;
    const std::size_t mask = header;
    header += masked ? 4 : 0;
    if (buffer.size() < header + length) {
        return false;
    }
    opcode = byte(0) & 0x0F;
    text = buffer.substr(header, length);
    for (std::size_t index = 0; masked && index < length; ++index) {
        text[index] = static_cast<char>(text[index] ^ buffer[mask + index % 4]);
    }
    buffer.erase(0, header + length);
    return true;
}

/// Value of a header of an HTTP message, empty when it is missing; names are compared as they stand in lower case.
std::string header(const std::string& head, const std::string& lowerCaseName);

} // namespace TlsStream
