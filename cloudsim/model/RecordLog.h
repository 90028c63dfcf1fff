#pragma once

#include "base/Json.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

namespace cloudsim {

/// Records by id, with the order in which they were changed. A deleted record stays, marked, so that it can be
/// reported.
template <class Id>
class RecordLog {
public:
    struct Entry {
        Id id{};
        Json record;
        std::uint64_t changedAt = 0;
        bool deleted = false;
    };

    /// Rises with every change.
    std::uint64_t point() const { return m_point; }

    void put(const Id& id, Json record) { m_entries[id] = Entry{id, std::move(record), ++m_point, false}; }

    /// Sets the given members, removes those that are null. False for an unknown id.
    bool change(const Id& id, const Json& members) {
        const Json* present = find(id);
        if (present == nullptr)
            return false;
        Json record = *present;
        record.merge_patch(members);
        put(id, std::move(record));
        return true;
    }

    bool erase(const Id& id) {
        auto entry = m_entries.find(id);
        if (entry == m_entries.end() || entry->second.deleted)
            return false;
        entry->second.deleted = true;
        entry->second.changedAt = ++m_point;
        return true;
    }

    /// Null when there is none, or it was deleted.
    const Json* find(const Id& id) const {
        auto entry = m_entries.find(id);
        return entry == m_entries.end() || entry->second.deleted ? nullptr : &entry->second.record;
    }

    bool wasUsed(const Id& id) const { return m_entries.count(id) != 0; }

    /// Ordered by id.
    std::vector<const Entry*> present() const {
        std::vector<const Entry*> entries;
        for (const auto& [id, entry] : m_entries)
            if (!entry.deleted)
                entries.push_back(&entry);
        return entries;
    }

    /// The oldest change first, deletions included.
    std::vector<const Entry*> changedAfter(std::uint64_t point) const {
        std::vector<const Entry*> entries;
        for (const auto& [id, entry] : m_entries)
            if (entry.changedAt > point)
                entries.push_back(&entry);
        std::sort(entries.begin(), entries.end(),
                  [](const Entry* a, const Entry* b) { return a->changedAt < b->changedAt; });
        return entries;
    }

private:
    std::map<Id, Entry> m_entries;
    std::uint64_t m_point = 0;
};

} // namespace cloudsim
