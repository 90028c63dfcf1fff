#pragma once

#include "OrvaneService/OrvaneService.h"
#include "OrvaneServiceObserverIfc.h"
#include "data/LocalMgmt.h"
#include "framework/HostContext.h"
#include "siblings/HostSiblings.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// Remembers how many records of calls it was given, and when the last ones came.
class TimedObserver : public OrvaneServiceObserverIfc {
public:
    using Clock = std::chrono::steady_clock;

    std::size_t calls();
    /// Waits until that many records of calls have come; the time at which the last of them had.
    Clock::time_point awaitCalls(std::size_t count);

    Executable* getSubscribingService() override { return nullptr; }
    void informUserEvent(const std::string&, OrvaneServiceTypes::UserMsgType) override {}
    void orvaneEvent(OrvaneServiceTypes::EventType) override {}
    void orvaneFullSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) override { add(data, type); }
    void orvaneIncrementalSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) override {
        add(data, type);
    }
    void orvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>&) override {}

private:
    void add(const std::vector<std::string>& data, OrvaneServiceTypes::DataType type);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_calls = 0;
    Clock::time_point m_last;
};

/// The real service on the real platform of a PC, everything switched on, with the log at level 2.
class HostTelephone {
public:
    HostTelephone(int port, const std::string& authorities);
    ~HostTelephone();
    HostTelephone(const HostTelephone&) = delete;
    HostTelephone& operator=(const HostTelephone&) = delete;

    void init() { m_service->init(m_context); }
    OrvaneService& service() { return *m_service; }
    TimedObserver& observer() { return m_observer; }

private:
    HostContext m_context;
    std::unique_ptr<LocalMgmt> m_store;
    HostCommunicationsService m_communications;
    HostTeamService m_team;
    HostJournalService m_journal;
    HostSecurityLogService m_securityLog;
    HostCertificateService m_certificates;
    TimedObserver m_observer;
    std::unique_ptr<OrvaneService> m_service;
};
