#include "CloudAnswers.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "ParsedJson.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <set>

using CloudAnswers::Call;

namespace {

struct Line {
    std::string number;
    bool isShared = false;
};

class CallLogRecord : public testing::Test {
protected:
    bool read(const std::string& json, const Line& line = Line()) {
        ParsedJson element(json);
        return OrvaneServiceHelper::getCallLogRecordFromObject(record, id, callType, number, element.root, missedIds,
                                                               deleted, line.number, sessionId, line.isShared);
    }
    bool read(const Call& call, const Line& line = Line()) { return read(call.json(), line); }
    bool readOnSharedLine(const Call& call) { return read(call, {"+49555", true}); }

    TestPlatform platform;
    std::string record = "former record";
    std::string id = "former id";
    std::string callType = "former type";
    std::string number = "former number";
    std::string sessionId = "former session";
    std::set<std::string> missedIds;
    bool deleted = false;
};

TEST_F(CallLogRecord, KeepsTimesBeyondTheLastSecondOf32Bits) {
    Call call;
    call.startTime = "2038-01-19T03:14:08.000Z";
    ASSERT_TRUE(read(call));
    EXPECT_NE(std::string::npos, record.find(",2038-01-19T03:14:08.000Z,")) << record;
}

TEST_F(CallLogRecord, IsEightFieldsInBracesWithoutAnyQuoting) {
    Call call;
    call.id = "4711";
    call.startTime = "2020-01-02T03:04:05.000Z";
    call.fromNumber = "+4930123456";
    call.fromName = "Sample Caller";
    call.sessionId = "s-9";

    ASSERT_TRUE(read(call));

    EXPECT_EQ("{Received,4711,2020-01-02T03:04:05.000Z,01:05,+4930123456,Sample Caller,Unknown.Name,Unknown.Name}",
              record);
    EXPECT_EQ("4711", id);
    EXPECT_EQ("Received", callType);
    EXPECT_EQ("+4930123456", number);
    EXPECT_EQ("s-9", sessionId);
    EXPECT_FALSE(deleted);
    EXPECT_TRUE(missedIds.empty());
    EXPECT_TRUE(platform.log.has(
        6, "getCallLogRecordFromObject() result[Accepted] id[4711] action[Phone Call] "
           "starttime[2020-01-02T03:04:05.000Z] durationString[01:05] direction[Inbound] callType[Received] "
           "number[+4930123456] name[Sample Caller] bca_line_tag[Unknown.Name], callerNumber[Unknown.Name] "
           "sessionId[s-9]"));
}

TEST_F(CallLogRecord, LeavesCommasAndBracesInANameAsTheyAre) {
    Call call;
    call.fromName = "Doe, Jane {x}";

    ASSERT_TRUE(read(call));

    EXPECT_NE(std::string::npos, record.find(",Doe, Jane {x},"));
}

TEST_F(CallLogRecord, HasPlaceholdersForAMissingParty) {
    Call call = Call().outbound("Call connected");
    call.toNumber.clear();
    call.toName.clear();

    ASSERT_TRUE(read(call));

    EXPECT_EQ("Caller.Unknown.XXX", number);
    EXPECT_EQ("{Dialled,call-1," + call.startTime + ",01:05,Caller.Unknown.XXX,Unknown.Name,Unknown.Name,Unknown.Name}",
              record);
}

TEST_F(CallLogRecord, TakesAnEmptyNumberForANumber) {
    ASSERT_TRUE(read(R"({"id":"1","action":"a","startTime":"t","direction":"Inbound","result":"Accepted","duration":0,
                         "telephonySessionId":"s","from":{"phoneNumber":""}})"));

    EXPECT_EQ("", number);
    EXPECT_EQ("{Received,1,t,00:00,,Unknown.Name,Unknown.Name,Unknown.Name}", record);
}

TEST_F(CallLogRecord, FallsBackToTheExtensionNumber) {
    ASSERT_TRUE(read(R"({"id":"1","action":"a","startTime":"t","direction":"Inbound","result":"Accepted","duration":0,
                         "telephonySessionId":"s","from":{"extensionNumber":"101"}})"));

    EXPECT_EQ("101", number);
    EXPECT_EQ("{Received,1,t,00:00,101,Unknown.Name,Unknown.Name,Unknown.Name}", record);
}

struct Decision {
    const char* direction;
    const char* result;
    const char* callType;
    bool missed;
};

class CallType : public CallLogRecord, public testing::WithParamInterface<Decision> {};

TEST_P(CallType, FollowsFromDirectionAndResult) {
    Call call;
    call.direction = GetParam().direction;
    call.result = GetParam().result;

    ASSERT_TRUE(read(call));

    EXPECT_EQ(GetParam().callType, callType);
    EXPECT_EQ(GetParam().missed ? std::set<std::string>{"call-1"} : std::set<std::string>(), missedIds);
    EXPECT_EQ(std::string("{") + GetParam().callType, record.substr(0, record.find(',')));
}

INSTANTIATE_TEST_SUITE_P(
    Table, CallType,
    testing::Values(
        Decision{"Outbound", "Call connected", "Dialled", false}, Decision{"Outbound", "Missed", "Dialled", false},
        Decision{"Outbound", "Anything", "Dialled", false}, Decision{"Inbound", "Accepted", "Received", false},
        Decision{"Inbound", "Call connected", "Received", false}, Decision{"Inbound", "Missed", "Missed", true},
        Decision{"Inbound", "Busy", "Missed", true}, Decision{"Inbound", "Rejected", "Missed", true},
        Decision{"Inbound", "No Answer", "Missed", true}, Decision{"Inbound", "Hang Up", "Missed", true},
        Decision{"Inbound", "Blocked", "Missed", true}, Decision{"Inbound", "IP Phone Offline", "Missed", true},
        Decision{"Inbound", "Voicemail", "Missed", true}, Decision{"Inbound", "Stopped", "Unknown", false},
        Decision{"Inbound", "missed", "Unknown", false}, Decision{"Inbound", "Else", "Unknown", false},
        Decision{"Sideways", "Missed", "Unknown", false}, Decision{"inbound", "Missed", "Unknown", false}),
    [](const testing::TestParamInfo<Decision>& info) { return "Row" + std::to_string(info.index); });

TEST_F(CallLogRecord, ReadsTheOtherPartyByDirection) {
    ASSERT_TRUE(read(Call().inbound("Accepted")));
    EXPECT_EQ("+49301", number);
    EXPECT_NE(std::string::npos, record.find(",+49301,Anna,Unknown.Name,"));

    ASSERT_TRUE(read(Call().outbound("Accepted")));
    EXPECT_EQ("+49302", number);
    EXPECT_NE(std::string::npos, record.find(",+49302,Bert,Unknown.Name,"));
}

TEST_F(CallLogRecord, ReadsNoPartyForAnyOtherDirection) {
    Call call;
    call.direction = "Sideways";

    ASSERT_TRUE(readOnSharedLine(call));

    EXPECT_EQ("Caller.Unknown.XXX", number);
    EXPECT_EQ("{Unknown,call-1," + call.startTime + ",01:05,Caller.Unknown.XXX,Unknown.Name,Unknown.Name,+49555}",
              record);
}

TEST_F(CallLogRecord, OnASharedLineCarriesTheLinesOwnPartyAndNumber) {
    ASSERT_TRUE(readOnSharedLine(Call().inbound("Accepted")));
    EXPECT_NE(std::string::npos, record.find(",+49301,Anna,Bert,+49555}"));

    ASSERT_TRUE(readOnSharedLine(Call().outbound("Accepted")));
    EXPECT_NE(std::string::npos, record.find(",+49302,Bert,Anna,+49555}"));
}

TEST_F(CallLogRecord, OnASharedLineReadsEachPartyWithoutTheOther) {
    Call anonymous;
    anonymous.fromNumber.clear();
    anonymous.fromName.clear();
    ASSERT_TRUE(readOnSharedLine(anonymous));
    EXPECT_NE(std::string::npos, record.find(",Caller.Unknown.XXX,Unknown.Name,Bert,+49555}")) << record;

    Call toNobody;
    toNobody.toNumber.clear();
    toNobody.toName.clear();
    ASSERT_TRUE(readOnSharedLine(toNobody));
    EXPECT_NE(std::string::npos, record.find(",+49301,Anna,Unknown.Name,+49555}")) << record;
}

TEST_F(CallLogRecord, OnASharedLineHasAPlaceholderForAnOwnPartyWithoutAName) {
    Call call;
    call.toName.clear();

    ASSERT_TRUE(readOnSharedLine(call));

    EXPECT_NE(std::string::npos, record.find(",Anna,Unknown.Name,+49555}"));
}

TEST_F(CallLogRecord, CarriesTheLineNumberThatItIsGiven) {
    ASSERT_TRUE(read(Call(), {"+49777", false}));

    EXPECT_NE(std::string::npos, record.find(",Unknown.Name,+49777}"));
}

class MissingMember : public CallLogRecord, public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(MissingMember, DropsTheRecordWhetherItIsAbsentOrOfAnotherType) {
    const std::string key = GetParam().first;
    ParsedJson element(Call().json());
    json_object_del(element.root, key.c_str());
    const std::string without = element.text();
    ParsedJson otherValue(GetParam().second);
    json_object_set(element.root, key.c_str(), otherValue.root);
    const std::string withOther = element.text();

    EXPECT_FALSE(read(without));
    EXPECT_FALSE(read(withOther));

    EXPECT_EQ("", record);
    EXPECT_EQ("former id", id);
    EXPECT_EQ("former type", callType);
    EXPECT_EQ("former number", number);
    ASSERT_EQ(2u, platform.log.lines().size());
    EXPECT_EQ(3, platform.log.lines()[0].level);
    EXPECT_EQ(0u, platform.log.lines()[0].text.find("getCallLogRecordFromObject() data missing from [{"));
}

INSTANTIATE_TEST_SUITE_P(All, MissingMember,
                         testing::Values(std::make_pair("id", "17"), std::make_pair("action", "null"),
                                         std::make_pair("startTime", "5"), std::make_pair("direction", "true"),
                                         std::make_pair("result", "[]"), std::make_pair("duration", "12.0"),
                                         std::make_pair("telephonySessionId", "1")),
                         [](const auto& info) { return std::string(info.param.first); });

TEST_F(CallLogRecord, DumpsTheElementWhoseDataIsMissing) {
    EXPECT_FALSE(read(R"({"id":"1","duration":"x"})"));

    EXPECT_TRUE(
        platform.log.has(3, R"(getCallLogRecordFromObject() data missing from [{"id": "1", "duration": "x"}])"));
    EXPECT_EQ("", sessionId);
}

TEST_F(CallLogRecord, TakesANestedStringForANumericId) {
    ASSERT_TRUE(read(R"({"id":17,"action":"a","startTime":"t","direction":"Inbound","result":"Accepted","duration":1,
                         "telephonySessionId":"s","from":{"id":"nested"}})"));

    EXPECT_EQ("nested", id);
}

TEST_F(CallLogRecord, OfADelegateIsDroppedSilentlyOnThePrimaryLine) {
    Call call;
    call.delegated = true;

    EXPECT_FALSE(read(call));

    EXPECT_EQ("", id);
    EXPECT_EQ("", record);
    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(CallLogRecord, OfADelegateIsGoneBeforeItsActionIsLookedAt) {
    Call call;
    call.delegated = true;
    call.action = "FindMe";

    EXPECT_FALSE(read(call));

    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(CallLogRecord, WithANestedDelegateIsDroppedAsWell) {
    ParsedJson element(Call().json());
    ParsedJson leg(R"({"delegate":{"id":"5"}})");
    json_object_set(element.root, "leg", leg.root);

    EXPECT_FALSE(read(element.text()));
}

TEST_F(CallLogRecord, WithADelegateThatIsNoObjectIsKept) {
    ParsedJson element(Call().json());
    json_object_set_new(element.root, "delegate", json_string("Boss"));

    EXPECT_TRUE(read(element.text()));
}

TEST_F(CallLogRecord, OfADelegateIsKeptOnASharedLine) {
    Call call;
    call.delegated = true;

    EXPECT_TRUE(readOnSharedLine(call));

    EXPECT_EQ("call-1", id);
}

TEST_F(CallLogRecord, WithAnUnsupportedActionIsDropped) {
    Call call;
    call.action = "Incoming Fax";

    EXPECT_FALSE(read(call));

    EXPECT_EQ("former id", id);
    EXPECT_TRUE(platform.log.has(6, "getCallLogRecordFromObject() unsupported action[Incoming Fax]"));
}

TEST_F(CallLogRecord, ThatWasStoppedIsDroppedWhenItIsOutbound) {
    Call call = Call().outbound("Stopped");

    EXPECT_FALSE(read(call));

    EXPECT_EQ("former id", id);
    EXPECT_EQ("Unknown", callType);
    EXPECT_EQ("Caller.Unknown.XXX", number);
    ASSERT_EQ(1u, platform.log.lines().size());
    EXPECT_EQ(2, platform.log.lines()[0].level);
    EXPECT_EQ(0u, platform.log.lines()[0].text.find(
                      "getCallLogRecordFromObject() - ignore record with 'Stopped' reason: [{\"id\": \"call-1\", "));
}

TEST_F(CallLogRecord, OnASharedLineIsDroppedForItsActionOrAsStoppedToo) {
    Call unsupported;
    unsupported.action = "FindMe";

    EXPECT_FALSE(readOnSharedLine(unsupported));
    EXPECT_FALSE(readOnSharedLine(Call().outbound("Stopped")));

    EXPECT_EQ("former id", id);
    EXPECT_EQ("", record);
}

TEST_F(CallLogRecord, ThatIsDeletedSaysSoAndStillCountsAsMissed) {
    ASSERT_TRUE(read(Call().inbound("Missed").gone()));

    EXPECT_TRUE(deleted);
    EXPECT_EQ(std::set<std::string>{"call-1"}, missedIds);
}

TEST_F(CallLogRecord, TakesOverADeletedThatIsFalse) {
    deleted = true;
    ParsedJson element(Call().json());
    json_object_set_new(element.root, "deleted", json_false());

    ASSERT_TRUE(read(element.text()));

    EXPECT_FALSE(deleted);
}

TEST_F(CallLogRecord, AddsToTheMissedIdsOfFormerRecords) {
    missedIds = {"0"};

    ASSERT_TRUE(read(Call().inbound("Missed")));

    EXPECT_EQ((std::set<std::string>{"0", "call-1"}), missedIds);
}

} // namespace
