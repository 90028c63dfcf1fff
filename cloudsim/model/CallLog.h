#pragma once

#include "model/RecordLog.h"
#include "model/SyncTokens.h"

#include <optional>
#include <string>
#include <vector>

namespace cloudsim {

/// The calls of one extension.
class CallLog {
public:
    struct Synchronisation {
        std::vector<Json> records; ///< newest call first; deleted ones carry "deleted": true
        std::string token;
    };

    /// Ids of calls are unique among owners.
    explicit CallLog(std::int64_t owner = 0) : m_owner(owner) {}

    /// Fills in what the members leave out, and returns the id. An id that is there already is overwritten.
    std::string add(const Json& members);
    /// Sets the given members, removes those that are null. False for an unknown id.
    bool change(const std::string& id, const Json& members) { return m_log.change(id, members); }
    bool remove(const std::string& id);
    void removeAll();
    const Json* find(const std::string& id) const { return m_log.find(id); }
    /// Newest first.
    std::vector<Json> newest(std::size_t count) const;

    Synchronisation full(std::size_t count);
    /// What changed since the token, at most so many records, the rest being left to the next token. Nothing for an
    /// unknown token.
    std::optional<Synchronisation> changes(const std::string& token, std::size_t count, bool withDeleted);
    void forgetTokens() { m_tokens.forget(); }

private:
    std::string newId();

    RecordLog<std::string> m_log;
    SyncTokens m_tokens;
    std::int64_t m_owner;
    std::uint64_t m_nextNumber = 1;
};

} // namespace cloudsim
