#include "unit/CallData/SharedLineTelephone.h"

#include "framework/Context.h"
#include "threads/OSALThreadPriority.h"

using OrvaneServiceTypes::Voicemail;

namespace {

class VoicemailSummary : public SharedLineTelephone {
protected:
    void makeReady(const std::string& id, const std::string& number) {
        BcaLineType ready = line(id);
        ready.status = BCA_LINE_STATUS_READY;
        ready.phoneNumber = number;
        ASSERT_TRUE(service->replaceBcaLineInList(ready));
    }
    void setCount(const std::string& id, int count, const std::string& latestTimestamp = std::string()) {
        BcaLineType changed = line(id);
        changed.voicemail.unreadVoicemailMessageCount = count;
        changed.voicemail.latestTimestamp = latestTimestamp;
        ASSERT_TRUE(service->replaceBcaLineInList(changed));
    }
    std::map<std::string, Voicemail> lastMap() {
        const auto events = observer.of("orvaneVoicemail");
        if (events.empty()) {
            ADD_FAILURE() << "no voicemail was published";
            return {};
        }
        return events.back().voicemail;
    }
    void expectOneLine(int level, const std::string& text) {
        ASSERT_EQ(1u, platform.log.lines().size());
        EXPECT_EQ(level, platform.log.lines()[0].level);
        EXPECT_EQ(text, platform.log.lines()[0].text);
    }
    std::string countItem() const { return platform.store.get("missed-logg-count"); }
};

} // namespace

// ---- The message-waiting indication ------------------------------------------------------------------------------

TEST_F(VoicemailSummary, AServiceThatIsNotRunningRefuses) {
    platform.model = "KL50";
    initialise();
    service->subscribe(&observer);
    platform.log.clear();

    EXPECT_FALSE(service->sipVoicemailStatusProcessed("+491", "Own", true));

    expectOneLine(6, "sipVoicemailStatusProcessed - service is not running - state: 1");
    EXPECT_EQ("", countItem());
    EXPECT_TRUE(observer.events.empty());
    service->publishVoicemailData();
    EXPECT_TRUE(lastMap().empty()) << "what was refused is not kept either";
    expectLogin();
    runThreads();
}

TEST_F(VoicemailSummary, ModelsOfTheKlFamilyRefuse) {
    platform.model = "KL50";
    withObserver();
    connectWithLines({});

    EXPECT_FALSE(service->sipVoicemailStatusProcessed("+491", "Own", true));

    expectOneLine(6, "sipVoicemailStatusProcessed - not processed for KL phones");
    EXPECT_TRUE(observer.events.empty());
    EXPECT_TRUE(platform.store.writes.empty());
    service->publishVoicemailData();
    EXPECT_TRUE(lastMap().empty()) << "what was refused is not kept either";
}

TEST_F(VoicemailSummary, MessagesOnTheUsersOwnLineAreUnknownInNumber) {
    withObserver();
    connectWithLines({});

    EXPECT_TRUE(service->sipVoicemailStatusProcessed("+491", "Own", true));

    const auto map = lastMap();
    ASSERT_EQ(1u, map.size());
    EXPECT_EQ("+491", map.at("~").number);
    EXPECT_EQ("Own", map.at("~").name);
    EXPECT_EQ("", map.at("~").latestTimestamp);
    EXPECT_EQ(-1, map.at("~").unreadVoicemailMessageCount);
    EXPECT_EQ("-1", countItem());
    EXPECT_TRUE(logged(5, "sipVoicemailStatusProcessed - lineURI(+491), lineName(Own), mwiIndicated(1)"));
    EXPECT_TRUE(logged(6, "voicemailStatusProcessedByOVSvc - stored for the primary line"));
}

TEST_F(VoicemailSummary, NoMessagesOnTheUsersOwnLineEmptyTheMap) {
    withObserver();
    connectWithLines({});
    service->sipVoicemailStatusProcessed("+491", "Own", true);

    EXPECT_TRUE(service->sipVoicemailStatusProcessed("+491", "Own", false));

    EXPECT_TRUE(lastMap().empty());
    EXPECT_EQ("0", countItem());
    EXPECT_TRUE(logged(5, "sipVoicemailStatusProcessed - lineURI(+491), lineName(Own), mwiIndicated(0)"));
}

TEST_F(VoicemailSummary, ASharedLineIsFoundByItsNumber) {
    withObserver();
    connectWithLines({{"201", "Sales"}});
    makeReady("201", "+49201");

    EXPECT_TRUE(service->sipVoicemailStatusProcessed("+49201", "Key text", true));

    EXPECT_TRUE(logged(6, "sipVoicemailStatusProcessed - stored for BCA(+49201)/name(Sales)"));
    EXPECT_EQ("+49201", line("201").voicemail.number);
    EXPECT_EQ("Key text", line("201").voicemail.name);
    EXPECT_EQ(-1, line("201").voicemail.unreadVoicemailMessageCount);
    const auto map = lastMap();
    ASSERT_EQ(1u, map.size());
    EXPECT_EQ("Sales", map.at("201").name) << "published under the line's own name";
    EXPECT_EQ("+49201", map.at("201").number);
}

TEST_F(VoicemailSummary, NoMessagesOnASharedLineTakeItOutOfTheMap) {
    withObserver();
    connectWithLines({{"201", "Sales"}});
    makeReady("201", "+49201");
    service->sipVoicemailStatusProcessed("+49201", "Sales", true);

    service->sipVoicemailStatusProcessed("+49201", "Sales", false);

    EXPECT_TRUE(lastMap().empty());
    EXPECT_EQ("0", countItem());
}

TEST_F(VoicemailSummary, TheFirstOfTwoLinesWithOneNumberIsTaken) {
    connectWithLines({{"202", "B"}, {"201", "A"}});
    makeReady("201", "+49");
    makeReady("202", "+49");

    service->sipVoicemailStatusProcessed("+49", "X", true);

    EXPECT_EQ(-1, line("201").voicemail.unreadVoicemailMessageCount);
    EXPECT_EQ(0, line("202").voicemail.unreadVoicemailMessageCount);
}

TEST_F(VoicemailSummary, AnEmptyUriMatchesTheFirstLineWithoutANumber) {
    withObserver();
    connectWithLines({{"201", "A"}, {"202", "B"}});
    makeReady("201", "+49201");

    service->sipVoicemailStatusProcessed("", "X", true);

    EXPECT_EQ(-1, line("202").voicemail.unreadVoicemailMessageCount);
    EXPECT_TRUE(lastMap().empty()) << "a line that is not ready is not published";
}

TEST_F(VoicemailSummary, NumbersAreComparedByteForByte) {
    withObserver();
    connectWithLines({{"201", "A"}});
    makeReady("201", "+49201");

    service->sipVoicemailStatusProcessed("+49201 ", "X", true);

    EXPECT_EQ(0, line("201").voicemail.unreadVoicemailMessageCount);
    EXPECT_EQ("+49201 ", lastMap().at("~").number);
}

TEST_F(VoicemailSummary, TheServicesOwnMessageWaitingCallbackDoesNothing) {
    withObserver();
    connectWithLines({});

    service->messageWaiting();

    EXPECT_TRUE(observer.events.empty());
    EXPECT_TRUE(platform.store.writes.empty());
}

// ---- Publication -------------------------------------------------------------------------------------------------

TEST_F(VoicemailSummary, WithoutAnyVoicemailAnEmptyMapGoesOut) {
    withObserver();
    connectWithLines({{"201", "A"}});

    service->publishVoicemailData();

    EXPECT_TRUE(lastMap().empty());
    EXPECT_EQ("0", countItem());
    EXPECT_EQ(1, platform.store.countWrites("missed-logg-count", "0"));
    EXPECT_TRUE(logged(6, "publishVoicemailData() - total amount of voicemails[0], number of phone lines with "
                          "voicemails[0]"));
    EXPECT_TRUE(logged(6, "publishVoicemailData() - total amount of voicemails[0]"));
}

TEST_F(VoicemailSummary, KnownCountsAreAddedUp) {
    withObserver();
    connectWithLines({{"201", "A"}, {"202", "B"}});
    makeReady("201", "+49201");
    makeReady("202", "+49202");
    setCount("201", 2, "2026-01-02");
    setCount("202", 3);

    service->publishVoicemailData();

    EXPECT_EQ("5", countItem());
    EXPECT_EQ(2u, lastMap().size());
    EXPECT_EQ("2026-01-02", lastMap().at("201").latestTimestamp);
    EXPECT_TRUE(logged(6, "publishVoicemailData() - name[A], number[+49201], latestTimestamp[2026-01-02], "
                          "unreadVoicemailMessageCount[2]"));
    EXPECT_TRUE(logged(6, "publishVoicemailData() - total amount of voicemails[5], number of phone lines with "
                          "voicemails[2]"));
}

TEST_F(VoicemailSummary, OneUnknownCountMakesTheTotalUnknown) {
    withObserver();
    connectWithLines({{"201", "A"}, {"202", "B"}});
    makeReady("201", "+49201");
    makeReady("202", "+49202");
    setCount("201", 2);
    setCount("202", -1);

    service->publishVoicemailData();

    EXPECT_EQ("-1", countItem());
    EXPECT_EQ(2, lastMap().at("201").unreadVoicemailMessageCount);
    EXPECT_EQ(-1, lastMap().at("202").unreadVoicemailMessageCount);
}

TEST_F(VoicemailSummary, AnUnknownCountOnTheOwnLineMakesTheTotalUnknown) {
    withObserver();
    connectWithLines({{"201", "A"}});
    makeReady("201", "+49201");
    setCount("201", 2);

    service->sipVoicemailStatusProcessed("+491", "Own", true);

    EXPECT_EQ("-1", countItem());
    EXPECT_EQ(2u, lastMap().size());
    EXPECT_TRUE(logged(6, "publishVoicemailData() - name[Own], number[+491], latestTimestamp[], "
                          "unreadVoicemailMessageCount[-1]"));
}

TEST_F(VoicemailSummary, ALineThatIsNotReadyIsLeftOut) {
    withObserver();
    connectWithLines({{"201", "A"}});
    setCount("201", 4);

    service->publishVoicemailData();

    EXPECT_TRUE(lastMap().empty());
    EXPECT_EQ("0", countItem());
}

TEST_F(VoicemailSummary, ObserversAreCalledWithoutTheLinesLock) {
    withObserver();
    connectWithLines({});
    std::vector<std::string> held;
    observer.reaction = [&](std::vector<std::string>&) { held = platform.locks.held(); };

    service->publishVoicemailData();

    EXPECT_EQ((std::vector<std::string>{"m_observersSem"}), held);
}

TEST_F(VoicemailSummary, WithoutAStoreOnlyTheItemIsLeftOut) {
    platform.context.removeService("LocalMgmtIfc");
    withObserver();
    initialise();

    service->publishVoicemailData();

    EXPECT_TRUE(lastMap().empty());
    EXPECT_TRUE(platform.store.writes.empty());
    EXPECT_FALSE(logged(6, "publishVoicemailData() - total amount of voicemails[0]"));
    EXPECT_TRUE(logged(6, "publishVoicemailData() - total amount of voicemails[0], number of phone lines with "
                          "voicemails[0]"));
}

TEST_F(VoicemailSummary, ARefusedWriteDoesNotKeepTheEventBack) {
    withObserver();
    connectWithLines({});
    platform.store.refuseWrites = true;

    service->publishVoicemailData();

    EXPECT_EQ(1u, observer.of("orvaneVoicemail").size());
}

TEST_F(VoicemailSummary, ALineThatGoesAwayTakesItsVoicemailAlong) {
    withObserver();
    connectWithLines({{"201", "A"}});
    makeReady("201", "+49201");
    service->sipVoicemailStatusProcessed("+49201", "A", true);
    expectGrants({});

    service->devicesChanged();

    EXPECT_TRUE(lastMap().empty());
    EXPECT_EQ("0", countItem());
}

TEST_F(VoicemailSummary, EveryPollPublishesAnew) {
    withObserver();
    connectWithLines({});

    expectIncrementalCallLog("c1", "c2");
    passSeconds(60);
    expectIncrementalCallLog("c2", "c3");
    passSeconds(60);

    EXPECT_EQ(2u, observer.of("orvaneVoicemail").size());
    EXPECT_EQ(2, platform.log.count(4, "getVoicemails() - API disabled"));
}

// ---- The cloud's message store, switched off ---------------------------------------------------------------------

TEST_F(VoicemailSummary, TheMessageStoreIsNeverAsked) {
    connectWithLines({{"201", "A"}});
    platform.network.requests.clear();
    BcaLineType copy = line("201");

    EXPECT_FALSE(service->voicemailViaAPIEnabled());
    EXPECT_FALSE(service->getVoicemail());
    EXPECT_FALSE(service->getBcaVoicemail(copy));
    EXPECT_FALSE(service->getBcaVoicemail(std::string("201")));

    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(VoicemailSummary, BothWaysOfAskingOnlyPublish) {
    withObserver();
    connectWithLines({});
    platform.network.requests.clear();

    service->getVoicemails(false);
    service->getVoicemails(true);

    EXPECT_EQ(2u, observer.of("orvaneVoicemail").size());
    EXPECT_EQ(2, platform.log.count(4, "getVoicemails() - API disabled"));
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(VoicemailSummary, AnEmptyExtensionIdIsReported) {
    EXPECT_FALSE(service->getBcaVoicemail(std::string()));

    EXPECT_TRUE(logged(3, "getBcaVoicemail() - empty extensionID"));
}

TEST_F(VoicemailSummary, AnUnknownExtensionIdIsReported) {
    EXPECT_FALSE(service->getBcaVoicemail(std::string("404")));

    EXPECT_TRUE(logged(2, "getBcaVoicemail() - BCA Line (404) not found"));
}

// ---- The refresh on demand ---------------------------------------------------------------------------------------

TEST_F(VoicemailSummary, ARefreshPublishesOnAThreadOfItsOwn) {
    withObserver();
    connectWithLines({});
    const std::size_t before = platform.threads.spawned.size();

    service->refreshVoicemailEntries();

    ASSERT_EQ(before + 1, platform.threads.spawned.size());
    const TestThreads::Job& job = platform.threads.spawned.back();
    EXPECT_EQ("", job.name);
    EXPECT_EQ(1, job.priority);
    EXPECT_EQ(0, job.stackSize);
    EXPECT_TRUE(job.detached);
    EXPECT_TRUE(observer.events.empty());
    EXPECT_TRUE(logged(6, "refreshVoicemailEntries() m_interface_status[true]  m_refreshCallLogEventTimer[false]"));

    runThreads();

    EXPECT_EQ(1u, observer.of("orvaneVoicemail").size());
    EXPECT_TRUE(logged(4, "asyncRefreshVoicemailRunner()"));
}

TEST_F(VoicemailSummary, ASecondRefreshWaitsForTheEndOfTheFirst) {
    connectWithLines({});
    const std::size_t before = platform.threads.spawned.size();

    service->refreshVoicemailEntries();
    service->refreshVoicemailEntries();
    EXPECT_EQ(before + 1, platform.threads.spawned.size());

    runThreads();
    service->refreshVoicemailEntries();
    EXPECT_EQ(before + 2, platform.threads.spawned.size());
    runThreads();
}

TEST_F(VoicemailSummary, ARefreshIsUnderWayUntilTheObserversWereTold) {
    withObserver();
    connectWithLines({});
    service->refreshVoicemailEntries();
    const std::size_t spawned = platform.threads.spawned.size();
    observer.reaction = [this](std::vector<std::string>&) { service->refreshVoicemailEntries(); };

    runThreads();

    EXPECT_EQ("orvaneVoicemail", observer.events.back().operation);
    EXPECT_EQ(spawned, platform.threads.spawned.size());
}

TEST_F(VoicemailSummary, WithTheInterfaceDownNothingIsRefreshed) {
    connectWithLines({});
    platform.store.change(PldsTags::INTERFACE_STATUS, "down");
    const std::size_t before = platform.threads.spawned.size();

    service->refreshVoicemailEntries();

    EXPECT_EQ(before, platform.threads.spawned.size());
    EXPECT_TRUE(logged(6, "refreshVoicemailEntries() m_interface_status[false]  m_refreshCallLogEventTimer[false]"));
}

TEST_F(VoicemailSummary, WhileARecordIsAwaitedNothingIsRefreshed) {
    connectWithLines({});
    platform.context.startTimer(platform.context.withDuration(10000).front());
    const std::size_t before = platform.threads.spawned.size();

    service->refreshVoicemailEntries();

    EXPECT_EQ(before, platform.threads.spawned.size());
    EXPECT_TRUE(logged(6, "refreshVoicemailEntries() m_interface_status[true]  m_refreshCallLogEventTimer[true]"));
}

TEST_F(VoicemailSummary, DuringAPollNothingIsRefreshed) {
    connectWithLines({});
    expectFullCallLog();
    service->timerEvent(platform.context.withDuration(60000).front());
    const std::size_t before = platform.threads.spawned.size();
    expectIncrementalCallLog("c1", "c2").whileAwaited([this] { service->refreshVoicemailEntries(); });

    passSeconds(60);

    EXPECT_EQ(before, platform.threads.spawned.size());
}

TEST_F(VoicemailSummary, ARefreshWithoutAThreadIsReportedAndCanBeRepeated) {
    connectWithLines({});
    platform.threads.refuse = true;
    service->refreshVoicemailEntries();
    EXPECT_TRUE(logged(2, "refreshVoicemailEntries() failed to create thread!"));
    platform.threads.refuse = false;
    const std::size_t before = platform.threads.spawned.size();

    service->refreshVoicemailEntries();

    EXPECT_EQ(before + 1, platform.threads.spawned.size());
    runThreads();
}

TEST_F(VoicemailSummary, ARunnerWithoutAServiceReturns) {
    EXPECT_EQ(nullptr, OrvaneService::asyncRefreshVoicemailRunner(nullptr));

    EXPECT_TRUE(logged(4, "asyncRefreshVoicemailRunner()"));
}

TEST_F(VoicemailSummary, StopWaitsForARefresh) {
    withObserver();
    connectWithLines({});
    service->refreshVoicemailEntries();

    service->stop();

    EXPECT_TRUE(logged(6, "stop() - stop refresh voicemail thread"));
    EXPECT_EQ(1u, observer.of("orvaneVoicemail").size());
}
