#include "network/TlsContextCache.h"

#include "siblings/CertificateMgmtSvcIfc.h"

#include <utility>

namespace {

bool equal(const timespec& left, const timespec& right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

} // namespace

TlsContextCache::File::File(const std::string& filePath) : path(filePath) {
    struct stat status{};
    if (!path.empty() && stat(path.c_str(), &status) == 0) {
        device = status.st_dev;
        number = status.st_ino;
        size = status.st_size;
        written = status.st_mtim;
        changed = status.st_ctim;
    }
}

bool TlsContextCache::File::operator==(const File& other) const {
    return path == other.path && device == other.device && number == other.number && size == other.size &&
           equal(written, other.written) && equal(changed, other.changed);
}

TlsContext::Pointer TlsContextCache::get(const std::string& authorities, const std::string& certificate,
                                         const std::string& key, std::string& error) {
    // Looked at before they are read: a file that changes meanwhile is a changed one at the next call.
    Files files{File(authorities), File(certificate), File(key)};
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_context || !(m_files == files)) {
        m_context = TlsContext::make(authorities, certificate, key, error);
        m_files = std::move(files);
    }
    if (!m_context) {
        return nullptr;
    }
    SSL_CTX_up_ref(m_context.get());
    return TlsContext::Pointer(m_context.get());
}

TlsContext::Pointer TlsContextCache::get(CertificateMgmtSvcIfc* certificates, CertificateMgmt::eInterface client,
                                         std::string& error) {
    if (certificates == nullptr) {
        return get(std::string(), std::string(), std::string(), error);
    }
    return get(certificates->getCertificateAuthorities(client), certificates->getClientCertificate(client),
               certificates->getClientKey(client), error);
}
