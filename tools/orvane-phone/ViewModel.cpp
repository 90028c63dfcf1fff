#include "orvane-phone/ViewModel.h"

#include "utilities/Serializer.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace {

constexpr std::size_t keptEvents = 50;

std::string nameOrNumber(const ViewModel::Call& call) {
    return call.name.empty() || call.name == "Unknown.Name" ? call.number : call.name + " " + call.number;
}

} // namespace

bool ViewModel::parseCall(const std::string& record, Call& call) {
    if (record.size() < 2 || record.front() != '{' || record.back() != '}') {
        return false;
    }
    std::vector<std::string> parts;
    std::size_t begin = 1;
    for (;;) {
        const std::size_t comma = record.find(',', begin);
        if (comma == std::string::npos) {
            parts.push_back(record.substr(begin, record.size() - 1 - begin));
            break;
        }
        parts.push_back(record.substr(begin, comma - begin));
        begin = comma + 1;
    }
    if (parts.size() < 8) {
        return false;
    }
    std::string name;
    for (std::size_t index = 5; index + 2 < parts.size(); ++index) {
        name += (index == 5 ? "" : ",") + parts[index];
    }
    call = {parts[0], parts[1], parts[2], parts[3], parts[4], name, parts[parts.size() - 2], parts.back()};
    return true;
}

bool ViewModel::parseContact(const std::string& record, Contact& contact) {
    const nlohmann::json fields = nlohmann::json::parse(record, nullptr, false);
    if (!fields.is_object() || !fields.contains("id") || !fields["id"].is_string()) {
        return false;
    }
    const auto field = [&fields](const char* key) {
        return fields.contains(key) && fields[key].is_string() ? fields[key].get<std::string>() : std::string();
    };
    contact.id = field("id");
    contact.name = field("firstname");
    const std::string last = field("lastname");
    contact.name += (contact.name.empty() || last.empty() ? "" : " ") + last;
    contact.number.clear();
    for (const char* key : {"businessNumber", "mobile", "homePhone", "businessNumber2"}) {
        if (contact.number.empty()) {
            contact.number = field(key);
        }
    }
    return true;
}

std::string ViewModel::describe(const Call& call) {
    const std::string line = call.lineNumber == "Unknown.Name" ? "" : "  line " + call.lineNumber;
    return call.type + "  " + call.startTime + "  " + call.duration + "  " + nameOrNumber(call) + line;
}

std::vector<std::string> ViewModel::applyCalls(const std::vector<std::string>& batch, bool full) {
    std::vector<std::string> changes;
    if (full) {
        m_calls.clear();
        changes.push_back("call log: " + std::to_string(batch.size()) + " records");
    }
    for (const std::string& record : batch) {
        Call call;
        if (parseCall(record, call)) {
            const bool known = m_calls.count(call.id) != 0;
            m_calls[call.id] = call;
            if (!full) {
                changes.push_back((known ? "changed call  " : "new call  ") + describe(call));
            }
        } else if (m_calls.erase(record) != 0) {
            changes.push_back("deleted call  " + record);
        }
    }
    return changes;
}

std::vector<std::string> ViewModel::applyContacts(const std::vector<std::string>& batch, bool full) {
    std::vector<std::string> changes;
    if (full) {
        m_contacts.clear();
        changes.push_back("phonebook: " + std::to_string(batch.size()) + " contacts");
    }
    for (const std::string& record : batch) {
        Contact contact;
        if (parseContact(record, contact)) {
            const bool known = m_contacts.count(contact.id) != 0;
            m_contacts[contact.id] = contact;
            if (!full) {
                changes.push_back((known ? "changed contact  " : "new contact  ") + contact.name + "  " +
                                  contact.number);
            }
        } else if (m_contacts.erase(record) != 0) {
            changes.push_back("deleted contact  " + record);
        }
    }
    return changes;
}

void ViewModel::setItem(const std::string& name, const std::string& value) {
    if (name == "CALL_DND_ACTIVATED") {
        m_dnd = value == "true";
    } else if (name == "ORVANE_API_VIEWED_MISSED_CALL_IDS") {
        Serializer::deserialize(value, m_viewedIds);
    }
}

void ViewModel::addEvent(const std::string& text) {
    m_events.push_back(text);
    if (m_events.size() > keptEvents) {
        m_events.pop_front();
    }
}

bool ViewModel::isViewed(const std::string& callId) const {
    return std::find(m_viewedIds.begin(), m_viewedIds.end(), callId) != m_viewedIds.end();
}

std::vector<ViewModel::Call> ViewModel::calls() const {
    std::vector<Call> all;
    for (const auto& entry : m_calls) {
        all.push_back(entry.second);
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Call& left, const Call& right) { return left.startTime > right.startTime; });
    return all;
}

std::vector<ViewModel::Contact> ViewModel::contacts() const {
    std::vector<Contact> all;
    for (const auto& entry : m_contacts) {
        all.push_back(entry.second);
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Contact& left, const Contact& right) { return left.name < right.name; });
    return all;
}
