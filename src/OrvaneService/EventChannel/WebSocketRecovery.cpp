#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "network/WebSocketThread.h"
#include "threads/CriticalSection.h"

void OrvaneService::asyncRecoverWebSocketConnection() {
    if (m_recoverWebSocketThread.running) {
        ORVANE_LOG(DETAIL, "asyncRecoverWebSocketConnection() already running");
        return;
    }
    m_recoverWebSocketThread.running = true;
    // Neither detached nor waited for here: the destructor waits.
    if (!m_recoverWebSocketThread.spawn<asyncRecoverWebSocketConnectionRunner>(this)) {
        ORVANE_LOG(ERROR, "asyncRecoverWebSocketConnection() failed to create thread!");
        m_recoverWebSocketThread.ended();
    }
}

void* OrvaneService::asyncRecoverWebSocketConnectionRunner(OrvaneService* service) {
    if (service != nullptr) {
        service->recoverWebSocketConnection();
    }
    return nullptr;
}

void OrvaneService::recoverWebSocketConnection() {
    ORVANE_LOG(DEBUG, "recoverWebSocketConnection()");
    setRecoverWebSocketConnection(true);
    WebSocketThread::stop();
    setWebSocketState(WS_STATE_CLOSED);
    if (m_webSocketEnabled) {
        bool tokenObtained = getWebSocketAccessToken();
        if (!tokenObtained) {
            ORVANE_LOG(DEBUG, "recoverWebSocketConnection() - tries once again");
            tokenObtained = getWebSocketAccessToken();
        }
        if (tokenObtained) {
            openWebSocketConnection();
        } else {
            ORVANE_LOG(DEBUG, "recoverWebSocketConnection() - reconnect Orvane Service");
            stop();
            start();
        }
    }
    setRecoverWebSocketConnection(false);
    m_recoverWebSocketThread.ended();
}

void OrvaneService::setRecoverWebSocketConnection(bool recover) {
    CriticalSection section(m_recoverWebSocketSem);
    m_recoverWebSocketConnection = recover;
}

bool OrvaneService::getRecoverWebSocketConnection() {
    CriticalSection section(m_recoverWebSocketSem);
    return m_recoverWebSocketConnection;
}

void OrvaneService::setRecoverWebSocketConnectionWaitForLanInterfaceUp(bool wait) {
    CriticalSection section(m_recoverWebSocketSem);
    m_recoverWebSocketConnectionWaitForLanInterfaceUp = wait;
}

bool OrvaneService::getRecoverWebSocketConnectionWaitForLanInterfaceUp() {
    CriticalSection section(m_recoverWebSocketSem);
    return m_recoverWebSocketConnectionWaitForLanInterfaceUp;
}
