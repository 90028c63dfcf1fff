#pragma once

#include "SiblingService.h"
#include "siblings/CertificateMgmtSvcIfc.h"
#include "siblings/CommunicationsServiceIfc.h"
#include "siblings/JournalServiceIfc.h"
#include "siblings/SecurityLogServiceIfc.h"
#include "siblings/TeamServiceIfc.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

class TestCommunicationsService : public SiblingService, public CommunicationsServiceIfc {
public:
    void subscribe(CommunicationsServiceEventIfc* newListener) override;

    CommunicationsServiceEventIfc* listener = nullptr;
};

class TestTeamService : public SiblingService, public TeamServiceIfc {
public:
    void subscribe(TeamServiceEventIfc* newListener) override;
    void showDoNotDisturb(const std::string& uri, bool active) override;

    TeamServiceEventIfc* listener = nullptr;
    std::vector<std::pair<std::string, bool>> lamps;
    std::function<void()> reaction; ///< runs inside every call
};

class TestJournalService : public SiblingService, public JournalServiceIfc {
public:
    void cleanUp() override;

    int cleanUps = 0;
};

class TestSecurityLogService : public SiblingService, public SecurityLogServiceIfc {
public:
    struct Record {
        std::time_t time;
        std::vector<int> classes;
        int failure;
        std::string text;
        std::string user;
        std::string address;
    };

    void addRecord(std::time_t time, int firstClass, int secondClass, int thirdClass, int fourthClass, int failure,
                   const std::string& text, const std::string& user, const std::string& address) override;

    std::vector<Record> records;
};

class TestCertificateService : public SiblingService, public CertificateMgmtSvcIfc {
public:
    std::string getCertificateAuthorities(CertificateMgmt::eInterface) override { return std::string(); }
    std::string getClientCertificate(CertificateMgmt::eInterface) override { return std::string(); }
    std::string getClientKey(CertificateMgmt::eInterface) override { return std::string(); }
};
