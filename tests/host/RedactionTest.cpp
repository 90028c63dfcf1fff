#include "logging/Redaction.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr const char* token = "A0123456789.secret-value";

TEST(Redaction, TakesATokenOutWhereverItIsMarked) {
    for (const char* before :
         {"m_accessToken[", "AccessToken[", "Session Context: token[", "Authorization: Bearer ", "bearer ",
          "https://host/path?access_token=", "wss://host/ws?wsc=", "wss://host/ws?a=b&wsc=", R"({"accessToken":")",
          R"({"ws_access_token" : ")", R"({"access_token":")", R"({"wsc":{"token":")", R"(body[{\"accessToken\":\")"}) {
        for (const char* behind : {"]", "\"", ""}) {
            Redaction redaction;
            const std::string redacted = redaction.redact(before + std::string(token) + behind);
            EXPECT_EQ(std::string::npos, redacted.find("secret-value")) << before << behind;
            EXPECT_EQ(0U, redacted.find(before + std::string("***"))) << redacted;
        }
    }
}

TEST(Redaction, LeavesOtherTextAlone) {
    const std::string text =
        R"(GET /a?b=c {"tokenType":"x","token_count":7,"name":"bearers of news","syncToken":"s-1"})";

    EXPECT_EQ(text, Redaction().redact(text));
}

TEST(Redaction, TakesAKnownTokenOutWhereNothingMarksIt) {
    Redaction redaction;
    redaction.redact("m_accessToken[" + std::string(token) + "]");

    EXPECT_EQ("again *** and ***", redaction.redact("again " + std::string(token) + " and " + token));
}

TEST(Redaction, KnowsATokenWithoutItsEscapes) {
    Redaction redaction;

    EXPECT_EQ(R"({"accessToken":"***","x":1})", redaction.redact(R"({"accessToken":"abc\/def\/ghi","x":1})"));

    EXPECT_EQ("plain ***", redaction.redact("plain abc/def/ghi"));
}

TEST(Redaction, TakesAnEscapedQuoteAsPartOfTheToken) {
    EXPECT_EQ(R"({"accessToken":"***"})", Redaction().redact(R"({"accessToken":"abcdefgh\"ijkl"})"));
}

TEST(Redaction, DoesNotRememberAShortValue) {
    Redaction redaction;
    EXPECT_EQ("m_accessToken[***]", redaction.redact("m_accessToken[call]"));

    EXPECT_EQ("a call", redaction.redact("a call"));
}

TEST(Redaction, RemembersTheLatestTokensOfManyRenewals) {
    Redaction redaction;
    for (int renewal = 0; renewal < 1000; ++renewal) {
        redaction.redact("m_accessToken[token-number-" + std::to_string(renewal) + "-end]");
    }

    EXPECT_EQ("***", redaction.redact("token-number-999-end"));
    EXPECT_EQ("***", redaction.redact("token-number-990-end"));
}

TEST(Redaction, TakesAllTokensOfAMessageOut) {
    EXPECT_EQ(R"(m_accessToken[***] Bearer *** {"token":"***"})",
              Redaction().redact(R"(m_accessToken[first-token] Bearer second-token {"token":"third-token"})"));
}

} // namespace
