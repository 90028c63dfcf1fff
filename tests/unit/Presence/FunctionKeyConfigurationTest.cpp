#include "PresenceTelephone.h"

#include "data/ManageableData.h"

namespace {

/// Which keys watch whom, at start-up and when a key is changed.
class FunctionKeyConfiguration : public PresenceTelephone {
protected:
    FunctionKeyConfiguration() { withCallLog(); }

    static ManageableData keyData(const std::string& index, const std::string& function, const std::string& label,
                                  const std::string& uri) {
        ManageableData data;
        data.populate(PldsTags::FUNCTION_KEY_ID + index, PldsTags::FUNCTION_KEY_ID + index, function);
        data.populate(PldsTags::FUNCTION_KEY_LABEL + index, PldsTags::FUNCTION_KEY_LABEL + index, label);
        data.populate(PldsTags::BLF_DEST + index, PldsTags::BLF_DEST + index, uri);
        return data;
    }
    void changeKey(const std::string& index, const std::string& function) {
        platform.store.change(PldsTags::FUNCTION_KEY_ID + index, function);
    }
    /// Reports a type, whatever the store has.
    void reportKey(const std::string& index, const std::string& function) {
        ManageableData data;
        data.populate(PldsTags::FUNCTION_KEY_ID + index, PldsTags::FUNCTION_KEY_ID + index, function);
        service->manageableDataChanged(data);
    }
    void pointKey(const std::string& index, const std::string& extensionId) {
        platform.store.set(PldsTags::BLF_DEST + index, "blf" + extensionId);
    }
    void openChannelQuietly() {
        openChannel();
        forgetRecords();
    }
};

} // namespace

// ---- One key's items ---------------------------------------------------------------------------------------------

TEST_F(FunctionKeyConfiguration, AKeysItemsMakeARecord) {
    ManageableData data = keyData("215", "59", "Anna", "blf4711");
    std::string index = "215";
    FpkPresenceDataType record;
    record.dndStatus = OrvaneServiceTypes::DND_TAKE_ALL_CALLS;
    record.dndActive = true;

    EXPECT_TRUE(service->getFpkConfiguration(data, index, record));

    EXPECT_EQ("215", record.fpk);
    EXPECT_EQ("59", record.fpkFunction);
    EXPECT_EQ("4711", record.extensionId);
    EXPECT_EQ("Anna", record.keyLabel);
    EXPECT_EQ(OrvaneServiceTypes::DND_UNKNOWN, record.dndStatus);
    EXPECT_FALSE(record.dndActive);
    EXPECT_TRUE(logged(6, "getFpkConfiguration() [" + PldsTags::FUNCTION_KEY_ID +
                              "215] = [59], keyLabel[Anna], blfMonitoredPhoneUri[blf4711]"));
    EXPECT_TRUE(logged(6, "getFpkConfiguration() - extension id for 'blf4711' is '4711'"));
}

TEST_F(FunctionKeyConfiguration, TheTypeIsNotTestedHere) {
    ManageableData data = keyData("100", "12", "", "blf1");
    std::string index = "100";
    FpkPresenceDataType record;

    EXPECT_TRUE(service->getFpkConfiguration(data, index, record));

    EXPECT_EQ("12", record.fpkFunction);
}

struct UriCase {
    const char* title;
    const char* uri;
    const char* extensionId;
};
class WatchedUri : public PresenceTelephone, public testing::WithParamInterface<UriCase> {};

TEST_P(WatchedUri, LosesItsFirstThreeCharacters) {
    ManageableData data;
    for (const auto& [tag, value] :
         std::vector<std::pair<std::string, std::string>>{{PldsTags::FUNCTION_KEY_ID, "59"},
                                                          {PldsTags::FUNCTION_KEY_LABEL, ""},
                                                          {PldsTags::BLF_DEST, GetParam().uri}}) {
        data.populate(tag + "100", tag + "100", value);
    }
    std::string index = "100";
    FpkPresenceDataType record;

    EXPECT_TRUE(service->getFpkConfiguration(data, index, record));

    EXPECT_EQ(GetParam().extensionId, record.extensionId);
}

INSTANTIATE_TEST_SUITE_P(AllForms, WatchedUri,
                         testing::Values(UriCase{"Usual", "blf4711", "4711"}, UriCase{"OtherPrefix", "xyz4711", "4711"},
                                         UriCase{"NoPrefix", "4711", "1"}, UriCase{"PrefixOnly", "blf", ""},
                                         UriCase{"Shorter", "bl", ""}, UriCase{"Empty", "", ""}),
                         [](const testing::TestParamInfo<UriCase>& info) { return std::string(info.param.title); });

TEST_F(FunctionKeyConfiguration, AMissingItemIsReportedWithWhatWasRead) {
    ManageableData data;
    std::string index = "100";
    FpkPresenceDataType record;
    const std::string begin = "getFpkConfiguration() failed for FPK[100] - ";

    EXPECT_FALSE(service->getFpkConfiguration(data, index, record));
    EXPECT_TRUE(logged(2, begin + "fpkFunction[], keyLabel[], blfMonitoredPhoneUri[]"));

    data.populate(PldsTags::FUNCTION_KEY_ID + "100", PldsTags::FUNCTION_KEY_ID + "100", "59");
    EXPECT_FALSE(service->getFpkConfiguration(data, index, record));
    EXPECT_TRUE(logged(2, begin + "fpkFunction[59], keyLabel[], blfMonitoredPhoneUri[]"));

    data.populate(PldsTags::FUNCTION_KEY_LABEL + "100", PldsTags::FUNCTION_KEY_LABEL + "100", "Anna");
    EXPECT_FALSE(service->getFpkConfiguration(data, index, record));
    EXPECT_TRUE(logged(2, begin + "fpkFunction[59], keyLabel[Anna], blfMonitoredPhoneUri[]"));

    EXPECT_EQ("", record.fpk);
}

TEST_F(FunctionKeyConfiguration, TheStoreIsAskedForTheThreeItemsOfAKey) {
    initialise();
    withWatchedColleague("1015", "22", "Bert");
    std::string index = "1015";
    FpkPresenceDataType record;

    EXPECT_TRUE(service->getFpkConfigurationFromPlds(index, record));

    EXPECT_EQ("22", record.extensionId);
    EXPECT_EQ("Bert", record.keyLabel);
    EXPECT_EQ((std::vector<std::string>{PldsTags::FUNCTION_KEY_ID + "1015", PldsTags::FUNCTION_KEY_LABEL + "1015",
                                        PldsTags::BLF_DEST + "1015"}),
              platform.store.reads.back());
    expectLogin();
    runThreads();
}

TEST_F(FunctionKeyConfiguration, WithoutAStoreThereIsNoConfiguration) {
    std::string index = "100";
    FpkPresenceDataType record;

    EXPECT_FALSE(service->getFpkConfigurationFromPlds(index, record));

    EXPECT_TRUE(logged(3, "getFpkConfigurationFromPlds() - null pointer to Local Mgmt!"));
}

TEST_F(FunctionKeyConfiguration, AStoreThatRefusesIsReported) {
    connectWith("TakeAllCalls");
    platform.store.refuseReads = true;
    std::string index = "100";
    FpkPresenceDataType record;

    EXPECT_FALSE(service->getFpkConfigurationFromPlds(index, record));

    EXPECT_TRUE(logged(3, "getFpkConfigurationFromPlds() - getData for FPK[100] failed!"));
}

TEST_F(FunctionKeyConfiguration, TheIndexStandsBehindTheLastDash) {
    EXPECT_EQ("115", service->getIndexFromIndexedPldsItem("function-key-id-115"));
    EXPECT_EQ("", service->getIndexFromIndexedPldsItem("function-key-id-"));
    EXPECT_EQ("", service->getIndexFromIndexedPldsItem("115"));
    EXPECT_EQ("", service->getIndexFromIndexedPldsItem(""));
}

TEST_F(FunctionKeyConfiguration, TheTableHasTenBanksOfSixteenKeys) {
    ASSERT_EQ(10u, fpkIndexTable.size());
    ASSERT_EQ(16u, fpkIndexTable[0].size());
    EXPECT_EQ("100", fpkIndexTable[0][0]);
    EXPECT_EQ("115", fpkIndexTable[0][15]);
    EXPECT_EQ("200", fpkIndexTable[1][0]);
    EXPECT_EQ("1000", fpkIndexTable[9][0]);
    EXPECT_EQ("1015", fpkIndexTable[9][15]);
    EXPECT_EQ("59", FPK_FUNCTION_BLF);
    EXPECT_EQ("blf", BLF_URI_PREFIX);
}

// ---- Start-up ----------------------------------------------------------------------------------------------------

TEST_F(FunctionKeyConfiguration, OfTwoKeysOnOneColleagueTheFirstInTheTableWins) {
    withWatchedColleague("200", "11", "Later");
    withWatchedColleague("115", "11", "First");
    initialise();

    EXPECT_EQ(1u, service->getFpkPresenceMapSize());
    EXPECT_TRUE(logged(2, "init() fpkPresenceData structure for fpk[200] was not inserted into map"));
    EXPECT_TRUE(logged(6, "init() fpkPresenceData map size[1]"));
    expectToken();
    expectExtension();
    expectPresence();
    expectColleaguePresence("11");
    expectGrants();
    expectWebSocketToken();
    runThreads();
    EXPECT_TRUE(logged(4, "getServerDndStatus() - fpk[115], extensionId[11], keyLabel[First]"));
}

TEST_F(FunctionKeyConfiguration, OnlyKeysOfThatExactTypeAreWatched) {
    withWatchedColleague("100", "11");
    platform.store.set(PldsTags::FUNCTION_KEY_ID + "100", "590");
    withWatchedColleague("101", "22");
    platform.store.set(PldsTags::FUNCTION_KEY_ID + "101", " 59");
    connectWith("TakeAllCalls");

    EXPECT_TRUE(service->isFpkPresenceMapEmpty());
}

TEST_F(FunctionKeyConfiguration, AUriOfThreeCharactersGivesARecordUnderTheEmptyId) {
    withWatchedColleague("100", "");
    initialise();

    EXPECT_TRUE(service->doesFpkPresenceDataExist(""));
    expectToken();
    expectExtension();
    expectPresence();
    platform.network.expectGet(colleaguePath("")).answers(404, "none");
    expectGrants();
    expectWebSocketToken();
    runThreads();
}

// ---- A key becomes one that watches ------------------------------------------------------------------------------

TEST_F(FunctionKeyConfiguration, TheFirstWatchedColleagueIsAskedForAndEntersTheSubscription) {
    connectWith("TakeAllCalls");
    openChannelQuietly();
    pointKey("100", "11");
    expectColleaguePresence("11", "DoNotAcceptAnyCalls");

    changeKey("100", "59");

    EXPECT_EQ((Lamps{{"blf11", true}}), lamps());
    ASSERT_EQ(1u, subscriptionUpdates());
    EXPECT_NE(std::string::npos, platform.webSocket.frames.back().find("presence/line/presence/dnd"));
    EXPECT_TRUE(logged(4, "manageableDataChanged() id[" + PldsTags::FUNCTION_KEY_ID + "100] itemVal[59]"));
    EXPECT_TRUE(logged(6, "manageableDataChanged() fpkPresenceData map size[0] - begin"));
    EXPECT_TRUE(logged(6, "manageableDataChanged() - key[100] is configured as BLF[59]"));
    EXPECT_TRUE(logged(6, "manageableDataChanged() fpkPresenceData map size[1] - end"));
}

TEST_F(FunctionKeyConfiguration, ASecondWatchedColleagueLeavesTheSubscription) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});
    openChannelQuietly();
    pointKey("101", "22");
    expectColleaguePresence("22", "TakeAllCalls");

    changeKey("101", "59");

    EXPECT_EQ(2u, service->getFpkPresenceMapSize());
    EXPECT_EQ(0u, subscriptionUpdates());
}

TEST_F(FunctionKeyConfiguration, ASecondKeyOnTheSameColleagueChangesNothing) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});
    pointKey("101", "11");

    changeKey("101", "59");

    EXPECT_EQ(1u, service->getFpkPresenceMapSize());
    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_TRUE(logged(6, "manageableDataChanged() fpkPresenceData map size[1] - end"));
}

TEST_F(FunctionKeyConfiguration, WithTheFeatureOffTheRecordIsKeptAndNothingAsked) {
    platform.store.set(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    connectWithEmptyCloud();
    forgetRecords();
    pointKey("100", "11");

    changeKey("100", "59");

    EXPECT_TRUE(service->doesFpkPresenceDataExist("11"));
    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_TRUE(logged(2, "getServerDndStatus() - server DND disabled!"));
}

TEST_F(FunctionKeyConfiguration, AnotherTypeOnAnUnwatchedColleagueDoesNothing) {
    connectWith("TakeAllCalls");
    pointKey("100", "11");

    changeKey("100", "12");

    EXPECT_TRUE(service->isFpkPresenceMapEmpty());
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(FunctionKeyConfiguration, AKeyBeyondTheTableIsTakenWhenItsItemIsReported) {
    connectWith("TakeAllCalls");
    pointKey("9999", "11");
    platform.store.set(PldsTags::FUNCTION_KEY_ID + "9999", "59");
    expectColleaguePresence("11");

    reportKey("9999", "59");

    EXPECT_TRUE(service->doesFpkPresenceDataExist("11"));
}

TEST_F(FunctionKeyConfiguration, TheIndexOfAChangedKeyIsAllThatStandsBehindTheTag) {
    connectWith("TakeAllCalls");

    reportKey("1-2", "1");

    EXPECT_EQ((std::vector<std::string>{PldsTags::FUNCTION_KEY_ID + "1-2", PldsTags::FUNCTION_KEY_LABEL + "1-2",
                                        PldsTags::BLF_DEST + "1-2"}),
              platform.store.reads.back());
}

TEST_F(FunctionKeyConfiguration, TheReportedTypeCountsNotTheStoredOne) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});
    withWatchedColleague("101", "22");
    pointKey("102", "33");
    platform.store.set(PldsTags::FUNCTION_KEY_ID + "102", "1");
    expectColleaguePresence("33");

    reportKey("101", "1");
    reportKey("102", "59");
    reportKey("102", "59");
    reportKey("100", "1");

    EXPECT_FALSE(service->doesFpkPresenceDataExist("22"));
    EXPECT_TRUE(service->doesFpkPresenceDataExist("33"));
    EXPECT_FALSE(service->doesFpkPresenceDataExist("11"));
}

TEST_F(FunctionKeyConfiguration, AKeyWithoutAllItsItemsIsNotWatched) {
    withWatchedColleague("100", "11");
    withWatchedColleague("101", "22");
    platform.store.withoutValue = {PldsTags::FUNCTION_KEY_LABEL + "100", PldsTags::BLF_DEST + "101"};
    connectWith("TakeAllCalls");
    EXPECT_TRUE(service->isFpkPresenceMapEmpty());

    changeKey("100", "59");
    changeKey("101", "59");

    EXPECT_TRUE(service->isFpkPresenceMapEmpty());
    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_TRUE(logged(2, "getFpkConfiguration() failed for FPK[100] - fpkFunction[59], keyLabel[], "
                          "blfMonitoredPhoneUri[]"));
    EXPECT_TRUE(logged(2, "getFpkConfiguration() failed for FPK[101] - fpkFunction[59], keyLabel[Colleague], "
                          "blfMonitoredPhoneUri[]"));
}

// ---- A key is given up -------------------------------------------------------------------------------------------

TEST_F(FunctionKeyConfiguration, ALitKeyThatIsGivenUpIsReportedWithTheBareId) {
    withWatchedColleague("100", "11");
    withWatchedColleague("101", "22");
    connectWith("TakeAllCalls", {{"11", "DoNotAcceptAnyCalls"}, {"22", "TakeAllCalls"}});
    openChannelQuietly();

    changeKey("100", "1");

    EXPECT_EQ((Lamps{{"11", false}}), lamps());
    EXPECT_FALSE(service->doesFpkPresenceDataExist("11"));
    EXPECT_EQ(0u, subscriptionUpdates());
    EXPECT_TRUE(logged(6, "manageableDataChanged() - key[100] is deleted as BLF[1]"));
    EXPECT_TRUE(logged(6, "manageableDataChanged() fpkPresenceData map size[2] - begin"));
    EXPECT_TRUE(logged(6, "manageableDataChanged() fpkPresenceData map size[1] - end"));
}

TEST_F(FunctionKeyConfiguration, TheTeamServiceIsToldOfALitKeyWithEverythingFree) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "DoNotAcceptAnyCalls"}});
    std::vector<std::string> held = {"not called"};
    platform.team.reaction = [&] { held = platform.locks.held(); };

    changeKey("100", "1");

    EXPECT_TRUE(held.empty());
}

TEST_F(FunctionKeyConfiguration, AnUnlitKeyThatIsGivenUpTellsTheTeamServiceNothing) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});

    changeKey("100", "");

    EXPECT_TRUE(lamps().empty());
    EXPECT_TRUE(service->isFpkPresenceMapEmpty());
}

TEST_F(FunctionKeyConfiguration, TheLastWatchedColleagueLeavesTheSubscription) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});
    openChannelQuietly();

    changeKey("100", "1");

    ASSERT_EQ(1u, subscriptionUpdates());
    EXPECT_EQ(std::string::npos, platform.webSocket.frames.back().find("presence/line"));
}

TEST_F(FunctionKeyConfiguration, AKeyThatLeavesErasesTheRecordEvenIfAnotherKeyOwnsIt) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});
    pointKey("101", "11");

    changeKey("101", "1");

    EXPECT_FALSE(service->doesFpkPresenceDataExist("11"));
}

TEST_F(FunctionKeyConfiguration, AKeyThatStaysOneThatWatchesChangesNothing) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "DoNotAcceptAnyCalls"}});

    changeKey("100", "59");

    EXPECT_TRUE(service->doesFpkPresenceDataExist("11"));
    EXPECT_TRUE(lamps().empty());
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(FunctionKeyConfiguration, ANewTargetKeepsTheOldRecord) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});

    platform.store.change(PldsTags::BLF_DEST + "100", "blf22");

    EXPECT_TRUE(service->doesFpkPresenceDataExist("11"));
    EXPECT_FALSE(service->doesFpkPresenceDataExist("22"));
    EXPECT_FALSE(platform.log.contains("manageableDataChanged()")) << "only the type is observed";
}

TEST_F(FunctionKeyConfiguration, AKeyWhoseItemsCannotBeReadIsLeftAlone) {
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "TakeAllCalls"}});
    platform.store.refuseReads = true;

    changeKey("100", "1");

    EXPECT_TRUE(service->doesFpkPresenceDataExist("11"));
    EXPECT_TRUE(logged(6, "manageableDataChanged() fpkPresenceData map size[1] - end"));
}

using FunctionKeyConfigurationDeathTest = FunctionKeyConfiguration;

TEST_F(FunctionKeyConfigurationDeathTest, ALitKeyThatIsGivenUpWithoutATeamServiceEndsTheProcess) {
    platform.context.removeService("TeamServiceIfc");
    withWatchedColleague("100", "11");
    connectWith("TakeAllCalls", {{"11", "DoNotAcceptAnyCalls"}});

    EXPECT_DEATH(changeKey("100", "1"), "");

    // Unlit, the missing service is no matter.
    expectColleaguePresence("11", "TakeAllCalls");
    service->getServerDndStatus("11");
    changeKey("100", "1");
    EXPECT_FALSE(service->doesFpkPresenceDataExist("11"));
}
