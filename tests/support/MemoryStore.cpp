#include "MemoryStore.h"

#include "TestPlatform.h"
#include "data/ManageableData.h"
#include "data/MgmtAgentIfc.h"
#include "data/PldsTags.h"

#include <algorithm>

const std::string PldsTags::VALUE_TRUE = "true";
const std::string PldsTags::VALUE_FALSE = "false";
const std::string PldsTags::INTERFACE_STATUS = "interface-status";
const std::string PldsTags::SERVER_TYPE = "server-type";
const std::string PldsTags::MAC_ADDRESS = "mac-address";
const std::string PldsTags::FUNCTION_KEY_ID = "function-key-id-";
const std::string PldsTags::FUNCTION_KEY_LABEL = "function-key-label-";
const std::string PldsTags::BLF_DEST = "blf-dest-";
const std::string PldsTags::LAST_DIALLED_NUMBER = "last-dialled-number";
const std::string PldsTags::CALL_DND_ACTIVATED = "call-dnd-activated";
const std::string PldsTags::ORVANE_API_SERVER_ADDRESS = "orvane-api-server-address";
const std::string PldsTags::ORVANE_API_SYNC_CALL_LOG = "orvane-api-sync-call-log";
const std::string PldsTags::ORVANE_API_SYNC_PHONEBOOK = "orvane-api-sync-phonebook";
const std::string PldsTags::ORVANE_API_SYNC_INTERVAL = "orvane-api-sync-interval";
const std::string PldsTags::ORVANE_API_SYNC_DND = "orvane-api-sync-dnd";
const std::string PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS = "orvane-api-viewed-missed-call-ids";

bool MemoryStore::readData(ManageableData& data) {
    std::vector<std::string> keys;
    data.getRootIds(keys);
    reads.push_back(keys);
    TestPlatform::current().steps.add("read ",
                                      keys.size() == 1 ? keys.front() : std::to_string(keys.size()) + " items");
    if (refuseReads) {
        return false;
    }
    for (const std::string& key : keys) {
        if (withoutValue.count(key) == 0) {
            data.populate(key, key, get(key));
        }
    }
    return true;
}

bool MemoryStore::writeData(ManageableData& data) {
    if (whileWriting) {
        whileWriting();
    }
    std::vector<std::string> keys;
    data.getRootIds(keys);
    for (const std::string& key : keys) {
        std::string value;
        data.interogate(key, value);
        writes.emplace_back(key, value);
        TestPlatform::current().locks.addToTrace("write");
        TestPlatform::current().steps.add("write ", key + " = " + value);
        if (!refuseWrites) {
            m_values[key] = value;
        }
    }
    return !refuseWrites;
}

void MemoryStore::getStoragePath(int area, std::string& path) {
    TestPlatform::current().steps.add("storage path ", std::to_string(area));
    storageAreas.emplace_back(area, path);
    path = "/storage/" + std::to_string(area) + "/";
}

bool MemoryStore::observeData(const std::list<std::string>& keys, MgmtAgentIfc* agent) {
    TestPlatform::current().steps.add("observe ", std::to_string(keys.size()) + " items");
    observed.assign(keys.begin(), keys.end());
    m_agent = agent;
    return !refuseObservation;
}

std::string MemoryStore::get(const std::string& key) const {
    const auto value = m_values.find(key);
    return value == m_values.end() ? std::string() : value->second;
}

void MemoryStore::change(const std::string& key, const std::string& value) {
    m_values[key] = value;
    if (m_agent != nullptr && std::find(observed.begin(), observed.end(), key) != observed.end()) {
        ManageableData data;
        data.populate(key, key, value);
        m_agent->manageableDataChanged(data);
    }
}

int MemoryStore::countWrites(const std::string& key, const std::string& value) const {
    return static_cast<int>(std::count(writes.begin(), writes.end(), std::make_pair(key, value)));
}
