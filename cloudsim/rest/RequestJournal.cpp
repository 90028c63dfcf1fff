#include "rest/RequestJournal.h"

#include "base/Query.h"

namespace cloudsim {
namespace {

constexpr std::size_t capacity = 20000;

} // namespace

std::uint64_t RequestJournal::add(std::uint64_t connection, std::uint16_t port, const HttpRequest& request) {
    std::lock_guard lock(m_mutex);
    m_entries.push_back({++m_lastNumber, connection, port, std::chrono::system_clock::now(), request, 0});
    if (m_entries.size() > capacity)
        m_entries.pop_front();
    return m_lastNumber;
}

void RequestJournal::setStatus(std::uint64_t number, int status) {
    std::lock_guard lock(m_mutex);
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry)
        if (entry->number == number)
            entry->status = status;
}

void RequestJournal::clear() {
    std::lock_guard lock(m_mutex);
    m_entries.clear();
}

Json RequestJournal::toJson(const Entry& entry) {
    Target target = splitTarget(entry.request.target);
    double seconds = std::chrono::duration<double>(entry.time.time_since_epoch()).count();
    Json json{{"number", entry.number}, {"connection", entry.connection}, {"port", entry.port},
              {"time", seconds},        {"method", entry.request.method}, {"target", entry.request.target},
              {"path", target.path}};
    json["query"] = Json::array();
    for (const auto& [key, value] : target.query)
        json["query"].push_back({key, value});
    json["headers"] = Json::object();
    for (const auto& [name, value] : entry.request.headers)
        json["headers"][toLower(name)] = value;
    json["body"] = entry.request.body;
    json["status"] = entry.status;
    return json;
}

Json RequestJournal::list(const Filter& filter) {
    std::lock_guard lock(m_mutex);
    Json result = Json::array();
    for (const auto& entry : m_entries)
        if (entry.number > filter.after && entry.request.target.find(filter.pathPart) != std::string::npos &&
            (filter.method.empty() || entry.request.method == filter.method))
            result.push_back(toJson(entry));
    return result;
}

} // namespace cloudsim
