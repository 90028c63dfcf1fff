#include "SharedLineTelephone.h"

using namespace CloudAnswers;

namespace {

class SharedLineDeletion : public SharedLineTelephone {
protected:
    SharedLineDeletion() { withObserver(); }

    /// The lines "21" and "22" hold these calls, the user's own log those.
    void connectWithCalls(const Calls& own, const Calls& onLine21, const Calls& onLine22) {
        connectWithReadyLines({{"21", "sales"}, {"22", "support"}});
        expectIncrementalCallLog("c1", "c2", own);
        expectIncrementalLineLog("21", "t21", "u21", onLine21);
        expectIncrementalLineLog("22", "t22", "u22", onLine22);
        passSeconds(60);
        forgetRecords();
    }
    Exchange& expectDeletion(const std::string& behindPrefix) {
        return platform.network.expect(HttpClientIfc::HTTP_DELETE, path(behindPrefix)).answers(204, "");
    }
    static std::string onLine(const std::string& line, const std::string& id) {
        return "/restapi/v1.0/account/~/extension/" + line + "/call-log/" + id;
    }
};

TEST_F(SharedLineDeletion, OfACallGoesToItsLine) {
    connectWithCalls({}, {}, {missedCall("7"), missedCall("8")});
    service->ageMissedCalls({"7", "8"});
    expectDeletion(onLine("22", "7"));

    service->deleteCallLogEntry("7");

    EXPECT_TRUE(logged(6, "deleteCallLogEntry() delete for bca line[22]"));
    EXPECT_EQ(1u, line("22").m_bcaLinesCcallLogMap.size());
    EXPECT_FALSE(service->isMissedCallViewed("7"));
    EXPECT_TRUE(service->isMissedCallViewed("8"));
}

TEST_F(SharedLineDeletion, OfACallInSeveralLogsNamesThemAllInOneRequest) {
    connectWithCalls({}, {call("7")}, {call("7")});
    // The lines had the call before the user's own log.
    expectIncrementalCallLog("c2", "c3", {call("7")});
    expectIncrementalLineLog("21", "u21", "v21");
    expectIncrementalLineLog("22", "u22", "v22");
    passSeconds(60);
    forgetRecords();
    expectDeletion(own("/call-log/7") + onLine("21", "7") + onLine("22", "7"));

    service->deleteCallLogEntry("7");

    EXPECT_EQ(1u, platform.network.requests.size());
    EXPECT_TRUE(line("21").m_bcaLinesCcallLogMap.empty());
    EXPECT_TRUE(line("22").m_bcaLinesCcallLogMap.empty());
    EXPECT_TRUE(observer.events.empty());
}

TEST_F(SharedLineDeletion, HasLeftTheLinesLogAndTheListsSemaphoreBeforeTheCloudIsAsked) {
    connectWithCalls({}, {call("7")}, {});
    std::vector<std::string> held;
    expectDeletion(onLine("21", "7")).whileAwaited([&] {
        held = platform.locks.held();
        EXPECT_TRUE(line("21").m_bcaLinesCcallLogMap.empty());
    });

    service->deleteCallLogEntry("7");

    EXPECT_EQ(std::vector<std::string>{"m_connectionSem"}, held);
}

} // namespace
