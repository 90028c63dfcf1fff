#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"

using namespace OrvaneServiceStrings;

void OrvaneService::handleBcaCallLogResponse(StatusCode statusCode, std::string& responseData, BcaLineType& line,
                                             Records& callRecordsVector) {
    if (!OrvaneJson::isAnswerComplete("handleBcaCallLogResponse", statusCode, responseData)) {
        line.callLogSyncToken.clear();
        return;
    }
    if (const OrvaneJson::Value tree = OrvaneJson::parse("handleBcaCallLogResponse", responseData)) {
        json_t* root = tree.get();
        json_t* syncInfo = nullptr;
        std::string syncToken;
        if (OrvaneServiceHelper::getObjectFromJson(root, syncInfo, OV_SYNC_INFO) &&
            OrvaneServiceHelper::getStringFromJson(syncInfo, syncToken, OV_SYNC_TOKEN)) {
            line.callLogSyncToken = line.fullSyncPending ? std::string() : syncToken;
        }
        mergeBcaCallLogRecords(root, line, callRecordsVector);
    }
    ORVANE_LOG(STATUS,
               "handleBcaCallLogResponse() m_bcaLinesCcallLogMap.size[%zu] callRecordsVector.size[%zu] "
               "m_syncViewedMissedCallIds[%s] m_needToSaveViewedMissedCallIds[%s]",
               line.m_bcaLinesCcallLogMap.size(), callRecordsVector.size(), OrvaneLog::text(m_syncViewedMissedCallIds),
               OrvaneLog::text(m_needToSaveViewedMissedCallIds));
}

/// The line is the caller's private copy: nothing to lock.
void OrvaneService::mergeBcaCallLogRecords(json_t* root, BcaLineType& line, Records& callRecordsVector) {
    json_t* records = nullptr;
    if (!OrvaneServiceHelper::getArrayFromJson(root, records, OV_RECORDS)) {
        ORVANE_LOG(ERROR, "handleBcaCallLogResponse() records not an array");
        return;
    }
    IdSet missedIds;
    bool lastDialledNumberOpen = true;
    for (std::size_t index = 0; index < json_array_size(records); ++index) {
        json_t* element = json_array_get(records, index);
        std::string record;
        std::string id;
        std::string callType;
        std::string number;
        std::string telephonySessionId;
        bool deleted = false;
        if (!OrvaneServiceHelper::getCallLogRecordFromObject(record, id, callType, number, element, missedIds, deleted,
                                                             line.phoneNumber, telephonySessionId, true)) {
            continue;
        }
        // A call that stands in the user's own log too counts there only.
        if (m_callLogMap.count(id) == 0) {
            mergeBcaCallRecord(id, record, deleted, line.m_bcaLinesCcallLogMap, callRecordsVector);
            storeLastDialledNumber(callType, number, deleted, lastDialledNumberOpen);
        }
        forgetPendingSession("handleBcaCallLogResponse()", telephonySessionId);
    }
    confirmViewedMissedCalls("handleBcaCallLogResponse()", missedIds, line.m_bcaLinesCcallLogMap);
}

void OrvaneService::mergeBcaCallRecord(const std::string& id, const std::string& record, bool deleted, RecordMap& map,
                                       Records& callRecordsVector) {
    const auto entry = map.find(id);
    if (entry == map.end()) {
        if (!deleted) {
            ORVANE_LOG(DEBUG, "handleBcaCallLogResponse() create new entry [%s]", record.c_str());
            map.emplace(id, record);
            callRecordsVector.push_back(record);
        }
    } else if (deleted) {
        ORVANE_LOG(STATUS, "handleBcaCallLogResponse() deleting record [%s]", id.c_str());
        map.erase(entry);
        callRecordsVector.push_back(id);
    } else if (entry->second == record) {
        ORVANE_LOG(STATUS, "handleBcaCallLogResponse() ignoring same entry, not updating [%s]", record.c_str());
    } else {
        ORVANE_LOG(STATUS, "handleBcaCallLogResponse() - update");
        entry->second = record;
        callRecordsVector.push_back(record);
    }
}
