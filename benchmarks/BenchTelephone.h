#pragma once

#include "OrvaneServiceObserverIfc.h"
#include "unit/EventChannel/ChannelTelephone.h"

#include <cstddef>
#include <string>
#include <vector>

/// Takes what it is given and counts it.
class CountingObserver : public OrvaneServiceObserverIfc {
public:
    std::size_t records = 0;
    std::size_t bytes = 0; ///< of the record texts

    Executable* getSubscribingService() override { return nullptr; }
    void informUserEvent(const std::string&, OrvaneServiceTypes::UserMsgType) override {}
    void orvaneEvent(OrvaneServiceTypes::EventType) override {}
    void orvaneFullSync(std::vector<std::string> data, OrvaneServiceTypes::DataType) override { add(data); }
    void orvaneIncrementalSync(std::vector<std::string> data, OrvaneServiceTypes::DataType) override { add(data); }
    void orvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>&) override {}

private:
    void add(const std::vector<std::string>& data) {
        records += data.size();
        for (const std::string& text : data) {
            bytes += text.size();
        }
    }
};

/// The real service, logged in and subscribed to its events, with the log off.
class BenchTelephone : public ChannelTelephone {
public:
    BenchTelephone();
    ~BenchTelephone() override;

    /// Merges and publishes a response; returns how many records the observer was given.
    std::size_t takeCallLog(std::string& body);
    std::size_t takePhonebookPage(std::string& body);
    void takeFrame(const std::string& frame);
    /// Throws when the frame is not one of the events that are subscribed.
    void requireTaken(const std::string& frame);
    /// Loads that many calls, a response of 100 at a time.
    void loadCalls(int count);
    /// Shared lines that are ready, without calls.
    void loadLines(int count);
    std::size_t observedBytes() const { return m_observer.bytes; }
    void forgetWrites() { platform.store.writes.clear(); }
    /// Gives back what the test platform keeps of what the service did.
    void forgetRecords();

private:
    void TestBody() override {}

    CountingObserver m_observer;
};
