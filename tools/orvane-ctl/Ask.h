#pragma once

#include "orvane-ctl/CommandLine.h"

class ControlClient;

/// Sends the request's message and prints its answer; returns the program's exit status.
int ask(ControlClient& client, const Request& request);
