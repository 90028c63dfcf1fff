#include "model/State.h"

#include "base/Identifiers.h"

namespace cloudsim {

std::string AccessTokens::issue(Holder holder) {
    auto now = std::chrono::steady_clock::now();
    for (auto entry = m_holders.begin(); entry != m_holders.end();)
        entry = entry->second.expires <= now ? m_holders.erase(entry) : std::next(entry);
    std::string token = randomToken(48);
    m_holders[token] = std::move(holder);
    return token;
}

std::optional<AccessTokens::Holder> AccessTokens::find(const std::string& token) const {
    auto entry = m_holders.find(token);
    if (entry == m_holders.end() || entry->second.expires <= std::chrono::steady_clock::now())
        return std::nullopt;
    return entry->second;
}

Device* State::findDevice(const std::string& model, const std::string& mac) {
    for (auto& device : devices)
        if (device.model == model && device.mac == mac)
            return &device;
    return nullptr;
}

Extension* State::findExtension(std::int64_t id) {
    auto entry = extensions.find(id);
    return entry == extensions.end() ? nullptr : &entry->second;
}

std::int64_t State::firstExtensionId() const {
    if (!devices.empty())
        return devices.front().extensionId;
    return extensions.empty() ? 0 : extensions.begin()->first;
}

} // namespace cloudsim
