#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "ParsedJson.h"

#include <gtest/gtest.h>

using Helper = OrvaneServiceHelper;

namespace {

const std::string noUtf8 = "\xff";

TEST(ValueWriter, SetsAString) {
    ParsedJson json("{}");

    EXPECT_TRUE(Helper::addValueToJsonObject(&json.root, "k", "v"));
    EXPECT_TRUE(Helper::addValueToJsonObject(&json.root, "empty", ""));

    EXPECT_EQ(R"({"k":"v","empty":""})", json.text());
}

TEST(ValueWriter, ReplacesAFormerValue) {
    ParsedJson json(R"({"k":1})");

    EXPECT_TRUE(Helper::addValueToJsonObject(&json.root, "k", "v"));

    EXPECT_EQ(R"({"k":"v"})", json.text());
}

TEST(ValueWriter, RefusesWhatIsNoObject) {
    ParsedJson array("[]");
    json_t* nothing = nullptr;

    EXPECT_FALSE(Helper::addValueToJsonObject(nullptr, "k", "v"));
    EXPECT_FALSE(Helper::addValueToJsonObject(&nothing, "k", "v"));
    EXPECT_FALSE(Helper::addValueToJsonObject(&array.root, "k", "v"));
    EXPECT_EQ("[]", array.text());
}

TEST(ValueWriter, RefusesTextThatCannotBeMade) {
    ParsedJson json("{}");

    EXPECT_FALSE(Helper::addValueToJsonObject(&json.root, "k", noUtf8));
    EXPECT_FALSE(Helper::addValueToJsonObject(&json.root, noUtf8, "v"));

    EXPECT_EQ("{}", json.text());
}

TEST(ArrayWriter, WritesOneElementAsAPlainString) {
    ParsedJson json("{}");

    EXPECT_TRUE(Helper::addArrayToJsonObject(&json.root, "k", {"a"}));

    EXPECT_EQ(R"({"k":"a"})", json.text());
}

TEST(ArrayWriter, WritesSeveralElementsAsAnArrayInTheirOrder) {
    ParsedJson json("{}");

    EXPECT_TRUE(Helper::addArrayToJsonObject(&json.root, "k", {"b", "a"}));
    EXPECT_TRUE(Helper::addArrayToJsonObject(&json.root, "l", {"1", "2", "2"}));

    EXPECT_EQ(R"({"k":["b","a"],"l":["1","2","2"]})", json.text());
}

TEST(ArrayWriter, RefusesNoElementAtAll) {
    ParsedJson json("{}");

    EXPECT_FALSE(Helper::addArrayToJsonObject(&json.root, "k", {}));

    EXPECT_EQ("{}", json.text());
}

TEST(ArrayWriter, RefusesWhatIsNoObject) {
    ParsedJson text("\"x\"");
    json_t* nothing = nullptr;

    for (const std::vector<std::string>& values : {std::vector<std::string>{"a"}, {"a", "b"}}) {
        EXPECT_FALSE(Helper::addArrayToJsonObject(nullptr, "k", values));
        EXPECT_FALSE(Helper::addArrayToJsonObject(&nothing, "k", values));
        EXPECT_FALSE(Helper::addArrayToJsonObject(&text.root, "k", values));
    }
}

TEST(ArrayWriter, RefusesAnElementThatCannotBeMade) {
    ParsedJson json("{}");

    EXPECT_FALSE(Helper::addArrayToJsonObject(&json.root, "k", {noUtf8}));
    EXPECT_FALSE(Helper::addArrayToJsonObject(&json.root, "k", {"a", noUtf8}));

    EXPECT_EQ("{}", json.text());
}

} // namespace
