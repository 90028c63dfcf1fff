#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include <gtest/gtest.h>

using Helper = OrvaneServiceHelper;
using Texts = std::vector<std::string>;

namespace {

TEST(Duration, HasTwoDigitsOfMinutesAndSeconds) {
    EXPECT_EQ("00:00", Helper::getDurationFromSeconds(0));
    EXPECT_EQ("00:05", Helper::getDurationFromSeconds(5));
    EXPECT_EQ("00:09", Helper::getDurationFromSeconds(9));
    EXPECT_EQ("00:10", Helper::getDurationFromSeconds(10));
    EXPECT_EQ("00:59", Helper::getDurationFromSeconds(59));
    EXPECT_EQ("01:00", Helper::getDurationFromSeconds(60));
    EXPECT_EQ("01:05", Helper::getDurationFromSeconds(65));
    EXPECT_EQ("10:00", Helper::getDurationFromSeconds(600));
    EXPECT_EQ("59:59", Helper::getDurationFromSeconds(3599));
}

TEST(Duration, HasPlainHoursInFrontFromAnHourOn) {
    EXPECT_EQ("1:00:00", Helper::getDurationFromSeconds(3600));
    EXPECT_EQ("1:01:05", Helper::getDurationFromSeconds(3665));
    EXPECT_EQ("10:00:00", Helper::getDurationFromSeconds(36000));
    EXPECT_EQ("100:00:01", Helper::getDurationFromSeconds(360001));
    EXPECT_EQ("596523:14:07", Helper::getDurationFromSeconds(2147483647));
}

TEST(Duration, TreatsANegativeNumberAsSecondsBelowTen) {
    EXPECT_EQ("00:0-5", Helper::getDurationFromSeconds(-5));
    EXPECT_EQ("00:0-3600", Helper::getDurationFromSeconds(-3600));
}

class UnsupportedAction : public testing::TestWithParam<const char*> {};

TEST_P(UnsupportedAction, IsRefused) {
    EXPECT_FALSE(Helper::isActionSupported(GetParam()));
    EXPECT_TRUE(Helper::isActionSupported(std::string(GetParam()) + " "));
}

INSTANTIATE_TEST_SUITE_P(All, UnsupportedAction,
                         testing::Values("Unknown", "Phone Login", "Calling Card", "Text Relay", "External Application",
                                         "CallOut-CallMe", "Move", "FindMe", "FollowMe", "RingMe", "Ring Directly",
                                         "E911 Update", "Support", "Incoming Fax", "Outgoing Fax"));

TEST(SupportedAction, IsEveryOtherText) {
    EXPECT_TRUE(Helper::isActionSupported(""));
    EXPECT_TRUE(Helper::isActionSupported("Phone Call"));
    EXPECT_TRUE(Helper::isActionSupported("unknown"));
    EXPECT_TRUE(Helper::isActionSupported("Incoming"));
}

TEST(MethodName, FollowsTheNumberingOfFrames) {
    const Texts names = {"GET", "PUT", "POST", "DELETE", "PATCH", "OPTIONS", "HEAD", "CONNECT"};
    for (std::size_t value = 0; value < names.size(); ++value) {
        EXPECT_EQ(names[value], Helper::methodToString(static_cast<Helper::METHOD>(value)));
    }
}

TEST(MethodName, IsGetForEveryOtherValue) {
    EXPECT_EQ("GET", Helper::methodToString(static_cast<Helper::METHOD>(8)));
    EXPECT_EQ("GET", Helper::methodToString(static_cast<Helper::METHOD>(-1)));
}

TEST(JoinedTexts, AreSeparatedByCommaAndBlank) {
    std::string out = "former";
    Helper::convertStrVecIntoString({"a", "", "b"}, out);
    EXPECT_EQ("a, , b", out);
    Helper::convertStrVecIntoString({"a"}, out);
    EXPECT_EQ("a", out);
    Helper::convertStrVecIntoString({}, out);
    EXPECT_EQ("", out);
}

struct Intersection {
    Texts first;
    Texts second;
    Texts onlyInFirst;

    void find() { Helper::findIntersectionBetweenTwoVectors(first, second, onlyInFirst); }
};

TEST(IntersectionOfTexts, SplitsIntoCommonAndOwn) {
    Intersection texts{{"a", "b", "c", "d"}, {"d", "x", "b"}, {}};

    texts.find();

    EXPECT_EQ((Texts{"b", "d"}), texts.first);
    EXPECT_EQ((Texts{"x"}), texts.second);
    EXPECT_EQ((Texts{"a", "c"}), texts.onlyInFirst);
}

TEST(IntersectionOfTexts, ADuplicateNeedsItsOwnDuplicate) {
    Intersection texts{{"a", "a", "b"}, {"a", "b", "b"}, {}};

    texts.find();

    EXPECT_EQ((Texts{"a", "b"}), texts.first);
    EXPECT_EQ((Texts{"b"}), texts.second);
    EXPECT_EQ((Texts{"a"}), texts.onlyInFirst);
}

TEST(IntersectionOfTexts, OfDuplicatesTheFirstGoes) {
    Intersection texts{{"b"}, {"b", "x", "b"}, {}};

    texts.find();

    EXPECT_EQ((Texts{"x", "b"}), texts.second);
}

TEST(IntersectionOfTexts, AppendsToWhatIsThere) {
    Intersection texts{{"a"}, {}, {"former"}};

    texts.find();

    EXPECT_EQ(Texts(), texts.first);
    EXPECT_EQ((Texts{"former", "a"}), texts.onlyInFirst);
}

TEST(IntersectionOfTexts, AnEmptyFirstLeavesTheOthersAlone) {
    Intersection texts{{}, {"x"}, {"former"}};

    texts.find();

    EXPECT_EQ((Texts{"x"}), texts.second);
    EXPECT_EQ((Texts{"former"}), texts.onlyInFirst);
}

TEST(IntersectionOfTexts, ComparesWholeTexts) {
    Intersection texts{{"ab"}, {"a", "abc", "AB"}, {}};

    texts.find();

    EXPECT_EQ(Texts(), texts.first);
    EXPECT_EQ((Texts{"a", "abc", "AB"}), texts.second);
    EXPECT_EQ((Texts{"ab"}), texts.onlyInFirst);
}

} // namespace
