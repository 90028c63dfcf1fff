#include "framework/Method.h"
#include "transport/JsonProtocolAdapter.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

bool decodes(const std::string& text, Method& method) {
    std::istringstream stream(text);
    return JsonProtocolAdapter().decode(stream, method);
}

bool decodes(const std::string& text) {
    Method method;
    return decodes(text, method);
}

std::string encoded(const Method& method) {
    std::ostringstream stream;
    EXPECT_TRUE(JsonProtocolAdapter().encode(stream, method));
    return stream.str();
}

std::string withParameter(const std::string& parameter) {
    return R"({"name":"m","type":0,"parameters":[)" + parameter + "]}";
}

} // namespace

TEST(ProtocolAdapter, ReadsNameTypeAndParametersOfAllKinds) {
    Method method;
    ASSERT_TRUE(decodes(R"({"name":"ageMissedCall","type":1,"parameters":[)"
                        R"({"name":"id","kind":"string","direction":0,"value":"4711"},)"
                        R"({"name":"on","kind":"bool","direction":1,"value":true},)"
                        R"({"name":"type","kind":"int","direction":0,"value":-5}]})",
                        method));

    EXPECT_EQ("ageMissedCall", method.getName());
    EXPECT_EQ(Method::RESPONSE, method.getType());
    std::string id;
    EXPECT_TRUE(method.getStringParameter("id", id, Parameter::DIRECTION_IN));
    EXPECT_EQ("4711", id);
    bool on = false;
    EXPECT_TRUE(method.getBoolParameter("on", on, Parameter::DIRECTION_OUT));
    EXPECT_TRUE(on);
    int type = 0;
    EXPECT_TRUE(method.getIntParameter("type", type, Parameter::DIRECTION_IN));
    EXPECT_EQ(-5, type);
}

TEST(ProtocolAdapter, WritesTheMembersInTheirOrderWithoutBlanks) {
    Method method("ageMissedCall", Method::REQUEST);
    method.addStringParameter("id", "4711", Parameter::DIRECTION_IN);
    method.addBoolParameter("result", false, Parameter::DIRECTION_OUT);
    method.addIntParameter("type", 5, Parameter::DIRECTION_IN);

    EXPECT_EQ(R"({"name":"ageMissedCall","type":0,"parameters":[)"
              R"({"name":"id","kind":"string","direction":0,"value":"4711"},)"
              R"({"name":"result","kind":"bool","direction":1,"value":false},)"
              R"({"name":"type","kind":"int","direction":0,"value":5}]})",
              encoded(method));
}

TEST(ProtocolAdapter, ReadsWhatItHasWritten) {
    Method method("orvaneFullSync", Method::REQUEST);
    const std::string data = "\"{Missed,1,t,00:00,+49,\xC3\x9C,\\\"x\\\"}\"\n\x01";
    method.addStringParameter("data", data, Parameter::DIRECTION_IN);

    Method read;
    ASSERT_TRUE(decodes(encoded(method), read));

    std::string value;
    EXPECT_TRUE(read.getStringParameter("data", value, Parameter::DIRECTION_IN));
    EXPECT_EQ(data, value);
}

TEST(ProtocolAdapter, WritesOneLineWhateverTheTextsHold) {
    Method method("m", Method::REQUEST);
    method.addStringParameter("data", "one\ntwo\r\n", Parameter::DIRECTION_IN);

    EXPECT_EQ(std::string::npos, encoded(method).find('\n'));
}

TEST(ProtocolAdapter, ReplacesBytesThatAreNoUtf8) {
    Method method("m", Method::REQUEST);
    method.addStringParameter("data", "a\xFFz", Parameter::DIRECTION_IN);

    EXPECT_NE(std::string::npos, encoded(method).find("\"a\xEF\xBF\xBDz\""));
}

TEST(ProtocolAdapter, TakesAMessageWithoutParameters) {
    Method method;
    ASSERT_TRUE(decodes(R"({"name":"isRunning","type":0})", method));
    EXPECT_TRUE(method.getParameters().empty());
}

TEST(ProtocolAdapter, PassesOverUnknownMembers) {
    Method method;
    ASSERT_TRUE(decodes(R"({"extra":[1],"name":"m","type":0,"parameters":[)"
                        R"({"name":"id","kind":"string","direction":0,"value":"1","more":{}}]})",
                        method));
    EXPECT_EQ(1U, method.getParameters().size());
}

TEST(ProtocolAdapter, KeepsTheOrderOfParametersAndFindsTheFirstOfAName) {
    Method method;
    ASSERT_TRUE(decodes(withParameter(R"({"name":"id","kind":"string","direction":0,"value":"first"},)"
                                      R"({"name":"id","kind":"string","direction":0,"value":"second"})"),
                        method));
    std::string id;
    EXPECT_TRUE(method.getStringParameter("id", id, Parameter::DIRECTION_IN));
    EXPECT_EQ("first", id);
}

TEST(ProtocolAdapter, FindsAParameterOnlyWithItsKindAndDirection) {
    Method method;
    ASSERT_TRUE(decodes(withParameter(R"({"name":"id","kind":"string","direction":0,"value":"1"})"), method));

    std::string text = "untouched";
    EXPECT_FALSE(method.getStringParameter("id", text, Parameter::DIRECTION_OUT));
    EXPECT_EQ("untouched", text);
    int number = 7;
    EXPECT_FALSE(method.getIntParameter("id", number, Parameter::DIRECTION_IN));
    EXPECT_EQ(7, number);
}

TEST(ProtocolAdapter, RefusesWhatIsNoObject) {
    for (const char* text : {"", " ", "null", "7", "\"text\"", "[]", "{", R"({"name":"m","type":0)", "\x80\x81\xFF",
                             R"({"name":"m","type":0} trailing)"}) {
        EXPECT_FALSE(decodes(text)) << text;
    }
}

TEST(ProtocolAdapter, RefusesAMissingOrWrongNameOrType) {
    for (const char* text :
         {"{}", R"({"type":0})", R"({"name":7,"type":0})", R"({"name":"m"})", R"({"name":"m","type":2})",
          R"({"name":"m","type":-1})", R"({"name":"m","type":"0"})", R"({"name":"m","type":0.0})",
          R"({"name":"m","type":18446744073709551616})", R"({"name":"m","type":4294967296})"}) {
        EXPECT_FALSE(decodes(text)) << text;
    }
}

TEST(ProtocolAdapter, RefusesParametersThatAreNoArrayOfObjects) {
    for (const char* text : {R"({"name":"m","type":0,"parameters":{}})", R"({"name":"m","type":0,"parameters":[7]})",
                             R"({"name":"m","type":0,"parameters":null})"}) {
        EXPECT_FALSE(decodes(text)) << text;
    }
}

TEST(ProtocolAdapter, RefusesAParameterWithAMissingMember) {
    for (const char* parameter :
         {R"({"kind":"string","direction":0,"value":""})", R"({"name":"p","direction":0,"value":""})",
          R"({"name":"p","kind":"string","value":""})", R"({"name":"p","kind":"string","direction":0})"}) {
        EXPECT_FALSE(decodes(withParameter(parameter))) << parameter;
    }
}

TEST(ProtocolAdapter, RefusesAnUnknownKindOrDirection) {
    EXPECT_FALSE(decodes(withParameter(R"({"name":"p","kind":"double","direction":0,"value":1})")));
    EXPECT_FALSE(decodes(withParameter(R"({"name":"p","kind":7,"direction":0,"value":1})")));
    EXPECT_FALSE(decodes(withParameter(R"({"name":"p","kind":"int","direction":2,"value":1})")));
    EXPECT_FALSE(decodes(withParameter(R"({"name":"p","kind":"int","direction":"0","value":1})")));
}

TEST(ProtocolAdapter, RefusesAValueOfAnotherKind) {
    EXPECT_FALSE(decodes(withParameter(R"({"name":"p","kind":"string","direction":0,"value":7})")));
    EXPECT_FALSE(decodes(withParameter(R"({"name":"p","kind":"string","direction":0,"value":null})")));
    EXPECT_FALSE(decodes(withParameter(R"({"name":"p","kind":"bool","direction":0,"value":"true"})")));
    EXPECT_FALSE(decodes(withParameter(R"({"name":"p","kind":"bool","direction":0,"value":1})")));
    EXPECT_FALSE(decodes(withParameter(R"({"name":"p","kind":"int","direction":0,"value":"7"})")));
    EXPECT_FALSE(decodes(withParameter(R"({"name":"p","kind":"int","direction":0,"value":7.0})")));
}

TEST(ProtocolAdapter, TakesIntegersOf32BitsAndNoLargerOnes) {
    Method method;
    ASSERT_TRUE(decodes(withParameter(R"({"name":"p","kind":"int","direction":0,"value":2147483647})"), method));
    int value = 0;
    EXPECT_TRUE(method.getIntParameter("p", value, Parameter::DIRECTION_IN));
    EXPECT_EQ(2147483647, value);
    EXPECT_TRUE(decodes(withParameter(R"({"name":"p","kind":"int","direction":0,"value":-2147483648})")));
    for (const char* number :
         {"2147483648", "-2147483649", "9223372036854775807", "18446744073709551615", "18446744073709551616", "1e3"}) {
        const std::string parameter = R"({"name":"p","kind":"int","direction":0,"value":)" + std::string(number) + "}";
        EXPECT_FALSE(decodes(withParameter(parameter))) << number;
    }
}

TEST(ProtocolAdapter, SurvivesDeeplyNestedText) {
    const std::string nested(100'000, '[');
    EXPECT_FALSE(decodes(nested));
    EXPECT_FALSE(decodes(R"({"name":"m","type":0,"x":)" + nested));
    EXPECT_FALSE(decodes(R"({"name":"m","type":0,"x":)" + nested + std::string(100'000, ']') + "}"));
}

TEST(ProtocolAdapter, BoundsTheDepthAndNotTheNumberOfBrackets) {
    const auto message = [](const std::string& value) { return R"({"name":"m","type":0,"x":)" + value + "}"; };
    const std::string deepest = std::string(63, '[') + std::string(63, ']');
    EXPECT_TRUE(decodes(message(deepest)));
    EXPECT_FALSE(decodes(message("[" + deepest + "]")));
    EXPECT_TRUE(decodes(message("[" + deepest.substr(1, 124) + "," + deepest.substr(1, 124) + "]")));
    EXPECT_TRUE(decodes(message("\"" + std::string(1000, '[') + "\\\"" + std::string(1000, '{') + "\"")));
}
