#include "transport/JsonProtocolAdapter.h"

#include "framework/Method.h"
#include "transport/PeerJson.h"

#include <iterator>
#include <limits>
#include <utility>

namespace {

using Json = nlohmann::ordered_json;

bool readDirection(const Json& element, Parameter::directions& direction) {
    const auto value = element.find("direction");
    if (value == element.end() || !value->is_number_integer()) {
        return false;
    }
    const auto number = value->get<long long>();
    direction = static_cast<Parameter::directions>(number);
    return number == Parameter::DIRECTION_IN || number == Parameter::DIRECTION_OUT;
}

bool readParameter(const Json& element, Method& method) {
    if (!element.is_object() || !element.contains("name") || !element["name"].is_string() ||
        !element.contains("kind") || !element["kind"].is_string() || !element.contains("value")) {
        return false;
    }
    Parameter::directions direction = Parameter::DIRECTION_IN;
    if (!readDirection(element, direction)) {
        return false;
    }
    const auto name = element["name"].get<std::string>();
    const auto kind = element["kind"].get<std::string>();
    const Json& value = element["value"];
    if (kind == "string" && value.is_string()) {
        method.addStringParameter(name, value.get<std::string>(), direction);
        return true;
    }
    if (kind == "bool" && value.is_boolean()) {
        method.addBoolParameter(name, value.get<bool>(), direction);
        return true;
    }
    if (kind == "int" && value.is_number_integer()) {
        // Beyond 64 bits the library keeps an unsigned number.
        const bool tooLarge =
            value.is_number_unsigned() &&
            value.get<unsigned long long>() > static_cast<unsigned long long>(std::numeric_limits<int>::max());
        const auto number = value.get<long long>();
        if (tooLarge || number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
            return false;
        }
        method.addIntParameter(name, static_cast<int>(number), direction);
        return true;
    }
    return false;
}

/// The word for the value's kind, and the value.
std::pair<const char*, Json> kindAndValue(const Parameter& parameter) {
    switch (parameter.kind) {
    case Parameter::Kind::STRING:
        return {"string", parameter.stringValue};
    case Parameter::Kind::BOOL:
        return {"bool", parameter.boolValue};
    case Parameter::Kind::INT:
        break;
    }
    return {"int", parameter.intValue};
}

Json writeParameter(const Parameter& parameter) {
    auto [kind, value] = kindAndValue(parameter);
    Json element = {{"name", parameter.name}};
    element["kind"] = kind;
    element["direction"] = static_cast<int>(parameter.direction);
    element["value"] = std::move(value);
    return element;
}

} // namespace

bool JsonProtocolAdapter::decode(std::istream& stream, Method& method) {
    const std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    const Json message = PeerJson::parse(text);
    if (!message.is_object() || !message.contains("name") || !message["name"].is_string() ||
        !message.contains("type") || !message["type"].is_number_integer()) {
        return false;
    }
    const auto type = message["type"].get<long long>();
    if (type != Method::REQUEST && type != Method::RESPONSE) {
        return false;
    }
    Method decoded(message["name"].get<std::string>(), static_cast<Method::methodTypes>(type));
    if (message.contains("parameters")) {
        if (!message["parameters"].is_array()) {
            return false;
        }
        for (const Json& element : message["parameters"]) {
            if (!readParameter(element, decoded)) {
                return false;
            }
        }
    }
    method = decoded;
    return true;
}

bool JsonProtocolAdapter::encode(std::ostream& stream, const Method& method) {
    Json parameters = Json::array();
    for (const Parameter& parameter : method.getParameters()) {
        parameters.push_back(writeParameter(parameter));
    }
    const Json message = {{"name", method.getName()},
                          {"type", static_cast<int>(method.getType())},
                          {"parameters", std::move(parameters)}};
    // Records can hold bytes that are no UTF-8: they are replaced, never a reason to fail.
    stream << message.dump(-1, ' ', false, Json::error_handler_t::replace);
    return stream.good();
}
