#include "orvane-ctl/Ask.h"
#include "orvane-ctl/CommandLine.h"
#include "orvane-ctl/ControlClient.h"
#include "orvane-ctl/Observe.h"
#include "usage/ExitStatus.h"

#include <iostream>

int main(int argumentCount, char** arguments) {
    Request request;
    int exitStatus = GOOD;
    if (!readCommandLine(argumentCount, arguments, request, exitStatus)) {
        return exitStatus;
    }
    ControlClient client;
    std::string error;
    const auto until = ControlClient::deadline(request.timeoutSeconds);
    if (!client.connect(request.control, until, error)) {
        std::cerr << "orvane-ctl: " << error << '\n';
        return FAILED;
    }
    return request.observe ? observe(client, until) : ask(client, request, until);
}
