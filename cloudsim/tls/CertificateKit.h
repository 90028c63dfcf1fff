#pragma once

#include "tls/CertificateIssuer.h"

#include <filesystem>
#include <string>

namespace cloudsim {

/// The simulator's own authority and server certificate, kept in a folder and used again when they are there.
class CertificateKit {
public:
    /// Makes the folder and what is missing in it. The server's certificate is for localhost, the loopback addresses
    /// and `extraHost`. Throws BadInput when the folder cannot be used.
    CertificateKit(std::filesystem::path folder, const std::string& extraHost);

    struct Files {
        std::filesystem::path certificate;
        std::filesystem::path key;
    };

    std::filesystem::path authorityFile() const { return m_folder / "ca.pem"; }
    const Identity& authority() const { return m_authority; }
    const Identity& server() const { return m_server; }
    const std::string& alternativeNames() const { return m_alternativeNames; }

    /// A client certificate for this common name, made when it is not there yet.
    Files clientFiles(const std::string& commonName);

private:
    Identity loadOrIssue(const std::string& name, const CertificateRequest& request, const Identity* issuer);
    void store(const std::string& name, const Identity& identity);

    std::filesystem::path m_folder;
    std::string m_alternativeNames;
    Identity m_authority;
    Identity m_server;
};

} // namespace cloudsim
