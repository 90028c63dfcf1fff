#pragma once

#include "SiblingService.h"
#include "data/LocalMgmtIfc.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// The configuration store in memory. Known items are those of PldsTags, indexed ones with any index, and
/// "missed-logg-count"; one that was never set is present and empty.
class MemoryStore : public SiblingService, public LocalMgmtIfc {
public:
    bool readData(ManageableData& data) override;
    bool writeData(ManageableData& data) override;
    void getStoragePath(int area, std::string& path) override;
    bool observeData(const std::list<std::string>& keys, MgmtAgentIfc* agent) override;

    /// Sets a value without telling anybody.
    void set(const std::string& key, const std::string& value) { m_values[key] = value; }
    std::string get(const std::string& key) const;
    /// Changes a value as somebody else would; the observer is told if the item is observed.
    void change(const std::string& key, const std::string& value);

    bool refuseReads = false;
    bool refuseWrites = false;
    bool refuseObservation = false;
    std::set<std::string> withoutValue;                      ///< items that are not present at all
    std::vector<std::vector<std::string>> reads;             ///< keys of each read
    std::vector<std::pair<std::string, std::string>> writes; ///< what the service wrote, refused writes too
    std::function<void()> whileWriting;                      ///< runs inside every write
    std::vector<std::string> observed;
    std::vector<std::pair<int, std::string>> storageAreas; ///< asked for, with the path that came in

    /// How often the service wrote this value to this item.
    int countWrites(const std::string& key, const std::string& value) const;

private:
    std::map<std::string, std::string> m_values;
    MgmtAgentIfc* m_agent = nullptr;
};
