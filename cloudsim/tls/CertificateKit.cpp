#include "tls/CertificateKit.h"

#include "base/BadInput.h"

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <arpa/inet.h>

#include <cctype>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cloudsim {
namespace {

using Path = std::filesystem::path;

Path keyFile(const Path& folder, const std::string& name) {
    return folder / (name + "-key.pem");
}
Path certificateFile(const Path& folder, const std::string& name) {
    return folder / (name + ".pem");
}

Identity load(const Path& folder, const std::string& name) {
    Identity identity;
    Bio certificate(BIO_new_file(certificateFile(folder, name).c_str(), "r"));
    Bio key(BIO_new_file(keyFile(folder, name).c_str(), "r"));
    if (certificate && key) {
        identity.certificate.reset(PEM_read_bio_X509(certificate.get(), nullptr, nullptr, nullptr));
        identity.key.reset(PEM_read_bio_PrivateKey(key.get(), nullptr, nullptr, nullptr));
    }
    return identity;
}

bool isUsable(const Identity& identity, const std::string& name, const Identity* issuer) {
    if (!identity.certificate || !identity.key)
        return false;
    X509* certificate = identity.certificate.get();
    EVP_PKEY* signer = issuer != nullptr ? issuer->key.get() : identity.key.get();
    return commonName(certificate) == name && X509_check_private_key(certificate, identity.key.get()) == 1 &&
           X509_verify(certificate, signer) == 1 && X509_cmp_current_time(X509_get0_notBefore(certificate)) < 0 &&
           X509_cmp_current_time(X509_get0_notAfter(certificate)) > 0;
}

/// A file that only its owner may read.
Bio createPrivateFile(const Path& path) {
    int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0)
        return nullptr;
    Bio file(BIO_new_fd(descriptor, BIO_CLOSE));
    if (!file)
        ::close(descriptor);
    return file;
}

bool isAddress(const std::string& host) {
    unsigned char bytes[sizeof(in6_addr)];
    return inet_pton(AF_INET, host.c_str(), bytes) == 1 || inet_pton(AF_INET6, host.c_str(), bytes) == 1;
}

std::string namesOf(const std::string& extraHost) {
    std::string names = "DNS:localhost,IP:127.0.0.1,IP:::1";
    if (extraHost.empty() || extraHost == "localhost" || extraHost == "127.0.0.1" || extraHost == "::1" ||
        extraHost == "0.0.0.0" || extraHost == "::")
        return names;
    return names + (isAddress(extraHost) ? ",IP:" : ",DNS:") + extraHost;
}

bool coversHost(const Identity& identity, const std::string& host) {
    if (host.empty() || host == "0.0.0.0" || host == "::")
        return true;
    X509* certificate = identity.certificate.get();
    return isAddress(host) ? X509_check_ip_asc(certificate, host.c_str(), 0) == 1
                           : X509_check_host(certificate, host.c_str(), host.size(), 0, nullptr) == 1;
}

/// Letters, digits and hyphens stay; everything else becomes its code, so that no two texts share a name.
std::string asFileName(const std::string& text) {
    std::string name;
    for (unsigned char c : text) {
        char code[4];
        std::snprintf(code, sizeof code, "_%02x", c);
        name += std::isalnum(c) || c == '-' ? std::string(1, static_cast<char>(c)) : code;
    }
    return name;
}

} // namespace

CertificateKit::CertificateKit(Path folder, const std::string& extraHost)
    : m_folder(std::move(folder)), m_alternativeNames(namesOf(extraHost)) {
    std::error_code error;
    std::filesystem::create_directories(m_folder, error);
    if (!std::filesystem::is_directory(m_folder) || ::access(m_folder.c_str(), W_OK | X_OK) != 0)
        throw BadInput("cannot use the certificate folder " + m_folder.string());

    using Purpose = CertificateRequest::Purpose;
    m_authority = loadOrIssue("ca", {Purpose::AUTHORITY, "Cloud Simulator Authority", ""}, nullptr);
    CertificateRequest request{Purpose::SERVER, "localhost", m_alternativeNames};
    m_server = loadOrIssue("server", request, &m_authority);
    if (!coversHost(m_server, extraHost)) {
        m_server = issue(request, &m_authority);
        store("server", m_server);
    }
}

Identity CertificateKit::loadOrIssue(const std::string& name, const CertificateRequest& request,
                                     const Identity* issuer) {
    Identity identity = load(m_folder, name);
    if (isUsable(identity, request.commonName, issuer))
        return identity;
    identity = issue(request, issuer);
    store(name, identity);
    return identity;
}

void CertificateKit::store(const std::string& name, const Identity& identity) {
    Bio key = createPrivateFile(keyFile(m_folder, name));
    Bio certificate(BIO_new_file(certificateFile(m_folder, name).c_str(), "w"));
    if (!key || !certificate ||
        PEM_write_bio_PrivateKey(key.get(), identity.key.get(), nullptr, nullptr, 0, nullptr, nullptr) != 1 ||
        PEM_write_bio_X509(certificate.get(), identity.certificate.get()) != 1)
        throw BadInput("cannot write certificates to " + m_folder.string());
}

CertificateKit::Files CertificateKit::clientFiles(const std::string& commonName) {
    std::string name = "device-" + asFileName(commonName);
    loadOrIssue(name, {CertificateRequest::Purpose::CLIENT, commonName, ""}, &m_authority);
    return {certificateFile(m_folder, name), keyFile(m_folder, name)};
}

} // namespace cloudsim
