#include "network/TlsContext.h"

#include "network/ServerAddress.h"

#include <openssl/err.h>
#include <openssl/x509v3.h>

namespace {

std::string lastError() {
    const unsigned long code = ERR_get_error();
    ERR_clear_error();
    const char* reason = code == 0 ? nullptr : ERR_reason_error_string(code);
    return reason == nullptr ? "unknown reason" : reason;
}

bool loadFiles(SSL_CTX* context, const std::string& authorities, const std::string& certificate, const std::string& key,
               std::string& error) {
    if (!authorities.empty() && SSL_CTX_load_verify_file(context, authorities.c_str()) != 1) {
        error = "cannot use the authorities in " + authorities + ": " + lastError();
        return false;
    }
    if (certificate.empty() && key.empty()) {
        return true;
    }
    if (certificate.empty() || key.empty()) {
        error = "a client certificate and its key go together";
        return false;
    }
    if (SSL_CTX_use_certificate_chain_file(context, certificate.c_str()) != 1) {
        error = "cannot use the certificate in " + certificate + ": " + lastError();
        return false;
    }
    if (SSL_CTX_use_PrivateKey_file(context, key.c_str(), SSL_FILETYPE_PEM) != 1) {
        error = "cannot use the key in " + key + ": " + lastError();
        return false;
    }
    return true;
}

/// A key with a passphrase must not make the program ask for it on the terminal.
int noPassphrase(char*, int, int, void*) {
    return 0;
}

} // namespace

TlsContext::Pointer TlsContext::make(const std::string& authorities, const std::string& certificate,
                                     const std::string& key, std::string& error) {
    ERR_clear_error();
    Pointer context(SSL_CTX_new(TLS_client_method()));
    if (!context) {
        error = lastError();
        return nullptr;
    }
    SSL_CTX_set_default_passwd_cb(context.get(), noPassphrase);
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, nullptr);
    if (SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION) != 1) {
        error = lastError();
        return nullptr;
    }
    return loadFiles(context.get(), authorities, certificate, key, error) ? std::move(context) : nullptr;
}

bool TlsContext::expectServer(SSL* connection, const ServerAddress& server) {
    if (server.isIpAddress) {
        return X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(connection), server.host.c_str()) == 1;
    }
    // The root's dot at the end of a name is no part of the name in certificates.
    std::string name = server.host;
    if (!name.empty() && name.back() == '.') {
        name.pop_back();
    }
    SSL_set_hostflags(connection, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    return SSL_set1_host(connection, name.c_str()) == 1 && SSL_set_tlsext_host_name(connection, name.c_str()) == 1;
}

std::string TlsContext::failureText(const SSL* connection, const std::string& fallback) {
    const long result = SSL_get_verify_result(connection);
    return result == X509_V_OK ? fallback : X509_verify_cert_error_string(result);
}
