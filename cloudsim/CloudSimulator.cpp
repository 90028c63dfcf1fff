#include "CloudSimulator.h"

#include "Cloud.h"
#include "admin/AdminResources.h"
#include "base/BadInput.h"
#include "life/LifeGenerator.h"
#include "model/AccountData.h"
#include "rest/HttpsHandler.h"

namespace cloudsim {
namespace {

State initialState(const SimulatorOptions& options) {
    State state = options.dataFile
                      ? readAccountFile(*options.dataFile)
                      : SeedData(options.seed).makeState(options.calls - options.lateCalls, options.contacts);
    auto extensionId = state.firstExtensionId();
    for (auto device = options.devices.rbegin(); device != options.devices.rend(); ++device) {
        auto slash = device->find('/');
        if (slash == std::string::npos || slash == 0 || slash + 1 == device->size())
            throw BadInput("'" + *device + "' is not MODEL/MAC");
        Device added{device->substr(0, slash), device->substr(slash + 1), extensionId, ""};
        if (state.findExtension(extensionId) == nullptr)
            throw BadInput("there is no extension for the device " + *device);
        if (state.findDevice(added.model, added.mac) == nullptr)
            state.devices.insert(state.devices.begin(), added);
    }
    return state;
}

Address otherPort(Address address) {
    address.port = 0;
    return address;
}

} // namespace

struct CloudSimulator::Parts {
    explicit Parts(const SimulatorOptions& options)
        : cloud(initialState(options)), kit(options.tlsFolder, parseAddress(options.listen).host),
          tls(kit, options.requireClientCertificate), handler(cloud, tls),
          server(parseAddress(options.listen), handler, connectionCounter),
          alternate(otherPort(server.address()), handler, connectionCounter),
          admin(parseAddress(options.admin), adminRouter, adminConnectionCounter), player(cloud),
          life(cloud, player, options.seed) {
        handler.setAddresses(server.address(), alternate.address());
        AdminReach reach{cloud, tls, server, player, life};
        addAccountResources(adminRouter, cloud);
        addRecordResources(adminRouter, cloud);
        addTrafficResources(adminRouter, reach);
        addChannelResources(adminRouter, cloud);
        addLifeResources(adminRouter, reach);
    }

    Cloud cloud;
    CertificateKit kit;
    TlsProfiles tls;
    HttpsHandler handler;
    std::atomic<std::uint64_t> connectionCounter{0};
    Server server;
    Server alternate;
    AdminRouter adminRouter;
    std::atomic<std::uint64_t> adminConnectionCounter{0};
    Server admin;
    CallPlayer player;
    LifeGenerator life;
    Json ready;
};

CloudSimulator::CloudSimulator(const SimulatorOptions& options) : m_parts(std::make_unique<Parts>(options)) {
    Parts& parts = *m_parts;
    Json& ready = parts.ready;
    ready = {{"ready", true},
             {"url", "https://" + toText(parts.server.address())},
             {"admin", "http://" + toText(parts.admin.address())},
             {"ca", parts.kit.authorityFile().string()},
             {"alternate", "https://" + toText(parts.alternate.address())}};
    ready["devices"] = Json::array();
    parts.cloud.state.with([&](State& state) {
        for (auto& device : state.devices) {
            Json entry{{"model", device.model}, {"mac", device.mac}, {"extensionId", device.extensionId}};
            if (options.requireClientCertificate) {
                // A device that the data bind to no certificate is bound to the one that is made for it here.
                if (device.certificateName.empty())
                    device.certificateName = device.model + "-" + device.mac;
                auto files = parts.kit.clientFiles(device.certificateName);
                entry["cert"] = files.certificate.string();
                entry["key"] = files.key.string();
            }
            ready["devices"].push_back(std::move(entry));
        }
    });
    parts.server.start();
    parts.alternate.start();
    parts.admin.start();
    parts.life.scheduleLateCalls(options.lateCalls);
    if (options.live)
        parts.life.setRunning(true);
}

CloudSimulator::~CloudSimulator() {
    // Nobody may ask for anything any more before what would answer goes away.
    m_parts->admin.stop();
    m_parts->cloud.scheduler.stop();
    m_parts->server.stop();
    m_parts->alternate.stop();
}

Json CloudSimulator::readyLine() const {
    return m_parts->ready;
}

} // namespace cloudsim
