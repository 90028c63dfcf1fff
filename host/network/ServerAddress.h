#pragma once

#include <optional>
#include <string>

/// A server as a person or a redirection names it: "https://host[:port][/...]", or a bare host with an optional port,
/// IPv6 addresses in brackets.
struct ServerAddress {
    std::string host; ///< without brackets, in lower case
    std::string port; ///< in decimal, 443 when none is given
    std::string path; ///< what follows host and port, with its query and without a fragment; may be empty
    bool isIpAddress = false;

    /// Reads `text`, which may carry `scheme` ("https", "wss") and no other one. Empty with a reason in `error` when
    /// it names no server; the reason never repeats what follows the host, which may hold a token.
    static std::optional<ServerAddress> parse(const std::string& text, const std::string& scheme, std::string& error);

    /// Host and port as the Host header has them: the port is left out when it is 443.
    static std::string hostHeader(const std::string& host, const std::string& port);

    /// Host and port for a person.
    std::string text() const;
};
