#include "PhonebookTelephone.h"

#include <algorithm>

using namespace CloudAnswers;

namespace {

class PhonebookSync : public PhonebookTelephone {};

TEST_F(PhonebookSync, IsFullTheFirstTime) {
    connectWith({contact(2), contact(1)});

    EXPECT_EQ((Batch{record(contact(2)), record(contact(1))}), fullBatch());
    EXPECT_EQ(1u, published());
    EXPECT_TRUE(logged(4, "getPhonebook() m_sync_phonebook[true]"));
    EXPECT_TRUE(logged(4, "handlePhonebookResponse() currentSyncToken[p1] m_phonebookSyncToken[]"));
    EXPECT_TRUE(logged(6, "handlePhonebookResponse() storing m_phonebookSyncToken[p1]"));
    EXPECT_TRUE(logged(4, "handlePhonebookResponse() records size[2] nextPageId[0]"));
    EXPECT_TRUE(logged(4, "getPhonebook() phonebookRecordsVector[2] publishData[true] phonebookFullSync[true]"));
    EXPECT_TRUE(platform.log.hasBeginning(6, "getPhonebook - realPath[" + path(own("/address-book-sync")) +
                                                 "?syncType=FSync&perPage=50], istatusCode[200], responseData[{"));
}

TEST_F(PhonebookSync, IsIncrementalFromThenOn) {
    connectWith({contact(1)}, "a b/+");
    expectPage(since("a b/+"), addressBook("p2", {contact(2)}));
    refresh();
    EXPECT_EQ((Batch{record(contact(2))}), incrementalBatch());
    EXPECT_TRUE(logged(4, "getPhonebook() phonebookRecordsVector[2] publishData[true] phonebookFullSync[false]"));

    expectPage(since("p2"), addressBook("p3", {}));
    refresh();
}

TEST_F(PhonebookSync, TakesSeveralPagesAndStoresTheTokenOfTheLast) {
    expectLoginBeforeBook();
    expectPage(full(), addressBook("p1", {contact(1)}, 2));
    expectPage(full("&pageId=2"), addressBook("p1", {contact(2)}, 5));
    expectPage(full("&pageId=2&pageId=5"), addressBook("p1", {contact(3)}));

    connect();

    EXPECT_EQ((Batch{record(contact(1)), record(contact(2)), record(contact(3))}), fullBatch());
    EXPECT_EQ(1u, published());
    EXPECT_TRUE(logged(6, "handlePhonebookResponse() nextPageId[2]"));
    EXPECT_TRUE(logged(6, "handlePhonebookResponse() nextPageId[5]"));
    EXPECT_EQ(1, platform.log.count(6, "handlePhonebookResponse() storing m_phonebookSyncToken[p1]"));
    EXPECT_TRUE(logged(4, "handlePhonebookResponse() records size[3] nextPageId[5]"));
    expectPage(since("p1"), addressBook("p2", {}));
    refresh();
}

TEST_F(PhonebookSync, TakesSeveralPagesIncrementallyToo) {
    connectWith({});
    expectPage(since("p1"), addressBook("p2", {contact(1)}, 1));
    expectPage(since("p1", "&pageId=1"), addressBook("p2", {contact(2)}));

    refresh();

    EXPECT_EQ((Batch{record(contact(1)), record(contact(2))}), incrementalBatch());
}

TEST_F(PhonebookSync, DoesNotNameAPageBelowOne) {
    expectLoginBeforeBook();
    expectPage(full(), R"({"nextPageId":0,"syncInfo":{"syncToken":"p1"},"records":[]})");
    expectPage(full(), R"({"nextPageId":-3,"syncInfo":{"syncToken":"p1"},"records":[]})");
    expectPage(full(), addressBook("p1", {}));

    connect();
}

TEST_F(PhonebookSync, LooksNotAtRecordsThatComeWithTheStoredToken) {
    connectWith({contact(1)});
    expectPage(since("p1"), addressBook("p1", {contact(2)}));

    refresh();

    EXPECT_TRUE(logged(6, "handlePhonebookResponse() same sync token"));
    EXPECT_TRUE(logged(4, "getPhonebook() phonebookRecordsVector[1] publishData[false] phonebookFullSync[false]"));
    EXPECT_EQ(1u, published());
    EXPECT_EQ(1u, bookSize());
}

TEST_F(PhonebookSync, PublishesNothingForABookWithoutRecords) {
    connectWith({});

    EXPECT_EQ(0u, published());
    EXPECT_TRUE(logged(4, "getPhonebook() phonebookRecordsVector[0] publishData[false] phonebookFullSync[true]"));
}

TEST_F(PhonebookSync, EmptiesTheBookBeforeAFullOne) {
    connectWith({contact(1), contact(2)});
    service->clearSyncTokens();
    expectFullPhonebook("p2", {contact(2)});

    refresh();

    EXPECT_EQ((Batch{record(contact(2))}), fullBatch());
    EXPECT_EQ(1u, bookSize());
}

TEST_F(PhonebookSync, StoresItsTokenEvenIfTheTokensWereClearedMeanwhile) {
    connectWith({contact(1)});
    expectPage(since("p1"), addressBook("p2", {})).whileAwaited([this] { service->clearSyncTokens(); });
    refresh();

    expectPage(since("p2"), addressBook("p3", {}));
    refresh();

    EXPECT_EQ(1u, bookSize());
}

TEST_F(PhonebookSync, SendsNothingWhenItIsSwitchedOff) {
    platform.store.set(PldsTags::ORVANE_API_SYNC_PHONEBOOK, "false");
    connectWithEmptyCloud();

    refresh();

    EXPECT_EQ(0u, published());
    EXPECT_EQ(2, platform.log.count(4, "getPhonebook() m_sync_phonebook[false]"));
    EXPECT_EQ(2, platform.log.count(
                     4, "getPhonebook() phonebookRecordsVector[0] publishData[false] phonebookFullSync[false]"));
}

TEST_F(PhonebookSync, SendsNothingUnlessConnected) {
    connectWith({});
    service->stop();
    platform.log.clear();

    refresh();

    EXPECT_TRUE(logged(4, "getPhonebook() m_sync_phonebook[true]"));
    EXPECT_FALSE(platform.log.contains("getPhonebook() phonebookRecordsVector"));
}

TEST_F(PhonebookSync, ThatFindsTheServiceStoppedLeavesTheBookAlone) {
    connectWith({contact(1)});
    service->clearSyncTokens();
    service->stop();
    refresh();
    EXPECT_EQ(1u, bookSize());

    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_PHONEBOOK, "false");
    platform.log.clear();
    refresh();

    EXPECT_TRUE(logged(4, "getPhonebook() m_sync_phonebook[false]"));
    EXPECT_FALSE(platform.log.contains("getPhonebook() phonebookRecordsVector"));
}

class PhonebookFailure : public PhonebookTelephone {
protected:
    /// The stored token has stayed as it was.
    void expectFormerToken(const std::string& token = "p1") {
        expectPage(since(token), addressBook("next", {}));
        refresh();
    }
};

TEST_F(PhonebookFailure, WithoutAnAnswerKeepsTheToken) {
    connectWith({contact(1)});
    expectPage(since("p1"), "").answers(500, "");

    refresh();

    EXPECT_FALSE(platform.log.contains("istatusCode[500]"));
    EXPECT_EQ(1u, published());
    expectFormerToken();
}

TEST_F(PhonebookFailure, ByAStatusOtherThan200KeepsTheToken) {
    connectWith({contact(1)});
    expectPage(since("p1"), "").answers(404, "gone");

    refresh();

    EXPECT_TRUE(logged(2, "handlePhonebookResponse() HTTP[404] responseData:\ngone"));
    expectFormerToken();
}

TEST_F(PhonebookFailure, ByAnEmptyBodyKeepsTheToken) {
    connectWith({});
    expectPage(since("p1"), "");

    refresh();

    EXPECT_TRUE(logged(2, "handlePhonebookResponse() HTTP[200] responseData:\n"));
    expectFormerToken();
}

TEST_F(PhonebookFailure, ByABodyThatDoesNotParseKeepsTheToken) {
    connectWith({});
    expectPage(since("p1"), "[1,");

    refresh();

    EXPECT_TRUE(platform.log.hasBeginning(2, "handlePhonebookResponse() error on line 1:3(3) "));
    expectFormerToken();
}

TEST_F(PhonebookFailure, OnALaterPagePublishesWhatCameAndKeepsTheToken) {
    connectWith({contact(9)});
    expectPage(since("p1"), addressBook("p2", {contact(1)}, 1));
    expectPage(since("p1", "&pageId=1"), addressBook("p2", {contact(2)}, 2));
    expectPage(since("p1", "&pageId=1&pageId=2"), "").answers(500, "");

    refresh();

    EXPECT_EQ((Batch{record(contact(1)), record(contact(2))}), incrementalBatch());
    expectFormerToken();
}

TEST_F(PhonebookFailure, OnALaterPageOfAFullOneIsRepairedByTheNext) {
    expectLoginBeforeBook();
    expectPage(full(), addressBook("p1", {contact(1)}, 1));
    expectPage(full("&pageId=1"), "").answers(404, "");
    connect();
    EXPECT_EQ((Batch{record(contact(1))}), fullBatch());

    expectPage(full(), addressBook("p1", {contact(1), contact(2)}));
    refresh();

    EXPECT_EQ((Batch{record(contact(1)), record(contact(2))}), fullBatch());
}

TEST_F(PhonebookFailure, ByMissingRecordsStillStoresTheToken) {
    connectWith({});
    expectPage(since("p1"), R"({"syncInfo":{"syncToken":"p2"}})");

    refresh();

    EXPECT_TRUE(logged(2, "handlePhonebookResponse() records not an array"));
    expectFormerToken("p2");
}

TEST_F(PhonebookFailure, ByMissingRecordsGoesOnWithTheNextPage) {
    connectWith({});
    expectPage(since("p1"), R"({"nextPageId":1,"records":"x","syncInfo":{"syncToken":"p2"}})");
    expectPage(since("p1", "&pageId=1"), addressBook("p2", {contact(1)}));

    refresh();

    EXPECT_EQ((Batch{record(contact(1))}), incrementalBatch());
}

class MissingSyncInfo : public PhonebookTelephone, public testing::WithParamInterface<const char*> {};

TEST_P(MissingSyncInfo, LeavesTheSemaphoreTakenForEver) {
    platform.locks.allowLeftTaken("m_phonebookSyncTokenSem");
    connectWith({});
    expectPage(since("p1"), GetParam());
    refresh();
    EXPECT_EQ(std::vector<std::string>{"m_phonebookSyncTokenSem"}, platform.locks.held());

    service->refreshPhonebookEntries();
    std::string waitedFor;
    try {
        runThreads();
    } catch (const WouldBlockForEver& block) {
        waitedFor = block.semaphore;
    }

    EXPECT_EQ("m_phonebookSyncTokenSem", waitedFor);
    EXPECT_EQ(0u, published());
}

INSTANTIATE_TEST_SUITE_P(Bodies, MissingSyncInfo,
                         testing::Values(R"({"records":[]})", R"({"syncInfo":{},"records":[]})",
                                         R"({"syncInfo":{"syncToken":5},"records":[]})",
                                         R"({"syncInfo":"p2","syncToken":"p2"})", "[]"));

class PhonebookLimit : public PhonebookTelephone {
protected:
    /// A full book of five pages of 50, less what is missing to `size`.
    void connectWithBook(int size) {
        expectLoginBeforeBook();
        std::string query = full();
        for (int first = 0, page = 0; page < 5; first += 50, ++page) {
            const int count = std::min(50, size - first);
            expectPage(query, addressBook("p1", contacts(first, count), page == 4 ? 0 : page + 1));
            query += "&pageId=" + std::to_string(page + 1);
        }
        connect();
        ASSERT_EQ(static_cast<std::size_t>(size), bookSize());
    }
};

TEST_F(PhonebookLimit, OfABookThatIsFullStopsTheIncrementalOneToo) {
    connectWithBook(250);
    const std::size_t requests = platform.network.requests.size();

    refresh();

    EXPECT_EQ(requests, platform.network.requests.size());
    EXPECT_EQ(1u, published());
}

TEST_F(PhonebookLimit, OfABookWithOneFreePlaceSendsOneMoreRequest) {
    connectWithBook(249);
    expectPage(since("p1"), addressBook("p2", contacts(300, 50), 1));

    refresh();

    EXPECT_EQ(299u, bookSize()) << "a page may carry the book past the limit";
    EXPECT_EQ(50u, incrementalBatch().size());
}

TEST_F(PhonebookLimit, EndsAFullOneBetweenTwoPagesAndLeavesNoToken) {
    expectLoginBeforeBook();
    expectPage(full(), addressBook("p1", contacts(0, 249), 1));
    expectPage(full("&pageId=1"), addressBook("p1", contacts(249, 1), 2));
    connect();
    EXPECT_EQ(250u, bookSize());
    EXPECT_EQ(250u, fullBatch().size());

    expectPage(full(), addressBook("p1", contacts(0, 2)));
    refresh();

    EXPECT_EQ(2u, bookSize());
}

class PhonebookRefresh : public PhonebookTelephone {};

TEST_F(PhonebookRefresh, RunsOnAThreadOfItsOwn) {
    connectWith({});

    service->refreshPhonebookEntries();

    ASSERT_EQ(1u, platform.threads.pendingCount());
    const TestThreads::Job& job = platform.threads.spawned.back();
    EXPECT_EQ("", job.name);
    EXPECT_EQ(1, job.priority);
    EXPECT_EQ(0, job.stackSize);
    EXPECT_TRUE(job.detached);
    EXPECT_TRUE(logged(6, "refreshPhonebookEntries() m_interface_status[true]"));
    expectIncrementalPhonebook("p1", "p2");
    runThreads();
    EXPECT_TRUE(logged(4, "asyncRefreshPhonebookRunner()"));
}

TEST_F(PhonebookRefresh, IsOneAtATime) {
    connectWith({});

    service->refreshPhonebookEntries();
    service->refreshPhonebookEntries();

    EXPECT_EQ(1u, platform.threads.pendingCount());
    expectIncrementalPhonebook("p1", "p2");
    runThreads();
}

TEST_F(PhonebookRefresh, IsUnderWayUntilTheBookIsRead) {
    connectWith({});
    service->refreshPhonebookEntries();
    const std::size_t spawned = platform.threads.spawned.size();
    expectIncrementalPhonebook("p1", "p2").whileAwaited([this] { service->refreshPhonebookEntries(); });

    runThreads();

    EXPECT_EQ(spawned, platform.threads.spawned.size());
}

TEST_F(PhonebookRefresh, DoesNothingWhileTheInterfaceIsDown) {
    platform.store.set(PldsTags::INTERFACE_STATUS, "down");
    initialise();

    service->refreshPhonebookEntries();

    EXPECT_TRUE(logged(6, "refreshPhonebookEntries() m_interface_status[false]"));
    EXPECT_TRUE(platform.threads.spawned.empty());
}

TEST_F(PhonebookRefresh, DoesNothingWhileTheStartSequenceReadsTheBook) {
    expectLoginBeforeBook();
    expectFullPhonebook("p1").whileAwaited([this] { service->refreshPhonebookEntries(); });

    connect();

    EXPECT_EQ(1u, platform.threads.spawned.size());
}

TEST_F(PhonebookRefresh, ThatCannotBeMadeIsLoggedAndMayBeTriedAgain) {
    connectWith({});
    platform.threads.refuse = true;
    service->refreshPhonebookEntries();
    EXPECT_TRUE(logged(2, "refreshPhonebookEntries() failed to create thread!"));
    platform.threads.refuse = false;
    expectIncrementalPhonebook("p1", "p2");

    refresh();
}

TEST_F(PhonebookRefresh, DoesNothingWithoutAService) {
    platform.log.clear();

    EXPECT_EQ(nullptr, OrvaneService::asyncRefreshPhonebookRunner(nullptr));

    EXPECT_TRUE(logged(4, "asyncRefreshPhonebookRunner()"));
    EXPECT_EQ(1u, platform.log.lines().size());
}

} // namespace
