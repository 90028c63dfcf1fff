#pragma once

#include "orvane-ctl/CommandLine.h"
#include "orvane-ctl/ControlClient.h"

/// Sends the request's message and prints its answer, which comes until then at the latest; returns the program's exit
/// status.
int ask(ControlClient& client, const Request& request, ControlClient::TimePoint until);
