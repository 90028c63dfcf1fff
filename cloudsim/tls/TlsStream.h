#pragma once

#include "net/Stream.h"
#include "tls/OpenSslPointers.h"

namespace cloudsim {

/// The server's end of a TLS connection. The socket belongs to the caller.
class TlsStream final : public Stream {
public:
    TlsStream(int socket, const TlsContext& context);

    Outcome handshake() override;
    Outcome readSome(char* buffer, std::size_t capacity, std::size_t& count) override;
    Outcome writeSome(const char* bytes, std::size_t size, std::size_t& count) override;
    void sayGoodbye() override;
    short wantedEvents() const override { return m_wanted; }
    bool hasBufferedInput() const override { return SSL_pending(m_session.get()) > 0; }
    std::string peerName() const override;

private:
    Outcome outcome(int result);

    TlsContext m_context;
    TlsSession m_session;
    short m_wanted = 0;
    bool m_failed = false;
};

} // namespace cloudsim
