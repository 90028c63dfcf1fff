#include "FrameJson.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Multimap = OrvaneServiceHelper::Multimap;

class FrameMessagesTest : public ::testing::Test {
protected:
    bool create(OrvaneServiceHelper::METHOD method, const Multimap& query, const Multimap& headers, json_t* body) {
        json_t* frame = m_frame.get();
        return OrvaneServiceHelper::createClientRequestMsg("id-1", method, "/a/path", query, headers, body, &frame);
    }
    std::string frameText() {
        const std::unique_ptr<char, decltype(&std::free)> text(json_dumps(m_frame.get(), 0), &std::free);
        return text ? text.get() : "";
    }
    Multimap headersOf(const std::string& metadata) {
        const TestJson::Value root = TestJson::parse(metadata);
        Multimap headers;
        OrvaneServiceHelper::getHeadersFromMetadata(root.get(), headers);
        return headers;
    }
    static int statusOf(const std::string& metadata) {
        const TestJson::Value root = TestJson::parse(metadata);
        return OrvaneServiceHelper::getStatusFromMetadata(root.get());
    }

    TestPlatform platform;
    TestJson::Value m_frame{json_array()};
};

TEST_F(FrameMessagesTest, ARequestWithoutBodyQueryAndHeadersIsItsMetadataAlone) {
    ASSERT_TRUE(create(OrvaneServiceHelper::GET, {}, {}, nullptr));
    EXPECT_TRUE(TestJson::equal(frameText(),
                                R"([{"type":"ClientRequest","messageId":"id-1","method":"GET","path":"/a/path"}])"));
}

TEST_F(FrameMessagesTest, TheBodyIsTheSecondElement) {
    ASSERT_TRUE(create(OrvaneServiceHelper::POST, {}, {}, json_pack("{s:s}", "key", "value")));
    EXPECT_TRUE(TestJson::equal(
        frameText(),
        R"([{"type":"ClientRequest","messageId":"id-1","method":"POST","path":"/a/path"},{"key":"value"}])"));
}

TEST_F(FrameMessagesTest, AnEmptyObjectIsABodyToo) {
    ASSERT_TRUE(create(OrvaneServiceHelper::DELETE, {}, {}, json_object()));
    EXPECT_TRUE(TestJson::equal(
        frameText(), R"([{"type":"ClientRequest","messageId":"id-1","method":"DELETE","path":"/a/path"},{}])"));
}

TEST_F(FrameMessagesTest, TheArrayOwnsTheBodyAfterwards) {
    json_t* body = json_object();
    ASSERT_TRUE(create(OrvaneServiceHelper::PUT, {}, {}, body));
    EXPECT_EQ(body->refcount, 1U);
    EXPECT_EQ(json_array_get(m_frame.get(), 1), body);
}

TEST_F(FrameMessagesTest, QueryAndHeadersAreSplitAtTheirCommas) {
    ASSERT_TRUE(create(OrvaneServiceHelper::PATCH, {{"page", "1"}, {"type", "a,b,c"}}, {{"Accept", "x,y"}}, nullptr));
    EXPECT_TRUE(TestJson::equal(frameText(),
                                R"([{"type":"ClientRequest","messageId":"id-1","method":"PATCH","path":"/a/path",
                                "query":{"page":"1","type":["a","b","c"]},"headers":{"Accept":["x","y"]}}])"));
}

TEST_F(FrameMessagesTest, AnEntryWithoutAnyTextFailsTheRequest) {
    EXPECT_FALSE(create(OrvaneServiceHelper::GET, {{"page", ""}}, {}, nullptr));
    EXPECT_FALSE(create(OrvaneServiceHelper::GET, {}, {{"Accept", ""}}, nullptr));
}

TEST_F(FrameMessagesTest, TextThatIsNotUtf8FailsTheRequest) {
    EXPECT_FALSE(create(OrvaneServiceHelper::GET, {{"page", "\xff"}}, {}, nullptr));
    EXPECT_FALSE(create(OrvaneServiceHelper::GET, {{"page", "a,\xff"}}, {}, nullptr));
    json_t* frame = m_frame.get();
    EXPECT_FALSE(
        OrvaneServiceHelper::createClientRequestMsg("id", OrvaneServiceHelper::GET, "\xff", {}, {}, nullptr, &frame));
}

TEST_F(FrameMessagesTest, OnlyAnExistingArrayTakesARequest) {
    json_t* nothing = nullptr;
    const TestJson::Value object(json_object());
    json_t* noArray = object.get();
    for (json_t** message : {static_cast<json_t**>(nullptr), &nothing, &noArray}) {
        EXPECT_FALSE(
            OrvaneServiceHelper::createClientRequestMsg("id", OrvaneServiceHelper::GET, "/", {}, {}, nullptr, message));
    }
}

TEST_F(FrameMessagesTest, ABodyHasToBeAnObject) {
    const TestJson::Value array(json_array());
    const TestJson::Value text(json_string("body"));
    EXPECT_FALSE(create(OrvaneServiceHelper::GET, {}, {}, array.get()));
    EXPECT_FALSE(create(OrvaneServiceHelper::GET, {}, {}, text.get()));
    EXPECT_EQ(json_array_size(m_frame.get()), 0U);
}

TEST_F(FrameMessagesTest, EveryMethodHasItsText) {
    const std::vector<std::pair<OrvaneServiceHelper::METHOD, std::string>> methods = {
        {OrvaneServiceHelper::GET, "GET"},
        {OrvaneServiceHelper::PUT, "PUT"},
        {OrvaneServiceHelper::POST, "POST"},
        {OrvaneServiceHelper::DELETE, "DELETE"},
        {OrvaneServiceHelper::PATCH, "PATCH"},
        {OrvaneServiceHelper::OPTIONS, "OPTIONS"},
        {OrvaneServiceHelper::HEAD, "HEAD"},
        {OrvaneServiceHelper::CONNECT, "CONNECT"},
        {static_cast<OrvaneServiceHelper::METHOD>(8), "GET"},
    };
    for (const auto& [method, text] : methods) {
        m_frame.reset(json_array());
        ASSERT_TRUE(create(method, {}, {}, nullptr));
        EXPECT_EQ(TestJson::stringAt(json_array_get(m_frame.get(), 0), "method"), text);
    }
}

TEST_F(FrameMessagesTest, HeadersAreTextsOrArraysOfTexts) {
    EXPECT_EQ(headersOf(R"({"headers":{"A":"1","B":["2","3"]}})"), (Multimap{{"A", "1"}, {"B", "2,3"}}));
}

TEST_F(FrameMessagesTest, OtherElementsInAnArrayOfHeadersAreSkipped) {
    EXPECT_EQ(headersOf(R"({"headers":{"B":["2",3,null,{"C":"4"},"5"]}})"), (Multimap{{"B", "2,5"}}));
    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(FrameMessagesTest, AnEmptyHeaderKeyOrAnotherValueIsLoggedAndSkipped) {
    EXPECT_EQ(headersOf(R"({"headers":{"":"1","N":2,"O":{"C":"4"},"A":"1"}})"), (Multimap{{"A", "1"}}));
    for (const std::string key : {"", "N", "O"}) {
        EXPECT_EQ(platform.log.count(3, "getHeadersFromMetadata() - key '" + key +
                                            "' is empty or the value for this key is neither string nor array!"),
                  1)
            << key;
    }
}

TEST_F(FrameMessagesTest, MetadataWithoutAHeadersObjectBringNone) {
    EXPECT_TRUE(headersOf(R"({"status":200})").empty());
    EXPECT_TRUE(headersOf(R"({"headers":"A"})").empty());
    Multimap headers;
    OrvaneServiceHelper::getHeadersFromMetadata(nullptr, headers);
    EXPECT_TRUE(headers.empty());
}

TEST_F(FrameMessagesTest, TheStatusIsAnIntegerOrZero) {
    EXPECT_EQ(statusOf(R"({"status":404})"), 404);
    EXPECT_EQ(statusOf(R"({"status":"404"})"), 0);
    EXPECT_EQ(statusOf(R"({})"), 0);
    EXPECT_EQ(OrvaneServiceHelper::getStatusFromMetadata(nullptr), 0);
}

} // namespace
