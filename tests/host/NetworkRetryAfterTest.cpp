#include "network/RetryAfter.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

constexpr std::time_t now = 784111777; // Sun, 06 Nov 1994 08:49:37 GMT

TEST(RetryAfter, ReadsANumberAsItStands) {
    EXPECT_EQ(RetryAfter::seconds("0", now), 0);
    EXPECT_EQ(RetryAfter::seconds("30", now), 30);
    EXPECT_EQ(RetryAfter::seconds("  7\t", now), 7);
}

TEST(RetryAfter, KeepsAHugeNumberHuge) {
    EXPECT_EQ(RetryAfter::seconds("2147483647", now), INT_MAX);
    EXPECT_EQ(RetryAfter::seconds("99999999999999999999999999", now), INT_MAX);
}

TEST(RetryAfter, CountsTheSecondsToADateInEachOfItsForms) {
    EXPECT_EQ(RetryAfter::seconds("Sun, 06 Nov 1994 08:50:07 GMT", now), 30);
    EXPECT_EQ(RetryAfter::seconds("Sunday, 06-Nov-94 08:50:07 GMT", now), 30);
    EXPECT_EQ(RetryAfter::seconds("Sun Nov  6 08:50:07 1994", now), 30);
}

TEST(RetryAfter, ADateThatHasPassedIsNow) {
    EXPECT_EQ(RetryAfter::seconds("Sun, 06 Nov 1994 08:49:00 GMT", now), 0);
    EXPECT_EQ(RetryAfter::seconds("Sunday, 06-Nov-70 08:49:37 GMT", now), 0);
}

TEST(RetryAfter, ADateFarAheadIsHuge) {
    EXPECT_EQ(RetryAfter::seconds("Fri, 31 Dec 9999 23:59:59 GMT", now), INT_MAX);
}

TEST(RetryAfter, WhatCannotBeReadIsMinusOne) {
    for (const char* value : {"", " ", "-1", "+1", "1.5", "1s", "soon", "0x10", "Sun, 06 Nov 1994 08:50:07",
                              "Sun, 06 Nov 1994 08:50:07 GMT!", "Sun, 06 Xyz 1994 08:50:07 GMT",
                              "Sun, 06 Nov 1994 25:50:07 GMT", "Sun, 32 Nov 1994 08:50:07 GMT"}) {
        EXPECT_EQ(RetryAfter::seconds(value, now), -1) << value;
    }
}

} // namespace
