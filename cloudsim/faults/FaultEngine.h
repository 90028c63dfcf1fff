#pragma once

#include "base/Timestamps.h"
#include "faults/Fault.h"

#include <list>
#include <mutex>
#include <regex>

namespace cloudsim {

/// Keeps the armed faults and decides which of them concern a request.
class FaultEngine {
public:
    struct Hit {
        FaultActions actions;
        std::vector<std::uint64_t> ids;
    };

    /// Arms a fault; returns its id. Throws BadInput when it cannot be understood.
    std::uint64_t arm(const Json& description);
    bool disarm(std::uint64_t id);
    void disarmAll();
    Json list();

    /// Counts the request. All faults that concern it act together; where two say different things, the one armed
    /// first wins.
    Hit hit(const std::string& method, const std::string& target);
    /// Whether one of the faults is still armed; a held request waits for it.
    bool isArmed(const std::vector<std::uint64_t>& ids);

private:
    struct Armed {
        std::uint64_t id = 0;
        Json description;
        std::string path;
        std::optional<std::regex> pattern;
        std::string method;
        std::uint64_t firstRequest = 1;
        std::uint64_t times = 1; ///< 0: lasting
        SteadyTime begins;
        SteadyTime ends;
        std::uint64_t seen = 0;
        std::uint64_t done = 0;
    };

    static Armed read(const Json& description);
    static bool concerns(const Armed& fault, const std::string& method, const std::string& target, SteadyTime now);

    std::mutex m_mutex;
    std::list<Armed> m_faults;
    std::uint64_t m_nextId = 1;
};

} // namespace cloudsim
