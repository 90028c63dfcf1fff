#pragma once

#include "LockDiscipline.h"
#include "ManualContext.h"
#include "MemoryStore.h"
#include "RecordedLog.h"
#include "ScriptedNetwork.h"
#include "ScriptedWebSocket.h"
#include "StepRecord.h"
#include "TestDataManager.h"
#include "TestSiblings.h"
#include "TestThreads.h"

#include <string>
#include <vector>

/// Everything that a telephone supplies to the service, in the hands of a test. One at a time.
class TestPlatform {
public:
    TestPlatform();
    ~TestPlatform();
    TestPlatform(const TestPlatform&) = delete;
    TestPlatform& operator=(const TestPlatform&) = delete;

    static TestPlatform& current();

    StepRecord steps;
    RecordedLog log;
    LockDiscipline locks;
    ManualContext context;
    TestThreads threads;
    ScriptedNetwork network;
    ScriptedWebSocket webSocket;
    MemoryStore store;
    TestDataManager dataManager;
    TestCommunicationsService communications;
    TestTeamService team;
    TestJournalService journal;
    TestSecurityLogService securityLog;
    TestCertificateService certificates;

    std::string model = "MODEL"; ///< "KD24", "KD26", and texts that begin with "KD36", "KD46", "KL" are known models
    std::vector<CertificateMgmtSvcIfc*> certificatesUsed;

private:
    static TestPlatform* s_current;
};
