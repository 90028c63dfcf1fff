#pragma once

#include "network/CertificateMgmt.h"

#include <openssl/ssl.h>

#include <memory>
#include <string>

class CertificateMgmtSvcIfc;
struct ServerAddress;

/// Client side TLS as every connection of the telephone uses it: TLS 1.2 or newer, the server's chain and name always
/// verified.
namespace TlsContext {

struct Release {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
using Pointer = std::unique_ptr<SSL_CTX, Release>;

/// Makes a context from PEM files. Without authorities no server is trusted. Certificate and key go together; both
/// empty means that the client has none. Null with the reason in `error` when a file cannot be used.
Pointer make(const std::string& authorities, const std::string& certificate, const std::string& key,
             std::string& error);

/// Has the handshake ask for the server's name (not for addresses, RFC 6066, section 3) and check the certificate
/// against its name or address.
bool expectServer(SSL* connection, const ServerAddress& server);

/// Why the handshake failed: the verification's own text when it was that, else `fallback`.
std::string failureText(const SSL* connection, const std::string& fallback);

} // namespace TlsContext
