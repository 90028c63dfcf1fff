#include "logging/Redaction.h"

#include <array>
#include <cstring>

namespace {

constexpr std::size_t shortestSecret = 8; ///< a shorter value would take out ordinary text elsewhere
constexpr std::size_t mostSecrets = 64;

/// What stands before a value, and the characters that end it.
struct Marker {
    const char* before;
    const char* ends;
};

constexpr std::array<Marker, 7> markers = {{
    {"m_accessToken[", "]"},
    {"Session Context: token[", "]"},
    {"Bearer ", " \t\r\n\"\\],;"},
    {"access_token=", "&# \t\r\n\"\\]"},
    {"&wsc=", "&# \t\r\n\"\\]"},
    {"?wsc=", "&# \t\r\n\"\\]"},
    {"accessToken[", "]"},
}};

/// JSON members whose text is a secret. "token" is the one of a session context.
constexpr std::array<const char*, 4> jsonKeys = {"accessToken", "ws_access_token", "access_token", "token"};

/// Position behind quotes, written plainly or escaped; npos when there are none.
std::size_t behindQuote(const std::string& text, std::size_t position) {
    while (position < text.size() && text[position] == '\\') {
        ++position;
    }
    return position < text.size() && text[position] == '"' ? position + 1 : std::string::npos;
}

std::size_t behindBlanks(const std::string& text, std::size_t position) {
    const std::size_t found = text.find_first_not_of(" \t\r\n", position);
    return found == std::string::npos ? text.size() : found;
}

/// Where the value of a JSON member begins whose key ends right before `position`; npos when no text follows.
std::size_t jsonValue(const std::string& text, std::size_t position) {
    position = behindQuote(text, position);
    if (position == std::string::npos) {
        return position;
    }
    position = behindBlanks(text, position);
    if (position >= text.size() || text[position] != ':') {
        return std::string::npos;
    }
    return behindQuote(text, behindBlanks(text, position + 1));
}

} // namespace

std::string Redaction::redact(const std::string& message) {
    std::string text = message;
    const auto takeOut = [this, &text](std::size_t begin, const char* ends) {
        std::size_t end = text.find_first_of(ends, begin);
        end = end == std::string::npos ? text.size() : end;
        if (end > begin) {
            remember(text.substr(begin, end - begin));
            text.replace(begin, end - begin, "***");
        }
    };
    for (const Marker& marker : markers) {
        const std::size_t length = std::strlen(marker.before);
        for (std::size_t at = text.find(marker.before); at != std::string::npos;
             at = text.find(marker.before, at + length)) {
            takeOut(at + length, marker.ends);
        }
    }
    for (const char* key : jsonKeys) {
        const std::string opened = "\"" + std::string(key);
        for (std::size_t at = text.find(opened); at != std::string::npos; at = text.find(opened, at + 1)) {
            const std::size_t value = jsonValue(text, at + opened.size());
            if (value != std::string::npos) {
                takeOut(value, "\"\\");
            }
        }
    }
    for (const std::string& secret : m_secrets) {
        for (std::size_t at = text.find(secret); at != std::string::npos; at = text.find(secret, at + 3)) {
            text.replace(at, secret.size(), "***");
        }
    }
    return text;
}

void Redaction::remember(const std::string& value) {
    if (value.size() < shortestSecret || value == "***") {
        return;
    }
    if (m_secrets.size() >= mostSecrets) {
        m_secrets.erase(m_secrets.begin());
    }
    m_secrets.insert(value);
}
