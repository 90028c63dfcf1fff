#include "model/AddressBook.h"

namespace cloudsim {
namespace {

Json newContact(std::int64_t id, const Json& members) {
    Json record = Json::object();
    record["id"] = id;
    record["availability"] = "Alive";
    for (const auto& [key, value] : members.items())
        if (key != "id")
            record[key] = value;
    return record;
}

} // namespace

std::int64_t AddressBook::add(const Json& members) {
    auto given = members.find("id");
    std::int64_t id = 0;
    if (given != members.end() && given->is_number_integer()) {
        id = given->get<std::int64_t>();
    } else {
        while (m_log.wasUsed(m_nextId))
            ++m_nextId;
        id = m_nextId++;
    }
    m_log.put(id, newContact(id, members));
    return id;
}

bool AddressBook::replace(std::int64_t id, const Json& members) {
    if (m_log.find(id) == nullptr)
        return false;
    m_log.put(id, newContact(id, members));
    return true;
}

std::optional<Json> AddressBook::remove(std::int64_t id) {
    const Json* present = m_log.find(id);
    if (present == nullptr)
        return std::nullopt;
    Json record = *present;
    record["availability"] = "Deleted";
    m_log.put(id, record);
    m_log.erase(id);
    return record;
}

std::vector<Json> AddressBook::all() const {
    std::vector<Json> records;
    for (const auto* entry : m_log.present())
        records.push_back(entry->record);
    return records;
}

std::optional<AddressBook::Download> AddressBook::begin(const std::optional<std::string>& token) {
    Download download;
    download.sinceToken = token;
    if (token) {
        auto point = m_tokens.find(*token);
        if (!point)
            return std::nullopt;
        for (const auto* entry : m_log.changedAfter(*point))
            download.records.push_back(entry->record);
    } else {
        download.records = all();
    }
    download.token = m_tokens.at(m_log.point());
    return download;
}

std::optional<AddressBook::Page> AddressBook::page(const std::optional<std::string>& token, int number,
                                                   std::size_t pageSize) {
    if (number <= 1 || !m_download || m_download->sinceToken != token) {
        auto download = begin(token);
        if (!download)
            return std::nullopt;
        m_download = std::move(download);
    }
    const auto& records = m_download->records;
    auto first = std::min(records.size(), static_cast<std::size_t>(std::max(number, 1) - 1) * pageSize);
    auto behind = std::min(records.size(), first + pageSize);
    Page page;
    page.token = m_download->token;
    page.records.assign(records.begin() + static_cast<std::ptrdiff_t>(first),
                        records.begin() + static_cast<std::ptrdiff_t>(behind));
    if (behind < records.size())
        page.nextPage = std::max(number, 1) + 1;
    return page;
}

} // namespace cloudsim
