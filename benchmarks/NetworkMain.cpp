#include "logging/LogSink.h"
#include "network/BareClient.h"
#include "network/BareRoad.h"
#include "network/HostTelephone.h"
#include "network/Provider.h"
#include "support/TestCertificates.h"

#include <jansson.h>
#include <sched.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <thread>

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

std::string own(const char* resource) {
    return std::string(Provider::prefix) + "/restapi/v1.0/account/~/extension/~" + resource;
}

const std::string webSocketTokenTarget = std::string(Provider::prefix) + "/restapi/oauth/wstoken";
const std::string subscriptionRequest =
    R"([{"type":"ClientRequest","messageId":"1","method":"POST","path":"/restapi/v1.0/subscription"},{"eventFilters":)"
    R"(["/restapi/v1.0/account/~/extension/~/presence?detailedTelephonyState=true",)"
    R"("/restapi/v1.0/account/~/extension/~/message-store?direction=Inbound&type=Voicemail",)"
    R"("/restapi/v1.0/account/~/extension/~/presence/dnd"],"deliveryMode":{"transportType":"WebSocket"}}])";

void logIn(HostTelephone& telephone, Provider& provider) {
    const std::size_t frames = provider.server().framesReceived();
    telephone.init();
    provider.server().awaitFrames(frames + 1);
    telephone.observer().awaitCalls(Provider::callsOfALogin);
}

/// Lets the other threads of this process, which share its processor, end what the former turn left to them.
void settle() {
    for (int yields = 0; yields < 20; ++yields) {
        std::this_thread::yield();
    }
}

void measureGet(Provider& provider, const std::string& authorities, int turns) {
    HostTelephone telephone(provider.server().port(), authorities);
    logIn(telephone, provider);
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

void measureEvent(Provider& provider, Provider& bareProvider, const std::string& authorities, int turns) {
    HostTelephone telephone(provider.server().port(), authorities);
    logIn(telephone, provider);
    BareClient bare(provider.server().port(), authorities);
    const std::string target =
        own("/call-log-sync?syncType=ISync&recordCount=100&view=Simple&showDeleted=true&syncToken=x");
    BareRoad bareRoad(bareProvider.server(), authorities, target);
    std::vector<double> ours;
    std::vector<double> floor;
    std::vector<double> sameRoad;
    for (int turn = 0; turn < turns; ++turn) {
        const int number = Provider::callsOfALogin + turn;
        provider.callEnds(number);
        bareProvider.callEnds(number);
        const std::size_t calls = telephone.observer().calls();
        settle();
        provider.server().send(Provider::endOfCall(number));
        const Clock::time_point arrived = telephone.observer().awaitCalls(calls + 1);
        ours.push_back(microseconds(arrived - provider.server().lastSent()));

        settle();
        const Clock::time_point begun = Clock::now();
        const std::string body = bare.request("GET", target);
        json_t* root = json_loads(body.c_str(), 0, nullptr);
        floor.push_back(microseconds(Clock::now() - begun));
        if (root == nullptr) {
            throw std::runtime_error("the floor cannot parse the answer");
        }
        json_decref(root);

        settle();
        sameRoad.push_back(microseconds(bareRoad.goes(Provider::endOfCall(number))));
    }
    print("road of one event, one record", ours, floor, 1.35);
    print("the same, its frame in the floor too", ours, sameRoad, 1.35);
}

void bareLogin(int port, const std::string& authorities) {
    BareClient rest(port, authorities);
    for (const std::string& target :
         {std::string(Provider::prefix) + "/auth/token", own(""), own("/presence"), own("/grant"),
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
            // A telephone that starts has read its authorities for no connection yet.
            std::filesystem::last_write_time(authorities, std::filesystem::file_time_type::clock::now());
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

/// Everything on the processor that runs now. How long a sleeping one takes to wake depends on whatever else runs, and
/// changes a hand-over from one thread to another more than all that is to be measured.
void stayOnOneProcessor() {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    if (sched_setaffinity(0, sizeof one, &one) != 0) {
        throw std::runtime_error("the benchmark cannot stay on one processor");
    }
}

struct Choice {
    bool spread = false;
    int turns = 1000;
    std::string only; ///< empty for all cases
};

bool choose(int argc, char** argv, Choice& choice) {
    const auto value = [](const char* argument, const char* option) {
        const std::size_t length = std::strlen(option);
        return std::strncmp(argument, option, length) == 0 ? argument + length : nullptr;
    };
    for (int index = 1; index < argc; ++index) {
        if (const char* turns = value(argv[index], "--turns=")) {
            choice.turns = std::atoi(turns);
        } else if (const char* only = value(argv[index], "--case=")) {
            choice.only = only;
        } else if (std::strcmp(argv[index], "--spread") == 0) {
            choice.spread = true;
        } else {
            return false;
        }
    }
    return choice.turns > 0 &&
           (choice.only.empty() || choice.only == "get" || choice.only == "event" || choice.only == "login");
}

} // namespace

int main(int argc, char** argv) try {
    Choice choice;
    if (!choose(argc, argv, choice)) {
        std::fprintf(stderr, "usage: orvane-bench-network [--turns=NUMBER] [--case=get|event|login] [--spread]\n"
                             "--spread: on all processors, not on one\n");
        return 2;
    }
    if (!choice.spread) {
        stayOnOneProcessor();
    }
    std::string error;
    LogSink::Options log;
    log.level = 2;
    if (!LogSink::configure(log, error)) {
        throw std::runtime_error(error);
    }
    // The server writes by OpenSSL, without MSG_NOSIGNAL, to telephones that may have gone already.
    std::signal(SIGPIPE, SIG_IGN);
    TestCertificates certificates;
    Provider provider(certificates.server());
    Provider bareProvider(certificates.server());
    const std::string authorities = certificates.authority().certificate;
    const auto wanted = [&choice](const char* name) { return choice.only.empty() || choice.only == name; };
    if (wanted("get")) {
        measureGet(provider, authorities, choice.turns);
    }
    if (wanted("event")) {
        measureEvent(provider, bareProvider, authorities, choice.turns);
    }
    if (wanted("login")) {
        measureLogin(provider, authorities, choice.turns < 20 ? choice.turns : choice.turns / 10);
    }
    return 0;
} catch (const std::exception& exception) {
    std::fprintf(stderr, "orvane-bench-network: %s\n", exception.what());
    return 1;
}
