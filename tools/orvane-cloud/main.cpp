#include "CloudSimulator.h"
#include "base/BadInput.h"
#include "base/WholeNumber.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iostream>

namespace {

enum ExitStatus : int { GOOD = 0, FAILED = 1, BAD_USAGE = 2 };

/// A folder that goes away with the program.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "orvane-cloud-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            throw cloudsim::BadInput("cannot make a folder for certificates; name one with --tls-dir");
        m_path = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

/// The option parser lets negative numbers become huge ones.
std::string findSeedFault(const std::string& text) {
    return cloudsim::wholeNumber<std::uint64_t>(text) ? "" : "no whole number from 0 to 2^64-1: " + text;
}

/// Throws when standard output does not take it all.
void print(const std::string& text) {
    errno = 0;
    std::cout << text << std::flush;
    if (!std::cout)
        throw std::runtime_error(std::string("cannot write to standard output: ") + std::strerror(errno));
}

void describe(CLI::App& app, cloudsim::SimulatorOptions& options) {
    app.description("Simulates the cloud telephony provider: HTTPS, event channel, data, life and faults.\n"
                    "The first line on standard output tells the addresses as JSON. Ends on SIGINT or SIGTERM.");
    app.add_option("--listen", options.listen, "HOST:PORT for telephones; port 0 takes a free one")
        ->capture_default_str();
    app.add_option("--admin", options.admin, "HOST:PORT of the administration over plain HTTP")->capture_default_str();
    auto* data = app.add_option("--data", options.dataFile, "file with the account as JSON");
    for (auto* option :
         {app.add_option("--seed", options.seed, "number that the made-up account depends on")->check(findSeedFault),
          app.add_option("--calls", options.calls, "calls in the made-up account")->check(CLI::Range(0, 100000)),
          app.add_option("--contacts", options.contacts, "contacts in the made-up account")
              ->check(CLI::Range(0, 100000)),
          app.add_option("--late-calls", options.lateCalls, "so many of the calls come in some seconds after the start")
              ->check(CLI::Range(0, 1000))})
        option->excludes(data)->capture_default_str();
    app.add_option("--device", options.devices, "MODEL/MAC of a further telephone; may be repeated");
    app.add_option("--tls-dir", options.tlsFolder,
                   "folder for the authority and the certificates, which are kept and used again");
    app.add_flag("--require-client-cert", options.requireClientCertificate,
                 "refuse telephones without a certificate; each device gets one in --tls-dir");
    app.add_flag("--live", options.live, "calls come and go, colleagues change, contacts change");
    app.footer("Exit status: 0 good, 1 failed, 2 bad usage or an address in use.");
}

void serveUntilSignal(const cloudsim::SimulatorOptions& options, const sigset_t& endSignals) {
    cloudsim::CloudSimulator simulator(options);
    print(cloudsim::toText(simulator.readyLine()) + "\n");
    int received = 0;
    sigwait(&endSignals, &received);
    // A second signal ends at once.
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &endSignals, nullptr);
}

int run(int argc, char** argv) {
    cloudsim::SimulatorOptions options;
    CLI::App app;
    describe(app, options);
    try {
        app.parse(argc, argv);
        if (options.lateCalls > options.calls)
            throw cloudsim::BadInput("--late-calls: more than --calls");
    } catch (const CLI::CallForHelp&) {
        print(app.help());
        return GOOD;
    } catch (const CLI::ParseError& error) {
        throw cloudsim::BadInput(error.what());
    }
    // Before any thread exists, so that all inherit it and the main thread alone is told.
    sigset_t endSignals;
    sigemptyset(&endSignals);
    sigaddset(&endSignals, SIGINT);
    sigaddset(&endSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    std::optional<TemporaryFolder> temporaryFolder;
    if (options.tlsFolder.empty())
        options.tlsFolder = temporaryFolder.emplace().path();
    serveUntilSignal(options, endSignals);
    return GOOD;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const cloudsim::BadInput& error) {
        std::cerr << "orvane-cloud: " << error.what() << std::endl;
        return BAD_USAGE;
    } catch (const std::exception& error) {
        std::cerr << "orvane-cloud: " << error.what() << std::endl;
        return FAILED;
    }
}
