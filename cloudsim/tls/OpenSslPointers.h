#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <memory>

namespace cloudsim {

template <auto release>
struct OpenSslDeleter {
    template <class Object>
    void operator()(Object* object) const {
        release(object);
    }
};

using PrivateKey = std::unique_ptr<EVP_PKEY, OpenSslDeleter<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, OpenSslDeleter<X509_free>>;
using Bio = std::unique_ptr<BIO, OpenSslDeleter<BIO_free_all>>;
using TlsContext = std::shared_ptr<SSL_CTX>;
using TlsSession = std::unique_ptr<SSL, OpenSslDeleter<SSL_free>>;

} // namespace cloudsim
