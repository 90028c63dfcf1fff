#include "CallLogTelephone.h"

#include <functional>

using namespace CloudAnswers;

namespace {

/// Which semaphores the call log's operations take, in which order, and that none of them is left out.
class CallLogLocks : public CallLogTelephone {
protected:
    const std::string& traceOf(const std::function<void()>& operation) {
        platform.locks.keepTrace();
        operation();
        return platform.locks.trace();
    }
    const std::string& traceOfSynchronisation() {
        return traceOf([this] { service->getCallLogs(); });
    }
};

TEST_F(CallLogLocks, OfAFullSynchronisation) {
    connectWith({missedCall("7"), missedCall("8")});
    service->ageMissedCalls({"7", "8"});
    service->clearSyncTokens();
    expectFullCallLog("c2", {missedCall("7")});

    EXPECT_EQ("m_callLogSyncTokenSem{m_callLogSem{}} m_connectionSem{request} m_callLogSyncTokenSem{} "
              "m_callLogSyncTokenSem{} m_callLogResponseSem{m_telephonySessionsSem{} m_callLogSem{}} "
              "m_callLogSem{write} m_observersSem{}",
              traceOfSynchronisation());
}

TEST_F(CallLogLocks, OfAnIncrementalSynchronisation) {
    connectWith({});
    expectPoll("c1", "c2", {call("1"), call("2")});

    EXPECT_EQ("m_callLogSyncTokenSem{} m_connectionSem{request} m_callLogSyncTokenSem{} m_callLogSyncTokenSem{} "
              "m_callLogResponseSem{m_telephonySessionsSem{} m_telephonySessionsSem{}} m_observersSem{}",
              traceOfSynchronisation());
}

TEST_F(CallLogLocks, OfAnAnswerThatIsRefused) {
    connectWith({});
    expectPoll("c1", "").answers(404, "gone");

    EXPECT_EQ("m_callLogSyncTokenSem{} m_connectionSem{request} m_callLogSyncTokenSem{} m_observersSem{}",
              traceOfSynchronisation());
}

TEST_F(CallLogLocks, OfARequestWithoutAnAnswer) {
    connectWith({});
    expectPoll("c1", "").answers(500, "");

    EXPECT_EQ("m_callLogSyncTokenSem{} m_connectionSem{request} m_callLogSyncTokenSem{} m_observersSem{}",
              traceOfSynchronisation());
}

TEST_F(CallLogLocks, OfAnAnswerWithoutRecords) {
    connectWith({});
    expectPoll("c1", "").answers(200, R"({"syncInfo":{"syncToken":"c2"}})");

    EXPECT_EQ("m_callLogSyncTokenSem{} m_connectionSem{request} m_callLogSyncTokenSem{} m_callLogSyncTokenSem{} "
              "m_callLogResponseSem{} m_observersSem{}",
              traceOfSynchronisation());
}

TEST_F(CallLogLocks, OfASynchronisationThatFindsTheServiceStopped) {
    connectWith({missedCall("7")});
    service->ageMissedCall("7");
    service->clearSyncTokens();
    service->stop();

    EXPECT_EQ("m_observersSem{}", traceOfSynchronisation());

    EXPECT_TRUE(service->isMissedCallViewed("7"));
}

TEST_F(CallLogLocks, OfACycle) {
    connectWith({});
    expectPoll("c1", "c2");

    EXPECT_EQ(
        "m_callLogSyncTokenSem{} m_connectionSem{request} m_callLogSyncTokenSem{} m_callLogSyncTokenSem{} "
        "m_callLogResponseSem{} m_observersSem{} m_bcaLineListSem{} write m_observersSem{} m_telephonySessionsSem{}",
        traceOf([this] { service->getCallLogsAndVoicemails(); }));
}

TEST_F(CallLogLocks, OfTheViewedCalls) {
    connectWith({missedCall("7")});

    EXPECT_EQ("m_callLogSem{write}", traceOf([this] { service->ageMissedCall("7"); }));
    EXPECT_EQ("m_callLogSem{write}", traceOf([this] { service->ageMissedCalls({"8", "9"}); }));
    EXPECT_EQ("m_callLogSem{}", traceOf([this] { service->isMissedCallViewed("7"); }));
}

TEST_F(CallLogLocks, OfADeletion) {
    connectWith({missedCall("7")});
    service->ageMissedCall("7");
    platform.network.expect(HttpClientIfc::HTTP_DELETE, path(own("/call-log/7"))).answers(204, "");

    EXPECT_EQ("m_callLogSem{write} m_bcaLineListSem{} m_connectionSem{request}",
              traceOf([this] { service->deleteCallLogEntry("7"); }));
}

TEST_F(CallLogLocks, OfATotalDeletion) {
    connectWith({missedCall("7")});
    service->ageMissedCall("7");
    service->refreshCallLogEntries();
    platform.network.expect(HttpClientIfc::HTTP_DELETE, path(own("/call-log"))).answers(204, "");

    EXPECT_EQ("m_connectionSem{request} m_callLogSem{write} m_callLogSyncTokenSem{}",
              traceOf([this] { service->deleteAllCallLogEntries(); }));

    expectFullCallLog("c2");
    runThreads();
}

} // namespace
