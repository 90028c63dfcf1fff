#include "orvane-phone/LocalTime.h"
#include "orvane-phone/Screen.h"
#include "orvane-phone/TextWidth.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <regex>

namespace {

const Screen::Style plain{false, false};

std::string withoutColours(const std::string& line) {
    static const std::regex colour("\x1b\\[[0-9;]*m");
    return std::regex_replace(line, colour, "");
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

/// A telephone with more of everything than fits.
ViewModel busyTelephone() {
    ViewModel model;
    std::vector<std::string> calls;
    std::vector<std::string> contacts;
    for (int number = 100; number < 200; ++number) {
        const std::string id = std::to_string(number);
        calls.push_back("{Missed," + id + ",2026-11-20T12:00:" + id.substr(1) + "Z,1:00:00,+4930" + id +
                        ",Zo\xC3\xAB \xE5\xB1\xB1\xE7\x94\xB0 with a very long name indeed,Sales,+49302}");
        contacts.push_back(R"({"firstname":"Firstname","lastname":"Lastname )" + id +
                           R"(","businessNumber":"+4930123456789012345","id":")" + id + "\"}");
        model.setLamp("blf" + id, true);
        model.addEvent("event " + id + std::string(200, 'x'));
    }
    model.applyCalls(calls, true);
    model.applyContacts(contacts, true);
    model.setVoicemail({{"~", {"+4930", "Me", "", -1}}, {"7", {"+4931", std::string(100, 'y'), "", 2}}});
    model.setItem("CALL_DND_ACTIVATED", "true");
    return model;
}

class InBerlin : public testing::Test {
protected:
    void SetUp() override { set("CET-1CEST,M3.5.0,M10.5.0/3"); }
    void TearDown() override { set("UTC0"); }

private:
    static void set(const char* zone) {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
};

} // namespace

TEST(ViewText, CountsColumnsNotBytes) {
    EXPECT_EQ(3, TextWidth::columnsOf("abc"));
    EXPECT_EQ(3, TextWidth::columnsOf("Zo\xC3\xAB"));
    EXPECT_EQ(4, TextWidth::columnsOf("\xE5\xB1\xB1\xE7\x94\xB0"));
    EXPECT_EQ(1, TextWidth::columnsOf("e\xCC\x81"));
    EXPECT_EQ(2, TextWidth::columnsOf("\xF0\x9F\x93\x9E"));
}

TEST(ViewText, IsFilledToItsColumns) {
    EXPECT_EQ("Zo\xC3\xAB  ", TextWidth::fit("Zo\xC3\xAB", 5));
    EXPECT_EQ("  ab", TextWidth::fitRight("ab", 4));
}

TEST(ViewText, IsCutToItsColumnsAndSaysSo) {
    EXPECT_EQ("abcde", TextWidth::fit("abcde", 5));
    EXPECT_EQ("abcd\xE2\x80\xA6", TextWidth::fit("abcdef", 5));
    EXPECT_EQ("\xE5\xB1\xB1\xE2\x80\xA6 ", TextWidth::fit("\xE5\xB1\xB1\xE7\x94\xB0\xE5\xB1\xB1", 4));
    EXPECT_EQ("", TextWidth::fit("abc", 0));
}

TEST(ViewText, ShowsNeitherControlCharactersNorBrokenUtf8) {
    EXPECT_EQ("a b", TextWidth::fit("a\x1b"
                                    "b",
                                    3));
    EXPECT_EQ("a\xEF\xBF\xBD"
              "b",
              TextWidth::fit("a\xFF"
                             "b",
                             3));
    EXPECT_EQ(1, TextWidth::columnsOf("\xC3"));
    EXPECT_EQ(2, TextWidth::columnsOf("\xC0\xAF"));
}

TEST_F(InBerlin, TimesAreLocal) {
    EXPECT_EQ("20.11. 13:05", LocalTime::dateAndTime("2026-11-20T12:05:59.000Z"));
    EXPECT_EQ("01.08. 01:30", LocalTime::dateAndTime("2026-07-31T23:30:00Z"));
    EXPECT_EQ("some time", LocalTime::dateAndTime("some time"));
    EXPECT_EQ("01:00:07", LocalTime::timeOfDay(7));
}

TEST(ViewScreen, FitsTheTerminalWhateverItsSize) {
    const ViewModel model = busyTelephone();
    for (const Screen::Size size : {Screen::Size{80, 24}, Screen::Size{40, 10}, Screen::Size{69, 13},
                                    Screen::Size{70, 30}, Screen::Size{200, 60}}) {
        for (const Screen::Style style : {Screen::Style{true, true}, plain}) {
            const std::vector<std::string> lines = Screen::draw(model, "Orvane telephone", size, style);
            EXPECT_EQ(static_cast<std::size_t>(size.rows), lines.size());
            for (std::size_t row = 0; row + 1 < lines.size(); ++row) {
                EXPECT_EQ(size.columns, TextWidth::columnsOf(withoutColours(lines[row])))
                    << size.columns << "x" << size.rows << " row " << row << ": " << lines[row];
            }
        }
    }
}

TEST(ViewScreen, AScreenTooSmallIsDrawnAsTheSmallest) {
    const std::vector<std::string> lines = Screen::draw(busyTelephone(), "t", {3, 1}, plain);
    EXPECT_EQ(static_cast<std::size_t>(Screen::smallest.rows), lines.size());
    EXPECT_EQ(Screen::smallest.columns, TextWidth::columnsOf(lines[0]));
}

TEST(ViewScreen, IsPlainTextWithoutColours) {
    const std::string text = joined(Screen::draw(busyTelephone(), "t", {80, 24}, plain));
    EXPECT_EQ(std::string::npos, text.find('\x1b'));
    EXPECT_NE(std::string::npos, joined(Screen::draw(busyTelephone(), "t", {80, 24}, {true, true})).find('\x1b'));
}

TEST(ViewScreen, ShowsTheNewestCallFirstAndMarksNewMissedOnes) {
    ViewModel model;
    model.applyCalls({"{Missed,1,2026-11-20T12:00:00Z,00:10,+49301,Ada,Unknown.Name,Unknown.Name}",
                      "{Dialled,2,2026-11-20T12:05:00Z,00:20,+49302,Ben,Unknown.Name,Unknown.Name}",
                      "{Missed,3,2026-11-20T11:00:00Z,00:30,+49303,Cem,Unknown.Name,Unknown.Name}"},
                     true);
    model.setItem("ORVANE_API_VIEWED_MISSED_CALL_IDS", "\"3\"");
    const std::vector<std::string> lines = Screen::draw(model, "t", {100, 24}, plain);
    EXPECT_NE(std::string::npos, lines[2].find("Calls: 3, 2 missed"));
    EXPECT_NE(std::string::npos, lines[3].find("out    00:20 Ben")) << lines[3];
    EXPECT_EQ(0U, lines[4].find("* ")) << lines[4];
    EXPECT_NE(std::string::npos, lines[4].find("missed 00:10 Ada")) << lines[4];
    EXPECT_EQ(0U, lines[5].find("  ")) << lines[5];
    EXPECT_NE(std::string::npos, lines[5].find("missed 00:30 Cem")) << lines[5];
}

TEST(ViewScreen, NamesTheSharedLineOfACall) {
    ViewModel model;
    model.applyCalls({"{Missed,1,2026-11-20T12:00:00Z,00:10,+49301,Ada,Sales,+49302}"}, true);
    EXPECT_NE(std::string::npos, joined(Screen::draw(model, "t", {100, 24}, plain)).find("Ada @ Sales"));
}

TEST(ViewScreen, ShowsVoicemailKeysAndState) {
    ViewModel model;
    model.setVoicemail({{"~", {"+4930", "Me", "", -1}}, {"7", {"+4931", "Sales", "", 2}}});
    model.setItem("BLF_DEST100", "blf11");
    model.setItem("FUNCTION_KEY_LABEL100", "Ben");
    model.setLamp("blf11", true);
    model.setItem("CALL_DND_ACTIVATED", "true");
    model.setItem("INTERFACE_STATUS", "down");
    const std::string text = joined(Screen::draw(model, "t", {100, 24}, plain));
    EXPECT_NE(std::string::npos, text.find("Voicemail  Sales: 2 new, Me: waiting")) << text;
    EXPECT_NE(std::string::npos, text.find("Keys       * Ben"));
    EXPECT_NE(std::string::npos, text.find("network down  - channel  * do not disturb"));
}

TEST(ViewScreen, SummaryFitsATerminalAndHasNoColours) {
    const std::string text = Screen::summary(busyTelephone(), "Orvane telephone");
    EXPECT_EQ(std::string::npos, text.find('\x1b'));
    EXPECT_NE(std::string::npos, text.find("calls           100, 100 missed"));
    EXPECT_NE(std::string::npos, text.find("contacts        100"));
}
