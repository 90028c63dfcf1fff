#pragma once

#include "OrvaneServiceTypes.h"

#include <deque>
#include <map>
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
    };
    struct Contact {
        std::string id;
        std::string name;
        std::string number; ///< the first one that is set
    };

    /// Applies a batch of call records; returns what changed, in words, one entry a change.
    std::vector<std::string> applyCalls(const std::vector<std::string>& batch, bool full);
    std::vector<std::string> applyContacts(const std::vector<std::string>& batch, bool full);
    void setVoicemail(const std::map<std::string, OrvaneServiceTypes::Voicemail>& data) { m_voicemail = data; }
    void setLamp(const std::string& uri, bool dnd) { m_lamps[uri] = dnd; }
    void setItem(const std::string& name, const std::string& value);
    void setChannel(bool open) { m_channel = open; }
    void addEvent(const std::string& text);

    /// Newest first.
    std::vector<Call> calls() const;
    /// By name.
    std::vector<Contact> contacts() const;
    std::size_t callCount() const { return m_calls.size(); }
    std::size_t contactCount() const { return m_contacts.size(); }
    bool isViewed(const std::string& callId) const;
    const std::map<std::string, OrvaneServiceTypes::Voicemail>& voicemail() const { return m_voicemail; }
    const std::map<std::string, bool>& lamps() const { return m_lamps; }
    bool dnd() const { return m_dnd; }
    bool channel() const { return m_channel; }
    /// Latest last.
    const std::deque<std::string>& events() const { return m_events; }

    /// The fields of a record text. Names may hold commas, so the first five are counted from the left and the last
    /// two from the right. False when the text is no record.
    static bool parseCall(const std::string& record, Call& call);
    static bool parseContact(const std::string& record, Contact& contact);
    /// A call in one line for a person.
    static std::string describe(const Call& call);

private:
    std::map<std::string, Call> m_calls;       ///< by id
    std::map<std::string, Contact> m_contacts; ///< by id
    std::map<std::string, OrvaneServiceTypes::Voicemail> m_voicemail;
    std::map<std::string, bool> m_lamps;
    std::vector<std::string> m_viewedIds;
    bool m_dnd = false;
    bool m_channel = false;
    std::deque<std::string> m_events;
};
