#include "Bodies.h"
#include "logging/LogSink.h"
#include "network/BareClient.h"
#include "network/HostTelephone.h"
#include "network/LoopbackServer.h"
#include "support/TestCertificates.h"

#include <jansson.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace {

using Clock = std::chrono::steady_clock;

double microseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::micro>(duration).count();
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void print(const char* name, const std::vector<double>& ours, const std::vector<double>& floor, double target) {
    const double our = median(ours);
    const double bare = median(floor);
    std::printf("{\"name\":\"%s\",\"ours\":%.1f,\"floor\":%.1f,\"ratio\":%.3f,\"target\":%.2f,\"unit\":\"us\"}\n", name,
                our, bare, our / bare, target);
}

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

constexpr const char* prefix = "/MODEL/MAC1";
constexpr int callsOfALogin = 20;

/// The provider's answers. Every incremental call log brings one call that is new, of the session that ended last.
class Provider {
public:
    explicit Provider(const CertificateFiles& files)
        : m_server(files.certificate, files.key, [this](const std::string& target) { return bodyOf(target); }) {
        m_server.greetWith(
            R"([{"type":"ConnectionDetails","messageId":"m1","status":200,"wsc":{"token":"wsc-1","sequence":1}},)"
            R"({"creationTime":"2026-01-01T00:00:00Z","maxConnectionsPerSession":5,"recoveryBufferSize":30,)"
            R"("recoveryTimeout":300,"idleTimeout":600,"absoluteTimeout":86400}])");
        m_server.answerFrames([](const std::string& frame) { return confirmation(frame); });
    }

    LoopbackServer& server() { return m_server; }
    void callEnds(int number) { m_lastCall = number; }
    static std::string endOfCall(int number) {
        return R"([{"type":"ServerNotification","messageId":"n"},{"event":)"
               R"("/restapi/v1.0/account/1/extension/4711/presence?detailedTelephonyState=true","ownerId":"4711",)"
               R"("body":{"activeCalls":[{"telephonyStatus":"NoCall","telephonySessionId":")" +
               Bodies::sessionOf(number) + R"("}]}}])";
    }

private:
    static std::string confirmation(const std::string& frame) {
        json_t* root = json_loads(frame.c_str(), 0, nullptr);
        const char* id = json_string_value(json_object_get(json_array_get(root, 0), "messageId"));
        const std::string reply =
            std::string(R"([{"type":"ClientRequest","messageId":")") + (id == nullptr ? "" : id) +
            R"(","status":200},{"id":"sub-1","creationTime":"2026-01-01T00:00:00Z","status":"Active","eventFilters":)"
            R"(["/restapi/v1.0/account/1/extension/4711/presence?detailedTelephonyState=true",)"
            R"("/restapi/v1.0/account/1/extension/4711/message-store?direction=Inbound&type=Voicemail",)"
            R"("/restapi/v1.0/account/1/extension/4711/presence/dnd"],)"
            R"("expirationTime":"2026-01-01T01:00:00Z","expiresIn":3600}])";
        json_decref(root);
        return reply;
    }

    std::string bodyOf(const std::string& target) {
        if (contains(target, "/auth/token")) {
            return R"({"accessToken":"T1","expiresIn":3600})";
        }
        if (contains(target, "/wstoken")) {
            return R"({"ws_access_token":"W1","uri":"wss://127.0.0.1:)" + std::to_string(m_server.port()) +
                   R"(/ws","expires_in":300})";
        }
        if (contains(target, "/presence")) {
            return R"({"dndStatus":"TakeAllCalls","extension":{"id":4711}})";
        }
        if (contains(target, "/grant")) {
            return R"({"records":[]})";
        }
        if (contains(target, "/call-log-sync?syncType=ISync")) {
            return Bodies::callLog(m_lastCall, 1);
        }
        if (contains(target, "/call-log-sync")) {
            return Bodies::callLog(0, callsOfALogin);
        }
        if (contains(target, "/address-book-sync")) {
            return Bodies::phonebookPage(0, 50, "token");
        }
        if (contains(target, "/large")) {
            return m_large;
        }
        return R"({"id":4711})";
    }

    const std::string m_large = Bodies::callLog(0, 108); // 45 kB
    std::atomic<int> m_lastCall{0};
    LoopbackServer m_server;
};

std::string own(const char* resource) {
    return std::string(prefix) + "/restapi/v1.0/account/~/extension/~" + resource;
}

const std::string webSocketTokenTarget = std::string(prefix) + "/restapi/oauth/wstoken";
const std::string subscriptionRequest =
    R"([{"type":"ClientRequest","messageId":"1","method":"POST","path":"/restapi/v1.0/subscription"},{"eventFilters":)"
    R"(["/restapi/v1.0/account/~/extension/~/presence?detailedTelephonyState=true",)"
    R"("/restapi/v1.0/account/~/extension/~/message-store?direction=Inbound&type=Voicemail",)"
    R"("/restapi/v1.0/account/~/extension/~/presence/dnd"],"deliveryMode":{"transportType":"WebSocket"}}])";

void measureGet(Provider& provider, const std::string& authorities, int turns) {
    HostTelephone telephone(provider.server().port(), authorities);
    const std::size_t frames = provider.server().framesReceived();
    telephone.init();
    provider.server().awaitFrames(frames + 1);
    telephone.observer().awaitCalls(callsOfALogin);
    BareClient bare(provider.server().port(), authorities);
    std::vector<double> ours;
    std::vector<double> floor;
    const std::string target = own("/large");
    const std::size_t length = bare.request("GET", target).size();
    for (int turn = 0; turn < turns; ++turn) {
        OrvaneService::Headers requestHeaders;
        OrvaneService::Headers responseHeaders;
        OrvaneService::StatusCode status = HttpClientIfc::STATUS_NONE;
        std::string body;
        Clock::time_point begun = Clock::now();
        const bool answered =
            telephone.service().connectionHandler(target, std::string(), HttpClientIfc::HTTP_GET, body, requestHeaders,
                                                  responseHeaders, status, std::string(), 0);
        ours.push_back(microseconds(Clock::now() - begun));
        if (!answered || body.size() != length) {
            throw std::runtime_error("the service did not get the whole answer");
        }
        begun = Clock::now();
        const std::string bareBody = bare.request("GET", target);
        floor.push_back(microseconds(Clock::now() - begun));
        if (bareBody.size() != length) {
            throw std::runtime_error("the floor did not get the whole answer");
        }
    }
    print("kept-alive GET of 45 kB", ours, floor, 1.20);
}

void measureEvent(Provider& provider, const std::string& authorities, int turns) {
    HostTelephone telephone(provider.server().port(), authorities);
    const std::size_t frames = provider.server().framesReceived();
    telephone.init();
    provider.server().awaitFrames(frames + 1);
    telephone.observer().awaitCalls(callsOfALogin);
    BareClient bare(provider.server().port(), authorities);
    const std::string target =
        own("/call-log-sync?syncType=ISync&recordCount=100&view=Simple&showDeleted=true&syncToken=x");
    std::vector<double> ours;
    std::vector<double> floor;
    for (int turn = 0; turn < turns; ++turn) {
        const int number = callsOfALogin + turn;
        provider.callEnds(number);
        const std::size_t calls = telephone.observer().calls();
        const Clock::time_point sent = provider.server().send(Provider::endOfCall(number));
        ours.push_back(microseconds(telephone.observer().awaitCalls(calls + 1) - sent));

        const Clock::time_point begun = Clock::now();
        const std::string body = bare.request("GET", target);
        json_t* root = json_loads(body.c_str(), 0, nullptr);
        floor.push_back(microseconds(Clock::now() - begun));
        if (root == nullptr) {
            throw std::runtime_error("the floor cannot parse the answer");
        }
        json_decref(root);
    }
    print("road of one event, one record", ours, floor, 1.35);
}

void bareLogin(int port, const std::string& authorities) {
    BareClient rest(port, authorities);
    for (const std::string& target :
         {std::string(prefix) + "/auth/token", own(""), own("/presence"), own("/grant"),
          own("/call-log-sync?syncType=FSync&recordCount=100&view=Simple&showDeleted=false&statusGroup=All"),
          own("/address-book-sync?syncType=FSync&perPage=50")}) {
        json_decref(json_loads(rest.request("GET", target).c_str(), 0, nullptr));
    }
    json_decref(json_loads(rest.request("POST", webSocketTokenTarget).c_str(), 0, nullptr));
    BareClient channel(port, authorities);
    channel.openWebSocket("/ws?access_token=W1");
    json_decref(json_loads(channel.readFrame().c_str(), 0, nullptr));
    channel.sendFrame(subscriptionRequest);
    json_decref(json_loads(channel.readFrame().c_str(), 0, nullptr));
}

void measureLogin(Provider& provider, const std::string& authorities, int turns) {
    std::vector<double> ours;
    std::vector<double> floor;
    for (int turn = 0; turn < turns; ++turn) {
        {
            HostTelephone telephone(provider.server().port(), authorities);
            const std::size_t frames = provider.server().framesReceived();
            const Clock::time_point begun = Clock::now();
            telephone.init();
            ours.push_back(microseconds(provider.server().awaitFrames(frames + 1) - begun));
        }
        const std::size_t frames = provider.server().framesReceived();
        const Clock::time_point begun = Clock::now();
        bareLogin(provider.server().port(), authorities);
        floor.push_back(microseconds(provider.server().awaitFrames(frames + 1) - begun));
    }
    print("init to the subscription's request", ours, floor, 1.25);
}

int turnsFrom(int argc, char** argv) {
    constexpr const char* option = "--turns=";
    if (argc == 2 && std::strncmp(argv[1], option, std::strlen(option)) == 0) {
        return std::atoi(argv[1] + std::strlen(option));
    }
    return argc == 1 ? 1000 : 0;
}

} // namespace

int main(int argc, char** argv) try {
    const int turns = turnsFrom(argc, argv);
    std::string error;
    if (turns < 1) {
        std::fprintf(stderr, "usage: orvane-bench-network [--turns=NUMBER]\n");
        return 2;
    }
    LogSink::Options log;
    log.level = 2;
    if (!LogSink::configure(log, error)) {
        throw std::runtime_error(error);
    }
    // The server writes by OpenSSL, without MSG_NOSIGNAL, to telephones that may have gone already.
    std::signal(SIGPIPE, SIG_IGN);
    TestCertificates certificates;
    Provider provider(certificates.server());
    const std::string authorities = certificates.authority().certificate;
    measureGet(provider, authorities, turns);
    measureEvent(provider, authorities, turns);
    measureLogin(provider, authorities, turns < 20 ? turns : turns / 10);
    return 0;
} catch (const std::exception& exception) {
    std::fprintf(stderr, "orvane-bench-network: %s\n", exception.what());
    return 1;
}
