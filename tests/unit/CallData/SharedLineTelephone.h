#pragma once

#include "TestTelephone.h"

#include <string>
#include <vector>

/// A telephone whose model has shared lines, with call log synchronisation on.
class SharedLineTelephone : public TestTelephone {
protected:
    using Lines = std::vector<CloudAnswers::GrantedLine>;
    using Calls = std::vector<CloudAnswers::Call>;

    SharedLineTelephone() {
        withSharedLines();
        withCallLog();
    }

    /// Logs in with these grants; without an observer nothing else is downloaded.
    void connectWithLines(const Lines& lines) {
        expectToken();
        expectExtension();
        expectGrants(lines);
        if (service->getNoOfObservers() != 0) {
            expectFullCallLog();
        }
        expectWebSocketToken();
        connect();
        ASSERT_TRUE(service->isRunning());
        forgetRecords();
    }
    /// The same, with every line matched by an overview notification and its (empty) log downloaded; the line's
    /// token is "t" and its id, its number "+49" and its id.
    void connectWithReadyLines(const Lines& lines) {
        connectWithLines(lines);
        for (const auto& line : lines) {
            expectFullLineLog(line.id, "t" + line.id);
            overview("+49" + line.id + "@example", line.name);
        }
        checkQuiet();
        forgetRecords();
    }

    std::string grantPath() const { return path(own("/grant")); }
    std::string linePath(const std::string& id) const {
        return path("/restapi/v1.0/account/~/extension/" + id + "/call-log-sync");
    }
    Exchange& expectFullLineLog(const std::string& id, const std::string& syncToken, const Calls& calls = {}) {
        return platform.network
            .expectGet(linePath(id) + "?syncType=FSync&recordCount=25&view=Simple&showDeleted=false&statusGroup=All")
            .answers(200, CloudAnswers::callLog(syncToken, calls));
    }
    Exchange& expectIncrementalLineLog(const std::string& id, const std::string& usedToken,
                                       const std::string& syncToken, const Calls& calls = {}) {
        return platform.network
            .expectGet(linePath(id) +
                       "?syncType=ISync&recordCount=25&view=Simple&showDeleted=true&syncToken=" + usedToken)
            .answers(200, CloudAnswers::callLog(syncToken, calls));
    }
    /// A connection that cannot be used counts as "no answer"; so does a status like 500.
    Exchange& withoutAnswer(Exchange& exchange) { return exchange.answers(500, "out of order"); }

    void overview(const std::string& uri, const std::string& shortDescription) {
        service->overviewChangedNotification(uri, shortDescription, true, 1, LINE_VISUAL_ALERT_LAMP);
    }
    BcaLineType line(const std::string& id) {
        BcaLineType copy;
        EXPECT_TRUE(service->getCopyOfBcaLineFromList(id, copy)) << "no line " << id;
        return copy;
    }
    bool hasLine(const std::string& id) {
        BcaLineType copy;
        return service->getCopyOfBcaLineFromList(id, copy);
    }
    /// The line's next synchronisation is a full one, without one of the user's own line.
    void emptyLineToken(const std::string& id) {
        BcaLineType withoutToken = line(id);
        withoutToken.callLogSyncToken.clear();
        service->replaceBcaLineInList(withoutToken);
    }
    /// Record text of an answered inbound call on a line.
    static std::string received(const std::string& callId, const std::string& lineId) {
        return CloudAnswers::recordText(CloudAnswers::call(callId), "Received", "+49301", "Anna", "Bert",
                                        "+49" + lineId);
    }
    void forgetRecords() {
        platform.log.clear();
        platform.network.requests.clear();
        platform.store.writes.clear();
        observer.clear();
    }
};
