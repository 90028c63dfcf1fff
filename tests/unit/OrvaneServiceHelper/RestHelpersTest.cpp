#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <stdexcept>

using Helper = OrvaneServiceHelper;

namespace {

class RedirectionPath : public testing::Test {
protected:
    TestPlatform platform;
};

TEST_F(RedirectionPath, IsThePathAndQueryBehindTheHost) {
    EXPECT_EQ("/a/b?x=1", Helper::getRedirectionPath("https://server/a/b?x=1"));
    EXPECT_EQ("/", Helper::getRedirectionPath("https://server:8443/"));
    EXPECT_TRUE(platform.log.has(6, "getRedirectionPath() IN locationUrl[https://server/a/b?x=1]"));
    EXPECT_TRUE(platform.log.has(6, "getRedirectionPath() OUT path[/a/b?x=1]"));
}

TEST_F(RedirectionPath, LeavesARelativeLocationAsItStands) {
    EXPECT_EQ("/a/b", Helper::getRedirectionPath("/a/b"));
    EXPECT_EQ("", Helper::getRedirectionPath(""));
    EXPECT_EQ("b?c", Helper::getRedirectionPath("b?c"));
    EXPECT_TRUE(platform.log.has(6, "getRedirectionPath() IN locationUrl[/a/b]"));
    EXPECT_FALSE(platform.log.contains("getRedirectionPath() OUT"));
}

TEST_F(RedirectionPath, CutsAtTheLastDoubleSlash) {
    EXPECT_EQ("/c", Helper::getRedirectionPath("https://server/a//b/c"));
}

TEST_F(RedirectionPath, ThrowsWhenNothingFollowsTheHost) {
    EXPECT_THROW(Helper::getRedirectionPath("https://server"), std::out_of_range);
    EXPECT_THROW(Helper::getRedirectionPath("//"), std::out_of_range);
}

TEST(HeaderSet, TakesANewKey) {
    Helper::Multimap headers;

    EXPECT_TRUE(Helper::addKeyAndValueIntoMultimap(headers, "k", "a"));

    EXPECT_EQ((Helper::Multimap{{"k", "a"}}), headers);
}

TEST(HeaderSet, JoinsTheValuesOfAKeyByCommas) {
    Helper::Multimap headers;

    Helper::addKeyAndValueIntoMultimap(headers, "k", "a");
    EXPECT_TRUE(Helper::addKeyAndValueIntoMultimap(headers, "k", "b"));
    EXPECT_TRUE(Helper::addKeyAndValueIntoMultimap(headers, "other", "a"));

    EXPECT_EQ((Helper::Multimap{{"k", "a,b"}, {"other", "a"}}), headers);
}

TEST(HeaderSet, RefusesAValueThatIsThere) {
    Helper::Multimap headers = {{"k", "a,b"}};

    EXPECT_FALSE(Helper::addKeyAndValueIntoMultimap(headers, "k", "a"));

    EXPECT_EQ((Helper::Multimap{{"k", "a,b"}}), headers);
}

TEST(HeaderSet, CountsAPartOfAValueAsThere) {
    Helper::Multimap headers = {{"k", "cab,d"}};

    EXPECT_FALSE(Helper::addKeyAndValueIntoMultimap(headers, "k", "ab"));
    EXPECT_FALSE(Helper::addKeyAndValueIntoMultimap(headers, "k", "b,d"));

    EXPECT_EQ((Helper::Multimap{{"k", "cab,d"}}), headers);
}

TEST(HeaderSet, RefusesAnEmptyKeyOrValue) {
    Helper::Multimap headers;

    EXPECT_FALSE(Helper::addKeyAndValueIntoMultimap(headers, "", "a"));
    EXPECT_FALSE(Helper::addKeyAndValueIntoMultimap(headers, "k", ""));

    EXPECT_TRUE(headers.empty());
}

} // namespace
