#pragma once

#include <string>

class ControlClient;

/// Subscribes as a remote observer and prints what comes, until a signal (status 0, unsubscribed) or the telephone's
/// end (status 1). `timeoutSeconds` is for the subscription alone.
int observe(ControlClient& client, double timeoutSeconds);

/// An event message of the telephone as the line that is printed; empty when it is none.
std::string eventLine(const std::string& message);
