#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneService/ServiceCore/Duration.h"
#include "data/ManageableData.h"
#include "data/PldsTags.h"
#include "framework/Context.h"
#include "threads/CriticalSection.h"

bool OrvaneService::validateGroupAndSetData(std::string& error, const std::string& group) {
    if (group != "orvane_config_group") {
        error = "wrong groupname";
        return false;
    }
    ORVANE_LOG(STATUS, "validateGroupAndSetData() IN m_server[%s] m_sync_callLog[%s] m_sync_phonebook[%s] m_state[%s]",
               m_server.c_str(), OrvaneLog::text(m_sync_callLog), OrvaneLog::text(m_sync_phonebook),
               getStateAsText(m_state).c_str());
    if (m_state == INITIALIZED) {
        ORVANE_LOG(DEBUG, "validateGroupAndSetData() initialized waiting init() to complete");
    } else {
        applyConfigurationGroup();
    }
    ORVANE_LOG(STATUS, "validateGroupAndSetData() OUT m_state[%s]", getStateAsText(m_state).c_str());
    asyncLogin();
    return true;
}

void OrvaneService::applyConfigurationGroup() {
    if (isAnyConfigItemEmpty() || hasCallLogConfigChanged() || hasPhonebookConfigChanged()) {
        if (isRunning()) {
            ORVANE_LOG(DEBUG, "validateGroupAndSetData() stop");
            stop();
        }
        if (m_state == STOP) {
            ORVANE_LOG(DEBUG, "validateGroupAndSetData() deconfigure");
            m_state = DECONFIGURING;
            deconfigure();
        }
    }
    if (isAnyConfigItemEmpty() && m_state == STOP_ON_MOBILITY) {
        ORVANE_LOG(DEBUG, "validateGroupAndSetData() deconfigured after mobility");
        m_state = DECONFIGURED;
    } else if (!m_server.empty() && m_state != START && m_state != CONNECTED) {
        const bool waitsForMobility = m_state == STOP_ON_MOBILITY || m_state == CONFIGURED_MOBILITY_WAITING;
        m_state = waitsForMobility ? CONFIGURED_MOBILITY_WAITING : CONFIGURED;
    }
    fireInformUserEvent("", OrvaneServiceTypes::USER_MSG_NONE);
}

void OrvaneService::manageableDataChanged(ManageableData& data) {
    std::vector<std::string> ids;
    data.getRootIds(ids);
    for (const std::string& id : ids) {
        std::string value;
        data.interogate(id, value);
        ORVANE_LOG(STATUS, "manageableDataChanged() id[%s] itemVal[%s]", id.c_str(), value.c_str());
        if (id == PldsTags::INTERFACE_STATUS) {
            interfaceStatusChanged(value == "up");
        } else if (id == PldsTags::SERVER_TYPE) {
            serverTypeChanged(id, value);
        } else if (id.compare(0, PldsTags::FUNCTION_KEY_ID.length(), PldsTags::FUNCTION_KEY_ID) == 0) {
            functionKeyChanged(id, value);
        }
    }
}

void OrvaneService::interfaceStatusChanged(bool up) {
    m_interface_status = up;
    if (up) {
        interfaceCameUp();
    } else if (isRunning()) {
        interfaceWentDown();
    }
}

void OrvaneService::interfaceWentDown() {
    ORVANE_LOG(DEBUG, "manageableDataChanged() - m_webSocketConnectionEstablished is%sestablished.",
               m_webSocketConnectionEstablished ? " " : " not ");
    if (!m_webSocketConnectionEstablished) {
        ORVANE_LOG(DEBUG, "manageableDataChanged() - stop");
        stop();
        m_state = STOP_ON_NETWORK_DOWN;
        return;
    }
    // The service stays as it is; what it has to say waits in the recovery buffer.
    ORVANE_LOG(DEBUG, "manageableDataChanged() - start web socket connection recovery timer[%d]! Timeout is %d seconds",
               m_webSocketRecoveryTimer, m_recoveryTimeout);
    setWebSocketState(WS_STATE_RECOVERING);
    m_webSocketRecoveryTimer =
        m_pSvcRTEContext->createTimer(this, OrvaneDuration::clampToMilliseconds(m_recoveryTimeout * 1000LL));
    m_pSvcRTEContext->startTimer(m_webSocketRecoveryTimer);
}

void OrvaneService::interfaceCameUp() {
    if (m_state == STOP_ON_NETWORK_DOWN) {
        m_state = CONFIGURED_ON_NETWORK_UP;
    }
    ORVANE_LOG(DEBUG, "manageableDataChanged() - state %s", getStateAsText(m_state).c_str());
    if (m_webSocketRecoveryTimer == 0 && !getRecoverWebSocketConnectionWaitForLanInterfaceUp()) {
        ORVANE_LOG(DEBUG, "manageableDataChanged() - Login");
        asyncLogin();
        return;
    }
    setRecoverWebSocketConnectionWaitForLanInterfaceUp(false);
    ORVANE_LOG(DEBUG, "manageableDataChanged() - recover web socket connection");
    m_webSocketRecoveryTimer = stopAndDeleteTimer(m_webSocketRecoveryTimer);
    asyncRecoverWebSocketConnection();
}

void OrvaneService::serverTypeChanged(const std::string& id, const std::string& value) {
    const bool cloudServerType = value == "7";
    if (cloudServerType == m_ov_server_type) {
        return;
    }
    ORVANE_LOG(DEBUG, "manageableDataChanged() id[%s] changed, old value[%s], new value[%s]", id.c_str(),
               OrvaneLog::text(m_ov_server_type), OrvaneLog::text(cloudServerType));
    m_ov_server_type = cloudServerType;
    if (cloudServerType) {
        asyncLogin();
    } else if (isRunning()) {
        m_pSvcRTEContext->stopTimer(m_restartTimer);
        m_pSvcRTEContext->startTimer(m_restartTimer);
    }
}

void OrvaneService::systemStatusChange(const std::string& status, const std::string& statusInfo) {
    ORVANE_LOG(STATUS, "systemStatusChange() - status[%s], statusInfo[%s]", status.c_str(), statusInfo.c_str());
    if (status == "Enabled") {
        getDevicesAndUpdateInfo();
    }
}

bool OrvaneService::resetUserData() {
    if (isRunning()) {
        ORVANE_LOG(STATUS, "resetUserData() stopping and deconfiguring service");
        stop();
        m_state = DECONFIGURING;
    }
    deconfigure();
    addSecurityLogEntry("Orvane Service: Reseting user data", true);
    ORVANE_LOG(STATUS, "resetUserData() clearing configuration");
    // The phonebook's flag and its former value are left as they are.
    m_server.clear();
    m_server_old.clear();
    m_sync_callLog = false;
    m_sync_callLog_old = false;
    {
        CriticalSection dnd(m_dndSem);
        m_sync_dnd = true;
        m_sync_dnd_old = false;
    }
    setPLDSValue(PldsTags::ORVANE_API_SERVER_ADDRESS, "");
    setPLDSValue(PldsTags::ORVANE_API_SYNC_CALL_LOG, "false");
    setPLDSValue(PldsTags::ORVANE_API_SYNC_PHONEBOOK, "false");
    setPLDSValue(PldsTags::ORVANE_API_SYNC_INTERVAL, "60");
    setPLDSValue(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, "");
    setPLDSValue(PldsTags::ORVANE_API_SYNC_DND, "true");
    return true;
}
