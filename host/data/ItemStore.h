#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

/// Items by key in an SQLite file with a write-ahead log, or in memory. What put() has returned from survives a kill
/// of the process. One process at a time uses a file, one thread at a time a store.
class ItemStore {
public:
    /// In memory when `path` is empty. Null, with the reason in `error`, when the file is no store or cannot be
    /// written.
    static std::unique_ptr<ItemStore> open(const std::string& path, std::string& error);

    /// Empty when the item was never set.
    std::optional<std::string> get(const std::string& key) const;
    bool put(const std::string& key, const std::string& value);
    const std::map<std::string, std::string>& all() const { return m_items; }

private:
    struct Close {
        void operator()(sqlite3* database) const;
    };
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

    ItemStore() = default;
    Statement prepare(const char* text) const;
    bool run(const char* statement, std::string& error);
    /// Whether the file is sound and its table has the known columns.
    bool check(std::string& error);
    bool read();

    std::unique_ptr<sqlite3, Close> m_database;
    Statement m_change;                         ///< of one item; goes before its database
    std::map<std::string, std::string> m_items; ///< what the file holds: a service reads hundreds at its start
};
