#pragma once

class ManageableData;

/// What data management and the configuration store call on a service. The store holds nothing during a call.
class MgmtAgentIfc {
public:
    virtual ~MgmtAgentIfc() = default;

    /// Values for items of the service, on their way through its data manager to the setters. False when an item has
    /// no value or no setter, or its setter refused; the others are set all the same. Any thread.
    virtual bool setData(ManageableData& data) = 0;
    /// Asks for the values of the root ids in `data`. False when some item could not be read; the others are there.
    /// Any thread.
    virtual bool getData(ManageableData& data) = 0;

    /// Observed items have changed; `data` holds them with their new values. Called on the store's notification
    /// thread, one call at a time.
    virtual void manageableDataChanged(ManageableData& data) = 0;

    /// The user's data and configuration are to go. True when done.
    virtual bool resetUserData() = 0;
};
