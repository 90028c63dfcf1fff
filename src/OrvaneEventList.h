#pragma once

#include "OrvaneEvent.h"

#include <string>
#include <vector>

/// Event filters in order of insertion, no two of them equal with their parameters. Takes no lock.
class OrvaneEventList {
public:
    using iterator = std::vector<OrvaneEvent>::iterator;

    OrvaneEventList();
    virtual ~OrvaneEventList();

    void clear();
    bool empty();
    iterator find(OrvaneEvent& event, bool compareParameters);
    iterator end() { return m_events.end(); }
    bool isEventInList(OrvaneEvent& event, bool compareParameters);

    /// False when an equal one is there already.
    bool add(OrvaneEvent& event);
    bool add(const std::string& uri);
    /// False when there is none.
    bool remove(OrvaneEvent& event);
    bool remove(std::string& uri);

    /// Called on what was requested: keeps what is also in `confirmed`, which loses it, and moves the rest to
    /// `dropped`.
    void merge(OrvaneEventList& confirmed, OrvaneEventList& dropped);

    /// A line for each event: uri, event path, extension id.
    std::string toString();

private:
    std::vector<OrvaneEvent> m_events;
};
