#include "orvane-ctl/Ask.h"
#include "orvane-ctl/CommandLine.h"
#include "orvane-ctl/ControlClient.h"
#include "orvane-ctl/Observe.h"

#include <iostream>

int main(int argumentCount, char** arguments) {
    Request request;
    int exitStatus = 0;
    if (!readCommandLine(argumentCount, arguments, request, exitStatus)) {
        return exitStatus;
    }
    ControlClient client;
    std::string error;
    const auto until = ControlClient::deadline(request.timeoutSeconds);
    if (!client.connect(request.control, until, error)) {
        std::cerr << "orvane-ctl: " << error << '\n';
        return 1;
    }
    return request.observe ? observe(client, until) : ask(client, request, until);
}
