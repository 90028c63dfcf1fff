#include "orvane-phone/ViewModel.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

std::string call(const std::string& id, const std::string& start, const std::string& type = "Missed",
                 const std::string& name = "Ada") {
    return "{" + type + "," + id + "," + start + ",00:10,+49301," + name + ",Unknown.Name,Unknown.Name}";
}

std::string contact(const std::string& id, const std::string& first, const std::string& last) {
    return R"({"firstname":")" + first + R"(","lastname":")" + last +
           R"(","businessNumber":"","businessNumber2":"4","mobile":"2","homePhone":"3","email":"","company":"",)" +
           R"("jobTitle":"","id":")" + id + "\"}";
}

Texts idsOf(const std::vector<ViewModel::Call>& calls) {
    Texts ids;
    for (const ViewModel::Call& entry : calls) {
        ids.push_back(entry.id);
    }
    return ids;
}

} // namespace

TEST(ViewModelCall, HasEightFields) {
    ViewModel::Call read;
    ASSERT_TRUE(
        ViewModel::parseCall("{Received,4711,2020-01-02T03:04:05.000Z,01:05,+49301,Sample Caller,Sales,+49302}", read));
    EXPECT_EQ("Received", read.type);
    EXPECT_EQ("4711", read.id);
    EXPECT_EQ("2020-01-02T03:04:05.000Z", read.startTime);
    EXPECT_EQ("01:05", read.duration);
    EXPECT_EQ("+49301", read.number);
    EXPECT_EQ("Sample Caller", read.name);
    EXPECT_EQ("Sales", read.lineTag);
    EXPECT_EQ("+49302", read.lineNumber);
}

TEST(ViewModelCall, KeepsTheCommasOfItsName) {
    ViewModel::Call read;
    ASSERT_TRUE(ViewModel::parseCall("{Missed,1,t,00:00,+49301,Caller, Sample,, Dr.,Unknown.Name,+49302}", read));
    EXPECT_EQ("Caller, Sample,, Dr.", read.name);
    EXPECT_EQ("+49301", read.number);
    EXPECT_EQ("Unknown.Name", read.lineTag);
    EXPECT_EQ("+49302", read.lineNumber);
}

TEST(ViewModelCall, IsNoneWithFewerFieldsOrWithoutBraces) {
    ViewModel::Call read;
    for (const char* text : {"", "{", "{}", "4711", "{Missed,1,t,00:00,+49301,Name,Unknown.Name}",
                             "Missed,1,t,00:00,+49301,Name,Unknown.Name,Unknown.Name"}) {
        EXPECT_FALSE(ViewModel::parseCall(text, read)) << text;
    }
}

TEST(ViewModelCall, NamesItsPartyByNameElseNumber) {
    ViewModel::Call read;
    ViewModel::parseCall("{Missed,1,t,00:00,+49301,Ada,Unknown.Name,Unknown.Name}", read);
    EXPECT_EQ("Ada", read.party());
    ViewModel::parseCall("{Missed,1,t,00:00,+49301,Unknown.Name,Unknown.Name,Unknown.Name}", read);
    EXPECT_EQ("+49301", read.party());
    ViewModel::parseCall("{Missed,1,t,00:00,Caller.Unknown.XXX,Unknown.Name,Unknown.Name,Unknown.Name}", read);
    EXPECT_EQ("unknown caller", read.party());
    EXPECT_FALSE(read.hasLine());
}

TEST(ViewModelCalls, StandNewestFirst) {
    ViewModel model;
    model.applyCalls(
        {call("1", "2026-01-01T00:00:00Z"), call("2", "2026-01-03T00:00:00Z"), call("3", "2026-01-02T00:00:00Z")},
        true);
    EXPECT_EQ((Texts{"2", "3", "1"}), idsOf(model.calls()));
}

TEST(ViewModelCalls, AFullBatchReplacesAll) {
    ViewModel model;
    model.applyCalls({call("1", "1"), call("2", "2")}, true);
    const Texts changes = model.applyCalls({call("3", "3")}, true);
    EXPECT_EQ((Texts{"3"}), idsOf(model.calls()));
    EXPECT_EQ((Texts{"all calls: 1"}), changes);
    model.applyCalls({}, true);
    EXPECT_EQ(0U, model.callCount());
}

TEST(ViewModelCalls, AnIncrementalBatchAddsChangesAndDeletes) {
    ViewModel model;
    model.applyCalls({call("1", "1"), call("2", "2")}, true);
    const Texts changes =
        model.applyCalls({call("3", "3", "Dialled", "Ben"), call("2", "2", "Received"), "1", "unknown id"}, false);
    EXPECT_EQ((Texts{"3", "2"}), idsOf(model.calls()));
    EXPECT_EQ("Received", model.calls()[1].type);
    EXPECT_EQ((Texts{"new call: Dialled, Ben +49301, 00:10", "changed call: Received, Ada +49301, 00:10",
                     "deleted call: Missed, Ada +49301, 00:10"}),
              changes);
}

TEST(ViewModelCalls, AFullBatchMayHoldBareIds) {
    ViewModel model;
    model.applyCalls({call("1", "1"), "4711"}, true);
    EXPECT_EQ((Texts{"1"}), idsOf(model.calls()));
}

TEST(ViewModelCalls, AMissedCallIsNewUntilItIsViewed) {
    ViewModel model;
    model.applyCalls({call("1", "1"), call("2", "2"), call("3", "3", "Received")}, true);
    model.setItem("ORVANE_API_VIEWED_MISSED_CALL_IDS", "\"1\",\"7\"");
    const std::vector<ViewModel::Call> calls = model.calls();
    EXPECT_FALSE(model.isNew(calls[0])); // received
    EXPECT_TRUE(model.isNew(calls[1]));
    EXPECT_FALSE(model.isNew(calls[2])); // viewed
    EXPECT_EQ(2U, model.missedCount());
}

TEST(ViewModelContacts, StandByNameWithTheirFirstNumber) {
    ViewModel model;
    model.applyContacts({contact("1", "Zoe", "Able"), contact("2", "Ada", ""), contact("3", "", "Mid")}, true);
    const std::vector<ViewModel::Contact> contacts = model.contacts();
    ASSERT_EQ(3U, contacts.size());
    EXPECT_EQ("Ada", contacts[0].name);
    EXPECT_EQ("Mid", contacts[1].name);
    EXPECT_EQ("Zoe Able", contacts[2].name);
    EXPECT_EQ("2", contacts[0].number);
}

TEST(ViewModelContacts, AnIncrementalBatchAddsChangesAndDeletes) {
    ViewModel model;
    model.applyContacts({contact("1", "Ada", ""), contact("2", "Ben", "")}, true);
    EXPECT_EQ((Texts{"changed contact: Bea 2", "deleted contact: Ada 2", "new contact: Cem 2"}),
              model.applyContacts({contact("2", "Bea", ""), "1", contact("3", "Cem", "")}, false));
    EXPECT_EQ(2U, model.contactCount());
}

TEST(ViewModelContacts, TextsThatAreNoContactArePassedOver) {
    ViewModel model;
    model.applyContacts({"{", "{}", R"({"id":7})", "[]", "nothing"}, true);
    EXPECT_EQ(0U, model.contactCount());
}

TEST(ViewModelKeys, CarryTheirLabelAndLamp) {
    ViewModel model;
    model.setItem("BLF_DEST101", "blf22");
    model.setItem("FUNCTION_KEY_LABEL101", "Ben");
    model.setItem("BLF_DEST100", "blf11");
    model.setLamp("blf22", true);
    model.setLamp("blf33", false);

    const std::vector<ViewModel::Key> keys = model.keys();

    ASSERT_EQ(3U, keys.size());
    EXPECT_EQ("blf11", keys[0].label);
    EXPECT_FALSE(keys[0].dnd);
    EXPECT_EQ("Ben", keys[1].label);
    EXPECT_TRUE(keys[1].dnd);
    EXPECT_EQ("blf33", keys[2].label);
    EXPECT_EQ("Ben", model.keyLabel("blf22"));
}

TEST(ViewModelKeys, AKeyThatWatchesNobodyIsNone) {
    ViewModel model;
    model.setItem("BLF_DEST100", "blf11");
    model.setItem("BLF_DEST100", "");
    EXPECT_TRUE(model.keys().empty());
}

TEST(ViewModelState, FollowsTheItems) {
    ViewModel model;
    EXPECT_TRUE(model.interfaceUp());
    model.setItem("CALL_DND_ACTIVATED", "true");
    model.setItem("INTERFACE_STATUS", "down");
    EXPECT_TRUE(model.dnd());
    EXPECT_FALSE(model.interfaceUp());
    model.setItem("CALL_DND_ACTIVATED", "false");
    EXPECT_FALSE(model.dnd());
}

TEST(ViewModelState, KeepsTheLatestEventsOnly) {
    ViewModel model;
    for (int number = 0; number < 200; ++number) {
        model.addEvent(std::to_string(number));
    }
    EXPECT_EQ(50U, model.events().size());
    EXPECT_EQ("199", model.events().back());
}
