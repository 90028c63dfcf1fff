#include "unit/CallData/SharedLineTelephone.h"

#include <cstdio>
#include <stdexcept>

using namespace CloudAnswers;
using namespace OrvaneServiceTypes;
using Batch = std::vector<std::string>;

namespace {

std::string addressOf(const OrvaneServiceObserverIfc* observer) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", static_cast<const void*>(observer));
    return text;
}

class Observers : public TestTelephone {
protected:
    RecordingObserver second;
    RecordingObserver third;
};

TEST_F(Observers, AreCountedAndLogged) {
    EXPECT_EQ(0u, service->getNoOfObservers());

    service->subscribe(&observer);
    service->subscribe(&second);

    EXPECT_EQ(2u, service->getNoOfObservers());
    EXPECT_TRUE(logged(6, "subscribe() observer[" + addressOf(&observer) + "]"));
    EXPECT_EQ(2, platform.log.count(6, "subscribe() added observer"));
}

TEST_F(Observers, AreAddedOnceOnly) {
    service->subscribe(&observer);
    service->subscribe(&observer);

    EXPECT_EQ(1u, service->getNoOfObservers());
    EXPECT_EQ(1, platform.log.count(6, "subscribe() added observer"));
}

TEST_F(Observers, AreNeverNull) {
    service->subscribe(nullptr);

    EXPECT_EQ(0u, service->getNoOfObservers());
    EXPECT_TRUE(logged(6, "subscribe() observer[(nil)]"));
    EXPECT_FALSE(logged(6, "subscribe() added observer"));
}

TEST_F(Observers, LeaveWithoutChangingTheOrderOfTheRest) {
    Batch order;
    observer.reaction = [&order](Batch&) { order.push_back("first"); };
    second.reaction = [&order](Batch&) { order.push_back("second"); };
    third.reaction = [&order](Batch&) { order.push_back("third"); };
    service->subscribe(&observer);
    service->subscribe(&second);
    service->subscribe(&third);

    service->unsubscribe(&second);
    service->fireOrvaneEvent(EVENT_TOKEN_FAILED);

    EXPECT_EQ((Batch{"first", "third"}), order);
    EXPECT_TRUE(logged(6, "unsubscribe() observer[" + addressOf(&second) + "]"));
    EXPECT_TRUE(logged(6, "unsubscribe() removed observer"));
}

TEST_F(Observers, LeaveSilentlyWhenTheyWereNeverThere) {
    service->subscribe(&observer);

    service->unsubscribe(&second);

    EXPECT_EQ(1u, service->getNoOfObservers());
    EXPECT_FALSE(logged(6, "unsubscribe() removed observer"));
}

TEST_F(Observers, OfANewSubscriptionAreGivenAllDataByTheNextSynchronisation) {
    withCallLog();
    withPhonebook();
    withObserver();
    connectWithEmptyCloud();

    service->subscribe(&second);
    EXPECT_EQ(6u, platform.network.requests.size()) << "nothing is fetched by a subscription";

    expectFullCallLog("c2");
    passSeconds(60);
    expectFullPhonebook("p2");
    service->refreshPhonebookEntries();
    runThreads();
}

TEST_F(Observers, WhoSubscribeAgainOrLeaveLeaveTheSyncTokensAsTheyWere) {
    withCallLog();
    withPhonebook();
    withObserver();
    service->subscribe(&second);
    connectWithEmptyCloud();

    service->subscribe(&observer);
    service->subscribe(nullptr);
    service->unsubscribe(&third);
    service->unsubscribe(&second);
    EXPECT_EQ(1u, service->getNoOfObservers());

    expectIncrementalCallLog("c1", "c2");
    passSeconds(60);
    expectIncrementalPhonebook("p1", "p2");
    service->refreshPhonebookEntries();
    runThreads();
}

class ObserversOfSharedLines : public SharedLineTelephone, public testing::WithParamInterface<const char*> {};

TEST_P(ObserversOfSharedLines, EmptyTheLinesTokensAndRaiseNoFlag) {
    platform.model = GetParam();
    connectWithLines({{"201", "A"}, {"202", "B"}});
    for (const char* id : {"201", "202"}) {
        BcaLineType withToken = line(id);
        withToken.callLogSyncToken = "t";
        service->replaceBcaLineInList(withToken);
    }

    withObserver();

    for (const char* id : {"201", "202"}) {
        EXPECT_EQ("", line(id).callLogSyncToken);
        EXPECT_FALSE(line(id).fullSyncPending);
    }
}

INSTANTIATE_TEST_SUITE_P(Models, ObserversOfSharedLines, testing::Values("KD24", "MODEL"));

TEST_F(Observers, WhoSubscribeDuringARequestAreServedFromTheTokenOfItsAnswer) {
    withCallLog();
    withObserver();
    connectWithEmptyCloud();
    expectIncrementalCallLog("c1", "c2", {call("1")}).whileAwaited([this] { service->subscribe(&second); });

    passSeconds(60);

    ASSERT_EQ(1u, second.of("orvaneFullSync").size()) << "the token was empty when the answer came";
    EXPECT_EQ(1u, second.of("orvaneFullSync")[0].data.size());
    expectIncrementalCallLog("c2", "c3");
    passSeconds(60);
}

TEST_F(Observers, SurviveStopAndANewStart) {
    withObserver();
    connectWithEmptyCloud();

    service->stop();

    EXPECT_EQ(1u, service->getNoOfObservers());
}

TEST_F(Observers, AllGetEveryEvent) {
    service->subscribe(&observer);
    service->subscribe(&second);
    const std::string message = "OV.Copied.contact.OK";

    service->fireOrvaneEvent(EVENT_TOKEN_FAILED);
    service->fireInformUserEvent(message, USER_MSG_INFO);

    for (RecordingObserver* one : {&observer, &second}) {
        ASSERT_EQ(2u, one->events.size());
        EXPECT_EQ("orvaneEvent", one->events[0].operation);
        EXPECT_EQ(6, one->events[0].type);
        EXPECT_EQ("informUserEvent", one->events[1].operation);
        EXPECT_EQ("OV.Copied.contact.OK", one->events[1].message);
        EXPECT_EQ(&message, one->lastMessage) << "no copy of it";
        EXPECT_EQ(1, one->events[1].type);
    }
    EXPECT_FALSE(platform.log.contains("fireOrvaneEvent"));
    EXPECT_FALSE(platform.log.contains("fireInformUserEvent"));
}

TEST_F(Observers, EachGetTheirOwnCopyOfABatch) {
    observer.reaction = [](Batch& data) { data.clear(); };
    service->subscribe(&observer);
    service->subscribe(&second);
    Batch batch = {"{a}", "1"};

    service->fireOrvaneFullSyncEvent(batch, DATA_CALL_LOG);
    service->fireOrvaneIncrementalSyncEvent(batch, DATA_PHONEBOOK);

    ASSERT_EQ(2u, second.events.size());
    EXPECT_EQ((Batch{"{a}", "1"}), second.events[0].data);
    EXPECT_EQ("orvaneFullSync", second.events[0].operation);
    EXPECT_EQ(0, second.events[0].type);
    EXPECT_EQ((Batch{"{a}", "1"}), second.events[1].data);
    EXPECT_EQ("orvaneIncrementalSync", second.events[1].operation);
    EXPECT_EQ(5, second.events[1].type);
    EXPECT_EQ((Batch{"{a}", "1"}), batch);
    for (const OrvaneServiceObserverIfc* one : {&observer, &second}) {
        EXPECT_TRUE(logged(6, "fireOrvaneFullSyncEvent() data.size[2] type[0] observer[" + addressOf(one) + "]"));
        EXPECT_TRUE(
            logged(6, "fireOrvaneIncrementalSyncEvent() data.size[2] type[5] observer[" + addressOf(one) + "]"));
    }
}

TEST_F(Observers, ShareOneMapOfVoicemails) {
    service->subscribe(&observer);
    service->subscribe(&second);
    std::map<std::string, Voicemail> lines;
    lines["~"] = {"+49", "Anna", "2026-01-01T00:00:00Z", 3};

    service->fireOrvaneVoicemail(lines);

    EXPECT_EQ(&lines, observer.lastVoicemailMap);
    EXPECT_EQ(&lines, second.lastVoicemailMap);
    EXPECT_EQ(3, second.events.at(0).voicemail.at("~").unreadVoicemailMessageCount);
    EXPECT_TRUE(logged(6, "fireOrvaneVoicemail() data.size[1] observer[" + addressOf(&second) + "]"));
}

TEST_F(Observers, AreToldOfAnEmptyMapOfVoicemails) {
    service->subscribe(&observer);
    std::map<std::string, Voicemail> lines;

    service->fireOrvaneVoicemail(lines);

    ASSERT_EQ(1u, observer.events.size());
    EXPECT_TRUE(observer.events[0].voicemail.empty());
}

TEST_F(Observers, MayBeNoneAtAll) {
    Batch batch = {"{a}"};
    std::map<std::string, Voicemail> lines;
    platform.log.clear();

    service->fireOrvaneEvent(EVENT_TOKEN_FAILED);
    service->fireInformUserEvent("", USER_MSG_NONE);
    service->fireOrvaneFullSyncEvent(batch, DATA_CALL_LOG);
    service->fireOrvaneIncrementalSyncEvent(batch, DATA_CALL_LOG);
    service->fireOrvaneVoicemail(lines);

    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(Observers, AreCalledUnderTheirSemaphore) {
    Batch held;
    observer.reaction = [&](Batch&) { held = platform.locks.held(); };
    service->subscribe(&observer);

    service->fireOrvaneEvent(EVENT_TOKEN_FAILED);

    EXPECT_EQ(Batch{"m_observersSem"}, held);
}

TEST_F(Observers, AreAddedRemovedAndCountedUnderTheirSemaphore) {
    platform.locks.keepTrace();

    service->subscribe(&observer);
    service->getNoOfObservers();
    service->unsubscribe(&observer);

    EXPECT_EQ("m_observersSem{} m_callLogSyncTokenSem{} m_bcaLineListSem{} m_phonebookSyncTokenSem{} m_observersSem{} "
              "m_observersSem{}",
              platform.locks.trace());
}

TEST_F(Observers, WhoSubscribeInsideACallAreCalledToo) {
    observer.reaction = [this](Batch&) { service->subscribe(&second); };
    service->subscribe(&observer);

    service->fireOrvaneEvent(EVENT_TOKEN_FAILED);

    EXPECT_EQ(1u, observer.events.size());
    EXPECT_EQ(1u, second.events.size());
}

TEST_F(Observers, WhoLeaveInsideACallMakeTheNextOneMissIt) {
    observer.reaction = [this](Batch&) { service->unsubscribe(&observer); };
    service->subscribe(&observer);
    service->subscribe(&second);
    service->subscribe(&third);

    service->fireOrvaneEvent(EVENT_TOKEN_FAILED);

    EXPECT_TRUE(second.events.empty());
    EXPECT_EQ(1u, third.events.size());
}

TEST_F(Observers, BehindOneThatThrowsGetNothing) {
    observer.reaction = [](Batch&) { throw std::runtime_error("observer"); };
    service->subscribe(&observer);
    service->subscribe(&second);

    EXPECT_THROW(service->fireOrvaneEvent(EVENT_TOKEN_FAILED), std::runtime_error);

    EXPECT_TRUE(second.events.empty());
    EXPECT_TRUE(platform.locks.held().empty());
    EXPECT_EQ(2u, service->getNoOfObservers());
}

TEST_F(Observers, CouldBeGivenThePhonebookInKeyOrder) {
    withPhonebook();
    withObserver();
    expectToken();
    expectExtension();
    expectGrants();
    expectFullPhonebook("p1", {{20, "B", "b", "", "Alive"}, {1, "A", "a", "", "Alive"}, {3, "C", "c", "", "Alive"}});
    connect();
    Batch published = lastBatch("orvaneFullSync", DATA_PHONEBOOK);
    ASSERT_EQ(3u, published.size());
    Batch records = {"what is there"};
    platform.locks.keepTrace();

    service->prepareDataForObservers(records);

    EXPECT_EQ((Batch{"what is there", published[1], published[0], published[2]}), records);
    EXPECT_EQ("", platform.locks.trace()) << "the caller's matter";
}

} // namespace
