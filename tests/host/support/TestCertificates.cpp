#include "support/TestCertificates.h"

#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <stdlib.h>

namespace {

constexpr long secondsADay = 24 * 60 * 60;

struct Release {
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using Certificate = std::unique_ptr<X509, Release>;
using Key = std::unique_ptr<EVP_PKEY, Release>;
using File = std::unique_ptr<std::FILE, Release>;

void require(bool good, const char* what) {
    if (!good) {
        throw std::runtime_error(std::string("cannot make a test certificate: ") + what);
    }
}

void addExtension(X509* certificate, X509* issuer, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, Release> extension(
        X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()));
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, value.c_str());
}

} // namespace

struct TestCertificates::Representation {
    struct Made {
        Certificate certificate;
        Key key;
        CertificateFiles files;
    };
    std::filesystem::path folder;
    std::map<std::string, Made> made;
    long lastSerial = 0;
};

TestCertificates::TestCertificates() : m_representation(std::make_unique<Representation>()) {
    std::string name = (std::filesystem::temp_directory_path() / "orvane-certificates-XXXXXX").string();
    require(mkdtemp(name.data()) != nullptr, "folder");
    m_representation->folder = name;
}

TestCertificates::~TestCertificates() {
    std::error_code ignored;
    std::filesystem::remove_all(m_representation->folder, ignored);
}

CertificateFiles TestCertificates::make(const std::string& name, const CertificateText& text,
                                        const std::string& issuer) {
    Representation::Made made;
    made.key.reset(EVP_EC_gen("P-256"));
    made.certificate.reset(X509_new());
    X509* certificate = made.certificate.get();
    require(made.key && certificate != nullptr, "key");
    X509* issuerCertificate = issuer.empty() ? certificate : m_representation->made.at(issuer).certificate.get();
    EVP_PKEY* issuerKey = issuer.empty() ? made.key.get() : m_representation->made.at(issuer).key.get();

    X509_set_version(certificate, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), ++m_representation->lastSerial);
    X509_gmtime_adj(X509_getm_notBefore(certificate), text.validFromDays * secondsADay);
    X509_gmtime_adj(X509_getm_notAfter(certificate), text.validToDays * secondsADay);
    X509_set_pubkey(certificate, made.key.get());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(text.commonName.c_str()), -1, -1, 0);
    X509_set_issuer_name(certificate, X509_get_subject_name(issuerCertificate));
    addExtension(certificate, issuerCertificate, NID_basic_constraints,
                 text.authority ? "critical,CA:TRUE" : "CA:FALSE");
    if (!text.alternativeNames.empty()) {
        addExtension(certificate, issuerCertificate, NID_subject_alt_name, text.alternativeNames);
    }
    require(X509_sign(certificate, issuerKey, EVP_sha256()) != 0, "signature");

    made.files.certificate = path(name + ".pem");
    made.files.key = path(name + ".key");
    const File certificateFile(std::fopen(made.files.certificate.c_str(), "w"));
    const File keyFile(std::fopen(made.files.key.c_str(), "w"));
    require(certificateFile && PEM_write_X509(certificateFile.get(), certificate) == 1, "file");
    require(keyFile && PEM_write_PrivateKey(keyFile.get(), made.key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1,
            "key file");
    return m_representation->made.insert_or_assign(name, std::move(made)).first->second.files;
}

const CertificateFiles& TestCertificates::authority() {
    const auto found = m_representation->made.find("authority");
    if (found == m_representation->made.end()) {
        make("authority", {"Test Authority", "", -1, 30, true});
    }
    return m_representation->made.at("authority").files;
}

const CertificateFiles& TestCertificates::server() {
    const auto found = m_representation->made.find("server");
    if (found == m_representation->made.end()) {
        authority();
        make("server", {"Test Server", "DNS:localhost,IP:127.0.0.1,IP:::1"}, "authority");
    }
    return m_representation->made.at("server").files;
}

std::string TestCertificates::path(const std::string& file) const {
    return (m_representation->folder / file).string();
}
