#include "OrvaneEvent.h"

#include "OrvaneEventList.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

using Parameters = std::map<std::string, std::string>;

const std::string ownExtension = "/restapi/v1.0/account/~/extension/~/";

TEST(OrvaneEventTest, ANewEventIsEmpty) {
    const OrvaneEvent event;
    EXPECT_EQ(event.uri(), "");
    EXPECT_EQ(event.eventPath(), "");
    EXPECT_EQ(event.extensionId(), "");
    EXPECT_EQ(event.accountId(), "");
    EXPECT_TRUE(event.parameters().empty());
    EXPECT_EQ(OrvaneEvent::EMPTY_EXT_ID, "");
}

TEST(OrvaneEventTest, APresenceFilterFallsIntoPathIdAccountAndParameter) {
    const OrvaneEvent event(ownExtension + "presence?detailedTelephonyState=true", "12");
    EXPECT_EQ(event.uri(), ownExtension + "presence?detailedTelephonyState=true");
    EXPECT_EQ(event.eventPath(), "presence");
    EXPECT_EQ(event.extensionId(), "12");
    EXPECT_EQ(event.accountId(), "~");
    EXPECT_EQ(event.parameters(), (Parameters{{"detailedTelephonyState", "true"}}));
}

TEST(OrvaneEventTest, ADndFilterHasALongPathAndNoParameters) {
    const OrvaneEvent event(ownExtension + "presence/dnd", "12");
    EXPECT_EQ(event.eventPath(), "presence/dnd");
    EXPECT_EQ(event.extensionId(), "12");
    EXPECT_TRUE(event.parameters().empty());
}

TEST(OrvaneEventTest, AMessageStoreFilterHasTwoParameters) {
    const OrvaneEvent event(ownExtension + "message-store?direction=Inbound&type=Voicemail", "12");
    EXPECT_EQ(event.eventPath(), "message-store");
    EXPECT_EQ(event.parameters(), (Parameters{{"direction", "Inbound"}, {"type", "Voicemail"}}));
}

TEST(OrvaneEventTest, WithoutADefaultTheTildeBecomesAnEmptyExtensionId) {
    const OrvaneEvent event(ownExtension + "presence", OrvaneEvent::EMPTY_EXT_ID);
    EXPECT_EQ(event.extensionId(), "");
    EXPECT_EQ(event.eventPath(), "presence");
}

TEST(OrvaneEventTest, AConcreteExtensionIdIsKept) {
    const OrvaneEvent event("/restapi/v1.0/account/456/extension/123/presence", "12");
    EXPECT_EQ(event.extensionId(), "123");
    EXPECT_EQ(event.accountId(), "456");
}

TEST(OrvaneEventTest, OnlyALoneTildeIsReplaced) {
    const OrvaneEvent event("/restapi/v1.0/account/~/extension/~1/presence", "12");
    EXPECT_EQ(event.extensionId(), "~1");
}

TEST(OrvaneEventTest, NothingBehindTheExtensionIdIsAnEmptyEventPath) {
    const OrvaneEvent event("/restapi/v1.0/account/~/extension/123", "");
    EXPECT_EQ(event.extensionId(), "123");
    EXPECT_EQ(event.eventPath(), "");
}

TEST(OrvaneEventTest, ASlashAloneBehindTheExtensionIdIsAnEmptyEventPathToo) {
    const OrvaneEvent event("/restapi/v1.0/account/~/extension/123/", "");
    EXPECT_EQ(event.extensionId(), "123");
    EXPECT_EQ(event.eventPath(), "");
}

TEST(OrvaneEventTest, NoSlashBehindTheWordExtensionLeavesIdAndPathEmpty) {
    const OrvaneEvent event("/restapi/v1.0/account/~/extension", "12");
    EXPECT_EQ(event.extensionId(), "");
    EXPECT_EQ(event.eventPath(), "");
    EXPECT_EQ(event.accountId(), "~");
}

TEST(OrvaneEventTest, ASlashAtTheEndBehindTheWordExtensionGivesAnEmptyId) {
    const OrvaneEvent event("/restapi/v1.0/account/~/extension/", "12");
    EXPECT_EQ(event.extensionId(), "");
    EXPECT_EQ(event.eventPath(), "");
}

TEST(OrvaneEventTest, APathWithoutTheWordExtensionBeginsWithTheId) {
    const OrvaneEvent event("/first/second/third", "");
    EXPECT_EQ(event.extensionId(), "first");
    EXPECT_EQ(event.eventPath(), "second/third");
    // The account is looked for from the end of the path.
    EXPECT_EQ(event.accountId(), "third");
}

TEST(OrvaneEventTest, ATextWithoutAnySlashHasNeitherIdNorPath) {
    const OrvaneEvent event("presence", "12");
    EXPECT_EQ(event.extensionId(), "");
    EXPECT_EQ(event.eventPath(), "");
    EXPECT_EQ(event.accountId(), "");
}

TEST(OrvaneEventTest, TheWordExtensionCountsWhereItFirstOccurs) {
    const OrvaneEvent event("/a/extension/1/extension/2/x", "");
    EXPECT_EQ(event.extensionId(), "1");
    EXPECT_EQ(event.eventPath(), "extension/2/x");
    EXPECT_EQ(event.accountId(), "a");
}

TEST(OrvaneEventTest, ABackslashEndsTheAccountIdAsASlashDoes) {
    const OrvaneEvent event("/account\\77/extension/1/x", "");
    EXPECT_EQ(event.accountId(), "77");
}

TEST(OrvaneEventTest, AnEmptySegmentBeforeTheWordExtensionIsAnEmptyAccountId) {
    const OrvaneEvent event("/account/~//extension/1/x", "");
    EXPECT_EQ(event.accountId(), "");
}

TEST(OrvaneEventTest, TheQueryIsNotSearchedForTheExtension) {
    const OrvaneEvent event("/one/two?path=/extension/3/x", "");
    EXPECT_EQ(event.extensionId(), "one");
    EXPECT_EQ(event.eventPath(), "two");
}

TEST(OrvaneEventTest, OfDuplicateKeysTheFirstValueStays) {
    const OrvaneEvent event(ownExtension + "x?a=1&a=2&b=3", "");
    EXPECT_EQ(event.parameters(), (Parameters{{"a", "1"}, {"b", "3"}}));
}

TEST(OrvaneEventTest, AParameterIsSplitAtItsFirstEqualsSign) {
    const OrvaneEvent event(ownExtension + "x?a=1=2&=3&c=", "");
    EXPECT_EQ(event.parameters(), (Parameters{{"a", "1=2"}, {"", "3"}, {"c", ""}}));
}

TEST(OrvaneEventTest, AParameterWithoutEqualsSignAtTheEndIsPassedOver) {
    const OrvaneEvent event(ownExtension + "x?a=1&b", "");
    EXPECT_EQ(event.parameters(), (Parameters{{"a", "1"}}));
}

TEST(OrvaneEventTest, AQuestionMarkAtTheEndBringsNoParameter) {
    const OrvaneEvent event(ownExtension + "x?", "");
    EXPECT_EQ(event.eventPath(), "x");
    EXPECT_TRUE(event.parameters().empty());
}

TEST(OrvaneEventTest, WithoutAQuestionMarkTheWholeTextBehindItsFirstCharacterIsScanned) {
    const OrvaneEvent event("/a/b=c&d=e", "");
    EXPECT_EQ(event.parameters(), (Parameters{{"a/b", "c"}, {"d", "e"}}));
}

TEST(OrvaneEventTest, AnEmptyTextIsParsedToNothing) {
    const OrvaneEvent event("", "12");
    EXPECT_EQ(event.extensionId(), "");
    EXPECT_EQ(event.eventPath(), "");
    EXPECT_TRUE(event.parameters().empty());
}

TEST(OrvaneEventTest, ParsingOnceMoreAddsNothing) {
    OrvaneEvent event(ownExtension + "x?a=1", "12");
    event.parse();
    EXPECT_EQ(event.extensionId(), "12");
    EXPECT_EQ(event.eventPath(), "x");
    EXPECT_EQ(event.parameters(), (Parameters{{"a", "1"}}));
}

TEST(OrvaneEventTest, ACopyHasAllThatTheOriginalHas) {
    OrvaneEvent original(ownExtension + "presence?a=1", "12");
    OrvaneEvent copy(original);
    EXPECT_EQ(copy.uri(), original.uri());
    EXPECT_EQ(copy.eventPath(), "presence");
    EXPECT_EQ(copy.extensionId(), "12");
    EXPECT_EQ(copy.accountId(), "~");
    EXPECT_EQ(copy.parameters(), original.parameters());
    // The default id is copied as well: parsing the copy anew finds it.
    copy.parse();
    EXPECT_EQ(copy.extensionId(), "12");
}

TEST(OrvaneEventTest, AnEventAndItsListCanBeDeletedThroughABaseClass) {
    EXPECT_TRUE(std::has_virtual_destructor<OrvaneEvent>::value);
    EXPECT_TRUE(std::has_virtual_destructor<OrvaneEventList>::value);
}

TEST(OrvaneEventTest, AssignmentReplacesEverything) {
    OrvaneEvent original(ownExtension + "presence?a=1", "12");
    OrvaneEvent target("/restapi/v1.0/account/9/extension/8/x?b=2&c=3", "7");
    target = original;
    EXPECT_EQ(target.uri(), original.uri());
    EXPECT_EQ(target.accountId(), "~");
    EXPECT_TRUE(target.isEqual(original, true));
    OrvaneEvent& itself = target;
    target = itself;
    EXPECT_TRUE(target.isEqual(original, true));
}

TEST(OrvaneEventEqualityTest, AccountUriAndDefaultIdPlayNoPart) {
    OrvaneEvent own("/restapi/v1.0/account/~/extension/123/presence", "1");
    OrvaneEvent numbered("/restapi/v1.0/account/456/extension/123/presence", "2");
    EXPECT_TRUE(own.isEqual(numbered, true));
}

TEST(OrvaneEventEqualityTest, ATildeAndItsNumberAreEqual) {
    OrvaneEvent requested(ownExtension + "presence", "123");
    OrvaneEvent confirmed("/restapi/v1.0/account/456/extension/123/presence", "");
    EXPECT_TRUE(requested.isEqual(confirmed, true));
}

TEST(OrvaneEventEqualityTest, EventPathsAreComparedByteForByte) {
    OrvaneEvent one(ownExtension + "presence", "1");
    OrvaneEvent other(ownExtension + "Presence", "1");
    EXPECT_FALSE(one.isEqual(other, false));
}

TEST(OrvaneEventEqualityTest, DifferentExtensionsDiffer) {
    OrvaneEvent one(ownExtension + "presence", "1");
    OrvaneEvent other(ownExtension + "presence", "2");
    EXPECT_FALSE(one.isEqual(other, false));
}

TEST(OrvaneEventEqualityTest, ParametersCountOnlyWhenAskedFor) {
    OrvaneEvent one(ownExtension + "x?a=1", "1");
    OrvaneEvent otherValue(ownExtension + "x?a=2", "1");
    OrvaneEvent otherKey(ownExtension + "x?b=1", "1");
    OrvaneEvent more(ownExtension + "x?a=1&b=2", "1");
    OrvaneEvent none(ownExtension + "x", "1");
    for (OrvaneEvent* other : {&otherValue, &otherKey, &more, &none}) {
        EXPECT_TRUE(one.isEqual(*other, false)) << other->uri();
        EXPECT_FALSE(one.isEqual(*other, true)) << other->uri();
        EXPECT_FALSE(other->isEqual(one, true)) << other->uri();
    }
}

TEST(OrvaneEventEqualityTest, TheOrderOfParametersDoesNotMatter) {
    OrvaneEvent one(ownExtension + "x?a=1&b=2", "1");
    OrvaneEvent other(ownExtension + "x?b=2&a=1", "1");
    EXPECT_TRUE(one.isEqual(other, true));
}

TEST(OrvaneEventParsabilityTest, TextsOnWhichParsingEndsAreParsable) {
    for (const char* text : {"", "/", "?", "&", "/a?b", "/a?b=1", "/a?b=1&c", "/a?b=1&", "/a?=&=", "/a/b", "x=1&b=2",
                             "?=&", "&a=1", "/a&b?c=1", "/a?b=?&c=1"}) {
        EXPECT_TRUE(OrvaneEvent::isParsable(text)) << text;
        // Returns at all.
        EXPECT_EQ(OrvaneEvent(text, "1").uri(), text);
    }
}

TEST(OrvaneEventParsabilityTest, TextsOnWhichParsingWouldNotEndAreNot) {
    for (const char* text : {"/a?b&c=1", "/a?&", "/a?b=1&&c=2", "/a?b=1&c&d=2", "/a&b", "a&b=1", "=&a=1", "/a?b&"}) {
        EXPECT_FALSE(OrvaneEvent::isParsable(text)) << text;
    }
}

} // namespace
