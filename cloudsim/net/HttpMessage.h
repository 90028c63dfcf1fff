#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cloudsim {

using Headers = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest {
    std::string method;
    std::string target;
    Headers headers;
    std::string body;
    bool keepAlive = true;

    /// The first value by its name in any case; null when there is none.
    const std::string* header(std::string_view name) const;
};

struct HttpResponse {
    int status = 200;
    Headers headers;
    std::string body;
    bool closes = false; ///< the connection ends behind it, and the head says so
};

std::string toLower(std::string_view text);
const char* reasonPhrase(int status);
/// False for the final answers that end with their head.
bool hasBody(int status);

/// Status line and headers, Content-Length or chunked coding included, with the empty line.
std::string responseHead(const HttpResponse& response, bool chunked = false);
std::string responseText(const HttpResponse& response);

} // namespace cloudsim
