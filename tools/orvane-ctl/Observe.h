#pragma once

#include "orvane-ctl/ControlClient.h"

#include <string>

/// Subscribes as a remote observer and prints what comes, until a signal (status 0, unsubscribed) or the telephone's
/// end (status 1). `until` is for the subscription alone.
int observe(ControlClient& client, ControlClient::TimePoint until);

/// An event message of the telephone as the line that is printed; empty when it is none.
std::string eventLine(const std::string& message);
