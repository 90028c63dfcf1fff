#pragma once

#include "tls/CertificateKit.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace cloudsim {

/// The ways in which the server can present itself, from trustworthy to refused.
class TlsProfiles {
public:
    TlsProfiles(CertificateKit& kit, bool requireClientCertificate);

    static const std::vector<std::string>& names();

    std::string selected();
    /// False when there is no such profile.
    bool select(const std::string& name);
    /// The context of the selected profile; null when handshakes are refused.
    TlsContext context();

private:
    TlsContext make(const std::string& name);

    CertificateKit& m_kit;
    bool m_requireClientCertificate;
    std::mutex m_mutex;
    std::string m_selected = "trusted";
    std::map<std::string, TlsContext> m_contexts;
};

} // namespace cloudsim
