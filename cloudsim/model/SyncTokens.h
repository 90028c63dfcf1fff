#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace cloudsim {

/// Opaque texts for points in a change log.
class SyncTokens {
public:
    /// The same text for the same point; never empty, safe in a URL.
    std::string at(std::uint64_t point);
    std::optional<std::uint64_t> find(const std::string& token) const;
    /// All tokens become unknown.
    void forget();

private:
    std::map<std::uint64_t, std::string> m_tokens;
    std::map<std::string, std::uint64_t> m_points;
};

} // namespace cloudsim
