#include "ChannelTelephone.h"

namespace {

using Calls = std::vector<std::string>;

const std::string base = "/restapi/v1.0/account/1/extension/4711/";
const std::string presence = base + "presence?detailedTelephonyState=true";
const std::string messageStore = base + "message-store?direction=Inbound&type=Voicemail";
const std::string dnd = base + "presence/dnd";
const std::string foreign = "/restapi/v1.0/account/1/extension/99/presence/dnd";

std::string quoted(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "\"" : ",\"") + text + "\"";
    }
    return all;
}

const std::string everything = quoted({presence, messageStore, dnd});

/// A line of a list of events, as the log shows it.
std::string listed(const std::string& uri, const std::string& eventPath, const std::string& id = "4711") {
    return uri + "," + eventPath + "," + id + "\n";
}

class SubscriptionReplyTest : public ChannelTelephone {
protected:
    /// A session whose subscription was requested and is not answered.
    void request() {
        openSession();
        id = TestJson::messageId(lastFrame());
        clearRecords();
    }
    void answer(const std::string& data) { receive(reply(id, data)); }
    /// A reply to a further request.
    void answerUpdate(const std::string& data) {
        ASSERT_TRUE(service->updateSubscriptionOvEvents());
        clearLogAndCalls();
        receive(reply(TestJson::messageId(lastFrame()), data));
    }
    void answerRenewal(const std::string& data) {
        ASSERT_TRUE(service->refreshOvEventsSubscription());
        clearLogAndCalls();
        receive(reply(TestJson::messageId(lastFrame()), data));
    }
    void clearLogAndCalls() {
        log().clear();
        timers().calls.clear();
    }
    bool isSubscribed(const std::string& filter) { return service->isOvEventSubscribed(filter, true); }
    bool areNotificationsTaken() {
        receive(notification("anything", "", ""));
        return logged(3, "handleMsgServerNotification() - unsupported message for ov event[anything], "
                         "m_receiveOvEventEnable[true]");
    }
    /// Whether a renewal is awaited: only then is a reply with a foreign id refused.
    bool isRenewalAwaited() {
        log().clear();
        EXPECT_TRUE(service->storeUuidMessage("probe"));
        receive(reply("probe", subscription("foreign", "", "Active", 1, "")));
        return log().contains("Message is not processed!");
    }

    std::string id;
};

TEST_F(SubscriptionReplyTest, AGoodReplyStartsTheSubscription) {
    request();
    answer(subscription("sub-1", "2026-01-01", "Active", 1800, everything));
    EXPECT_TRUE(logged(4, "handleMsgClientRequest()"));
    EXPECT_TRUE(logged(5, "handleMsgClientRequest() - id[sub-1], m_subscriptionOvEventsCreationTime[], "
                          "creationTime[2026-01-01], m_subscriptionOvStatus[], status[Active], "
                          "expirationTime[2026-01-01T01:00:00Z], expiresIn[1800]"));
    EXPECT_EQ("sub-1", service->getSubscriptionId());
    const std::string timer = std::to_string(runningTimer(renewalMilliseconds));
    EXPECT_EQ((Calls{"create " + timer + " 1800000", "start " + timer}), timerCalls());
    EXPECT_TRUE(logged(4, "handleMsgClientRequest() - start timer(" + timer + ") 1800 second(s)"));
    EXPECT_TRUE(areNotificationsTaken());
    EXPECT_EQ("", log().text(2));
}

TEST_F(SubscriptionReplyTest, TheResultTellsWhetherTheReplyWasTaken) {
    request();
    const TestJson::Value metadata = TestJson::parse(R"({"messageId":")" + id + R"("})");
    const TestJson::Value data = TestJson::parse(subscription("sub-1", "1", "Active", 1800, everything));
    EXPECT_TRUE(service->handleMsgClientRequest(metadata.get(), data.get()));
    // The id has gone with the first reply.
    EXPECT_FALSE(service->handleMsgClientRequest(metadata.get(), data.get()));
    EXPECT_TRUE(logged(2, "findUuidMessageAndDeleteIt() uuid[" + id + "] not found!"));
    EXPECT_TRUE(logged(2, "handleMsgClientRequest() - messageId not found!"));
    // Neither a reply without data nor an error object tells of a subscription.
    const TestJson::Value error = TestJson::parse(R"({"errorCode":"X","message":"no such subscription"})");
    for (json_t* useless : {static_cast<json_t*>(nullptr), error.get()}) {
        ASSERT_TRUE(service->storeUuidMessage(id));
        EXPECT_FALSE(service->handleMsgClientRequest(metadata.get(), useless));
    }
}

TEST_F(SubscriptionReplyTest, WithoutMetadataOrIdAReplyIsRefused) {
    EXPECT_FALSE(service->handleMsgClientRequest(nullptr, nullptr));
    const TestJson::Value metadata = TestJson::parse(R"({"type":"ClientRequest"})");
    EXPECT_FALSE(service->handleMsgClientRequest(metadata.get(), nullptr));
    EXPECT_EQ(2, log().count(2, "handleMsgClientRequest() - message parse failed!"));
}

TEST_F(SubscriptionReplyTest, AReplyToNobodyLeavesTheAwaitedRenewal) {
    subscribeAll();
    ASSERT_TRUE(service->refreshOvEventsSubscription());
    receive(reply("unknown", ""));
    EXPECT_TRUE(isRenewalAwaited());
}

TEST_F(SubscriptionReplyTest, AReplyWithoutDataEndsTheRequest) {
    subscribeAll();
    answerRenewal("");
    EXPECT_EQ("", log().text(2));
    EXPECT_FALSE(isRenewalAwaited());
}

TEST_F(SubscriptionReplyTest, AMissingKeyEndsTheRequestAndChangesNothing) {
    subscribeAll();
    const std::string complete = subscription("sub-1", "2027", "Active", 60, "");
    for (const std::string key : {"id", "creationTime", "status", "eventFilters", "expirationTime", "expiresIn"}) {
        std::string data = complete;
        data.replace(data.find("\"" + key + "\""), key.size() + 2, "\"other\"");
        answerRenewal(data);
        EXPECT_FALSE(log().contains("expirationTime[")) << key;
        EXPECT_TRUE(timerCalls().empty()) << key;
        EXPECT_TRUE(isSubscribed(dnd)) << key;
        EXPECT_FALSE(isRenewalAwaited()) << key;
        // The probe cleared the list: subscribe again.
        answerUpdate(subscription("sub-1", "", "Active", 60, everything));
    }
}

TEST_F(SubscriptionReplyTest, AnErrorObjectEndsTheRequest) {
    subscribeAll();
    answerRenewal(R"({"errorCode":"X","message":"no such subscription"})");
    EXPECT_TRUE(isSubscribed(dnd));
    EXPECT_FALSE(isRenewalAwaited());
}

TEST_F(SubscriptionReplyTest, ARenewalThatIsRefusedIsNotTaken) {
    subscribeAll();
    const auto resultOf = [this](const std::string& subscriptionId) {
        EXPECT_TRUE(service->refreshOvEventsSubscription());
        const std::string frame = reply(TestJson::messageId(lastFrame()),
                                        subscription(subscriptionId, "2026-01-01T00:00:00Z", "Active", 1800, ""));
        const TestJson::Value root = TestJson::parse(frame);
        return service->handleMsgClientRequest(json_array_get(root.get(), 0), json_array_get(root.get(), 1));
    };

    EXPECT_FALSE(resultOf("sub-2"));
    EXPECT_TRUE(resultOf("sub-1"));
}

TEST_F(SubscriptionReplyTest, ARenewalOfAForeignSubscriptionIsRefusedAndStaysAwaited) {
    subscribeAll();
    pass(renewalMilliseconds);
    log().clear();
    receive(reply(TestJson::messageId(lastFrame()), subscription("sub-2", "2027", "Active", 1800, "")));
    EXPECT_TRUE(logged(2, "handleMsgClientRequest() - subscription OV events renew and ID of subscription is not "
                          "equeal old(sub-1), new(sub-2). Message is not processed!"));
    EXPECT_TRUE(isSubscribed(dnd));
    EXPECT_EQ("sub-1", service->getSubscriptionId());
    EXPECT_FALSE(isTimerRunning(renewalMilliseconds));
    EXPECT_TRUE(isRenewalAwaited());
}

TEST_F(SubscriptionReplyTest, AnUpdateMayBringAnotherSubscription) {
    subscribeAll();
    answerUpdate(subscription("sub-2", "2027", "Active", 1800, everything));
    EXPECT_EQ("sub-2", service->getSubscriptionId());
}

TEST_F(SubscriptionReplyTest, ConfirmedEventsAreLoggedAsEnabled) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, everything));
    const std::string own = "/restapi/v1.0/account/~/extension/~/";
    EXPECT_TRUE(logged(4, "handleMsgClientRequest() - receiving of the OV events '" +
                              listed(own + "presence?detailedTelephonyState=true", "presence") +
                              listed(own + "message-store?direction=Inbound&type=Voicemail", "message-store") +
                              listed(own + "presence/dnd", "presence/dnd") + "' is enabled"));
}

TEST_F(SubscriptionReplyTest, ARequestedFilterThatIsMissingIsRemovedAndLogged) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, quoted({presence, dnd})));
    EXPECT_TRUE(logged(2, "handleMsgClientRequest() - OV events that were removed '" +
                              listed("/restapi/v1.0/account/~/extension/~/message-store?direction=Inbound&type="
                                     "Voicemail",
                                     "message-store") +
                              "'"));
    EXPECT_FALSE(isSubscribed(messageStore));
    EXPECT_TRUE(isSubscribed(presence));
    EXPECT_TRUE(isSubscribed(dnd));
}

TEST_F(SubscriptionReplyTest, AFilterThatWasNotRequestedIsLoggedAndDropped) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, everything + "," + quoted({foreign})));
    EXPECT_EQ("handleMsgClientRequest() - OV events that were not requested '" + listed(foreign, "presence/dnd", "99") +
                  "'\n",
              log().text(2));
    EXPECT_FALSE(isSubscribed(foreign));
    EXPECT_TRUE(isSubscribed(dnd));
}

TEST_F(SubscriptionReplyTest, AConfirmationUnderATildeDoesNotMatch) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, quoted({"/restapi/v1.0/account/~/extension/~/presence/dnd"})));
    EXPECT_FALSE(isSubscribed(dnd));
    EXPECT_FALSE(areNotificationsTaken());
}

TEST_F(SubscriptionReplyTest, ADuplicateConfirmationIsLogged) {
    request();
    const std::string again = "/restapi/v1.0/account/2/extension/4711/presence/dnd";
    answer(subscription("sub-1", "1", "Active", 1800, everything + "," + quoted({again})));
    EXPECT_TRUE(logged(3, "handleMsgClientRequest() - orvane event[" + again + "] is duplicated"));
    EXPECT_EQ("", log().text(2));
}

TEST_F(SubscriptionReplyTest, ConfirmationsThatAreNoTextsArePassedOver) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, "1,null,{},[]," + everything));
    EXPECT_EQ("", log().text(2) + log().text(3));
    EXPECT_TRUE(isSubscribed(dnd));
}

TEST_F(SubscriptionReplyTest, FiltersOnWhichParsingWouldNotEndAreDropped) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, everything + "," + quoted({dnd + "?a&b=1"}),
                        R"(,"disabledFilters":["x&y",{"filter":"/a?b&c"}])"));
    EXPECT_TRUE(logged(3, "handleMsgClientRequest() - orvane event[" + dnd + "?a&b=1] is malformed"));
    EXPECT_TRUE(logged(3, "handleMsgClientRequest() - orvane event[x&y] is malformed"));
    EXPECT_TRUE(logged(3, "handleMsgClientRequest() - orvane event[/a?b&c] is malformed"));
    EXPECT_EQ("", log().text(2));
    EXPECT_TRUE(isSubscribed(dnd));
}

TEST_F(SubscriptionReplyTest, ADisabledFilterIsTakenOffTheList) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, quoted({presence, messageStore}),
                        R"(,"disabledFilters":[")" + dnd + R"("])"));
    EXPECT_TRUE(logged(6, "handleMsgClientRequest() - index 0, input '" + dnd + "'"));
    EXPECT_EQ("handleMsgClientRequest() - OV events that were removed '" + listed(dnd, "presence/dnd") + "'\n",
              log().text(2));
    EXPECT_FALSE(isSubscribed(dnd));
    EXPECT_TRUE(isSubscribed(presence));
}

TEST_F(SubscriptionReplyTest, ADisabledFilterThatIsConfirmedAsWellIsNotKept) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, everything, R"(,"disabledFilters":[")" + dnd + R"("])"));
    EXPECT_FALSE(isSubscribed(dnd));
    // Off the list it counts as removed, and then as confirmed without a request.
    const std::string line = listed(dnd, "presence/dnd");
    EXPECT_EQ("handleMsgClientRequest() - OV events that were removed '" + line +
                  "'\nhandleMsgClientRequest() - OV events that were not requested '" + line + "'\n",
              log().text(2));
}

TEST_F(SubscriptionReplyTest, ADisabledFilterMayBeAnObjectWithAReason) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, quoted({presence, messageStore}),
                        R"(,"disabledFilters":[{"filter":")" + dnd + R"(","reason":"R-1","message":"not allowed"}])"));
    EXPECT_TRUE(logged(4, "handleMsgClientRequest() - disabledFilter[" + dnd + "], reason[R-1], message[not allowed]"));
    EXPECT_TRUE(logged(6, "handleMsgClientRequest() - index 0, input '" + dnd + "'"));
    EXPECT_FALSE(isSubscribed(dnd));
}

TEST_F(SubscriptionReplyTest, AnObjectWithoutTheseKeysHasEmptyTexts) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, everything, R"(,"disabledFilters":[{}])"));
    EXPECT_TRUE(logged(4, "handleMsgClientRequest() - disabledFilter[], reason[], message[]"));
    EXPECT_TRUE(logged(6, "handleMsgClientRequest() - index 0, input ''"));
    EXPECT_EQ("", log().text(2));
}

TEST_F(SubscriptionReplyTest, AnyOtherElementOfTheDisabledFiltersIsLogged) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, everything, R"(,"disabledFilters":["",17,[],null])"));
    EXPECT_EQ(3, log().count(2, "handleMsgClientRequest() - cannot read item in disabledFilter!"));
    for (const std::string index : {"0", "1", "2", "3"}) {
        EXPECT_TRUE(logged(6, "handleMsgClientRequest() - index " + index + ", input ''")) << index;
    }
    EXPECT_TRUE(isSubscribed(dnd));
}

TEST_F(SubscriptionReplyTest, ADisabledFilterThatIsNotInTheListChangesNothing) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, everything, R"(,"disabledFilters":[")" + foreign + R"("])"));
    EXPECT_EQ("", log().text(2));
    EXPECT_TRUE(isSubscribed(dnd));
}

TEST_F(SubscriptionReplyTest, DisabledFiltersThatAreNoArrayAreNotLookedAt) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, everything, R"(,"disabledFilters":"all")"));
    EXPECT_EQ("sub-1", service->getSubscriptionId());
    EXPECT_FALSE(log().contains("input '"));
}

TEST_F(SubscriptionReplyTest, WithAllFiltersDisabledNotificationsAreNotTaken) {
    request();
    answer(subscription("sub-1", "1", "Active", 1800, "", R"(,"disabledFilters":[)" + everything + "]"));
    EXPECT_FALSE(log().contains("receiving of the OV events"));
    EXPECT_FALSE(areNotificationsTaken());
    // The subscription stands all the same, and its timer runs.
    EXPECT_EQ("sub-1", service->getSubscriptionId());
    EXPECT_TRUE(isTimerRunning(renewalMilliseconds));
}

TEST_F(SubscriptionReplyTest, ACreationTimeThatIsNotLaterEndsTheReplyBeforeTheTimer) {
    subscribeAll();
    for (const std::string creationTime : {"2026-01-01T00:00:00Z", "2025-12-31", ""}) {
        answerRenewal(subscription("sub-1", creationTime, "Closed", 60, quoted({dnd})));
        EXPECT_TRUE(timerCalls().empty()) << creationTime;
        EXPECT_EQ("sub-1", service->getSubscriptionId());
        // The list has changed all the same.
        EXPECT_FALSE(isSubscribed(presence)) << creationTime;
        EXPECT_TRUE(isSubscribed(dnd)) << creationTime;
        EXPECT_FALSE(isRenewalAwaited()) << creationTime;
        answerUpdate(subscription("sub-1", "", "Active", 60, everything));
    }
}

TEST_F(SubscriptionReplyTest, ARenewalThatKeepsTheCreationTimeIsTheLastOne) {
    subscribeAll();
    pass(renewalMilliseconds);
    receive(reply(TestJson::messageId(lastFrame()),
                  subscription("sub-1", "2026-01-01T00:00:00Z", "Active", 1800, everything)));
    EXPECT_FALSE(isTimerRunning(renewalMilliseconds));
}

TEST_F(SubscriptionReplyTest, ARenewalThatWasAnsweredIsAwaitedNoLonger) {
    subscribeAll();
    answerRenewal(subscription("sub-1", "2027", "Active", 1800, everything));
    EXPECT_FALSE(isRenewalAwaited());
}

TEST_F(SubscriptionReplyTest, CreationTimesAreComparedAsTexts) {
    request();
    answer(subscription("sub-1", "9", "Active", 1800, everything));
    answerUpdate(subscription("sub-2", "10", "Active", 1800, everything));
    EXPECT_EQ("sub-1", service->getSubscriptionId());
}

TEST_F(SubscriptionReplyTest, AnEmptyCreationTimeIsNeverAcceptedFirst) {
    request();
    answer(subscription("sub-1", "", "Active", 1800, everything));
    EXPECT_EQ("", service->getSubscriptionId());
    EXPECT_FALSE(isTimerRunning(renewalMilliseconds));
}

TEST_F(SubscriptionReplyTest, TheFirstReplyStartsTheTimerWhateverItsStatus) {
    request();
    answer(subscription("sub-1", "1", "Blacklisted", 60, everything));
    EXPECT_TRUE(isTimerRunning(60000));
}

TEST_F(SubscriptionReplyTest, AnActiveSubscriptionRestartsItsTimer) {
    subscribeAll();
    const std::string timer = std::to_string(runningTimer(renewalMilliseconds));
    answerUpdate(subscription("sub-1", "2027", "Active", 1800, everything));
    EXPECT_EQ((Calls{"stop " + timer, "start " + timer}), timerCalls());
    EXPECT_TRUE(logged(4, "handleMsgClientRequest() - restart timer(" + timer + ") 1800 second(s)"));
}

TEST_F(SubscriptionReplyTest, AnotherExpiryMakesANewTimer) {
    subscribeAll();
    const std::string timer = std::to_string(runningTimer(renewalMilliseconds));
    answerUpdate(subscription("sub-1", "2027", "Active", 600, everything));
    const std::string newTimer = std::to_string(runningTimer(600000));
    EXPECT_EQ((Calls{"stop " + timer, "delete " + timer, "create " + newTimer + " 600000", "start " + newTimer}),
              timerCalls());
    EXPECT_TRUE(logged(4, "handleMsgClientRequest() - restart timer(" + newTimer + ") 600 second(s)"));
}

TEST_F(SubscriptionReplyTest, ASubscriptionThatIsNoLongerActiveLosesItsTimer) {
    subscribeAll();
    const std::string timer = std::to_string(runningTimer(renewalMilliseconds));
    answerUpdate(subscription("sub-1", "2027", "Suspended", 1800, everything));
    EXPECT_TRUE(logged(4, "handleMsgClientRequest() - stop and delete timer!"));
    EXPECT_EQ((Calls{"stop " + timer, "delete " + timer}), timerCalls());
}

TEST_F(SubscriptionReplyTest, ASubscriptionThatWasNotActiveGetsNoTimerAnyMore) {
    subscribeAll();
    answerUpdate(subscription("sub-1", "2027", "Suspended", 1800, everything));
    answerUpdate(subscription("sub-1", "2028", "Suspended", 600, everything));
    EXPECT_TRUE(timerCalls().empty());
    answerUpdate(subscription("sub-1", "2029", "Active", 600, everything));
    EXPECT_TRUE(timerCalls().empty());
    EXPECT_FALSE(log().contains("timer("));
    EXPECT_FALSE(log().contains("stop and delete timer!"));
}

TEST_F(SubscriptionReplyTest, AnExpiryBeyondWhatATimerTakesIsClamped) {
    request();
    answer(subscription("sub-1", "1", "Active", 2147483647, everything));
    EXPECT_TRUE(isTimerRunning(2147483647));
}

TEST_F(SubscriptionReplyTest, WithoutTheFrameworksContextTheSubscriptionIsStoredWithoutTimer) {
    ASSERT_TRUE(service->storeUuidMessage("known"));
    receive(reply("known", subscription("sub-1", "1", "Active", 1800, everything)));
    EXPECT_EQ("sub-1", service->getSubscriptionId());
    ASSERT_TRUE(service->storeUuidMessage("known"));
    receive(reply("known", subscription("sub-2", "2", "Active", 1800, everything)));
    EXPECT_EQ("sub-2", service->getSubscriptionId());
    EXPECT_FALSE(log().contains("start timer("));
    EXPECT_FALSE(log().contains("stop and delete timer!"));
    ASSERT_TRUE(service->storeUuidMessage("known"));
    receive(reply("known", subscription("sub-3", "3", "Closed", 1800, everything)));
    EXPECT_EQ("sub-3", service->getSubscriptionId());
    EXPECT_TRUE(logged(4, "handleMsgClientRequest() - stop and delete timer!"));
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(SubscriptionReplyTest, AReplyWithAnotherStatusOfTheRequestIsTakenAllTheSame) {
    request();
    receive(R"([{"type":"ClientRequest","messageId":")" + id + R"(","status":400},{"errorCode":"X"}])");
    EXPECT_TRUE(logged(2, "getMsgTypeAndStoreWsc() - status(400)"));
    EXPECT_FALSE(service->findUuidMessageAndDeleteIt(id));
}

} // namespace
