#pragma once

#include <openssl/bio.h>
#include <openssl/bn.h>
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

using BigNumber = std::unique_ptr<BIGNUM, OpenSslDeleter<BN_free>>;
using CertificateExtension = std::unique_ptr<X509_EXTENSION, OpenSslDeleter<X509_EXTENSION_free>>;
using PrivateKey = std::unique_ptr<EVP_PKEY, OpenSslDeleter<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, OpenSslDeleter<X509_free>>;
using Bio = std::unique_ptr<BIO, OpenSslDeleter<BIO_free_all>>;
using TlsContext = std::shared_ptr<SSL_CTX>;
using TlsSession = std::unique_ptr<SSL, OpenSslDeleter<SSL_free>>;

} // namespace cloudsim
