#include "orvane-phone/Commands.h"

#include "OrvaneServiceIfc.h"
#include "data/ItemNames.h"
#include "data/LocalMgmt.h"
#include "data/PldsTags.h"
#include "events/JsonLine.h"
#include "logging/HostLog.h"
#include "network/NetworkControl.h"
#include "orvane-phone/Output.h"
#include "siblings/CommunicationsServiceEventIfc.h"
#include "siblings/HostSiblings.h"
#include "siblings/SiblingThread.h"
#include "siblings/TeamServiceEventIfc.h"
#include "transport/LineConnection.h"
#include "transport/PeerJson.h"
#include "transport/RemoteFramework.h"

#include <limits>
#include <optional>

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* storeFailure = "the store cannot be written";
constexpr const char* unreadable = "the command cannot be read";

using Number = std::numeric_limits<long long>;

/// The whole number, if it fits: the JSON library would cut off what does not.
std::optional<long long> wholeNumber(const Json& value, long long lowest = Number::min(),
                                     long long highest = Number::max()) {
    const bool isTooLarge =
        value.is_number_unsigned() && value.get<unsigned long long>() > static_cast<unsigned long long>(Number::max());
    if (!value.is_number_integer() || isTooLarge) {
        return std::nullopt;
    }
    const auto number = value.get<long long>();
    return number < lowest || number > highest ? std::nullopt : std::make_optional(number);
}

/// For those who look at the telephone: what was not written by the service is not reported.
void tellStored(const Commands::Parts& parts, const std::string& key) {
    parts.output->stored(ItemNames::nameOf(key), parts.store->get(key));
}

Json status(const Commands::Parts& parts) {
    Json items = Json::object();
    for (const auto& [key, value] : parts.store->all()) {
        items[ItemNames::nameOf(key)] = value;
    }
    return {{"running", parts.service->isRunning()}, {"items", items}};
}

Json configure(const Commands::Parts& parts, const Json& request, std::string& error) {
    std::vector<std::pair<std::string, std::string>> items;
    for (const Json& item : request.at("items")) {
        const auto key = ItemNames::keyOf(item.at("name").get<std::string>());
        if (!key) {
            error = "there is no item " + item.at("name").get<std::string>();
            return {};
        }
        items.emplace_back(*key, item.at("value").get<std::string>());
    }
    Json refused = Json::array();
    for (const LocalMgmt::Refusal& refusal : parts.store->configure(items, request.at("group").get<std::string>())) {
        refused.push_back(
            {{"name", refusal.key.empty() ? "" : ItemNames::nameOf(refusal.key)}, {"reason", refusal.reason}});
    }
    for (const auto& entry : items) {
        tellStored(parts, entry.first);
    }
    return {{"refused", refused}};
}

Json item(const Commands::Parts& parts, const Json& request, std::string& error) {
    const auto name = request.at("name").get<std::string>();
    const auto key = ItemNames::keyOf(name);
    if (!key) {
        error = "there is no item " + name;
        return {};
    }
    if (request.contains("value")) {
        if (!parts.store->change(*key, request.at("value").get<std::string>())) {
            error = storeFailure;
            return {};
        }
        tellStored(parts, *key);
    }
    return {{"name", name}, {"value", parts.store->get(*key)}};
}

/// First the network itself, both ways: when the service hears of it, nothing gets through any more, or everything does
/// again.
Json interfaceStatus(const Commands::Parts& parts, const Json& request, std::string& error) {
    const bool up = request.at("up").get<bool>();
    NetworkControl& network = NetworkControl::instance();
    const bool wasUp = network.isInterfaceUp();
    network.setInterfaceUp(up);
    if (!parts.store->change(PldsTags::INTERFACE_STATUS, up ? "up" : "down")) {
        network.setInterfaceUp(wasUp);
        error = storeFailure;
        return {};
    }
    tellStored(parts, PldsTags::INTERFACE_STATUS);
    return Json::object();
}

Json overview(const Commands::Parts& parts, const Json& request, std::string& error) {
    TeamServiceEventIfc* listener = parts.team->listener();
    if (listener == nullptr) {
        error = "the service does not listen to a team service";
        return {};
    }
    const auto uri = request.at("uri").get<std::string>();
    const auto description = request.at("description").get<std::string>();
    const bool visible = request.at("visible").get<bool>();
    using Position = std::numeric_limits<int>;
    const auto position = wholeNumber(request.at("position"), Position::min(), Position::max());
    const auto alert = wholeNumber(request.at("alert"), LINE_VISUAL_ALERT_NONE, LINE_VISUAL_ALERT_POPUP);
    if (!position || !alert) {
        error = unreadable;
        return {};
    }
    parts.siblings->raise([=] {
        listener->overviewChangedNotification(uri, description, visible, static_cast<int>(*position),
                                              static_cast<ELineVisualAlert>(*alert));
    });
    return Json::object();
}

Json communicationsEvent(const Commands::Parts& parts, const Json& request, std::string& error) {
    CommunicationsServiceEventIfc* listener = parts.communications->listener();
    if (listener == nullptr) {
        error = "the service does not listen to a communications service";
        return {};
    }
    if (request.contains("status")) {
        const auto text = request.at("status").get<std::string>();
        const auto info = request.at("info").get<std::string>();
        parts.siblings->raise([=] { listener->systemStatusChange(text, info); });
    } else {
        parts.siblings->raise([=] { listener->devicesChanged(); });
    }
    return Json::object();
}

/// The command's reply, or `error` filled.
Json run(const Commands::Parts& parts, const Json& request, std::string& error) {
    const auto command = request.at("command").get<std::string>();
    if (command == "status") {
        return status(parts);
    }
    if (command == "interface") {
        return interfaceStatus(parts, request, error);
    }
    if (command == "overview") {
        return overview(parts, request, error);
    }
    if (command == "devices-changed" || command == "system-status") {
        return communicationsEvent(parts, request, error);
    }
    if (command == "configure") {
        return configure(parts, request, error);
    }
    if (command == "item") {
        return item(parts, request, error);
    }
    if (command == "reset-user-data") {
        return {{"result", parts.store->resetUserData()}};
    }
    error = "there is no command " + command;
    return {};
}

Json answerTo(const Commands::Parts& parts, const Json& request, long long sequence) {
    Json reply;
    std::string error;
    try {
        reply = run(parts, request, error);
    } catch (const Json::exception&) {
        error = unreadable;
    }
    if (error.empty()) {
        return {{"seq", sequence}, {"reply", std::move(reply)}};
    }
    return {{"seq", sequence}, {"error", error}};
}

} // namespace

void Commands::open() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_open = true;
    m_changed.notify_all();
}

void Commands::close() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_closed = true;
    m_changed.notify_all();
}

bool Commands::waitUntilOpen() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_open || m_closed; });
    return !m_closed;
}

void Commands::handle(LineConnection& connection, const std::string& line) {
    const Json request = PeerJson::parse(line);
    const auto sequence = request.is_object() && request.contains("seq") ? wholeNumber(request["seq"]) : std::nullopt;
    if (!sequence) {
        HOST_LOG(HostLog::ERROR, "%s sent a message of %zu bytes that cannot be read", connection.name().c_str(),
                 line.size());
        connection.send("{\"error\":\"the message cannot be read\"}");
        return;
    }
    if (!waitUntilOpen()) {
        return;
    }
    const bool isRaw = request.contains("raw") && request["raw"].is_string();
    if (!isRaw && !request.contains("method")) {
        connection.send(jsonLine(answerTo(m_parts, request, *sequence)));
    } else if (m_parts.remote->isCallable()) {
        m_parts.remote->call(connection, *sequence,
                             isRaw ? request["raw"].get<std::string>() : jsonLine(request["method"]));
    } else {
        connection.send(jsonLine(
            Json{{"seq", *sequence},
                 {"error", "the service's library has no createOrvaneServiceInvoker: nothing can be called"}}));
    }
}

void Commands::clientEnded(LineConnection& connection) {
    m_parts.remote->dropSubscriber(connection);
}
