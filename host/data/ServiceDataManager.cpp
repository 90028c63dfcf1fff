#include "data/ServiceDataManager.h"

#include "data/LocalMgmt.h"
#include "data/ManageableData.h"
#include "data/PldsTags.h"
#include "data/ServiceItems.h"
#include "framework/Context.h"
#include "logging/HostLog.h"

#include <map>

namespace {

/// The map that says which item goes with which getter and setter.
std::vector<ServiceItems::Item> itemMap(const std::string& mapName) {
    if (mapName != "OrvaneItemMap") {
        return {};
    }
    const auto mapped = [](const std::string& key, const std::string& name) {
        return ServiceItems::Item{key, name + "Getter", name + "Setter"};
    };
    return {mapped(PldsTags::ORVANE_API_SERVER_ADDRESS, "OrvaneApiServerAddress"),
            mapped(PldsTags::ORVANE_API_SYNC_CALL_LOG, "OrvaneApiSyncCallLog"),
            mapped(PldsTags::ORVANE_API_SYNC_PHONEBOOK, "OrvaneApiSyncPhonebook"),
            mapped(PldsTags::ORVANE_API_SYNC_INTERVAL, "OrvaneApiSyncInterval"),
            mapped(PldsTags::ORVANE_API_SYNC_DND, "OrvaneApiSyncDnd")};
}

} // namespace

struct ServiceDataManager::Representation {
    LocalMgmt* store = nullptr;
    // Shared with a configuration in progress, which may outlast this object by a moment.
    std::shared_ptr<ServiceItems> items = std::make_shared<ServiceItems>();
};

ServiceDataManager::ServiceDataManager() : m_representation(std::make_unique<Representation>()) {}

ServiceDataManager::~ServiceDataManager() {
    m_representation->items->close();
    m_representation->items->release();
}

void ServiceDataManager::registerAgent(Context* context, MgmtAgentIfc* agent, const std::string&,
                                       ValidatorIfc* validator) {
    m_representation->store = dynamic_cast<LocalMgmt*>(context->getService("LocalMgmtIfc"));
    m_representation->items->open(agent, validator);
}

void ServiceDataManager::setLoading(bool) {
    // Nothing is delivered before finishSetup anyway.
}

void ServiceDataManager::addGetter(const std::string& name, ManagedItemGetter* getter) {
    m_representation->items->addGetter(name, std::unique_ptr<ManagedItemGetter>(getter));
}

void ServiceDataManager::addSetter(const std::string& name, ManagedItemSetter* setter) {
    m_representation->items->addSetter(name, std::unique_ptr<ManagedItemSetter>(setter));
}

void ServiceDataManager::loadItemMap(const std::string& mapName) {
    m_representation->items->setItems(itemMap(mapName));
}

void ServiceDataManager::finishSetup() {
    if (m_representation->store == nullptr) {
        return;
    }
    const std::map<std::string, std::string> stored = m_representation->store->all();
    for (const std::string& key : m_representation->items->keys()) {
        const auto value = stored.find(key);
        if (value == stored.end()) {
            continue; // what nothing has set keeps the service's own default
        }
        std::string error;
        if (!m_representation->items->deliverItem(key, value->second, error)) {
            HOST_LOG(HostLog::WARNING, "the stored value of %s is refused: %s", key.c_str(), error.c_str());
        }
    }
    m_representation->store->setConfigurationTarget(m_representation->items);
}

bool ServiceDataManager::getData(ManageableData& data) {
    std::vector<std::string> keys;
    data.getRootIds(keys);
    bool complete = true;
    for (const std::string& key : keys) {
        std::string value;
        if (m_representation->items->read(key, value)) {
            data.populate(key, key, value);
        } else {
            complete = false;
        }
    }
    return complete;
}

bool ServiceDataManager::setData(ManageableData& data) {
    std::vector<std::string> keys;
    data.getRootIds(keys);
    bool accepted = true;
    for (const std::string& key : keys) {
        std::string value;
        std::string error;
        accepted = data.interogate(key, value) && m_representation->items->deliverItem(key, value, error) && accepted;
    }
    return accepted;
}

void ServiceDataManager::unregisterAgent() {
    m_representation->items->close();
}

void ServiceDataManager::releaseItems() {
    m_representation->items->release();
}
