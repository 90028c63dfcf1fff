#include "support/Process.h"
#include "support/TemporaryFolder.h"
#include "support/TestCertificates.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

constexpr rlim_t longestFile = 64 * 1024;

/// A telephone whose store takes some small items and then no more.
class FullStore : public testing::Test {
protected:
    void startPhone(const Lines& furtherArguments = {}) {
        Lines arguments = {ORVANE_PHONE, "--json",
                           "--ca",       m_certificates.authority().certificate,
                           "--model",    "KD24",
                           "--mac",      "M",
                           "--service",  STUBBORN_SERVICE,
                           "--control",  m_folder.file("socket"),
                           "--store",    m_folder.file("store")};
        arguments.insert(arguments.end(), furtherArguments.begin(), furtherArguments.end());
        m_phone = std::make_unique<Process>(arguments, m_folder.file("out"), m_folder.file("err"), longestFile);
    }
    void awaitPhone() {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (linesOf(m_folder.file("out")).empty() && std::chrono::steady_clock::now() < limit) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    /// The exit status of orvane-ctl; what it prints is in "ctl.out" and "ctl.err".
    int control(const Lines& command) {
        Lines arguments = {ORVANE_CTL, "--control", m_folder.file("socket")};
        arguments.insert(arguments.end(), command.begin(), command.end());
        return Process(arguments, m_folder.file("ctl.out"), m_folder.file("ctl.err")).wait();
    }
    Lines linesIn(const std::string& name) const { return linesOf(m_folder.file(name)); }
    /// A value that does not fit into the store.
    static std::string tooLong() { return std::string(longestFile + longestFile / 2, '7'); }

    TestCertificates m_certificates;
    TemporaryFolder m_folder;
    std::unique_ptr<Process> m_phone;
};

} // namespace

TEST_F(FullStore, KeepsATelephoneFromStartingWithoutTheItemsOfItsCommandLine) {
    startPhone({"--set", "LAST_DIALLED_NUMBER=" + tooLong()});

    EXPECT_EQ(2, m_phone->wait());

    EXPECT_TRUE(linesIn("out").empty());
    EXPECT_EQ((Lines{"orvane-phone: the store " + m_folder.file("store") + " cannot be written"}), linesIn("err"));
}

TEST_F(FullStore, RefusesAnItemAndKeepsItsOldValue) {
    startPhone({"--set", "LAST_DIALLED_NUMBER=1"});
    awaitPhone();

    EXPECT_EQ(1, control({"item", "LAST_DIALLED_NUMBER=" + tooLong()}));

    EXPECT_TRUE(linesIn("ctl.out").empty());
    EXPECT_EQ((Lines{"orvane-ctl: the store cannot be written"}), linesIn("ctl.err"));
    EXPECT_EQ(0, control({"item", "LAST_DIALLED_NUMBER"}));
    EXPECT_EQ((Lines{R"({"name":"LAST_DIALLED_NUMBER","value":"1"})"}), linesIn("ctl.out"));
}

TEST_F(FullStore, LeavesTheInterfaceAsItIs) {
    startPhone();
    awaitPhone();
    int written = 0;
    while (written < 50 && control({"item", "LAST_DIALLED_NUMBER=" + std::to_string(written)}) == 0) {
        ++written;
    }
    ASSERT_LT(written, 50);

    EXPECT_EQ(1, control({"interface", "down"}));

    EXPECT_EQ((Lines{"orvane-ctl: the store cannot be written"}), linesIn("ctl.err"));
    EXPECT_EQ(0, control({"item", "INTERFACE_STATUS"}));
    EXPECT_EQ((Lines{R"({"name":"INTERFACE_STATUS","value":"up"})"}), linesIn("ctl.out"));
}
