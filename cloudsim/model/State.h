#pragma once

#include "base/Timestamps.h"
#include "model/AddressBook.h"
#include "model/CallLog.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace cloudsim {

/// A telephone that may log in.
struct Device {
    std::string model;
    std::string mac;
    std::int64_t extensionId = 0;
    std::string certificateName; ///< common name that its client certificate must have; empty: none is asked for
};

struct Extension {
    std::int64_t id = 0;
    std::string number;
    std::string name;
    std::string type = "User";
    std::string phoneNumber;
    std::string dndStatus = "TakeAllCalls";
    std::string userStatus = "Available";
    CallLog calls;
    AddressBook contacts;
    std::vector<std::int64_t> grants; ///< shared lines that this extension may use
};

/// Times and sizes that a provider would set.
struct Settings {
    int tokenLifetimeSeconds = 3600;
    int socketTokenLifetimeSeconds = 600;
    int grantsPerPage = 100;
    int subscriptionLifetimeSeconds = 900;
    int idleTimeoutSeconds = 180;
    int absoluteTimeoutSeconds = 86400;
    int recoveryTimeoutSeconds = 180;
    int recoveryBufferSize = 100;
    int maxConnectionsPerSession = 5;
    /// Renewals and updates report the creation time of the first confirmation.
    bool renewalKeepsCreationTime = false;
};

/// Tokens by which a caller is known.
class AccessTokens {
public:
    struct Holder {
        std::string model;
        std::string mac;
        std::int64_t extensionId = 0;
        SteadyTime expires;
    };

    std::string issue(Holder holder);
    /// Nothing for an unknown token or one that has run out.
    std::optional<Holder> find(const std::string& token) const;
    void clear() { m_holders.clear(); }

private:
    std::map<std::string, Holder> m_holders;
};

/// Everything that the provider knows.
struct State {
    std::int64_t accountId = 61200301;
    Settings settings;
    std::vector<Device> devices;
    std::map<std::int64_t, Extension> extensions;
    AccessTokens accessTokens;
    AccessTokens socketTokens;

    Device* findDevice(const std::string& model, const std::string& mac);
    Extension* findExtension(std::int64_t id);
    /// The extension of the first device, which administration means when it names none.
    std::int64_t firstExtensionId() const;
};

} // namespace cloudsim
