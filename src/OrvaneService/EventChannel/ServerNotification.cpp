#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "threads/CriticalSection.h"
#include "utilities/ClientUtils.h"

using namespace OrvaneServiceStrings;

namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

bool OrvaneService::handleMsgServerNotification(json_t*, json_t* data) {
    std::string event;
    if (!OrvaneServiceHelper::getStringFromJson(data, event, OV_EVENT)) {
        ORVANE_LOG(WARNING, "handleMsgServerNotification() - connot find JSON item[%s]", OV_EVENT);
        return false;
    }
    json_t* body = nullptr;
    if (m_receiveOvEventEnable && contains(event, OV_EVENT_PRESENCE) && isOvEventSubscribed(event, true) &&
        OrvaneServiceHelper::getObjectFromJson(data, body, OV_BODY)) {
        handlePresenceEvent(body);
    } else if (m_receiveOvEventEnable && contains(event, "message-store") && isOvEventSubscribed(event, false) &&
               OrvaneServiceHelper::getObjectFromJson(data, body, OV_BODY)) {
        handleMessageStoreEvent(data, body);
    } else if (m_receiveOvEventEnable && contains(event, OV_EVENT_DND) &&
               OrvaneServiceHelper::getObjectFromJson(data, body, OV_BODY)) {
        handleDndEvent(data, body);
    } else {
        ORVANE_LOG(WARNING,
                   "handleMsgServerNotification() - unsupported message for ov event[%s], m_receiveOvEventEnable[%s]",
                   event.c_str(), OrvaneLog::text(m_receiveOvEventEnable));
    }
    return false;
}

void OrvaneService::handlePresenceEvent(json_t* body) {
    json_t* activeCalls = nullptr;
    if (!OrvaneServiceHelper::getArrayFromJson(body, activeCalls, OV_ACTIVE_CALL)) {
        return;
    }
    for (std::size_t index = 0; index < json_array_size(activeCalls); ++index) {
        json_t* call = json_array_get(activeCalls, index);
        std::string status;
        std::string sessionId;
        if (!OrvaneServiceHelper::getStringFromJson(call, status, OV_TELEPHONY_STATUS) ||
            !OrvaneServiceHelper::getStringFromJson(call, sessionId, OV_TELEPHONY_SESSION_ID) ||
            status != OV_TELEPHONY_STATUS_NO_CALL) {
            continue;
        }
        ORVANE_LOG(DEBUG, "handleMsgServerNotification() sessionId[%s] status[%s]", sessionId.c_str(), status.c_str());
        {
            CriticalSection sessions(m_telephonySessionsSem);
            m_pendingTelephonySessions.insert(sessionId);
        }
        // As if the polling timer had expired: the record of the call is looked for at once.
        timerEvent(m_refreshCallLogTimer);
    }
}

void OrvaneService::handleMessageStoreEvent(json_t* data, json_t* body) {
    std::string ownerId;
    OrvaneServiceHelper::getStringFromJson(data, ownerId, OV_OWNER_ID);
    ORVANE_LOG(DEBUG, "handleMsgServerNotification() - voicemail for owner id[%s]", ownerId.c_str());
    long long extensionNumber = 0;
    if (!OrvaneServiceHelper::getLongLongIntegerFromJson(body, extensionNumber, OV_EXTENSION_ID)) {
        ORVANE_LOG(WARNING, "handleMsgServerNotification() - cannot find item[%s]", OV_EXTENSION_ID);
        return;
    }
    const std::string extensionId = ClientUtils::int64tos(extensionNumber);
    ORVANE_LOG(DEBUG, "handleMsgServerNotification() - voicemail for extension id[%lld][%s]", extensionNumber,
               extensionId.c_str());
    if (extensionId == m_szUserId) {
        getVoicemail();
    } else {
        getBcaVoicemail(extensionId);
    }
    publishVoicemailData();
}

void OrvaneService::handleDndEvent(json_t* data, json_t* body) {
    CriticalSection dnd(m_dndSem);
    ORVANE_LOG(DEBUG, "handleMsgServerNotification() - DND  event - m_sync_dnd[%s]", OrvaneLog::text(m_sync_dnd));
    if (!m_sync_dnd) {
        ORVANE_LOG(WARNING, "handleMsgServerNotification() - DND event - feature is disabled!");
        return;
    }
    std::string ownerId;
    OrvaneServiceHelper::getStringFromJson(data, ownerId, OV_OWNER_ID);
    if (ownerId != m_szUserId) {
        ORVANE_LOG(ERROR, "handleMsgServerNotification() - DND event - ownerId[%s] is not equaled to m_szUserId[%s]",
                   ownerId.c_str(), m_szUserId.c_str());
        return;
    }
    std::string extensionId;
    std::string dndStatusText;
    if (!OrvaneServiceHelper::getStringFromJson(body, extensionId, OV_EXTENSION_ID) ||
        !OrvaneServiceHelper::getStringFromJson(body, dndStatusText, OV_DND_STATUS)) {
        ORVANE_LOG(ERROR,
                   "handleMsgServerNotification() - DND event - either the item [%s] or the item [%s] was not find",
                   OV_EXTENSION_ID, OV_DND_STATUS);
        return;
    }
    if (extensionId == m_szUserId) {
        handleOwnDndEvent(extensionId, dndStatusText);
    } else {
        handleColleagueDndEvent(extensionId, dndStatusText);
    }
}

/// The caller holds m_dndSem.
void OrvaneService::handleOwnDndEvent(const std::string& extensionId, const std::string& dndStatusText) {
    ORVANE_LOG(DEBUG, "handleMsgServerNotification() - DND event  - extId[%s], dndStatusString[%s]",
               extensionId.c_str(), dndStatusText.c_str());
    OrvaneServiceTypes::DndStatusType status = OrvaneServiceTypes::DND_UNKNOWN;
    if (!OrvaneServiceHelper::getDndStatus(dndStatusText, status)) {
        ORVANE_LOG(ERROR, "handleMsgServerNotification() - DND event - not supported value of dndStatus [%s]",
                   dndStatusText.c_str());
        return;
    }
    ORVANE_LOG(DEBUG,
               "handleMsgServerNotification() - DND event - dndStatus[%d], m_serverDndStatus[%d], "
               "m_serverDndStatusOld[%d]",
               static_cast<int>(status), static_cast<int>(m_serverDndStatus), static_cast<int>(m_serverDndStatusOld));
    m_serverDndStatusOld = m_serverDndStatus;
    m_serverDndStatus = status;
    if (m_serverDndStatus != m_serverDndStatusOld) {
        fireOrvaneDndStatus(status);
    }
}

/// The caller holds m_dndSem; the Team Service is called without m_fpkPresenceMapSem.
void OrvaneService::handleColleagueDndEvent(const std::string& extensionId, const std::string& dndStatusText) {
    std::string watchedExtensionId;
    bool dndActive = false;
    {
        CriticalSection presence(m_fpkPresenceMapSem);
        const auto entry = m_fpkPresenceMap.find(extensionId);
        if (entry == m_fpkPresenceMap.end()) {
            ORVANE_LOG(ERROR,
                       "handleMsgServerNotification() - DND event for BLF - BLF key with extension id[%s] not found!",
                       extensionId.c_str());
            return;
        }
        OrvaneServiceTypes::DndStatusType status = OrvaneServiceTypes::DND_UNKNOWN;
        if (!OrvaneServiceHelper::getDndStatus(dndStatusText, status)) {
            ORVANE_LOG(ERROR,
                       "handleMsgServerNotification() - DND event for BLF - not supported value of dndStatus [%s]",
                       dndStatusText.c_str());
            return;
        }
        ORVANE_LOG(DEBUG,
                   "handleMsgServerNotification() - DND event for BLF - extId[%s], m_serverDndStatus[%s], "
                   "serverDndStatus[%d]",
                   extensionId.c_str(), dndStatusText.c_str(), static_cast<int>(status));
        FpkPresenceDataType& record = entry->second;
        record.dndStatus = status;
        record.dndActive = status == OrvaneServiceTypes::DND_DO_NOT_ACCEPT_ANY_CALLS;
        watchedExtensionId = record.extensionId;
        dndActive = record.dndActive;
    }
    setDNDStatusForBLF(watchedExtensionId, dndActive);
}
