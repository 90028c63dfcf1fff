#pragma once

#include <deque>
#include <string>

/// Takes the values of bearer tokens, WebSocket tokens and session context tokens out of log messages: they read "***".
/// They are known by what stands before them (headers, URLs, JSON, the service's own lines); a value that was seen once
/// is taken out wherever it turns up again. Not safe for use by several threads at once.
class Redaction {
public:
    std::string redact(const std::string& message);

private:
    void takeMarkedOut(std::string& text);
    void takeJsonMembersOut(std::string& text);
    void takeOut(std::string& text, std::size_t begin, std::size_t end);
    void remember(const std::string& value);

    std::deque<std::string> m_secrets; ///< the oldest first
};
