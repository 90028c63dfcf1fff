#include "support/Process.h"
#include "support/TestCertificates.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

/// A telephone with a service that does not come down.
class StubbornTelephone : public testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/orvane-phone-XXXXXX";
        m_folder = ::mkdtemp(name);
        m_phone = std::make_unique<Process>(
            std::vector<std::string>{ORVANE_PHONE, "--json", "--ca", m_certificates.authority().certificate, "--model",
                                     "KD24", "--mac", "M", "--service", STUBBORN_SERVICE, "--control",
                                     m_folder + "/socket"},
            m_folder + "/out", m_folder + "/err");
        const auto limit = Clock::now() + std::chrono::seconds(20);
        while (linesOf(m_folder + "/out").empty() && Clock::now() < limit) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ASSERT_EQ("{\"event\":\"ready\",\"control\":\"" + m_folder + "/socket\"}", outputLine(0));
    }
    void TearDown() override {
        m_phone.reset();
        const std::string command = "rm -r '" + m_folder + "'";
        EXPECT_EQ(0, std::system(command.c_str()));
    }

    std::string outputLine(std::size_t number) const {
        const std::vector<std::string> lines = linesOf(m_folder + "/out");
        return number < lines.size() ? lines[number] : "(none)";
    }

    TestCertificates m_certificates;
    std::string m_folder;
    std::unique_ptr<Process> m_phone;
};

} // namespace

TEST_F(StubbornTelephone, SaysThatItsServiceDoesNotComeDownAndLeavesInTime) {
    const auto begin = Clock::now();
    m_phone->signal(SIGTERM);

    EXPECT_EQ(1, m_phone->wait());

    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(3));
    EXPECT_EQ("{\"event\":\"stopped\"}", outputLine(1));
    EXPECT_EQ((std::vector<std::string>{"orvane-phone: the service does not come down"}), linesOf(m_folder + "/err"));
}

TEST_F(StubbornTelephone, LeavesAtOnceOnASecondSignal) {
    m_phone->signal(SIGINT);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const auto begin = Clock::now();
    m_phone->signal(SIGINT);

    EXPECT_EQ(1, m_phone->wait());

    EXPECT_LT(Clock::now() - begin, std::chrono::milliseconds(1000));
    EXPECT_EQ("{\"event\":\"stopped\"}", outputLine(1));
}

TEST_F(StubbornTelephone, SaysThatALibraryWithoutInvokerCannotBeCalled) {
    Process call({ORVANE_CTL, "--control", m_folder + "/socket", "call", "isRunning"}, m_folder + "/call.out",
                 m_folder + "/call.err");

    EXPECT_EQ(1, call.wait());

    EXPECT_TRUE(linesOf(m_folder + "/call.out").empty());
    ASSERT_EQ(1U, linesOf(m_folder + "/call.err").size());
    EXPECT_NE(std::string::npos, linesOf(m_folder + "/call.err")[0].find("createOrvaneServiceInvoker"));
}

TEST_F(StubbornTelephone, AnswersItsOwnCommandsWithoutInvoker) {
    Process status({ORVANE_CTL, "--control", m_folder + "/socket", "item", "SERVER_TYPE"}, m_folder + "/item.out",
                   m_folder + "/item.err");

    EXPECT_EQ(0, status.wait());

    EXPECT_EQ((std::vector<std::string>{R"({"name":"SERVER_TYPE","value":"7"})"}), linesOf(m_folder + "/item.out"));
}

TEST(PhoneProcess, TakesTheEndOfTheFirstThreadAloneForThatOfTheFirstLogin) {
    char name[] = "/tmp/orvane-phone-XXXXXX";
    const std::string folder = ::mkdtemp(name);
    TestCertificates certificates;
    Process phone({ORVANE_PHONE, "--json", "--once", "--ca", certificates.authority().certificate, "--model", "KD24",
                   "--mac", "M", "--service", SLOW_LOGIN_SERVICE, "--control", folder + "/socket"},
                  folder + "/out", folder + "/err");

    EXPECT_EQ(0, phone.wait()) << "the service was not running";

    const std::string command = "rm -r '" + folder + "'";
    EXPECT_EQ(0, std::system(command.c_str()));
}
