#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "data/ServiceDataManager.h"
#include "network/SecureConnectionEstablisher.h"
#include "network/WebSocketThread.h"
#include "threads/CriticalSection.h"
#include "threads/Threader.h"

Service* createOrvaneService() {
    auto dataManager = std::make_unique<ServiceDataManager>();
    auto threader = std::make_unique<Threader>();
    auto service = std::make_unique<OrvaneService>(dataManager.get(), threader.get());
    // From here on the service owns both.
    static_cast<void>(dataManager.release());
    static_cast<void>(threader.release());
    return service.release();
}

OrvaneService::OrvaneService(ServiceDataManagerIfc* dataManager, ThreaderIfc* threader) {
    // Taken over last: until every member is made, and none can throw any more, both are the caller's.
    m_pDataManager.reset(dataManager);
    m_pThreader.reset(threader);
}

OrvaneService::~OrvaneService() {
    stop();
    if (m_recoverWebSocketThread.id != 0) {
        m_recoverWebSocketThread.threader.waitForThreadCompletion(m_recoverWebSocketThread.id);
        m_recoverWebSocketThread.ended();
    }
    WebSocketThread::terminate();
    m_pDataManager->unregisterAgent();
    m_pDataManager->releaseItems();
    m_pDataManager.reset();
    m_pThreader.reset();
    CriticalSection connection(m_connectionSem);
    clearSecureConnection(true);
}

bool OrvaneService::isRunning() {
    return m_state == START || m_state == CONNECTED;
}

bool OrvaneService::setData(ManageableData& data) {
    return m_pDataManager->setData(data);
}

bool OrvaneService::getData(ManageableData& data) {
    return m_pDataManager->getData(data);
}

std::string OrvaneService::getStateAsText(const ServiceState& state) {
    switch (state) {
    case INITIALIZED:
        return "INITIALIZED";
    case CONFIGURED_ON_INIT:
        return "CONFIGURED_ON_INIT";
    case DECONFIGURED_ON_INIT:
        return "DECONFIGURED_ON_INIT";
    case CONFIGURED:
        return "CONFIGURED";
    case CONFIGURED_MOBILITY_WAITING:
        return "CONFIGURED_MOBILITY_WAITING";
    case CONFIGURED_MOBILITY_READY:
        return "CONFIGURED_MOBILITY_READY";
    case CONFIGURED_ON_NETWORK_UP:
        return "CONFIGURED_ON_NETWORK_UP";
    case START:
        return "START";
    case CONNECTED:
        return "CONNECTED";
    case DECONFIGURING:
        return "DECONFIGURING";
    case DECONFIGURED:
        return "DECONFIGURED";
    case STOP:
        return "STOP";
    case STOP_ON_MOBILITY:
        return "STOP_ON_MOBILITY";
    case STOP_ON_NETWORK_DOWN:
        return "STOP_ON_NETWORK_DOWN";
    }
    ORVANE_LOG(ERROR, "getStateAsText() unknown state[%d]", static_cast<int>(state));
    return "UNKNOWN";
}
