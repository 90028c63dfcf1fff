#pragma once

#include "network/HttpClientIfc.h"

#include <cstddef>
#include <optional>
#include <string>

/// What makes up one request.
struct HttpRequestText {
    HttpClientIfc::HTTPMETHOD method = HttpClientIfc::HTTP_GET;
    std::string target;
    std::string host; ///< value of the Host header
    std::string contentType;
    std::size_t bodyLength = 0;
    bool persistent = true;

    /// Request line and headers with the empty line at their end (RFC 9112). A header in `headers` replaces the one
    /// that would be made here, but for the length. Empty with a reason in `error` when something would not survive
    /// its way as one request: no target, a control character, a name that is no token.
    std::optional<std::string> compose(const HttpClientIfc::Headers& headers, std::string& error) const;
};
