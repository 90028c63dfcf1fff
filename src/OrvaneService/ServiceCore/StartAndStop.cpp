#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "framework/Context.h"
#include "network/WebSocketThread.h"
#include "siblings/JournalServiceIfc.h"
#include "threads/CriticalSection.h"

void OrvaneService::asyncLogin() {
    const bool stateAdmitsLogin = m_state == CONFIGURED_ON_INIT || m_state == CONFIGURED ||
                                  m_state == CONFIGURED_MOBILITY_READY || m_state == CONFIGURED_ON_NETWORK_UP;
    if (!m_interface_status || !m_ov_server_type || !stateAdmitsLogin) {
        ORVANE_LOG(DETAIL, "asyncLogin() ignored. m_ov_server_type[%s] m_interface_status[%s] m_state[%s]",
                   OrvaneLog::text(m_ov_server_type), OrvaneLog::text(m_interface_status),
                   getStateAsText(m_state).c_str());
        return;
    }
    if (m_asyncLoginThread.running) {
        ORVANE_LOG(ERROR, "asyncLogin() thread is already running!");
        return;
    }
    m_asyncLoginThread.running = true;
    if (!m_asyncLoginThread.spawn<asyncLoginRunner>(this)) {
        ORVANE_LOG(ERROR, "asyncLogin() failed to create thread!");
        m_asyncLoginThread.running = false;
        return;
    }
    m_asyncLoginThread.detach();
}

void* OrvaneService::asyncLoginRunner(OrvaneService* service) {
    ORVANE_LOG(STATUS, "asyncLoginRunner()");
    if (service != nullptr) {
        service->start();
    }
    return nullptr;
}

void OrvaneService::start() {
    ORVANE_LOG(STATUS, "start()");
    if (!mayStart()) {
        ORVANE_LOG(ERROR, "start() - cannot launch start(). m_interface_status[%s], m_ov_server_type[%s], m_state[%s]",
                   OrvaneLog::text(m_interface_status), OrvaneLog::text(m_ov_server_type),
                   getStateAsText(m_state).c_str());
        return;
    }
    if (m_state == CONFIGURED) {
        cleanUpForNewUser();
    }
    m_state = START;
    m_webSocketEnabled = m_sync_callLog || m_sync_dnd;
    ORVANE_LOG(DEBUG, "start() web socket enabled[%s]", OrvaneLog::text(m_webSocketEnabled));

    if (getToken()) {
        getExtension();
        getServerDndStatus();
        updateBcaLines();
        downloadForObservers();
        if (m_webSocketEnabled && getWebSocketAccessToken()) {
            openWebSocketConnection();
        }
    } else {
        ORVANE_LOG(ERROR, "start() - acess token is not downloaded!");
    }
    m_asyncLoginThread.ended();
    ORVANE_LOG(DEBUG, "start() - end");
}

bool OrvaneService::mayStart() const {
    return m_interface_status && m_ov_server_type && m_state != START && m_state != CONNECTED;
}

void OrvaneService::cleanUpForNewUser() {
    ORVANE_LOG(DEBUG, "start() first start for new user. cleanup");
    if (m_pJournalService != nullptr) {
        m_pJournalService->cleanUp();
    }
    m_server_old = m_server;
    m_sync_callLog_old = m_sync_callLog;
    m_sync_phonebook_old = m_sync_phonebook;
    CriticalSection callLog(m_callLogSem);
    m_viewedMissedCallIds.clear();
    saveViewedMissedCallIds();
}

void OrvaneService::updateBcaLines() {
    std::vector<BcaLineType> removedLines;
    std::vector<std::string> newLineIds;
    if (getBcaLinesExtension(removedLines, newLineIds)) {
        ORVANE_LOG(DEBUG, "start() bca lines changed! removedBcaLinesList[%zu], newBcaLines[%zu]", removedLines.size(),
                   newLineIds.size());
        removeSyncedDataForBcaLines(removedLines);
    }
}

void OrvaneService::downloadForObservers() {
    if (getNoOfObservers() == 0) {
        ORVANE_LOG(DETAIL, "start() - no observer subscribed; CallLog, Voicemail and Phonebook will not be downloaded "
                           "now");
        return;
    }
    m_callLogSyncActive = true;
    if (!m_refreshCallLogThread.running && !m_refreshVoicemailThread.running) {
        getCallLogsAndVoicemails();
    }
    m_callLogSyncActive = false;

    m_phonebookSyncActive = true;
    if (!m_refreshPhonebookThread.running) {
        getPhonebook();
    }
    m_phonebookSyncActive = false;
}

void OrvaneService::stop() {
    ORVANE_LOG(STATUS, "stop()");
    // First of all, so that running workers see it.
    m_state = STOP;
    {
        CriticalSection connection(m_connectionSem);
        clearSecureConnection(true);
    }
    stopTimersAndWorkers();
    closeWebSocketSession();
}

void OrvaneService::stopTimersAndWorkers() {
    for (const int permanentTimer : {m_refreshCallLogTimer, m_refreshCallLogEventTimer, m_reloadAllDataTimer}) {
        if (permanentTimer > 0) {
            m_pSvcRTEContext->stopTimer(permanentTimer);
        }
    }
    m_refreshSubscriptionTimer = stopAndDeleteTimer(m_refreshSubscriptionTimer);
    m_tokenTimer = stopAndDeleteTimer(m_tokenTimer);
    m_webSocketRestoreAfterErrorTimer = stopAndDeleteTimer(m_webSocketRestoreAfterErrorTimer);

    const auto waitFor = [](WorkerThread& worker, const char* message) {
        // The thread clears its id when it ends: wait for the one that is there now.
        const unsigned long id = worker.id;
        if (id != 0) {
            ORVANE_LOG(DEBUG, "%s", message);
            worker.threader.waitForThreadCompletion(id);
        }
    };
    waitFor(m_asyncLoginThread, "stop() - stop async login Thread");
    waitFor(m_refreshCallLogThread, "stop() - stop refresh call log thread");
    waitFor(m_refreshPhonebookThread, "stop() - stop refresh phonebook thread");
    waitFor(m_refreshVoicemailThread, "stop() - stop refresh voicemail thread");
    waitFor(m_syncDndThread, "stop() - stop enabling or disabling DND synchronisation feature");
    // The recovery thread is left out: this may be running on it.
}

void OrvaneService::closeWebSocketSession() {
    m_webSocketIdleTimer = stopAndDeleteTimer(m_webSocketIdleTimer);
    m_webSocketHeartbeatTimer = stopAndDeleteTimer(m_webSocketHeartbeatTimer);
    m_webSocketRecoveryTimer = stopAndDeleteTimer(m_webSocketRecoveryTimer);

    m_heartbeatPending = false;
    WebSocketThread::stop();
    m_webSocketConnectionEstablished = false;
    setWebSocketState(WS_STATE_CLOSED);

    m_webSocketSequence = 0;
    m_webSocketWsc.clear();
    m_recoveryBuffer.clear();
    m_recoveryBufferSize = 0;
    m_recoveryTimeout = 0;
    m_ovEvents.clear();
}

void OrvaneService::deconfigure() {
    ORVANE_LOG(STATUS, "deconfigure()");
    m_state = DECONFIGURED;
    deleteAllData(false);
}

void OrvaneService::deleteAllData(bool hotDesking) {
    ORVANE_LOG(DEBUG, "deleteAllData() hotDesking[%s]", OrvaneLog::text(hotDesking));
    if (hotDesking || hasCallLogConfigChanged()) {
        forgetCallLog();
    }
    if (hotDesking || hasPhonebookConfigChanged()) {
        forgetPhonebook();
    }
    if (isAnyConfigItemEmpty()) {
        CriticalSection dnd(m_dndSem);
        m_serverDndStatus = OrvaneServiceTypes::DND_UNKNOWN;
        m_serverDndStatusOld = OrvaneServiceTypes::DND_UNKNOWN;
    }
}

void OrvaneService::forgetCallLog() {
    m_callLogMap.clear();
    {
        CriticalSection bcaLines(m_bcaLineListSem);
        m_bcaLineList.clear();
    }
    {
        CriticalSection callLog(m_callLogSem);
        m_viewedMissedCallIds.clear();
        saveViewedMissedCallIds();
    }
    {
        CriticalSection syncToken(m_callLogSyncTokenSem);
        m_callLogSyncToken.clear();
    }
    Records nothing;
    fireOrvaneFullSyncEvent(nothing, OrvaneServiceTypes::DATA_CALL_LOG);
}

void OrvaneService::forgetPhonebook() {
    m_phonebookMap.clear();
    m_phonebookSyncToken.clear();
    Records nothing;
    fireOrvaneFullSyncEvent(nothing, OrvaneServiceTypes::DATA_PHONEBOOK);
}

void OrvaneService::clearSyncTokens() {
    ORVANE_LOG(STATUS, "clearSyncTokens()");
    {
        CriticalSection syncToken(m_callLogSyncTokenSem);
        m_callLogSyncToken.clear();
        m_callLogFullSyncPending = true;
    }
    {
        CriticalSection bcaLines(m_bcaLineListSem);
        if (m_bcaAllowed) {
            for (auto& entry : m_bcaLineList) {
                entry.second.callLogSyncToken.clear();
                entry.second.fullSyncPending = true;
            }
        }
    }
    CriticalSection syncToken(m_phonebookSyncTokenSem);
    m_phonebookSyncToken.clear();
    m_phonebookFullSyncPending = true;
}

void OrvaneService::reloadAllData() {
    ORVANE_LOG(DEBUG, "reloadAllData() m_interface_status[%s] m_ov_server_type[%s]",
               OrvaneLog::text(m_interface_status), OrvaneLog::text(m_ov_server_type));
    if (m_interface_status && m_ov_server_type) {
        m_pSvcRTEContext->stopTimer(m_reloadAllDataTimer);
        m_pSvcRTEContext->startTimer(m_reloadAllDataTimer);
    }
}
