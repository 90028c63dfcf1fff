#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzTelephone.h"

#include <array>
#include <vector>

namespace {

/// A telephone's life, step by step as the input has it.
class Session {
public:
    explicit Session(FuzzInput& input) : m_input(input) {
        m_phone.tampering = [this](const ScriptedNetwork::Request&, Exchange& exchange) { tamper(exchange); };
    }

    void begin() {
        switch (m_input.choice(4)) {
        case 0: // the login thread has not begun
            m_phone.initialise();
            break;
        case 1:
            m_phone.logIn();
            break;
        case 2:
            m_phone.openSession();
            break;
        default:
            m_phone.subscribe();
        }
        m_input.line();
    }

    /// One line: a letter for the kind of step, and what the kind needs.
    void step() {
        using Step = void (Session::*)();
        constexpr std::array<Step, 9> steps = {{&Session::receiveFrame, &Session::receiveKnownFrame, &Session::passTime,
                                                &Session::callRemotely, &Session::changeSocket, &Session::changeItem,
                                                &Session::configure, &Session::spoilRequests,
                                                &Session::changeSiblings}};
        const Step chosen = steps[m_input.choice(steps.size())];
        m_phone.drive([&] { (this->*chosen)(); });
        m_input.line();
        m_phone.settle();
    }

private:
    OrvaneService& service() { return *m_phone.service; }

    void receiveFrame() { service().onMessage(m_input.line()); }

    void receiveKnownFrame() {
        const std::vector<std::string>& sent = m_phone.platform.webSocket.frames;
        const std::string request = sent.empty() ? std::string("[{}]") : sent.back();
        const std::string id = sent.empty() ? std::string("unknown") : TestJson::messageId(request);
        const std::string events = "/restapi/v1.0/account/1/extension/4711/";
        static const std::array<const char*, 4> recoveries = {"", "Successful", "Failed", "Other"};
        switch (m_input.choice(8)) {
        case 0: {
            const char* recovery = recoveries[m_input.choice(recoveries.size())];
            const int number = static_cast<int>(m_input.choice(200)) - 20;
            service().onMessage(FuzzTelephone::connectionDetails({recovery, number % 7, number, number}));
            break;
        }
        case 1:
            service().onMessage(FuzzTelephone::reply(
                id, FuzzTelephone::subscription("sub-1", std::to_string(m_input.choice(3)), "Active", 60,
                                                FuzzTelephone::requestedFilters(request))));
            break;
        case 2:
            service().onMessage(FuzzTelephone::reply(id, ""));
            break;
        case 3:
            service().onMessage(FuzzTelephone::notification(
                events + "presence?detailedTelephonyState=true", "4711",
                R"({"activeCalls":[{"telephonyStatus":"NoCall","telephonySessionId":"s-1"}]})"));
            break;
        case 4:
            service().onMessage(
                FuzzTelephone::notification(events + "message-store", "4711", R"({"extensionId":4711})"));
            break;
        case 5:
            service().onMessage(
                FuzzTelephone::notification("/restapi/v1.0/account/1/extension/5001/presence?dnd", "5001",
                                            R"({"extensionId":"5001","dndStatus":"DoNotAcceptAnyCalls"})"));
            break;
        case 6:
            service().onMessage(R"([{"type":"Heartbeat","messageId":")" + id + R"("}])");
            break;
        default:
            service().onMessage(R"([{"type":"Error","messageId":")" + id + R"(","status":400}])");
        }
    }

    void passTime() {
        static const std::array<long long, 8> milliseconds = {1, 600, 10000, 30000, 60000, 120000, 600000, 3600000};
        m_phone.platform.context.advance(milliseconds[m_input.choice(milliseconds.size())]);
    }

    void callRemotely() {
        switch (m_input.choice(15)) {
        case 0:
            return service().clearSyncTokens();
        case 1:
            return service().ageMissedCall(m_input.line());
        case 2:
            return service().ageMissedCalls({m_input.line(), "2"});
        case 3:
            return service().deleteCallLogEntry(m_input.line());
        case 4:
            return static_cast<void>(service().deleteAllCallLogEntries());
        case 5:
            return service().refreshCallLogEntries();
        case 6:
            return service().refreshPhonebookEntries();
        case 7:
            return service().refreshVoicemailEntries();
        case 8:
            return service().reloadAllData();
        case 9:
            return service().addNewContact("<contact><firstname>" + m_input.line() + "</firstname></contact>");
        case 10:
            return service().deleteSingleContact(m_input.line());
        case 11:
            return service().updateUserPresenceStatus(m_input.choice(2) == 1);
        case 12:
            return static_cast<void>(
                service().sipVoicemailStatusProcessed(m_input.line(), "line 900", m_input.choice(2) == 1));
        case 13:
            return service().asyncLogin();
        default:
            return static_cast<void>(service().isMissedCallViewed(m_input.line()));
        }
    }

    void changeSocket() {
        switch (m_input.choice(6)) {
        case 0:
            return service().onOpen(0);
        case 1:
            return service().onError(static_cast<int>(m_input.choice(200)), "reset");
        case 2:
            return service().onClose(1000 + static_cast<int>(m_input.choice(16)), static_cast<int>(m_input.choice(8)),
                                     "closed");
        case 3:
            return service().onPong();
        case 4:
            return service().onPongTimeout();
        default:
            m_phone.platform.network.closeByPeer();
        }
    }

    void changeItem() {
        MemoryStore& store = m_phone.platform.store;
        switch (m_input.choice(6)) {
        case 0:
            return store.change(PldsTags::INTERFACE_STATUS, "down");
        case 1:
            return store.change(PldsTags::INTERFACE_STATUS, "up");
        case 2:
            return store.change(PldsTags::SERVER_TYPE, "5");
        case 3:
            return store.change(PldsTags::SERVER_TYPE, "7");
        case 4:
            return store.change(PldsTags::FUNCTION_KEY_ID + std::to_string(100 + m_input.choice(3)), "59");
        default:
            return store.change(PldsTags::FUNCTION_KEY_ID + std::to_string(100 + m_input.choice(3)), "1");
        }
    }

    void configure() {
        static const std::array<const std::string*, 5> items = {
            &PldsTags::ORVANE_API_SERVER_ADDRESS, &PldsTags::ORVANE_API_SYNC_CALL_LOG,
            &PldsTags::ORVANE_API_SYNC_PHONEBOOK, &PldsTags::ORVANE_API_SYNC_INTERVAL, &PldsTags::ORVANE_API_SYNC_DND};
        const unsigned kind = m_input.choice(7);
        if (kind == 5) {
            std::string error;
            service().validateGroupAndSetData(error, "group");
        } else if (kind == 6) {
            service().resetUserData();
        } else {
            m_phone.platform.dataManager.deliver(*items[kind], m_input.line());
        }
    }

    /// How the next requests go, until the next such step.
    void spoilRequests() {
        m_fault = m_input.choice(9);
        m_faults = m_input.choice(4);
    }

    void changeSiblings() {
        if (m_input.choice(2) == 0) {
            service().devicesChanged();
        } else {
            service().overviewChangedNotification(m_input.line(), "", m_input.choice(2) == 1, 1,
                                                  LINE_VISUAL_ALERT_LAMP);
        }
    }

    void tamper(Exchange& exchange) {
        if (m_faults == 0) {
            return;
        }
        --m_faults;
        switch (m_fault) {
        case 0:
            exchange.failsToSend();
            break;
        case 1:
            exchange.breaksOff();
            break;
        case 2:
            exchange.thenCloses();
            break;
        case 3:
            exchange.asksToWait(1);
            break;
        case 4:
            exchange.redirectsTo(302, "https://other.example/elsewhere");
            break;
        case 5:
            exchange.redirectsTo(302, "nowhere");
            break;
        case 6:
            exchange.answers(401);
            break;
        case 7:
            exchange.answers(500, "{}");
            break;
        default:
            exchange.answers(200, "{\"records\":[{}]}");
        }
    }

    FuzzInput& m_input;
    unsigned m_fault = 0;
    unsigned m_faults = 0;
    FuzzTelephone m_phone; // the last member: its end makes requests
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    Session session(input);
    session.begin();
    for (int steps = 0; !input.atEnd() && steps < 64; ++steps) {
        session.step();
    }
    return 0;
}
