#include "TestTelephone.h"
#include "data/ServiceDataManager.h"
#include "threads/Threader.h"

namespace {

const std::string& intervalItem = PldsTags::ORVANE_API_SYNC_INTERVAL;

class Interval : public TestTelephone {
protected:
    Interval() { platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, ""); }

    void expectRefusal(const std::string& value) {
        const TestDataManager::Result result = platform.dataManager.deliver(intervalItem, value);
        EXPECT_FALSE(result.accepted) << value;
        EXPECT_EQ("out of range (30-3600)", result.error);
        EXPECT_TRUE(logged(6, "OrvaneApiSyncIntervalSetter() m_sync_interval[100] newVal[" + value + "]"));
    }
};

TEST_F(Interval, IsRefusedOutOfItsRange) {
    initialise();
    platform.dataManager.deliver(intervalItem, "100");

    for (const std::string value : {"29", "3601", "0", "-30", "", "abc", "99999999999999999999"}) {
        expectRefusal(value);
    }

    EXPECT_EQ("100", platform.dataManager.read(intervalItem));
}

TEST_F(Interval, IsTakenAtTheEndsOfItsRange) {
    initialise();

    for (const std::string value : {"30", "3600", " 31x"}) {
        const TestDataManager::Result result = platform.dataManager.deliver(intervalItem, value);
        EXPECT_TRUE(result.accepted);
        EXPECT_EQ("", result.error);
    }

    EXPECT_EQ("31", platform.dataManager.read(intervalItem)) << "what stands behind the number is passed over";
}

class PollingInterval : public TestTelephone {
protected:
    PollingInterval() {
        withCallLog();
        withObserver();
        connectWithEmptyCloud();
    }
    void deliver(const std::string& value) { EXPECT_TRUE(platform.dataManager.deliver(intervalItem, value).accepted); }
    void startAgain() {
        expectToken();
        expectExtension();
        expectGrants();
        expectIncrementalCallLog("c1", "c2");
        expectWebSocketToken();
        service->start();
    }
    void pollOnce() {
        expectIncrementalCallLog("c2", "c3");
        passSeconds(60);
    }
};

TEST_F(PollingInterval, ThatChangesWhilePollingSynchronisesAtOnce) {
    const int former = platform.context.running(60000).at(0);
    expectIncrementalCallLog("c1", "c2");

    deliver("300");

    EXPECT_FALSE(platform.context.exists(former));
    EXPECT_EQ(1u, platform.context.running(300000).size());
    EXPECT_TRUE(logged(6, "timerEvent() sync interval changed, recreating timer"));
    EXPECT_TRUE(logged(4, "getCallLogsAndVoicemails() - start polling timer 300 second(s)"));
}

TEST_F(PollingInterval, ThatStaysTheSameDoesNothing) {
    const std::size_t requests = platform.network.requests.size();

    deliver("60");

    EXPECT_EQ(requests, platform.network.requests.size());
    EXPECT_EQ(1u, platform.context.running(60000).size());
}

TEST_F(PollingInterval, ThatChangesWhileNotPollingWaitsForTheNextExpiry) {
    service->stop();

    deliver("300");

    EXPECT_TRUE(platform.context.withDuration(300000).empty());
    startAgain();
    EXPECT_EQ(1u, platform.context.running(60000).size());
    pollOnce();
    EXPECT_EQ(1u, platform.context.running(300000).size());
    EXPECT_TRUE(platform.context.withDuration(60000).empty());
}

TEST_F(PollingInterval, ThatIsRefusedLeavesAnEarlierChangeToTheNextExpiry) {
    service->stop();
    deliver("300");

    EXPECT_FALSE(platform.dataManager.deliver(intervalItem, "29").accepted);

    startAgain();
    pollOnce();
    EXPECT_EQ(1u, platform.context.running(300000).size());
}

TEST_F(PollingInterval, ThatIsSetTwiceWhileNotPollingMissesItsTimer) {
    service->stop();
    deliver("300");

    deliver("300");

    startAgain();
    pollOnce();
    EXPECT_EQ(1u, platform.context.running(60000).size());
    EXPECT_TRUE(platform.context.withDuration(300000).empty());
    EXPECT_FALSE(logged(6, "timerEvent() sync interval changed, recreating timer"));
}

/// Remembers what goes through the virtual operation.
class ExpiryRecorder : public OrvaneService {
public:
    using OrvaneService::OrvaneService;

    void timerEvent(int id) override { expired.push_back(id); }
    std::vector<int> expired;
};

TEST_F(Interval, ThatChangesWhilePollingGoesThroughTheVirtualOperation) {
    nameSemaphoresOfNextService();
    auto owned = std::make_unique<ExpiryRecorder>(new ServiceDataManager, new Threader);
    const ExpiryRecorder& recorder = *owned;
    service = std::move(owned);
    initialise();
    const int polling = platform.context.withDuration(60000).at(0);
    platform.context.startTimer(polling);

    platform.dataManager.deliver(intervalItem, "300");

    EXPECT_EQ(std::vector<int>{polling}, recorder.expired);
}

} // namespace
