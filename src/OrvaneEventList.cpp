#include "OrvaneEventList.h"

#include <algorithm>

OrvaneEventList::OrvaneEventList() = default;

OrvaneEventList::~OrvaneEventList() = default;

void OrvaneEventList::clear() {
    m_events.clear();
}

bool OrvaneEventList::empty() {
    return m_events.empty();
}

OrvaneEventList::iterator OrvaneEventList::find(OrvaneEvent& event, bool compareParameters) {
    return std::find_if(m_events.begin(), m_events.end(), [&event, compareParameters](const OrvaneEvent& candidate) {
        return candidate.isEqual(event, compareParameters);
    });
}

bool OrvaneEventList::isEventInList(OrvaneEvent& event, bool compareParameters) {
    return find(event, compareParameters) != m_events.end();
}

bool OrvaneEventList::add(OrvaneEvent& event) {
    if (isEventInList(event, true)) {
        return false;
    }
    m_events.push_back(event);
    return true;
}

bool OrvaneEventList::add(const std::string& uri) {
    OrvaneEvent event(uri, OrvaneEvent::EMPTY_EXT_ID);
    return add(event);
}

bool OrvaneEventList::remove(OrvaneEvent& event) {
    const iterator position = find(event, true);
    if (position == m_events.end()) {
        return false;
    }
    m_events.erase(position);
    return true;
}

bool OrvaneEventList::remove(std::string& uri) {
    OrvaneEvent event(uri, OrvaneEvent::EMPTY_EXT_ID);
    return remove(event);
}

void OrvaneEventList::merge(OrvaneEventList& confirmed, OrvaneEventList& dropped) {
    for (iterator event = m_events.begin(); event != m_events.end();) {
        if (confirmed.remove(*event)) {
            ++event;
        } else {
            dropped.add(*event);
            event = m_events.erase(event);
        }
    }
}

std::string OrvaneEventList::toString() {
    std::string text;
    for (const OrvaneEvent& event : m_events) {
        text += event.uri() + "," + event.eventPath() + "," + event.extensionId() + "\n";
    }
    return text;
}
