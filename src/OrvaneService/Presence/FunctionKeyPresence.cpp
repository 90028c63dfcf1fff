#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "siblings/TeamServiceIfc.h"
#include "threads/CriticalSection.h"
#include "utilities/ClientUtils.h"

using namespace OrvaneServiceStrings;

bool OrvaneService::insertFpkPresenceDataIntoMap(const FpkPresenceDataType& record) {
    CriticalSection presence(m_fpkPresenceMapSem);
    return m_fpkPresenceMap.emplace(record.extensionId, record).second;
}

bool OrvaneService::doesFpkPresenceDataExist(const std::string& extensionId) {
    CriticalSection presence(m_fpkPresenceMapSem);
    return m_fpkPresenceMap.count(extensionId) != 0;
}

bool OrvaneService::isFpkPresenceMapEmpty() {
    CriticalSection presence(m_fpkPresenceMapSem);
    return m_fpkPresenceMap.empty();
}

std::size_t OrvaneService::getFpkPresenceMapSize() {
    CriticalSection presence(m_fpkPresenceMapSem);
    return m_fpkPresenceMap.size();
}

void OrvaneService::getServerDndStatus(const std::string& extensionId) {
    {
        CriticalSection dnd(m_dndSem);
        if (!m_sync_dnd) {
            ORVANE_LOG(ERROR, "getServerDndStatus() - server DND disabled!");
            return;
        }
    }
    ORVANE_LOG(STATUS, "getServerDndStatus() - extId[%s]", extensionId.c_str());
    const std::string path = m_apiPath + OV_EXTENSION_PATH + extensionId + "/presence";
    RestAnswer answer;
    if (sendRequest(path, HttpClientIfc::HTTP_GET, answer)) {
        ORVANE_LOG(DEBUG, "%s - realPath[%s], statusCode[%d], responseData[%s]", "getServerDndStatus", path.c_str(),
                   static_cast<int>(answer.statusCode), answer.responseData.c_str());
        handleServerDndStatusBlfResponse(answer.statusCode, answer.responseData);
    } else {
        ORVANE_LOG(ERROR, "getServerDndStatus() - request failed for extensionId[%s]! Status code[%d], response[%s]",
                   extensionId.c_str(), static_cast<int>(answer.statusCode), answer.responseData.c_str());
    }
}

bool OrvaneService::handleServerDndStatusBlfResponse(StatusCode statusCode, std::string& response) {
    CriticalSection dnd(m_dndSem);
    ORVANE_LOG(STATUS, "handleServerDndStatusBlfResponse() - statusCode[%d], responseData[%s]",
               static_cast<int>(statusCode), response.c_str());
    // Some lines are logged in the name of the operation for the user's own status.
    const OrvaneJson::Value tree = OrvaneJson::parseAnswer("handleServerDndStatusResponse", statusCode, response);
    if (!tree) {
        return false;
    }
    json_t* root = tree.get();
    json_t* extension = nullptr;
    if (!OrvaneServiceHelper::getObjectFromJson(root, extension, OV_EXTENSION)) {
        ORVANE_LOG(ERROR, "handleServerDndStatusResponse() not found the parameter '%s'", OV_EXTENSION);
        return false;
    }
    long long extensionNumber = 0;
    if (!OrvaneServiceHelper::getLongLongIntegerFromJson(extension, extensionNumber, OV_ID)) {
        ORVANE_LOG(ERROR, "handleServerDndStatusResponse() not found the parameter '%s'", OV_ID);
        return false;
    }
    std::string extensionId = ClientUtils::int64tos(extensionNumber);
    bool dndActive = false;
    // The id in the answer decides, not the one that was asked for.
    if (!storeColleagueDndStatus(root, extensionId, dndActive)) {
        return false;
    }
    setDNDStatusForBLF(extensionId, dndActive);
    return true;
}

bool OrvaneService::storeColleagueDndStatus(json_t* root, std::string& extensionId, bool& dndActive) {
    CriticalSection presence(m_fpkPresenceMapSem);
    const auto entry = m_fpkPresenceMap.find(extensionId);
    ORVANE_LOG(DEBUG, "handleServerDndStatusBlfResponse() - m_fpkPresenceMap.size[%zu], extId[%s]",
               m_fpkPresenceMap.size(), extensionId.c_str());
    if (entry == m_fpkPresenceMap.end()) {
        ORVANE_LOG(ERROR, "handleServerDndStatusResponse() fpk for extensionId[%s] is not found!", extensionId.c_str());
        return false;
    }
    std::string dndStatusText;
    if (!OrvaneServiceHelper::getStringFromJson(root, dndStatusText, OV_DND_STATUS)) {
        ORVANE_LOG(ERROR, "handleServerDndStatusResponse() not found the parameter '%s'", OV_DND_STATUS);
        return false;
    }
    ORVANE_LOG(DEBUG, "handleServerDndStatusResponse() - dndStatusString[%s]", dndStatusText.c_str());
    FpkPresenceDataType& record = entry->second;
    // Mapped into the record: a text that is not supported leaves it unknown, and its lamp as it was.
    if (!OrvaneServiceHelper::getDndStatus(dndStatusText, record.dndStatus)) {
        ORVANE_LOG(ERROR, "handleServerDndStatusResponse() not supported value of dndStatus [%s]",
                   dndStatusText.c_str());
        return false;
    }
    record.dndActive = record.dndStatus == OrvaneServiceTypes::DND_DO_NOT_ACCEPT_ANY_CALLS;
    dndActive = record.dndActive;
    extensionId = record.extensionId;
    return true;
}

void OrvaneService::setDNDStatusForBLF(const std::string& extensionId, bool dnd) {
    if (m_pTeamService == nullptr) {
        ORVANE_LOG(ERROR, "setDNDStatusForBLF(%s, %s) - null pointer to Team Service!", extensionId.c_str(),
                   OrvaneLog::text(dnd));
        return;
    }
    m_pTeamService->showDoNotDisturb(BLF_URI_PREFIX + extensionId, dnd);
}
