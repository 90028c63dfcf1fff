#pragma once

#include "tls/OpenSslPointers.h"

#include <string>

namespace cloudsim {

/// A certificate with its key.
struct Identity {
    Certificate certificate;
    PrivateKey key;
};

struct CertificateRequest {
    enum class Purpose { AUTHORITY, SERVER, CLIENT };
    Purpose purpose = Purpose::SERVER;
    std::string commonName;
    std::string alternativeNames;  ///< "DNS:localhost,IP:127.0.0.1"; may be empty
    long validFromSeconds = -3600; ///< from now
    long validUntilSeconds = 10L * 365 * 24 * 3600;
};

/// The subject's common name; empty without one.
std::string commonName(const X509* certificate);

/// Issues a certificate for a new key; without an issuer it signs itself. Throws BadInput for a name that no
/// certificate can have.
Identity issue(const CertificateRequest& request, const Identity* issuer);

} // namespace cloudsim
