#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneServiceStrings.h"
#include "threads/CriticalSection.h"

#include <optional>

using namespace OrvaneServiceStrings;

void OrvaneService::getBcaCallLog(Records& callRecordsVector) {
    if (m_state != CONNECTED) {
        return;
    }
    // The walk finds its place again by key: lines come and go while a request is under way.
    std::optional<std::string> lastExtensionId;
    BcaLineType line;
    std::string path;
    while (takeNextReadyBcaLine(lastExtensionId, line, path)) {
        downloadBcaCallLog(path, line, callRecordsVector);
        if (!replaceBcaLineInList(line)) {
            ORVANE_LOG(ERROR, "getBcaCallLog() - BCA Line (%s) disappeared meanwhile", line.extensionId.c_str());
        }
    }
}

/// The next ready line behind the last one, as a private copy, with the path of its request. False at the end.
bool OrvaneService::takeNextReadyBcaLine(std::optional<std::string>& lastExtensionId, BcaLineType& line,
                                         std::string& path) {
    CriticalSection bcaLines(m_bcaLineListSem);
    auto entry = m_bcaLineList.begin();
    if (lastExtensionId) {
        entry = m_bcaLineList.find(*lastExtensionId);
        if (entry == m_bcaLineList.end()) {
            ORVANE_LOG(ERROR, "getBcaCallLog() - cannot find last extensionId(%s)", lastExtensionId->c_str());
            return false;
        }
        ++entry;
    }
    while (entry != m_bcaLineList.end() && entry->second.status != BCA_LINE_STATUS_READY) {
        ORVANE_LOG(DEBUG, "getBcaCallLog() - BCA Line (%s) is not ready", entry->first.c_str());
        ++entry;
    }
    if (entry == m_bcaLineList.end()) {
        return false;
    }
    path = prepareBcaCallLogRequest(entry->second);
    line = entry->second;
    lastExtensionId = entry->first;
    return true;
}

void OrvaneService::getBcaCallLog(BcaLineType& line, Records& callRecordsVector, bool&) {
    downloadBcaCallLog(prepareBcaCallLogRequest(line), line, callRecordsVector);
}

/// Path of the line's next request. A full synchronisation empties the line's map and begins a reconciliation of the
/// viewed missed calls, unless one is running.
std::string OrvaneService::prepareBcaCallLogRequest(BcaLineType& line) {
    const std::string path = m_apiPath + OV_EXTENSION_PATH + line.extensionId + "/call-log-sync";
    if (!line.callLogSyncToken.empty()) {
        return path + OV_GET_BCA_CALL_LOG_ISYNC_OPTIONS + line.callLogSyncToken;
    }
    line.m_bcaLinesCcallLogMap.clear();
    line.fullSyncPending = false;
    if (!m_syncViewedMissedCallIds) {
        CriticalSection callLog(m_callLogSem);
        m_syncViewedMissedCallIds = true;
        m_oldViewedMissedCallIds = m_viewedMissedCallIds;
        ORVANE_LOG(DEBUG, "getBcaCallLog() - full sync! oldViewedMissedCallIds [%zu] viewedMissedCallIds [%zu]",
                   m_oldViewedMissedCallIds.size(), m_viewedMissedCallIds.size());
    }
    return path + OV_GET_BCA_CALL_LOG_FSYNC_OPTIONS;
}

void OrvaneService::downloadBcaCallLog(const std::string& path, BcaLineType& line, Records& callRecordsVector) {
    RestAnswer answer;
    if (sendRequest(path, HttpClientIfc::HTTP_GET, answer)) {
        handleBcaCallLogResponse(answer.statusCode, answer.responseData, line, callRecordsVector);
    } else if (m_webSocketRecoveryTimer == 0) {
        line.callLogSyncToken.clear();
    }
}

void OrvaneService::syncDataForBcaLines(const std::vector<std::string>& lineIds) {
    if (lineIds.empty()) {
        return;
    }
    Records callRecordsVector;
    bool fullSync = false;
    for (const std::string& lineId : lineIds) {
        BcaLineType line;
        if (!getCopyOfBcaLineFromList(lineId, line)) {
            ORVANE_LOG(ERROR, "syncDataForBcaLines() - BCA Line (%s) not found", lineId.c_str());
            continue;
        }
        getBcaCallLog(line, callRecordsVector, fullSync);
        getBcaVoicemail(line);
        if (!replaceBcaLineInList(line)) {
            ORVANE_LOG(ERROR, "syncDataForBcaLines() - BCA Line (%s) disappeared meanwhile", lineId.c_str());
        }
    }
    publishCallLog(callRecordsVector, isCallLogSyncTokenEmpty());
    publishVoicemailData();
}

void OrvaneService::removeSyncedDataForBcaLines(const std::vector<BcaLineType>& removedLines) {
    if (removedLines.empty()) {
        return;
    }
    Records callRecordsVector;
    for (const BcaLineType& line : removedLines) {
        for (const auto& entry : line.m_bcaLinesCcallLogMap) {
            callRecordsVector.push_back(entry.first);
        }
    }
    publishCallLog(callRecordsVector, isCallLogSyncTokenEmpty());
    publishVoicemailData();
}

bool OrvaneService::isCallLogSyncTokenEmpty() {
    CriticalSection syncToken(m_callLogSyncTokenSem);
    return m_callLogSyncToken.empty();
}
