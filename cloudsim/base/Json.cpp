#include "base/Json.h"

#include "base/BadInput.h"

namespace cloudsim {
namespace {

Json ordered(const Json& value, bool scalarsBefore) {
    if (value.is_array()) {
        Json result = Json::array();
        for (const auto& element : value)
            result.push_back(ordered(element, scalarsBefore));
        return result;
    }
    if (!value.is_object())
        return value;
    Json result = Json::object();
    for (bool scalarsNow : {scalarsBefore, !scalarsBefore})
        for (const auto& [key, member] : value.items())
            if (member.is_structured() != scalarsNow)
                result[key] = ordered(member, scalarsBefore);
    return result;
}

void require(bool condition, const std::string& place, const char* what) {
    if (!condition)
        throw BadInput((place.empty() ? "" : place + ": ") + what);
}

} // namespace

Json scalarsFirst(const Json& value) {
    return ordered(value, true);
}

Json nestedFirst(const Json& value) {
    return ordered(value, false);
}

Json fromText(const std::string& text) {
    return nestsTooDeeply(text) ? Json(Json::value_t::discarded) : Json::parse(text, nullptr, false);
}

bool nestsTooDeeply(const std::string& text) {
    constexpr int deepest = 100;
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size() && depth <= deepest; ++i) {
        const char letter = text[i];
        if (inString && letter == '\\')
            ++i;
        else if (letter == '"')
            inString = !inString;
        else if (!inString && (letter == '[' || letter == '{'))
            ++depth;
        else if (!inString && (letter == ']' || letter == '}'))
            --depth;
    }
    return depth > deepest;
}

std::string toText(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string textMember(const Json& object, const char* key, const std::string& otherwise) {
    auto member = object.find(key);
    return member != object.end() && member->is_string() ? member->get<std::string>() : otherwise;
}

std::int64_t requireNumber(const Json& value, const std::string& place, const NumberLimits& limits) {
    bool fits = value.is_number_integer() && value.get<std::int64_t>() >= limits.lowest &&
                value.get<std::int64_t>() <= limits.highest;
    require(fits, place, "must be a number");
    return value;
}

bool requireFlag(const Json& value, const std::string& place) {
    require(value.is_boolean(), place, "must be true or false");
    return value;
}

std::string requireText(const Json& value, const std::string& place) {
    require(value.is_string(), place, "must be a text");
    return value;
}

std::int64_t numberMember(const Json& object, const char* key, std::int64_t otherwise, const NumberLimits& limits) {
    return object.contains(key) ? requireNumber(object[key], key, limits) : otherwise;
}

bool flagMember(const Json& object, const char* key, bool otherwise) {
    return object.contains(key) ? requireFlag(object[key], key) : otherwise;
}

} // namespace cloudsim
