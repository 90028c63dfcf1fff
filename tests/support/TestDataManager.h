#pragma once

#include "data/ManagedItemGetter.h"
#include "data/ManagedItemSetter.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class Context;
class ManageableData;
class MgmtAgentIfc;
class ValidatorIfc;

/// What the service's data manager was told, and the way of a configuration to the service.
class TestDataManager {
public:
    struct Result {
        bool accepted;
        std::string error;
    };

    /// One value through its setter, as an item's key.
    Result deliver(const std::string& key, const std::string& value);
    /// Values through their setters, then the group.
    Result deliverGroup(const std::vector<std::pair<std::string, std::string>>& values,
                        const std::string& group = "orvane_config_group");
    std::string read(const std::string& key);

    /// Every call, such as "registerAgent OrvaneMgmtId", "addGetter OrvaneApiServerAddressGetter", "finishSetup".
    std::vector<std::string> calls;
    Context* context = nullptr;
    MgmtAgentIfc* agent = nullptr;
    ValidatorIfc* validator = nullptr;
    std::map<std::string, std::unique_ptr<ManagedItemGetter>> getters;
    std::map<std::string, std::unique_ptr<ManagedItemSetter>> setters;
    std::vector<const ManageableData*> dataRead;
    std::vector<const ManageableData*> dataWritten;
    bool refuseData = false; ///< reading and writing of data fails

    /// Name part of the getter and setter of an item, such as "OrvaneApiSyncDnd".
    static std::string operationOf(const std::string& key);
    static const std::vector<std::string>& itemKeys();

    void noteCall(const std::string& call);
};
