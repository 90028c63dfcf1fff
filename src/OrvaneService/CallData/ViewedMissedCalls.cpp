#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneServiceStrings.h"
#include "data/PldsTags.h"
#include "threads/CriticalSection.h"
#include "utilities/Serializer.h"

using namespace OrvaneServiceStrings;

void OrvaneService::ageMissedCall(const std::string& id) {
    CriticalSection callLog(m_callLogSem);
    m_viewedMissedCallIds.insert(id);
    saveViewedMissedCallIds();
}

void OrvaneService::ageMissedCalls(const std::set<std::string>& ids) {
    CriticalSection callLog(m_callLogSem);
    m_viewedMissedCallIds.insert(ids.begin(), ids.end());
    saveViewedMissedCallIds();
}

bool OrvaneService::isMissedCallViewed(const std::string& id) {
    CriticalSection callLog(m_callLogSem);
    return m_viewedMissedCallIds.count(id) != 0;
}

void OrvaneService::saveViewedMissedCallIds() {
    const std::string serialForm = Serializer::serialize(m_viewedMissedCallIds);
    if (serialForm == m_viewed_missed_call_ids) {
        return;
    }
    // Without a store the old form stays, so that the next save tries again.
    if (m_pLocalMgmt != nullptr) {
        m_viewed_missed_call_ids = serialForm;
        setPLDSValue(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, serialForm);
    }
}

void OrvaneService::deleteCallLogEntry(const std::string& id) {
    std::string path = m_apiPath;
    {
        CriticalSection callLog(m_callLogSem);
        if (m_viewedMissedCallIds.erase(id) != 0) {
            saveViewedMissedCallIds();
        }
    }
    if (m_callLogMap.erase(id) != 0) {
        path += OV_GET_CALL_LOG_PATH + "/" + id;
    }
    {
        CriticalSection bcaLines(m_bcaLineListSem);
        for (auto& [extensionId, line] : m_bcaLineList) {
            if (line.m_bcaLinesCcallLogMap.erase(id) != 0) {
                ORVANE_LOG(DEBUG, "deleteCallLogEntry() delete for bca line[%s]", line.extensionId.c_str());
                path += OV_EXTENSION_PATH + line.extensionId + "/call-log/" + id;
            }
        }
    }
    // One request in all cases: to the bare prefix for an unknown id, to both paths in one for an id in two logs.
    RestAnswer answer;
    if (!sendRequest(path, HttpClientIfc::HTTP_DELETE, answer)) {
        ORVANE_LOG(ERROR, "deleteCallLogEntry() error contacting server");
    } else if (answer.statusCode == HttpClientIfc::STATUS_NO_CONTENT) {
        ORVANE_LOG(DEBUG, "deleteCallLogEntry() statusCode[%d] responseData[%s]", static_cast<int>(answer.statusCode),
                   answer.responseData.c_str());
    } else {
        ORVANE_LOG(ERROR, "deleteCallLogEntry() statusCode[%d] responseData[%s]", static_cast<int>(answer.statusCode),
                   answer.responseData.c_str());
    }
}

bool OrvaneService::deleteAllCallLogEntries() {
    RestAnswer answer;
    if (!sendRequest(m_apiPath + OV_GET_CALL_LOG_PATH, HttpClientIfc::HTTP_DELETE, answer)) {
        ORVANE_LOG(ERROR, "deleteAllCallLogEntries() error contacting server");
        return false;
    }
    if (answer.statusCode != HttpClientIfc::STATUS_NO_CONTENT) {
        ORVANE_LOG(ERROR, "deleteAllCallLogEntries() statusCode[%d] responseData[%s]",
                   static_cast<int>(answer.statusCode), answer.responseData.c_str());
        return false;
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
    refreshCallLogEntries();
    return true;
}
