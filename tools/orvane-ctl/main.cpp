#include "orvane-ctl/ControlClient.h"
#include "orvane-ctl/Observe.h"
#include "transport/ControlServer.h"
#include "utilities/Serializer.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Json = nlohmann::ordered_json;

/// Kinds of the parameters that the service's methods have; what is not listed passes as text.
const std::map<std::pair<std::string, std::string>, std::string> parameterKinds = {
    {{"updateUserPresenceStatus", "newDndState"}, "bool"},
    {{"sipVoicemailStatusProcessed", "mwiIndicated"}, "bool"},
    {{"ageMissedCalls", "ids"}, "set"},
};

std::string textOf(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// NAME=VALUE, split at the first "="; false when there is none.
bool split(const std::string& text, std::string& name, std::string& value) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        return false;
    }
    name = text.substr(0, equals);
    value = text.substr(equals + 1);
    return true;
}

/// A set given as texts joined by "," in the form that travels.
std::string serialSet(const std::string& joined) {
    std::set<std::string> texts;
    std::istringstream stream(joined);
    for (std::string text; std::getline(stream, text, ',');) {
        texts.insert(text);
    }
    return Serializer::serialize(texts);
}

Json parameterOf(const std::string& method, const std::string& name, const std::string& value) {
    const auto entry = parameterKinds.find({method, name});
    const std::string kind = entry == parameterKinds.end() ? "string" : entry->second;
    Json parameter = {{"name", name}, {"kind", kind == "bool" ? "bool" : "string"}, {"direction", 0}};
    if (kind == "bool" && (value == "true" || value == "false")) {
        parameter["value"] = value == "true";
    } else {
        parameter["kind"] = "string";
        parameter["value"] = kind == "set" ? serialSet(value) : value;
    }
    return parameter;
}

/// What one run of the program asks for.
struct Request {
    Json message;            ///< the line to send, without its number
    bool remoteCall = false; ///< the answer is a reply of the service, and then the end
};

/// Sends the request and prints its answer; the exit status.
int ask(ControlClient& client, Request request, int timeoutSeconds) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
    Json message = {{"seq", 1}};
    message.update(request.message);
    std::string line;
    Json reply = Json::object();
    ControlClient::Reading reading =
        client.send(textOf(message)) ? client.read(line, until) : ControlClient::Reading::ENDED;
    for (; reading == ControlClient::Reading::LINE; reading = client.read(line, until)) {
        const Json answer = Json::parse(line, nullptr, false);
        if (!answer.is_object() || answer.value("seq", 0) != 1) {
            continue;
        }
        if (answer.contains("error")) {
            std::cerr << "orvane-ctl: " << answer["error"].get<std::string>() << std::endl;
            return 1;
        }
        if (answer.contains("method")) {
            for (const Json& parameter : answer["method"].value("parameters", Json::array())) {
                reply[parameter.value("name", "")] = parameter["value"];
            }
        } else if (answer.contains("reply")) {
            reply = answer["reply"];
            break;
        } else if (answer.value("end", false)) {
            break;
        }
    }
    if (reading != ControlClient::Reading::LINE) {
        std::cerr << "orvane-ctl: "
                  << (reading == ControlClient::Reading::TIMEOUT ? "no answer in time" : "the telephone has ended")
                  << std::endl;
        return 1;
    }
    if (reply.contains("refused")) {
        for (const Json& refusal : reply["refused"]) {
            const auto name = refusal.value("name", "");
            std::cerr << "orvane-ctl: " << (name.empty() ? "" : name + ": ") << refusal.value("reason", "")
                      << std::endl;
        }
        return reply["refused"].empty() ? 0 : 1;
    }
    if (request.remoteCall || !reply.empty()) {
        std::cout << textOf(reply) << std::endl;
    }
    return 0;
}

int badUsage(const std::string& reason) {
    std::cerr << "orvane-ctl: " << reason << std::endl;
    return 2;
}

} // namespace

int main(int argumentCount, char** arguments) {
    CLI::App app("Calls a telephone's remote methods, observes it, and pushes its buttons.", "orvane-ctl");
    app.require_subcommand(1);
    std::string control = ControlServer::defaultPath();
    int timeoutSeconds = 60;
    app.add_option("--control", control, "the telephone's control socket")->capture_default_str();
    app.add_option("--timeout", timeoutSeconds, "seconds to wait for an answer")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();

    std::string first;
    std::string second;
    std::vector<std::string> pairs;
    CLI::App* call = app.add_subcommand("call", "call a remote method");
    call->add_option("METHOD", first, "name of the method")->required();
    call->add_option("NAME=VALUE", pairs, "parameters");
    CLI::App* raw = app.add_subcommand("raw", "hand a text to the service as it stands");
    raw->add_option("TEXT", first)->required();
    CLI::App* observer = app.add_subcommand("observe", "subscribe and print the events");
    CLI::App* status = app.add_subcommand("status", "print whether the service runs, and all items");
    std::string group = "orvane_config_group";
    CLI::App* configure = app.add_subcommand("configure", "deliver items to the service, then their group");
    configure->add_option("--group", group, "name of the group")->capture_default_str();
    configure->add_option("ITEM=VALUE", pairs)->required();
    CLI::App* item = app.add_subcommand("item", "print or change one item");
    item->add_option("NAME[=VALUE]", first)->required();
    CLI::App* interface = app.add_subcommand("interface", "take the network away or bring it back");
    interface->add_option("up|down", first)->required()->check(CLI::IsMember({"up", "down"}));
    bool visible = true;
    int position = 1;
    int alert = 0;
    CLI::App* overview = app.add_subcommand("overview", "tell the service of an overview key");
    overview->add_option("URI", first)->required();
    overview->add_option("DESCRIPTION", second)->required();
    overview->add_option("VISIBLE", visible);
    overview->add_option("POSITION", position);
    overview->add_option("ALERT", alert);
    CLI::App* devices = app.add_subcommand("devices-changed", "tell the service that the devices have changed");
    CLI::App* system = app.add_subcommand("system-status", "tell the service of the system's status");
    system->add_option("STATUS", first)->required();
    system->add_option("INFO", second);
    CLI::App* reset = app.add_subcommand("reset-user-data", "have the service forget its user");
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::Success& success) {
        return app.exit(success);
    } catch (const CLI::ParseError& parseError) {
        return badUsage(parseError.what());
    }

    Request request;
    if (*call) {
        Json parameters = Json::array();
        for (const std::string& pair : pairs) {
            std::string name;
            std::string value;
            if (!split(pair, name, value)) {
                return badUsage("a parameter is NAME=VALUE, not " + pair);
            }
            parameters.push_back(parameterOf(first, name, value));
        }
        request = {{{"method", {{"name", first}, {"type", 0}, {"parameters", parameters}}}}, true};
    } else if (*raw) {
        request = {{{"raw", first}}, true};
    } else if (*configure) {
        Json items = Json::array();
        for (const std::string& pair : pairs) {
            std::string name;
            std::string value;
            if (!split(pair, name, value)) {
                return badUsage("an item is ITEM=VALUE, not " + pair);
            }
            items.push_back({{"name", name}, {"value", value}});
        }
        request.message = {{"command", "configure"}, {"group", group}, {"items", items}};
    } else if (*item) {
        std::string name = first;
        std::string value;
        const bool write = split(first, name, value);
        request.message = {{"command", "item"}, {"name", name}};
        if (write) {
            request.message["value"] = value;
        }
    } else if (*interface) {
        request.message = {{"command", "interface"}, {"up", first == "up"}};
    } else if (*overview) {
        request.message = {{"command", "overview"}, {"uri", first},         {"description", second},
                           {"visible", visible},    {"position", position}, {"alert", alert}};
    } else if (*system) {
        request.message = {{"command", "system-status"}, {"status", first}, {"info", second}};
    } else if (*status) {
        request.message = {{"command", "status"}};
    } else if (*devices) {
        request.message = {{"command", "devices-changed"}};
    } else if (*reset) {
        request.message = {{"command", "reset-user-data"}};
    }

    ControlClient client;
    std::string error;
    if (!client.connect(control, error)) {
        std::cerr << "orvane-ctl: " << error << std::endl;
        return 1;
    }
    return *observer ? observe(client, timeoutSeconds) : ask(client, std::move(request), timeoutSeconds);
}
