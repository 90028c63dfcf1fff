#include "TestTelephone.h"
#include "data/ServiceDataManager.h"
#include "threads/Threader.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <ostream>
#include <stdexcept>

namespace {

/// Shows which internal calls go through the virtual operations.
class DerivedService : public OrvaneService {
public:
    using OrvaneService::OrvaneService;

    bool isRunning() override { return running.value_or(OrvaneService::isRunning()); }
    bool connectionHandler(const std::string& path, std::string body, HttpClientIfc::HTTPMETHOD method,
                           std::string& responseData, Headers& requestHeaders, Headers& responseHeaders,
                           StatusCode& statusCode, std::string redirectionUrl, int requestCount) override {
        calls.emplace_back("connectionHandler");
        return OrvaneService::connectionHandler(path, body, method, responseData, requestHeaders, responseHeaders,
                                                statusCode, redirectionUrl, requestCount);
    }
    bool getToken() override {
        calls.emplace_back("getToken");
        return OrvaneService::getToken();
    }
    bool handleTokenResponse(StatusCode status, std::string& responseData) override {
        calls.emplace_back("handleTokenResponse");
        return OrvaneService::handleTokenResponse(status, responseData);
    }

    std::optional<bool> running; ///< what isRunning answers, instead of the truth
    std::vector<std::string> calls;
};

/// A telephone with everything on, a shared line that is ready, and a cloud that answers whatever it is asked.
class RunningTelephone : public TestTelephone {
public:
    /// Whether this sends a request.
    template <typename Action>
    bool sends(Action action) {
        const std::size_t before = platform.network.requests.size();
        action();
        return platform.network.requests.size() > before;
    }
    bool logsAfter(const std::function<void()>& action, int level, const std::string& text) {
        platform.log.clear();
        action();
        return logged(level, text);
    }
    bool opensSocket() {
        const std::size_t before = platform.webSocket.urls.size();
        service->openWebSocketConnection();
        return platform.webSocket.urls.size() > before;
    }
    bool losesItsServer() {
        return logsAfter([this] { platform.dataManager.deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, ""}}); }, 6,
                         "validateGroupAndSetData() stop");
    }
    bool stopsWithItsInterface() {
        return logsAfter([this] { platform.store.change(PldsTags::INTERFACE_STATUS, "down"); }, 6,
                         "manageableDataChanged() - stop");
    }
    bool restartsForAnotherServerType() {
        platform.context.calls.clear();
        platform.store.change(PldsTags::SERVER_TYPE, "8");
        const auto& calls = platform.context.calls;
        return std::any_of(calls.begin(), calls.end(), [](const auto& call) { return call.find("start ") == 0; });
    }
    bool stopsForAReset() {
        return logsAfter([this] { service->resetUserData(); }, 4, "resetUserData() stopping and deconfiguring service");
    }

protected:
    RunningTelephone() {
        withSharedLines();
        withCallLog();
        withPhonebook();
        withDnd();
        platform.network.answersUnexpected = [](const ScriptedNetwork::Request& request, Exchange& exchange) {
            exchange.answers(200, CloudAnswers::answerTo(request.target));
        };
        nameSemaphoresOfNextService();
        auto owned = std::make_unique<DerivedService>(new ServiceDataManager, new Threader);
        derived = owned.get();
        service = std::move(owned);
    }
    void TearDown() override {
        derived->running.reset();
        service->stop();
        TestTelephone::TearDown();
    }

    void connected() {
        connect();
        service->overviewChangedNotification("sip:900@provider.example", "line 900", true, 1, ELineVisualAlert());
        ASSERT_TRUE(service->isRunning());
        platform.log.clear();
        derived->calls.clear();
    }
    /// A redirection to nowhere ends the login where it stands.
    void loggingIn() {
        connected();
        service->stop();
        expectToken().redirectsTo(302, "https://other");
        ASSERT_THROW(service->start(), std::out_of_range);
        ASSERT_TRUE(service->isRunning());
    }

    DerivedService* derived = nullptr;
};

struct Operation {
    const char* name;
    bool (*acts)(RunningTelephone& telephone, OrvaneService& service); ///< calls it; whether it did its work
};

void PrintTo(const Operation& operation, std::ostream* stream) {
    *stream << operation.name;
}

const Operation operationsWhileRunning[] = {
    {"getExtension", [](auto& telephone, auto& service) { return telephone.sends([&] { service.getExtension(); }); }},
    {"getWebSocketAccessToken", [](auto&, auto& service) { return service.getWebSocketAccessToken(); }},
    {"openWebSocketConnection", [](auto& telephone, auto&) { return telephone.opensSocket(); }},
    {"addNewContact",
     [](auto& telephone, auto& service) {
         return telephone.sends([&] { service.addNewContact("<contact><firstname>Dora</firstname></contact>"); });
     }},
    {"updateEditedContact",
     [](auto& telephone, auto& service) {
         return telephone.sends(
             [&] { service.updateEditedContact("<contact><id>1</id><firstname>Dora</firstname></contact>"); });
     }},
    {"deleteSingleContact",
     [](auto& telephone, auto& service) { return telephone.sends([&] { service.deleteSingleContact("1"); }); }},
    {"updateUserPresenceStatus",
     [](auto& telephone, auto& service) { return telephone.sends([&] { service.updateUserPresenceStatus(true); }); }},
    {"sipVoicemailStatusProcessed",
     [](auto&, auto& service) {
         return service.sipVoicemailStatusProcessed("sip:4711@provider.example", "own", true);
     }},
    {"reloadAllDataIfUserChanged",
     [](auto& telephone, auto& service) { return telephone.sends([&] { service.reloadAllDataIfUserChanged(); }); }},
    {"resetUserData", [](auto& telephone, auto&) { return telephone.stopsForAReset(); }},
    {"validateGroupAndSetData", [](auto& telephone, auto&) { return telephone.losesItsServer(); }},
    {"interfaceStatusChanged", [](auto& telephone, auto&) { return telephone.stopsWithItsInterface(); }},
    {"serverTypeChanged", [](auto& telephone, auto&) { return telephone.restartsForAnotherServerType(); }},
};

std::string nameOf(const testing::TestParamInfo<Operation>& info) {
    return info.param.name;
}

class WhileRunning : public RunningTelephone, public testing::WithParamInterface<Operation> {};

TEST_P(WhileRunning, WorksWhileTheLoginIsUnderWay) {
    loggingIn();

    EXPECT_TRUE(GetParam().acts(*this, *service));
}

TEST_P(WhileRunning, AsksTheVirtualOperationWhetherTheServiceRuns) {
    connected();
    derived->running = false;

    EXPECT_FALSE(GetParam().acts(*this, *service));

    EXPECT_FALSE(platform.log.contains("isRunnnig[true]"));
    EXPECT_FALSE(platform.log.contains("is orvane in state running[true]"));
}

INSTANTIATE_TEST_SUITE_P(All, WhileRunning, testing::ValuesIn(operationsWhileRunning), nameOf);

const Operation operationsWhileConnected[] = {
    {"getCallLog",
     [](auto& telephone, auto& service) {
         return telephone.sends([&] {
             OrvaneService::Records records;
             bool fullSync = false;
             service.getCallLog(records, fullSync);
         });
     }},
    {"getBcaCallLog",
     [](auto& telephone, auto& service) {
         return telephone.sends([&] {
             OrvaneService::Records records;
             service.getBcaCallLog(records);
         });
     }},
    {"getPhonebook", [](auto& telephone, auto& service) { return telephone.sends([&] { service.getPhonebook(); }); }},
};

class WhileConnected : public RunningTelephone, public testing::WithParamInterface<Operation> {};

TEST_P(WhileConnected, SendsNothingBeforeTheLoginHasItsToken) {
    loggingIn();

    EXPECT_FALSE(GetParam().acts(*this, *service));
}

TEST_P(WhileConnected, SendsWhenTheLoginHasItsToken) {
    connected();

    EXPECT_TRUE(GetParam().acts(*this, *service));
}

INSTANTIATE_TEST_SUITE_P(All, WhileConnected, testing::ValuesIn(operationsWhileConnected), nameOf);

class VirtualOperations : public RunningTelephone {};

TEST_F(VirtualOperations, AreOnTheRoadOfEveryRequestAndEveryToken) {
    connected();

    service->hasUserChanged();

    EXPECT_EQ((std::vector<std::string>{"getToken", "connectionHandler", "handleTokenResponse", "connectionHandler"}),
              derived->calls);
}

} // namespace
