#include "unit/EventChannel/ChannelTelephone.h"

using namespace CloudAnswers;
using namespace OrvaneServiceTypes;

namespace {

class Stop : public ChannelTelephone {
protected:
    using Order = std::vector<std::string>;

    /// From now on `order` tells what stop does, across log, timers and channel. Of the lines only its own and those of
    /// its steps count.
    void recordOrder() {
        platform.log.divertedTo = [this](const RecordedLog::Line& line) {
            takeTimerCalls();
            for (const char* beginning : {"stop()", "clearSecureConnection()", "setWebSocketState()"}) {
                if (line.text.rfind(beginning, 0) == 0) {
                    order.push_back(line.text);
                }
            }
        };
        platform.webSocket.whileStopping = [this] {
            takeTimerCalls();
            order.push_back("the channel stops");
        };
    }
    static void add(Order& expected, const std::vector<int>& stoppedTimers) {
        for (const int id : stoppedTimers) {
            expected.push_back("stop " + std::to_string(id));
        }
    }
    static void addDeletion(Order& expected, const std::vector<int>& deletedTimers) {
        for (const int id : deletedTimers) {
            add(expected, {id});
            expected.push_back("delete " + std::to_string(id));
        }
    }
    int tokenTimer() {
        for (const int duration : timers().runningDurations()) {
            if (duration >= 3240000) {
                return runningTimer(duration);
            }
        }
        return 0;
    }

    Order order;

private:
    void takeTimerCalls() {
        order.insert(order.end(), timers().calls.begin(), timers().calls.end());
        timers().calls.clear();
    }
};

TEST_F(Stop, EndsEveryTimerButTheRestart) {
    withObserver();
    withCallLog();
    connectWithEmptyCloud();
    openChannel();
    service->reloadAllData();
    const std::vector<int> polling = platform.context.running(60000);
    ASSERT_EQ(1u, polling.size());

    service->stop();

    EXPECT_TRUE(platform.context.runningDurations().empty());
    EXPECT_TRUE(platform.context.exists(polling[0])) << "the permanent timers stay";
    EXPECT_EQ(2u, platform.context.withDuration(1000).size());
    EXPECT_EQ(1u, platform.context.withDuration(10000).size());
    EXPECT_TRUE(platform.context.withDuration(54000).empty()) << "the others are deleted";
    EXPECT_TRUE(platform.context.withDuration(600).empty());
}

TEST_F(Stop, EndsEverythingInItsFixedOrder) {
    subscribeAll();
    withObserver();
    service->refreshVoicemailEntries();
    service->refreshPhonebookEntries();
    service->refreshCallLogEntries();
    interfaceChanges("down");
    service->onClose(0, 1006, "lost");
    const int token = tokenTimer();
    const int renewal = runningTimer(renewalMilliseconds);
    const int restoration = runningTimer(restoreMilliseconds);
    const int idle = runningTimer(idleMilliseconds);
    const int heartbeat = timers().withDuration(heartbeatMilliseconds).at(0);
    const int recovery = runningTimer(interfaceRecoveryMilliseconds);
    clearRecords();
    recordOrder();

    service->stop();

    Order expected = {"stop()", "clearSecureConnection() force[true] m_secureConnEstablisher[(nil)]"};
    add(expected, {timers().withDuration(pollingMilliseconds).at(0),
                   timers().withDuration(callRecordMilliseconds).at(0), timers().withDuration(1000).at(1)});
    addDeletion(expected, {renewal, token, restoration});
    expected.insert(expected.end(), {"stop() - stop refresh call log thread", "stop() - stop refresh phonebook thread",
                                     "stop() - stop refresh voicemail thread"});
    addDeletion(expected, {idle, heartbeat, recovery});
    expected.insert(expected.end(),
                    {"the channel stops", "setWebSocketState() change the web socket state from 3 to 0"});
    EXPECT_EQ(expected, order);

    // Nothing of what was deleted is stopped or deleted once more.
    order.clear();
    service->stop();
    expected = {"stop()", "clearSecureConnection() force[true] m_secureConnEstablisher[(nil)]"};
    add(expected, {timers().withDuration(pollingMilliseconds).at(0),
                   timers().withDuration(callRecordMilliseconds).at(0), timers().withDuration(1000).at(1)});
    expected.insert(expected.end(),
                    {"the channel stops", "setWebSocketState() change the web socket state from 0 to 0"});
    EXPECT_EQ(expected, order);
}

TEST_F(Stop, WaitsForALoginBeforeTheOtherWorkers) {
    withPhonebook();
    initialise();
    service->refreshVoicemailEntries();
    service->refreshPhonebookEntries();
    service->refreshCallLogEntries();
    std::vector<unsigned long> workers;
    for (const std::size_t index : {0, 3, 2, 1}) {
        workers.push_back(platform.threads.spawned.at(index).id);
    }
    platform.threads.waitedFor.clear();
    expectToken().answers(500, "");

    service->stop();

    EXPECT_EQ(workers, platform.threads.waitedFor);
}

TEST_F(Stop, LeavesTheRestartRunning) {
    connectWithEmptyCloud();
    platform.store.change(PldsTags::SERVER_TYPE, "8");

    service->stop();

    EXPECT_EQ((std::vector<int>{1000}), platform.context.runningDurations());
}

TEST_F(Stop, DeletesTheSubscriptionsTimerAndTheRestoration) {
    subscribeAll();
    service->onClose(0, 1006, "lost");
    ASSERT_TRUE(isTimerRunning(restoreMilliseconds));
    ASSERT_TRUE(isTimerRunning(renewalMilliseconds));

    service->stop();

    EXPECT_TRUE(timers().withDuration(restoreMilliseconds).empty());
    EXPECT_TRUE(timers().withDuration(renewalMilliseconds).empty());
    EXPECT_TRUE(timers().runningDurations().empty());
}

TEST_F(Stop, DeletesTheRecoverysTimer) {
    openSession();
    interfaceChanges("down");
    ASSERT_TRUE(isTimerRunning(interfaceRecoveryMilliseconds));

    service->stop();

    EXPECT_TRUE(timers().withDuration(interfaceRecoveryMilliseconds).empty());
}

TEST_F(Stop, ClosesTheChannel) {
    openSession();
    const int stops = platform.webSocket.stops;

    service->stop();

    EXPECT_EQ(stops + 1, platform.webSocket.stops);
    EXPECT_EQ(0, platform.webSocket.terminations);
    EXPECT_EQ(OrvaneService::WS_STATE_CLOSED, service->getWebSocketState());
    EXPECT_FALSE(service->isRunning());
}

TEST_F(Stop, CountsAsStoppedFromItsFirstStepOn) {
    withObserver();
    withCallLog();
    connectWithEmptyCloud();
    service->refreshCallLogEntries();
    const std::size_t requests = platform.network.requests.size();

    service->stop();

    EXPECT_EQ(requests, platform.network.requests.size()) << "the waiting thread found the service stopped";
    EXPECT_TRUE(logged(6, "stop() - stop refresh call log thread"));
    EXPECT_EQ(0u, platform.threads.pendingCount());
}

TEST_F(Stop, IsSeenBeforeTheConnectionCloses) {
    connectWithEmptyCloud();
    bool wasRunning = true;
    platform.log.divertedTo = [&](const RecordedLog::Line& line) {
        if (line.text.rfind("clearSecureConnection() force[true]", 0) == 0) {
            wasRunning = service->isRunning();
        }
    };

    service->stop();
    platform.log.divertedTo = nullptr;

    EXPECT_FALSE(wasRunning);
}

TEST_F(Stop, WaitsForTheWorkersInItsOrder) {
    withObserver();
    withPhonebook();
    connectWithEmptyCloud();
    service->refreshVoicemailEntries();
    service->refreshPhonebookEntries();
    service->refreshCallLogEntries();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, "true");
    platform.log.clear();
    platform.threads.waitedFor.clear();
    platform.locks.allowAcrossRequests("m_dndSem");
    expectPresence();

    service->stop();

    std::vector<std::string> waits;
    for (const RecordedLog::Line& line : platform.log.lines()) {
        if (line.text.rfind("stop() - ", 0) == 0) {
            EXPECT_EQ(6, line.level);
            waits.push_back(line.text);
        }
    }
    EXPECT_EQ(
        (std::vector<std::string>{"stop() - stop refresh call log thread", "stop() - stop refresh phonebook thread",
                                  "stop() - stop refresh voicemail thread",
                                  "stop() - stop enabling or disabling DND synchronisation feature"}),
        waits);
    EXPECT_EQ(4u, platform.threads.waitedFor.size());
    EXPECT_TRUE(platform.threads.waitedForItself.empty());
    EXPECT_TRUE(logged(4, "stop()"));
}

TEST_F(Stop, WaitsForALoginThatHasNotBegun) {
    initialise();
    expectToken().answers(500, "");

    service->stop();

    EXPECT_TRUE(logged(6, "stop() - stop async login Thread"));
    EXPECT_FALSE(service->isRunning());
    EXPECT_EQ(1u, platform.context.runningDurations().size()) << "a login in flight may arm a timer afterwards";
}

TEST_F(Stop, TwiceInARowIsHarmless) {
    withObserver();
    withCallLog();
    connectWithEmptyCloud();
    service->stop();
    platform.context.calls.clear();
    platform.log.clear();

    service->stop();

    EXPECT_FALSE(platform.log.contains("stopAndDeleteTimer"));
    for (const std::string& call : platform.context.calls) {
        EXPECT_EQ(0u, call.rfind("stop ", 0)) << call;
        EXPECT_NE("stop 0", call);
    }
    EXPECT_EQ(3u, platform.context.calls.size());
}

TEST_F(Stop, BeforeInitIsHarmless) {
    service->stop();

    EXPECT_TRUE(platform.context.calls.empty());
}

TEST_F(Stop, KeepsTheDataAndTheSyncTokens) {
    withObserver();
    withCallLog();
    withPhonebook();
    platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "\"7\"");
    expectToken();
    expectExtension();
    expectGrants();
    expectFullCallLog("c1", {missedCall("7")});
    expectFullPhonebook("p1", {{1, "A", "B", "", "Alive"}});
    expectWebSocketToken();
    connect();

    service->stop();

    std::vector<std::string> contacts;
    service->prepareDataForObservers(contacts);
    EXPECT_EQ(1u, contacts.size());
    EXPECT_TRUE(service->isMissedCallViewed("7"));
    expectToken();
    expectExtension();
    expectGrants();
    expectIncrementalCallLog("c1", "c2");
    expectIncrementalPhonebook("p1", "p2");
    expectWebSocketToken();
    service->start();
    // Only a call that is known has a path of its own.
    platform.network.expect(HttpClientIfc::HTTP_DELETE, path(own("/call-log/7"))).answers(204);
    service->deleteCallLogEntry("7");
}

} // namespace
