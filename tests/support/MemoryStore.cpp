#include "MemoryStore.h"

#include "TestPlatform.h"
#include "data/ManageableData.h"
#include "data/MgmtAgentIfc.h"

#include <algorithm>

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
