#pragma once

#include "TestTelephone.h"

#include <string>
#include <utility>
#include <vector>

/// A telephone that synchronises do-not-disturb.
class PresenceTelephone : public TestTelephone {
protected:
    using Lamps = std::vector<std::pair<std::string, bool>>;

    PresenceTelephone() { withDnd(); }

    /// Logs in with that own status; colleagues on keys answer with theirs, in ascending order of their ids.
    void connectWith(const std::string& ownStatus,
                     const std::vector<std::pair<std::string, std::string>>& colleagues = {}) {
        expectToken();
        expectExtension();
        expectPresence(ownStatus);
        for (const auto& [id, status] : colleagues) {
            expectColleaguePresence(id, status);
        }
        expectGrants();
        expectWebSocketToken();
        connect();
        ASSERT_TRUE(service->isRunning());
        forgetRecords();
    }
    void forgetRecords() {
        platform.log.clear();
        platform.network.requests.clear();
        platform.store.writes.clear();
        platform.team.lamps.clear();
        platform.webSocket.frames.clear();
    }

    std::string presencePath() const { return path(own("/presence")); }
    std::string colleaguePath(const std::string& id) const {
        return path("/restapi/v1.0/account/~/extension/" + id + "/presence");
    }
    Exchange& expectPut(bool dnd) {
        return platform.network.expect(HttpClientIfc::HTTP_PUT, presencePath(),
                                       dnd ? "{\"dndStatus\": \"DoNotAcceptAnyCalls\"}"
                                           : "{\"dndStatus\": \"TakeAllCalls\"}");
    }

    /// What the telephone's own switch says.
    std::string dndItem() const { return platform.store.get(PldsTags::CALL_DND_ACTIVATED); }
    int dndWrites() const {
        int count = 0;
        for (const auto& write : platform.store.writes) {
            count += write.first == PldsTags::CALL_DND_ACTIVATED ? 1 : 0;
        }
        return count;
    }
    TestDataManager::Result setFeature(const std::string& value) {
        return platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, value);
    }
    bool handle(int status, std::string response) {
        return service->handleServerDndStatusResponse(static_cast<HttpClientIfc::eStatusCode>(status), response);
    }
    std::size_t threadCount() const { return platform.threads.spawned.size(); }
    /// Frames that ask for another set of events.
    std::size_t subscriptionUpdates() const {
        std::size_t count = 0;
        for (const std::string& frame : platform.webSocket.frames) {
            count += frame.find("\"PUT\"") != std::string::npos ? 1 : 0;
        }
        return count;
    }
    const Lamps& lamps() const { return platform.team.lamps; }
};
