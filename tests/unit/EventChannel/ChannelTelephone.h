#pragma once

#include "FrameJson.h"
#include "TestTelephone.h"

#include <string>
#include <vector>

/// A telephone whose event channel the test drives as the platform would: through the callbacks of the WebSocket, the
/// timers and the store.
class ChannelTelephone : public TestTelephone {
protected:
    struct Setup {
        bool callLog = true;
        bool dnd = true;
        std::vector<std::string> sharedLines = {};
        std::vector<std::string> watched = {}; ///< extension ids of colleagues on function keys
    };
    /// Contents of a "ConnectionDetails" frame.
    struct Details {
        std::string recoveryState = ""; ///< empty: absent
        int recoveryBufferSize = 3;
        int recoveryTimeout = 120;
        int idleTimeout = 60;
    };

    static constexpr int idleMilliseconds = 54000;
    static constexpr int heartbeatMilliseconds = 600;
    static constexpr int restoreMilliseconds = 30000;
    static constexpr int recoveryMilliseconds = (120 - 45000) * 1000;
    static constexpr int interfaceRecoveryMilliseconds = 120000;
    static constexpr int pollingMilliseconds = 60000;
    static constexpr int callRecordMilliseconds = 10000;
    static constexpr int renewalMilliseconds = 1800000;

    /// Logged in, with a socket asked for; the records are cleared behind it.
    void logIn(const Setup& setup) {
        const auto set = [this](const std::string& item, bool on) {
            platform.store.set(item, on ? PldsTags::VALUE_TRUE : PldsTags::VALUE_FALSE);
        };
        set(PldsTags::ORVANE_API_SYNC_CALL_LOG, setup.callLog);
        set(PldsTags::ORVANE_API_SYNC_DND, setup.dnd);
        int key = 100;
        for (const std::string& id : setup.watched) {
            withWatchedColleague(std::to_string(key++), id);
        }
        std::vector<CloudAnswers::GrantedLine> lines;
        for (const std::string& id : setup.sharedLines) {
            lines.push_back({id, "line " + id});
            withSharedLines();
        }
        expectToken();
        expectExtension();
        if (setup.dnd) {
            expectPresence();
            for (const std::string& id : setup.watched) {
                expectColleaguePresence(id);
            }
        }
        expectGrants(lines);
        if (setup.callLog || setup.dnd) {
            expectWebSocketToken();
        }
        connect();
        ASSERT_TRUE(service->isRunning());
        clearRecords();
    }
    void logIn() { logIn(Setup()); }

    /// An open socket whose session stands; the subscription was requested and is not answered.
    void openSession(const Setup& setup, const Details& details) {
        logIn(setup);
        service->onOpen(0);
        receive(connectionDetails(details));
        ASSERT_EQ(OrvaneService::WS_STATE_READY, service->getWebSocketState());
    }
    void openSession() { openSession(Setup(), Details()); }

    /// A session whose subscription is confirmed as it was requested.
    void subscribeAll(const Setup& setup) {
        openSession(setup, Details());
        receive(reply(TestJson::messageId(lastFrame()),
                      subscription("sub-1", "2026-01-01T00:00:00Z", "Active", 1800, requestedFilters(lastFrame()))));
        clearRecords();
    }
    void subscribeAll() { subscribeAll(Setup()); }

    void receive(const std::string& frame) {
        service->onMessage(frame);
        platform.locks.checkNothingHeld();
    }

    static std::string connectionDetails(const Details& details) {
        std::string data = R"({"creationTime":"2026-01-01T00:00:00Z","maxConnectionsPerSession":5,)";
        data += "\"recoveryBufferSize\":" + std::to_string(details.recoveryBufferSize) +
                ",\"recoveryTimeout\":" + std::to_string(details.recoveryTimeout) +
                ",\"idleTimeout\":" + std::to_string(details.idleTimeout) + ",\"absoluteTimeout\":86400";
        if (!details.recoveryState.empty()) {
            data += ",\"recoveryState\":\"" + details.recoveryState + "\"";
        }
        return R"([{"type":"ConnectionDetails","messageId":"details"},)" + data + "}]";
    }

    /// Any frame that brings a new session context.
    static std::string contextFrame(const std::string& token, int sequence) {
        return R"([{"type":"Error","messageId":"any","status":200,"wsc":{"token":")" + token + R"(","sequence":)" +
               std::to_string(sequence) + "}}]";
    }

    /// A reply to the request of that id; an empty `data` leaves the second element out.
    static std::string reply(const std::string& messageId, const std::string& data) {
        return R"([{"type":"ClientRequest","messageId":")" + messageId + R"(","status":200})" +
               (data.empty() ? "" : "," + data) + "]";
    }

    /// Data of a reply; `filters` are JSON texts joined by commas, `more` further members.
    static std::string subscription(const std::string& id, const std::string& creationTime, const std::string& status,
                                    int expiresIn, const std::string& filters, const std::string& more = "") {
        return R"({"id":")" + id + R"(","creationTime":")" + creationTime + R"(","status":")" + status +
               R"(","eventFilters":[)" + filters + R"(],"expirationTime":"2026-01-01T01:00:00Z","expiresIn":)" +
               std::to_string(expiresIn) + more + "}";
    }

    static std::string notification(const std::string& event, const std::string& ownerId, const std::string& body) {
        std::string data = R"({"event":")" + event + "\"";
        if (!ownerId.empty()) {
            data += R"(,"ownerId":")" + ownerId + "\"";
        }
        if (!body.empty()) {
            data += ",\"body\":" + body;
        }
        return R"([{"type":"ServerNotification","messageId":"notice"},)" + data + "}]";
    }

    /// The filters of a request as the cloud confirms them: JSON texts joined by commas, with the extension's number.
    static std::string requestedFilters(const std::string& frame) {
        const TestJson::Value root = TestJson::parse(frame);
        const json_t* filters = json_object_get(json_array_get(root.get(), 1), "eventFilters");
        std::string text;
        for (std::size_t index = 0; index < json_array_size(filters); ++index) {
            std::string filter = json_string_value(json_array_get(filters, index));
            const std::size_t tilde = filter.find("extension/~");
            if (tilde != std::string::npos) {
                filter.replace(tilde, 11, std::string("extension/") + extensionId);
            }
            text += (text.empty() ? "\"" : ",\"") + filter + "\"";
        }
        return text;
    }

    std::vector<std::string>& frames() { return platform.webSocket.frames; }
    std::string lastFrame() {
        if (frames().empty()) {
            ADD_FAILURE() << "no frame was sent";
            return "[{}]";
        }
        return frames().back();
    }
    std::string lastUrl() { return platform.webSocket.urls.empty() ? std::string() : platform.webSocket.urls.back(); }
    std::size_t socketsOpened() { return platform.webSocket.urls.size(); }

    RecordedLog& log() { return platform.log; }
    ManualContext& timers() { return platform.context; }
    bool isTimerRunning(int milliseconds) { return !timers().running(milliseconds).empty(); }
    /// The one running timer of that duration; a failure, and 0, when there is none or more than one.
    int runningTimer(int milliseconds) {
        const std::vector<int> ids = timers().running(milliseconds);
        EXPECT_EQ(1u, ids.size()) << "running timers of " << milliseconds << " ms";
        return ids.size() == 1 ? ids.front() : 0;
    }
    /// What was done to timers, without the activity of the frame itself.
    std::vector<std::string> timerCalls() {
        std::vector<std::string> calls;
        for (const std::string& call : timers().calls) {
            if (call.rfind("reset", 0) != 0) {
                calls.push_back(call);
            }
        }
        return calls;
    }
    void interfaceChanges(const std::string& value) { platform.store.change(PldsTags::INTERFACE_STATUS, value); }

    /// The session context that a reconnection would present now. Only a running service connects.
    std::string sessionContext() {
        EXPECT_TRUE(service->isRunning());
        ScriptedWebSocket& webSocket = platform.webSocket;
        const bool running = webSocket.running;
        const bool recovering = service->getRecoverWebSocketConnection();
        service->setRecoverWebSocketConnection(true);
        service->openWebSocketConnection();
        service->setRecoverWebSocketConnection(recovering);
        const std::string url = webSocket.urls.back();
        webSocket.urls.pop_back();
        webSocket.running = running;
        const std::size_t position = url.find("&wsc=");
        return position == std::string::npos ? std::string() : url.substr(position + 5);
    }

    /// What a flush of the recovery buffer sends now.
    std::vector<std::string> flushed() {
        frames().clear();
        service->setWebSocketState(OrvaneService::WS_STATE_SENDING_RECOVERY_BUFFER);
        service->sendRecoveryBuffer();
        return frames();
    }

    void clearRecords() {
        log().clear();
        timers().calls.clear();
        frames().clear();
        platform.network.requests.clear();
        platform.store.writes.clear();
        platform.team.lamps.clear();
        observer.clear();
    }
};
