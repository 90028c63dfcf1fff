#include "orvane-phone/EndWatch.h"
#include "orvane-phone/JsonOutput.h"
#include "orvane-phone/Options.h"
#include "orvane-phone/Telephone.h"
#include "orvane-phone/ViewOutput.h"

#include "logging/LogSink.h"
#include "network/ChannelState.h"
#include "usage/ExitStatus.h"

#include <chrono>
#include <csignal>
#include <iostream>
#include <memory>

namespace {

constexpr auto onceLimit = std::chrono::seconds(30);
constexpr auto lookEvery = std::chrono::milliseconds(50);

/// Until a signal, or with --once until the first login has ended. Returns the exit status.
int runUntilEnd(const Options& options, Telephone& telephone, Output& output, EndWatch& watch) {
    if (options.json && !options.once) {
        // Nothing to look at: an idle telephone sleeps.
        watch.wait();
        return GOOD;
    }
    const auto limit = std::chrono::steady_clock::now() + onceLimit;
    while (!watch.waitFor(lookEvery)) {
        output.look(ChannelState::isOpen());
        if (!options.once) {
            continue;
        }
        if (telephone.hasFirstLoginEnded()) {
            output.summary();
            return telephone.isRunning() ? GOOD : FAILED;
        }
        if (std::chrono::steady_clock::now() > limit) {
            std::cerr << "orvane-phone: no login within 30 s" << '\n';
            return FAILED;
        }
    }
    return GOOD;
}

} // namespace

int main(int argumentCount, char** arguments) {
    std::signal(SIGPIPE, SIG_IGN);
    std::unique_ptr<Output> output; // outlives the watch, which may give it its last line
    EndWatch watch;
    Options options;
    int exitStatus = GOOD;
    if (!readOptions(argumentCount, arguments, options, exitStatus)) {
        return exitStatus;
    }
    std::string error;
    if (!LogSink::configure({options.logLevel, options.logFile, options.logSecrets}, error)) {
        std::cerr << "orvane-phone: cannot write the log: " << error << '\n';
        return BAD_USAGE;
    }
    if (options.json) {
        output = std::make_unique<JsonOutput>();
    } else {
        output = std::make_unique<ViewOutput>("Orvane telephone " + options.model + " " + options.mac);
    }
    watch.enter(EndWatch::Stage::STARTING, *output);
    Telephone telephone(options, *output);
    if (!telephone.begin(error, exitStatus)) {
        std::cerr << "orvane-phone: " << error << '\n';
        return exitStatus;
    }
    watch.enter(EndWatch::Stage::RUNNING, *output);
    exitStatus = runUntilEnd(options, telephone, *output, watch);
    watch.enter(EndWatch::Stage::COMING_DOWN, *output);
    telephone.abort();
    telephone.end();
    watch.enter(EndWatch::Stage::LAST_LINE, *output);
    output->stopped();
    return output->hasFailed() ? FAILED : exitStatus;
}
