#include "ChannelTelephone.h"

namespace {

using Lamps = std::vector<std::pair<std::string, bool>>;

const std::string base = "/restapi/v1.0/account/1/extension/4711/";
const std::string presence = base + "presence?detailedTelephonyState=true";
const std::string messageStore = base + "message-store?direction=Inbound&type=Voicemail";
const std::string dnd = base + "presence/dnd";
const std::string colleagues = base + "presence/line/presence/dnd";
const std::string userId = "4711";

std::string call(const std::string& status, const std::string& sessionId) {
    return R"({"telephonyStatus":")" + status + R"(","telephonySessionId":")" + sessionId + R"("})";
}

std::string dndBody(const std::string& extensionId, const std::string& status) {
    return R"({"extensionId":")" + extensionId + R"(","dndStatus":")" + status + R"("})";
}

class ServerNotificationTest : public ChannelTelephone {
protected:
    void receivePresence(const std::string& calls) {
        receive(notification(presence, userId, R"({"activeCalls":[)" + calls + "]}"));
    }
    void receiveMessageStore(const std::string& extensionId) {
        receive(notification(messageStore, userId, R"({"extensionId":)" + extensionId + "}"));
    }
    void receiveDnd(const std::string& extensionId, const std::string& status) {
        receive(notification(dnd, userId, dndBody(extensionId, status)));
    }
    void expectUnsupported(const std::string& event, const std::string& enabled = "true") {
        EXPECT_EQ(1, log().count(3, "handleMsgServerNotification() - unsupported message for ov event[" + event +
                                        "], m_receiveOvEventEnable[" + enabled + "]"))
            << event;
    }
    bool wasTaken() { return !log().contains("unsupported message"); }
    int dndSwitchWrites() {
        return platform.store.countWrites(PldsTags::CALL_DND_ACTIVATED, "true") +
               platform.store.countWrites(PldsTags::CALL_DND_ACTIVATED, "false");
    }
    std::string statusLine(int status, int current, int old) {
        return "handleMsgServerNotification() - DND event - dndStatus[" + std::to_string(status) +
               "], m_serverDndStatus[" + std::to_string(current) + "], m_serverDndStatusOld[" + std::to_string(old) +
               "]";
    }
};

TEST_F(ServerNotificationTest, WithoutAnEventANotificationIsDropped) {
    subscribeAll();
    receive(R"([{"type":"ServerNotification","messageId":"1"}])");
    receive(R"([{"type":"ServerNotification","messageId":"1"},{"event":1}])");
    EXPECT_EQ(2, log().count(3, "handleMsgServerNotification() - connot find JSON item[event]"));
}

TEST_F(ServerNotificationTest, WithoutAServerTheFormerStatusesAreForgotten) {
    subscribeAll();
    receiveDnd(userId, "DoNotAcceptAnyCalls");
    platform.dataManager.deliver(PldsTags::ORVANE_API_SERVER_ADDRESS, "");

    service->deleteAllData(false);
    receiveDnd(userId, "TakeAllCalls");

    EXPECT_TRUE(logged(6, statusLine(1, 0, 0)));
}

TEST_F(ServerNotificationTest, TheResultIsFalseInEveryCase) {
    subscribeAll();
    const TestJson::Value known = TestJson::parse(R"({"event":")" + dnd + R"(","ownerId":"4711","body":)" +
                                                  dndBody(userId, "TakeAllCalls") + "}");
    const TestJson::Value unknown = TestJson::parse(R"({"event":"x"})");
    EXPECT_FALSE(service->handleMsgServerNotification(nullptr, known.get()));
    EXPECT_FALSE(service->handleMsgServerNotification(nullptr, unknown.get()));
    EXPECT_FALSE(service->handleMsgServerNotification(nullptr, nullptr));
}

TEST_F(ServerNotificationTest, WithoutAConfirmedEventEverythingIsUnsupported) {
    // The subscription was requested, but not answered.
    openSession();
    clearRecords();
    receivePresence(call("NoCall", "s-1"));
    expectUnsupported(presence, "false");
    receiveMessageStore(userId);
    expectUnsupported(messageStore, "false");
    receiveDnd(userId, "DoNotAcceptAnyCalls");
    expectUnsupported(dnd, "false");
    EXPECT_EQ(0, dndSwitchWrites());
}

TEST_F(ServerNotificationTest, AnUnknownEventIsUnsupported) {
    subscribeAll();
    receive(notification(base + "voicemail", userId, "{}"));
    expectUnsupported(base + "voicemail");
}

TEST_F(ServerNotificationTest, AnEndedCallIsLookedForAtOnce) {
    subscribeAll();
    expectFullCallLog();
    receivePresence(call("NoCall", "s-1"));
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() sessionId[s-1] status[NoCall]"));
    EXPECT_TRUE(log().contains(") refresh call log timer expired, state[CONNECTED]"));
    checkQuiet();
    // Its record has not come yet: the next look is in ten seconds.
    EXPECT_TRUE(isTimerRunning(callRecordMilliseconds));
    EXPECT_FALSE(isTimerRunning(pollingMilliseconds));
}

TEST_F(ServerNotificationTest, TheRecordOfTheCallEndsTheWait) {
    subscribeAll();
    expectFullCallLog("c1");
    receivePresence(call("NoCall", "s-7"));
    expectIncrementalCallLog("c1", "c2");
    pass(callRecordMilliseconds);
    EXPECT_TRUE(isTimerRunning(callRecordMilliseconds));
    expectIncrementalCallLog("c2", "c3", {CloudAnswers::missedCall("7")});
    pass(callRecordMilliseconds);
    EXPECT_FALSE(isTimerRunning(callRecordMilliseconds));
    EXPECT_TRUE(isTimerRunning(pollingMilliseconds));
}

TEST_F(ServerNotificationTest, ARecordThatIsThereAtOnceNeedsNoWait) {
    subscribeAll();
    expectFullCallLog("c1", {CloudAnswers::missedCall("7")});
    receivePresence(call("NoCall", "s-7"));
    EXPECT_FALSE(isTimerRunning(callRecordMilliseconds));
    EXPECT_TRUE(isTimerRunning(pollingMilliseconds));
}

TEST_F(ServerNotificationTest, TwoEndedCallsInOneEventAreTwoRefreshes) {
    subscribeAll();
    expectFullCallLog("c1");
    expectIncrementalCallLog("c1", "c2", {CloudAnswers::missedCall("1")});
    receivePresence(call("NoCall", "s-1") + "," + call("NoCall", "s-2"));
    checkQuiet();
    // The second session is still waited for.
    EXPECT_TRUE(isTimerRunning(callRecordMilliseconds));
}

TEST_F(ServerNotificationTest, ACallThatGoesOnIsPassedOver) {
    subscribeAll();
    receivePresence(call("Ringing", "s-1") + "," + call("CallConnected", "s-2") + "," + call("nocall", "s-3"));
    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_FALSE(isTimerRunning(callRecordMilliseconds));
    EXPECT_TRUE(wasTaken());
}

TEST_F(ServerNotificationTest, ACallWithoutStatusOrSessionIsPassedOverAndTheNextOneIsTaken) {
    subscribeAll();
    expectFullCallLog();
    receivePresence(R"({"telephonyStatus":"NoCall"},{"telephonySessionId":"s-1"},17,)" + call("NoCall", "s-2"));
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() sessionId[s-2] status[NoCall]"));
    checkQuiet();
}

TEST_F(ServerNotificationTest, WithoutAnyActiveCallNothingHappensAndNoFurtherCheckRuns) {
    subscribeAll();
    receivePresence("");
    receive(notification(presence, userId, R"({"telephonyStatus":"NoCall"})"));
    EXPECT_TRUE(wasTaken());
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(ServerNotificationTest, APresenceEventOfAnotherExtensionIsUnsupported) {
    subscribeAll();
    const std::string event = "/restapi/v1.0/account/1/extension/99/presence?detailedTelephonyState=true";
    receive(notification(event, userId, R"({"activeCalls":[)" + call("NoCall", "s-1") + "]}"));
    expectUnsupported(event);
}

TEST_F(ServerNotificationTest, APresenceEventWithOtherParametersIsUnsupported) {
    subscribeAll();
    for (const std::string& event : {presence + "&sipData=true", base + "presence?detailedTelephonyState=false"}) {
        receive(notification(event, userId, R"({"activeCalls":[)" + call("NoCall", "s-1") + "]}"));
        expectUnsupported(event);
    }
}

TEST_F(ServerNotificationTest, APresenceEventWithoutABodyIsUnsupported) {
    subscribeAll();
    receive(notification(presence, userId, ""));
    expectUnsupported(presence);
    log().clear();
    receive(notification(presence, userId, "[]"));
    expectUnsupported(presence);
}

TEST_F(ServerNotificationTest, WithoutTheCallLogAPresenceEventIsNotSubscribed) {
    subscribeAll({false, true, {}, {}});
    receivePresence(call("NoCall", "s-1"));
    expectUnsupported(presence);
}

TEST_F(ServerNotificationTest, AnEventOnWhichParsingWouldNotEndIsUnsupported) {
    subscribeAll();
    const std::string event = presence + "&x&y=1";
    receive(notification(event, userId, R"({"activeCalls":[)" + call("NoCall", "s-1") + "]}"));
    EXPECT_TRUE(logged(3, "isOvEventSubscribed() - event[" + event + "] is malformed"));
    expectUnsupported(event);
    receive(notification("message-store?x&y", userId, R"({"extensionId":4711})"));
    EXPECT_TRUE(logged(3, "isOvEventSubscribed() - event[message-store?x&y] is malformed"));
    expectUnsupported("message-store?x&y");
}

TEST_F(ServerNotificationTest, AVoicemailOfTheUserIsPublished) {
    subscribeAll();
    service->subscribe(&observer);
    receiveMessageStore(userId);
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - voicemail for owner id[4711]"));
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - voicemail for extension id[4711][4711]"));
    EXPECT_FALSE(log().contains("getBcaVoicemail"));
    EXPECT_EQ(1u, observer.of("orvaneVoicemail").size());
    EXPECT_EQ(1, platform.store.countWrites("missed-logg-count", "0"));
}

TEST_F(ServerNotificationTest, AVoicemailOfASharedLineGoesToThatLineAndIsPublished) {
    subscribeAll({true, true, {"90"}, {}});
    service->subscribe(&observer);
    receiveMessageStore("90");
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - voicemail for extension id[90][90]"));
    EXPECT_FALSE(log().contains("getBcaVoicemail() -"));
    EXPECT_EQ(1u, observer.of("orvaneVoicemail").size());
}

TEST_F(ServerNotificationTest, AVoicemailOfAnUnknownExtensionIsPublishedToo) {
    subscribeAll();
    service->subscribe(&observer);
    receiveMessageStore("90");
    EXPECT_TRUE(logged(2, "getBcaVoicemail() - BCA Line (90) not found"));
    EXPECT_EQ(1u, observer.of("orvaneVoicemail").size());
}

TEST_F(ServerNotificationTest, TheExtensionOfAVoicemailHas64Bits) {
    subscribeAll();
    receiveMessageStore("9007199254740993");
    EXPECT_TRUE(
        logged(6, "handleMsgServerNotification() - voicemail for extension id[9007199254740993][9007199254740993]"));
}

TEST_F(ServerNotificationTest, TheParametersOfAMessageStoreEventDoNotMatter) {
    subscribeAll();
    receive(notification(base + "message-store?type=Fax", userId, R"({"extensionId":4711})"));
    receive(notification(base + "message-store", userId, R"({"extensionId":4711})"));
    EXPECT_TRUE(wasTaken());
    EXPECT_EQ(2, log().count(6, "handleMsgServerNotification() - voicemail for extension id[4711][4711]"));
}

TEST_F(ServerNotificationTest, TheOwnerOfAVoicemailIsOnlyLogged) {
    subscribeAll();
    receive(notification(messageStore, "", R"({"extensionId":4711})"));
    receive(notification(messageStore, "99", R"({"extensionId":4711})"));
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - voicemail for owner id[]"));
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - voicemail for owner id[99]"));
    EXPECT_EQ(2, log().count(6, "handleMsgServerNotification() - voicemail for extension id[4711][4711]"));
}

TEST_F(ServerNotificationTest, AVoicemailWithoutANumericExtensionIsDropped) {
    subscribeAll();
    service->subscribe(&observer);
    receive(notification(messageStore, userId, "{}"));
    receive(notification(messageStore, userId, R"({"extensionId":"4711"})"));
    EXPECT_EQ(2, log().count(3, "handleMsgServerNotification() - cannot find item[extensionId]"));
    EXPECT_TRUE(observer.events.empty());
    EXPECT_TRUE(wasTaken());
}

TEST_F(ServerNotificationTest, AMessageStoreEventThatIsNotSubscribedIsUnsupported) {
    subscribeAll();
    const std::string event = "/restapi/v1.0/account/1/extension/99/message-store";
    receive(notification(event, userId, R"({"extensionId":99})"));
    expectUnsupported(event);
    receive(notification(messageStore, userId, ""));
    expectUnsupported(messageStore);
}

TEST_F(ServerNotificationTest, TheUsersOwnDndReachesTheTelephone) {
    subscribeAll();
    receiveDnd(userId, "DoNotAcceptAnyCalls");
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - DND  event - m_sync_dnd[true]"));
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - DND event  - extId[4711], "
                          "dndStatusString[DoNotAcceptAnyCalls]"));
    EXPECT_TRUE(logged(6, statusLine(2, 1, 0)));
    EXPECT_EQ(1, platform.store.countWrites(PldsTags::CALL_DND_ACTIVATED, "true"));
    receiveDnd(userId, "TakeAllCalls");
    EXPECT_TRUE(logged(6, statusLine(1, 2, 1)));
    EXPECT_EQ(1, platform.store.countWrites(PldsTags::CALL_DND_ACTIVATED, "false"));
}

TEST_F(ServerNotificationTest, AnUnchangedDndMovesTheOldStatusButTellsNobody) {
    subscribeAll();
    receiveDnd(userId, "TakeAllCalls");
    EXPECT_TRUE(logged(6, statusLine(1, 1, 0)));
    EXPECT_EQ(0, dndSwitchWrites());
    EXPECT_FALSE(log().contains("fireOrvaneDndStatus()"));
    receiveDnd(userId, "TakeAllCalls");
    EXPECT_TRUE(logged(6, statusLine(1, 1, 1)));
}

TEST_F(ServerNotificationTest, EveryOneOfTheFourStatusesIsTaken) {
    subscribeAll();
    receiveDnd(userId, "DoNotAcceptDepartmentCalls");
    receiveDnd(userId, "TakeDepartmentCallsOnly");
    receiveDnd(userId, "DoNotAcceptAnyCalls");
    receiveDnd(userId, "TakeAllCalls");
    for (const int status : {3, 4, 2, 1}) {
        EXPECT_TRUE(logged(4, "fireOrvaneDndStatus() - dndStatus[" + std::to_string(status) + "]")) << status;
    }
    EXPECT_EQ(2, dndSwitchWrites());
}

TEST_F(ServerNotificationTest, AnUnknownDndStatusChangesNothing) {
    subscribeAll();
    receiveDnd(userId, "takeallcalls");
    EXPECT_TRUE(
        logged(2, "handleMsgServerNotification() - DND event - not supported value of dndStatus [takeallcalls]"));
    receiveDnd(userId, "DoNotAcceptAnyCalls");
    EXPECT_TRUE(logged(6, statusLine(2, 1, 0)));
}

TEST_F(ServerNotificationTest, DndNeedsNoSubscriptionOfItsOwn) {
    // Presence and message store are confirmed, DND is not.
    openSession();
    receive(
        reply(TestJson::messageId(lastFrame()), subscription("sub-1", "1", "Active", 1800, "\"" + presence + "\"")));
    clearRecords();
    receiveDnd(userId, "DoNotAcceptAnyCalls");
    EXPECT_EQ(1, platform.store.countWrites(PldsTags::CALL_DND_ACTIVATED, "true"));
}

TEST_F(ServerNotificationTest, ADndEventIsNotParsed) {
    subscribeAll();
    receive(notification("presence/dnd?x&y", userId, dndBody(userId, "DoNotAcceptAnyCalls")));
    EXPECT_EQ(1, platform.store.countWrites(PldsTags::CALL_DND_ACTIVATED, "true"));
}

TEST_F(ServerNotificationTest, DndThatIsSwitchedOffIsNotTaken) {
    subscribeAll({true, false, {}, {}});
    receiveDnd(userId, "DoNotAcceptAnyCalls");
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - DND  event - m_sync_dnd[false]"));
    EXPECT_TRUE(logged(3, "handleMsgServerNotification() - DND event - feature is disabled!"));
    EXPECT_TRUE(wasTaken());
    EXPECT_EQ(0, dndSwitchWrites());
}

TEST_F(ServerNotificationTest, DndThatWasSwitchedOffMeanwhileHasForgottenBothStatuses) {
    platform.locks.allowAcrossRequests("m_dndSem");
    subscribeAll();
    receiveDnd(userId, "DoNotAcceptAnyCalls");
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    runThreads();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_TRUE);
    expectPresence().answers(500);
    runThreads();

    receiveDnd(userId, "DoNotAcceptAnyCalls");

    EXPECT_TRUE(logged(6, statusLine(2, 0, 0)));
}

TEST_F(ServerNotificationTest, DndOfAnotherOwnerIsRefused) {
    subscribeAll();
    receive(notification(dnd, "99", dndBody(userId, "DoNotAcceptAnyCalls")));
    EXPECT_TRUE(logged(2, "handleMsgServerNotification() - DND event - ownerId[99] is not equaled to "
                          "m_szUserId[4711]"));
    receive(notification(dnd, "", dndBody(userId, "DoNotAcceptAnyCalls")));
    EXPECT_TRUE(logged(2, "handleMsgServerNotification() - DND event - ownerId[] is not equaled to "
                          "m_szUserId[4711]"));
    EXPECT_EQ(0, dndSwitchWrites());
}

TEST_F(ServerNotificationTest, DndWithoutExtensionOrStatusAsTextsIsRefused) {
    subscribeAll();
    for (const std::string body : {"{}", R"({"extensionId":"4711"})", R"({"dndStatus":"TakeAllCalls"})",
                                   R"({"extensionId":4711,"dndStatus":"TakeAllCalls"})"}) {
        log().clear();
        receive(notification(dnd, userId, body));
        EXPECT_TRUE(logged(2, "handleMsgServerNotification() - DND event - either the item [extensionId] or the item "
                              "[dndStatus] was not find"))
            << body;
    }
}

TEST_F(ServerNotificationTest, ADndEventWithoutABodyIsUnsupported) {
    subscribeAll();
    receive(notification(dnd, userId, ""));
    expectUnsupported(dnd);
}

TEST_F(ServerNotificationTest, TheDndOfAColleagueLightsTheLampOfHisKey) {
    subscribeAll({true, true, {}, {"77"}});
    receive(notification(colleagues, userId, dndBody("77", "DoNotAcceptAnyCalls")));
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - DND event for BLF - extId[77], "
                          "m_serverDndStatus[DoNotAcceptAnyCalls], serverDndStatus[2]"));
    EXPECT_EQ((Lamps{{"blf77", true}}), platform.team.lamps);
    receive(notification(colleagues, userId, dndBody("77", "TakeDepartmentCallsOnly")));
    EXPECT_EQ((Lamps{{"blf77", true}, {"blf77", false}}), platform.team.lamps);
    EXPECT_EQ(0, dndSwitchWrites());
}

TEST_F(ServerNotificationTest, AnUnchangedDndOfAColleagueIsShownAgain) {
    subscribeAll({true, true, {}, {"77"}});
    receive(notification(colleagues, userId, dndBody("77", "TakeAllCalls")));
    receive(notification(colleagues, userId, dndBody("77", "TakeAllCalls")));
    EXPECT_EQ((Lamps{{"blf77", false}, {"blf77", false}}), platform.team.lamps);
}

TEST_F(ServerNotificationTest, ANewStatusOfAColleagueIsKept) {
    subscribeAll({true, true, {}, {"77"}});
    receive(notification(colleagues, userId, dndBody("77", "DoNotAcceptAnyCalls")));
    platform.team.lamps.clear();
    // Switching DND off clears the lamps that are lit.
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, "false");
    runThreads();
    EXPECT_EQ((Lamps{{"blf77", false}}), platform.team.lamps);
}

TEST_F(ServerNotificationTest, AnExtensionThatNobodyWatchesIsRefused) {
    subscribeAll({true, true, {}, {"77"}});
    receive(notification(colleagues, userId, dndBody("78", "DoNotAcceptAnyCalls")));
    EXPECT_TRUE(logged(2, "handleMsgServerNotification() - DND event for BLF - BLF key with extension id[78] not "
                          "found!"));
    EXPECT_TRUE(platform.team.lamps.empty());
}

TEST_F(ServerNotificationTest, AnUnknownStatusOfAColleagueChangesNothing) {
    subscribeAll({true, true, {}, {"77"}});
    receive(notification(colleagues, userId, dndBody("77", "Busy")));
    EXPECT_TRUE(
        logged(2, "handleMsgServerNotification() - DND event for BLF - not supported value of dndStatus [Busy]"));
    EXPECT_TRUE(platform.team.lamps.empty());
}

TEST_F(ServerNotificationTest, APresenceEventAlsoNamedDndFallsThroughToTheDndCheck) {
    subscribeAll();
    const std::string event = base + "presence/dnd/presence?detailedTelephonyState=true";
    receive(notification(event, userId, dndBody(userId, "DoNotAcceptAnyCalls")));
    EXPECT_EQ(1, platform.store.countWrites(PldsTags::CALL_DND_ACTIVATED, "true"));
}

TEST_F(ServerNotificationTest, DroppedEventsAreIgnoredFromThenOn) {
    openSession();
    receive(reply(TestJson::messageId(lastFrame()),
                  subscription("sub-1", "1", "Active", 1800, "\"" + messageStore + "\"")));
    clearRecords();
    receivePresence(call("NoCall", "s-1"));
    expectUnsupported(presence);
    receiveMessageStore(userId);
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - voicemail for extension id[4711][4711]"));
}

TEST_F(ServerNotificationTest, FromTheFrameToTheObserverNoTimePasses) {
    subscribeAll();
    service->subscribe(&observer);
    expectFullCallLog("c1");
    receivePresence(call("NoCall", "s-7"));
    const long long before = timers().nowMilliseconds();
    observer.clear();
    expectIncrementalCallLog("c1", "c2", {CloudAnswers::missedCall("8")});
    receivePresence(call("NoCall", "s-8"));
    EXPECT_EQ(1u, lastBatch("orvaneIncrementalSync", OrvaneServiceTypes::DATA_CALL_LOG).size());
    EXPECT_EQ(before, timers().nowMilliseconds());
    EXPECT_EQ(0u, platform.threads.pendingCount());
    EXPECT_TRUE(platform.threads.sleepsSeconds.empty());
}

} // namespace
