#pragma once

#include <string>

class TeamServiceEventIfc;

/// The telephone's team key service, found under the service name "TeamServiceIfc".
class TeamServiceIfc {
public:
    virtual ~TeamServiceIfc() = default;

    /// `listener` is not owned and is called until the service ends.
    virtual void subscribe(TeamServiceEventIfc* listener) = 0;

    /// Shows or clears do-not-disturb on the key that watches this URI ("blf" and the extension's id). Any thread;
    /// returns without waiting.
    virtual void showDoNotDisturb(const std::string& uri, bool active) = 0;
};
