#pragma once

class ManageableData;

/// What data management and the configuration store call on a service. The store holds nothing during a call.
class MgmtAgentIfc {
public:
    virtual ~MgmtAgentIfc() = default;

    virtual bool setData(ManageableData& data) = 0;
    virtual bool getData(ManageableData& data) = 0;

    /// Observed items have changed; `data` holds them with their new values. Called on the store's notification
    /// thread, one call at a time.
    virtual void manageableDataChanged(ManageableData& data) = 0;

    /// The user's data and configuration are to go. True when done.
    virtual bool resetUserData() = 0;
};
