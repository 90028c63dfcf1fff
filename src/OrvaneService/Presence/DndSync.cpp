#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "data/PldsTags.h"
#include "threads/CriticalSection.h"

using namespace OrvaneServiceStrings;
using namespace OrvaneServiceTypes;

namespace {

const char* const ownPresencePath = "/restapi/v1.0/account/~/extension/~/presence";

} // namespace

void OrvaneService::updateUserPresenceStatus(bool newDndState) {
    bool synchronised = false;
    {
        CriticalSection dnd(m_dndSem);
        synchronised = isRunning() && m_sync_dnd;
        ORVANE_LOG(STATUS,
                   "updateUserPresenceStatus() - new DND state[%s], DND feature is enabled[%s], is orvane in state "
                   "running[%s]",
                   OrvaneLog::text(newDndState), OrvaneLog::text(m_sync_dnd), OrvaneLog::text(isRunning()));
    }
    std::string body;
    if (!synchronised || !OrvaneServiceHelper::createUserPresenseMsg(newDndState, body)) {
        return;
    }
    RestAnswer answer;
    if (sendRequest(m_apiPath + ownPresencePath, HttpClientIfc::HTTP_PUT, answer, body)) {
        handleServerDndStatusResponse(answer.statusCode, answer.responseData);
    } else {
        ORVANE_LOG(ERROR, "updateUserPresenceStatus() failed! HTTP status[%d], Error:[%s]",
                   static_cast<int>(answer.statusCode), answer.responseData.c_str());
    }
}

void OrvaneService::getServerDndStatus() {
    ORVANE_LOG(STATUS, "getServerDndStatus()");
    {
        CriticalSection dnd(m_dndSem);
        if (!m_sync_dnd) {
            return;
        }
    }
    const std::string path = m_apiPath + ownPresencePath;
    RestAnswer answer;
    if (sendRequest(path, HttpClientIfc::HTTP_GET, answer)) {
        ORVANE_LOG(DEBUG, "%s - realPath[%s], statusCode[%d], responseData[%s]", "getServerDndStatus", path.c_str(),
                   static_cast<int>(answer.statusCode), answer.responseData.c_str());
        handleServerDndStatusResponse(answer.statusCode, answer.responseData);
    } else {
        ORVANE_LOG(ERROR, "getServerDndStatus() - request failed! Status code[%d], response[%s]",
                   static_cast<int>(answer.statusCode), answer.responseData.c_str());
    }
    // The map is free during the requests.
    std::vector<std::string> watchedExtensionIds;
    {
        CriticalSection presence(m_fpkPresenceMapSem);
        for (const auto& entry : m_fpkPresenceMap) {
            const FpkPresenceDataType& record = entry.second;
            ORVANE_LOG(STATUS, "getServerDndStatus() - fpk[%s], extensionId[%s], keyLabel[%s]", record.fpk.c_str(),
                       record.extensionId.c_str(), record.keyLabel.c_str());
            watchedExtensionIds.push_back(record.extensionId);
        }
    }
    for (const std::string& extensionId : watchedExtensionIds) {
        getServerDndStatus(extensionId);
    }
}

bool OrvaneService::handleServerDndStatusResponse(StatusCode statusCode, std::string& response) {
    CriticalSection dnd(m_dndSem);
    if (!m_sync_dnd) {
        ORVANE_LOG(ERROR, "handleServerDndStatusResponse() - server DND disabled!");
        return false;
    }
    const OrvaneJson::Value tree = OrvaneJson::parseAnswer("handleServerDndStatusResponse", statusCode, response);
    if (!tree) {
        return false;
    }
    json_t* root = tree.get();
    std::string dndStatusText;
    if (!OrvaneServiceHelper::getStringFromJson(root, dndStatusText, OV_DND_STATUS)) {
        ORVANE_LOG(ERROR, "handleServerDndStatusResponse() not found the parameter dndStatus");
        return false;
    }
    DndStatusType status = DND_UNKNOWN;
    if (!OrvaneServiceHelper::getDndStatus(dndStatusText, status)) {
        ORVANE_LOG(ERROR, "handleServerDndStatusResponse() not supported value of dndStatus [%s]",
                   dndStatusText.c_str());
        return false;
    }
    m_serverDndStatusOld = m_serverDndStatus;
    m_serverDndStatus = status;
    if (m_serverDndStatus != m_serverDndStatusOld) {
        fireOrvaneDndStatus(status);
    }
    return true;
}

void OrvaneService::fireOrvaneDndStatus(DndStatusType status) {
    ORVANE_LOG(STATUS, "fireOrvaneDndStatus() - dndStatus[%d]", static_cast<int>(status));
    if (status == DND_TAKE_ALL_CALLS) {
        setPLDSValue(PldsTags::CALL_DND_ACTIVATED, PldsTags::VALUE_FALSE);
    } else if (status == DND_DO_NOT_ACCEPT_ANY_CALLS) {
        setPLDSValue(PldsTags::CALL_DND_ACTIVATED, PldsTags::VALUE_TRUE);
    }
}

std::string OrvaneService::OrvaneApiSyncDndGetter() {
    CriticalSection dnd(m_dndSem);
    ORVANE_LOG(STATUS, "OrvaneApiSyncDndGetter() - m_sync_dnd[%s]", OrvaneLog::text(m_sync_dnd));
    return m_sync_dnd ? PldsTags::VALUE_TRUE : PldsTags::VALUE_FALSE;
}

bool OrvaneService::OrvaneApiSyncDndSetter(const std::string& newVal, std::string&) {
    {
        CriticalSection dnd(m_dndSem);
        ORVANE_LOG(STATUS, "OrvaneApiSyncDndSetter() - m_sync_dnd[%s], newVal[%s], m_state[%s]",
                   OrvaneLog::text(m_sync_dnd), newVal.c_str(), getStateAsText(m_state).c_str());
        m_sync_dnd_old = m_sync_dnd;
        m_sync_dnd = newVal == PldsTags::VALUE_TRUE;
    }
    if (m_state == CONNECTED) {
        asyncSyncDnd();
    } else {
        ORVANE_LOG(DEBUG, "OrvaneApiSyncDndSetter() - service is not in connected state[%s]",
                   getStateAsText(m_state).c_str());
    }
    return true;
}

void OrvaneService::asyncSyncDnd() {
    ORVANE_LOG(STATUS, "asyncSyncDnd()");
    if (m_syncDndThread.running) {
        // Two switches in a row run one after the other.
        m_syncDndThread.threader.waitForThreadCompletion(m_syncDndThread.id);
        m_syncDndThread.id = 0;
    }
    m_syncDndThread.running = true;
    if (!m_syncDndThread.spawn<asyncSyncDndRunner>(this)) {
        ORVANE_LOG(ERROR, "asyncSyncDnd() failed to create thread!");
        m_syncDndThread.running = false;
        return;
    }
    m_syncDndThread.detach();
}

void* OrvaneService::asyncSyncDndRunner(OrvaneService* service) {
    ORVANE_LOG(STATUS, "asyncSyncDndRunner()");
    if (service != nullptr) {
        service->syncDnd();
    }
    return nullptr;
}

void OrvaneService::syncDnd() {
    {
        // Held throughout, requests included: a second switch waits.
        CriticalSection dnd(m_dndSem);
        if (m_sync_dnd && !m_sync_dnd_old) {
            ORVANE_LOG(DEBUG, "SyncDnd() - sync DND was turned on!");
            getServerDndStatus();
            updateSubscriptionOvEvents();
        } else if (!m_sync_dnd && m_sync_dnd_old) {
            ORVANE_LOG(DEBUG, "syncDnd() - sync DND was turned off!");
            updateSubscriptionOvEvents();
            forgetDndStatus();
        } else {
            ORVANE_LOG(ERROR, "syncDnd() - oops something is wrong! m_sync_dnr[%s], m_sync_dnd_old[%s]",
                       OrvaneLog::text(m_sync_dnd), OrvaneLog::text(m_sync_dnd_old));
        }
    }
    m_syncDndThread.ended();
}

/// The caller holds m_dndSem. The telephone's own switch stays as it is.
void OrvaneService::forgetDndStatus() {
    m_serverDndStatus = DND_UNKNOWN;
    m_serverDndStatusOld = DND_UNKNOWN;
    std::vector<std::string> litExtensionIds;
    {
        CriticalSection presence(m_fpkPresenceMapSem);
        for (auto& entry : m_fpkPresenceMap) {
            if (entry.second.dndActive) {
                entry.second.dndActive = false;
                litExtensionIds.push_back(entry.second.extensionId);
            }
        }
    }
    for (const std::string& extensionId : litExtensionIds) {
        setDNDStatusForBLF(extensionId, false);
    }
}
