#include "orvane-phone/Options.h"

#include "data/ItemNames.h"
#include "network/ServerAddress.h"
#include "network/TlsContext.h"
#include "transport/ControlServer.h"
#include "usage/ItemFooter.h"
#include "usage/ParseArguments.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <climits>
#include <cmath>
#include <fstream>

namespace {

constexpr double slowestTimeScale = 0.001;
constexpr double fastestTimeScale = 1'000'000;

const std::vector<std::string> siblingNames = {"LocalMgmtIfc",   "CertificateMgmtSvcIfc", "JournalServiceIfc",
                                               "TeamServiceIfc", "SecurityLogServiceIfc", "CommunicationsServiceIfc"};

/// The library beside the program: bin/orvane-phone and lib/libOrvaneService.so.
std::string defaultServiceLibrary() {
    char path[PATH_MAX] = {};
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    std::string program(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::string folder = program.substr(0, program.rfind('/'));
    return folder + "/../lib/libOrvaneService.so";
}

std::string readItem(const std::string& text, Options& options) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        return "--set wants ITEM=VALUE, not " + text;
    }
    const std::string name = text.substr(0, equals);
    const auto key = ItemNames::keyOf(name);
    if (!key) {
        return "--set: there is no item " + name;
    }
    options.items.emplace_back(*key, text.substr(equals + 1));
    return std::string();
}

/// What stands behind the host would be dropped without a word.
std::string findServerFault(const std::string& server) {
    std::string error;
    const auto address = ServerAddress::parse(server, "https", error);
    if (address && !address->path.empty() && address->path != "/") {
        error = "only a host and a port can be given";
    }
    return error.empty() ? error : "--server " + server + ": " + error;
}

std::string findEmptyFileName(const std::string& name) {
    return name.empty() ? "names no file" : std::string();
}

/// One clear sentence about what is wrong, or nothing.
std::string findFault(const std::vector<std::string>& items, Options& options) {
    for (const std::string& item : items) {
        const std::string fault = readItem(item, options);
        if (!fault.empty()) {
            return fault;
        }
    }
    if (std::isnan(options.timeScale)) {
        return "--time-scale wants a number";
    }
    const std::string serverFault = options.server.empty() ? std::string() : findServerFault(options.server);
    if (!serverFault.empty()) {
        return serverFault;
    }
    for (const std::string& file : {options.authorities, options.certificate, options.key, options.service}) {
        if (!file.empty() && ::access(file.c_str(), R_OK) != 0) {
            return "cannot read " + file;
        }
    }
    // Opened as the log will be, but without making folders on the way.
    if (!options.logFile.empty() && !std::ofstream(options.logFile, std::ios::app)) {
        return "cannot write the log file " + options.logFile;
    }
    std::string error;
    if (!TlsContext::make(options.authorities, options.certificate, options.key, error)) {
        return error;
    }
    return std::string();
}

} // namespace

bool readOptions(int argumentCount, char** arguments, Options& options, int& exitStatus) {
    CLI::App app("Plays a SIP desk telephone on a PC: loads the Orvane Service and shows what it does.",
                 "orvane-phone");
    app.footer(itemFooter());
    std::vector<std::string> items;
    options.service = defaultServiceLibrary();
    options.control = ControlServer::defaultPath();
    app.add_option("--server", options.server, "the cloud's address, https://HOST[:PORT] or HOST[:PORT]");
    app.add_option("--ca", options.authorities, "certificate authorities to trust, a PEM file")
        ->required()
        ->check(findEmptyFileName);
    app.add_option("--cert", options.certificate, "the telephone's own certificate, a PEM file")
        ->check(findEmptyFileName);
    app.add_option("--key", options.key, "private key of that certificate, a PEM file")->check(findEmptyFileName);
    app.add_option("--model", options.model, "the telephone's model, such as KD24")->required();
    app.add_option("--mac", options.mac, "the telephone's MAC address")->required();
    app.add_option("--store", options.store, "file of the configuration store; in memory without it");
    app.add_option("--service", options.service, "the service's library")
        ->check(findEmptyFileName)
        ->capture_default_str();
    app.add_option("--control", options.control, "control socket for orvane-ctl")->capture_default_str();
    app.add_option("--set", items, "ITEM=VALUE, a configuration item to begin with, see below; repeatable")
        ->take_all()
        ->allow_extra_args(false);
    app.add_option("--without", options.absentServices, "leave a sibling service out; repeatable")
        ->take_all()
        ->allow_extra_args(false)
        ->check(CLI::IsMember(siblingNames));
    app.add_flag("--no-observer", options.noObserver, "subscribe no observer");
    app.add_flag("--json", options.json, "report as JSON, one object a line");
    app.add_flag("--once", options.once, "end when the first login has ended");
    app.add_option("--time-scale", options.timeScale, "run timers, pings and sleeps that much faster")
        ->check(CLI::Range(slowestTimeScale, fastestTimeScale));
    app.add_option("--log-level", options.logLevel, "2 (errors) to 6 (everything)")
        ->check(CLI::Range(2, 6))
        ->capture_default_str();
    app.add_option("--log-file", options.logFile, "write the log there instead of standard error");
    app.add_flag("--log-secrets", options.logSecrets, "leave tokens readable in the log");
    if (!parseArguments(app, argumentCount, arguments, exitStatus)) {
        return false;
    }
    const std::string fault = findFault(items, options);
    return fault.empty() || refuseArguments(app, fault, exitStatus);
}
