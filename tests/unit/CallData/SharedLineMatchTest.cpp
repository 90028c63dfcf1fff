#include "SharedLineTelephone.h"

namespace {

class SharedLineMatch : public SharedLineTelephone {
protected:
    std::size_t frameCount() const { return platform.webSocket.frames.size(); }
    const std::string& lastFrame() const { return platform.webSocket.frames.back(); }
    bool subscribedFor(const std::string& id) const {
        return lastFrame().find("/extension/" + id + "/message-store") != std::string::npos;
    }
};

} // namespace

// ---- Overview notifications --------------------------------------------------------------------------------------

TEST_F(SharedLineMatch, TheNumberIsTheUriUpToTheFirstAt) {
    connectWithLines({{"201", "Sales"}});
    expectFullLineLog("201", "t1");

    overview("+4930@first@second", "Sales");

    EXPECT_EQ("+4930", line("201").phoneNumber);
    EXPECT_EQ(BCA_LINE_STATUS_READY, line("201").status);
}

TEST_F(SharedLineMatch, AUriWithoutAtIsTheNumberAsItStands) {
    connectWithLines({{"201", "Sales"}});
    expectFullLineLog("201", "t1");

    overview("+4930", "Sales");

    EXPECT_EQ("+4930", line("201").phoneNumber);
}

TEST_F(SharedLineMatch, TheNamesAreComparedExactly) {
    connectWithLines({{"201", "Sales"}});

    overview("+4930@example", "sales");
    overview("+4930@example", "Sales ");

    EXPECT_EQ(BCA_LINE_STATUS_DISCOVERED, line("201").status);
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(SharedLineMatch, TwoEmptyNamesAreEqual) {
    // A grant with an empty name.
    expectToken();
    expectExtension();
    expectGrants().answers(200, "{\"records\":[{\"extension\":{\"id\":\"201\",\"extensionNumber\":\"1\","
                                "\"type\":\"User\",\"name\":\"\"}}]}");
    expectWebSocketToken();
    connect();
    expectFullLineLog("201", "t1");

    overview("+4930@example", "");

    EXPECT_EQ(BCA_LINE_STATUS_READY, line("201").status);
}

TEST_F(SharedLineMatch, AllLinesOfOneNameMatchOneNotification) {
    connectWithLines({{"203", "Sales"}, {"201", "Sales"}, {"202", "Other"}});
    expectFullLineLog("201", "t1");
    expectFullLineLog("203", "t3");

    overview("+4930@example", "Sales");

    EXPECT_EQ(BCA_LINE_STATUS_READY, line("201").status);
    EXPECT_EQ(BCA_LINE_STATUS_DISCOVERED, line("202").status);
    EXPECT_EQ(BCA_LINE_STATUS_READY, line("203").status);
    EXPECT_EQ("+4930", line("203").phoneNumber);
}

TEST_F(SharedLineMatch, AReadyLineKeepsItsNumber) {
    connectWithReadyLines({{"201", "Sales"}});

    overview("+4999@example", "Sales");

    EXPECT_EQ("+49201", line("201").phoneNumber);
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(SharedLineMatch, ANotificationBeforeItsLineIsNotRemembered) {
    connectWithLines({});
    overview("+4930@example", "Sales");
    expectGrants({{"201", "Sales"}});

    service->devicesChanged();

    EXPECT_EQ(BCA_LINE_STATUS_DISCOVERED, line("201").status);
}

TEST_F(SharedLineMatch, WhateverTheKeyLooksLikeIsAccepted) {
    connectWithLines({{"201", "Sales"}});
    expectFullLineLog("201", "t1");

    service->overviewChangedNotification("+4930@example", "Sales", false, -5, static_cast<ELineVisualAlert>(99));

    EXPECT_EQ(BCA_LINE_STATUS_READY, line("201").status);
}

// ---- Devices and system status -----------------------------------------------------------------------------------

TEST_F(SharedLineMatch, DevicesChangedDownloadsTheLines) {
    connectWithLines({});
    expectGrants({{"201", "Sales"}});

    service->devicesChanged();

    EXPECT_TRUE(hasLine("201"));
    EXPECT_TRUE(logged(6, "getDevicesAndUpdateInfo() - stored bca lines[1], removed bca lines[0], new added bca "
                          "lines[1]"));
}

TEST_F(SharedLineMatch, TheSystemStatusEnabledDownloadsTheLines) {
    connectWithLines({{"201", "Sales"}});
    expectGrants({{"202", "Support"}});

    service->systemStatusChange("Enabled", "after a restart");

    EXPECT_TRUE(hasLine("202"));
    EXPECT_TRUE(logged(4, "systemStatusChange() - status[Enabled], statusInfo[after a restart]"));
    EXPECT_TRUE(logged(6, "getDevicesAndUpdateInfo() - stored bca lines[1], removed bca lines[1], new added bca "
                          "lines[1]"));
}

TEST_F(SharedLineMatch, AnotherSystemStatusDoesNothing) {
    connectWithLines({});

    service->systemStatusChange("enabled", "");
    service->systemStatusChange("Disabled", "");
    service->systemStatusChange("", "");

    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_TRUE(logged(4, "systemStatusChange() - status[Disabled], statusInfo[]"));
}

TEST_F(SharedLineMatch, AModelWithoutTheFeatureAsksForNothing) {
    platform.model = "MODEL";
    connectWithLines({});

    EXPECT_FALSE(service->getDevicesAndUpdateInfo());

    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(SharedLineMatch, TheResultTellsWhetherTheLinesChanged) {
    connectWithLines({{"201", "Sales"}});
    expectGrants({{"201", "Sales"}});
    expectGrants({});

    EXPECT_FALSE(service->getDevicesAndUpdateInfo());
    EXPECT_TRUE(service->getDevicesAndUpdateInfo());
}

TEST_F(SharedLineMatch, LineFiltersEnterAndLeaveTheSubscriptionWhileTheSessionStands) {
    connectWithLines({{"201", "Sales"}});
    openChannel();
    const std::size_t before = frameCount();
    expectGrants({{"201", "Sales"}, {"202", "Support"}});

    service->devicesChanged();

    ASSERT_EQ(before + 1, frameCount());
    EXPECT_NE(std::string::npos, lastFrame().find("\"PUT\""));
    EXPECT_TRUE(subscribedFor("201"));
    EXPECT_TRUE(subscribedFor("202"));

    expectGrants({{"202", "Support"}});
    service->devicesChanged();

    ASSERT_EQ(before + 2, frameCount());
    EXPECT_FALSE(subscribedFor("201"));
    EXPECT_TRUE(subscribedFor("202"));
}

TEST_F(SharedLineMatch, UnchangedLinesLeaveTheSubscriptionAlone) {
    connectWithLines({{"201", "Sales"}});
    openChannel();
    const std::size_t before = frameCount();
    expectGrants({{"201", "Sales"}});

    service->devicesChanged();

    EXPECT_EQ(before, frameCount());
}

TEST_F(SharedLineMatch, WithoutASessionTheSubscriptionIsLeftAlone) {
    connectWithLines({});
    expectGrants({{"201", "Sales"}});

    service->devicesChanged();

    EXPECT_TRUE(hasLine("201"));
    EXPECT_EQ(0u, frameCount());
    EXPECT_FALSE(platform.log.contains("updateSubscriptionOvEvents()"));
}

TEST_F(SharedLineMatch, ALineThatGoesAwayIsWithdrawnRecordByRecord) {
    withObserver();
    connectWithLines({{"201", "Sales"}});
    expectFullLineLog("201", "t1", {CloudAnswers::call("c2"), CloudAnswers::call("c1")});
    overview("+4930@example", "Sales");
    observer.clear();
    expectGrants({});

    service->devicesChanged();

    EXPECT_EQ((std::vector<std::string>{"c1", "c2"}),
              lastBatch("orvaneIncrementalSync", OrvaneServiceTypes::DATA_CALL_LOG));
    EXPECT_EQ(1u, observer.of("orvaneVoicemail").size());
}

TEST_F(SharedLineMatch, StartWithdrawsTheRecordsOfALineThatIsGone) {
    withObserver();
    connectWithLines({{"201", "Sales"}});
    expectFullLineLog("201", "t1", {CloudAnswers::call("c1")});
    overview("+4930@example", "Sales");
    service->stop();
    forgetRecords();
    expectToken();
    expectExtension();
    expectGrants({});
    expectIncrementalCallLog("c1", "c2");
    expectWebSocketToken();

    service->start();

    EXPECT_TRUE(logged(6, "start() bca lines changed! removedBcaLinesList[1], newBcaLines[0]"));
    ASSERT_FALSE(observer.of("orvaneIncrementalSync").empty());
    EXPECT_EQ((std::vector<std::string>{"c1"}), observer.of("orvaneIncrementalSync")[0].data);
}
