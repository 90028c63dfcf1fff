#include "logging/LogSink.h"

#include "logging/Logging.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace {

class LogSinkFile : public ::testing::Test {
protected:
    void configure(int level, bool showSecrets = false) {
        LogSink::Options options;
        options.level = level;
        options.file = file();
        options.showSecrets = showSecrets;
        std::string error;
        ASSERT_TRUE(LogSink::configure(options, error)) << error;
    }

    std::string file() const { return m_folder.file("telephone.log"); }

    std::vector<std::string> lines() const {
        std::ifstream stream(file());
        std::vector<std::string> found;
        for (std::string line; std::getline(stream, line);) {
            found.push_back(line);
        }
        return found;
    }

private:
    TemporaryFolder m_folder;
};

TEST_F(LogSinkFile, HoldsTimeLevelTagThreadAndMessageOfALine) {
    configure(6);

    std::thread([] {
        pthread_setname_np(pthread_self(), "getCallLog");
        logAppLine("Orvane Service", __FILE__, 4, __LINE__, "getCallLog() - %d of %s", 3, "line");
    }).join();

    ASSERT_EQ(1U, lines().size());
    const std::regex shape(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z 4 Orvane Service \[getCallLog\] )"
                           R"(getCallLog\(\) - 3 of line)");
    EXPECT_TRUE(std::regex_match(lines()[0], shape)) << lines()[0];
}

TEST_F(LogSinkFile, TakesLinesUpToItsLevelOnly) {
    configure(4);

    for (int level = 2; level <= 6; ++level) {
        logAppLine("Orvane Service", __FILE__, level, __LINE__, "level %d", level);
    }

    ASSERT_EQ(3U, lines().size());
    EXPECT_NE(std::string::npos, lines()[2].find(" 4 Orvane Service "));
    EXPECT_TRUE(loggingOnAppLine("Orvane Service", 4));
    EXPECT_FALSE(loggingOnAppLine("Orvane Service", 5));
}

TEST_F(LogSinkFile, KeepsAMessageOnOneLineWhateverItContains) {
    configure(6);

    logAppLine("Orvane Service", __FILE__, 4, __LINE__, "%s", "one\r\ntwo\tthree\x1b[31m\x7f Zoë");

    ASSERT_EQ(1U, lines().size());
    EXPECT_NE(std::string::npos, lines()[0].find("one\\x0d\\ntwo\\tthree\\x1b[31m\\x7f Zoë"));
}

TEST_F(LogSinkFile, HoldsNoTokenUnlessAskedTo) {
    configure(6);
    logAppLine("Orvane Service", __FILE__, 6, __LINE__, "m_accessToken[%s]", "A0123456789.secret");
    logAppLine("Orvane Service", __FILE__, 6, __LINE__, "sent %s", "A0123456789.secret");
    ASSERT_EQ(2U, lines().size());
    for (const std::string& line : lines()) {
        EXPECT_EQ(std::string::npos, line.find("secret")) << line;
        EXPECT_NE(std::string::npos, line.find("***")) << line;
    }

    configure(6, true);
    logAppLine("Orvane Service", __FILE__, 6, __LINE__, "m_accessToken[%s]", "A0123456789.secret");

    EXPECT_NE(std::string::npos, lines().back().find("m_accessToken[A0123456789.secret]"));
}

TEST_F(LogSinkFile, TakesAMessageOfMegabytesWhole) {
    configure(6);
    const std::string body(3U << 20U, 'x');

    logAppLine("Orvane Service", __FILE__, 6, __LINE__, "body[%s]", body.c_str());

    ASSERT_EQ(1U, lines().size());
    EXPECT_NE(std::string::npos, lines()[0].find("body[" + body + "]"));
}

TEST_F(LogSinkFile, KeepsTheLinesOfManyThreadsApart) {
    configure(6);
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([] {
            for (int line = 0; line < 100; ++line) {
                logAppLine("Orvane Service", __FILE__, 4, __LINE__, "one whole line");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    ASSERT_EQ(400U, lines().size());
    for (const std::string& line : lines()) {
        EXPECT_EQ(line.size() - std::string("] one whole line").size(), line.find("] one whole line")) << line;
    }
}

TEST(LogSink, RefusesAFileThatCannotBeWritten) {
    LogSink::Options options;
    options.file = "/proc/nothing/telephone.log";
    std::string error;

    EXPECT_FALSE(LogSink::configure(options, error));
    EXPECT_NE("", error);
}

TEST(LogSink, SaysHowManyLinesADeviceThatIsFullHasCost) {
    LogSink::Options options;
    options.level = 6;
    options.file = "/dev/full";
    std::string error;
    ASSERT_TRUE(LogSink::configure(options, error)) << error;
    logAppLine("Orvane Service", __FILE__, 4, __LINE__, "lost");
    logAppLine("Orvane Service", __FILE__, 4, __LINE__, "lost");
    const TemporaryFolder folder;
    options.file = folder.file("telephone.log");
    ASSERT_TRUE(LogSink::configure(options, error)) << error;

    logAppLine("Orvane Service", __FILE__, 4, __LINE__, "written");

    std::ifstream stream(options.file);
    std::string line;
    ASSERT_TRUE(std::getline(stream, line));
    EXPECT_NE(std::string::npos, line.find(" 2 Orvane Host ")) << line;
    EXPECT_NE(std::string::npos, line.find("lines of this log could not be written")) << line;
    ASSERT_TRUE(std::getline(stream, line));
    EXPECT_NE(std::string::npos, line.find("written")) << line;
}

} // namespace
