#pragma once

#include <string>

class Context;
class ManageableData;
class ManagedItemGetter;
class ManagedItemSetter;
class MgmtAgentIfc;
class ValidatorIfc;

/// Data manager of one service: ties the configuration items to the service's getters and setters. The operations
/// up to finishSetup are called once, in the order given, on the thread of Executable::init. finishSetup delivers
/// the stored values through the setters, on the same thread, before it returns.
class ServiceDataManagerIfc {
public:
    virtual ~ServiceDataManagerIfc() = default;

    /// `agent` and `validator` are the service; none of the pointers is owned.
    virtual void registerAgent(Context* context, MgmtAgentIfc* agent, const std::string& managementId,
                               ValidatorIfc* validator) = 0;
    /// True before the getters and setters are added, false behind the item map.
    virtual void setLoading(bool loading) = 0;
    /// Owns `getter` from now on.
    virtual void addGetter(const std::string& name, ManagedItemGetter* getter) = 0;
    /// Owns `setter` from now on.
    virtual void addSetter(const std::string& name, ManagedItemSetter* setter) = 0;
    /// Loads the map of that name, which says which item goes with which getter and setter.
    virtual void loadItemMap(const std::string& mapName) = 0;
    virtual void finishSetup() = 0;

    /// Fills in the values of the data's root ids through the getters. False when some item has no getter, as after
    /// unregisterAgent; the others are there. Any thread.
    virtual bool getData(ManageableData& data) = 0;
    /// Gives the values of the data to the setters. False when an item has no value or no setter, or its setter
    /// refused; the others are set all the same. Any thread.
    virtual bool setData(ManageableData& data) = 0;

    /// First closing operation: no setter, getter or validator is called any more; returns when none is running.
    virtual void unregisterAgent() = 0;
    /// Second closing operation: frees the getters and setters.
    virtual void releaseItems() = 0;
};
