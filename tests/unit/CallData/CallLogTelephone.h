#pragma once

#include "TestTelephone.h"

#include <string>
#include <vector>

/// A telephone that synchronises its call log and has an observer for it.
class CallLogTelephone : public TestTelephone {
protected:
    using Batch = std::vector<std::string>;
    using Call = CloudAnswers::Call;

    CallLogTelephone() {
        withCallLog();
        withObserver();
    }

    /// A login whose full synchronisation brings these calls.
    void connectWith(const std::vector<Call>& calls, const std::string& syncToken = "c1") {
        expectToken();
        expectExtension();
        expectGrants();
        expectFullCallLog(syncToken, calls);
        expectWebSocketToken();
        connect();
    }
    /// The polling timer expires and the synchronisation goes from `usedToken` to `syncToken`.
    Exchange& expectPoll(const std::string& usedToken, const std::string& syncToken,
                         const std::vector<Call>& calls = {}) {
        return expectIncrementalCallLog(usedToken, syncToken, calls);
    }
    void poll() { passSeconds(60); }
    bool isPolling() const { return platform.context.running(60000).size() == 1; }
    bool awaitsRecord() const { return platform.context.running(10000).size() == 1; }

    Batch fullBatch() const { return lastBatch("orvaneFullSync", OrvaneServiceTypes::DATA_CALL_LOG); }
    Batch incrementalBatch() const { return lastBatch("orvaneIncrementalSync", OrvaneServiceTypes::DATA_CALL_LOG); }
    static std::string received(const Call& call) {
        return CloudAnswers::recordText(call, "Received", call.fromNumber, call.fromName);
    }
    static std::string missed(const Call& call) {
        return CloudAnswers::recordText(call, "Missed", call.fromNumber, call.fromName);
    }
    static std::string dialled(const Call& call) {
        return CloudAnswers::recordText(call, "Dialled", call.toNumber, call.toName);
    }
    std::string lastDialled() const { return platform.store.get(PldsTags::LAST_DIALLED_NUMBER); }
    std::string viewedItem() const { return platform.store.get(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS); }
};
