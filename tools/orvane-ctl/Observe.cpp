#include "orvane-ctl/Observe.h"

#include "events/EventLines.h"
#include "framework/Method.h"
#include "orvane-ctl/ControlClient.h"
#include "transport/JsonProtocolAdapter.h"
#include "utilities/Serializer.h"

#include <nlohmann/json.hpp>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <sstream>

namespace {

constexpr auto lookEvery = std::chrono::milliseconds(100);

std::atomic<bool> endAsked{false};

void askForEnd(int) {
    endAsked = true;
}

void print(const std::string& line) {
    std::fwrite((line + "\n").data(), 1, line.size() + 1, stdout);
    std::fflush(stdout);
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

/// Reads up to the end of the call with that number, printing the events on the way.
ControlClient::Reading awaitEnd(ControlClient& client, int sequence, ControlClient::TimePoint until) {
    for (;;) {
        std::string line;
        const ControlClient::Reading reading = client.read(line, until);
        if (reading != ControlClient::Reading::LINE) {
            return reading;
        }
        const nlohmann::json answer = nlohmann::json::parse(line, nullptr, false);
        if (answer.is_object() && answer.value("seq", 0) == sequence && answer.value("end", false)) {
            return reading;
        }
        const std::string event = eventLine(line);
        if (!event.empty()) {
            print(event);
        }
    }
}

} // namespace

std::string eventLine(const std::string& message) {
    const nlohmann::json object = nlohmann::json::parse(message, nullptr, false);
    if (!object.is_object() || object.contains("seq") || !object.contains("method")) {
        return std::string();
    }
    std::istringstream text(object["method"].dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
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

int observe(ControlClient& client, int timeoutSeconds) {
    std::signal(SIGINT, askForEnd);
    std::signal(SIGTERM, askForEnd);
    int sequence = 1;
    const auto soon = [timeoutSeconds] {
        return std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
    };
    if (!client.send(request(sequence, "subscribe")) ||
        awaitEnd(client, sequence, soon()) != ControlClient::Reading::LINE) {
        std::cerr << "orvane-ctl: the telephone does not answer" << std::endl;
        return 1;
    }
    print(EventLines::subscribed());
    // A late observer is given all data.
    client.send(request(++sequence, "refreshCallLogEntries"));
    client.send(request(++sequence, "refreshPhonebookEntries"));
    for (;;) {
        std::string line;
        const auto reading = client.read(line, std::chrono::steady_clock::now() + lookEvery);
        if (endAsked) {
            client.send(request(++sequence, "unsubscribe"));
            awaitEnd(client, sequence, soon());
            return 0;
        }
        if (reading == ControlClient::Reading::ENDED) {
            std::cerr << "orvane-ctl: the telephone has ended" << std::endl;
            return 1;
        }
        const std::string event = reading == ControlClient::Reading::LINE ? eventLine(line) : std::string();
        if (!event.empty()) {
            print(event);
        }
    }
}
