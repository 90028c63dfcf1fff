#include "orvane-ctl/Observe.h"

#include "events/EventLines.h"
#include "events/JsonLine.h"
#include "framework/Method.h"
#include "transport/JsonProtocolAdapter.h"
#include "transport/PeerJson.h"
#include "usage/ExitStatus.h"
#include "usage/StandardOutput.h"
#include "utilities/Serializer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr auto lookEvery = std::chrono::milliseconds(100);
constexpr double farewellSeconds = 1;

std::atomic<bool> endAsked{false};

void askForEnd(int) {
    endAsked = true;
}

bool print(const std::string& line) {
    return StandardOutput::write("orvane-ctl", line + "\n");
}

std::string request(int sequence, const std::string& method) {
    return "{\"seq\":" + std::to_string(sequence) + ",\"method\":{\"name\":\"" + method +
           "\",\"type\":0,\"parameters\":[]}}";
}

std::string voicemailLine(const std::string& data) {
    std::vector<std::string> entries;
    Serializer::deserialize(data, entries);
    std::map<std::string, OrvaneServiceTypes::Voicemail> lines;
    for (const std::string& entry : entries) {
        std::size_t position = 0;
        std::string key;
        OrvaneServiceTypes::Voicemail voicemail;
        if (Serializer::deserialize(entry, position, key) &&
            Serializer::deserialize(entry, position, voicemail.number) &&
            Serializer::deserialize(entry, position, voicemail.name) &&
            Serializer::deserialize(entry, position, voicemail.latestTimestamp) &&
            Serializer::deserialize(entry, position, voicemail.unreadVoicemailMessageCount)) {
            lines[key] = voicemail;
        }
    }
    return EventLines::orvaneVoicemail(lines);
}

enum class Outcome { ENDED, REFUSED, TIMEOUT, SIGNALLED, GONE };

/// Reads up to the end of the call with that number, in short steps that a signal ends; events on the way are added to
/// `events`.
Outcome awaitEnd(ControlClient& client, int sequence, ControlClient::TimePoint until, bool heedSignals,
                 std::vector<std::string>& events) {
    for (;;) {
        std::string line;
        switch (client.read(line, std::min(until, std::chrono::steady_clock::now() + lookEvery))) {
        case ControlClient::Reading::ENDED:
            return Outcome::GONE;
        case ControlClient::Reading::TIMEOUT:
            if (heedSignals && endAsked) {
                return Outcome::SIGNALLED;
            }
            if (std::chrono::steady_clock::now() >= until) {
                return Outcome::TIMEOUT;
            }
            continue;
        case ControlClient::Reading::LINE:
            break;
        }
        const nlohmann::ordered_json answer = PeerJson::parse(line);
        if (answer.is_object() && answer.contains("seq") && answer["seq"] == sequence) {
            if (answer.contains("end")) {
                return Outcome::ENDED;
            }
            if (answer.contains("error")) {
                const nlohmann::ordered_json& error = answer["error"];
                std::cerr << "orvane-ctl: "
                          << (error.is_string() ? error.get<std::string>() : "the telephone's answer cannot be read")
                          << '\n';
                return Outcome::REFUSED;
            }
        }
        events.push_back(eventLine(line));
    }
}

bool printEvent(const std::string& event) {
    return event.empty() || print(event);
}

/// Up to the first that cannot be printed.
bool printEvents(const std::vector<std::string>& events) {
    return std::all_of(events.begin(), events.end(), printEvent);
}

/// The exit status when the subscription did not come about.
int giveUp(Outcome outcome) {
    if (outcome == Outcome::SIGNALLED) {
        return GOOD;
    }
    if (outcome != Outcome::REFUSED) {
        std::cerr << "orvane-ctl: " << (outcome == Outcome::GONE ? "the telephone has ended" : "no answer in time")
                  << '\n';
    }
    return FAILED;
}

} // namespace

std::string eventLine(const std::string& message) {
    const nlohmann::ordered_json object = PeerJson::parse(message);
    if (!object.is_object() || object.contains("seq") || !object.contains("method")) {
        return std::string();
    }
    std::istringstream text(jsonLine(object["method"]));
    Method method;
    if (!JsonProtocolAdapter().decode(text, method)) {
        return std::string();
    }
    std::string data;
    int type = 0;
    method.getStringParameter("data", data, Parameter::DIRECTION_IN);
    method.getIntParameter("type", type, Parameter::DIRECTION_IN);
    const std::string& name = method.getName();
    if (name == "orvaneFullSync" || name == "orvaneIncrementalSync") {
        std::vector<std::string> records;
        Serializer::deserialize(data, records);
        return EventLines::synchronisation(name, type, records);
    }
    if (name == "orvaneEvent") {
        return EventLines::orvaneEvent(type);
    }
    if (name == "informUserEvent") {
        std::string userText;
        method.getStringParameter("msg", userText, Parameter::DIRECTION_IN);
        return EventLines::informUserEvent(userText, type);
    }
    return name == "orvaneVoicemail" ? voicemailLine(data) : std::string();
}

int observe(ControlClient& client, ControlClient::TimePoint until) {
    std::signal(SIGINT, askForEnd);
    std::signal(SIGTERM, askForEnd);
    int sequence = 1;
    std::vector<std::string> events;
    client.send(request(sequence, "subscribe"), until);
    const Outcome outcome = awaitEnd(client, sequence, until, true, events);
    if (outcome != Outcome::ENDED) {
        return giveUp(outcome);
    }
    // Then what came before the subscription was confirmed.
    bool isTold = print(EventLines::subscribed()) && printEvents(events);
    // A late observer is given all data.
    client.send(request(++sequence, "refreshCallLogEntries"), until);
    client.send(request(++sequence, "refreshPhonebookEntries"), until);
    for (;;) {
        std::string line;
        const auto reading = client.read(line, std::chrono::steady_clock::now() + lookEvery);
        if (reading == ControlClient::Reading::LINE) {
            isTold = isTold && printEvent(eventLine(line));
        }
        if (endAsked || !isTold) {
            const auto soon = ControlClient::deadline(farewellSeconds);
            client.send(request(++sequence, "unsubscribe"), soon);
            events.clear();
            awaitEnd(client, sequence, soon, false, events);
            return isTold && printEvents(events) ? GOOD : FAILED;
        }
        if (reading == ControlClient::Reading::ENDED) {
            std::cerr << "orvane-ctl: the telephone has ended" << '\n';
            return FAILED;
        }
    }
}
