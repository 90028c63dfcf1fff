#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <limits>
#include <string>

namespace cloudsim {

/// Members keep the order in which they were set.
using Json = nlohmann::ordered_json;

/// A copy in which every object has its scalars before its arrays and objects. Readers that take the first match of a
/// key at any depth find an object's own members this way.
Json scalarsFirst(const Json& value);
/// The opposite: arrays and objects before scalars.
Json nestedFirst(const Json& value);

/// What a text from outside holds; discarded when it is no JSON, or when it nests too deeply.
Json fromText(const std::string& text);
/// Whether arrays and objects stand in each other deeper than anything of the provider's does. Values are copied and
/// written by recursion, which the stack has to bear.
bool nestsTooDeeply(const std::string& text);

/// Compact text; bytes that are no UTF-8 become U+FFFD.
std::string toText(const Json& value);

/// The member as a text, or `otherwise` when it is missing or something else.
std::string textMember(const Json& object, const char* key, const std::string& otherwise = {});

struct NumberLimits {
    std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    std::int64_t highest = std::numeric_limits<std::int64_t>::max();
};
constexpr NumberLimits notNegative{0};

/// The value as what it has to be. Throws BadInput when it is something else; `place`, which may be empty, is named.
std::int64_t requireNumber(const Json& value, const std::string& place, const NumberLimits& limits = {});
bool requireFlag(const Json& value, const std::string& place);
std::string requireText(const Json& value, const std::string& place);

/// The same for a member that may be missing.
std::int64_t numberMember(const Json& object, const char* key, std::int64_t otherwise, const NumberLimits& limits = {});
bool flagMember(const Json& object, const char* key, bool otherwise);

} // namespace cloudsim
