#include "orvane-phone/ViewModel.h"

#include "utilities/ClientUtils.h"
#include "utilities/Serializer.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace {

constexpr std::size_t keptEvents = 50;
constexpr std::size_t fieldCount = 8;
constexpr std::size_t nameField = 5;
constexpr std::size_t fieldsBehindName = 2;
const std::string unknownName = "Unknown.Name";
const std::string unknownNumber = "Caller.Unknown.XXX";

bool isWatchedUri(const std::string& value) {
    return value.rfind("blf", 0) == 0;
}

/// The index behind `front` in an item's name; -1 when it is another item.
int indexBehind(const std::string& name, const std::string& front) {
    return name.rfind(front, 0) == 0 && name.size() > front.size() ? ClientUtils::stoi(name.substr(front.size())) : -1;
}

std::string describe(const ViewModel::Call& call) {
    std::string text = call.type + ", " + call.party();
    if (call.hasName() && call.hasNumber()) {
        text += " " + call.number;
    }
    text += ", " + call.duration;
    return call.hasLine() ? text + ", line " + call.lineNumber : text;
}

std::string describe(const ViewModel::Contact& contact) {
    return contact.number.empty() ? contact.name : contact.name + " " + contact.number;
}

/// Applies one batch to records by id; `parse` reads a record, and what it does not read is the id of a record that is
/// gone.
template <class Record>
std::vector<std::string> apply(const std::vector<std::string>& batch, bool full, const std::string& kind,
                               bool (*parse)(const std::string&, Record&), std::map<std::string, Record>& records) {
    std::vector<std::string> changes;
    if (full) {
        records.clear();
    }
    for (const std::string& text : batch) {
        Record record;
        if (parse(text, record)) {
            const bool known = records.count(record.id) != 0;
            changes.push_back((known ? "changed " : "new ") + kind + ": " + describe(record));
            records[record.id] = std::move(record);
            continue;
        }
        const auto gone = records.find(text);
        if (gone != records.end()) {
            changes.push_back("deleted " + kind + ": " + describe(gone->second));
            records.erase(gone);
        }
    }
    if (full) {
        changes = {"all " + kind + "s: " + std::to_string(records.size())};
    }
    return changes;
}

} // namespace

bool ViewModel::Call::hasName() const {
    return !name.empty() && name != unknownName;
}

bool ViewModel::Call::hasNumber() const {
    return !number.empty() && number != unknownNumber;
}

bool ViewModel::Call::hasLine() const {
    return !lineNumber.empty() && lineNumber != unknownName;
}

std::string ViewModel::Call::lineLabel() const {
    return lineTag.empty() || lineTag == unknownName ? lineNumber : lineTag;
}

std::string ViewModel::Call::party() const {
    if (hasName()) {
        return name;
    }
    return hasNumber() ? number : "unknown caller";
}

bool ViewModel::parseCall(const std::string& record, Call& call) {
    if (record.size() < 2 || record.front() != '{' || record.back() != '}') {
        return false;
    }
    std::vector<std::string> parts;
    ClientUtils::tokenizeString(record.substr(1, record.size() - 2), ",", parts);
    if (parts.size() < fieldCount) {
        return false;
    }
    const std::size_t nameEnd = parts.size() - fieldsBehindName;
    std::string name = parts[nameField];
    for (std::size_t index = nameField + 1; index < nameEnd; ++index) {
        name += "," + parts[index];
    }
    call = {parts[0], parts[1], parts[2], parts[3], parts[4], name, parts[nameEnd], parts[nameEnd + 1]};
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

std::vector<std::string> ViewModel::applyCalls(const std::vector<std::string>& batch, bool full) {
    return apply(batch, full, "call", parseCall, m_calls);
}

std::vector<std::string> ViewModel::applyContacts(const std::vector<std::string>& batch, bool full) {
    return apply(batch, full, "contact", parseContact, m_contacts);
}

void ViewModel::setItem(const std::string& name, const std::string& value) {
    if (name == "CALL_DND_ACTIVATED") {
        m_dnd = value == "true";
    } else if (name == "INTERFACE_STATUS") {
        m_interfaceUp = value == "up";
    } else if (name == "ORVANE_API_VIEWED_MISSED_CALL_IDS") {
        Serializer::deserialize(value, m_viewedIds);
    } else if (const int key = indexBehind(name, "BLF_DEST"); key >= 0) {
        m_keyUris.erase(key);
        if (isWatchedUri(value)) {
            m_keyUris[key] = value;
        }
    } else if (const int labelled = indexBehind(name, "FUNCTION_KEY_LABEL"); labelled >= 0) {
        m_keyLabels[labelled] = value;
    }
}

void ViewModel::addEvent(const std::string& text) {
    m_events.push_back(text);
    if (m_events.size() > keptEvents) {
        m_events.pop_front();
    }
}

bool ViewModel::isNew(const Call& call) const {
    return call.type == "Missed" && m_viewedIds.count(call.id) == 0;
}

std::size_t ViewModel::missedCount() const {
    return static_cast<std::size_t>(
        std::count_if(m_calls.begin(), m_calls.end(), [](const auto& entry) { return entry.second.type == "Missed"; }));
}

std::string ViewModel::keyLabel(const std::string& uri) const {
    for (const auto& [index, keyUri] : m_keyUris) {
        const auto label = m_keyLabels.find(index);
        if (keyUri == uri && label != m_keyLabels.end() && !label->second.empty()) {
            return label->second;
        }
    }
    return uri;
}

std::vector<ViewModel::Key> ViewModel::keys() const {
    std::vector<Key> all;
    std::set<std::string> shown;
    for (const auto& entry : m_keyUris) {
        const auto lamp = m_lamps.find(entry.second);
        all.push_back({keyLabel(entry.second), lamp != m_lamps.end() && lamp->second});
        shown.insert(entry.second);
    }
    for (const auto& [uri, dnd] : m_lamps) {
        if (shown.count(uri) == 0) {
            all.push_back({uri, dnd});
        }
    }
    return all;
}

std::vector<ViewModel::Call> ViewModel::calls() const {
    std::vector<Call> all;
    all.reserve(m_calls.size());
    for (const auto& entry : m_calls) {
        all.push_back(entry.second);
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Call& left, const Call& right) { return left.startTime > right.startTime; });
    return all;
}

std::vector<ViewModel::Contact> ViewModel::contacts() const {
    std::vector<Contact> all;
    all.reserve(m_contacts.size());
    for (const auto& entry : m_contacts) {
        all.push_back(entry.second);
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Contact& left, const Contact& right) { return left.name < right.name; });
    return all;
}
