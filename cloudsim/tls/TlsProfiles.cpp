#include "tls/TlsProfiles.h"

#include <algorithm>
#include <stdexcept>

namespace cloudsim {
namespace {

using Purpose = CertificateRequest::Purpose;
constexpr long daySeconds = 24L * 3600;

/// The certificate that a profile shows; it stands at the profile's name.
Identity identityFor(const std::string& profile, CertificateKit& kit) {
    CertificateRequest request{Purpose::SERVER, "localhost", kit.alternativeNames()};
    if (profile == "untrusted") {
        Identity stranger = issue({Purpose::AUTHORITY, "Another Authority", ""}, nullptr);
        return issue(request, &stranger);
    }
    if (profile == "self-signed")
        return issue(request, nullptr);
    if (profile == "wrong-host")
        request = {Purpose::SERVER, "other.example", "DNS:other.example"};
    if (profile == "expired") {
        request.validFromSeconds = -30 * daySeconds;
        request.validUntilSeconds = -daySeconds;
    }
    if (profile == "not-yet-valid")
        request.validFromSeconds = 30 * daySeconds;
    return issue(request, &kit.authority());
}

void use(SSL_CTX* context, const Identity& identity) {
    if (SSL_CTX_use_certificate(context, identity.certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context, identity.key.get()) != 1)
        throw std::runtime_error("cannot use a certificate");
}

} // namespace

TlsProfiles::TlsProfiles(CertificateKit& kit, bool requireClientCertificate)
    : m_kit(kit), m_requireClientCertificate(requireClientCertificate) {}

const std::vector<std::string>& TlsProfiles::names() {
    static const std::vector<std::string> names{"trusted",       "untrusted",   "wrong-host", "expired",
                                                "not-yet-valid", "self-signed", "tls1.1",     "refused"};
    return names;
}

std::string TlsProfiles::selected() {
    std::lock_guard lock(m_mutex);
    return m_selected;
}

bool TlsProfiles::select(const std::string& name) {
    if (std::find(names().begin(), names().end(), name) == names().end())
        return false;
    std::lock_guard lock(m_mutex);
    m_selected = name;
    return true;
}

TlsContext TlsProfiles::context() {
    std::lock_guard lock(m_mutex);
    if (m_selected == "refused")
        return nullptr;
    TlsContext& context = m_contexts[m_selected];
    if (!context)
        context = make(m_selected);
    return context;
}

TlsContext TlsProfiles::make(const std::string& name) {
    TlsContext context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    static constexpr unsigned char sessionIdContext[] = "orvane-cloud";
    SSL_CTX_set_session_id_context(context.get(), sessionIdContext, sizeof sessionIdContext - 1);
    SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
    SSL_CTX_set_mode(context.get(), SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    if (name == "tls1.1") {
        SSL_CTX_set_security_level(context.get(), 0);
        SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
        SSL_CTX_set_max_proto_version(context.get(), TLS1_1_VERSION);
    }
    if (name == "trusted" || name == "tls1.1")
        use(context.get(), m_kit.server());
    else
        use(context.get(), identityFor(name, m_kit));
    if (m_requireClientCertificate) {
        X509_STORE_add_cert(SSL_CTX_get_cert_store(context.get()), m_kit.authority().certificate.get());
        SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
    }
    return context;
}

} // namespace cloudsim
