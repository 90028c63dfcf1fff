#pragma once

class CommunicationsServiceEventIfc;

/// The telephone's communications service, found under the service name "CommunicationsServiceIfc".
class CommunicationsServiceIfc {
public:
    virtual ~CommunicationsServiceIfc() = default;

    /// `listener` is not owned and is called until the service ends.
    virtual void subscribe(CommunicationsServiceEventIfc* listener) = 0;
};
