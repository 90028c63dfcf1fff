#include "net/HttpMessage.h"

#include <algorithm>
#include <cctype>

namespace cloudsim {

std::string toLower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](unsigned char c) { return std::tolower(c); });
    return result;
}

const std::string* HttpRequest::header(std::string_view name) const {
    std::string wanted = toLower(name);
    for (const auto& [key, value] : headers)
        if (toLower(key) == wanted)
            return &value;
    return nullptr;
}

const char* reasonPhrase(int status) {
    switch (status) {
    case 101:
        return "Switching Protocols";
    case 200:
        return "OK";
    case 201:
        return "Created";
    case 204:
        return "No Content";
    case 301:
        return "Moved Permanently";
    case 302:
        return "Found";
    case 304:
        return "Not Modified";
    case 307:
        return "Temporary Redirect";
    case 308:
        return "Permanent Redirect";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 409:
        return "Conflict";
    case 413:
        return "Payload Too Large";
    case 426:
        return "Upgrade Required";
    case 429:
        return "Too Many Requests";
    case 500:
        return "Internal Server Error";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}

bool hasBody(int status) {
    return status != 204 && status != 304;
}

std::string responseHead(const HttpResponse& response, bool chunked) {
    std::string head = "HTTP/1.1 " + std::to_string(response.status) + " " + reasonPhrase(response.status) + "\r\n";
    for (const auto& [name, value] : response.headers)
        head += name + ": " + value + "\r\n";
    if (response.closes)
        head += "Connection: close\r\n";
    if (chunked)
        head += "Transfer-Encoding: chunked\r\n";
    else if (response.status >= 200 && hasBody(response.status))
        head += "Content-Length: " + std::to_string(response.body.size()) + "\r\n";
    return head + "\r\n";
}

std::string responseText(const HttpResponse& response) {
    return responseHead(response) + (hasBody(response.status) ? response.body : "");
}

} // namespace cloudsim
