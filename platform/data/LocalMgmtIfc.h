#pragma once

#include <list>
#include <string>

class ManageableData;
class MgmtAgentIfc;

/// The telephone's local configuration store, found under the service name "LocalMgmtIfc". Any thread may call it,
/// from inside a setter or a notification too; reads and writes are complete when they return.
class LocalMgmtIfc {
public:
    virtual ~LocalMgmtIfc() = default;

    /// Fills in the values of the data's root ids. An item that is known but was never set is present and empty.
    /// False when the store did not answer.
    virtual bool readData(ManageableData& data) = 0;

    /// Writes the values of the data. Does not run the setters of the service that owns the items; of the written
    /// items only observed ones are reported, later and on the store's own thread. False when refused.
    virtual bool writeData(ManageableData& data) = 0;

    /// Path of the storage area that `area` selects.
    virtual void getStoragePath(int area, std::string& path) = 0;

    /// From now on, changes of the items with these keys reach `agent` through
    /// MgmtAgentIfc::manageableDataChanged. `agent` is not owned. True on success.
    virtual bool observeData(const std::list<std::string>& keys, MgmtAgentIfc* agent) = 0;
};
