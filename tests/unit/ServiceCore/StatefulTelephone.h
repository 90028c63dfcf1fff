#pragma once

#include "TestTelephone.h"

#include <string>

/// A telephone that can be brought into every state that can be reached. Worker threads cannot be made in it unless a
/// test allows them: a login that is admitted then shows itself as a line of the log.
class StatefulTelephone : public TestTelephone {
protected:
    /// The service's state, from what it says when it is asked for something that it refuses there.
    ServiceState state() {
        if (service->isRunning()) {
            service->start();
            return textIn("start() - cannot launch start().", "m_state[", "]") == "START" ? START : CONNECTED;
        }
        service->sipVoicemailStatusProcessed("", "", false);
        return static_cast<ServiceState>(
            std::stoi(textIn("sipVoicemailStatusProcessed - service is not running", "state: ", "")));
    }

    void configuredOnInit() {
        platform.threads.refuse = true;
        initialise();
    }
    void deconfiguredOnInit() {
        platform.store.set(PldsTags::ORVANE_API_SERVER_ADDRESS, "");
        configuredOnInit();
    }
    void configured() {
        configuredOnInit();
        deliverGroup();
    }
    void connected() {
        connectWithEmptyCloud();
        platform.threads.refuse = true;
    }
    void stopped() {
        connected();
        service->stop();
    }
    void stoppedOnNetworkDown() {
        connected();
        interfaceChanges("down");
    }
    void configuredOnNetworkUp() {
        stoppedOnNetworkDown();
        interfaceChanges("up");
    }
    void deconfigured() {
        connected();
        service->resetUserData();
    }
    void reach(ServiceState target) {
        switch (target) {
        case INITIALIZED:
            break;
        case CONFIGURED_ON_INIT:
            configuredOnInit();
            break;
        case DECONFIGURED_ON_INIT:
            deconfiguredOnInit();
            break;
        case CONFIGURED:
            configured();
            break;
        case CONFIGURED_ON_NETWORK_UP:
            configuredOnNetworkUp();
            break;
        case CONNECTED:
            connected();
            break;
        case DECONFIGURED:
            deconfigured();
            break;
        case STOP:
            stopped();
            break;
        case STOP_ON_NETWORK_DOWN:
            stoppedOnNetworkDown();
            break;
        default:
            FAIL() << "no way into state " << target;
        }
        ASSERT_EQ(target, state());
        forgetRecords();
    }

    void interfaceChanges(const std::string& value) { platform.store.change(PldsTags::INTERFACE_STATUS, value); }
    void serverTypeChanges(const std::string& value) { platform.store.change(PldsTags::SERVER_TYPE, value); }
    TestDataManager::Result deliverGroup(const std::vector<std::pair<std::string, std::string>>& values = {}) {
        return platform.dataManager.deliverGroup(values);
    }
    /// asyncLogin let a login through (and found no thread for it).
    bool loginWasAdmitted() const { return logged(2, "asyncLogin() failed to create thread!"); }
    void forgetRecords() {
        platform.log.clear();
        platform.network.requests.clear();
        platform.store.writes.clear();
        platform.securityLog.records.clear();
        observer.clear();
    }

private:
    std::string textIn(const std::string& line, const std::string& begin, const std::string& end) const {
        const auto& lines = platform.log.lines();
        for (auto one = lines.rbegin(); one != lines.rend(); ++one) {
            if (one->text.compare(0, line.size(), line) == 0) {
                const std::size_t from = one->text.find(begin) + begin.size();
                return one->text.substr(from, end.empty() ? std::string::npos : one->text.find(end, from) - from);
            }
        }
        ADD_FAILURE() << "no line " << line;
        return "-1";
    }
};

inline const std::vector<ServiceState>& reachableStates() {
    static const std::vector<ServiceState> states = {INITIALIZED,
                                                     CONFIGURED_ON_INIT,
                                                     DECONFIGURED_ON_INIT,
                                                     CONFIGURED,
                                                     CONFIGURED_ON_NETWORK_UP,
                                                     CONNECTED,
                                                     DECONFIGURED,
                                                     STOP,
                                                     STOP_ON_NETWORK_DOWN};
    return states;
}
/// Name of a parametrised test.
inline std::string stateName(const testing::TestParamInfo<ServiceState>& info) {
    static const char* const names[] = {"Initialized",     "ConfiguredOnInit", "DeconfiguredOnInit",    "Configured",
                                        "MobilityWaiting", "MobilityReady",    "ConfiguredOnNetworkUp", "Start",
                                        "Connected",       "Deconfiguring",    "Deconfigured",          "Stop",
                                        "StopOnMobility",  "StopOnNetworkDown"};
    return names[info.param];
}
