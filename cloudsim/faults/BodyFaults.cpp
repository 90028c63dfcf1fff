#include "faults/BodyFaults.h"

#include <algorithm>

namespace cloudsim {
namespace {

bool contains(const std::vector<std::string>& keys, const std::string& key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

Json withAnotherType(const Json& value) {
    if (value.is_string())
        return 7;
    if (value.is_structured())
        return "seven";
    return value.is_number() ? Json("7") : Json::array({7});
}

/// At any depth.
Json changedKeys(const Json& value, const FaultActions& actions) {
    if (value.is_array()) {
        Json result = Json::array();
        for (const auto& element : value)
            result.push_back(changedKeys(element, actions));
        return result;
    }
    if (!value.is_object())
        return value;
    Json result = Json::object();
    for (const auto& [key, member] : value.items()) {
        if (contains(actions.missing, key))
            continue;
        result[key] = contains(actions.wrongTypes, key) ? withAnotherType(member) : changedKeys(member, actions);
    }
    return result;
}

} // namespace

std::string spoiled(const std::string& body, const FaultActions& actions) {
    std::string text = body;
    Json json = Json::parse(body, nullptr, false);
    if (!json.is_discarded()) {
        json = changedKeys(json, actions);
        if (actions.nestedFirst)
            json = nestedFirst(json);
        if (json.is_object() && actions.hugeBodyBytes > body.size())
            json["padding"] = std::string(actions.hugeBodyBytes - body.size(), 'x');
        text = toText(json);
    }
    if (actions.malformed && !text.empty())
        text = text.substr(0, text.size() / 2) + "]}{\"";
    return text;
}

} // namespace cloudsim
