#include "base/Identifiers.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <cstdio>
#include <stdexcept>

namespace cloudsim {

std::string randomBytes(std::size_t count) {
    std::string bytes(count, '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(count)) != 1)
        throw std::runtime_error("no random numbers");
    return bytes;
}

std::string randomToken(std::size_t length) {
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    std::string token;
    for (char byte : randomBytes(length))
        token += alphabet[static_cast<unsigned char>(byte) % (sizeof alphabet - 1)];
    return token;
}

std::string randomUuid() {
    std::string bytes = randomBytes(16);
    bytes[6] = static_cast<char>((bytes[6] & 0x0f) | 0x40);
    bytes[8] = static_cast<char>((bytes[8] & 0x3f) | 0x80);
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(bytes[i]));
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += digits;
    }
    return text;
}

std::string toBase64(std::string_view bytes) {
    std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                 reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::string fromBase64(std::string_view text) {
    std::string bytes(3 * (text.size() / 4) + 3, '\0');
    int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                 reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    if (length < 0)
        throw std::invalid_argument("not base64");
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=')
        ++padding;
    bytes.resize(static_cast<std::size_t>(length) - padding);
    return bytes;
}

std::string sha1(std::string_view bytes) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha1(), nullptr) != 1)
        throw std::runtime_error("no SHA-1");
    return {reinterpret_cast<const char*>(digest), length};
}

} // namespace cloudsim
