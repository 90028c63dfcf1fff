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

std::string toText(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string textMember(const Json& object, const char* key, const std::string& otherwise) {
    auto member = object.find(key);
    return member != object.end() && member->is_string() ? member->get<std::string>() : otherwise;
}

} // namespace cloudsim
