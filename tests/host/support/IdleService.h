#pragma once

#include "OrvaneServiceIfc.h"
#include "framework/Service.h"

/// A service for the telephone's own tests: it does nothing, and cannot be called by message.
class IdleService : public Service, public OrvaneServiceIfc {
public:
    void init(Context&) override {}
    void shutdown() override {}
    void timerEvent(int) override {}
    void run() override {}

    void subscribe(OrvaneServiceObserverIfc*) override {}
    void unsubscribe(OrvaneServiceObserverIfc*) override {}
    bool isRunning() override { return false; }
    void clearSyncTokens() override {}
    void ageMissedCall(const std::string&) override {}
    void ageMissedCalls(const std::set<std::string>&) override {}
    bool isMissedCallViewed(const std::string&) override { return false; }
    void deleteCallLogEntry(const std::string&) override {}
    bool deleteAllCallLogEntries() override { return false; }
    void refreshCallLogEntries() override {}
    void refreshPhonebookEntries() override {}
    void refreshVoicemailEntries() override {}
    void reloadAllData() override {}
    void addNewContact(const std::string&) override {}
    void deleteSingleContact(const std::string&) override {}
    void updateEditedContact(const std::string&) override {}
    void updateUserPresenceStatus(bool) override {}
    bool sipVoicemailStatusProcessed(const std::string&, const std::string&, bool) override { return false; }
};
