#include "support/Process.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

/// The lines of a program's help; ends with status 0 and says nothing else.
std::vector<std::string> helpOf(std::vector<std::string> command) {
    const TemporaryFolder folder;
    command.emplace_back("--help");
    EXPECT_EQ(0, Process(command, folder.file("out"), folder.file("err")).wait());
    EXPECT_TRUE(linesOf(folder.file("err")).empty());
    return linesOf(folder.file("out"));
}

std::size_t count(const std::vector<std::string>& lines, const std::string& line) {
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
}

} // namespace

class HelpOnItems : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(HelpOnItems, NamesThem) {
    const std::vector<std::string> help = helpOf(GetParam());

    EXPECT_EQ(1U, count(help, "  ORVANE_API_SYNC_CALL_LOG"));
    EXPECT_EQ(1U, count(help, "  FUNCTION_KEY_ID<N>"));
    EXPECT_EQ(1U, count(help, "  missed-logg-count"));
}

INSTANTIATE_TEST_SUITE_P(Programs, HelpOnItems,
                         testing::Values(std::vector<std::string>{ORVANE_PHONE},
                                         std::vector<std::string>{ORVANE_CTL, "configure"},
                                         std::vector<std::string>{ORVANE_CTL, "item"}));

class Help : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(Help, TellsTheExitStatuses) {
    EXPECT_EQ(1U, count(helpOf(GetParam()), "Exit status: 0 good, 1 failed, 2 bad usage."));
}

INSTANTIATE_TEST_SUITE_P(Programs, Help,
                         testing::Values(std::vector<std::string>{ORVANE_PHONE}, std::vector<std::string>{ORVANE_CTL},
                                         std::vector<std::string>{ORVANE_CTL, "item"},
                                         std::vector<std::string>{ORVANE_CTL, "observe"}));
