#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "ParsedJson.h"

#include <gtest/gtest.h>

using Helper = OrvaneServiceHelper;

namespace {

/// What an accessor left in its output, which held "untouched" before.
std::string stringIn(const std::string& text, const char* key) {
    ParsedJson json(text);
    std::string out = "untouched";
    const bool found = Helper::getStringFromJson(json.root, out, key);
    EXPECT_EQ(found, out != "untouched");
    return out;
}

int integerIn(const std::string& text, const char* key) {
    ParsedJson json(text);
    int out = -77;
    const bool found = Helper::getIntegerFromJson(json.root, out, key);
    EXPECT_EQ(found, out != -77);
    return out;
}

TEST(StringAccessor, FindsAKeyAtTheTop) {
    EXPECT_EQ("x", stringIn(R"({"a":"x"})", "a"));
    EXPECT_EQ("", stringIn(R"({"a":""})", "a"));
}

TEST(StringAccessor, FindsAKeyInANestedObject) {
    EXPECT_EQ("x", stringIn(R"({"a":{"b":"x"}})", "b"));
    EXPECT_EQ("x", stringIn(R"({"a":{"c":{"d":{"b":"x"}}}})", "b"));
}

TEST(StringAccessor, TakesTheFirstMatchInTextOrder) {
    EXPECT_EQ("1", stringIn(R"({"b":"1","c":{"b":"2"}})", "b"));
    EXPECT_EQ("2", stringIn(R"({"c":{"b":"2"},"b":"1"})", "b"));
}

TEST(StringAccessor, PassesOverAValueOfAnotherTypeAndGoesOn) {
    EXPECT_EQ("y", stringIn(R"({"b":1,"c":{"b":"y"}})", "b"));
    EXPECT_EQ("y", stringIn(R"({"b":null,"c":{"b":true,"d":{"b":"y"}}})", "b"));
}

TEST(StringAccessor, SearchesTheObjectUnderTheWantedKeyItself) {
    EXPECT_EQ("x", stringIn(R"({"b":{"b":"x"}})", "b"));
    EXPECT_EQ("x", stringIn(R"({"b":{"c":{"b":"x"}}})", "b"));
}

TEST(StringAccessor, NeverEntersAnArray) {
    EXPECT_EQ("untouched", stringIn(R"({"b":[{"b":"x"}]})", "b"));
    EXPECT_EQ("untouched", stringIn(R"({"a":[{"b":"x"}]})", "b"));
    EXPECT_EQ("y", stringIn(R"({"a":[{"b":"x"}],"c":{"b":"y"}})", "b"));
}

TEST(StringAccessor, IsExactAboutTheKey) {
    EXPECT_EQ("untouched", stringIn(R"({"B":"x","bb":"x","":"x"})", "b"));
}

TEST(StringAccessor, GivesNothingForWhatIsNoObject) {
    EXPECT_EQ("untouched", stringIn("{}", "b"));
    EXPECT_EQ("untouched", stringIn("[]", "b"));
    EXPECT_EQ("untouched", stringIn("\"b\"", "b"));
    json_t* nothing = nullptr;
    std::string out = "untouched";
    EXPECT_FALSE(Helper::getStringFromJson(nothing, out, "b"));
    EXPECT_EQ("untouched", out);
}

TEST(StringAccessor, ANumericIdYieldsTheStringOfANestedObject) {
    EXPECT_EQ("nested", stringIn(R"({"id":17,"from":{"id":"nested"}})", "id"));
}

TEST(IntegerAccessor, TakesIntegersOnly) {
    EXPECT_EQ(12, integerIn(R"({"n":12})", "n"));
    EXPECT_EQ(-5, integerIn(R"({"n":-5})", "n"));
    EXPECT_EQ(-77, integerIn(R"({"n":12.0})", "n"));
    EXPECT_EQ(-77, integerIn(R"({"n":"12"})", "n"));
    EXPECT_EQ(-77, integerIn(R"({"n":true})", "n"));
}

TEST(IntegerAccessor, SearchesNestedObjects) {
    EXPECT_EQ(3, integerIn(R"({"n":"1","o":{"n":3}})", "n"));
    EXPECT_EQ(4, integerIn(R"({"n":{"n":4}})", "n"));
    EXPECT_EQ(-77, integerIn(R"({"n":[1]})", "n"));
}

TEST(IntegerAccessor, NarrowsToInt) {
    EXPECT_EQ(2147483647, integerIn(R"({"n":2147483647})", "n"));
    EXPECT_EQ(1, integerIn(R"({"n":4294967297})", "n"));
}

TEST(LongLongAccessor, KeepsAllBits) {
    ParsedJson json(R"({"a":"x","o":{"n":9223372036854775807}})");
    long long out = -1;

    EXPECT_TRUE(Helper::getLongLongIntegerFromJson(json.root, out, "n"));
    EXPECT_EQ(9223372036854775807LL, out);
    EXPECT_FALSE(Helper::getLongLongIntegerFromJson(json.root, out, "a"));
    EXPECT_EQ(9223372036854775807LL, out);
}

TEST(BooleanAccessor, ReadsBothValues) {
    ParsedJson json(R"({"k":false,"o":{"t":true},"n":0})");
    bool out = true;

    EXPECT_TRUE(Helper::getBooleanFromJson(json.root, out, "k"));
    EXPECT_FALSE(out);
    EXPECT_TRUE(Helper::getBooleanFromJson(json.root, out, "t"));
    EXPECT_TRUE(out);
    EXPECT_FALSE(Helper::getBooleanFromJson(json.root, out, "n"));
    EXPECT_TRUE(out);
}

TEST(ObjectAccessor, GivesTheObjectUnderTheKey) {
    ParsedJson json(R"({"a":1,"o":{"in":{"x":7}}})");
    json_t* out = nullptr;

    ASSERT_TRUE(Helper::getObjectFromJson(json.root, out, "o"));
    EXPECT_EQ(json_object_get(json.root, "o"), out);
    ASSERT_TRUE(Helper::getObjectFromJson(json.root, out, "in"));
    EXPECT_EQ(json_object_get(json_object_get(json.root, "o"), "in"), out);
}

TEST(ObjectAccessor, TheOuterOfTwoObjectsWithTheSameKeyIsTheResult) {
    ParsedJson json(R"({"o":{"o":{}}})");
    json_t* out = nullptr;

    ASSERT_TRUE(Helper::getObjectFromJson(json.root, out, "o"));
    EXPECT_EQ(json_object_get(json.root, "o"), out);
}

TEST(ObjectAccessor, PassesOverAMatchThatIsNoObject) {
    ParsedJson json(R"({"o":[{}],"p":{"o":"x","q":{"o":{}}}})");
    json_t* out = nullptr;

    ASSERT_TRUE(Helper::getObjectFromJson(json.root, out, "o"));
    EXPECT_TRUE(json_is_object(out));
    json_t* untouched = nullptr;
    EXPECT_FALSE(Helper::getObjectFromJson(json.root, untouched, "x"));
    EXPECT_EQ(nullptr, untouched);
}

TEST(ArrayAccessor, FindsAnArrayAtAnyDepthOfObjects) {
    ParsedJson json(R"({"r":{"r":"no","s":{"r":[1,2]}}})");
    json_t* out = nullptr;

    ASSERT_TRUE(Helper::getArrayFromJson(json.root, out, "r"));
    EXPECT_EQ(2u, json_array_size(out));
}

TEST(ArrayAccessor, GivesAnEmptyArrayAndNoObject) {
    ParsedJson json(R"({"a":[],"o":{}})");
    json_t* out = nullptr;

    EXPECT_TRUE(Helper::getArrayFromJson(json.root, out, "a"));
    EXPECT_EQ(0u, json_array_size(out));
    json_t* untouched = nullptr;
    EXPECT_FALSE(Helper::getArrayFromJson(json.root, untouched, "o"));
    EXPECT_EQ(nullptr, untouched);
}

std::string nameOf(const std::string& text) {
    ParsedJson json(text);
    return Helper::getNameFromInfoObject(json.root);
}

std::string numberOf(const std::string& text) {
    ParsedJson json(text);
    return Helper::getNumberFromInfoObject(json.root);
}

TEST(PartyOfACall, HasItsNameOrNone) {
    EXPECT_EQ("Anna", nameOf(R"({"name":"Anna"})"));
    EXPECT_EQ("", nameOf("{}"));
}

TEST(PartyOfACall, HasItsPhoneNumberBeforeItsExtensionNumber) {
    EXPECT_EQ("+49", numberOf(R"({"extensionNumber":"101","phoneNumber":"+49"})"));
    EXPECT_EQ("", numberOf(R"({"extensionNumber":"101","phoneNumber":""})")) << "an empty one is one";
    EXPECT_EQ("", numberOf(R"({"extensionNumber":""})"));
    EXPECT_EQ("101", numberOf(R"({"extensionNumber":"101"})"));
    EXPECT_EQ("Caller.Unknown.XXX", numberOf("{}"));
    EXPECT_EQ("Caller.Unknown.XXX", numberOf(R"({"phoneNumber":5})"));
}

TEST(PartyOfACall, ANestedPhoneNumberBeatsItsOwnExtensionNumber) {
    EXPECT_EQ("+1", numberOf(R"({"extensionNumber":"101","device":{"phoneNumber":"+1"}})"));
}

} // namespace
