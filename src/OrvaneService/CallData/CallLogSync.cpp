#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneServiceStrings.h"
#include "framework/Context.h"
#include "threads/CriticalSection.h"

using namespace OrvaneServiceStrings;

void OrvaneService::getCallLogsAndVoicemails() {
    if (!m_sync_callLog) {
        Records nothing;
        fireOrvaneFullSyncEvent(nothing, OrvaneServiceTypes::DATA_CALL_LOG);
        return;
    }
    m_pSvcRTEContext->stopTimer(m_refreshCallLogTimer);
    getCallLogs();
    getVoicemails(false);

    bool recordsAwaited = false;
    {
        CriticalSection sessions(m_telephonySessionsSem);
        recordsAwaited = !m_pendingTelephonySessions.empty();
    }
    if (recordsAwaited) {
        m_pSvcRTEContext->startTimer(m_refreshCallLogEventTimer);
    } else {
        ORVANE_LOG(STATUS, "getCallLogsAndVoicemails() - start polling timer %d second(s)", m_sync_interval);
        m_pSvcRTEContext->startTimer(m_refreshCallLogTimer);
    }
}

void OrvaneService::refreshCallLogEntries() {
    if (m_pSvcRTEContext->isTimerRunning(m_refreshCallLogEventTimer) || !m_interface_status ||
        m_refreshCallLogThread.running || m_callLogSyncActive) {
        return;
    }
    m_refreshCallLogThread.running = true;
    if (!m_refreshCallLogThread.spawn<asyncRefreshCallLogRunner>(this)) {
        ORVANE_LOG(ERROR, "refreshCallLogEntries() failed to create thread!");
        m_refreshCallLogThread.ended();
        return;
    }
    m_refreshCallLogThread.detach();
}

void* OrvaneService::asyncRefreshCallLogRunner(OrvaneService* service) {
    if (service != nullptr) {
        service->refreshCallLogEntriesThread();
    }
    return nullptr;
}

void OrvaneService::refreshCallLogEntriesThread() {
    getCallLogs();
    m_refreshCallLogThread.ended();
}

void OrvaneService::getCallLogs() {
    Records callRecordsVector;
    bool fullSync = false;
    getCallLog(callRecordsVector, fullSync);
    if (m_bcaAllowed) {
        getBcaCallLog(callRecordsVector);
    }
    publishCallLog(callRecordsVector, fullSync);
}

void OrvaneService::getCallLog(Records& callRecordsVector, bool& fullSync) {
    if (m_state != CONNECTED) {
        return;
    }
    std::string path = m_apiPath + OV_GET_CALL_LOG_PATH_SYNC;
    {
        CriticalSection syncToken(m_callLogSyncTokenSem);
        if (!m_callLogSyncToken.empty()) {
            path += OV_GET_CALL_LOG_ISYNC_OPTIONS + m_callLogSyncToken;
        } else {
            path += OV_GET_CALL_LOG_FSYNC_OPTIONS;
            m_callLogMap.clear();
            if (!m_syncViewedMissedCallIds) {
                CriticalSection callLog(m_callLogSem);
                m_oldViewedMissedCallIds = m_viewedMissedCallIds;
                m_syncViewedMissedCallIds = true;
            }
            m_callLogFullSyncPending = false;
        }
    }
    RestAnswer answer;
    if (sendRequest(path, HttpClientIfc::HTTP_GET, answer)) {
        handleCallLogResponse(answer.statusCode, answer.responseData, callRecordsVector, fullSync);
    } else if (m_webSocketRecoveryTimer == 0) {
        CriticalSection syncToken(m_callLogSyncTokenSem);
        m_callLogSyncToken.clear();
    }
}

void OrvaneService::publishCallLog(Records& callRecordsVector, bool fullSync) {
    if (m_syncViewedMissedCallIds) {
        CriticalSection callLog(m_callLogSem);
        for (const std::string& unconfirmedId : m_oldViewedMissedCallIds) {
            m_viewedMissedCallIds.erase(unconfirmedId);
        }
        m_syncViewedMissedCallIds = false;
        if (m_needToSaveViewedMissedCallIds) {
            saveViewedMissedCallIds();
            m_needToSaveViewedMissedCallIds = false;
        }
    }
    if (fullSync) {
        fireOrvaneFullSyncEvent(callRecordsVector, OrvaneServiceTypes::DATA_CALL_LOG);
    } else {
        fireOrvaneIncrementalSyncEvent(callRecordsVector, OrvaneServiceTypes::DATA_CALL_LOG);
    }
}
