#include "model/CallLog.h"

#include "base/Identifiers.h"
#include "base/Timestamps.h"

#include <cstdio>

namespace cloudsim {
namespace {

void setDefault(Json& record, const Json& members, const char* key, Json value) {
    auto given = members.find(key);
    record[key] = given != members.end() ? *given : std::move(value);
}

bool isNewer(const Json& a, const Json& b) {
    return textMember(a, "startTime") > textMember(b, "startTime");
}

} // namespace

std::string CallLog::newId() {
    while (true) {
        constexpr std::int64_t owners = 1000000;
        char id[32];
        std::snprintf(id, sizeof id, "4%06lld%06llu", static_cast<long long>(m_owner % owners),
                      static_cast<unsigned long long>(17 * m_nextNumber++));
        if (!m_log.wasUsed(id))
            return id;
    }
}

std::string CallLog::add(const Json& members) {
    Json record = Json::object();
    setDefault(record, members, "id", nullptr);
    if (record["id"].is_null())
        record["id"] = newId();
    std::string id = record["id"].is_string() ? record["id"].get<std::string>() : toText(record["id"]);
    setDefault(record, members, "sessionId", std::to_string(39000000000 + m_nextNumber));
    setDefault(record, members, "telephonySessionId", "s-" + randomUuid());
    setDefault(record, members, "startTime", toTimestamp(std::chrono::system_clock::now()));
    setDefault(record, members, "duration", 30);
    setDefault(record, members, "type", "Voice");
    setDefault(record, members, "direction", "Inbound");
    setDefault(record, members, "action", "Phone Call");
    setDefault(record, members, "result", "Accepted");
    for (const auto& [key, value] : members.items())
        if (!record.contains(key))
            record[key] = value;
    m_log.put(id, std::move(record));
    return id;
}

bool CallLog::remove(const std::string& id) {
    return m_log.erase(id);
}

void CallLog::removeAll() {
    for (const auto* entry : m_log.present())
        m_log.erase(entry->id);
}

std::vector<Json> CallLog::newest(std::size_t count) const {
    std::vector<Json> records;
    for (const auto* entry : m_log.present())
        records.push_back(entry->record);
    std::stable_sort(records.begin(), records.end(), isNewer);
    if (records.size() > count)
        records.resize(count);
    return records;
}

CallLog::Synchronisation CallLog::full(std::size_t count) {
    return {newest(count), m_tokens.at(m_log.point())};
}

std::optional<CallLog::Synchronisation> CallLog::changes(const std::string& token, std::size_t count,
                                                         bool withDeleted) {
    auto point = m_tokens.find(token);
    if (!point)
        return std::nullopt;
    Synchronisation result;
    std::uint64_t reached = m_log.point();
    for (const auto* entry : m_log.changedAfter(*point)) {
        if (entry->deleted && !withDeleted)
            continue;
        if (result.records.size() == count) {
            reached = entry->changedAt - 1;
            break;
        }
        Json& record = result.records.emplace_back(entry->record);
        if (entry->deleted)
            record["deleted"] = true;
    }
    std::stable_sort(result.records.begin(), result.records.end(), isNewer);
    result.token = m_tokens.at(reached);
    return result;
}

} // namespace cloudsim
