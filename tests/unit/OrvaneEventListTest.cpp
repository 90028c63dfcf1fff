#include "OrvaneEventList.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const std::string presence = "/restapi/v1.0/account/~/extension/1/presence?detail=true";
const std::string messageStore = "/restapi/v1.0/account/~/extension/1/message-store?type=Voicemail";
const std::string dnd = "/restapi/v1.0/account/~/extension/1/presence/dnd";

OrvaneEventList listOf(std::initializer_list<std::string> uris) {
    OrvaneEventList list;
    for (const std::string& uri : uris) {
        list.add(uri);
    }
    return list;
}

std::string line(const std::string& uri, const std::string& eventPath) {
    return uri + "," + eventPath + ",1\n";
}

TEST(OrvaneEventListTest, ANewListIsEmpty) {
    OrvaneEventList list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.toString(), "");
}

TEST(OrvaneEventListTest, EventsStandInOrderOfInsertion) {
    OrvaneEventList list = listOf({presence, messageStore, dnd});
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(list.toString(),
              line(presence, "presence") + line(messageStore, "message-store") + line(dnd, "presence/dnd"));
}

TEST(OrvaneEventListTest, ClearRemovesAll) {
    OrvaneEventList list = listOf({presence, dnd});
    list.clear();
    EXPECT_TRUE(list.empty());
}

TEST(OrvaneEventListTest, AnEqualEventIsNotAddedAgainEvenWithAnotherText) {
    OrvaneEventList list = listOf({dnd});
    OrvaneEvent sameWithAccount("/restapi/v1.0/account/456/extension/1/presence/dnd", "");
    EXPECT_FALSE(list.add(sameWithAccount));
    EXPECT_FALSE(list.add(dnd));
    EXPECT_EQ(list.toString(), line(dnd, "presence/dnd"));
}

TEST(OrvaneEventListTest, OtherParametersMakeAnotherEvent) {
    OrvaneEventList list = listOf({presence});
    EXPECT_TRUE(list.add(std::string("/restapi/v1.0/account/~/extension/1/presence?detail=false")));
    EXPECT_TRUE(list.add(std::string("/restapi/v1.0/account/~/extension/1/presence")));
}

TEST(OrvaneEventListTest, AnAddedEventIsACopy) {
    OrvaneEventList list;
    {
        OrvaneEvent event("/restapi/v1.0/account/~/extension/~/presence/dnd", "1");
        EXPECT_TRUE(list.add(event));
    }
    OrvaneEvent sought(dnd, "");
    EXPECT_TRUE(list.isEventInList(sought, true));
}

TEST(OrvaneEventListTest, ATildeInATextHasAnEmptyId) {
    OrvaneEventList list = listOf({"/restapi/v1.0/account/~/extension/~/presence"});
    OrvaneEvent sought("/restapi/v1.0/account/~/extension//presence", "");
    EXPECT_TRUE(list.isEventInList(sought, true));
    // Removing by text reads it the same way.
    std::string text = "/restapi/v1.0/account/1/extension/~/presence";
    EXPECT_TRUE(list.remove(text));
    EXPECT_TRUE(list.empty());
}

TEST(OrvaneEventListTest, FindGivesTheFirstEqualEventOrTheEnd) {
    OrvaneEventList list = listOf({presence, "/restapi/v1.0/account/~/extension/1/presence?detail=false"});
    OrvaneEvent second("/restapi/v1.0/account/~/extension/1/presence?detail=false", "");
    EXPECT_EQ(list.find(second, false)->uri(), presence);
    EXPECT_EQ(list.find(second, true)->uri(), second.uri());
    OrvaneEvent foreign(dnd, "");
    EXPECT_TRUE(list.find(foreign, false) == list.end());
    EXPECT_FALSE(list.isEventInList(foreign, false));
    OrvaneEvent otherParameters("/restapi/v1.0/account/~/extension/1/presence?detail=none", "");
    EXPECT_TRUE(list.isEventInList(otherParameters, false));
    EXPECT_FALSE(list.isEventInList(otherParameters, true));
}

TEST(OrvaneEventListTest, RemoveTakesTheEventThatIsEqualWithItsParameters) {
    OrvaneEventList list = listOf({presence, dnd});
    OrvaneEvent otherParameters("/restapi/v1.0/account/~/extension/1/presence?detail=false", "");
    EXPECT_FALSE(list.remove(otherParameters));
    OrvaneEvent same(presence, "");
    EXPECT_TRUE(list.remove(same));
    EXPECT_FALSE(list.remove(same));
    EXPECT_EQ(list.toString(), line(dnd, "presence/dnd"));
}

TEST(OrvaneEventListTest, RemoveTakesATextToo) {
    OrvaneEventList list = listOf({presence, dnd});
    std::string text = dnd;
    EXPECT_TRUE(list.remove(text));
    EXPECT_FALSE(list.remove(text));
    EXPECT_EQ(list.toString(), line(presence, "presence"));
}

TEST(OrvaneEventListTest, MergeKeepsWhatIsConfirmedAndMovesTheRest) {
    OrvaneEventList requested = listOf({presence, messageStore, dnd});
    OrvaneEventList confirmed = listOf({dnd, "/restapi/v1.0/account/~/extension/2/presence", presence});
    OrvaneEventList dropped;
    requested.merge(confirmed, dropped);
    EXPECT_EQ(requested.toString(), line(presence, "presence") + line(dnd, "presence/dnd"));
    EXPECT_EQ(confirmed.toString(), "/restapi/v1.0/account/~/extension/2/presence,presence,2\n");
    EXPECT_EQ(dropped.toString(), line(messageStore, "message-store"));
}

TEST(OrvaneEventListTest, MergeAddsToWhatWasDroppedBefore) {
    OrvaneEventList requested = listOf({presence, messageStore});
    OrvaneEventList confirmed;
    OrvaneEventList dropped = listOf({dnd, presence});
    requested.merge(confirmed, dropped);
    EXPECT_TRUE(requested.empty());
    EXPECT_EQ(dropped.toString(),
              line(dnd, "presence/dnd") + line(presence, "presence") + line(messageStore, "message-store"));
}

TEST(OrvaneEventListTest, MergeOfAnEmptyListDoesNothing) {
    OrvaneEventList requested;
    OrvaneEventList confirmed = listOf({presence});
    OrvaneEventList dropped = listOf({dnd});
    requested.merge(confirmed, dropped);
    EXPECT_TRUE(requested.empty());
    EXPECT_EQ(confirmed.toString(), line(presence, "presence"));
    EXPECT_EQ(dropped.toString(), line(dnd, "presence/dnd"));
}

} // namespace
