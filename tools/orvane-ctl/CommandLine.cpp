#include "orvane-ctl/CommandLine.h"

#include "data/ItemNames.h"
#include "orvane-ctl/CallParameters.h"
#include "transport/ControlServer.h"
#include "usage/ExitStatus.h"
#include "usage/ItemFooter.h"
#include "usage/ParseArguments.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <vector>

namespace {

using Json = nlohmann::ordered_json;

constexpr double shortestTimeoutSeconds = 0.001;
constexpr double longestTimeoutSeconds = 86'400;

/// Everything that the command line can fill.
struct Arguments {
    std::string first;
    std::string second;
    std::vector<std::string> pairs;
    std::string group = "orvane_config_group";
    bool visible = true;
    int position = 1;
    int alert = 0;
};

std::string unknownItem(const std::string& name) {
    return "there is no item " + name;
}

Json configureMessage(const Arguments& arguments, std::string& error) {
    Json items = Json::array();
    for (const std::string& pair : arguments.pairs) {
        std::string name;
        std::string value;
        if (!splitPair(pair, name, value)) {
            error = "an item is ITEM=VALUE, not " + pair;
        } else if (!ItemNames::keyOf(name)) {
            error = unknownItem(name);
        }
        items.push_back({{"name", name}, {"value", value}});
    }
    return {{"command", "configure"}, {"group", arguments.group}, {"items", items}};
}

Json itemMessage(const Arguments& arguments, std::string& error) {
    std::string name = arguments.first;
    std::string value;
    const bool write = splitPair(arguments.first, name, value);
    if (!ItemNames::keyOf(name)) {
        error = unknownItem(name);
    }
    Json message = {{"command", "item"}, {"name", name}};
    if (write) {
        message["value"] = value;
    }
    return message;
}

/// The commands, each with what it makes of its arguments.
class Commands {
public:
    Commands(CLI::App& app, Arguments& arguments, Request& request) : m_app(app), m_request(request) {
        addCall(arguments);
        addItems(arguments);
        addButtons(arguments);
        add("observe", "subscribe and print the events", [this] { m_request.observe = true; });
        add("status", "print whether the service runs, and all items", [this] { message({{"command", "status"}}); });
    }

    const std::string& error() const { return m_error; }

private:
    CLI::App* add(const char* name, const char* description, const std::function<void()>& make) {
        CLI::App* command = m_app.add_subcommand(name, description);
        command->callback(make);
        return command;
    }

    void message(Json newMessage) { m_request.message = std::move(newMessage); }

    void addCall(Arguments& arguments) {
        CLI::App* call = add("call", "call a remote method", [this, &arguments] {
            Json method;
            m_request.isCall = true;
            makeMethod(arguments.first, arguments.pairs, method, m_error);
            message({{"method", method}});
        });
        call->add_option("METHOD", arguments.first, "name of the method")->required();
        call->add_option("NAME=VALUE", arguments.pairs,
                         "parameters: texts, true or false, a set as texts joined by \",\"");
        CLI::App* raw = add("raw", "hand a text to the service as it stands", [this, &arguments] {
            m_request.isCall = true;
            message({{"raw", arguments.first}});
        });
        raw->add_option("TEXT", arguments.first, "a message, or anything else")->required();
    }

    void addItems(Arguments& arguments) {
        CLI::App* configure = add("configure", "deliver items to the service, in this order, then their group",
                                  [this, &arguments] { message(configureMessage(arguments, m_error)); });
        configure->footer(itemFooter());
        configure->add_option("--group", arguments.group, "name of the group")->capture_default_str();
        configure->add_option("ITEM=VALUE", arguments.pairs, "items and their values")->required();
        CLI::App* item = add("item", "print one item, or write it",
                             [this, &arguments] { message(itemMessage(arguments, m_error)); });
        item->footer(itemFooter());
        item->add_option("NAME[=VALUE]", arguments.first, "the item, with its value to write it")->required();
        add("reset-user-data", "have the service forget its user",
            [this] { message({{"command", "reset-user-data"}}); });
    }

    void addButtons(Arguments& arguments) {
        CLI::App* interface = add("interface", "take the network away, or bring it back", [this, &arguments] {
            message({{"command", "interface"}, {"up", arguments.first == "up"}});
        });
        interface->add_option("up|down", arguments.first)->required()->check(CLI::IsMember({"up", "down"}));
        CLI::App* overview = add("overview", "tell the service of an overview key", [this, &arguments] {
            message({{"command", "overview"},
                     {"uri", arguments.first},
                     {"description", arguments.second},
                     {"visible", arguments.visible},
                     {"position", arguments.position},
                     {"alert", arguments.alert}});
        });
        overview->add_option("URI", arguments.first, "SIP URI of the key's line")->required();
        overview->add_option("DESCRIPTION", arguments.second, "text on the key")->required();
        overview->add_option("VISIBLE", arguments.visible, "true or false")->capture_default_str();
        overview->add_option("POSITION", arguments.position)->capture_default_str();
        overview->add_option("ALERT", arguments.alert, "0 none, 1 lamp, 2 popup")
            ->check(CLI::Range(0, 2))
            ->capture_default_str();
        add("devices-changed", "tell the service that the devices have changed",
            [this] { message({{"command", "devices-changed"}}); });
        CLI::App* system =
            add("system-status", "tell the service of the telephone system's status", [this, &arguments] {
                message({{"command", "system-status"}, {"status", arguments.first}, {"info", arguments.second}});
            });
        system->add_option("STATUS", arguments.first, "such as Enabled")->required();
        system->add_option("INFO", arguments.second, "any text");
    }

    CLI::App& m_app;
    Request& m_request;
    std::string m_error;
};

} // namespace

bool readCommandLine(int argumentCount, char** argumentTexts, Request& request, int& exitStatus) {
    CLI::App app("Calls a telephone's remote methods, observes it, and pushes its buttons.", "orvane-ctl");
    app.require_subcommand(1);
    app.footer(exitStatusHelp); // the commands inherit it
    request.control = ControlServer::defaultPath();
    app.add_option("--control", request.control, "the telephone's control socket")->capture_default_str();
    app.add_option("--timeout", request.timeoutSeconds, "seconds to wait for an answer")
        ->check(CLI::Range(shortestTimeoutSeconds, longestTimeoutSeconds))
        ->capture_default_str();
    Arguments arguments;
    const Commands commands(app, arguments, request);
    if (!parseArguments(app, argumentCount, argumentTexts, exitStatus)) {
        return false;
    }
    if (std::isnan(request.timeoutSeconds)) {
        return refuseArguments(app, "--timeout wants a number", exitStatus);
    }
    return commands.error().empty() || refuseArguments(app, commands.error(), exitStatus);
}
