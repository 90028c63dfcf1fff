#pragma once

#include "OrvaneServiceObserverIfc.h"
#include "orvane-phone/Output.h"

/// The telephone's own observer: passes everything on to the output.
class PhoneObserver : public OrvaneServiceObserverIfc {
public:
    explicit PhoneObserver(Output& output) : m_output(output) {}

    Executable* getSubscribingService() override { return nullptr; }
    void informUserEvent(const std::string& msg, OrvaneServiceTypes::UserMsgType type) override {
        m_output.userEvent(type, msg);
    }
    void orvaneEvent(OrvaneServiceTypes::EventType type) override { m_output.event(type); }
    void orvaneFullSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) override {
        m_output.fullSync(type, data);
    }
    void orvaneIncrementalSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) override {
        m_output.incrementalSync(type, data);
    }
    void orvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>& data) override {
        m_output.voicemail(data);
    }

private:
    Output& m_output;
};
