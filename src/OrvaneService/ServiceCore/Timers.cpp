#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneService/ServiceCore/Duration.h"
#include "framework/Context.h"

void OrvaneService::timerEvent(int id) {
    if (id == m_tokenTimer) {
        ORVANE_LOG(DEBUG, "timerEvent(%d) token timer expired, state[%s]", id, getStateAsText(m_state).c_str());
        m_tokenTimer = stopAndDeleteTimer(m_tokenTimer);
        if (m_state == CONNECTED) {
            getToken();
            return;
        }
        start();
    } else if (id == m_restartTimer) {
        ORVANE_LOG(DEBUG, "timerEvent(%d) restart timer expired, state[%s]", id, getStateAsText(m_state).c_str());
        stop();
        start();
    } else if (id == m_refreshCallLogTimer || id == m_refreshCallLogEventTimer) {
        ORVANE_LOG(DEBUG, "timerEvent(%d) refresh call log timer expired, state[%s]", id,
                   getStateAsText(m_state).c_str());
        recreateRefreshCallLogTimer();
        m_callLogSyncActive = true;
        getCallLogsAndVoicemails();
        m_callLogSyncActive = false;
    } else if (id == m_refreshSubscriptionTimer) {
        m_restoreAfterErrorRetries = 3;
        ORVANE_LOG(DEBUG, "timerEvent(%d) refresh Subscription OV events timer expired, state[%s]", id,
                   getStateAsText(m_state).c_str());
        refreshOvEventsSubscription();
    } else if (id == m_webSocketRecoveryTimer) {
        webSocketRecoveryTimerExpired(id);
    } else if (id == m_reloadAllDataTimer) {
        ORVANE_LOG(DEBUG, "timerEvent(%d) reload all data timer expired, state[%s]", id,
                   getStateAsText(m_state).c_str());
        reloadAllDataIfUserChanged();
    } else if (id == m_webSocketIdleTimer) {
        ORVANE_LOG(DEBUG, "timerEvent(%d) - web socket idleTimer expired, state[%s]", id,
                   getStateAsText(m_state).c_str());
        sendHeartbeatMsg();
    } else if (id == m_webSocketHeartbeatTimer) {
        ORVANE_LOG(ERROR,
                   "timerEvent(%d) - web socket hearbeatTimer expired! Web socket connection are closing by server! "
                   "state[%s]",
                   id, getStateAsText(m_state).c_str());
        m_heartbeatPending = false;
    } else if (id == m_webSocketRestoreAfterErrorTimer) {
        restoreAfterErrorTimerExpired(id);
    }
}

void OrvaneService::recreateRefreshCallLogTimer() {
    if (m_sync_interval == m_sync_interval_old) {
        return;
    }
    ORVANE_LOG(DEBUG, "timerEvent() sync interval changed, recreating timer");
    m_sync_interval_old = m_sync_interval;
    m_pSvcRTEContext->deleteTimer(m_refreshCallLogTimer);
    m_refreshCallLogTimer = m_pSvcRTEContext->createTimer(this, calculateSyncTimer(m_sync_interval));
}

void OrvaneService::webSocketRecoveryTimerExpired(int id) {
    ORVANE_LOG(DEBUG, "timerEvent(%d) web socket recovery timer expired. Interface status[%s], state[%s]", id,
               OrvaneLog::text(m_interface_status), getStateAsText(m_state).c_str());
    m_webSocketRecoveryTimer = stopAndDeleteTimer(m_webSocketRecoveryTimer);
    if (m_interface_status) {
        asyncRecoverWebSocketConnection();
    } else {
        setRecoverWebSocketConnectionWaitForLanInterfaceUp(true);
    }
}

void OrvaneService::restoreAfterErrorTimerExpired(int id) {
    ORVANE_LOG(ERROR,
               "timerEvent(%d) - web socket restoreAfterErrorTimer expired! Web socket connection will be restored, "
               "state[%s]",
               id, getStateAsText(m_state).c_str());
    if (m_pSvcRTEContext != nullptr) {
        m_pSvcRTEContext->stopTimer(m_webSocketRestoreAfterErrorTimer);
    } else {
        ORVANE_LOG(ERROR, "timerEvent(%d) - m_pSvcRTEContext is NULL!", id);
    }
    recoverWebSocketConnection();
}

int OrvaneService::stopAndDeleteTimer(int id) {
    if (id != 0) {
        ORVANE_LOG(DEBUG, "stopAndDeleteTimer(%d)", id);
        m_pSvcRTEContext->stopTimer(id);
        m_pSvcRTEContext->deleteTimer(id);
    }
    return 0;
}

int OrvaneService::calculateSyncTimer(const int& seconds) {
    return OrvaneDuration::clampToMilliseconds(seconds * 1000LL);
}
