#include "tls/TlsStream.h"

#include "tls/CertificateIssuer.h"

#include <openssl/err.h>

#include <poll.h>

#include <algorithm>

namespace cloudsim {

TlsStream::TlsStream(int socket, const TlsContext& context) : m_context(context), m_session(SSL_new(context.get())) {
    SSL_set_fd(m_session.get(), socket);
    SSL_set_accept_state(m_session.get());
}

Stream::Outcome TlsStream::outcome(int result) {
    if (result > 0)
        return Outcome::PROGRESS;
    switch (SSL_get_error(m_session.get(), result)) {
    case SSL_ERROR_WANT_READ:
        m_wanted = POLLIN;
        return Outcome::WOULD_BLOCK;
    case SSL_ERROR_WANT_WRITE:
        m_wanted = POLLOUT;
        return Outcome::WOULD_BLOCK;
    case SSL_ERROR_ZERO_RETURN:
        return Outcome::ENDED;
    default:
        m_failed = true;
        return Outcome::ENDED;
    }
}

Stream::Outcome TlsStream::handshake() {
    ERR_clear_error();
    return outcome(SSL_do_handshake(m_session.get()));
}

Stream::Outcome TlsStream::readSome(char* buffer, std::size_t capacity, std::size_t& count) {
    ERR_clear_error();
    int result = SSL_read(m_session.get(), buffer, static_cast<int>(std::min<std::size_t>(capacity, 1 << 20)));
    count = result > 0 ? static_cast<std::size_t>(result) : 0;
    return outcome(result);
}

Stream::Outcome TlsStream::writeSome(const char* bytes, std::size_t size, std::size_t& count) {
    ERR_clear_error();
    int result = SSL_write(m_session.get(), bytes, static_cast<int>(std::min<std::size_t>(size, 1 << 20)));
    count = result > 0 ? static_cast<std::size_t>(result) : 0;
    return outcome(result);
}

void TlsStream::sayGoodbye() {
    if (m_failed || SSL_is_init_finished(m_session.get()) == 0)
        return;
    ERR_clear_error();
    SSL_shutdown(m_session.get());
}

std::string TlsStream::peerName() const {
    Certificate certificate(SSL_get1_peer_certificate(m_session.get()));
    return certificate ? commonName(certificate.get()) : "";
}

} // namespace cloudsim
