#pragma once

#include <memory>
#include <string>

/// What a certificate made for a test says.
struct CertificateText {
    std::string commonName;
    std::string alternativeNames; ///< "DNS:host,IP:address"; empty for none
    int validFromDays = -1;       ///< relative to now
    int validToDays = 30;
    bool authority = false;
};

/// Paths of a certificate and its key, both PEM.
struct CertificateFiles {
    std::string certificate;
    std::string key;
};

/// Certificates made for one test program, in a folder of their own that goes with this object.
class TestCertificates {
public:
    TestCertificates();
    ~TestCertificates();
    TestCertificates(const TestCertificates&) = delete;
    TestCertificates& operator=(const TestCertificates&) = delete;

    /// Makes a certificate signed by `issuer`, or by itself without one, in files named after `name`.
    CertificateFiles make(const std::string& name, const CertificateText& text, const std::string& issuer = "");

    /// An authority, made on first use; likewise a server of it for 127.0.0.1, ::1 and localhost.
    const CertificateFiles& authority();
    const CertificateFiles& server();

    std::string path(const std::string& file) const;

private:
    struct Representation;
    std::unique_ptr<Representation> m_representation;
};
