#include "rest/HttpsHandler.h"

#include "channel/ChannelConnection.h"
#include "faults/BodyFaults.h"
#include "faults/Delivery.h"
#include "tls/TlsStream.h"

#include <random>

namespace cloudsim {
namespace {

using Milliseconds = std::chrono::milliseconds;
constexpr std::chrono::minutes idleTimeout(10);

bool wantsUpgrade(const HttpRequest& request) {
    const std::string* upgrade = request.header("upgrade");
    return upgrade != nullptr && toLower(*upgrade) == "websocket";
}

Milliseconds drawn(Milliseconds latency, Milliseconds jitter) {
    if (jitter.count() == 0)
        return latency;
    static thread_local std::mt19937_64 random(std::random_device{}());
    return latency + Milliseconds(static_cast<long>(random() % static_cast<unsigned long>(jitter.count() + 1)));
}

} // namespace

void HttpsHandler::setAddresses(const Address& main, const Address& alternate) {
    m_main = main;
    m_alternate = alternate;
}

void HttpsHandler::serve(Connection& connection) {
    TlsContext context = m_tls.context();
    if (!context)
        return connection.reset();
    if (!connection.begin(std::make_unique<TlsStream>(connection.socket(), context)))
        return;
    HttpReader reader(connection);
    while (true) {
        HttpRequest request;
        switch (reader.next(request, idleTimeout)) {
        case HttpReader::Result::END:
            return;
        case HttpReader::Result::MALFORMED: {
            HttpResponse response = errorResponse(400, "CMN-100", "Request cannot be read");
            response.closes = true;
            connection.write(responseText(response));
            return;
        }
        case HttpReader::Result::REQUEST:
            if (!exchange(connection, request, reader))
                return;
        }
    }
}

bool HttpsHandler::waitAsTold(Connection& connection, const FaultEngine::Hit& hit) {
    constexpr Milliseconds holdStep(10);
    while (hit.actions.hold && m_cloud.faults.isArmed(hit.ids))
        if (!connection.pause(holdStep))
            return false;
    Milliseconds latency = drawn(hit.actions.latency, hit.actions.jitter);
    return latency.count() == 0 || connection.pause(latency);
}

bool HttpsHandler::exchange(Connection& connection, const HttpRequest& request, HttpReader& reader) {
    auto number = m_cloud.journal.add(connection.number(), connection.localPort(), request);
    FaultEngine::Hit hit = m_cloud.faults.hit(request.method, request.target);
    const FaultActions& actions = hit.actions;
    if (!waitAsTold(connection, hit))
        return false;
    if (actions.reset == FaultActions::Reset::BEFORE) {
        connection.reset();
        return false;
    }
    if (wantsUpgrade(request) && !actions.replacesAnswer()) {
        ChannelConnection channel(connection, m_cloud.hub);
        m_cloud.journal.setStatus(number, channel.upgrade(request));
        channel.run(reader.takeLeftover());
        return false;
    }

    std::vector<CloudEvent> events;
    HttpResponse response =
        actions.replacesAnswer() ? replacement(request, actions) : m_cloud.state.with([&](State& state) {
            return m_cloud.router.answer(state, request, connection.peerName(), authorityOf(request), events);
        });
    if (!actions.body)
        response.body = spoiled(response.body, actions);
    response.status = actions.answerStatus.value_or(response.status);
    response.headers.insert(response.headers.end(), actions.headers.begin(), actions.headers.end());
    response.closes = !request.keepAlive;
    m_cloud.journal.setStatus(number, response.status);
    bool keeps = deliver(connection, response, actions);
    for (const auto& event : events)
        m_cloud.hub.publish(event);
    return keeps;
}

HttpResponse HttpsHandler::replacement(const HttpRequest& request, const FaultActions& actions) const {
    if (!actions.redirect.empty()) {
        std::string location = actions.redirect;
        if (location == "same")
            location = "https://" + authorityOf(request) + request.target;
        else if (location == "relative")
            location = request.target;
        else if (location == "port")
            location = "https://" + toText(m_alternate) + request.target;
        return {actions.status.value_or(302), {{"Location", location}}, actions.body.value_or("")};
    }
    int status = actions.status.value_or(200);
    if (actions.body)
        return {status, {{"Content-Type", "application/json;charset=utf-8"}}, *actions.body};
    if (actions.emptyAnswer || actions.randomBytes > 0 || !hasBody(status))
        return {status, {}, ""};
    return errorResponse(status, "CMN-211", "The request was not carried out");
}

std::string HttpsHandler::authorityOf(const HttpRequest& request) const {
    const std::string* host = request.header("host");
    return host != nullptr && !host->empty() ? *host : toText(m_main);
}

} // namespace cloudsim
