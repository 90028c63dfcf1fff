#include "channel/ChannelConnection.h"

#include "base/Query.h"
#include "rest/RestRequest.h"

#include <algorithm>

namespace cloudsim {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;
constexpr Milliseconds timeStep(250);
constexpr std::chrono::seconds closeTimeout(2);

enum CloseCode : int { GOING_AWAY = 1001, PROTOCOL_ERROR = 1002 };

} // namespace

ChannelConnection::ChannelConnection(Connection& connection, ChannelHub& hub)
    : m_connection(connection), m_hub(hub), m_link(std::make_shared<ChannelLink>(connection)) {}

int ChannelConnection::upgrade(const HttpRequest& request) {
    Target target = splitTarget(request.target);
    const std::string* token = lastValue(target.query, "access_token");
    const std::string* context = lastValue(target.query, "wsc");
    const std::string* key = request.header("sec-websocket-key");
    const std::string* version = request.header("sec-websocket-version");
    auto holder = token == nullptr ? std::nullopt : m_hub.findHolder(*token);
    HttpResponse response;
    if (target.path != "/ws")
        response = errorResponse(404, "CMN-102", "Resource is not found");
    else if (request.method != "GET" || key == nullptr || version == nullptr || *version != "13")
        response = errorResponse(400, "CMN-100", "Upgrade cannot be read");
    else if (!holder)
        response = errorResponse(401, "TokenInvalid", "Token not found or expired");
    else
        response = {
            101, {{"Upgrade", "websocket"}, {"Connection", "Upgrade"}, {"Sec-WebSocket-Accept", acceptKey(*key)}}, ""};
    response.closes = response.status != 101;
    if (response.status == 101) {
        m_accepted = true;
        m_holder = *holder;
        m_context = context == nullptr ? "" : *context;
    }
    if (!m_connection.write(responseText(response)))
        m_accepted = false;
    return response.status;
}

void ChannelConnection::run(const std::string& leftover) {
    if (!m_accepted)
        return;
    m_lastMessage = Clock::now();
    m_limits = m_hub.open(m_link, m_holder, m_context);
    m_decoder.feed(leftover);
    bool going = leftover.empty() || readInput();
    while (going && writeOutgoing()) {
        sendLatePongs();
        switch (m_connection.wait(timeStep, !m_link->isSilent())) {
        case Connection::Waiting::INPUT:
            going = readInput();
            break;
        case Connection::Waiting::WOKEN:
        case Connection::Waiting::TIMED_OUT:
            break;
        case Connection::Waiting::CLOSING:
            going = false;
            break;
        }
        going = going && checkTimes();
    }
    m_link->detach();
    m_hub.ended(m_link);
}

bool ChannelConnection::writeOutgoing() {
    if (m_link->isSilent())
        return true;
    for (const auto& outgoing : m_link->takeOutgoing()) {
        if (outgoing.kind == ChannelLink::Outgoing::Kind::RESET) {
            m_connection.reset();
            return false;
        }
        if (!m_connection.write(outgoing.bytes))
            return false;
        if (outgoing.isMessage)
            m_lastMessage = Clock::now();
        if (outgoing.kind == ChannelLink::Outgoing::Kind::CLOSE)
            m_closeDeadline = std::min(m_closeDeadline, Clock::now() + closeTimeout);
    }
    return true;
}

bool ChannelConnection::readInput() {
    char bytes[16 * 1024];
    std::size_t count = 0;
    if (!m_connection.readAvailable(bytes, sizeof bytes, count))
        return false;
    m_decoder.feed({bytes, count});
    while (true) {
        Frame frame;
        switch (m_decoder.next(frame)) {
        case FrameDecoder::Result::INCOMPLETE:
            return true;
        case FrameDecoder::Result::BROKEN:
            m_connection.write(encodeClose(PROTOCOL_ERROR, "malformed frame"));
            return false;
        case FrameDecoder::Result::FRAME:
            if (!handle(frame))
                return false;
        }
    }
}

bool ChannelConnection::handle(const Frame& frame) {
    switch (frame.opcode) {
    case Frame::PING:
        m_heldPongs.push_back(frame.payload);
        sendLatePongs();
        return true;
    case Frame::CLOSE:
        if (m_closeDeadline == SteadyTime::max())
            m_connection.write(encodeFrame({Frame::CLOSE, true, frame.payload}));
        return false;
    case Frame::TEXT:
        m_lastMessage = Clock::now();
        m_hub.received(m_link, frame.payload);
        return true;
    default:
        return true;
    }
}

void ChannelConnection::sendLatePongs() {
    if (m_link->arePongsFrozen() || m_link->isSilent())
        return;
    for (const auto& payload : std::exchange(m_heldPongs, {}))
        m_connection.write(encodeFrame({Frame::PONG, true, payload}));
}

/// False when the channel is to end without further words.
bool ChannelConnection::checkTimes() {
    auto now = Clock::now();
    if (now >= m_closeDeadline)
        return false;
    if (m_closeDeadline != SteadyTime::max())
        return true;
    if (now >= m_limits.absoluteEnd) {
        m_hub.forget(m_link);
        m_link->close(GOING_AWAY, "absolute timeout");
        m_limits.absoluteEnd = SteadyTime::max();
    } else if (m_limits.idle.count() > 0 && now - m_lastMessage >= m_limits.idle) {
        m_link->close(GOING_AWAY, "idle timeout");
        m_limits.idle = std::chrono::seconds(0);
    }
    return true;
}

} // namespace cloudsim
