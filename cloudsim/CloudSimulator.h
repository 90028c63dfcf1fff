#pragma once

#include "base/Json.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace cloudsim {

struct SimulatorOptions {
    std::string listen = "127.0.0.1:0";
    std::string admin = "127.0.0.1:0";
    std::optional<std::string> dataFile;
    std::uint64_t seed = 1;
    int calls = 40;
    int contacts = 20;
    int lateCalls = 0;                ///< of the calls, so many come in a few seconds after the start
    std::vector<std::string> devices; ///< "MODEL/MAC" of further telephones of the first extension
    std::string tlsFolder;
    bool requireClientCertificate = false;
    bool live = false;
};

/// The provider: servers, data and life. It works from construction to destruction.
class CloudSimulator {
public:
    /// Throws BadInput when the options cannot be met.
    explicit CloudSimulator(const SimulatorOptions& options);
    ~CloudSimulator();

    /// Addresses, the authority's file and the devices: {"ready":true,"url":…,"admin":…,"ca":…,"devices":[…]}
    Json readyLine() const;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace cloudsim
