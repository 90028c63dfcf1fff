#include "utilities/Serializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

TEST(SerializerText, IsTheInsideOfAJsonArray) {
    const Strings values = {"a",  "", "b,c", "\"quoted\"", "back\\slash", "line\nbreak", std::string("\0\x1f", 2),
                            "Zoë"};

    const std::string text = Serializer::serialize(values);

    EXPECT_EQ(R"("a","","b,c","\"quoted\"","back\\slash","line\nbreak","\u0000\u001f","Zoë")", text);
    EXPECT_EQ(values, nlohmann::json::parse("[" + text + "]").get<Strings>());
}

TEST(SerializerText, OfNothingIsEmpty) {
    EXPECT_EQ("", Serializer::serialize(Strings()));
    EXPECT_EQ("", Serializer::serialize(std::set<std::string>()));
}

TEST(SerializerText, OfASetIsInItsOrder) {
    EXPECT_EQ(R"("10","9","a")", Serializer::serialize(std::set<std::string>{"a", "9", "10"}));
}

TEST(SerializerText, GrowsByItemsOfBothKinds) {
    std::string text;
    Serializer::serialize(text, "a", false);
    Serializer::serialize(text, -7);
    Serializer::serialize(text, "", false);

    EXPECT_EQ(R"("a",-7,"")", text);
}

TEST(SerializerReader, BringsBackWhatWasWritten) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    const Strings values = {bytes, "", "b", "b"};
    Strings read = {"left over"};

    EXPECT_TRUE(Serializer::deserialize(Serializer::serialize(values), read));

    EXPECT_EQ(values, read);
}

TEST(SerializerReader, BringsBackASet) {
    const std::set<std::string> values = {"1", "a,b", "\"", ""};
    std::set<std::string> read = {"left over"};

    EXPECT_TRUE(Serializer::deserialize(Serializer::serialize(values), read));

    EXPECT_EQ(values, read);
}

TEST(SerializerReader, ReadsTheEmptyTextAsNothing) {
    Strings read = {"left over"};

    EXPECT_TRUE(Serializer::deserialize("", read));

    EXPECT_TRUE(read.empty());
}

TEST(SerializerReader, TakesEveryEscapeOfJson) {
    Strings read;

    EXPECT_TRUE(Serializer::deserialize(R"("\"\\\/\b\f\n\r\t\u0041\u00e9\u20ac\ud83d\ude00")", read));

    EXPECT_EQ(Strings{"\"\\/\b\f\n\r\tA\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"}, read);
}

TEST(SerializerReader, RefusesWhatIsNotOfItsForm) {
    for (const std::string text : {"a", "\"a", "a\"", "\"a\"b", "\"a\",", ",\"a\"", "\"a\",,\"b\"", "\"a\" ,\"b\"",
                                   "\"\\x\"", "\"\\u12\"", "\"\\u12G4\"", "\"\\ud800\"", "\"\\ud800\\u0041\"",
                                   "\"\\udc00\"", "\"\\", "\"line\nbreak\"", "1", "[\"a\"]"}) {
        Strings strings = {"left over"};
        EXPECT_FALSE(Serializer::deserialize(text, strings)) << text;
        EXPECT_TRUE(strings.empty()) << text;
        std::set<std::string> set = {"left over"};
        EXPECT_FALSE(Serializer::deserialize(text, set)) << text;
        EXPECT_TRUE(set.empty()) << text;
    }
}

TEST(SerializerReader, WalksThroughItemsOfBothKinds) {
    const std::string text = R"("a",-7,"b")";
    std::size_t position = 0;
    std::string string;
    int number = 0;

    EXPECT_TRUE(Serializer::deserialize(text, position, string));
    EXPECT_EQ("a", string);
    EXPECT_TRUE(Serializer::deserialize(text, position, number));
    EXPECT_EQ(-7, number);
    EXPECT_TRUE(Serializer::deserialize(text, position, string));
    EXPECT_EQ("b", string);
    EXPECT_EQ(text.size(), position);
}

TEST(SerializerReader, StaysWhereItIsBeforeAnItemOfTheOtherKind) {
    const std::string text = R"("a",1)";
    std::size_t position = 0;
    std::string string;
    int number = 5;

    EXPECT_FALSE(Serializer::deserialize(text, position, number));
    EXPECT_EQ(0U, position);
    EXPECT_EQ(5, number);
    ASSERT_TRUE(Serializer::deserialize(text, position, string));
    const std::size_t behindFirst = position;
    EXPECT_FALSE(Serializer::deserialize(text, position, string));
    EXPECT_EQ(behindFirst, position);
}

TEST(SerializerReader, RefusesAPositionBehindTheTextAndANumberOutOfRange) {
    std::size_t position = 9;
    std::string string;
    int number = 0;
    EXPECT_FALSE(Serializer::deserialize("\"a\"", position, string));
    EXPECT_FALSE(Serializer::deserialize("1", position, number));

    position = 0;
    EXPECT_FALSE(Serializer::deserialize("2147483648", position, number));
    EXPECT_TRUE(Serializer::deserialize("-2147483648", position, number));
    EXPECT_EQ(std::numeric_limits<int>::min(), number);
}

} // namespace
