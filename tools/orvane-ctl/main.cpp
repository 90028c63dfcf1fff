#include "orvane-ctl/Ask.h"
#include "orvane-ctl/CommandLine.h"
#include "orvane-ctl/ControlClient.h"
#include "orvane-ctl/Observe.h"
#include "usage/ExitStatus.h"

#include <unistd.h>

#include <csignal>
#include <iostream>

namespace {

/// Nothing of a request has to be taken back, whatever it waits for. An observer has handlers of its own.
void endAtOnce(int) {
    static constexpr char line[] = "orvane-ctl: interrupted\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line, sizeof line - 1);
    ::_exit(FAILED);
}

} // namespace

int main(int argumentCount, char** arguments) {
    Request request;
    int exitStatus = GOOD;
    if (!readCommandLine(argumentCount, arguments, request, exitStatus)) {
        return exitStatus;
    }
    std::signal(SIGINT, endAtOnce);
    std::signal(SIGTERM, endAtOnce);
    ControlClient client;
    std::string error;
    const auto until = ControlClient::deadline(request.timeoutSeconds);
    if (!client.connect(request.control, until, error)) {
        std::cerr << "orvane-ctl: " << error << '\n';
        return FAILED;
    }
    return request.observe ? observe(client, until) : ask(client, request, until);
}
