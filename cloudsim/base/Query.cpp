#include "base/Query.h"

namespace cloudsim {
namespace {

int hexDigit(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return -1;
}

} // namespace

std::string withoutEscapes(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 && hexDigit(text[i + 2]) >= 0) {
            result += static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2]));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    std::size_t begin = 0;
    while (true) {
        auto end = text.find(separator, begin);
        pieces.emplace_back(text.substr(begin, end == std::string_view::npos ? end : end - begin));
        if (end == std::string_view::npos)
            return pieces;
        begin = end + 1;
    }
}

Target splitTarget(std::string_view target) {
    Target result;
    auto mark = target.find('?');
    result.path = target.substr(0, mark);
    if (mark == std::string_view::npos)
        return result;
    result.queryText = target.substr(mark + 1);
    for (const auto& piece : split(result.queryText, '&')) {
        auto equals = piece.find('=');
        if (!piece.empty())
            result.query.emplace_back(withoutEscapes(piece.substr(0, equals)),
                                      equals == std::string::npos ? "" : withoutEscapes(piece.substr(equals + 1)));
    }
    return result;
}

const std::string* lastValue(const Query& query, std::string_view key) {
    for (auto entry = query.rbegin(); entry != query.rend(); ++entry)
        if (entry->first == key)
            return &entry->second;
    return nullptr;
}

std::vector<std::string> pathSegments(std::string_view path) {
    std::vector<std::string> segments;
    for (const auto& piece : split(path, '/'))
        if (!piece.empty())
            segments.push_back(withoutEscapes(piece));
    return segments;
}

bool fitsPattern(const std::vector<std::string>& segments, const std::vector<std::string>& pattern,
                 CapturedSegments& captured) {
    if (pattern.size() != segments.size())
        return false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i].front() == '{')
            captured[pattern[i].substr(1, pattern[i].size() - 2)] = segments[i];
        else if (pattern[i] != segments[i])
            return false;
    }
    return true;
}

} // namespace cloudsim
