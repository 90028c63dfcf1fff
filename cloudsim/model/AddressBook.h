#pragma once

#include "model/RecordLog.h"
#include "model/SyncTokens.h"

#include <optional>
#include <string>
#include <vector>

namespace cloudsim {

/// The personal contacts of one extension.
class AddressBook {
public:
    struct Page {
        std::vector<Json> records; ///< deleted ones have "availability": "Deleted"
        std::string token;
        std::optional<int> nextPage;
    };

    std::int64_t add(const Json& members);
    /// Replaces all members but the id and the availability.
    bool replace(std::int64_t id, const Json& members);
    /// Sets the given members, removes those that are null.
    bool change(std::int64_t id, const Json& members) { return m_log.change(id, members); }
    /// The record as it is after its deletion; nothing for an unknown id.
    std::optional<Json> remove(std::int64_t id);
    const Json* find(std::int64_t id) const { return m_log.find(id); }
    std::vector<Json> all() const;

    /// A page of everything (no token) or of what changed since the token. Pages count from 1 and belong to the
    /// download that was begun last with its first page, whatever changes meanwhile. Nothing for an unknown token.
    std::optional<Page> page(const std::optional<std::string>& token, int number, std::size_t pageSize);
    void forgetTokens() { m_tokens.forget(); }

private:
    struct Download {
        std::optional<std::string> sinceToken;
        std::vector<Json> records;
        std::string token;
    };

    std::optional<Download> begin(const std::optional<std::string>& token);

    RecordLog<std::int64_t> m_log;
    SyncTokens m_tokens;
    std::optional<Download> m_download;
    std::int64_t m_nextId = 1203001;
};

} // namespace cloudsim
