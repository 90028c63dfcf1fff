#include "TestTelephone.h"

#include "SemaphoreNames.h"
#include "utilities/Serializer.h"

TestTelephone::TestTelephone() {
    platform.store.set(PldsTags::INTERFACE_STATUS, "up");
    platform.store.set(PldsTags::SERVER_TYPE, "7");
    platform.store.set(PldsTags::MAC_ADDRESS, "MAC1");
    platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, server);
    nameSemaphoresOfNextService();
    service.reset(dynamic_cast<OrvaneService*>(createOrvaneService()));
}

TestTelephone::~TestTelephone() = default;

void TestTelephone::withEverything() {
    withSharedLines();
    withCallLog();
    withPhonebook();
    withDnd();
    withWatchedColleague("100", "5001");
    withObserver();
}

void TestTelephone::nameSemaphoresOfNextService() {
    platform.locks.nameNext(SemaphoreNames::ofService());
}

void TestTelephone::TearDown() {
    checkQuiet();
    service.reset();
}

void TestTelephone::checkQuiet() {
    platform.network.verify();
    platform.locks.checkNothingHeld();
    EXPECT_LE(platform.network.connectionsAlive, 1) << "a connection is lost";
    EXPECT_TRUE(platform.threads.waitedForItself.empty()) << "a thread has waited for itself";
    checkTimers();
}

void TestTelephone::checkTimers() {
    // Four permanent timers and at most one each for the six other purposes.
    EXPECT_LE(platform.context.timerCount(), 10u) << "a timer is lost";
    if (service && service->isRunning()) {
        EXPECT_FALSE(platform.context.runningDurations().empty()) << "nothing renews the token";
    }
}

void TestTelephone::withWatchedColleague(const std::string& keyIndex, const std::string& colleagueExtensionId,
                                         const std::string& label) {
    platform.store.set(PldsTags::FUNCTION_KEY_ID + keyIndex, "59");
    platform.store.set(PldsTags::FUNCTION_KEY_LABEL + keyIndex, label);
    platform.store.set(PldsTags::BLF_DEST + keyIndex, "blf" + colleagueExtensionId);
}

Exchange& TestTelephone::expectColleaguePresence(const std::string& id, const std::string& dndStatus) {
    return platform.network.expectGet(path("/restapi/v1.0/account/~/extension/" + id + "/presence"))
        .answers(200, CloudAnswers::presence(dndStatus, std::stoll(id)));
}

Exchange& TestTelephone::expectFullCallLog(const std::string& syncToken, const std::vector<CloudAnswers::Call>& calls) {
    return platform.network
        .expectGet(path(own("/call-log-sync")) +
                   "?syncType=FSync&recordCount=100&view=Simple&showDeleted=false&statusGroup=All")
        .answers(200, CloudAnswers::callLog(syncToken, calls));
}

Exchange& TestTelephone::expectIncrementalCallLog(const std::string& usedToken, const std::string& syncToken,
                                                  const std::vector<CloudAnswers::Call>& calls) {
    return platform.network
        .expectGet(path(own("/call-log-sync")) +
                   "?syncType=ISync&recordCount=100&view=Simple&showDeleted=true&syncToken=" + usedToken)
        .answers(200, CloudAnswers::callLog(syncToken, calls));
}

Exchange& TestTelephone::expectFullPhonebook(const std::string& syncToken,
                                             const std::vector<CloudAnswers::Contact>& contacts) {
    return platform.network.expectGet(path(own("/address-book-sync")) + "?syncType=FSync&perPage=50")
        .answers(200, CloudAnswers::addressBook(syncToken, contacts));
}

Exchange& TestTelephone::expectIncrementalPhonebook(const std::string& usedToken, const std::string& syncToken,
                                                    const std::vector<CloudAnswers::Contact>& contacts) {
    return platform.network
        .expectGet(path(own("/address-book-sync")) + "?syncType=ISync&perPage=50&syncToken=" + usedToken)
        .answers(200, CloudAnswers::addressBook(syncToken, contacts));
}

void TestTelephone::expectLogin() {
    const auto isOn = [this](const std::string& item) { return platform.store.get(item) == PldsTags::VALUE_TRUE; };
    const bool callLog = isOn(PldsTags::ORVANE_API_SYNC_CALL_LOG);
    const bool dnd = isOn(PldsTags::ORVANE_API_SYNC_DND);
    expectToken();
    expectExtension();
    if (dnd) {
        expectPresence();
    }
    expectGrants();
    if (service->getNoOfObservers() != 0) {
        if (callLog) {
            expectFullCallLog();
        }
        if (isOn(PldsTags::ORVANE_API_SYNC_PHONEBOOK)) {
            expectFullPhonebook();
        }
    }
    if (callLog || dnd) {
        expectWebSocketToken();
    }
}

void TestTelephone::connect() {
    initialise();
    runThreads();
    checkQuiet();
}

void TestTelephone::connectWithEmptyCloud() {
    expectLogin();
    connect();
    ASSERT_TRUE(service->isRunning());
}

void TestTelephone::openChannel(int idleTimeoutSeconds, int recoveryTimeoutSeconds, int recoveryBufferSize) {
    service->onOpen(0);
    service->onMessage("[{\"type\":\"ConnectionDetails\",\"messageId\":\"m1\",\"status\":200,"
                       "\"wsc\":{\"token\":\"wsc-1\",\"sequence\":1}},"
                       "{\"creationTime\":\"2026-01-01T00:00:00Z\",\"maxConnectionsPerSession\":5,"
                       "\"recoveryBufferSize\":" +
                       std::to_string(recoveryBufferSize) +
                       ",\"recoveryTimeout\":" + std::to_string(recoveryTimeoutSeconds) +
                       ",\"idleTimeout\":" + std::to_string(idleTimeoutSeconds) + ",\"absoluteTimeout\":86400}]");
    platform.locks.checkNothingHeld();
}

void TestTelephone::pass(long long milliseconds) {
    platform.context.advance(milliseconds);
    checkQuiet();
}

std::vector<std::string> TestTelephone::lastBatch(const std::string& operation,
                                                  OrvaneServiceTypes::DataType type) const {
    for (auto event = observer.events.rbegin(); event != observer.events.rend(); ++event) {
        if (event->operation == operation && event->type == type) {
            return event->data;
        }
    }
    ADD_FAILURE() << "no " << operation << " of type " << type << " was published";
    return {};
}
