#include "ChannelTelephone.h"

namespace {

using Lamps = std::vector<std::pair<std::string, bool>>;

const std::string base = "/restapi/v1.0/account/1/extension/4711/";
const std::string presence = base + "presence?detailedTelephonyState=true";
const std::string dnd = base + "presence/dnd";
const std::string colleagues = base + "presence/line/presence/dnd";
const std::string userId = "4711";

std::string call(const std::string& sessionId) {
    return R"({"telephonyStatus":"NoCall","telephonySessionId":")" + sessionId + R"("})";
}

std::string dndBody(const std::string& extensionId, const std::string& status) {
    return R"({"extensionId":")" + extensionId + R"(","dndStatus":")" + status + R"("})";
}

/// Which check takes a notification that more than one could take, and which fault of several is told.
class NotificationChecksTest : public ChannelTelephone {
protected:
    bool isDndSwitched(const std::string& value) {
        return platform.store.countWrites(PldsTags::CALL_DND_ACTIVATED, value) == 1;
    }
    /// All that the service complains about, in order.
    std::string complaints(const std::string& event, const std::string& ownerId, const std::string& body) {
        log().clear();
        receive(notification(event, ownerId, body));
        std::string all;
        for (const RecordedLog::Line& line : log().lines()) {
            all += line.level <= 3 ? line.text + "\n" : "";
        }
        return all;
    }
};

TEST_F(NotificationChecksTest, AMessageStoreEventThatIsNotSubscribedIsTriedAsADndEvent) {
    subscribeAll();
    receive(notification(base + "message-store/presence/dnd", userId, dndBody(userId, "DoNotAcceptAnyCalls")));
    EXPECT_TRUE(isDndSwitched("true"));
    EXPECT_FALSE(log().contains("unsupported message"));
}

TEST_F(NotificationChecksTest, APresenceEventThatIsNotSubscribedIsTriedAsAMessageStoreEvent) {
    subscribeAll();
    receive(notification(base + "message-store?of=presence?detailedTelephonyState=true", userId,
                         R"({"extensionId":4711,"activeCalls":[)" + call("s-1") + "]}"));
    EXPECT_TRUE(logged(6, "handleMsgServerNotification() - voicemail for extension id[4711][4711]"));
    EXPECT_FALSE(log().contains("sessionId["));
}

TEST_F(NotificationChecksTest, ASessionIsAwaitedFromItsOwnTurnOn) {
    subscribeAll();
    // The record of the second call comes before its turn, that of the first call late.
    expectFullCallLog("c1", {CloudAnswers::missedCall("2")});
    expectIncrementalCallLog("c1", "c2", {CloudAnswers::missedCall("1")});
    receive(notification(presence, userId, R"({"activeCalls":[)" + call("s-1") + "," + call("s-2") + "]}"));
    checkQuiet();
    // The second call is still waited for.
    EXPECT_TRUE(isTimerRunning(callRecordMilliseconds));
    EXPECT_FALSE(isTimerRunning(pollingMilliseconds));
}

TEST_F(NotificationChecksTest, OfSeveralFaultsOfADndEventTheFirstOneIsTold) {
    const std::string line = "handleMsgServerNotification() - DND event ";
    subscribeAll({true, true, {}, {"77"}});
    EXPECT_EQ(line + "- ownerId[99] is not equaled to m_szUserId[4711]\n", complaints(dnd, "99", "{}"));
    EXPECT_EQ(line + "for BLF - BLF key with extension id[78] not found!\n",
              complaints(colleagues, userId, dndBody("78", "Busy")));
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    runThreads();
    EXPECT_EQ(line + "- feature is disabled!\n", complaints(dnd, "99", "{}"));
}

TEST_F(NotificationChecksTest, OnlyTheStatusWithoutAnyCallLightsTheLampOfAColleague) {
    subscribeAll({true, true, {}, {"77"}});
    for (const char* status :
         {"DoNotAcceptAnyCalls", "DoNotAcceptDepartmentCalls", "TakeDepartmentCallsOnly", "TakeAllCalls"}) {
        receive(notification(colleagues, userId, dndBody("77", status)));
    }
    EXPECT_EQ((Lamps{{"blf77", true}, {"blf77", false}, {"blf77", false}, {"blf77", false}}), platform.team.lamps);
}

TEST_F(NotificationChecksTest, TheExtensionDecidesWhoseDndItIs) {
    subscribeAll({true, true, {}, {"77"}});
    receive(notification(colleagues, userId, dndBody(userId, "DoNotAcceptAnyCalls")));
    EXPECT_TRUE(isDndSwitched("true"));
    EXPECT_TRUE(platform.team.lamps.empty());
    platform.store.writes.clear();
    receive(notification(dnd, userId, dndBody("77", "DoNotAcceptAnyCalls")));
    EXPECT_EQ((Lamps{{"blf77", true}}), platform.team.lamps);
    EXPECT_TRUE(platform.store.writes.empty());
}

} // namespace
