#include "data/ServiceDataManager.h"
#include "threads/Threader.h"
#include "unit/EventChannel/ChannelTelephone.h"

#include <limits>

using namespace CloudAnswers;

namespace {

class Timers : public ChannelTelephone {
protected:
    static std::string expiry(int id, const std::string& text) {
        return "timerEvent(" + std::to_string(id) + ")" + text;
    }
    int tokenTimer() const {
        for (int duration : platform.context.runningDurations()) {
            if (duration >= 3240000 && duration <= 3600000) {
                return platform.context.running(duration).front();
            }
        }
        return 0;
    }
    int retryTimer() const {
        for (int duration : platform.context.runningDurations()) {
            if (duration >= 60000 && duration <= 300000) {
                return platform.context.running(duration).front();
            }
        }
        return 0;
    }
    long long duration(int id) const { return platform.context.timer(id).milliseconds; }
};

TEST_F(Timers, ThatNobodyHasAreIgnored) {
    connectWithEmptyCloud();
    platform.log.clear();

    service->timerEvent(987654);
    service->timerEvent(-1);

    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(Timers, OfNoIdAreTheFirstThatDoesNotExist) {
    service->timerEvent(0);
    EXPECT_TRUE(logged(6, "timerEvent(0) token timer expired, state[INITIALIZED]"));
    connectWithEmptyCloud();
    platform.log.clear();

    service->timerEvent(0);

    EXPECT_TRUE(logged(6, "timerEvent(0) refresh Subscription OV events timer expired, state[CONNECTED]"));
    EXPECT_TRUE(frames().empty());
}

/// Counts what goes through the virtual operation.
class CountingService : public OrvaneService {
public:
    using OrvaneService::OrvaneService;

    bool getToken() override {
        ++tokens;
        return OrvaneService::getToken();
    }
    int tokens = 0;
};

TEST_F(Timers, OfTheTokenAndTheLoginAskForItThroughTheVirtualOperation) {
    nameSemaphoresOfNextService();
    auto owned = std::make_unique<CountingService>(new ServiceDataManager, new Threader);
    const CountingService& counting = *owned;
    service = std::move(owned);
    connectWithEmptyCloud();
    EXPECT_EQ(1, counting.tokens);
    expectToken();

    pass(duration(tokenTimer()));

    EXPECT_EQ(2, counting.tokens);
}

TEST_F(Timers, OfTheTokenRenewItWhileConnected) {
    connectWithEmptyCloud();
    const int id = tokenTimer();
    ASSERT_NE(0, id);
    expectToken();

    pass(duration(id));

    EXPECT_TRUE(logged(6, expiry(id, " token timer expired, state[CONNECTED]")));
    EXPECT_TRUE(logged(6, "stopAndDeleteTimer(" + std::to_string(id) + ")"));
    EXPECT_FALSE(platform.context.exists(id));
    EXPECT_NE(0, tokenTimer());
    EXPECT_EQ(1, platform.log.count(4, "start()"));
}

TEST_F(Timers, OfTheTokenStartAnewAfterAFailedLogin) {
    withObserver();
    expectToken().answers(500, "");
    connect();
    const int id = retryTimer();
    ASSERT_NE(0, id);
    expectToken();
    expectExtension();
    expectGrants();

    pass(duration(id));

    EXPECT_TRUE(logged(6, expiry(id, " token timer expired, state[STOP]")));
    EXPECT_TRUE(service->isRunning());
    EXPECT_EQ(1u, observer.of("orvaneEvent").size());
}

TEST_F(Timers, OfTheTokenRetryWithoutLimit) {
    withObserver();
    expectToken().answers(500, "");
    connect();

    for (std::size_t failures = 2; failures < 8; ++failures) {
        expectToken().answers(500, "");
        pass(duration(retryTimer()));
        EXPECT_EQ(failures, observer.of("orvaneEvent").size());
        EXPECT_EQ(1u, platform.context.runningDurations().size());
    }
}

TEST_F(Timers, OfTheTokenThatFailToRenewItBringTheServiceBackLater) {
    connectWithEmptyCloud();
    expectToken().answers(500, "");
    pass(duration(tokenTimer()));
    EXPECT_FALSE(service->isRunning());
    expectLogin();

    pass(duration(retryTimer()));

    EXPECT_TRUE(service->isRunning());
}

TEST_F(Timers, OfARestartStopAndStart) {
    connectWithEmptyCloud();
    platform.store.change(PldsTags::SERVER_TYPE, "8");
    const int id = platform.context.running(1000).at(0);

    pass(1000);

    EXPECT_TRUE(logged(6, expiry(id, " restart timer expired, state[CONNECTED]")));
    EXPECT_TRUE(logged(4, "stop()"));
    EXPECT_TRUE(logged(2, "start() - cannot launch start(). m_interface_status[true], m_ov_server_type[false], "
                          "m_state[STOP]"));
    EXPECT_TRUE(platform.context.exists(id));
    EXPECT_TRUE(platform.context.runningDurations().empty());
}

TEST_F(Timers, OfARestartMayStillFireAfterStop) {
    connectWithEmptyCloud();
    platform.store.change(PldsTags::SERVER_TYPE, "8");
    platform.store.change(PldsTags::SERVER_TYPE, "7");
    service->stop();
    expectLogin();

    pass(1000);

    EXPECT_TRUE(service->isRunning());
}

TEST_F(Timers, OfPollingLogTheirExpiry) {
    withObserver();
    withCallLog();
    connectWithEmptyCloud();
    const int id = runningTimer(60000);
    expectIncrementalCallLog("c1", "c2");

    pass(60000);

    EXPECT_TRUE(logged(6, expiry(id, " refresh call log timer expired, state[CONNECTED]")));
    EXPECT_FALSE(logged(6, "timerEvent() sync interval changed, recreating timer"));
    EXPECT_TRUE(platform.context.exists(id));
}

TEST_F(Timers, OfPollingAreMadeAnewForANewInterval) {
    platform.store.set(PldsTags::ORVANE_API_SYNC_INTERVAL, "30");
    withObserver();
    withCallLog();
    connectWithEmptyCloud();
    const int id = runningTimer(30000);
    expectIncrementalCallLog("c1", "c2");

    pass(30000);

    EXPECT_TRUE(logged(6, "timerEvent() sync interval changed, recreating timer"))
        << "the stored interval came after the default one";
    EXPECT_FALSE(platform.context.exists(id));
    EXPECT_EQ(30000, duration(runningTimer(30000)));
    expectIncrementalCallLog("c2", "c3");
    platform.log.clear();
    pass(30000);
    EXPECT_FALSE(logged(6, "timerEvent() sync interval changed, recreating timer"));
}

TEST_F(Timers, OfAReloadLogTheirExpiry) {
    connectWithEmptyCloud();
    service->reloadAllData();
    const int id = runningTimer(1000);
    service->stop();

    service->timerEvent(id);

    EXPECT_TRUE(logged(6, expiry(id, " reload all data timer expired, state[STOP]")));
    EXPECT_TRUE(logged(4, "reloadAllDataIfUserChanged()"));
}

TEST_F(Timers, OfTheIdleTimeSendAHeartbeat) {
    openSession();
    const int id = runningTimer(idleMilliseconds);
    frames().clear();

    pass(idleMilliseconds);

    EXPECT_TRUE(logged(6, expiry(id, " - web socket idleTimer expired, state[CONNECTED]")));
    ASSERT_EQ(1u, frames().size());
    EXPECT_NE(std::string::npos, frames()[0].find("\"Heartbeat\""));
    EXPECT_TRUE(isTimerRunning(heartbeatMilliseconds));
}

TEST_F(Timers, OfAHeartbeatOnlyLogTheError) {
    openSession();
    pass(idleMilliseconds);
    const int id = runningTimer(heartbeatMilliseconds);

    pass(heartbeatMilliseconds);

    EXPECT_TRUE(logged(2, expiry(id, " - web socket hearbeatTimer expired! Web socket connection are closing by "
                                     "server! state[CONNECTED]")));
    EXPECT_TRUE(platform.context.exists(id));
    EXPECT_TRUE(service->isRunning());
    EXPECT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
}

TEST_F(Timers, OfTheIdleTimeAreResetByTraffic) {
    openSession();
    pass(50000);
    receive(contextFrame("w", 2));
    frames().clear();

    pass(53999);
    EXPECT_TRUE(frames().empty());
    pass(1);

    EXPECT_EQ(1u, frames().size());
}

TEST_F(Timers, OfTheSubscriptionRefreshIt) {
    subscribeAll();
    const int id = runningTimer(renewalMilliseconds);
    frames().clear();

    service->timerEvent(id);

    EXPECT_TRUE(logged(6, expiry(id, " refresh Subscription OV events timer expired, state[CONNECTED]")));
    EXPECT_TRUE(platform.context.exists(id)) << "it is not deleted here";
    EXPECT_EQ(1u, frames().size());
}

TEST_F(Timers, OfTheSubscriptionGiveTheRestorationItsTriesBack) {
    subscribeAll();
    const int id = runningTimer(renewalMilliseconds);
    // Three losses use the tries up; while the timer runs, no other restoration begins.
    for (int loss = 0; loss < 3; ++loss) {
        service->onClose(0, 1006, "lost");
    }
    expectWebSocketToken();
    pass(restoreMilliseconds);
    service->onClose(0, 1006, "lost");
    EXPECT_FALSE(isTimerRunning(restoreMilliseconds));

    service->timerEvent(id);
    service->onClose(0, 1006, "lost");

    EXPECT_TRUE(isTimerRunning(restoreMilliseconds));
}

TEST_F(Timers, OfARecoveryBeginItWhileTheInterfaceIsUp) {
    openSession();
    service->onPongTimeout();
    const int id = runningTimer(recoveryMilliseconds);

    platform.context.deliverDue();

    EXPECT_TRUE(logged(6, expiry(id, " web socket recovery timer expired. Interface status[true], state[CONNECTED]")));
    EXPECT_FALSE(platform.context.exists(id));
    EXPECT_EQ(1u, platform.threads.pendingCount());
    EXPECT_FALSE(service->getRecoverWebSocketConnectionWaitForLanInterfaceUp());
    expectWebSocketToken();
    runThreads();
}

TEST_F(Timers, OfARecoveryWaitForTheInterface) {
    openSession();
    interfaceChanges("down");
    const int id = runningTimer(interfaceRecoveryMilliseconds);
    const std::size_t threads = platform.threads.spawned.size();

    platform.context.advanceWithoutExpiries(interfaceRecoveryMilliseconds);
    service->timerEvent(id);

    EXPECT_TRUE(logged(6, expiry(id, " web socket recovery timer expired. Interface status[false], state[CONNECTED]")));
    EXPECT_FALSE(platform.context.exists(id));
    EXPECT_TRUE(service->getRecoverWebSocketConnectionWaitForLanInterfaceUp());
    EXPECT_EQ(threads, platform.threads.spawned.size());
}

TEST_F(Timers, OfARestorationRecoverTheConnection) {
    openSession();
    service->onClose(0, 1006, "lost");
    const int id = runningTimer(restoreMilliseconds);
    expectWebSocketToken();

    pass(restoreMilliseconds);

    EXPECT_TRUE(logged(2, expiry(id, " - web socket restoreAfterErrorTimer expired! Web socket connection will be "
                                     "restored, state[CONNECTED]")));
    EXPECT_TRUE(logged(6, "recoverWebSocketConnection()"));
    EXPECT_TRUE(platform.context.exists(id)) << "it is stopped, not deleted";
    EXPECT_EQ(2u, socketsOpened());
}

TEST_F(Timers, AreStoppedAndThenDeleted) {
    initialise();
    const int id = platform.context.createTimer(service.get(), 5);
    platform.context.startTimer(id);
    platform.context.calls.clear();

    EXPECT_EQ(0, service->stopAndDeleteTimer(id));

    EXPECT_EQ((std::vector<std::string>{"stop " + std::to_string(id), "delete " + std::to_string(id)}),
              platform.context.calls);
    EXPECT_TRUE(logged(6, "stopAndDeleteTimer(" + std::to_string(id) + ")"));
    expectLogin();
    runThreads();
}

TEST_F(Timers, OfNoIdAreLeftAlone) {
    platform.log.clear();

    EXPECT_EQ(0, service->stopAndDeleteTimer(0));

    EXPECT_TRUE(platform.context.calls.empty());
    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(Timers, TakeSecondsAsMillisecondsWithinTheirRange) {
    EXPECT_EQ(0, service->calculateSyncTimer(0));
    EXPECT_EQ(60000, service->calculateSyncTimer(60));
    EXPECT_EQ(-1000, service->calculateSyncTimer(-1));
    EXPECT_EQ(2147483000, service->calculateSyncTimer(2147483));
    EXPECT_EQ(std::numeric_limits<int>::max(), service->calculateSyncTimer(2147484));
    EXPECT_EQ(std::numeric_limits<int>::max(), service->calculateSyncTimer(std::numeric_limits<int>::max()));
    EXPECT_EQ(std::numeric_limits<int>::min(), service->calculateSyncTimer(std::numeric_limits<int>::min()));
}

} // namespace
