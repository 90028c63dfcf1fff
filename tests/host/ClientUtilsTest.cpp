#include "utilities/ClientUtils.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

Strings tokens(const std::string& text, const std::string& separator) {
    Strings found = {"left over"};
    ClientUtils::tokenizeString(text, separator, found);
    return found;
}

TEST(NumberOfText, IsTheNumberAtItsStart) {
    EXPECT_EQ(42, ClientUtils::stoi("42"));
    EXPECT_EQ(-42, ClientUtils::stoi(" -42 s"));
    EXPECT_EQ(7, ClientUtils::stoi("+7"));
    EXPECT_EQ(3, ClientUtils::stoi("3.9"));
}

TEST(NumberOfText, IsZeroWithoutOne) {
    for (const char* text : {"", " ", "abc", "-", "x1"}) {
        EXPECT_EQ(0, ClientUtils::stoi(text)) << text;
    }
}

TEST(NumberOfText, IsTheNearestIntWhenOutOfRange) {
    EXPECT_EQ(std::numeric_limits<int>::max(), ClientUtils::stoi("2147483648"));
    EXPECT_EQ(std::numeric_limits<int>::min(), ClientUtils::stoi("-2147483649"));
    EXPECT_EQ(std::numeric_limits<int>::max(), ClientUtils::stoi("99999999999999999999999999"));
}

TEST(TextOfNumber, HoldsAllSixtyFourBits) {
    EXPECT_EQ("9223372036854775807", ClientUtils::int64tos(std::numeric_limits<long long>::max()));
    EXPECT_EQ("-9223372036854775808", ClientUtils::int64tos(std::numeric_limits<long long>::min()));
}

TEST(Tokens, AreThePartsBetweenSeparators) {
    EXPECT_EQ((Strings{"a", "b", "c"}), tokens("a,b,c", ","));
    EXPECT_EQ((Strings{"", "a", "", "b", ""}), tokens(",a,,b,", ","));
    EXPECT_EQ((Strings{"a", "b,c"}), tokens("a::b,c", "::"));
    EXPECT_EQ((Strings{"a,b"}), tokens("a,b", ""));
}

TEST(Tokens, OfAnEmptyTextAreNone) {
    EXPECT_EQ(Strings(), tokens("", ","));
}

} // namespace
