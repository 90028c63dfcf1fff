#include "model/SyncTokens.h"

#include "base/Identifiers.h"

namespace cloudsim {

std::string SyncTokens::at(std::uint64_t point) {
    std::string& token = m_tokens[point];
    if (token.empty()) {
        token = randomToken(32);
        m_points[token] = point;
    }
    return token;
}

std::optional<std::uint64_t> SyncTokens::find(const std::string& token) const {
    auto entry = m_points.find(token);
    return entry == m_points.end() ? std::nullopt : std::optional(entry->second);
}

void SyncTokens::forget() {
    m_tokens.clear();
    m_points.clear();
}

} // namespace cloudsim
