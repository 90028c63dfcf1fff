#pragma once

#include "orvane-phone/Output.h"
#include "orvane-phone/Screen.h"
#include "orvane-phone/ViewModel.h"

#include <mutex>

/// For people: on a terminal the screen is drawn anew with every change, in a pipe the changes are printed.
class ViewOutput : public Output {
public:
    explicit ViewOutput(std::string title);
    ~ViewOutput() override;

    void ready(const std::string& controlSocket) override;
    void fullSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) override;
    void incrementalSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) override;
    void event(OrvaneServiceTypes::EventType type) override;
    void userEvent(OrvaneServiceTypes::UserMsgType type, const std::string& message) override;
    void voicemail(const std::map<std::string, OrvaneServiceTypes::Voicemail>& data) override;
    void item(const std::string& name, const std::string& value) override;
    void stored(const std::string& name, const std::string& value) override;
    void lamp(const std::string& uri, bool dnd) override;
    void journal() override;
    void securityLog(bool success, const std::string& text) override;
    void look(bool channelOpen) override;
    void summary() override;
    void stopped() override;

private:
    void apply(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data, bool full);
    void show(const std::string& change);
    void draw();
    void leaveScreen();

    const std::string m_title;
    const bool m_terminal;
    Screen::Style m_style;
    std::mutex m_mutex;
    ViewModel m_model;
    Screen::Size m_size;
    bool m_onScreen = false;
};
