#include "channel/ChannelLink.h"

#include "channel/Frames.h"

namespace cloudsim {

void ChannelLink::post(Outgoing outgoing) {
    std::lock_guard lock(m_mutex);
    if (m_connection == nullptr)
        return;
    m_outgoing.push_back(std::move(outgoing));
    m_connection->wake();
}

void ChannelLink::wake() {
    std::lock_guard lock(m_mutex);
    if (m_connection != nullptr)
        m_connection->wake();
}

void ChannelLink::sendText(std::string_view text, std::size_t fragmentBytes) {
    post({Outgoing::Kind::BYTES, encodeText(text, fragmentBytes), true});
}

void ChannelLink::sendBytes(std::string bytes) {
    post({Outgoing::Kind::BYTES, std::move(bytes), false});
}

void ChannelLink::close(int code, const std::string& reason) {
    post({Outgoing::Kind::CLOSE, encodeClose(code, reason), false});
}

void ChannelLink::reset() {
    post({Outgoing::Kind::RESET, "", false});
}

void ChannelLink::setSilent(bool silent) {
    m_silent = silent;
    wake();
}

void ChannelLink::setPongsFrozen(bool frozen) {
    m_pongsFrozen = frozen;
    wake();
}

std::deque<ChannelLink::Outgoing> ChannelLink::takeOutgoing() {
    std::lock_guard lock(m_mutex);
    return std::exchange(m_outgoing, {});
}

void ChannelLink::detach() {
    std::lock_guard lock(m_mutex);
    m_connection = nullptr;
    m_outgoing.clear();
}

} // namespace cloudsim
