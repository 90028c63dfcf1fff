#pragma once

#include "OrvaneServiceObserverIfc.h"

#include <functional>

/// An observer that remembers what it was told, in order.
class RecordingObserver : public OrvaneServiceObserverIfc {
public:
    struct Event {
        std::string operation; ///< name of the observer's operation
        int type = -1;
        std::vector<std::string> data;
        std::string message;
        std::map<std::string, OrvaneServiceTypes::Voicemail> voicemail;
    };

    std::vector<Event> events;
    /// Runs inside every call, for observers that call back, change their data or throw.
    std::function<void(std::vector<std::string>& data)> reaction;

    std::vector<Event> of(const std::string& operation) const {
        std::vector<Event> found;
        for (const Event& event : events) {
            if (event.operation == operation) {
                found.push_back(event);
            }
        }
        return found;
    }
    void clear() { events.clear(); }

    Executable* getSubscribingService() override { return nullptr; }
    void informUserEvent(const std::string& msg, OrvaneServiceTypes::UserMsgType type) override {
        lastMessage = &msg;
        Event event{"informUserEvent", type, {}, msg, {}};
        record(event);
    }
    void orvaneEvent(OrvaneServiceTypes::EventType type) override {
        Event event{"orvaneEvent", type, {}, {}, {}};
        record(event);
    }
    void orvaneFullSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) override {
        Event event{"orvaneFullSync", type, data, {}, {}};
        record(event);
    }
    void orvaneIncrementalSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) override {
        Event event{"orvaneIncrementalSync", type, data, {}, {}};
        record(event);
    }
    void orvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>& data) override {
        lastVoicemailMap = &data;
        Event event{"orvaneVoicemail", -1, {}, {}, data};
        record(event);
    }

    const void* lastVoicemailMap = nullptr; ///< identity of the map that was handed in
    const void* lastMessage = nullptr;      ///< the same of a message's text

private:
    void record(Event& event) {
        events.push_back(event);
        if (reaction) {
            reaction(event.data);
        }
    }
};
