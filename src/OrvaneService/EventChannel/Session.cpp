#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneService/ServiceCore/Duration.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "framework/Context.h"

using namespace OrvaneServiceStrings;

bool OrvaneService::sendHeartbeatMsg() {
    std::string messageId;
    if (!storeNewMessageId(messageId)) {
        ORVANE_LOG(ERROR, "sendHeartbeatMsg() - uuid already stored!");
        return false;
    }
    const OrvaneJson::Value frame(json_pack("[{s:s,s:s}]", OV_TYPE, "Heartbeat", OV_MESSAGE_ID, messageId.c_str()));
    const std::string text = OrvaneJson::dump(frame.get());
    if (text.empty()) {
        findUuidMessageAndDeleteIt(messageId);
        return false;
    }
    const bool sent = sendMessageOnWebsocket(text);
    if (sent) {
        ORVANE_LOG(DEBUG, "sendHeartbeatMsg() - start m_webSocketHeartbeatTimer");
        m_pSvcRTEContext->startTimer(m_webSocketHeartbeatTimer);
        m_heartbeatPending = true;
    }
    return sent;
}

bool OrvaneService::handleMsgHeartbeat(json_t* metadata, json_t*) {
    ORVANE_LOG(DEBUG, "handleMsgHeartbeat");
    std::string messageId;
    if (metadata == nullptr || !OrvaneServiceHelper::getStringFromJson(metadata, messageId, OV_MESSAGE_ID)) {
        ORVANE_LOG(ERROR, "handleMsgHeartbeat() - message parse failed!");
        return false;
    }
    if (!findUuidMessageAndDeleteIt(messageId)) {
        ORVANE_LOG(ERROR, "handleMsgHeartbeat() - messageId not found!");
        return false;
    }
    if (!m_heartbeatPending) {
        return false;
    }
    if (m_pSvcRTEContext->isTimerRunning(m_webSocketHeartbeatTimer)) {
        m_pSvcRTEContext->stopTimer(m_webSocketHeartbeatTimer);
    }
    if (!m_pSvcRTEContext->isTimerRunning(m_webSocketIdleTimer)) {
        ORVANE_LOG(DEBUG, "handleMsgHeartbeat() - startTimer");
        m_pSvcRTEContext->startTimer(m_webSocketIdleTimer);
    }
    m_heartbeatPending = false;
    return false;
}

bool OrvaneService::handleMsgConnectionDetails(json_t*, json_t* data) {
    ORVANE_LOG(STATUS, "handleMsgConnectioDetails()");
    std::string creationTime;
    int maxConnectionsPerSession = 0;
    int recoveryBufferSize = 0;
    int recoveryTimeout = 0;
    int idleTimeout = 0;
    int absoluteTimeout = 0;
    if (data == nullptr || !OrvaneServiceHelper::getStringFromJson(data, creationTime, OV_CREATION_TIME) ||
        !OrvaneServiceHelper::getIntegerFromJson(data, maxConnectionsPerSession, OV_MAX_CONNECTIONS_PER_SESSION) ||
        !OrvaneServiceHelper::getIntegerFromJson(data, recoveryBufferSize, OV_RECOVERY_BUFFER_SIZE) ||
        !OrvaneServiceHelper::getIntegerFromJson(data, recoveryTimeout, OV_RECOVERY_TIMEOUT) ||
        !OrvaneServiceHelper::getIntegerFromJson(data, idleTimeout, OV_IDLE_TIMEOUT) ||
        !OrvaneServiceHelper::getIntegerFromJson(data, absoluteTimeout, OV_ABSOLUTE_TIMEOUT)) {
        return false;
    }
    ORVANE_LOG(DETAIL,
               "handleMsgConnectioDetails() - creationDate[%s], maxConnectionsPerSession[%d], "
               "recoveryBufferSize[%d],recoveryTimeout[%d], idleTimeout[%d], absoluteTimeout[%d]",
               creationTime.c_str(), maxConnectionsPerSession, recoveryBufferSize, recoveryTimeout, idleTimeout,
               absoluteTimeout);
    m_recoveryTimeout = recoveryTimeout;
    m_recoveryBufferSize = recoveryBufferSize;
    if (m_pSvcRTEContext != nullptr && idleTimeout > 0) {
        startSessionTimers(idleTimeout);
    }
    const SessionStart sessionStart = decideSessionStart(data);
    setRecoverWebSocketConnection(false);
    ORVANE_LOG(DEBUG, "handleMsgConnectioDetails() - m_webSocketState = %d", static_cast<int>(getWebSocketState()));
    if (sessionStart.flushBuffer) {
        ORVANE_LOG(DEBUG, "handleMsgConnectioDetails() - send recovery buffer");
        setWebSocketState(WS_STATE_SENDING_RECOVERY_BUFFER);
        sendRecoveryBuffer();
    }
    setWebSocketState(WS_STATE_READY);
    if (sessionStart.subscribeAnew) {
        ORVANE_LOG(DEBUG, "handleMsgConnectioDetails() - send OV Events subscription.");
        m_ovEvents.clear();
        subscribeOvEvents();
    }
    return true;
}

void OrvaneService::startSessionTimers(int idleTimeoutSeconds) {
    ORVANE_LOG(DETAIL, "handleMsgConnectioDetails() - start the idle timer[%d]", m_webSocketIdleTimer);
    m_webSocketIdleTimer = stopAndDeleteTimer(m_webSocketIdleTimer);
    m_webSocketHeartbeatTimer = stopAndDeleteTimer(m_webSocketHeartbeatTimer);
    // 90% of the idle time until a heartbeat is sent, 1% of it for the answer.
    const int idleDelay = OrvaneDuration::clampToMilliseconds(idleTimeoutSeconds * 900LL);
    const int heartbeatDelay = OrvaneDuration::clampToMilliseconds(idleTimeoutSeconds * 10LL);
    m_webSocketIdleTimer = m_pSvcRTEContext->createTimer(this, idleDelay);
    m_webSocketHeartbeatTimer = m_pSvcRTEContext->createTimer(this, heartbeatDelay);
    ORVANE_LOG(DETAIL,
               "handleMsgConnectioDetails() - create and run web socket idle timer[%d] %d ms!, heartbeatDelay[%d] "
               "%d ms",
               m_webSocketIdleTimer, idleDelay, m_webSocketHeartbeatTimer, heartbeatDelay);
    m_pSvcRTEContext->startTimer(m_webSocketIdleTimer);
    m_idleTimeout = idleTimeoutSeconds;
}

OrvaneService::SessionStart OrvaneService::decideSessionStart(json_t* data) {
    std::string recoveryState;
    if (!OrvaneServiceHelper::getStringFromJson(data, recoveryState, OV_RECOVERY_STATE)) {
        if (getRecoverWebSocketConnection()) {
            return {false, false};
        }
        ORVANE_LOG(STATUS, "handleMsgConnectioDetails() - new WebSocket connection was opened!");
        m_recoveryBuffer.clear();
        return {false, true};
    }
    if (recoveryState == "Successful") {
        ORVANE_LOG(STATUS, "handleMsgConnectioDetails() - recovery state is successful");
        return {true, false};
    }
    m_recoveryBuffer.clear();
    if (recoveryState == "Failed") {
        ORVANE_LOG(STATUS, "handleMsgConnectioDetails() - recovery state is failed");
        return {false, true};
    }
    ORVANE_LOG(WARNING, "handleMsgConnectioDetails() - recovery state is unknown '%s'", recoveryState.c_str());
    return {false, false};
}
