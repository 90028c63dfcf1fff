#include "network/ServerAddress.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>

namespace {

constexpr const char* defaultPort = "443";
constexpr std::size_t maximumHostLength = 253;

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

bool isAddress(int family, const std::string& text) {
    unsigned char bytes[16];
    return inet_pton(family, text.c_str(), bytes) == 1;
}

bool isHostName(const std::string& text) {
    return !text.empty() && text.size() <= maximumHostLength && text.front() != '.' && text.front() != '-' &&
           std::all_of(text.begin(), text.end(), [](unsigned char letter) {
               return std::isalnum(letter) != 0 || letter == '-' || letter == '.' || letter == '_';
           });
}

bool isPort(const std::string& text) {
    if (text.empty() || text.size() > 5 ||
        !std::all_of(text.begin(), text.end(), [](unsigned char letter) { return letter >= '0' && letter <= '9'; })) {
        return false;
    }
    const int number = std::stoi(text);
    return number >= 1 && number <= 65535;
}

/// Takes "scheme://" off the front. False when the text has another scheme.
bool takeScheme(std::string& text, const std::string& scheme) {
    const std::size_t separator = text.find("://");
    if (separator == std::string::npos || text.find_first_of("/?#") < separator) {
        return true;
    }
    if (lowerCase(text.substr(0, separator)) != scheme) {
        return false;
    }
    text.erase(0, separator + 3);
    return true;
}

/// Splits "host:port" or "[address]:port"; a port that is not there stays empty.
bool splitPort(const std::string& authority, ServerAddress& address, std::string& port) {
    std::size_t end = 0;
    if (!authority.empty() && authority.front() == '[') {
        end = authority.find(']');
        if (end == std::string::npos) {
            return false;
        }
        address.host = lowerCase(authority.substr(1, end - 1));
        address.isIpAddress = isAddress(AF_INET6, address.host);
        if (!address.isIpAddress) {
            return false;
        }
        ++end;
    } else {
        end = std::min(authority.find(':'), authority.size());
        address.host = lowerCase(authority.substr(0, end));
        address.isIpAddress = isAddress(AF_INET, address.host);
        if (!isHostName(address.host)) {
            return false;
        }
    }
    if (end == authority.size()) {
        port = defaultPort;
        return true;
    }
    port = authority.substr(end + 1);
    return authority[end] == ':';
}

} // namespace

std::optional<ServerAddress> ServerAddress::parse(const std::string& text, const std::string& scheme,
                                                  std::string& error) {
    std::string rest = text;
    if (!takeScheme(rest, scheme)) {
        error = "only " + scheme + " is supported";
        return std::nullopt;
    }
    ServerAddress address;
    const std::size_t end = std::min(rest.find_first_of("/?#"), rest.size());
    address.path = rest.substr(end);
    address.path.erase(std::min(address.path.find('#'), address.path.size()));
    if (!splitPort(rest.substr(0, end), address, address.port)) {
        error = "it names no host";
        return std::nullopt;
    }
    if (!isPort(address.port)) {
        error = "its port is no number from 1 to 65535";
        return std::nullopt;
    }
    return address;
}

std::string ServerAddress::hostHeader(const std::string& host, const std::string& port) {
    std::string header = host.find(':') == std::string::npos ? host : "[" + host + "]";
    if (port != defaultPort && !port.empty()) {
        header += ":" + port;
    }
    return header;
}

std::string ServerAddress::text() const {
    return (host.find(':') == std::string::npos ? host : "[" + host + "]") + ":" + port;
}
