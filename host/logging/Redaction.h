#pragma once

#include <set>
#include <string>

/// Takes the values of bearer tokens, WebSocket tokens and session context tokens out of log messages: they read "***".
/// They are known by what stands before them (headers, URLs, JSON, the service's own lines); a value that was seen once
/// is taken out wherever it turns up again. Not safe for use by several threads at once.
class Redaction {
public:
    std::string redact(const std::string& message);

private:
    void remember(const std::string& value);

    std::set<std::string> m_secrets;
};
