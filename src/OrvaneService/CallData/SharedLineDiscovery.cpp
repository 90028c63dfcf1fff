#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "threads/CriticalSection.h"

using namespace OrvaneServiceStrings;

bool OrvaneService::getBcaLinesExtension(std::vector<BcaLineType>& removedLines, std::vector<std::string>& newLineIds) {
    int nextPage = 0;
    bool runSync = false;
    std::map<std::string, BcaLineType> newBcaLineMap;
    do {
        std::string path = m_apiPath + OV_GET_GRANT_PATH;
        if (nextPage > 0) {
            path += "?page=" + std::to_string(nextPage);
        }
        RestAnswer answer;
        // Without an answer for a later page, that page is asked for again at once.
        if (sendRequest(path, HttpClientIfc::HTTP_GET, answer)) {
            runSync = handleBcaLinesExtension(answer.statusCode, answer.responseData, nextPage, newBcaLineMap);
        }
    } while (runSync);
    return mergeBcaLines(newBcaLineMap, removedLines, newLineIds);
}

bool OrvaneService::mergeBcaLines(std::map<std::string, BcaLineType>& newBcaLineMap,
                                  std::vector<BcaLineType>& removedLines, std::vector<std::string>& newLineIds) {
    bool changed = false;
    CriticalSection bcaLines(m_bcaLineListSem);
    for (auto entry = m_bcaLineList.begin(); entry != m_bcaLineList.end();) {
        if (newBcaLineMap.erase(entry->first) != 0) {
            ORVANE_LOG(DEBUG, "getBcaLinesExtension() - BCA line with extensionId[%s] already exists!",
                       entry->first.c_str());
            ++entry;
            continue;
        }
        ORVANE_LOG(DEBUG, "getBcaLinesExtension() - erase BCA line with extensionId[%s]", entry->first.c_str());
        removedLines.push_back(entry->second);
        entry = m_bcaLineList.erase(entry);
        changed = true;
    }
    for (const auto& [extensionId, line] : newBcaLineMap) {
        m_bcaLineList.emplace(extensionId, line);
        newLineIds.push_back(extensionId);
        changed = true;
    }
    return changed;
}

bool OrvaneService::handleBcaLinesExtension(StatusCode statusCode, std::string& responseData, int& nextPage,
                                            std::map<std::string, BcaLineType>& newBcaLineMap) {
    if (statusCode != HttpClientIfc::STATUS_OK || responseData.empty()) {
        ORVANE_LOG(ERROR, "handleBcaLinesExtension() failed! statusCode[%d], responseData length[%zu]",
                   static_cast<int>(statusCode), responseData.length());
        return false;
    }
    // The line is logged in the name of another operation, with which it has always shared its text.
    const OrvaneJson::Value tree = OrvaneJson::parse("handleTokenResponse", responseData);
    if (!tree) {
        return false;
    }
    json_t* root = tree.get();
    bool anotherPage = false;
    int page = 0;
    int totalPages = 0;
    if (OrvaneServiceHelper::getIntegerFromJson(root, page, OV_PAGE) &&
        OrvaneServiceHelper::getIntegerFromJson(root, totalPages, OV_TOTAL_PAGES)) {
        anotherPage = page < totalPages;
        nextPage = anotherPage ? page + 1 : 0;
    }
    json_t* records = nullptr;
    if (!OrvaneServiceHelper::getArrayFromJson(root, records, OV_RECORDS)) {
        ORVANE_LOG(ERROR, "handleBcaLinesExtension() records not an array");
        return anotherPage;
    }
    for (std::size_t index = 0; index < json_array_size(records); ++index) {
        readGrantedLine(json_array_get(records, index), newBcaLineMap);
    }
    return anotherPage;
}

void OrvaneService::readGrantedLine(json_t* record, std::map<std::string, BcaLineType>& newBcaLineMap) {
    json_t* extension = nullptr;
    if (!OrvaneServiceHelper::getObjectFromJson(record, extension, OV_EXTENSION)) {
        ORVANE_LOG(ERROR, "handleBcaLinesExtension() - item[%s] not found!", OV_EXTENSION);
        return;
    }
    std::string id;
    std::string extensionNumber;
    std::string type;
    std::string name;
    if (!OrvaneServiceHelper::getStringFromJson(extension, id, OV_ID) ||
        !OrvaneServiceHelper::getStringFromJson(extension, extensionNumber, OV_EXTENSION_NUMBER) ||
        !OrvaneServiceHelper::getStringFromJson(extension, type, OV_TYPE) ||
        !OrvaneServiceHelper::getStringFromJson(extension, name, OV_NAME)) {
        ORVANE_LOG(ERROR, "handleBcaLinesExtension() - error parsing id[%s], extensionNumber[%s], type[%s], name[%s]",
                   id.c_str(), extensionNumber.c_str(), type.c_str(), name.c_str());
        return;
    }
    BcaLineType line;
    line.extensionId = id;
    line.name = name;
    newBcaLineMap.emplace(id, line);
}

std::size_t OrvaneService::getBcaLineListSize() {
    CriticalSection bcaLines(m_bcaLineListSem);
    return m_bcaLineList.size();
}

bool OrvaneService::getCopyOfBcaLineFromList(const std::string& extensionId, BcaLineType& line) {
    CriticalSection bcaLines(m_bcaLineListSem);
    const auto entry = m_bcaLineList.find(extensionId);
    if (entry == m_bcaLineList.end()) {
        return false;
    }
    line = entry->second;
    return true;
}

bool OrvaneService::replaceBcaLineInList(const BcaLineType& line) {
    CriticalSection bcaLines(m_bcaLineListSem);
    const auto entry = m_bcaLineList.find(line.extensionId);
    if (entry == m_bcaLineList.end()) {
        return false;
    }
    entry->second = line;
    return true;
}

bool OrvaneService::getDevicesAndUpdateInfo() {
    if (!m_bcaAllowed) {
        return false;
    }
    std::vector<BcaLineType> removedLines;
    std::vector<std::string> newLineIds;
    const bool changed = getBcaLinesExtension(removedLines, newLineIds);
    ORVANE_LOG(DEBUG,
               "getDevicesAndUpdateInfo() - stored bca lines[%zu], removed bca lines[%zu], new added bca lines[%zu]",
               getBcaLineListSize(), removedLines.size(), newLineIds.size());
    if (changed) {
        removeSyncedDataForBcaLines(removedLines);
        if (getWebSocketState() == WS_STATE_READY) {
            updateSubscriptionOvEvents();
        }
    }
    return changed;
}

void OrvaneService::devicesChanged() {
    ORVANE_LOG(STATUS, "devicesChanged()");
    getDevicesAndUpdateInfo();
}

void OrvaneService::overviewChangedNotification(const std::string& uri, const std::string& shortDescription,
                                                bool visibleOnOverview, int positionOnOverview,
                                                ELineVisualAlert lineVisualAlertType) {
    ORVANE_LOG(DEBUG,
               "overviewChangedNotification() uri[%s] shortDescription[%s] visibleOnOverview[%s] "
               "positionOnOverview[%d] lineVisualAlertType[%d]",
               uri.c_str(), shortDescription.c_str(), OrvaneLog::text(visibleOnOverview), positionOnOverview,
               static_cast<int>(lineVisualAlertType));
    if (!m_bcaAllowed) {
        return;
    }
    std::vector<std::string> newLines;
    {
        CriticalSection bcaLines(m_bcaLineListSem);
        for (auto& [extensionId, line] : m_bcaLineList) {
            if (line.name == shortDescription && line.status == BCA_LINE_STATUS_DISCOVERED) {
                line.phoneNumber = uri.substr(0, uri.find('@'));
                line.status = BCA_LINE_STATUS_READY;
                newLines.push_back(line.extensionId);
            }
        }
    }
    syncDataForBcaLines(newLines);
}
