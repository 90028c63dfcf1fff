#include "tls/CertificateIssuer.h"

#include "base/BadInput.h"

#include <openssl/ec.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace cloudsim {
namespace {

void require(bool condition, const char* what) {
    if (!condition)
        throw std::runtime_error(std::string("certificate: ") + what);
}

void setSerialNumber(X509* certificate) {
    unsigned char bytes[8];
    require(RAND_bytes(bytes, sizeof bytes) == 1, "serial number");
    bytes[0] &= 0x7f;
    BigNumber number(BN_bin2bn(bytes, sizeof bytes, nullptr));
    require(number && BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate)) != nullptr, "serial number");
}

/// A name has 64 characters at most.
void setCommonName(X509* certificate, const std::string& name) {
    if (X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                                   reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0) != 1)
        throw BadInput("no certificate can have the name '" + name + "'");
}

void addExtension(X509* certificate, X509* issuer, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    CertificateExtension extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()));
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, "extension");
}

} // namespace

std::string commonName(const X509* certificate) {
    char name[512] = {};
    X509_NAME_get_text_by_NID(X509_get_subject_name(certificate), NID_commonName, name, sizeof name);
    return name;
}

Identity issue(const CertificateRequest& request, const Identity* issuer) {
    using Purpose = CertificateRequest::Purpose;
    Identity identity{Certificate(X509_new()), PrivateKey(EVP_EC_gen("P-256"))};
    X509* certificate = identity.certificate.get();
    require(certificate != nullptr && identity.key != nullptr, "key");
    X509_set_version(certificate, 2);
    setSerialNumber(certificate);
    X509_gmtime_adj(X509_getm_notBefore(certificate), request.validFromSeconds);
    X509_gmtime_adj(X509_getm_notAfter(certificate), request.validUntilSeconds);
    X509_set_pubkey(certificate, identity.key.get());
    setCommonName(certificate, request.commonName);
    X509* signer = issuer != nullptr ? issuer->certificate.get() : certificate;
    X509_set_issuer_name(certificate, X509_get_subject_name(signer));

    bool authority = request.purpose == Purpose::AUTHORITY;
    addExtension(certificate, signer, NID_basic_constraints, authority ? "critical,CA:TRUE" : "critical,CA:FALSE");
    addExtension(certificate, signer, NID_key_usage,
                 authority ? "critical,keyCertSign,cRLSign" : "critical,digitalSignature");
    if (!authority)
        addExtension(certificate, signer, NID_ext_key_usage,
                     request.purpose == Purpose::CLIENT ? "clientAuth" : "serverAuth");
    addExtension(certificate, signer, NID_subject_key_identifier, "hash");
    if (issuer != nullptr)
        addExtension(certificate, signer, NID_authority_key_identifier, "keyid");
    if (!request.alternativeNames.empty())
        addExtension(certificate, signer, NID_subject_alt_name, request.alternativeNames);
    EVP_PKEY* signingKey = issuer != nullptr ? issuer->key.get() : identity.key.get();
    require(X509_sign(certificate, signingKey, EVP_sha256()) > 0, "signature");
    return identity;
}

} // namespace cloudsim
