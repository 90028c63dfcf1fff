#pragma once

#include "orvane-phone/Output.h"

#include <mutex>

/// One JSON object a line on standard output, flushed line by line.
class JsonOutput : public Output {
public:
    void ready(const std::string& controlSocket) override;
    void fullSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) override;
    void incrementalSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) override;
    void event(OrvaneServiceTypes::EventType type) override;
    void userEvent(OrvaneServiceTypes::UserMsgType type, const std::string& message) override;
    void voicemail(const std::map<std::string, OrvaneServiceTypes::Voicemail>& data) override;
    void item(const std::string& name, const std::string& value) override;
    void lamp(const std::string& uri, bool dnd) override;
    void journal() override;
    void securityLog(bool success, const std::string& text) override;
    void stored(const std::string&, const std::string&) override {}
    void look(bool) override {}
    void summary() override {}
    void stopped() override;

private:
    void write(const std::string& line);

    std::mutex m_mutex;
    bool m_stopped = false; ///< "stopped" is the last line, whatever else still comes
};
