#include "network/HttpRequestText.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <utility>

namespace {

const char* methodName(HttpClientIfc::HTTPMETHOD method) {
    switch (method) {
    case HttpClientIfc::HTTP_GET:
        return "GET";
    case HttpClientIfc::HTTP_POST:
        return "POST";
    case HttpClientIfc::HTTP_DELETE:
        return "DELETE";
    case HttpClientIfc::HTTP_PUT:
        return "PUT";
    }
    return nullptr;
}

bool hasControlCharacter(const std::string& text) {
    return std::any_of(text.begin(), text.end(),
                       [](unsigned char letter) { return (letter < 0x20 && letter != '\t') || letter == 0x7f; });
}

bool isToken(const std::string& name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char letter) {
        return std::isalnum(letter) != 0 || (letter != 0 && std::strchr("!#$%&'*+-.^_`|~", letter) != nullptr);
    });
}

bool isName(const std::string& name, const char* wanted) {
    return strcasecmp(name.c_str(), wanted) == 0;
}

bool hasName(const HttpClientIfc::Headers& headers, const char* wanted) {
    return std::any_of(headers.begin(), headers.end(),
                       [wanted](const auto& header) { return isName(header.first, wanted); });
}

} // namespace

std::optional<std::string> HttpRequestText::compose(const HttpClientIfc::Headers& headers, std::string& error) const {
    const char* name = methodName(method);
    if (name == nullptr) {
        error = "unknown method";
        return std::nullopt;
    }
    if (target.empty() || hasControlCharacter(target)) {
        error = target.empty() ? "empty target" : "control character in the target";
        return std::nullopt;
    }

    const std::pair<const char*, std::string> ownHeaders[] = {
        {"Host", host}, {"Content-Type", contentType}, {"Connection", persistent ? "" : "close"}};
    std::string text = std::string(name) + " " + target + " HTTP/1.1\r\n";
    for (const auto& header : ownHeaders) {
        if (!header.second.empty() && !hasName(headers, header.first)) {
            text += std::string(header.first) + ": " + header.second + "\r\n";
        }
    }
    if (bodyLength > 0 || method != HttpClientIfc::HTTP_GET) {
        text += "Content-Length: " + std::to_string(bodyLength) + "\r\n";
    }
    for (const auto& header : headers) {
        if (!isToken(header.first) || hasControlCharacter(header.second)) {
            error = "unfit header";
            return std::nullopt;
        }
        if (!isName(header.first, "Content-Length") && !isName(header.first, "Transfer-Encoding")) {
            text += header.first + ": " + header.second + "\r\n";
        }
    }
    return text + "\r\n";
}
