#include "orvane-ctl/Ask.h"

#include "events/JsonLine.h"
#include "transport/PeerJson.h"
#include "usage/ExitStatus.h"
#include "usage/StandardOutput.h"

#include <iostream>

namespace {

using Json = nlohmann::ordered_json;

constexpr int sequence = 1;

int fail(const std::string& reason) {
    std::cerr << "orvane-ctl: " << reason << '\n';
    return FAILED;
}

bool print(const Json& answer) {
    return StandardOutput::write("orvane-ctl", jsonLine(answer) + "\n");
}

/// The parameters of a reply, by name.
Json parametersOf(const Json& method) {
    Json named = Json::object();
    for (const Json& parameter : method.at("parameters")) {
        named[parameter.at("name").get<std::string>()] = parameter.at("value");
    }
    return named;
}

int reportRefusals(const Json& refusals) {
    for (const Json& refusal : refusals) {
        const auto name = refusal.at("name").get<std::string>();
        std::cerr << "orvane-ctl: " << (name.empty() ? "the group" : name) << ": "
                  << refusal.at("reason").get<std::string>() << '\n';
    }
    return refusals.empty() ? GOOD : FAILED;
}

int report(const Json& reply) {
    if (reply.contains("refused")) {
        return reportRefusals(reply["refused"]);
    }
    const bool isTold = reply.empty() || print(reply);
    return isTold && reply.value("result", true) ? GOOD : FAILED;
}

/// Reads up to the end of the answer.
int readAnswer(ControlClient& client, bool isCall, ControlClient::TimePoint until) {
    Json callReply = Json::object();
    for (;;) {
        std::string line;
        const ControlClient::Reading reading = client.read(line, until);
        if (reading != ControlClient::Reading::LINE) {
            return fail(reading == ControlClient::Reading::TIMEOUT ? "no answer in time" : "the telephone has ended");
        }
        const Json answer = PeerJson::parse(line);
        if (answer.contains("error")) {
            return fail(answer.at("error").get<std::string>());
        }
        if (answer.value("seq", 0) != sequence) {
            continue;
        }
        if (answer.contains("reply")) {
            return report(answer.at("reply"));
        }
        if (isCall && answer.contains("method")) {
            callReply = parametersOf(answer.at("method"));
        }
        if (isCall && answer.contains("end")) {
            return print(callReply) ? GOOD : FAILED;
        }
    }
}

} // namespace

int ask(ControlClient& client, const Request& request, ControlClient::TimePoint until) {
    Json message = {{"seq", sequence}};
    message.update(request.message);
    // A telephone that takes no more may have said why.
    client.send(jsonLine(message), until);
    try {
        return readAnswer(client, request.isCall, until);
    } catch (const Json::exception&) {
        return fail("the telephone's answer cannot be read");
    }
}
