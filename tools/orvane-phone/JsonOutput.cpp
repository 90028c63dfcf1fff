#include "orvane-phone/JsonOutput.h"

#include "events/EventLines.h"

void JsonOutput::write(const std::string& line) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_stopped) {
        print(line + "\n");
    }
}

void JsonOutput::ready(const std::string& controlSocket) {
    write(EventLines::ready(controlSocket));
}

void JsonOutput::fullSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) {
    write(EventLines::synchronisation("orvaneFullSync", type, data));
}

void JsonOutput::incrementalSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) {
    write(EventLines::synchronisation("orvaneIncrementalSync", type, data));
}

void JsonOutput::event(OrvaneServiceTypes::EventType type) {
    write(EventLines::orvaneEvent(type));
}

void JsonOutput::userEvent(OrvaneServiceTypes::UserMsgType type, const std::string& message) {
    write(EventLines::informUserEvent(message, type));
}

void JsonOutput::voicemail(const std::map<std::string, OrvaneServiceTypes::Voicemail>& data) {
    write(EventLines::orvaneVoicemail(data));
}

void JsonOutput::item(const std::string& name, const std::string& value) {
    write(EventLines::item(name, value));
}

void JsonOutput::lamp(const std::string& uri, bool dnd) {
    write(EventLines::lamp(uri, dnd));
}

void JsonOutput::journal() {
    write(EventLines::journal());
}

void JsonOutput::securityLog(bool success, const std::string& text) {
    write(EventLines::securityLog(success, text));
}

void JsonOutput::stopped() {
    write(EventLines::stopped());
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stopped = true;
}
