#include "logging/Redaction.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

const std::string replacement = "***";

constexpr std::size_t shortestSecret = 8; ///< a shorter value would take out ordinary text elsewhere
constexpr std::size_t mostSecrets = 32;   ///< tokens are replaced all the time; the old ones are worth nothing

/// What stands before a value, and the characters that end it.
struct Marker {
    const char* before;
    const char* ends;
};

constexpr std::array<Marker, 8> markers = {{
    {"accessToken[", "]"},
    {"AccessToken[", "]"},
    {"Session Context: token[", "]"},
    {"Bearer ", " \t\r\n\"\\],;"},
    {"bearer ", " \t\r\n\"\\],;"},
    {"access_token=", "&# \t\r\n\"\\]"},
    {"&wsc=", "&# \t\r\n\"\\]"},
    {"?wsc=", "&# \t\r\n\"\\]"},
}};

/// JSON members whose text is a secret. "token" is the one of a session context.
constexpr std::array<const char*, 4> jsonKeys = {"accessToken", "ws_access_token", "access_token", "token"};

std::size_t behindBlanks(const std::string& text, std::size_t position) {
    const std::size_t found = text.find_first_not_of(" \t\r\n", position);
    return found == std::string::npos ? text.size() : found;
}

/// Moves `position` behind a quote that may be escaped, and counts its backslashes. False when there is none.
bool passQuote(const std::string& text, std::size_t& position, std::size_t& backslashes) {
    const std::size_t begin = position;
    while (position < text.size() && text[position] == '\\') {
        ++position;
    }
    backslashes = position - begin;
    return position < text.size() && text[position++] == '"';
}

/// Moves `position` from behind a member's key to the beginning of its text. False when no text follows.
bool passToText(const std::string& text, std::size_t& position, std::size_t& backslashes) {
    if (!passQuote(text, position, backslashes)) {
        return false;
    }
    position = behindBlanks(text, position);
    if (position >= text.size() || text[position] != ':') {
        return false;
    }
    position = behindBlanks(text, position + 1);
    return passQuote(text, position, backslashes);
}

/// End of a JSON text: its quote has no more backslashes than the one that began it. The text of a cut message ends
/// with the message.
std::size_t endOfText(const std::string& text, std::size_t begin, std::size_t backslashes) {
    for (std::size_t quote = text.find('"', begin); quote != std::string::npos; quote = text.find('"', quote + 1)) {
        std::size_t end = quote;
        while (end > begin && text[end - 1] == '\\') {
            --end;
        }
        if (quote - end <= backslashes) {
            return end;
        }
    }
    return text.size();
}

/// The value without the backslashes that JSON allows before a slash.
std::string withoutBackslashes(std::string value) {
    value.erase(std::remove(value.begin(), value.end(), '\\'), value.end());
    return value;
}

} // namespace

std::string Redaction::redact(const std::string& message) {
    std::string text = message;
    takeJsonMembersOut(text);
    takeMarkedOut(text);
    for (const std::string& secret : m_secrets) {
        for (std::size_t at = text.find(secret); at != std::string::npos;
             at = text.find(secret, at + replacement.size())) {
            text.replace(at, secret.size(), replacement);
        }
    }
    return text;
}

void Redaction::takeMarkedOut(std::string& text) {
    for (const Marker& marker : markers) {
        const std::size_t length = std::strlen(marker.before);
        for (std::size_t at = text.find(marker.before); at != std::string::npos;
             at = text.find(marker.before, at + length)) {
            takeOut(text, at + length, std::min(text.find_first_of(marker.ends, at + length), text.size()));
        }
    }
}

void Redaction::takeJsonMembersOut(std::string& text) {
    for (const char* key : jsonKeys) {
        const std::string opened = "\"" + std::string(key);
        for (std::size_t at = text.find(opened); at != std::string::npos; at = text.find(opened, at + 1)) {
            std::size_t begin = at + opened.size();
            std::size_t backslashes = 0;
            if (passToText(text, begin, backslashes)) {
                takeOut(text, begin, endOfText(text, begin, backslashes));
            }
        }
    }
}

void Redaction::takeOut(std::string& text, std::size_t begin, std::size_t end) {
    if (end > begin) {
        const std::string value = text.substr(begin, end - begin);
        remember(value);
        remember(withoutBackslashes(value));
        text.replace(begin, end - begin, replacement);
    }
}

void Redaction::remember(const std::string& value) {
    if (value.size() < shortestSecret || std::find(m_secrets.begin(), m_secrets.end(), value) != m_secrets.end()) {
        return;
    }
    if (m_secrets.size() >= mostSecrets) {
        m_secrets.pop_front();
    }
    m_secrets.push_back(value);
}
