#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "threads/CriticalSection.h"

using namespace OrvaneServiceStrings;

namespace {

constexpr std::size_t phonebookCapacity = 250;

} // namespace

void OrvaneService::getPhonebook() {
    ORVANE_LOG(STATUS, "getPhonebook() m_sync_phonebook[%s]", OrvaneLog::text(m_sync_phonebook));
    if (m_state != CONNECTED) {
        return;
    }
    Records records;
    bool publishData = false;
    bool fullSync = false;
    if (m_sync_phonebook) {
        std::string url = m_apiPath + OV_GET_CONTACTS_PATH_SYNC;
        {
            CriticalSection syncToken(m_phonebookSyncTokenSem);
            fullSync = m_phonebookSyncToken.empty();
            if (fullSync) {
                m_phonebookMap.clear();
                url += OV_GET_CONTACTS_FSYNC_OPTIONS;
                m_phonebookFullSyncPending = false;
            } else {
                url += OV_GET_CONTACTS_ISYNC_OPTIONS + m_phonebookSyncToken;
            }
        }
        downloadPhonebookPages(url, records, publishData);
    }
    ORVANE_LOG(STATUS, "getPhonebook() phonebookRecordsVector[%zu] publishData[%s] phonebookFullSync[%s]",
               m_phonebookMap.size(), OrvaneLog::text(publishData), OrvaneLog::text(fullSync));
    if (!publishData) {
        return;
    }
    if (fullSync) {
        fireOrvaneFullSyncEvent(records, OrvaneServiceTypes::DATA_PHONEBOOK);
    } else {
        fireOrvaneIncrementalSyncEvent(records, OrvaneServiceTypes::DATA_PHONEBOOK);
    }
}

void OrvaneService::downloadPhonebookPages(std::string url, Records& records, bool& publishData) {
    int pageId = 0;
    bool anotherPage = true;
    // Tested between pages, so a page may carry the book past its capacity.
    while (anotherPage && !isPhonebookFull()) {
        if (pageId >= 1) {
            // Page ids pile up behind each other; the server takes the last one.
            url += "&pageId=" + std::to_string(pageId);
        }
        RestAnswer answer;
        if (!sendRequest(url, HttpClientIfc::HTTP_GET, answer)) {
            return;
        }
        ORVANE_LOG(DEBUG, "%s - realPath[%s], istatusCode[%d], responseData[%s]", "getPhonebook", url.c_str(),
                   static_cast<int>(answer.statusCode), answer.responseData.c_str());
        anotherPage = handlePhonebookResponse(answer.statusCode, answer.responseData, pageId, records, publishData);
    }
}

bool OrvaneService::isPhonebookFull() const {
    return m_phonebookMap.size() >= phonebookCapacity;
}

bool OrvaneService::handlePhonebookResponse(StatusCode statusCode, std::string& response, int& nextPageId,
                                            Records& records, bool& publishData) {
    const OrvaneJson::Value tree = OrvaneJson::parseAnswer("handlePhonebookResponse", statusCode, response);
    if (!tree) {
        return false;
    }
    json_t* root = tree.get();
    bool anotherPage = false;
    if (!storePhonebookSyncToken(root, nextPageId, anotherPage)) {
        return false;
    }

    CriticalSection section(m_phonebookResponseSem);
    json_t* elements = nullptr;
    if (!OrvaneServiceHelper::getArrayFromJson(root, elements, OV_RECORDS)) {
        ORVANE_LOG(ERROR, "handlePhonebookResponse() records not an array");
        return anotherPage;
    }
    for (std::size_t index = 0; index < json_array_size(elements); ++index) {
        std::string stringRecord;
        if (handlePhonebookRecord(json_array_get(elements, index), stringRecord)) {
            publishData = true;
            records.push_back(stringRecord);
        }
    }
    ORVANE_LOG(STATUS, "handlePhonebookResponse() records size[%zu] nextPageId[%d]", records.size(), nextPageId);
    return anotherPage;
}

/// False when the answer's records are not to be looked at. The token is stored by the last page only, so that a
/// download that broke off begins again from the old one.
bool OrvaneService::storePhonebookSyncToken(json_t* root, int& nextPageId, bool& anotherPage) {
    m_phonebookSyncTokenSem.take(-1);
    json_t* syncInfo = nullptr;
    std::string currentSyncToken;
    if (!OrvaneServiceHelper::getObjectFromJson(root, syncInfo, OV_SYNC_INFO) ||
        !OrvaneServiceHelper::getStringFromJson(syncInfo, currentSyncToken, OV_SYNC_TOKEN)) {
        // The semaphore stays taken, and the next synchronisation of the phonebook waits for it without end.
        return false;
    }
    ORVANE_LOG(STATUS, "handlePhonebookResponse() currentSyncToken[%s] m_phonebookSyncToken[%s]",
               currentSyncToken.c_str(), m_phonebookSyncToken.c_str());
    if (currentSyncToken == m_phonebookSyncToken) {
        m_phonebookSyncTokenSem.give();
        ORVANE_LOG(DEBUG, "handlePhonebookResponse() same sync token");
        return false;
    }
    anotherPage = OrvaneServiceHelper::getIntegerFromJson(root, nextPageId, OV_NEXT_PAGE_ID);
    if (anotherPage) {
        ORVANE_LOG(DEBUG, "handlePhonebookResponse() nextPageId[%d]", nextPageId);
    } else {
        m_phonebookSyncToken = currentSyncToken;
        ORVANE_LOG(DEBUG, "handlePhonebookResponse() storing m_phonebookSyncToken[%s]", m_phonebookSyncToken.c_str());
    }
    m_phonebookSyncTokenSem.give();
    return true;
}

bool OrvaneService::handlePhonebookRecordResponse(StatusCode statusCode, std::string& response, Records& records,
                                                  bool& publishData) {
    const OrvaneJson::Value tree = OrvaneJson::parseAnswer("handlePhonebookRecordResponse", statusCode, response);
    if (!tree) {
        return false;
    }
    if (!json_is_object(tree.get())) {
        ORVANE_LOG(ERROR, "handlePhonebookRecordResponse() records not an object");
        return false;
    }
    std::string stringRecord;
    const bool changed = handlePhonebookRecord(tree.get(), stringRecord);
    if (changed) {
        publishData = true;
        records.push_back(stringRecord);
    }
    return changed;
}

bool OrvaneService::handlePhonebookRecord(json_t* record, std::string& stringRecord) {
    int id = 0;
    bool deleted = false;
    if (!OrvaneServiceHelper::getPhonebookRecordFromObject(stringRecord, id, record, deleted)) {
        return false;
    }
    const std::string phonebookId = std::to_string(id);
    const auto entry = m_phonebookMap.find(phonebookId);
    if (entry == m_phonebookMap.end()) {
        if (deleted) {
            return false;
        }
        ORVANE_LOG(DEBUG, "handlePhonebookRecord() add new phonebook record[%s] with phonebookId[%s]",
                   stringRecord.c_str(), phonebookId.c_str());
        m_phonebookMap.emplace(phonebookId, stringRecord);
        return true;
    }
    if (deleted) {
        ORVANE_LOG(STATUS, "handlePhonebookRecord() deleting record [%s]", phonebookId.c_str());
        m_phonebookMap.erase(entry);
        stringRecord = phonebookId;
        return true;
    }
    if (entry->second == stringRecord) {
        ORVANE_LOG(STATUS, "handlePhonebookRecord() ignoring same entry, not updating [%s]", stringRecord.c_str());
        return false;
    }
    ORVANE_LOG(STATUS, "handlePhonebookRecord() updating changed record [%s]", stringRecord.c_str());
    entry->second = stringRecord;
    return true;
}

void OrvaneService::refreshPhonebookEntries() {
    ORVANE_LOG(DEBUG, "refreshPhonebookEntries() m_interface_status[%s]", OrvaneLog::text(m_interface_status));
    if (!m_interface_status || m_refreshPhonebookThread.running || m_phonebookSyncActive) {
        return;
    }
    m_refreshPhonebookThread.running = true;
    if (!m_refreshPhonebookThread.spawn<asyncRefreshPhonebookRunner>(this)) {
        ORVANE_LOG(ERROR, "refreshPhonebookEntries() failed to create thread!");
        m_refreshPhonebookThread.ended();
        return;
    }
    m_refreshPhonebookThread.detach();
}

void* OrvaneService::asyncRefreshPhonebookRunner(OrvaneService* service) {
    ORVANE_LOG(STATUS, "asyncRefreshPhonebookRunner()");
    if (service != nullptr) {
        service->refreshPhonebookEntriesThread();
    }
    return nullptr;
}

void OrvaneService::refreshPhonebookEntriesThread() {
    getPhonebook();
    m_refreshPhonebookThread.ended();
}
