#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneService/ServiceCore/Duration.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "framework/Context.h"
#include "network/WebSocketThread.h"
#include "threads/CriticalSection.h"

using namespace OrvaneServiceStrings;

namespace {

constexpr int abnormalClosure = 1006; ///< RFC 6455, section 7.4.1
constexpr int restoreDelayMilliseconds = 30000;
constexpr long long recoverySecondsTakenOff = 45000;

} // namespace

bool OrvaneService::getWebSocketAccessToken() {
    ORVANE_LOG(STATUS, "getWebSocketAccessToken()");
    if (!isRunning()) {
        return false;
    }
    RestAnswer answer;
    return sendRequest(m_apiPath + "/restapi/oauth/wstoken", HttpClientIfc::HTTP_POST, answer) &&
           handleWebSocketAccessTokenResponse(answer.statusCode, answer.responseData);
}

bool OrvaneService::handleWebSocketAccessTokenResponse(StatusCode status, std::string& responseData) {
    const OrvaneJson::Value tree = OrvaneJson::parseAnswer("handleWebSocketAccessTokenResponse", status, responseData);
    if (!tree) {
        return false;
    }
    json_t* root = tree.get();
    if (!json_is_object(root)) {
        ORVANE_LOG(ERROR, "handleWebSocketAccessTokenResponse() not an object");
        return false;
    }
    if (!OrvaneServiceHelper::getStringFromJson(root, m_webSocketAccessToken, OV_WS_ACCESS_TOKEN) ||
        !OrvaneServiceHelper::getStringFromJson(root, m_webSocketUri, OV_URI) ||
        !OrvaneServiceHelper::getIntegerFromJson(root, m_webSocketExpiresIn, OV_WS_EXPIRES_IN)) {
        ORVANE_LOG(ERROR, "handleWebSocketAccessTokenResponse() not a valid response\n%s", responseData.c_str());
        return false;
    }
    ORVANE_LOG(DETAIL, "handleWebSocketAccessTokenResponse() access token expires in[%d], webSocket URI[%s]",
               m_webSocketExpiresIn, m_webSocketUri.c_str());
    return true;
}

void OrvaneService::openWebSocketConnection() {
    ORVANE_LOG(STATUS, "openWebSocketConnection()");
    if (!isRunning()) {
        return;
    }
    std::string url = m_webSocketUri + "?access_token=" + m_webSocketAccessToken;
    if (getRecoverWebSocketConnection() && !m_webSocketWsc.empty()) {
        url += "&wsc=" + m_webSocketWsc;
    }
    WebSocketThread::init(this, url, std::string(), std::string());
}

void OrvaneService::onOpen(int code) {
    ORVANE_LOG(STATUS, "onOpen() - code[%d]", code);
    if (code != 0) {
        return;
    }
    m_webSocketSequence = 0;
    m_webSocketWsc.clear();
    m_webSocketConnectionEstablished = true;
    setWebSocketState(WS_STATE_OPENED);
}

void OrvaneService::onError(int code, const std::string& msg) {
    ORVANE_LOG(ERROR, "onError() code[%d] msg[%s]", code, msg.c_str());
}

void OrvaneService::onClose(int code, int localCode, const std::string& msg) {
    ORVANE_LOG(WARNING, "onClose() code[%d] localCode[%d] msg[%s]", code, localCode, msg.c_str());
    m_webSocketConnectionEstablished = false;
    m_webSocketSequence = 0;
    m_webSocketWsc.clear();
    m_ovEvents.clear();
    // The WebSocket state stays as it is.
    if (localCode != abnormalClosure) {
        return;
    }
    ORVANE_LOG(WARNING, "onClose() localCode[%d] indicating abnormally closed event received", localCode);
    if (m_restoreAfterErrorRetries < 1 || m_pSvcRTEContext == nullptr) {
        return;
    }
    --m_restoreAfterErrorRetries;
    if (m_pSvcRTEContext->isTimerRunning(m_webSocketRestoreAfterErrorTimer)) {
        ORVANE_LOG(DEBUG, "onClose() m_webSocketRestoreAfterErrorTimer is already running - no action will be done");
        return;
    }
    if (m_webSocketRestoreAfterErrorTimer != 0) {
        m_pSvcRTEContext->resetTimer(m_webSocketRestoreAfterErrorTimer);
    } else {
        m_webSocketRestoreAfterErrorTimer = m_pSvcRTEContext->createTimer(this, restoreDelayMilliseconds);
    }
    m_pSvcRTEContext->startTimer(m_webSocketRestoreAfterErrorTimer);
}

void OrvaneService::onPongTimeout() {
    if (m_webSocketRecoveryTimer != 0 || getRecoverWebSocketConnection()) {
        return;
    }
    // The difference is taken as it stands; for the time limits in use it is negative, and the timer expires at once.
    const long long seconds = m_recoveryTimeout - recoverySecondsTakenOff;
    ORVANE_LOG(DEBUG, "onPongTimeout() - web socket connection recovery start. Start timer %d seconds",
               static_cast<int>(seconds));
    setWebSocketState(WS_STATE_RECOVERING);
    m_webSocketRecoveryTimer = m_pSvcRTEContext->createTimer(this, OrvaneDuration::clampToMilliseconds(seconds * 1000));
    m_pSvcRTEContext->startTimer(m_webSocketRecoveryTimer);
}

void OrvaneService::onPong() {
    if (m_webSocketRecoveryTimer == 0) {
        return;
    }
    ORVANE_LOG(DEBUG, "onPong() - web socket connection recovery timer is running! Interface status[%s]",
               OrvaneLog::text(m_interface_status));
    m_webSocketRecoveryTimer = stopAndDeleteTimer(m_webSocketRecoveryTimer);
    if (m_interface_status) {
        asyncRecoverWebSocketConnection();
    } else {
        setRecoverWebSocketConnectionWaitForLanInterfaceUp(true);
    }
}

bool OrvaneService::sendMessageOnWebsocket(const std::string& message) {
    const WebSocketState state = getWebSocketState();
    ORVANE_LOG(DEBUG, "sendMessageOnWebsocket() m_webSocketState[%d]", static_cast<int>(state));
    bool sent = false;
    if (state == WS_STATE_READY || state == WS_STATE_SENDING_RECOVERY_BUFFER) {
        WebSocketThread* webSocket = WebSocketThread::instance();
        if (webSocket != nullptr) {
            webSocket->send(message);
            sent = true;
            if (m_pSvcRTEContext != nullptr && m_pSvcRTEContext->isTimerRunning(m_webSocketIdleTimer)) {
                m_pSvcRTEContext->resetTimer(m_webSocketIdleTimer);
            }
        }
    }
    if (getWebSocketState() == WS_STATE_RECOVERING) {
        if (!m_recoveryBuffer.empty() && static_cast<long long>(m_recoveryBuffer.size()) == m_recoveryBufferSize) {
            m_recoveryBuffer.pop_front();
        }
        m_recoveryBuffer.push_back(message);
        ORVANE_LOG(STATUS,
                   "sendMessageOnWebsocket() - message is not sent! Web socket is in the state running! Number "
                   "messages in the recovery buffer %zu",
                   m_recoveryBuffer.size());
    }
    return sent;
}

void OrvaneService::sendRecoveryBuffer() {
    // At most what is there now: a connection that falls back into doubt meanwhile puts messages back in.
    for (std::size_t count = m_recoveryBuffer.size(); count > 0 && !m_recoveryBuffer.empty(); --count) {
        const std::string message = std::move(m_recoveryBuffer.front());
        m_recoveryBuffer.pop_front();
        sendMessageOnWebsocket(message);
    }
}

void OrvaneService::setWebSocketState(WebSocketState state) {
    CriticalSection section(m_webSocketStateSem);
    ORVANE_LOG(DETAIL, "setWebSocketState() change the web socket state from %d to %d",
               static_cast<int>(m_webSocketState), static_cast<int>(state));
    m_webSocketState = state;
}

OrvaneService::WebSocketState OrvaneService::getWebSocketState() {
    CriticalSection section(m_webSocketStateSem);
    return m_webSocketState;
}
