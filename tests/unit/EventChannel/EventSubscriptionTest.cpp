#include "ChannelTelephone.h"
#include "JsonAllocations.h"

namespace {

const std::string own = "/restapi/v1.0/account/~/extension/~/";
const std::string presence = own + "presence?detailedTelephonyState=true";
const std::string messageStore = own + "message-store?direction=Inbound&type=Voicemail";
const std::string dnd = own + "presence/dnd";
const std::string colleagues = own + "presence/line/presence/dnd";

std::string sharedLine(const std::string& id) {
    return "/restapi/v1.0/account/~/extension/" + id + "/message-store?direction=Inbound&type=Voicemail";
}

std::string request(const std::string& method, const std::string& path, const std::string& body) {
    return R"([{"type":"ClientRequest","messageId":"ID","method":")" + method + R"(","path":")" + path + R"("},)" +
           body + "]";
}

std::string body(const std::vector<std::string>& filters) {
    std::string text;
    for (const std::string& filter : filters) {
        text += (text.empty() ? "\"" : ",\"") + filter + "\"";
    }
    return R"({"eventFilters":[)" + text + R"(],"deliveryMode":{"transportType":"WebSocket"}})";
}

class EventSubscriptionTest : public ChannelTelephone {
protected:
    /// A ready session with that configuration and nothing recorded yet.
    void prepare(const Setup& setup) {
        openSession(setup, Details());
        clearRecords();
    }
    void expectRequest(const std::string& method, const std::string& path, const std::string& requestBody) {
        ASSERT_EQ(1u, frames().size());
        EXPECT_TRUE(TestJson::frameEqual(lastFrame(), request(method, path, requestBody)));
        platform.locks.checkNothingHeld();
    }
    void expectCreated(const std::vector<std::string>& filters) {
        EXPECT_TRUE(service->subscribeOvEvents());
        expectRequest("POST", "/restapi/v1.0/subscription", body(filters));
    }
    void expectUpdated(const std::string& id, const std::vector<std::string>& filters) {
        EXPECT_TRUE(service->updateSubscriptionOvEvents());
        expectRequest("PUT", "/restapi/v1.0/subscription/" + id, body(filters));
    }
    bool isSubscribed(const std::string& filter) { return service->isOvEventSubscribed(filter, true); }
    /// Whether a renewal is awaited: only then is a reply with a foreign id refused.
    bool isRenewalAwaited() {
        log().clear();
        EXPECT_TRUE(service->storeUuidMessage("probe"));
        receive(reply("probe", subscription("foreign", "", "Active", 1, "")));
        return log().contains("Message is not processed!");
    }
};

TEST_F(EventSubscriptionTest, CallLogAndDndBringThreeFilters) {
    prepare({true, true, {}, {}});
    expectCreated({presence, messageStore, dnd});
}

TEST_F(EventSubscriptionTest, TheCallLogAloneBringsPresenceAndMessageStore) {
    prepare({true, false, {}, {}});
    expectCreated({presence, messageStore});
}

TEST_F(EventSubscriptionTest, DndAloneBringsItsOwnFilter) {
    prepare({false, true, {}, {}});
    expectCreated({dnd});
}

TEST_F(EventSubscriptionTest, WatchedColleaguesBringAFifthKindOfFilter) {
    prepare({false, true, {}, {"77", "78"}});
    expectCreated({dnd, colleagues});
}

TEST_F(EventSubscriptionTest, ColleaguesAreNotSubscribedWithoutDnd) {
    prepare({true, false, {}, {"77"}});
    expectCreated({presence, messageStore});
}

TEST_F(EventSubscriptionTest, EverySharedLineHasAFilterInTheOrderOfTheLines) {
    prepare({true, true, {"90", "10", "5"}, {"77"}});
    expectCreated({presence, messageStore, sharedLine("10"), sharedLine("5"), sharedLine("90"), dnd, colleagues});
}

TEST_F(EventSubscriptionTest, SharedLinesAreNotSubscribedWithoutTheCallLog) {
    prepare({false, true, {"90"}, {}});
    expectCreated({dnd});
}

TEST_F(EventSubscriptionTest, SharedLinesAreNotSubscribedOnAModelWithoutThem) {
    withCallLog();
    expectToken();
    expectExtension();
    expectGrants({{"90", "line"}});
    expectWebSocketToken();
    connect();
    service->onOpen(0);
    receive(connectionDetails(Details()));
    ASSERT_EQ(1u, frames().size());
    EXPECT_TRUE(TestJson::frameEqual(lastFrame(),
                                     request("POST", "/restapi/v1.0/subscription", body({presence, messageStore}))));
}

TEST_F(EventSubscriptionTest, WhatWasAskedForCountsAsSubscribedUnderTheConcreteExtension) {
    prepare({true, true, {"90"}, {"77"}});
    const std::string concrete = "/restapi/v1.0/account/1/extension/4711/";
    EXPECT_TRUE(isSubscribed(concrete + "presence?detailedTelephonyState=true"));
    EXPECT_TRUE(isSubscribed(concrete + "message-store?type=Voicemail&direction=Inbound"));
    EXPECT_TRUE(isSubscribed(concrete + "presence/dnd"));
    EXPECT_TRUE(isSubscribed(concrete + "presence/line/presence/dnd"));
    EXPECT_TRUE(isSubscribed(sharedLine("90")));
    // A tilde in what the cloud sends has no number.
    EXPECT_FALSE(isSubscribed(dnd));
    EXPECT_FALSE(isSubscribed(sharedLine("91")));
}

TEST_F(EventSubscriptionTest, ParametersAreComparedWhenAskedFor) {
    prepare(Setup());
    const std::string otherParameters = "/restapi/v1.0/account/1/extension/4711/message-store?type=Fax";
    EXPECT_TRUE(service->isOvEventSubscribed(otherParameters, false));
    EXPECT_FALSE(service->isOvEventSubscribed(otherParameters, true));
    EXPECT_TRUE(logged(6, "isOvEventSubscribed(" + otherParameters + ",false)"));
    EXPECT_TRUE(logged(6, "isOvEventSubscribed(" + otherParameters + ",true)"));
}

TEST_F(EventSubscriptionTest, AnEventOnWhichParsingWouldNotEndIsNotSubscribed) {
    prepare(Setup());
    EXPECT_FALSE(service->isOvEventSubscribed(presence + "&x&y", false));
    EXPECT_TRUE(logged(3, "isOvEventSubscribed() - event[" + presence + "&x&y] is malformed"));
}

TEST_F(EventSubscriptionTest, ASharedLineWhoseIdWouldNotParseIsAskedForButNotKept) {
    prepare({true, false, {"1?a&b"}, {}});
    expectCreated({presence, messageStore, sharedLine("1?a&b")});
    EXPECT_TRUE(logged(3, "storeSubscribedOvEvent() - event[" + sharedLine("1?a&b") + "] is malformed"));
}

TEST_F(EventSubscriptionTest, TheFirstFilterIsLoggedByASubscriptionAndByAnUpdate) {
    prepare(Setup());
    const std::string line = "subscribeOvEvents() - ovEvent[" + presence + "], m_szUserId[4711]";
    service->subscribeOvEvents();
    EXPECT_EQ(1, log().count(6, line));
    service->updateSubscriptionOvEvents();
    EXPECT_EQ(2, log().count(6, line));
}

TEST_F(EventSubscriptionTest, WithoutCallLogAndDndNothingIsSubscribed) {
    logIn({false, false});
    service->setWebSocketState(OrvaneService::WS_STATE_READY);
    platform.webSocket.running = true;
    EXPECT_FALSE(service->subscribeOvEvents());
    EXPECT_TRUE(logged(3, "subscribeOvEvents() - sync features are disabled (call log, DND)"));
    EXPECT_FALSE(service->updateSubscriptionOvEvents());
    EXPECT_TRUE(logged(3, "updateSubscriptionOvEvents() - sync features are disabled (call log, DND)"));
    EXPECT_FALSE(service->cancelSubscriptionOvEvents());
    EXPECT_TRUE(frames().empty());
    platform.locks.checkNothingHeld();
}

TEST_F(EventSubscriptionTest, AnUpdateNamesTheSubscription) {
    subscribeAll({true, true, {"90"}, {"77"}});
    expectUpdated("sub-1", {presence, messageStore, sharedLine("90"), dnd, colleagues});
    EXPECT_TRUE(logged(4, "updateSubscriptionOvEvents()"));
}

TEST_F(EventSubscriptionTest, AnUpdateKeepsTheEventsThatAreSubscribedAlready) {
    subscribeAll();
    service->setSusbcriptionId("sub-2");
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_CALL_LOG, "false");
    expectUpdated("sub-2", {dnd});
    EXPECT_TRUE(isSubscribed("/restapi/v1.0/account/1/extension/4711/presence?detailedTelephonyState=true"));
}

TEST_F(EventSubscriptionTest, ARenewalNamesTheSubscriptionAndHasAnEmptyBody) {
    subscribeAll();
    EXPECT_TRUE(service->refreshOvEventsSubscription());
    expectRequest("POST", "/restapi/v1.0/subscription/sub-1/renew", "{}");
}

TEST_F(EventSubscriptionTest, ACancelNamesTheSubscriptionAndHasAnEmptyBody) {
    subscribeAll();
    EXPECT_TRUE(service->cancelSubscriptionOvEvents());
    expectRequest("DELETE", "/restapi/v1.0/subscription/sub-1", "{}");
}

TEST_F(EventSubscriptionTest, WithoutTheCallLogThereIsNothingToCancel) {
    prepare({false, true, {}, {}});
    EXPECT_FALSE(service->cancelSubscriptionOvEvents());
    EXPECT_TRUE(frames().empty());
}

TEST_F(EventSubscriptionTest, OnlyARenewalAwaitsItsOwnSubscription) {
    subscribeAll();
    ASSERT_TRUE(service->refreshOvEventsSubscription());
    EXPECT_TRUE(isRenewalAwaited());
    ASSERT_TRUE(service->subscribeOvEvents());
    EXPECT_FALSE(isRenewalAwaited());
    ASSERT_TRUE(service->refreshOvEventsSubscription());
    ASSERT_TRUE(service->updateSubscriptionOvEvents());
    EXPECT_FALSE(isRenewalAwaited());
    ASSERT_TRUE(service->refreshOvEventsSubscription());
    ASSERT_TRUE(service->cancelSubscriptionOvEvents());
    EXPECT_FALSE(isRenewalAwaited());
}

TEST_F(EventSubscriptionTest, ARequestThatWaitsInTheBufferIsNotAwaited) {
    subscribeAll();
    service->setWebSocketState(OrvaneService::WS_STATE_RECOVERING);
    EXPECT_FALSE(service->refreshOvEventsSubscription());
    EXPECT_FALSE(isRenewalAwaited());
    service->setWebSocketState(OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER);
    service->sendRecoveryBuffer();
    EXPECT_TRUE(TestJson::frameEqual(lastFrame(), request("POST", "/restapi/v1.0/subscription/sub-1/renew", "{}")));
}

TEST_F(EventSubscriptionTest, ARequestThatCannotBeSentLeavesTheAwaitedOneAsItWas) {
    subscribeAll();
    ASSERT_TRUE(service->refreshOvEventsSubscription());
    platform.webSocket.running = false;
    EXPECT_FALSE(service->subscribeOvEvents());
    EXPECT_FALSE(service->updateSubscriptionOvEvents());
    EXPECT_FALSE(service->cancelSubscriptionOvEvents());
    EXPECT_TRUE(isRenewalAwaited());
}

TEST_F(EventSubscriptionTest, TheIdOfARequestWaitsForItsReply) {
    subscribeAll();
    service->refreshOvEventsSubscription();
    EXPECT_TRUE(service->findUuidMessageAndDeleteIt(TestJson::messageId(lastFrame())));
}

TEST_F(EventSubscriptionTest, AMessageThatCannotBeBuiltIsForgotten) {
    prepare(Setup());
    // No text of JSON: the path of the request cannot be written.
    service->setSusbcriptionId("\xff");
    platform.locks.keepTrace();
    platform.steps.begin();
    EXPECT_FALSE(service->updateSubscriptionOvEvents());
    EXPECT_TRUE(logged(2, "updateSubscriptionOvEvents() - create Client Request message failed!"));
    EXPECT_FALSE(service->refreshOvEventsSubscription());
    EXPECT_TRUE(logged(2, "refreshOvEventsSubscription() -  create message failed!"));
    EXPECT_FALSE(service->cancelSubscriptionOvEvents());
    EXPECT_TRUE(logged(2, "cancelSubscribtionOvEvents() - create Client Request message failed!"));
    EXPECT_TRUE(frames().empty());
    // Each id is stored and taken away again; three errors and no more.
    EXPECT_EQ("m_dndSem{} m_uuidMessagesSem{} m_fpkPresenceMapSem{} m_subscriptionIdSem{} m_uuidMessagesSem{} "
              "m_uuidMessagesSem{} "
              "m_subscriptionIdSem{} m_uuidMessagesSem{} m_uuidMessagesSem{} m_subscriptionIdSem{} m_uuidMessagesSem{}",
              platform.locks.trace());
    // The error is told between the two.
    std::string order;
    for (const std::string& step : platform.steps.steps()) {
        order += step == "take m_uuidMessagesSem" ? "id " : step.rfind("log 2", 0) == 0 ? "error " : "";
    }
    EXPECT_EQ("id error id id error id id error id ", order);
    EXPECT_FALSE(log().contains("not found!"));
    platform.locks.checkNothingHeld();
}

TEST_F(EventSubscriptionTest, WithoutMemoryAFilterIsLeftOutAndNotKeptOrTheRequestIsForgotten) {
    subscribeAll({true, true, {"90"}, {"77"}});
    std::size_t allocations = 0;
    {
        const JsonAllocations all(0);
        ASSERT_TRUE(service->updateSubscriptionOvEvents());
        allocations = JsonAllocations::count();
    }
    int requestsSent = 0;
    int requestsForgotten = 0;
    int colleaguesLeftOut = 0;
    for (std::size_t failing = 1; failing <= allocations; ++failing) {
        // Nothing counts as subscribed any more.
        service->onClose(1000, 1000, "");
        clearRecords();
        bool sent = false;
        {
            const JsonAllocations scarce(failing);
            sent = service->updateSubscriptionOvEvents();
        }
        platform.locks.checkNothingHeld();
        ASSERT_EQ(sent ? 1u : 0u, frames().size()) << failing;
        EXPECT_FALSE(log().contains("not found!")) << failing;
        if (!sent) {
            ++requestsForgotten;
            EXPECT_TRUE(logged(2, "updateSubscriptionOvEvents() - create Client Request message failed!")) << failing;
            continue;
        }
        ++requestsSent;
        const auto isRequested = [this](const std::string& filter) {
            return lastFrame().find("\"" + filter + "\"") != std::string::npos;
        };
        const std::string concrete = "/restapi/v1.0/account/1/extension/4711/";
        EXPECT_EQ(isRequested(presence), isSubscribed(concrete + "presence?detailedTelephonyState=true")) << failing;
        EXPECT_EQ(isRequested(sharedLine("90")), isSubscribed(sharedLine("90"))) << failing;
        EXPECT_EQ(isRequested(dnd), isSubscribed(concrete + "presence/dnd")) << failing;
        EXPECT_EQ(isRequested(colleagues), isSubscribed(concrete + "presence/line/presence/dnd")) << failing;
        EXPECT_EQ(!isRequested(colleagues),
                  logged(2, "updateSubscriptionOvEvents() - event(" + colleagues + ") was not added!"))
            << failing;
        colleaguesLeftOut += isRequested(colleagues) ? 0 : 1;
    }
    EXPECT_GT(requestsSent, 0);
    EXPECT_GT(requestsForgotten, 0);
    EXPECT_GT(colleaguesLeftOut, 0);
}

TEST_F(EventSubscriptionTest, WithoutMemoryASubscriptionIsForgottenToo) {
    prepare(Setup());
    // The first allocation is the array of filters.
    const JsonAllocations scarce(1);
    EXPECT_FALSE(service->subscribeOvEvents());
    EXPECT_TRUE(logged(2, "subscribeOvEvents() - create Client Request message failed!"));
    EXPECT_FALSE(log().contains("ovEvent["));
    EXPECT_FALSE(log().contains("not found!"));
    EXPECT_TRUE(frames().empty());
    platform.locks.checkNothingHeld();
}

TEST_F(EventSubscriptionTest, TheSubscriptionIdIsKept) {
    service->setSusbcriptionId("sub-7");
    EXPECT_EQ("sub-7", service->getSubscriptionId());
}

TEST_F(EventSubscriptionTest, TheRenewalTimerSendsTheRenewal) {
    subscribeAll();
    const int timer = runningTimer(renewalMilliseconds);
    timers().stopTimer(runningTimer(idleMilliseconds));
    pass(renewalMilliseconds);
    EXPECT_TRUE(logged(6, "timerEvent(" + std::to_string(timer) +
                              ") refresh Subscription OV events timer expired, state[CONNECTED]"));
    expectRequest("POST", "/restapi/v1.0/subscription/sub-1/renew", "{}");
    // The reply starts it again, nothing else.
    EXPECT_FALSE(isTimerRunning(renewalMilliseconds));
    EXPECT_TRUE(timers().exists(timer));
}

TEST_F(EventSubscriptionTest, ChangedSharedLinesUpdateTheSubscriptionOfAReadyChannelOnly) {
    subscribeAll({true, false, {"90"}, {}});
    expectGrants({{"90", "line 90"}, {"91", "line 91"}});
    service->devicesChanged();
    expectRequest("PUT", "/restapi/v1.0/subscription/sub-1",
                  body({presence, messageStore, sharedLine("90"), sharedLine("91")}));
    clearRecords();
    std::vector<CloudAnswers::GrantedLine> granted = {{"90", "line 90"}, {"91", "line 91"}};
    for (const auto state : {OrvaneService::WS_STATE_CLOSED, OrvaneService::WS_STATE_OPENED,
                             OrvaneService::WS_STATE_RECOVERING, OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER}) {
        service->setWebSocketState(state);
        granted.push_back({"9" + std::to_string(granted.size()), "one more"});
        expectGrants(granted);
        service->devicesChanged();
        EXPECT_EQ(granted.size(), service->getBcaLineListSize());
        EXPECT_TRUE(frames().empty());
        EXPECT_FALSE(log().contains("updateSubscriptionOvEvents()")) << "in state " << state;
    }
}

TEST_F(EventSubscriptionTest, DndThatIsSwitchedOffUpdatesTheSubscription) {
    subscribeAll();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, "false");
    runThreads();
    expectRequest("PUT", "/restapi/v1.0/subscription/sub-1", body({presence, messageStore}));
}

} // namespace
