#pragma once

#include "framework/Service.h"
#include "siblings/CertificateMgmtSvcIfc.h"
#include "siblings/CommunicationsServiceIfc.h"
#include "siblings/JournalServiceIfc.h"
#include "siblings/SecurityLogServiceIfc.h"
#include "siblings/TeamServiceIfc.h"

#include <atomic>
#include <functional>
#include <string>

/// Stand-ins for the telephone's other services: they report what they are told, and pass on what a person at the PC
/// makes them raise. Listeners are set before the service is initialised and are called on the service's threads.
class HostSibling : public Service {
public:
    void init(Context&) override {}
    void shutdown() override {}
    void timerEvent(int) override {}
    void run() override {}
};

class HostCommunicationsService : public HostSibling, public CommunicationsServiceIfc {
public:
    void subscribe(CommunicationsServiceEventIfc* listener) override { m_listener = listener; }
    /// Null until the service has subscribed.
    CommunicationsServiceEventIfc* listener() const { return m_listener; }

private:
    std::atomic<CommunicationsServiceEventIfc*> m_listener{nullptr};
};

class HostTeamService : public HostSibling, public TeamServiceIfc {
public:
    std::function<void(const std::string& uri, bool active)> lampChanged;

    void subscribe(TeamServiceEventIfc* listener) override { m_listener = listener; }
    void showDoNotDisturb(const std::string& uri, bool active) override { lampChanged(uri, active); }
    /// Null until the service has subscribed.
    TeamServiceEventIfc* listener() const { return m_listener; }

private:
    std::atomic<TeamServiceEventIfc*> m_listener{nullptr};
};

class HostJournalService : public HostSibling, public JournalServiceIfc {
public:
    std::function<void()> cleanedUp;

    void cleanUp() override { cleanedUp(); }
};

class HostSecurityLogService : public HostSibling, public SecurityLogServiceIfc {
public:
    std::function<void(bool success, const std::string& text)> recordAdded;

    void addRecord(std::time_t, int, int, int, int, int failure, const std::string& text, const std::string&,
                   const std::string&) override {
        recordAdded(failure == 0, text);
    }
};

/// Certificate files named on the command line; the same for every client.
class HostCertificateService : public HostSibling, public CertificateMgmtSvcIfc {
public:
    HostCertificateService(std::string authorities, std::string certificate, std::string key)
        : m_authorities(std::move(authorities)), m_certificate(std::move(certificate)), m_key(std::move(key)) {}

    std::string getCertificateAuthorities(CertificateMgmt::eInterface) override { return m_authorities; }
    std::string getClientCertificate(CertificateMgmt::eInterface) override { return m_certificate; }
    std::string getClientKey(CertificateMgmt::eInterface) override { return m_key; }

private:
    const std::string m_authorities;
    const std::string m_certificate;
    const std::string m_key;
};
