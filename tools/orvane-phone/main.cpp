#include "orvane-phone/JsonOutput.h"
#include "orvane-phone/Options.h"
#include "orvane-phone/Telephone.h"
#include "orvane-phone/ViewOutput.h"

#include "logging/LogSink.h"
#include "network/ChannelState.h"
#include "usage/ExitStatus.h"

#include <csignal>
#include <ctime>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <mutex>
#include <thread>

namespace {

constexpr auto onceLimit = std::chrono::seconds(30);
constexpr auto endLimit = std::chrono::milliseconds(1600);
constexpr auto lastLineLimit = std::chrono::milliseconds(200);
constexpr long lookEveryNanoseconds = 50'000'000;

sigset_t endSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

/// Whether a signal to end has come within a short while.
bool endSignalCame(const sigset_t& signals) {
    const timespec shortWhile{0, lookEveryNanoseconds};
    return sigtimedwait(&signals, nullptr, &shortWhile) > 0;
}

/// The last line, if it can be written: whoever reads the output may have stopped doing so.
void leaveAtOnce(Output& output) {
    std::thread([&output] {
        output.stopped();
        ::_exit(FAILED);
    }).detach();
    std::this_thread::sleep_for(lastLineLimit);
    ::_exit(FAILED);
}

/// Ends the process when the telephone does not come down in time, or when a second signal asks for it.
class Watchdog {
public:
    Watchdog(const sigset_t& signals, Output& output)
        : m_thread([this, signals, &output] { watch(signals, output); }) {}
    ~Watchdog() {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_done = true;
        }
        m_thread.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    void watch(const sigset_t& signals, Output& output) {
        const auto end = std::chrono::steady_clock::now() + endLimit;
        for (;;) {
            const bool again = endSignalCame(signals);
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_done) {
                return;
            }
            if (again || std::chrono::steady_clock::now() > end) {
                if (!again) {
                    std::cerr << "orvane-phone: the service does not come down" << '\n';
                }
                leaveAtOnce(output);
            }
        }
    }

    std::mutex m_mutex;
    bool m_done = false;
    std::thread m_thread;
};

/// Until a signal, or with --once until the first login has ended. Returns the exit status.
int runUntilEnd(const Options& options, Telephone& telephone, Output& output, const sigset_t& signals) {
    if (options.json && !options.once) {
        // Nothing to look at: an idle telephone sleeps.
        int signal = 0;
        sigwait(&signals, &signal);
        return GOOD;
    }
    const auto limit = std::chrono::steady_clock::now() + onceLimit;
    while (!endSignalCame(signals)) {
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
    // Every thread inherits the mask: signals are taken by the main thread alone.
    const sigset_t signals = endSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

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
    std::unique_ptr<Output> output;
    if (options.json) {
        output = std::make_unique<JsonOutput>();
    } else {
        output = std::make_unique<ViewOutput>("Orvane telephone " + options.model + " " + options.mac);
    }
    Telephone telephone(options, *output);
    if (!telephone.begin(error, exitStatus)) {
        std::cerr << "orvane-phone: " << error << '\n';
        return exitStatus;
    }
    exitStatus = runUntilEnd(options, telephone, *output, signals);
    {
        Watchdog watchdog(signals, *output);
        telephone.abort();
        telephone.end();
    }
    output->stopped();
    return exitStatus;
}
