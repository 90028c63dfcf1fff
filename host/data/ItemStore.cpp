#include "data/ItemStore.h"

#include <sqlite3.h>

namespace {

/// The text has to outlive the next step.
void bind(sqlite3_stmt* statement, int index, const std::string& text) {
    sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

std::string columnText(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text == nullptr ? std::string()
                           : std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
}

constexpr int busyMilliseconds = 2000;

} // namespace

std::unique_ptr<ItemStore> ItemStore::open(const std::string& path, std::string& error) {
    std::unique_ptr<ItemStore> store(new ItemStore);
    const std::string name = path.empty() ? ":memory:" : path;
    // There is a database to close even when it could not be opened.
    sqlite3* database = nullptr;
    const int outcome = sqlite3_open_v2(name.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    store->m_database.reset(database);
    if (outcome != SQLITE_OK) {
        error = sqlite3_errmsg(database);
        return nullptr;
    }
    sqlite3_busy_timeout(database, busyMilliseconds);
    // The table is written to once, so that a file which cannot be written is found out now.
    if (!store->run("pragma journal_mode=wal", error) || !store->run("pragma synchronous=normal", error) ||
        !store->run("create table if not exists items (key text primary key, value text not null) without rowid",
                    error) ||
        !store->run("pragma user_version=1", error) || !store->check(error)) {
        return nullptr;
    }
    store->m_change = store->prepare("insert into items (key, value) values (?1, ?2) "
                                     "on conflict (key) do update set value=?2");
    if (!store->m_change || !store->read()) {
        error = sqlite3_errmsg(database);
        return nullptr;
    }
    return store;
}

void ItemStore::Close::operator()(sqlite3* database) const {
    sqlite3_close(database);
}

void ItemStore::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

ItemStore::Statement ItemStore::prepare(const char* text) const {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(m_database.get(), text, -1, &statement, nullptr);
    return Statement(statement);
}

bool ItemStore::run(const char* statement, std::string& error) {
    if (sqlite3_exec(m_database.get(), statement, nullptr, nullptr, nullptr) == SQLITE_OK) {
        return true;
    }
    error = sqlite3_errmsg(m_database.get());
    return false;
}

bool ItemStore::check(std::string& error) {
    const Statement soundness = prepare("pragma quick_check(1)");
    const std::string finding =
        sqlite3_step(soundness.get()) == SQLITE_ROW ? columnText(soundness.get(), 0) : sqlite3_errmsg(m_database.get());
    if (finding != "ok") {
        error = finding;
        return false;
    }
    return run("select key, value from items limit 1", error);
}

bool ItemStore::read() {
    const Statement statement = prepare("select key, value from items");
    int outcome = sqlite3_step(statement.get());
    for (; outcome == SQLITE_ROW; outcome = sqlite3_step(statement.get())) {
        m_items.emplace(columnText(statement.get(), 0), columnText(statement.get(), 1));
    }
    return outcome == SQLITE_DONE;
}

std::optional<std::string> ItemStore::get(const std::string& key) const {
    const auto item = m_items.find(key);
    return item == m_items.end() ? std::nullopt : std::optional<std::string>(item->second);
}

bool ItemStore::put(const std::string& key, const std::string& value) {
    bind(m_change.get(), 1, key);
    bind(m_change.get(), 2, value);
    const bool written = sqlite3_step(m_change.get()) == SQLITE_DONE;
    sqlite3_reset(m_change.get());
    if (written) {
        m_items[key] = value;
    }
    return written;
}
