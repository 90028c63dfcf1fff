#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cloudsim {

using Query = std::vector<std::pair<std::string, std::string>>;

struct Target {
    std::string path; ///< as it stands, with escapes
    std::string queryText;
    Query query; ///< without escapes, in order, repeats included
};

Target splitTarget(std::string_view target);

/// The last occurrence counts; null when there is none.
const std::string* lastValue(const Query& query, std::string_view key);

/// The non-empty pieces between slashes, without escapes.
std::vector<std::string> pathSegments(std::string_view path);

/// The segments behind the braces of a pattern such as {"device", "{id}"}, by the names in them.
using CapturedSegments = std::map<std::string, std::string>;

/// Whether the segments fit the pattern. Captured ones are set by name even if others do not fit.
bool fitsPattern(const std::vector<std::string>& segments, const std::vector<std::string>& pattern,
                 CapturedSegments& captured);

std::string withoutEscapes(std::string_view text);

std::vector<std::string> split(std::string_view text, char separator);

} // namespace cloudsim
