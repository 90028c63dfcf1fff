#include "data/ServiceDataManager.h"

#include "data/ConfigurationTarget.h"
#include "data/LocalMgmt.h"
#include "data/ManageableData.h"
#include "data/ManagedItemGetter.h"
#include "data/ManagedItemSetter.h"
#include "data/MgmtAgentIfc.h"
#include "data/PldsTags.h"
#include "data/ValidatorIfc.h"
#include "framework/Context.h"

#include <map>
#include <mutex>
#include <vector>

namespace {

/// One item of the map that says which getter and setter an item goes with.
struct MappedItem {
    std::string key;
    std::string getter;
    std::string setter;
};

std::vector<MappedItem> itemMap(const std::string& mapName) {
    if (mapName != "OrvaneItemMap") {
        return {};
    }
    const auto mapped = [](const std::string& key, const std::string& name) {
        return MappedItem{key, name + "Getter", name + "Setter"};
    };
    return {mapped(PldsTags::ORVANE_API_SERVER_ADDRESS, "OrvaneApiServerAddress"),
            mapped(PldsTags::ORVANE_API_SYNC_CALL_LOG, "OrvaneApiSyncCallLog"),
            mapped(PldsTags::ORVANE_API_SYNC_PHONEBOOK, "OrvaneApiSyncPhonebook"),
            mapped(PldsTags::ORVANE_API_SYNC_INTERVAL, "OrvaneApiSyncInterval"),
            mapped(PldsTags::ORVANE_API_SYNC_DND, "OrvaneApiSyncDnd")};
}

} // namespace

struct ServiceDataManager::Representation : public ConfigurationTarget {
    // Held while a setter or the validator runs, so that unregisterAgent can wait for it; re-entrant, since a setter
    // may lead back here.
    std::recursive_mutex calls;
    LocalMgmt* store = nullptr;
    MgmtAgentIfc* agent = nullptr;
    ValidatorIfc* validator = nullptr;
    std::vector<MappedItem> items;
    std::map<std::string, std::unique_ptr<ManagedItemGetter>> getters;
    std::map<std::string, std::unique_ptr<ManagedItemSetter>> setters;

    const MappedItem* find(const std::string& key) const {
        for (const MappedItem& item : items) {
            if (item.key == key) {
                return &item;
            }
        }
        return nullptr;
    }

    ManagedItemSetter* setterOf(const std::string& key) const {
        const MappedItem* item = find(key);
        const auto setter = item == nullptr ? setters.end() : setters.find(item->setter);
        return setter == setters.end() ? nullptr : setter->second.get();
    }

    bool hasSetter(const std::string& key) override {
        const std::lock_guard<std::recursive_mutex> lock(calls);
        return setterOf(key) != nullptr;
    }

    bool deliverItem(const std::string& key, const std::string& value, std::string& error) override {
        const std::lock_guard<std::recursive_mutex> lock(calls);
        ManagedItemSetter* setter = setterOf(key);
        if (agent == nullptr || setter == nullptr) {
            error = "nobody takes this item";
            return false;
        }
        return setter->set(value, std::string(), error);
    }

    bool deliverGroup(const std::string& group, std::string& error) override {
        const std::lock_guard<std::recursive_mutex> lock(calls);
        return validator == nullptr || validator->validateGroupAndSetData(error, group);
    }

    bool resetUserData() override {
        const std::lock_guard<std::recursive_mutex> lock(calls);
        return agent != nullptr && agent->resetUserData();
    }
};

ServiceDataManager::ServiceDataManager() : m_representation(std::make_unique<Representation>()) {}

ServiceDataManager::~ServiceDataManager() = default;

void ServiceDataManager::registerAgent(Context* context, MgmtAgentIfc* agent, const std::string&,
                                       ValidatorIfc* validator) {
    m_representation->store = dynamic_cast<LocalMgmt*>(context->getService("LocalMgmtIfc"));
    m_representation->agent = agent;
    m_representation->validator = validator;
}

void ServiceDataManager::setLoading(bool) {
    // Nothing is delivered before finishSetup anyway.
}

void ServiceDataManager::addGetter(const std::string& name, ManagedItemGetter* getter) {
    m_representation->getters[name].reset(getter);
}

void ServiceDataManager::addSetter(const std::string& name, ManagedItemSetter* setter) {
    m_representation->setters[name].reset(setter);
}

void ServiceDataManager::loadItemMap(const std::string& mapName) {
    m_representation->items = itemMap(mapName);
}

void ServiceDataManager::finishSetup() {
    if (m_representation->store == nullptr) {
        return;
    }
    const std::map<std::string, std::string> stored = m_representation->store->all();
    for (const MappedItem& item : m_representation->items) {
        const auto value = stored.find(item.key);
        // What nothing has set keeps the service's own default.
        if (value != stored.end()) {
            std::string error;
            m_representation->deliverItem(item.key, value->second, error);
        }
    }
    m_representation->store->setConfigurationTarget(m_representation.get());
}

bool ServiceDataManager::getData(ManageableData& data) {
    std::vector<std::string> keys;
    data.getRootIds(keys);
    const std::lock_guard<std::recursive_mutex> lock(m_representation->calls);
    bool complete = true;
    for (const std::string& key : keys) {
        const MappedItem* item = m_representation->find(key);
        const auto getter =
            item == nullptr ? m_representation->getters.end() : m_representation->getters.find(item->getter);
        if (getter == m_representation->getters.end()) {
            complete = false;
        } else {
            data.populate(key, key, getter->second->get(key));
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
        accepted = data.interogate(key, value) && m_representation->deliverItem(key, value, error) && accepted;
    }
    return accepted;
}

void ServiceDataManager::unregisterAgent() {
    if (m_representation->store != nullptr) {
        m_representation->store->setConfigurationTarget(nullptr);
    }
    const std::lock_guard<std::recursive_mutex> lock(m_representation->calls);
    m_representation->agent = nullptr;
    m_representation->validator = nullptr;
}

void ServiceDataManager::releaseItems() {
    const std::lock_guard<std::recursive_mutex> lock(m_representation->calls);
    m_representation->getters.clear();
    m_representation->setters.clear();
}
