#include "utilities/ClientUtils.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

int ClientUtils::stoi(const std::string& text) {
    // strtoll stops at the first character that is no digit and clamps by itself.
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    return static_cast<int>(
        std::clamp<long long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::string ClientUtils::int64tos(long long value) {
    return std::to_string(value);
}

void ClientUtils::tokenizeString(const std::string& text, const std::string& separator,
                                 std::vector<std::string>& tokens) {
    tokens.clear();
    if (text.empty()) {
        return;
    }
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = separator.empty() ? std::string::npos : text.find(separator, begin);
        tokens.push_back(text.substr(begin, end - begin));
        if (end == std::string::npos) {
            return;
        }
        begin = end + separator.size();
    }
}
