#include "support/Process.h"
#include "support/TemporaryFolder.h"
#include "transport/ControlServer.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

/// Something that listens as a telephone does and answers every line alike.
class StrangeTelephone : public testing::Test {
protected:
    void answerWith(const std::string& answer) {
        std::string error;
        ASSERT_EQ(ControlServer::Listening::BEGUN,
                  m_server.listen(
                      m_folder.file("socket"),
                      [answer](LineConnection& connection, const std::string&) { connection.send(answer); },
                      [](LineConnection&) {}, error))
            << error;
    }
    int control(const std::string& command, const std::string& output) {
        return Process({ORVANE_CTL, "--control", m_folder.file("socket"), command}, output, m_folder.file("err"))
            .wait();
    }
    int control(const std::string& command) { return control(command, m_folder.file("out")); }

    TemporaryFolder m_folder;
    ControlServer m_server;
};

} // namespace

TEST_F(StrangeTelephone, IsReportedWhenItsErrorIsNoText) {
    answerWith(R"({"seq":1,"error":5})");
    const Lines report{"orvane-ctl: the telephone's answer cannot be read"};

    EXPECT_EQ(1, control("status"));
    EXPECT_EQ(report, linesOf(m_folder.file("err")));

    EXPECT_EQ(1, control("observe"));
    EXPECT_EQ(report, linesOf(m_folder.file("err")));
}

TEST_F(StrangeTelephone, IsQuotedWhenItsErrorIsAText) {
    answerWith(R"({"seq":1,"error":"not today"})");

    EXPECT_EQ(1, control("status"));
    EXPECT_EQ((Lines{"orvane-ctl: not today"}), linesOf(m_folder.file("err")));

    EXPECT_EQ(1, control("observe"));
    EXPECT_EQ((Lines{"orvane-ctl: not today"}), linesOf(m_folder.file("err")));
}

TEST_F(StrangeTelephone, IsNotAnsweredForWhenStandardOutputIsFull) {
    const Lines report{"orvane-ctl: cannot write to standard output: No space left on device"};

    answerWith(R"({"seq":1,"reply":{"running":true},"end":true})");
    EXPECT_EQ(1, control("status", "/dev/full"));
    EXPECT_EQ(report, linesOf(m_folder.file("err")));

    EXPECT_EQ(1, control("observe", "/dev/full"));
    EXPECT_EQ(report, linesOf(m_folder.file("err")));
}

TEST_F(StrangeTelephone, IsLeftAtOnceOnASignal) {
    for (const int number : {SIGINT, SIGTERM}) {
        std::promise<void> asked;
        ControlServer silent;
        std::string error;
        ASSERT_EQ(ControlServer::Listening::BEGUN,
                  silent.listen(
                      m_folder.file("silent"), [&asked](LineConnection&, const std::string&) { asked.set_value(); },
                      [](LineConnection&) {}, error))
            << error;
        Process call({ORVANE_CTL, "--control", m_folder.file("silent"), "call", "isRunning"}, m_folder.file("out"),
                     m_folder.file("err"));
        ASSERT_EQ(std::future_status::ready, asked.get_future().wait_for(std::chrono::seconds(20)));

        call.signal(number);

        EXPECT_EQ(1, call.wait());
        EXPECT_TRUE(linesOf(m_folder.file("out")).empty());
        EXPECT_EQ((Lines{"orvane-ctl: interrupted"}), linesOf(m_folder.file("err")));
    }
}

TEST(Help, IsNotGivenWhenStandardOutputIsFull) {
    const TemporaryFolder folder;

    EXPECT_EQ(1, Process({ORVANE_CTL, "--help"}, "/dev/full", folder.file("err")).wait());

    EXPECT_EQ((Lines{"orvane-ctl: cannot write to standard output: No space left on device"}),
              linesOf(folder.file("err")));
}
