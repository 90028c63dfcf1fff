#include "TestTelephone.h"

using OrvaneServiceTypes::Voicemail;

namespace {

class VoicemailReader : public TestTelephone {
protected:
    static std::string message(const std::string& readStatus, const std::string& creationTime, const std::string& name,
                               const std::string& number) {
        return "{\"readStatus\":\"" + readStatus + "\",\"creationTime\":\"" + creationTime +
               "\",\"to\":[{\"phoneNumber\":\"" + number + "\",\"name\":\"" + name + "\"}]}";
    }
    static std::string unread(const std::string& creationTime, const std::string& name = "Own",
                              const std::string& number = "+491") {
        return message("Unread", creationTime, name, number);
    }
    bool read(int status, const std::string& body) {
        std::string response = body;
        return service->handleVoicemailResponse(static_cast<HttpClientIfc::eStatusCode>(status), response, summary);
    }
    bool readRecords(const std::string& records) { return read(200, "{\"records\":[" + records + "]}"); }
    bool readRecord(const std::string& text) {
        json_t* record = json_loads(text.c_str(), 0, nullptr);
        const bool newest = service->handleVoicemailRecord(record, summary);
        json_decref(record);
        return newest;
    }

    /// One line for each message, whatever came of it.
    std::size_t messageLines() const {
        const std::string text = platform.log.text(6);
        const std::string beginning = "handleVoicemailRecord() ";
        std::size_t count = 0;
        for (std::size_t at = text.find(beginning); at != std::string::npos; at = text.find(beginning, at + 1)) {
            ++count;
        }
        return count;
    }

    Voicemail summary;
};

} // namespace

TEST_F(VoicemailReader, AnotherStatusIsReported) {
    EXPECT_FALSE(read(404, "none"));

    EXPECT_TRUE(logged(2, "handleVoicemailResponse() HTTP[404] responseData:\nnone"));
}

TEST_F(VoicemailReader, AnEmptyBodyIsReported) {
    EXPECT_FALSE(read(200, ""));

    EXPECT_TRUE(logged(2, "handleVoicemailResponse() HTTP[200] responseData:\n"));
}

TEST_F(VoicemailReader, AnUnreadableBodyIsReported) {
    EXPECT_FALSE(read(200, "["));

    EXPECT_TRUE(logged(2, "handleVoicemailResponse() error on line 1:1(1) ']' expected near end of file"));
}

TEST_F(VoicemailReader, MissingRecordsAreReported) {
    EXPECT_FALSE(read(200, "{\"records\":5}"));

    EXPECT_TRUE(logged(2, "handleVoicemailResponse() records not an array"));
}

TEST_F(VoicemailReader, NoMessagesAreFine) {
    EXPECT_TRUE(readRecords(""));

    EXPECT_EQ(0, summary.unreadVoicemailMessageCount);
}

TEST_F(VoicemailReader, UnreadMessagesAreCountedAndTheNewestDescribesTheLine) {
    EXPECT_TRUE(readRecords(unread("2026-01-01", "First", "1") + "," + unread("2026-01-03", "Newest", "3") + "," +
                            unread("2026-01-02", "Between", "2")));

    EXPECT_EQ(3, summary.unreadVoicemailMessageCount);
    EXPECT_EQ("2026-01-03", summary.latestTimestamp);
    EXPECT_EQ("Newest", summary.name);
    EXPECT_EQ("3", summary.number);
}

TEST_F(VoicemailReader, EmptyElementsAndRecordsThatFailArePassedOver) {
    EXPECT_TRUE(readRecords("null," + message("Read", "2026-01-09", "Read", "9") + "," + unread("2026-01-01")));

    EXPECT_EQ(2u, messageLines());
    EXPECT_EQ(1, summary.unreadVoicemailMessageCount);
    EXPECT_EQ("2026-01-01", summary.latestTimestamp);
}

TEST_F(VoicemailReader, ReadMessagesDoNotCount) {
    EXPECT_FALSE(readRecord(message("Read", "2026-01-01", "Own", "1")));
    EXPECT_FALSE(readRecord(message("unread", "2026-01-01", "Own", "1")));
    EXPECT_FALSE(readRecord("{\"creationTime\":\"2026-01-01\"}"));

    EXPECT_EQ(0, summary.unreadVoicemailMessageCount);
    EXPECT_EQ("", summary.latestTimestamp);
    EXPECT_EQ(3, platform.log.count(6, "handleVoicemailRecord() unreadVoicemailMessageCount[0], latestMsg[] name[] "
                                       "phoneNumber[]"));
}

TEST_F(VoicemailReader, AMessageCountsBeforeAnythingElseCanFail) {
    EXPECT_FALSE(readRecord("{\"readStatus\":\"Unread\"}"));

    EXPECT_EQ(1, summary.unreadVoicemailMessageCount);
    EXPECT_TRUE(logged(6, "handleVoicemailRecord() unreadVoicemailMessageCount[1], latestMsg[] name[] phoneNumber[]"));
}

TEST_F(VoicemailReader, AnOlderOrEquallyOldMessageOnlyCounts) {
    EXPECT_TRUE(readRecord(unread("2026-01-02", "Newer", "2")));
    EXPECT_FALSE(readRecord(unread("2026-01-01", "Older", "1")));
    EXPECT_FALSE(readRecord(unread("2026-01-02", "Equal", "3")));

    EXPECT_EQ(3, summary.unreadVoicemailMessageCount);
    EXPECT_EQ("Newer", summary.name);
    EXPECT_EQ("2", summary.number);
    EXPECT_EQ(3u, messageLines());
}

TEST_F(VoicemailReader, WithoutARecipientOnlyTheTimestampIsStored) {
    EXPECT_FALSE(readRecord("{\"readStatus\":\"Unread\",\"creationTime\":\"2026-01-01\"}"));
    EXPECT_EQ("2026-01-01", summary.latestTimestamp);
    EXPECT_FALSE(readRecord("{\"readStatus\":\"Unread\",\"creationTime\":\"2026-01-02\",\"to\":[]}"));
    EXPECT_EQ("2026-01-02", summary.latestTimestamp);
    EXPECT_FALSE(readRecord("{\"readStatus\":\"Unread\",\"creationTime\":\"2026-01-03\",\"to\":[null]}"));
    EXPECT_EQ("2026-01-03", summary.latestTimestamp);

    EXPECT_EQ("", summary.number);
    EXPECT_EQ("", summary.name);
    EXPECT_EQ(3u, messageLines());
}

TEST_F(VoicemailReader, ARecipientWithoutNumberAndNameEmptiesBoth) {
    readRecord(unread("2026-01-01"));

    EXPECT_TRUE(readRecord("{\"readStatus\":\"Unread\",\"creationTime\":\"2026-01-02\",\"to\":[{}]}"));

    EXPECT_EQ("", summary.number);
    EXPECT_EQ("", summary.name);
}

TEST_F(VoicemailReader, OnlyTheFirstRecipientCounts) {
    EXPECT_TRUE(readRecord("{\"readStatus\":\"Unread\",\"creationTime\":\"2026-01-02\",\"to\":["
                           "{\"phoneNumber\":\"1\",\"name\":\"A\"},{\"phoneNumber\":\"2\",\"name\":\"B\"}]}"));

    EXPECT_EQ("1", summary.number);
    EXPECT_EQ("A", summary.name);
    EXPECT_TRUE(logged(6, "handleVoicemailRecord() unreadVoicemailMessageCount[1], latestMsg[2026-01-02] name[A] "
                          "phoneNumber[1]"));
}

struct NameCase {
    const char* title;
    const char* given;
    const char* kept;
};
class VoicemailName : public VoicemailReader, public testing::WithParamInterface<NameCase> {};

TEST_P(VoicemailName, IsWhatStandsInTheLastParentheses) {
    EXPECT_TRUE(readRecord(unread("2026-01-01", GetParam().given)));

    EXPECT_EQ(GetParam().kept, summary.name);
}

INSTANTIATE_TEST_SUITE_P(AllForms, VoicemailName,
                         testing::Values(NameCase{"Plain", "Jane", "Jane"},
                                         NameCase{"InParentheses", "Sales (Jane)", "Jane"},
                                         NameCase{"LastOfTwo", "A (B) (C)", "C"}, NameCase{"Nested", "A (B (C))", "C)"},
                                         NameCase{"OnlyOpen", "A (B", "A (B"}, NameCase{"OnlyClose", "A) B", "A) B"},
                                         NameCase{"Reversed", "A) B (C", "C"}, NameCase{"EmptyPart", "A ()", ""},
                                         NameCase{"TailBehind", "A (B) C", "B"}),
                         [](const testing::TestParamInfo<NameCase>& info) { return std::string(info.param.title); });
