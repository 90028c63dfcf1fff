#pragma once

#include "OrvaneServiceTypes.h"

#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

/// What a person sees of the telephone, without how it is drawn. Takes no lock.
class ViewModel {
public:
    struct Call {
        std::string type; ///< "Received", "Missed", "Dialled" or "Unknown"
        std::string id;
        std::string startTime; ///< ISO 8601
        std::string duration;
        std::string number;
        std::string name;
        std::string lineTag;
        std::string lineNumber;

        bool hasName() const;
        bool hasNumber() const;
        /// On a shared line.
        bool hasLine() const;
        /// Its tag, else its number.
        std::string lineLabel() const;
        /// Name, else number, else "unknown caller".
        std::string party() const;
    };
    struct Contact {
        std::string id;
        std::string name;
        std::string number; ///< the first one that is set
    };
    /// A function key that watches a colleague.
    struct Key {
        std::string label;
        bool dnd = false;
    };

    /// Applies a batch of call records; returns what changed, in words, one entry a change.
    std::vector<std::string> applyCalls(const std::vector<std::string>& batch, bool full);
    std::vector<std::string> applyContacts(const std::vector<std::string>& batch, bool full);
    void setVoicemail(const std::map<std::string, OrvaneServiceTypes::Voicemail>& data) { m_voicemail = data; }
    void setLamp(const std::string& uri, bool dnd) { m_lamps[uri] = dnd; }
    /// An item of the store; those that show are taken.
    void setItem(const std::string& name, const std::string& value);
    void setChannel(bool open) { m_channel = open; }
    void addEvent(const std::string& text);

    /// Newest first.
    std::vector<Call> calls() const;
    /// By name.
    std::vector<Contact> contacts() const;
    std::size_t callCount() const { return m_calls.size(); }
    std::size_t missedCount() const;
    std::size_t contactCount() const { return m_contacts.size(); }
    /// A missed call that the user has not looked at.
    bool isNew(const Call& call) const;
    const std::map<std::string, OrvaneServiceTypes::Voicemail>& voicemail() const { return m_voicemail; }
    /// Keys that are set up, in their order, then lamps without a key.
    std::vector<Key> keys() const;
    /// The key's label, or the URI itself.
    std::string keyLabel(const std::string& uri) const;
    bool dnd() const { return m_dnd; }
    bool channel() const { return m_channel; }
    bool interfaceUp() const { return m_interfaceUp; }
    /// Latest last.
    const std::deque<std::string>& events() const { return m_events; }

    /// The fields of a record text. Names may hold commas, so the first five are counted from the left and the last
    /// two from the right. False when the text is no record.
    static bool parseCall(const std::string& record, Call& call);
    static bool parseContact(const std::string& record, Contact& contact);

private:
    std::map<std::string, Call> m_calls;       ///< by id
    std::map<std::string, Contact> m_contacts; ///< by id
    std::map<std::string, OrvaneServiceTypes::Voicemail> m_voicemail;
    std::map<std::string, bool> m_lamps;    ///< by URI
    std::map<int, std::string> m_keyUris;   ///< by the key's index
    std::map<int, std::string> m_keyLabels; ///< by the key's index
    std::set<std::string> m_viewedIds;
    bool m_dnd = false;
    bool m_channel = false;
    bool m_interfaceUp = true;
    std::deque<std::string> m_events;
};
