#include "data/ItemStore.h"
#include "data/LocalMgmt.h"
#include "data/ManageableData.h"
#include "data/MgmtAgentIfc.h"
#include "data/PldsTags.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

constexpr auto soon = 5s;

std::unique_ptr<ItemStore> opened(const std::string& path) {
    std::string error;
    std::unique_ptr<ItemStore> items = ItemStore::open(path, error);
    EXPECT_EQ("", error);
    return items;
}

/// Whether the file is refused, with a reason.
bool isRefused(const std::string& path) {
    std::string error;
    return ItemStore::open(path, error) == nullptr && !error.empty();
}

/// An observer that remembers what it was told.
class Observer : public MgmtAgentIfc {
public:
    bool setData(ManageableData&) override { return false; }
    bool getData(ManageableData&) override { return false; }
    bool resetUserData() override { return false; }
    void manageableDataChanged(ManageableData& data) override {
        if (inNotification) {
            inNotification();
        }
        std::vector<std::string> keys;
        data.getRootIds(keys);
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const std::string& key : keys) {
            std::string value;
            data.interogate(key, value);
            m_told.push_back(key + "=" + value);
        }
        m_thread = std::this_thread::get_id();
        m_changed.notify_all();
    }

    std::vector<std::string> told(std::size_t wanted) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, soon, [this, wanted] { return m_told.size() >= wanted; });
        return m_told;
    }
    std::thread::id thread() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_thread;
    }

    std::function<void()> inNotification;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_told;
    std::thread::id m_thread;
};

struct Store : public ::testing::Test {
    bool write(const std::string& key, const std::string& value) {
        ManageableData data;
        data.populate(key, key, value);
        return store.writeData(data);
    }

    /// What a service reads; "(absent)" when the item is not there.
    std::string read(const std::string& key) {
        ManageableData data;
        data.addRootId(key, nullptr);
        EXPECT_TRUE(store.readData(data));
        std::string value = "(absent)";
        data.interogate(key, value);
        return value;
    }

    Observer observer;
    LocalMgmt store{opened("")};
};

} // namespace

TEST(StoreFile, KeepsItemsFromOneOpeningToTheNext) {
    TemporaryFolder folder;
    const std::string value = std::string("a\0b\n\"\xC3\xA4\xFF", 8);
    opened(folder.file("store"))->put("mac-address", "001122334455");
    opened(folder.file("store"))->put("last-dialled-number", value);

    const std::map<std::string, std::string> items = opened(folder.file("store"))->all();

    EXPECT_EQ((std::map<std::string, std::string>{{"mac-address", "001122334455"}, {"last-dialled-number", value}}),
              items);
}

TEST(StoreFile, OverwritesAnItem) {
    const std::unique_ptr<ItemStore> items = opened("");
    EXPECT_EQ(std::nullopt, items->get("server-type"));
    EXPECT_TRUE(items->put("server-type", "7"));
    EXPECT_TRUE(items->put("server-type", ""));

    EXPECT_EQ("", items->get("server-type"));
    EXPECT_EQ(1U, items->all().size());
}

TEST(StoreFile, IsRefusedWhenItIsSomethingElse) {
    TemporaryFolder folder;
    std::ofstream(folder.file("text")) << std::string(8'192, 'x');

    EXPECT_TRUE(isRefused(folder.file("text")));
    EXPECT_EQ(std::string(8'192, 'x'), folder.read("text"));
}

TEST(StoreFile, IsRefusedWhenItIsDamagedInTheMiddle) {
    TemporaryFolder folder;
    {
        const std::unique_ptr<ItemStore> items = opened(folder.file("store"));
        for (int index = 0; index < 500; ++index) {
            ASSERT_TRUE(items->put("function-key-label-" + std::to_string(index), std::string(200, 'v')));
        }
    }
    std::fstream file(folder.file("store"), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(8'192);
    file << std::string(20'000, '\xA5');
    file.close();

    EXPECT_TRUE(isRefused(folder.file("store")));
}

TEST(StoreFile, IsRefusedWhereNoFileCanBe) {
    TemporaryFolder folder;

    EXPECT_TRUE(isRefused(folder.file("no/such/folder/store")));
    EXPECT_TRUE(isRefused(folder.file("")));
}

TEST_F(Store, ReadsWhatWasWritten) {
    EXPECT_TRUE(write(PldsTags::LAST_DIALLED_NUMBER, "+4989123"));
    EXPECT_EQ("+4989123", read(PldsTags::LAST_DIALLED_NUMBER));
}

TEST_F(Store, ReadsAKnownItemThatWasNeverSetAsPresentAndEmpty) {
    EXPECT_EQ("", read(PldsTags::CALL_DND_ACTIVATED));
    EXPECT_EQ("", read(PldsTags::FUNCTION_KEY_ID + "4711"));
    EXPECT_EQ("", read("missed-logg-count"));
    EXPECT_TRUE(store.all().empty());
}

TEST_F(Store, HasNoUnknownItems) {
    EXPECT_FALSE(write("colour-of-the-handset", "red"));
    EXPECT_EQ("(absent)", read("colour-of-the-handset"));
    EXPECT_EQ("(absent)", read(PldsTags::FUNCTION_KEY_ID));
    EXPECT_EQ("(absent)", read(PldsTags::FUNCTION_KEY_ID + "x"));
}

TEST_F(Store, ReadsAndWritesSeveralItemsAtOnce) {
    ManageableData written;
    written.populate(PldsTags::BLF_DEST + "1", PldsTags::BLF_DEST + "1", "blf102");
    written.populate(PldsTags::FUNCTION_KEY_ID + "1", PldsTags::FUNCTION_KEY_ID + "1", "59");
    ASSERT_TRUE(store.writeData(written));

    EXPECT_EQ("blf102", read(PldsTags::BLF_DEST + "1"));
    EXPECT_EQ("59", read(PldsTags::FUNCTION_KEY_ID + "1"));
}

TEST_F(Store, TellsObserversOfTheirItemsAloneAndInOrder) {
    ASSERT_TRUE(store.observeData({PldsTags::INTERFACE_STATUS, PldsTags::CALL_DND_ACTIVATED}, &observer));

    write(PldsTags::INTERFACE_STATUS, "down");
    write(PldsTags::LAST_DIALLED_NUMBER, "110");
    write(PldsTags::CALL_DND_ACTIVATED, "true");
    store.change(PldsTags::INTERFACE_STATUS, "up");

    EXPECT_EQ((std::vector<std::string>{PldsTags::INTERFACE_STATUS + "=down", PldsTags::CALL_DND_ACTIVATED + "=true",
                                        PldsTags::INTERFACE_STATUS + "=up"}),
              observer.told(3));
    EXPECT_NE(std::this_thread::get_id(), observer.thread());
}

TEST_F(Store, HasToldTheObserversWhenAChangeReturns) {
    std::atomic<bool> ended{false};
    observer.inNotification = [&ended] {
        std::this_thread::sleep_for(20ms);
        ended = true;
    };
    store.observeData({PldsTags::INTERFACE_STATUS}, &observer);

    EXPECT_TRUE(store.change(PldsTags::INTERFACE_STATUS, "down"));

    EXPECT_TRUE(ended);
}

TEST_F(Store, TellsNobodyOfAPreset) {
    store.observeData({PldsTags::SERVER_TYPE, PldsTags::INTERFACE_STATUS}, &observer);

    EXPECT_TRUE(store.preset(PldsTags::SERVER_TYPE, "7"));
    store.change(PldsTags::INTERFACE_STATUS, "up");

    EXPECT_EQ(std::vector<std::string>{PldsTags::INTERFACE_STATUS + "=up"}, observer.told(1));
}

TEST_F(Store, IsReadAndWrittenByOthersWhileAnObserverIsTold) {
    std::promise<void> begun;
    std::promise<void> hold;
    std::shared_future<void> held = hold.get_future().share();
    observer.inNotification = [this, &begun, held] {
        write(PldsTags::LAST_DIALLED_NUMBER, "from inside");
        begun.set_value();
        held.wait();
    };
    store.observeData({PldsTags::INTERFACE_STATUS}, &observer);
    write(PldsTags::INTERFACE_STATUS, "down");
    ASSERT_EQ(std::future_status::ready, begun.get_future().wait_for(soon));

    // Each would hang here if something were held.
    EXPECT_EQ("from inside", read(PldsTags::LAST_DIALLED_NUMBER));
    EXPECT_TRUE(write(PldsTags::LAST_DIALLED_NUMBER, "from outside"));
    EXPECT_TRUE(store.preset(PldsTags::SERVER_TYPE, "7"));
    hold.set_value();
    EXPECT_EQ(1U, observer.told(1).size());
}

TEST_F(Store, TellsOneObserverAtATime) {
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    Observer second;
    const auto count = [&inside, &most] {
        most = std::max<int>(most, ++inside);
        std::this_thread::sleep_for(1ms);
        --inside;
    };
    observer.inNotification = count;
    second.inNotification = count;
    store.observeData({PldsTags::INTERFACE_STATUS}, &observer);
    store.observeData({PldsTags::INTERFACE_STATUS}, &second);

    for (int round = 0; round < 10; ++round) {
        write(PldsTags::INTERFACE_STATUS, std::to_string(round));
    }

    EXPECT_EQ(10U, observer.told(10).size());
    EXPECT_EQ(10U, second.told(10).size());
    EXPECT_EQ(1, most);
    store.stopNotifications();
}

TEST_F(Store, GoesOnTellingBehindAnObserverThatThrows) {
    std::atomic<int> rounds{0};
    observer.inNotification = [&rounds] {
        if (++rounds == 1) {
            throw 7;
        }
    };
    store.observeData({PldsTags::INTERFACE_STATUS}, &observer);

    store.change(PldsTags::INTERFACE_STATUS, "down");
    store.change(PldsTags::INTERFACE_STATUS, "up");

    EXPECT_EQ(std::vector<std::string>{PldsTags::INTERFACE_STATUS + "=up"}, observer.told(1));
}

TEST_F(Store, TellsNobodyBehindTheEndOfNotifications) {
    store.observeData({PldsTags::INTERFACE_STATUS}, &observer);

    store.stopNotifications();
    EXPECT_TRUE(store.change(PldsTags::INTERFACE_STATUS, "down"));

    EXPECT_TRUE(observer.told(0).empty());
    EXPECT_EQ("down", read(PldsTags::INTERFACE_STATUS));
}

TEST_F(Store, ShowsTheTelephoneWhatAServiceWritesAndNothingElse) {
    std::vector<std::string> shown;
    store.setWriteListener(
        [&shown](const std::string& key, const std::string& value) { shown.push_back(key + "=" + value); });

    write(PldsTags::LAST_DIALLED_NUMBER, "110");
    write(PldsTags::LAST_DIALLED_NUMBER, "110");
    store.preset(PldsTags::SERVER_TYPE, "7");
    store.change(PldsTags::INTERFACE_STATUS, "up");
    write("colour-of-the-handset", "red");

    EXPECT_EQ(
        (std::vector<std::string>{PldsTags::LAST_DIALLED_NUMBER + "=110", PldsTags::LAST_DIALLED_NUMBER + "=110"}),
        shown);
}

TEST_F(Store, StandsReadersAndWritersOnManyThreads) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([this, number] {
            const std::string key = PldsTags::FUNCTION_KEY_LABEL + std::to_string(number);
            for (int round = 0; round < 100; ++round) {
                write(key, std::to_string(round));
                read(key);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (int number = 0; number < 4; ++number) {
        EXPECT_EQ("99", read(PldsTags::FUNCTION_KEY_LABEL + std::to_string(number)));
    }
}
