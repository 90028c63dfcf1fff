#include "TestDataManager.h"

#include "TestPlatform.h"
#include "data/PldsTags.h"
#include "data/ServiceDataManager.h"
#include "data/ValidatorIfc.h"

void TestDataManager::noteCall(const std::string& call) {
    TestPlatform::current().steps.add("items ", call);
    calls.push_back(call);
}

TestDataManager::Result TestDataManager::deliver(const std::string& key, const std::string& value) {
    Result result{false, std::string()};
    result.accepted = setters.at(operationOf(key) + "Setter")->set(value, "other", result.error);
    return result;
}

TestDataManager::Result TestDataManager::deliverGroup(const std::vector<std::pair<std::string, std::string>>& values,
                                                      const std::string& group) {
    for (const auto& [key, value] : values) {
        deliver(key, value);
    }
    Result result{false, std::string()};
    result.accepted = validator->validateGroupAndSetData(result.error, group);
    return result;
}

std::string TestDataManager::read(const std::string& key) {
    return getters.at(operationOf(key) + "Getter")->get(key);
}

std::string TestDataManager::operationOf(const std::string& key) {
    static const std::map<std::string, std::string> operations = {
        {PldsTags::ORVANE_API_SERVER_ADDRESS, "OrvaneApiServerAddress"},
        {PldsTags::ORVANE_API_SYNC_CALL_LOG, "OrvaneApiSyncCallLog"},
        {PldsTags::ORVANE_API_SYNC_PHONEBOOK, "OrvaneApiSyncPhonebook"},
        {PldsTags::ORVANE_API_SYNC_INTERVAL, "OrvaneApiSyncInterval"},
        {PldsTags::ORVANE_API_SYNC_DND, "OrvaneApiSyncDnd"},
    };
    return operations.at(key);
}

const std::vector<std::string>& TestDataManager::itemKeys() {
    static const std::vector<std::string> keys = {
        PldsTags::ORVANE_API_SERVER_ADDRESS, PldsTags::ORVANE_API_SYNC_CALL_LOG, PldsTags::ORVANE_API_SYNC_PHONEBOOK,
        PldsTags::ORVANE_API_SYNC_INTERVAL, PldsTags::ORVANE_API_SYNC_DND};
    return keys;
}

struct ServiceDataManager::Representation {
    TestDataManager& record = TestPlatform::current().dataManager;
};

ServiceDataManager::ServiceDataManager() : m_representation(std::make_unique<Representation>()) {}

ServiceDataManager::~ServiceDataManager() {
    m_representation->record.noteCall("destroyed");
}

void ServiceDataManager::registerAgent(Context* context, MgmtAgentIfc* agent, const std::string& managementId,
                                       ValidatorIfc* validator) {
    TestDataManager& record = m_representation->record;
    record.noteCall("registerAgent " + managementId);
    record.context = context;
    record.agent = agent;
    record.validator = validator;
}

void ServiceDataManager::setLoading(bool loading) {
    m_representation->record.noteCall(loading ? "setLoading true" : "setLoading false");
}

void ServiceDataManager::addGetter(const std::string& name, ManagedItemGetter* getter) {
    m_representation->record.noteCall("addGetter " + name);
    m_representation->record.getters[name].reset(getter);
}

void ServiceDataManager::addSetter(const std::string& name, ManagedItemSetter* setter) {
    m_representation->record.noteCall("addSetter " + name);
    m_representation->record.setters[name].reset(setter);
}

void ServiceDataManager::loadItemMap(const std::string& mapName) {
    m_representation->record.noteCall("loadItemMap " + mapName);
}

void ServiceDataManager::finishSetup() {
    TestDataManager& record = m_representation->record;
    record.noteCall("finishSetup");
    const MemoryStore& store = TestPlatform::current().store;
    for (const std::string& key : TestDataManager::itemKeys()) {
        if (!store.get(key).empty()) {
            record.deliver(key, store.get(key));
        }
    }
}

bool ServiceDataManager::getData(ManageableData& data) {
    m_representation->record.dataRead.push_back(&data);
    return !m_representation->record.refuseData;
}

bool ServiceDataManager::setData(ManageableData& data) {
    m_representation->record.dataWritten.push_back(&data);
    return !m_representation->record.refuseData;
}

void ServiceDataManager::unregisterAgent() {
    m_representation->record.noteCall("unregisterAgent");
}

void ServiceDataManager::releaseItems() {
    m_representation->record.noteCall("releaseItems");
    m_representation->record.getters.clear();
    m_representation->record.setters.clear();
}
