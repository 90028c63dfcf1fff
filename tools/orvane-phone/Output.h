#pragma once

#include "OrvaneServiceTypes.h"

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// Where the telephone's reports go. The calls come from any thread; each is complete when it returns.
class Output {
public:
    virtual ~Output() = default;

    /// Called once, on any thread, when something could not be written, which is told on standard error; nothing is
    /// written from then on. To be set while nobody reports.
    void setFailureListener(std::function<void()> listener) { m_failureListener = std::move(listener); }
    bool hasFailed() const { return m_failed; }

    virtual void ready(const std::string& controlSocket) = 0;
    virtual void fullSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) = 0;
    virtual void incrementalSync(OrvaneServiceTypes::DataType type, const std::vector<std::string>& data) = 0;
    virtual void event(OrvaneServiceTypes::EventType type) = 0;
    virtual void userEvent(OrvaneServiceTypes::UserMsgType type, const std::string& message) = 0;
    virtual void voicemail(const std::map<std::string, OrvaneServiceTypes::Voicemail>& data) = 0;
    virtual void item(const std::string& name, const std::string& value) = 0;
    virtual void lamp(const std::string& uri, bool dnd) = 0;
    virtual void journal() = 0;
    virtual void securityLog(bool success, const std::string& text) = 0;
    /// An item that the telephone's user or its configuration has set; no report of the service.
    virtual void stored(const std::string& name, const std::string& value) = 0;
    /// From time to time, with what is not reported: whether the event channel is open.
    virtual void look(bool channelOpen) = 0;
    /// Of a run that ends by itself.
    virtual void summary() = 0;
    virtual void stopped() = 0;

protected:
    /// Writes to standard output; one call at a time.
    void print(const std::string& text);

private:
    std::function<void()> m_failureListener;
    std::atomic<bool> m_failed{false};
};
