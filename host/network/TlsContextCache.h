#pragma once

#include "network/TlsContext.h"

#include <sys/stat.h>

#include <array>
#include <ctime>
#include <mutex>
#include <string>

/// The context of the last connection, for the next one that takes the same files as they were then: reading the
/// authorities takes as long as a handshake. Every operation may be called from any thread.
class TlsContextCache {
public:
    /// As TlsContext::make.
    TlsContext::Pointer get(const std::string& authorities, const std::string& certificate, const std::string& key,
                            std::string& error);
    /// The same with the files that the certificate service names; null counts as a service without files.
    TlsContext::Pointer get(CertificateMgmtSvcIfc* certificates, CertificateMgmt::eInterface client,
                            std::string& error);

private:
    /// What changes when a file is written or replaced.
    struct File {
        explicit File(const std::string& filePath = std::string());
        bool operator==(const File& other) const;

        std::string path;
        dev_t device = 0;
        ino_t number = 0;
        off_t size = -1;
        timespec written{};
        timespec changed{};
    };
    using Files = std::array<File, 3>;

    std::mutex m_mutex;
    Files m_files;
    TlsContext::Pointer m_context;
};
