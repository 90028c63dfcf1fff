#include "network/TlsStream.h"

#include <algorithm>
#include <cctype>

std::string TlsStream::header(const std::string& head, const std::string& lowerCaseName) {
    const std::string wanted = "\r\n" + lowerCaseName + ":";
    const auto same = [](char left, char right) {
        return std::tolower(static_cast<unsigned char>(left)) == static_cast<unsigned char>(right);
    };
    const auto found = std::search(head.begin(), head.end(), wanted.begin(), wanted.end(), same);
    if (found == head.end()) {
        return std::string();
    }
    const std::size_t begin =
        head.find_first_not_of(' ', static_cast<std::size_t>(found - head.begin()) + wanted.size());
    return head.substr(begin, head.find("\r\n", begin) - begin);
}
