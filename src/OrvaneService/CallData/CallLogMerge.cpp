#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "data/PldsTags.h"
#include "threads/CriticalSection.h"

using namespace OrvaneServiceStrings;

void OrvaneService::handleCallLogResponse(StatusCode statusCode, std::string& responseData, Records& callRecordsVector,
                                          bool& fullSync) {
    if (statusCode != HttpClientIfc::STATUS_OK || responseData.empty()) {
        {
            CriticalSection syncToken(m_callLogSyncTokenSem);
            m_callLogSyncToken.clear();
        }
        static_cast<void>(OrvaneJson::isAnswerComplete("handleCallLogResponse", statusCode, responseData));
        return;
    }
    {
        // The token that the request was made with, before the answer's own is stored.
        CriticalSection syncToken(m_callLogSyncTokenSem);
        fullSync = m_callLogSyncToken.empty();
    }
    if (const OrvaneJson::Value tree = OrvaneJson::parse("handleCallLogResponse", responseData)) {
        storeCallLogSyncToken(tree.get());
        mergeCallLogRecords(tree.get(), callRecordsVector);
    }
    ORVANE_LOG(STATUS,
               "handleCallLogResponse() m_callLogMap.size[%d] fullSync[%s] callRecordsVector.size[%d] "
               "m_syncViewedMissedCallIds[%s], m_needToSaveViewedMissedCallIds[%s]",
               static_cast<int>(m_callLogMap.size()), OrvaneLog::text(fullSync),
               static_cast<int>(callRecordsVector.size()), OrvaneLog::text(m_syncViewedMissedCallIds),
               OrvaneLog::text(m_needToSaveViewedMissedCallIds));
}

void OrvaneService::storeCallLogSyncToken(json_t* root) {
    CriticalSection section(m_callLogSyncTokenSem);
    json_t* syncInfo = nullptr;
    std::string syncToken;
    if (!OrvaneServiceHelper::getObjectFromJson(root, syncInfo, OV_SYNC_INFO) ||
        !OrvaneServiceHelper::getStringFromJson(syncInfo, syncToken, OV_SYNC_TOKEN)) {
        return;
    }
    // The tokens were cleared while this answer was on its way: it must not bring one back.
    m_callLogSyncToken = m_callLogFullSyncPending ? std::string() : syncToken;
}

void OrvaneService::mergeCallLogRecords(json_t* root, Records& callRecordsVector) {
    CriticalSection response(m_callLogResponseSem);
    json_t* records = nullptr;
    if (!OrvaneServiceHelper::getArrayFromJson(root, records, OV_RECORDS)) {
        ORVANE_LOG(ERROR, "handleCallLogResponse() records not an array");
        return;
    }
    IdSet missedIds;
    bool lastDialledNumberOpen = true;
    // Outside of the loop, so that one record's buffers serve the next.
    std::string record;
    std::string id;
    std::string callType;
    std::string number;
    std::string telephonySessionId;
    for (std::size_t index = 0; index < json_array_size(records); ++index) {
        json_t* element = json_array_get(records, index);
        bool deleted = false;
        if (!OrvaneServiceHelper::getCallLogRecordFromObject(record, id, callType, number, element, missedIds, deleted,
                                                             std::string(), telephonySessionId, false)) {
            continue;
        }
        mergeCallRecord(id, record, deleted, callRecordsVector);
        storeLastDialledNumber(callType, number, deleted, lastDialledNumberOpen);
        forgetPendingSession("handleCallLogResponse()", telephonySessionId);
        // The tree gives up what is merged, so that both are not in memory in full.
        json_array_set_new(records, index, json_null());
    }
    // Two blanks in the line: the operation brings one of its own.
    confirmViewedMissedCalls("handleCallLogResponse() ", missedIds, m_callLogMap);
}

void OrvaneService::mergeCallRecord(const std::string& id, const std::string& record, bool deleted,
                                    Records& callRecordsVector) {
    const auto entry = m_callLogMap.lower_bound(id);
    if (entry == m_callLogMap.end() || entry->first != id) {
        if (deleted) {
            ORVANE_LOG(STATUS, "handleCallLogResponse() something went wrong with callId [%s]", id.c_str());
            return;
        }
        ORVANE_LOG(DEBUG, "handleCallLogResponse() create new entry [%s]", record.c_str());
        m_callLogMap.emplace_hint(entry, id, record);
        callRecordsVector.push_back(record);
    } else if (deleted) {
        ORVANE_LOG(STATUS, "handleCallLogResponse() deleting record [%s]", id.c_str());
        m_callLogMap.erase(entry);
        callRecordsVector.push_back(id);
    } else if (entry->second == record) {
        ORVANE_LOG(STATUS, "handleCallLogResponse() ignoring same entry, not updating [%s]", record.c_str());
    } else {
        ORVANE_LOG(STATUS, "handleCallLogResponse() updating changed record [%s]", record.c_str());
        entry->second = record;
        callRecordsVector.push_back(record);
    }
}

void OrvaneService::storeLastDialledNumber(const std::string& callType, const std::string& number, bool deleted,
                                           bool& open) {
    if (open && !deleted && callType == OrvaneServiceHelper::DIALLED && number != OrvaneServiceHelper::UNKNOWN_NUMBER) {
        setPLDSValue(PldsTags::LAST_DIALLED_NUMBER, number);
        open = false;
    }
}

void OrvaneService::forgetPendingSession(const char* operation, const std::string& telephonySessionId) {
    CriticalSection sessions(m_telephonySessionsSem);
    const auto session = m_pendingTelephonySessions.find(telephonySessionId);
    if (session != m_pendingTelephonySessions.end()) {
        ORVANE_LOG(DEBUG, "%s received record for telephony session [%s]", operation, telephonySessionId.c_str());
        m_pendingTelephonySessions.erase(session);
    }
}

void OrvaneService::confirmViewedMissedCalls(const char* operation, const IdSet& missedIds, const RecordMap& map) {
    if (!m_syncViewedMissedCallIds) {
        return;
    }
    CriticalSection callLog(m_callLogSem);
    auto id = m_oldViewedMissedCallIds.begin();
    while (id != m_oldViewedMissedCallIds.end()) {
        if (missedIds.count(*id) == 0 || map.count(*id) == 0) {
            ++id;
            continue;
        }
        ORVANE_LOG(DEBUG, "%s [%s] keeps in m_viewedMissedCallIds", operation, id->c_str());
        id = m_oldViewedMissedCallIds.erase(id);
        m_needToSaveViewedMissedCallIds = true;
    }
}
