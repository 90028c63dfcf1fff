#include "data/LocalMgmt.h"
#include "data/ManageableData.h"
#include "data/ManagedItemGetter.h"
#include "data/ManagedItemSetter.h"
#include "data/MgmtAgentIfc.h"
#include "data/PldsTags.h"
#include "data/ServiceDataManager.h"
#include "data/ValidatorIfc.h"
#include "framework/HostContext.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

constexpr auto soon = 5s;
const std::string group = "OrvaneGroup";

std::unique_ptr<ItemStore> memoryStore() {
    std::string error;
    return ItemStore::open("", error);
}

/// What a service is to its data manager; writes down every call.
class ConfiguredService : public MgmtAgentIfc, public ValidatorIfc {
public:
    bool setData(ManageableData&) override { return false; }
    bool getData(ManageableData&) override { return false; }
    void manageableDataChanged(ManageableData& data) override {
        std::vector<std::string> keys;
        data.getRootIds(keys);
        for (const std::string& key : keys) {
            std::string value;
            data.interogate(key, value);
            calls.push_back("changed " + key + "=" + value);
        }
    }
    bool resetUserData() override {
        calls.emplace_back("reset");
        return resetResult;
    }
    void setValidation(bool) override {}
    void addItemForValidationAsPartOfGroup(const std::string&, const std::string&) override {}
    bool isGroupNeedingValidation(const std::string&) override { return true; }
    std::vector<std::pair<std::string, std::string>> getListValidData(const std::string&) override { return {}; }
    void clearValidation() override {}
    void allowInvalidData(bool) override {}
    bool validateGroupAndSetData(std::string& error, const std::string& name) override {
        calls.push_back("group " + name);
        if (inGroup) {
            inGroup();
        }
        error = groupError;
        return groupError.empty();
    }

    std::vector<std::string> calls;
    std::function<void()> inGroup;
    std::string groupError;
    bool resetResult = true;
};

class Setter : public ManagedItemSetter {
public:
    Setter(std::string name, ConfiguredService& service, std::atomic<int>& alive)
        : m_name(std::move(name)), m_service(service), m_alive(alive) {
        ++m_alive;
    }
    ~Setter() override { --m_alive; }
    bool set(const std::string& value, const std::string&, std::string& error) override {
        m_service.calls.push_back(m_name + "=" + value);
        if (value == "refuse me") {
            error = "not with us";
            return false;
        }
        return true;
    }

private:
    std::string m_name;
    ConfiguredService& m_service;
    std::atomic<int>& m_alive;
};

class Getter : public ManagedItemGetter {
public:
    explicit Getter(std::string name) : m_name(std::move(name)) {}
    std::string get(const std::string&) override { return "value of " + m_name; }

private:
    std::string m_name;
};

struct DataManager : public ::testing::Test {
    DataManager() { context.addService("LocalMgmtIfc", &store); }

    void setUp() {
        manager->registerAgent(&context, &service, "OrvaneService", &service);
        manager->setLoading(true);
        for (const char* name : {"OrvaneApiServerAddress", "OrvaneApiSyncCallLog", "OrvaneApiSyncPhonebook",
                                 "OrvaneApiSyncInterval", "OrvaneApiSyncDnd"}) {
            manager->addGetter(std::string(name) + "Getter", new Getter(name));
            manager->addSetter(std::string(name) + "Setter", new Setter(name, service, settersAlive));
        }
        manager->loadItemMap("OrvaneItemMap");
        manager->setLoading(false);
        manager->finishSetup();
    }

    using Calls = std::vector<std::string>;

    ConfiguredService service;
    std::atomic<int> settersAlive{0};
    LocalMgmt store{memoryStore()};
    HostContext context;
    std::unique_ptr<ServiceDataManager> manager = std::make_unique<ServiceDataManager>();
};

} // namespace

TEST_F(DataManager, DeliversTheStoredValuesBeforeSetupReturns) {
    store.preset(PldsTags::ORVANE_API_SERVER_ADDRESS, "https://127.0.0.1:1");
    store.preset(PldsTags::ORVANE_API_SYNC_INTERVAL, "30");
    store.preset(PldsTags::LAST_DIALLED_NUMBER, "110");

    setUp();

    EXPECT_EQ((Calls{"OrvaneApiServerAddress=https://127.0.0.1:1", "OrvaneApiSyncInterval=30"}), service.calls);
}

TEST_F(DataManager, LeavesTheServiceItsDefaultsWhenNothingIsStored) {
    setUp();

    EXPECT_EQ(Calls{}, service.calls);
}

TEST_F(DataManager, DeliversAStoredValueThatIsEmpty) {
    store.preset(PldsTags::ORVANE_API_SYNC_DND, "");

    setUp();

    EXPECT_EQ(Calls{"OrvaneApiSyncDnd="}, service.calls);
}

TEST_F(DataManager, SetsUpWithoutAStore) {
    HostContext empty;
    manager->registerAgent(&empty, &service, "OrvaneService", &service);
    manager->loadItemMap("OrvaneItemMap");
    manager->finishSetup();

    EXPECT_EQ(Calls{}, service.calls);
}

TEST_F(DataManager, DoesNotRunTheSettersForWhatTheServiceWritesItself) {
    setUp();
    ManageableData data;
    data.populate(PldsTags::ORVANE_API_SYNC_DND, PldsTags::ORVANE_API_SYNC_DND, "true");

    EXPECT_TRUE(store.writeData(data));

    EXPECT_EQ(Calls{}, service.calls);
}

TEST_F(DataManager, ReadsItemsThroughTheGetters) {
    setUp();
    ManageableData data;
    data.addRootId(PldsTags::ORVANE_API_SYNC_CALL_LOG, nullptr);
    ASSERT_TRUE(manager->getData(data));

    std::string value;
    EXPECT_TRUE(data.interogate(PldsTags::ORVANE_API_SYNC_CALL_LOG, value));
    EXPECT_EQ("value of OrvaneApiSyncCallLog", value);
}

TEST_F(DataManager, HasNoOtherItems) {
    setUp();
    ManageableData data;
    data.populate(PldsTags::LAST_DIALLED_NUMBER, PldsTags::LAST_DIALLED_NUMBER, "110");

    EXPECT_FALSE(manager->setData(data));
    EXPECT_FALSE(manager->getData(data));
    EXPECT_EQ(Calls{}, service.calls);
}

TEST_F(DataManager, WritesItemsThroughTheSetters) {
    setUp();
    ManageableData data;
    data.populate(PldsTags::ORVANE_API_SYNC_DND, PldsTags::ORVANE_API_SYNC_DND, "true");
    data.populate(PldsTags::ORVANE_API_SYNC_INTERVAL, PldsTags::ORVANE_API_SYNC_INTERVAL, "refuse me");

    EXPECT_FALSE(manager->setData(data));

    EXPECT_EQ((Calls{"OrvaneApiSyncDnd=true", "OrvaneApiSyncInterval=refuse me"}), service.calls);
}

TEST_F(DataManager, DeliversAConfigurationInItsOrderAndThenTheGroupOnce) {
    setUp();

    const auto refusals = store.configure(
        {{PldsTags::ORVANE_API_SYNC_INTERVAL, "60"}, {PldsTags::ORVANE_API_SERVER_ADDRESS, "https://h"}}, group);

    EXPECT_TRUE(refusals.empty());
    EXPECT_EQ((Calls{"OrvaneApiSyncInterval=60", "OrvaneApiServerAddress=https://h", "group " + group}), service.calls);
    EXPECT_EQ("60", store.get(PldsTags::ORVANE_API_SYNC_INTERVAL));
    EXPECT_EQ("https://h", store.get(PldsTags::ORVANE_API_SERVER_ADDRESS));
}

TEST_F(DataManager, KeepsTheOldValueOfARefusedItemAndGoesOn) {
    store.preset(PldsTags::ORVANE_API_SYNC_INTERVAL, "30");
    setUp();
    service.calls.clear();

    const auto refusals = store.configure(
        {{PldsTags::ORVANE_API_SYNC_INTERVAL, "refuse me"}, {PldsTags::ORVANE_API_SYNC_DND, "true"}}, group);

    ASSERT_EQ(1U, refusals.size());
    EXPECT_EQ(PldsTags::ORVANE_API_SYNC_INTERVAL, refusals[0].key);
    EXPECT_EQ("not with us", refusals[0].reason);
    EXPECT_EQ("30", store.get(PldsTags::ORVANE_API_SYNC_INTERVAL));
    EXPECT_EQ("true", store.get(PldsTags::ORVANE_API_SYNC_DND));
    EXPECT_EQ((Calls{"OrvaneApiSyncInterval=refuse me", "OrvaneApiSyncDnd=true", "group " + group}), service.calls);
}

TEST_F(DataManager, ReportsARefusedGroupLastAndWithoutAKey) {
    setUp();
    service.groupError = "incomplete";

    const auto refusals = store.configure({{PldsTags::ORVANE_API_SYNC_DND, "true"}}, group);

    ASSERT_EQ(1U, refusals.size());
    EXPECT_EQ("", refusals[0].key);
    EXPECT_EQ("incomplete", refusals[0].reason);
    EXPECT_EQ("true", store.get(PldsTags::ORVANE_API_SYNC_DND));
}

TEST_F(DataManager, ChangesItemsWithoutASetterAndTellsTheirObservers) {
    setUp();
    store.observeData({PldsTags::SERVER_TYPE}, &service);

    EXPECT_TRUE(store.configure({{PldsTags::SERVER_TYPE, "8"}}, group).empty());

    EXPECT_EQ((Calls{"changed " + PldsTags::SERVER_TYPE + "=8", "group " + group}), service.calls);
}

TEST_F(DataManager, HoldsNothingWhileTheGroupTakesEffect) {
    setUp();
    service.inGroup = [this] {
        // The service comes down here and waits for its threads, which still read and write.
        auto worker = std::async(std::launch::async, [this] {
            ManageableData data;
            data.populate(PldsTags::ORVANE_API_SYNC_DND, PldsTags::ORVANE_API_SYNC_DND, "true");
            return store.writeData(data) && store.readData(data) && manager->getData(data) && manager->setData(data);
        });
        ASSERT_EQ(std::future_status::ready, worker.wait_for(soon));
        EXPECT_TRUE(worker.get());
    };

    EXPECT_TRUE(store.configure({}, group).empty());
}

TEST_F(DataManager, LetsOneConfigurationWaitForAnother) {
    setUp();
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    service.inGroup = [&inside, &most] {
        most = std::max<int>(most, ++inside);
        std::this_thread::sleep_for(20ms);
        --inside;
    };
    const auto configure = [this] { store.configure({{PldsTags::ORVANE_API_SYNC_DND, "true"}}, group); };

    std::thread other(configure);
    configure();
    other.join();

    EXPECT_EQ(1, most);
    EXPECT_EQ((Calls{"OrvaneApiSyncDnd=true", "group " + group, "OrvaneApiSyncDnd=true", "group " + group}),
              service.calls);
}

TEST_F(DataManager, ForwardsTheResetOfTheUsersData) {
    EXPECT_FALSE(store.resetUserData());
    setUp();

    EXPECT_TRUE(store.resetUserData());
    EXPECT_EQ(Calls{"reset"}, service.calls);
    service.resetResult = false;
    EXPECT_FALSE(store.resetUserData());
}

TEST_F(DataManager, CallsNobodyOnceUnregistered) {
    setUp();
    ManageableData data;
    data.populate(PldsTags::ORVANE_API_SYNC_DND, PldsTags::ORVANE_API_SYNC_DND, "true");

    manager->unregisterAgent();

    EXPECT_FALSE(manager->setData(data));
    EXPECT_FALSE(manager->getData(data));
    EXPECT_FALSE(store.resetUserData());
    EXPECT_EQ(2U, store.configure({{PldsTags::ORVANE_API_SYNC_DND, "true"}}, group).size());
    EXPECT_EQ(Calls{}, service.calls);
}

TEST_F(DataManager, UnregistersWhenNoCallIsInProgressAnyMore) {
    setUp();
    std::promise<void> begun;
    std::atomic<bool> ended{false};
    service.inGroup = [&begun, &ended] {
        begun.set_value();
        std::this_thread::sleep_for(30ms);
        ended = true;
    };
    std::thread configuring([this] { store.configure({}, group); });
    begun.get_future().wait();

    manager->unregisterAgent();

    EXPECT_TRUE(ended);
    configuring.join();
}

TEST_F(DataManager, MayBeUnregisteredFromInsideACall) {
    setUp();
    service.inGroup = [this] { manager->unregisterAgent(); };

    EXPECT_TRUE(store.configure({}, group).empty());
    EXPECT_FALSE(store.resetUserData());
}

TEST_F(DataManager, FreesItsSettersWhenReleased) {
    setUp();
    ASSERT_EQ(5, settersAlive);

    manager->unregisterAgent();
    manager->releaseItems();

    EXPECT_EQ(0, settersAlive);
}

TEST_F(DataManager, LeavesNothingBehindInTheStoreWhenItGoesUnclosed) {
    setUp();

    manager.reset();

    EXPECT_EQ(0, settersAlive);
    EXPECT_TRUE(store.configure({{PldsTags::ORVANE_API_SYNC_DND, "true"}}, group).empty());
    EXPECT_EQ(Calls{}, service.calls);
    EXPECT_EQ("true", store.get(PldsTags::ORVANE_API_SYNC_DND));
}
