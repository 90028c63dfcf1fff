#include "TestTelephone.h"

#include <ctime>

namespace {

const std::string& serverItem = PldsTags::ORVANE_API_SERVER_ADDRESS;
const std::string& callLogItem = PldsTags::ORVANE_API_SYNC_CALL_LOG;
const std::string& phonebookItem = PldsTags::ORVANE_API_SYNC_PHONEBOOK;
const std::string& intervalItem = PldsTags::ORVANE_API_SYNC_INTERVAL;
const std::string& dndItem = PldsTags::ORVANE_API_SYNC_DND;

class ConfigurationItems : public TestTelephone {
protected:
    ConfigurationItems() { platform.store.set(serverItem, ""); }

    bool deliver(const std::string& item, const std::string& value) {
        return platform.dataManager.deliver(item, value).accepted;
    }
    std::string read(const std::string& item) { return platform.dataManager.read(item); }
};

TEST_F(ConfigurationItems, AreRegisteredWithTheDataManagerInOrder) {
    initialise();

    EXPECT_EQ((std::vector<std::string>{
                  "registerAgent OrvaneMgmtId", "setLoading true", "addGetter OrvaneApiServerAddressGetter",
                  "addGetter OrvaneApiSyncCallLogGetter", "addGetter OrvaneApiSyncPhonebookGetter",
                  "addGetter OrvaneApiSyncIntervalGetter", "addGetter OrvaneApiSyncDndGetter",
                  "addSetter OrvaneApiServerAddressSetter", "addSetter OrvaneApiSyncCallLogSetter",
                  "addSetter OrvaneApiSyncPhonebookSetter", "addSetter OrvaneApiSyncIntervalSetter",
                  "addSetter OrvaneApiSyncDndSetter", "loadItemMap OrvaneItemMap", "setLoading false", "finishSetup"}),
              platform.dataManager.calls);
    EXPECT_EQ(&platform.context, platform.dataManager.context);
    EXPECT_EQ(static_cast<MgmtAgentIfc*>(service.get()), platform.dataManager.agent);
    EXPECT_EQ(static_cast<ValidatorIfc*>(service.get()), platform.dataManager.validator);
}

TEST_F(ConfigurationItems, HaveDefaults) {
    initialise();

    EXPECT_EQ("", read(serverItem));
    EXPECT_EQ("false", read(callLogItem));
    EXPECT_EQ("false", read(phonebookItem));
    EXPECT_EQ("60", read(intervalItem));
    EXPECT_EQ("false", read(dndItem));
}

TEST_F(ConfigurationItems, AreReadBackAsTheyWereSet) {
    initialise();

    EXPECT_TRUE(deliver(serverItem, "any text"));
    EXPECT_TRUE(deliver(callLogItem, "true"));
    EXPECT_TRUE(deliver(phonebookItem, "true"));
    EXPECT_TRUE(deliver(intervalItem, "90"));
    EXPECT_TRUE(deliver(dndItem, "true"));

    EXPECT_EQ("any text", read(serverItem));
    EXPECT_EQ("true", read(callLogItem));
    EXPECT_EQ("true", read(phonebookItem));
    EXPECT_EQ("90", read(intervalItem));
    EXPECT_EQ("true", read(dndItem));
    EXPECT_TRUE(logged(4, "OrvaneApiSyncDndGetter() - m_sync_dnd[true]"));
}

TEST_F(ConfigurationItems, AreListedForTheirGroupWhateverItsName) {
    initialise();
    deliver(serverItem, "s");
    deliver(phonebookItem, "true");
    deliver(intervalItem, "31");
    const std::vector<std::pair<std::string, std::string>> expected = {
        {serverItem, "s"}, {callLogItem, "false"}, {phonebookItem, "true"}, {intervalItem, "31"}, {dndItem, "false"}};

    EXPECT_EQ(expected, service->getListValidData("orvane_config_group"));
    EXPECT_EQ(expected, service->getListValidData("any"));

    deliver(callLogItem, "true");
    deliver(phonebookItem, "false");
    deliver(dndItem, "true");
    const std::vector<std::pair<std::string, std::string>> turned = {
        {serverItem, "s"}, {callLogItem, "true"}, {phonebookItem, "false"}, {intervalItem, "31"}, {dndItem, "true"}};
    EXPECT_EQ(turned, service->getListValidData(""));
}

TEST_F(ConfigurationItems, AreTrueForTheExactTextOnly) {
    initialise();

    for (const std::string& item : {callLogItem, phonebookItem}) {
        for (const std::string value : {"True", "TRUE", "1", "true ", ""}) {
            deliver(item, "true");
            EXPECT_TRUE(deliver(item, value));
            EXPECT_EQ("false", read(item)) << item << " " << value;
        }
    }
}

TEST_F(ConfigurationItems, LogTheirChange) {
    initialise();
    deliver(serverItem, "a");
    platform.log.clear();

    deliver(serverItem, "b");
    deliver(callLogItem, "true");
    deliver(callLogItem, "x");
    deliver(phonebookItem, "true");
    deliver(phonebookItem, "y");
    deliver(intervalItem, "45");

    EXPECT_TRUE(logged(6, "OrvaneApiServerAddressSetter() m_server[a] m_server_old[] newVal[b]"));
    EXPECT_TRUE(logged(6, "OrvaneApiSyncCallLogSetter() m_sync_callLog[false] newVal[true]"));
    EXPECT_TRUE(logged(6, "OrvaneApiSyncCallLogSetter() m_sync_callLog[true] newVal[x]"));
    EXPECT_TRUE(logged(6, "OrvaneApiSyncPhonebookSetter() m_sync_phonebook[false] newVal[true]"));
    EXPECT_TRUE(logged(6, "OrvaneApiSyncPhonebookSetter() m_sync_phonebook[true] newVal[y]"));
    EXPECT_TRUE(logged(6, "OrvaneApiSyncIntervalSetter() m_sync_interval[60] newVal[45]"));
}

TEST_F(ConfigurationItems, AnAddressChangeIsASecurityEvent) {
    initialise();
    const std::time_t before = std::time(nullptr);

    deliver(serverItem, "a");
    deliver(serverItem, "a");
    deliver(serverItem, "");

    const auto& records = platform.securityLog.records;
    ASSERT_EQ(3u, records.size());
    EXPECT_EQ("Orvane Service: Server address change: old[], new[a]", records[0].text);
    EXPECT_EQ("Orvane Service: Server address change: old[a], new[a]", records[1].text);
    EXPECT_EQ("Orvane Service: Server address change: old[a], new[]", records[2].text);
    EXPECT_EQ((std::vector<int>{4, 1, 5, 3}), records[0].classes);
    EXPECT_EQ(0, records[0].failure);
    EXPECT_EQ("", records[0].user);
    EXPECT_EQ("", records[0].address);
    EXPECT_LE(before, records[0].time);
    EXPECT_GE(std::time(nullptr), records[2].time);
}

TEST_F(ConfigurationItems, AFailureIsASecurityEventToo) {
    initialise();

    service->addSecurityLogEntry("text", false);

    ASSERT_EQ(1u, platform.securityLog.records.size());
    EXPECT_EQ(1, platform.securityLog.records[0].failure);
    EXPECT_EQ("text", platform.securityLog.records[0].text);
}

TEST_F(ConfigurationItems, AreTakenWithoutASecurityLog) {
    platform.context.removeService("SecurityLogServiceIfc");
    initialise();

    EXPECT_TRUE(deliver(serverItem, "a"));

    EXPECT_TRUE(logged(3, "addSecurityLogEntry(): Cannot find SecurityLogService"));
    EXPECT_EQ("a", read(serverItem));
}

class ConfigurationChange : public ConfigurationItems {
protected:
    ConfigurationChange() { initialise(); }
};

TEST_F(ConfigurationChange, OfTheServerDoesNotCountForItsFirstValue) {
    deliver(serverItem, "a");

    EXPECT_FALSE(service->hasCallLogConfigChanged());
    EXPECT_FALSE(service->hasPhonebookConfigChanged());
    EXPECT_TRUE(logged(6, "hasCallLogConfigChanged() [false]"));
    EXPECT_TRUE(logged(6, "hasPhonebookConfigChanged() [false]"));
}

TEST_F(ConfigurationChange, OfTheServerCountsForBoth) {
    deliver(serverItem, "a");
    deliver(serverItem, "b");

    EXPECT_TRUE(service->hasCallLogConfigChanged());
    EXPECT_TRUE(service->hasPhonebookConfigChanged());
    EXPECT_TRUE(logged(6, "hasCallLogConfigChanged() [true]"));
    EXPECT_TRUE(logged(6, "hasPhonebookConfigChanged() [true]"));
}

TEST_F(ConfigurationChange, OfTheServerThereAndBackComparesWithTheMiddleValue) {
    deliver(serverItem, "a");
    deliver(serverItem, "b");
    deliver(serverItem, "a");

    EXPECT_TRUE(logged(6, "OrvaneApiServerAddressSetter() m_server[b] m_server_old[a] newVal[a]"));
    EXPECT_TRUE(service->hasCallLogConfigChanged()) << "the old value is \"b\"";
}

TEST_F(ConfigurationChange, ToTheSameServerIsNone) {
    deliver(serverItem, "a");
    deliver(serverItem, "b");
    deliver(serverItem, "b");

    EXPECT_FALSE(service->hasCallLogConfigChanged());
}

TEST_F(ConfigurationChange, OfAFlagCountsForItsOwnDataOnly) {
    deliver(callLogItem, "true");
    EXPECT_TRUE(service->hasCallLogConfigChanged());
    EXPECT_FALSE(service->hasPhonebookConfigChanged());

    deliver(callLogItem, "true");
    EXPECT_FALSE(service->hasCallLogConfigChanged());

    deliver(phonebookItem, "true");
    EXPECT_FALSE(service->hasCallLogConfigChanged());
    EXPECT_TRUE(service->hasPhonebookConfigChanged());
}

TEST_F(ConfigurationChange, LooksAtTheServerAloneForEmptiness) {
    EXPECT_TRUE(service->isAnyConfigItemEmpty());
    EXPECT_TRUE(logged(6, "isAnyConfigItemEmpty() [true]"));

    deliver(serverItem, "a");

    EXPECT_FALSE(service->isAnyConfigItemEmpty());
    EXPECT_TRUE(logged(6, "isAnyConfigItemEmpty() [false]"));
}

class StoreAccess : public ConfigurationItems {};

TEST_F(StoreAccess, ReadsOneItem) {
    platform.store.set("missed-logg-count", "3");
    initialise();
    platform.store.reads.clear();
    std::string value = "former";

    EXPECT_TRUE(service->getPLDSValue("missed-logg-count", value));

    EXPECT_EQ("3", value);
    EXPECT_EQ((std::vector<std::vector<std::string>>{{"missed-logg-count"}}), platform.store.reads);
}

TEST_F(StoreAccess, ReadsAnItemThatWasNeverSetAsEmpty) {
    initialise();
    std::string value = "former";

    EXPECT_TRUE(service->getPLDSValue(PldsTags::LAST_DIALLED_NUMBER, value));

    EXPECT_EQ("", value);
}

TEST_F(StoreAccess, AnswersForTheStoreNotForTheItem) {
    initialise();
    platform.store.withoutValue = {"absent"};
    std::string value = "former";

    EXPECT_TRUE(service->getPLDSValue("absent", value));

    EXPECT_EQ("former", value);
}

TEST_F(StoreAccess, FailsWhenTheStoreDoesNotAnswer) {
    initialise();
    platform.store.set("missed-logg-count", "3");
    platform.store.refuseReads = true;
    std::string value = "former";

    EXPECT_FALSE(service->getPLDSValue("missed-logg-count", value));

    EXPECT_EQ("former", value);
}

TEST_F(StoreAccess, WritesOneItem) {
    initialise();

    EXPECT_TRUE(service->setPLDSValue("missed-logg-count", "4"));

    EXPECT_EQ("4", platform.store.get("missed-logg-count"));
    EXPECT_EQ(1u, platform.store.writes.size());
    EXPECT_TRUE(logged(4, "setPLDSValue() key[missed-logg-count] retVal[true]"));
}

TEST_F(StoreAccess, LogsARefusedWrite) {
    initialise();
    platform.store.refuseWrites = true;

    EXPECT_FALSE(service->setPLDSValue("missed-logg-count", "4"));

    EXPECT_TRUE(logged(4, "setPLDSValue() key[missed-logg-count] retVal[false]"));
}

TEST_F(StoreAccess, FailsWithoutAStore) {
    platform.context.removeService("LocalMgmtIfc");
    initialise();
    std::string value = "former";

    EXPECT_FALSE(service->getPLDSValue("missed-logg-count", value));
    EXPECT_FALSE(service->setPLDSValue("missed-logg-count", "4"));

    EXPECT_EQ("former", value);
    EXPECT_TRUE(logged(4, "setPLDSValue() key[missed-logg-count] retVal[false]"));
    EXPECT_TRUE(platform.store.writes.empty());
}

} // namespace
