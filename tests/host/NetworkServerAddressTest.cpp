#include "network/ServerAddress.h"

#include <gtest/gtest.h>

namespace {

std::optional<ServerAddress> parse(const std::string& text) {
    std::string error;
    const auto address = ServerAddress::parse(text, "https", error);
    EXPECT_EQ(address.has_value(), error.empty()) << error;
    return address;
}

TEST(ServerAddress, TakesABareHostWithTheDefaultPort) {
    const auto address = parse("api.example.test");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->host, "api.example.test");
    EXPECT_EQ(address->port, "443");
    EXPECT_EQ(address->path, "");
    EXPECT_FALSE(address->isIpAddress);
}

TEST(ServerAddress, TakesABareHostWithAPort) {
    const auto address = parse("api.example.test:8443");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->host, "api.example.test");
    EXPECT_EQ(address->port, "8443");
}

TEST(ServerAddress, TakesAnHttpsUrlWithPathAndQuery) {
    const auto address = parse("HTTPS://API.Example.test:444/a/b?x=https://y#z");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->host, "api.example.test");
    EXPECT_EQ(address->port, "444");
    EXPECT_EQ(address->path, "/a/b?x=https://y");
}

TEST(ServerAddress, TakesASlashAtTheEnd) {
    const auto address = parse("https://host/");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->host, "host");
    EXPECT_EQ(address->path, "/");
}

TEST(ServerAddress, TakesAQueryWithoutAPath) {
    const auto address = parse("host?a=b");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->host, "host");
    EXPECT_EQ(address->path, "?a=b");
}

TEST(ServerAddress, TakesIpAddresses) {
    const auto four = parse("https://127.0.0.1:1");
    ASSERT_TRUE(four);
    EXPECT_TRUE(four->isIpAddress);
    EXPECT_EQ(four->text(), "127.0.0.1:1");
    const auto six = parse("[::1]:65535");
    ASSERT_TRUE(six);
    EXPECT_TRUE(six->isIpAddress);
    EXPECT_EQ(six->host, "::1");
    EXPECT_EQ(six->port, "65535");
    EXPECT_EQ(six->text(), "[::1]:65535");
}

TEST(ServerAddress, RefusesOtherSchemes) {
    std::string error;
    EXPECT_FALSE(ServerAddress::parse("http://host", "https", error));
    EXPECT_EQ(error, "only https is supported");
    EXPECT_FALSE(ServerAddress::parse("ws://host", "wss", error));
    EXPECT_EQ(error, "only wss is supported");
    EXPECT_TRUE(ServerAddress::parse("wss://host", "wss", error));
}

TEST(ServerAddress, RefusesWhatNamesNoServer) {
    for (const char* text : {"",           "/a/b",      "https://",    "https:///a", ":443",  "host:", "host:0",
                             "host:65536", "host:44x",  "host:123456", "host:-1",    "::1",   "[::1",  "[host]",
                             "[::1]443",   "user@host", "ho st",       "host\r\n",   "-host", ".host", "h\xc3\xb6st"}) {
        std::string error;
        EXPECT_FALSE(ServerAddress::parse(text, "https", error)) << text;
        EXPECT_FALSE(error.empty()) << text;
    }
}

TEST(ServerAddress, HostHeaderLeavesOutTheDefaultPort) {
    EXPECT_EQ(ServerAddress::hostHeader("host", "443"), "host");
    EXPECT_EQ(ServerAddress::hostHeader("host", "8443"), "host:8443");
    EXPECT_EQ(ServerAddress::hostHeader("::1", "8443"), "[::1]:8443");
    EXPECT_EQ(ServerAddress::hostHeader("::1", "443"), "[::1]");
}

} // namespace
