#pragma once

#include "network/LoopbackServer.h"

#include <atomic>
#include <string>

struct CertificateFiles;

/// The provider's answers. Every incremental call log brings one call that is new, of the session that ended last.
class Provider {
public:
    static constexpr const char* prefix = "/MODEL/MAC1"; ///< of every target
    static constexpr int callsOfALogin = 20;

    explicit Provider(const CertificateFiles& files);

    LoopbackServer& server() { return m_server; }
    void callEnds(int number) { m_lastCall = number; }
    /// The frame that tells it.
    static std::string endOfCall(int number);

private:
    static std::string confirmation(const std::string& frame);
    std::string bodyOf(const std::string& target);

    const std::string m_large;
    std::atomic<int> m_lastCall{0};
    LoopbackServer m_server;
};
