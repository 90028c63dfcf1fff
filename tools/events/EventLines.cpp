#include "events/EventLines.h"

#include "events/JsonLine.h"

#include <nlohmann/json.hpp>

namespace EventLines {

namespace {

using Json = nlohmann::ordered_json;

std::string line(const Json& object) {
    return jsonLine(object);
}

} // namespace

std::string ready(const std::string& controlSocket) {
    return line({{"event", "ready"}, {"control", controlSocket}});
}

std::string stopped() {
    return line({{"event", "stopped"}});
}

std::string subscribed() {
    return line({{"event", "subscribed"}});
}

std::string synchronisation(const std::string& operation, int type, const std::vector<std::string>& data) {
    return line({{"event", operation}, {"type", type}, {"data", data}});
}

std::string orvaneEvent(int type) {
    return line({{"event", "orvaneEvent"}, {"type", type}});
}

std::string informUserEvent(const std::string& message, int type) {
    return line({{"event", "informUserEvent"}, {"msg", message}, {"type", type}});
}

std::string orvaneVoicemail(const std::map<std::string, OrvaneServiceTypes::Voicemail>& data) {
    Json lines = Json::object();
    for (const auto& [key, voicemail] : data) {
        lines[key] = {{"number", voicemail.number},
                      {"name", voicemail.name},
                      {"latestTimestamp", voicemail.latestTimestamp},
                      {"unreadVoicemailMessageCount", voicemail.unreadVoicemailMessageCount}};
    }
    return line({{"event", "orvaneVoicemail"}, {"data", lines}});
}

std::string item(const std::string& name, const std::string& value) {
    return line({{"event", "item"}, {"name", name}, {"value", value}});
}

std::string lamp(const std::string& uri, bool dnd) {
    return line({{"event", "lamp"}, {"uri", uri}, {"dnd", dnd}});
}

std::string journal() {
    return line({{"event", "journal"}});
}

std::string securityLog(bool success, const std::string& text) {
    return line({{"event", "securityLog"}, {"success", success}, {"text", text}});
}

} // namespace EventLines
