#include "RemoteCall.h"

// ---- Methods without parameters ----------------------------------------------------------------------------------

class PlainMethod : public RemoteCall, public testing::WithParamInterface<const char*> {};

TEST_P(PlainMethod, IsCalledAndNeverAnswered) {
    call(GetParam());

    expectCalls({GetParam()});
    expectNoReply();
}

INSTANTIATE_TEST_SUITE_P(All, PlainMethod,
                         testing::Values("clearSyncTokens", "refreshCallLogEntries", "refreshPhonebookEntries",
                                         "refreshVoicemailEntries", "reloadAllData"),
                         [](const testing::TestParamInfo<const char*>& info) { return std::string(info.param); });

class PlainQuery : public RemoteCall, public testing::WithParamInterface<const char*> {};

TEST_P(PlainQuery, IsAnsweredWithItsResult) {
    for (const bool result : {true, false}) {
        service.answer = result;

        call(GetParam());

        expectCalls({GetParam()});
        expectResult(GetParam(), result);
    }
}

INSTANTIATE_TEST_SUITE_P(All, PlainQuery, testing::Values("isRunning", "deleteAllCallLogEntries"),
                         [](const testing::TestParamInfo<const char*>& info) { return std::string(info.param); });

TEST_F(RemoteCall, ParametersThatAMethodDoesNotTakeArePassedOver) {
    call("clearSyncTokens", {{"id", "1"}}, {{"newDndState", true}});

    expectCalls({"clearSyncTokens"});
}

// ---- Methods with one text ---------------------------------------------------------------------------------------

struct TextMethodCase {
    const char* method;
    const char* parameter;
};
class TextMethod : public RemoteCall, public testing::WithParamInterface<TextMethodCase> {
protected:
    std::string method() const { return GetParam().method; }
};

TEST_P(TextMethod, IsCalledWithItsTextAndNeverAnswered) {
    call(method(), {{GetParam().parameter, "value"}});

    expectCalls({method() + " value"});
    expectNoReply();
}

TEST_P(TextMethod, IsCalledWithAnEmptyText) {
    call(method(), {{GetParam().parameter, ""}});

    expectCalls({method() + " "});
}

TEST_P(TextMethod, WithoutItsTextIsSkippedInSilence) {
    call(method());
    call(method(), {{"other", "value"}});

    expectCalls({});
    expectNoReply();
    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_P(TextMethod, WithItsParameterOfAnotherKindIsSkipped) {
    call(method(), {}, {{GetParam().parameter, true}});

    expectCalls({});
}

TEST_P(TextMethod, WithItsParameterInTheOtherDirectionIsSkipped) {
    adapter.request = Method(method(), Method::REQUEST);
    adapter.request.addStringParameter(GetParam().parameter, "value", Parameter::DIRECTION_OUT);

    deliver();

    expectCalls({});
}

INSTANTIATE_TEST_SUITE_P(
    All, TextMethod,
    testing::Values(TextMethodCase{"ageMissedCall", "id"}, TextMethodCase{"deleteCallLogEntry", "id"},
                    TextMethodCase{"addNewContact", "xmlData"}, TextMethodCase{"deleteSingleContact", "id"},
                    TextMethodCase{"updateEditedContact", "xmlData"}),
    [](const testing::TestParamInfo<TextMethodCase>& info) { return std::string(info.param.method); });

// ---- A set of ids ------------------------------------------------------------------------------------------------

TEST_F(RemoteCall, SeveralMissedCallsComeAsASet) {
    const std::set<std::string> ids = {"b", "a", "with,comma"};

    call("ageMissedCalls", {{"ids", Serializer::serialize(ids)}});

    expectCalls({"ageMissedCalls " + Serializer::serialize(ids)});
    expectNoReply();
}

TEST_F(RemoteCall, AnEmptySetIsCalledAsAnEmptySet) {
    call("ageMissedCalls", {{"ids", ""}});

    expectCalls({"ageMissedCalls "});
}

TEST_F(RemoteCall, ATextThatIsNoSetIsAnEmptySet) {
    call("ageMissedCalls", {{"ids", "\"a\",broken"}});

    expectCalls({"ageMissedCalls "});
}

TEST_F(RemoteCall, WithoutTheSetTheCallIsSkipped) {
    call("ageMissedCalls");

    expectCalls({});
    expectNoReply();
}

// ---- Queries with a default --------------------------------------------------------------------------------------

TEST_F(RemoteCall, WhetherACallWasViewedIsAnswered) {
    for (const bool viewed : {true, false}) {
        service.answer = viewed;

        call("isMissedCallViewed", {{"id", "7"}});

        expectCalls({"isMissedCallViewed 7"});
        expectResult("isMissedCallViewed", viewed);
    }
}

TEST_F(RemoteCall, WithoutAnIdACallCountsAsViewedAndTheServiceIsNotAsked) {
    service.answer = false;

    call("isMissedCallViewed");

    expectCalls({});
    expectResult("isMissedCallViewed", true);
}

TEST_F(RemoteCall, TheTelephonesSwitchIsHandedOn) {
    call("updateUserPresenceStatus", {}, {{"newDndState", true}});
    expectCalls({"updateUserPresenceStatus true"});
    expectNoReply();

    call("updateUserPresenceStatus", {}, {{"newDndState", false}});
    expectCalls({"updateUserPresenceStatus false"});
    expectNoReply();
}

TEST_F(RemoteCall, WithoutTheSwitchNothingHappens) {
    call("updateUserPresenceStatus");
    call("updateUserPresenceStatus", {{"newDndState", "true"}});

    expectCalls({});
    expectNoReply();
}

TEST_F(RemoteCall, AMessageWaitingIndicationIsAnswered) {
    for (const bool processed : {true, false}) {
        service.answer = processed;

        call("sipVoicemailStatusProcessed", {{"lineURI", "+491"}, {"lineName", "Own"}}, {{"mwiIndicated", true}});

        expectCalls({"sipVoicemailStatusProcessed +491 Own true"});
        expectResult("sipVoicemailStatusProcessed", processed);
    }
}

TEST_F(RemoteCall, AMessageWaitingIndicationMayEnd) {
    call("sipVoicemailStatusProcessed", {{"lineURI", "+491"}, {"lineName", "Own"}}, {{"mwiIndicated", false}});

    expectCalls({"sipVoicemailStatusProcessed +491 Own false"});
}

TEST_F(RemoteCall, AnIndicationThatMissesAParameterIsAnsweredWithFalse) {
    const std::vector<std::pair<Texts, Flags>> incomplete = {{{}, {}},
                                                             {{{"lineURI", "+491"}}, {}},
                                                             {{{"lineURI", "+491"}, {"lineName", "Own"}}, {}},
                                                             {{{"lineURI", "+491"}}, {{"mwiIndicated", true}}},
                                                             {{{"lineName", "Own"}}, {{"mwiIndicated", true}}},
                                                             {{}, {{"mwiIndicated", true}}}};
    for (const auto& [texts, flags] : incomplete) {
        call("sipVoicemailStatusProcessed", texts, flags);

        expectCalls({});
        expectResult("sipVoicemailStatusProcessed", false);
    }
}

TEST_F(RemoteCall, TheFirstOfTwoParametersWithOneNameCounts) {
    call("ageMissedCall", {{"id", "first"}, {"id", "second"}});

    expectCalls({"ageMissedCall first"});
}

// ---- Unknown methods ---------------------------------------------------------------------------------------------

TEST_F(RemoteCall, AnUnknownMethodGetsALineAndNoReply) {
    call("makeCoffee");

    expectCalls({});
    expectNoReply();
    EXPECT_TRUE(logged("handleMessage() unknown request='makeCoffee'"));
}

TEST_F(RemoteCall, NamesAreComparedExactly) {
    call("isrunning");
    call("isRunning ");
    call("");

    expectCalls({});
    EXPECT_TRUE(logged("handleMessage() unknown request='isrunning'"));
    EXPECT_TRUE(logged("handleMessage() unknown request='isRunning '"));
    EXPECT_TRUE(logged("handleMessage() unknown request=''"));
}

TEST_F(RemoteCall, TheTypeOfARequestIsNotLookedAt) {
    adapter.request = Method("isRunning", Method::RESPONSE);

    deliver();

    expectResult("isRunning", true);
}
