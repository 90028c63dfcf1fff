#include "model/AccountData.h"

#include "base/BadInput.h"

#include <fstream>
#include <limits>
#include <set>
#include <sstream>

namespace cloudsim {
namespace {

struct NumberSetting {
    const char* name;
    int Settings::* member;
};

constexpr NumberSetting numberSettings[] = {
    {"tokenLifetimeSeconds", &Settings::tokenLifetimeSeconds},
    {"socketTokenLifetimeSeconds", &Settings::socketTokenLifetimeSeconds},
    {"grantsPerPage", &Settings::grantsPerPage},
    {"subscriptionLifetimeSeconds", &Settings::subscriptionLifetimeSeconds},
    {"idleTimeoutSeconds", &Settings::idleTimeoutSeconds},
    {"absoluteTimeoutSeconds", &Settings::absoluteTimeoutSeconds},
    {"recoveryTimeoutSeconds", &Settings::recoveryTimeoutSeconds},
    {"recoveryBufferSize", &Settings::recoveryBufferSize},
    {"maxConnectionsPerSession", &Settings::maxConnectionsPerSession},
};
constexpr const char* keepsCreationTime = "renewalKeepsCreationTime";

[[noreturn]] void refuse(const std::string& place, const std::string& what) {
    throw BadInput((place.empty() ? "" : place + ": ") + what);
}

std::string inside(const std::string& place, const std::string& member) {
    return place.empty() ? member : place + "." + member;
}

std::string element(const std::string& place, std::size_t index) {
    return place + "[" + std::to_string(index) + "]";
}

void requireObject(const Json& json, const std::string& place) {
    if (!json.is_object())
        refuse(place, "must be an object");
}

void requireKnown(const Json& object, const std::string& place, const std::set<std::string>& names) {
    for (const auto& [key, value] : object.items())
        if (names.count(key) == 0)
            refuse(inside(place, key), "is not known here");
}

std::string requiredText(const Json& object, const std::string& place, const char* key) {
    auto member = object.find(key);
    if (member == object.end() || !member->is_string() || member->get<std::string>().empty())
        refuse(inside(place, key), "must be a text");
    return *member;
}

std::string optionalText(const Json& object, const std::string& place, const char* key, const std::string& otherwise) {
    return object.contains(key) ? requiredText(object, place, key) : otherwise;
}

std::int64_t requiredInteger(const Json& object, const std::string& place, const char* key) {
    auto member = object.find(key);
    if (member == object.end() || !member->is_number_integer())
        refuse(inside(place, key), "must be an integer");
    return *member;
}

const Json& listMember(const Json& object, const std::string& place, const char* key) {
    static const Json none = Json::array();
    auto member = object.find(key);
    if (member == object.end())
        return none;
    if (!member->is_array())
        refuse(inside(place, key), "must be a list");
    return *member;
}

void checkCall(const Json& call, const std::string& place) {
    requireObject(call, place);
    for (const char* key : {"id", "sessionId", "telephonySessionId", "startTime", "direction", "action", "result"})
        optionalText(call, place, key, "");
    if (call.contains("duration"))
        requiredInteger(call, place, "duration");
    for (const char* key : {"from", "to", "delegate"})
        if (call.contains(key))
            requireObject(call[key], inside(place, key));
}

void checkContact(const Json& contact, const std::string& place) {
    requireObject(contact, place);
    if (contact.contains("id"))
        requiredInteger(contact, place, "id");
    for (const auto& [key, value] : contact.items())
        if (key != "id")
            requiredText(contact, place, key.c_str());
}

std::string dndStatusMember(const Json& json, const std::string& place) {
    std::string status = optionalText(json, place, "dndStatus", "TakeAllCalls");
    if (!isDndStatus(status))
        refuse(inside(place, "dndStatus"), "is no status: '" + status + "'");
    return status;
}

} // namespace

bool isDndStatus(const std::string& text) {
    return text == "TakeAllCalls" || text == "DoNotAcceptAnyCalls" || text == "DoNotAcceptDepartmentCalls" ||
           text == "TakeDepartmentCallsOnly";
}

Json toJson(const Settings& settings) {
    Json json = Json::object();
    for (const auto& setting : numberSettings)
        json[setting.name] = settings.*setting.member;
    json[keepsCreationTime] = settings.renewalKeepsCreationTime;
    return json;
}

void changeSettings(Settings& settings, const Json& members, const std::string& place) {
    requireObject(members, place);
    Settings changed = settings;
    for (const auto& [key, value] : members.items()) {
        if (key == keepsCreationTime) {
            changed.renewalKeepsCreationTime = requireFlag(value, inside(place, key));
            continue;
        }
        const auto* setting = std::find_if(std::begin(numberSettings), std::end(numberSettings),
                                           [&key = key](const NumberSetting& entry) { return key == entry.name; });
        if (setting == std::end(numberSettings))
            refuse(inside(place, key), "is no setting");
        changed.*setting->member =
            static_cast<int>(requireNumber(value, inside(place, key), {0, std::numeric_limits<int>::max()}));
    }
    if (changed.grantsPerPage == 0)
        refuse(inside(place, "grantsPerPage"), "must be 1 or more");
    settings = changed;
}

Json toJson(const Device& device) {
    Json json{{"model", device.model}, {"mac", device.mac}, {"extensionId", device.extensionId}};
    if (!device.certificateName.empty())
        json["certificateName"] = device.certificateName;
    return json;
}

Device deviceFromJson(const Json& json, const std::string& place) {
    requireObject(json, place);
    requireKnown(json, place, {"model", "mac", "extensionId", "certificateName"});
    return {requiredText(json, place, "model"), requiredText(json, place, "mac"),
            requiredInteger(json, place, "extensionId"), optionalText(json, place, "certificateName", "")};
}

Json toJson(const Extension& extension) {
    Json json{{"id", extension.id}, {"number", extension.number}, {"name", extension.name}, {"type", extension.type}};
    if (!extension.phoneNumber.empty())
        json["phoneNumber"] = extension.phoneNumber;
    json["dndStatus"] = extension.dndStatus;
    json["userStatus"] = extension.userStatus;
    json["grants"] = extension.grants;
    json["calls"] = extension.calls.newest(std::numeric_limits<std::size_t>::max());
    json["contacts"] = extension.contacts.all();
    return json;
}

Extension extensionFromJson(const Json& json, const std::string& place) {
    requireObject(json, place);
    requireKnown(
        json, place,
        {"id", "number", "name", "type", "phoneNumber", "dndStatus", "userStatus", "grants", "calls", "contacts"});
    Extension extension;
    extension.id = requiredInteger(json, place, "id");
    extension.calls = CallLog(extension.id);
    extension.number = requiredText(json, place, "number");
    extension.name = requiredText(json, place, "name");
    extension.type = optionalText(json, place, "type", "User");
    extension.phoneNumber = optionalText(json, place, "phoneNumber", "");
    extension.dndStatus = dndStatusMember(json, place);
    extension.userStatus = optionalText(json, place, "userStatus", "Available");
    for (const auto& grant : listMember(json, place, "grants")) {
        if (!grant.is_number_integer())
            refuse(inside(place, "grants"), "must be a list of extension ids");
        extension.grants.push_back(grant);
    }
    std::size_t index = 0;
    for (const auto& call : listMember(json, place, "calls")) {
        checkCall(call, element(inside(place, "calls"), index++));
        extension.calls.add(call);
    }
    index = 0;
    for (const auto& contact : listMember(json, place, "contacts")) {
        checkContact(contact, element(inside(place, "contacts"), index++));
        extension.contacts.add(contact);
    }
    return extension;
}

Json toJson(const State& state) {
    Json json{{"accountId", state.accountId}, {"settings", toJson(state.settings)}};
    json["devices"] = Json::array();
    for (const auto& device : state.devices)
        json["devices"].push_back(toJson(device));
    json["extensions"] = Json::array();
    for (const auto& [id, extension] : state.extensions)
        json["extensions"].push_back(toJson(extension));
    return json;
}

State stateFromJson(const Json& json) {
    requireObject(json, "account");
    requireKnown(json, "", {"accountId", "settings", "devices", "extensions"});
    State state;
    if (json.contains("accountId"))
        state.accountId = requiredInteger(json, "", "accountId");
    if (json.contains("settings"))
        changeSettings(state.settings, json["settings"], "settings");
    std::size_t index = 0;
    for (const auto& entry : listMember(json, "", "extensions")) {
        std::string place = element("extensions", index++);
        Extension extension = extensionFromJson(entry, place);
        auto id = extension.id;
        if (!state.extensions.emplace(id, std::move(extension)).second)
            refuse(place + ".id", "occurs twice");
    }
    index = 0;
    for (const auto& entry : listMember(json, "", "devices")) {
        std::string place = element("devices", index++);
        Device device = deviceFromJson(entry, place);
        if (state.findExtension(device.extensionId) == nullptr)
            refuse(place + ".extensionId", "is no extension");
        if (state.findDevice(device.model, device.mac) != nullptr)
            refuse(place, "occurs twice");
        state.devices.push_back(std::move(device));
    }
    for (const auto& [id, extension] : state.extensions)
        for (auto grant : extension.grants)
            if (state.findExtension(grant) == nullptr)
                refuse("extension " + std::to_string(id), "grant " + std::to_string(grant) + " is no extension");
    return state;
}

State readAccountFile(const std::string& path) {
    std::ifstream file(path);
    std::stringstream text;
    if (!file || !(text << file.rdbuf()))
        throw BadInput("cannot read the account file " + path);
    if (nestsTooDeeply(text.str()))
        throw BadInput(path + ": nests too deeply");
    try {
        return stateFromJson(Json::parse(text.str()));
    } catch (const Json::parse_error& error) {
        throw BadInput(path + ": no JSON at byte " + std::to_string(error.byte));
    } catch (const BadInput& error) {
        throw BadInput(path + ": " + error.what());
    }
}

} // namespace cloudsim
