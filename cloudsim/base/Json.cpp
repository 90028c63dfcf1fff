#include "base/Json.h"

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

} // namespace cloudsim
