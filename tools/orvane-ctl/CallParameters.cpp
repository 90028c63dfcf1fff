#include "orvane-ctl/CallParameters.h"

#include "utilities/Serializer.h"

#include <map>
#include <set>
#include <sstream>
#include <utility>

namespace {

using Json = nlohmann::ordered_json;

enum class Kind { TEXT, FLAG, TEXT_SET };

Kind kindOf(const std::string& method, const std::string& parameter) {
    static const std::map<std::pair<std::string, std::string>, Kind> kinds = {
        {{"updateUserPresenceStatus", "newDndState"}, Kind::FLAG},
        {{"sipVoicemailStatusProcessed", "mwiIndicated"}, Kind::FLAG},
        {{"ageMissedCalls", "ids"}, Kind::TEXT_SET},
    };
    const auto entry = kinds.find({method, parameter});
    return entry == kinds.end() ? Kind::TEXT : entry->second;
}

/// Texts joined by "," in the form in which sets travel.
std::string serialSet(const std::string& joined) {
    std::set<std::string> texts;
    std::istringstream stream(joined);
    for (std::string text; std::getline(stream, text, ',');) {
        texts.insert(text);
    }
    return Serializer::serialize(texts);
}

} // namespace

bool splitPair(const std::string& text, std::string& name, std::string& value) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        return false;
    }
    name = text.substr(0, equals);
    value = text.substr(equals + 1);
    return true;
}

bool makeMethod(const std::string& method, const std::vector<std::string>& pairs, Json& message, std::string& error) {
    Json parameters = Json::array();
    for (const std::string& pair : pairs) {
        std::string name;
        std::string value;
        if (!splitPair(pair, name, value)) {
            error = "a parameter is NAME=VALUE, not " + pair;
            return false;
        }
        const Kind kind = kindOf(method, name);
        if (kind == Kind::FLAG && value != "true" && value != "false") {
            error = name + " is true or false, not " + value;
            return false;
        }
        Json parameter = {{"name", name}, {"kind", kind == Kind::FLAG ? "bool" : "string"}, {"direction", 0}};
        if (kind == Kind::FLAG) {
            parameter["value"] = value == "true";
        } else {
            parameter["value"] = kind == Kind::TEXT_SET ? serialSet(value) : value;
        }
        parameters.push_back(std::move(parameter));
    }
    message = {{"name", method}, {"type", 0}, {"parameters", std::move(parameters)}};
    return true;
}
