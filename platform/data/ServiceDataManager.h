#pragma once

#include "data/ServiceDataManagerIfc.h"

#include <memory>

/// The telephone's data manager. It reaches the configuration store through the context given to registerAgent.
class ServiceDataManager : public ServiceDataManagerIfc {
public:
    ServiceDataManager();
    ~ServiceDataManager() override;
    ServiceDataManager(const ServiceDataManager&) = delete;
    ServiceDataManager& operator=(const ServiceDataManager&) = delete;

    void registerAgent(Context* context, MgmtAgentIfc* agent, const std::string& managementId,
                       ValidatorIfc* validator) override;
    void setLoading(bool loading) override;
    void addGetter(const std::string& name, ManagedItemGetter* getter) override;
    void addSetter(const std::string& name, ManagedItemSetter* setter) override;
    void loadItemMap(const std::string& mapName) override;
    void finishSetup() override;
    bool getData(ManageableData& data) override;
    bool setData(ManageableData& data) override;
    void unregisterAgent() override;
    void releaseItems() override;

private:
    struct Representation;
    std::unique_ptr<Representation> m_representation;
};
