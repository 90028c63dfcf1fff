#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "threads/CriticalSection.h"

using namespace OrvaneServiceStrings;

namespace {

const std::string subscriptionPath = "/restapi/v1.0/subscription";

/// The body of a create or update request. Null when it could not be made.
OrvaneJson::Value subscriptionBody(OrvaneJson::Value filters) {
    // The library takes over the filters, even when it fails.
    return OrvaneJson::Value(json_pack_ex(nullptr, 0, "{s:o,s:{s:s}}", OV_EVENT_FILTERS, filters.release(),
                                          "deliveryMode", "transportType", "WebSocket"));
}

} // namespace

bool OrvaneService::subscribeOvEvents() {
    std::string messageId;
    OrvaneJson::Value filters;
    {
        CriticalSection dnd(m_dndSem);
        if (!m_sync_callLog && !m_sync_dnd) {
            ORVANE_LOG(WARNING, "subscribeOvEvents() - sync features are disabled (call log, DND)");
            return false;
        }
        if (!storeNewMessageId(messageId)) {
            ORVANE_LOG(ERROR, "subscribeOvEvents() - uuid already stored!");
            return false;
        }
        filters = buildEventFilters(SubscriptionRequest::CREATE);
    }
    return sendClientRequest(messageId, OrvaneServiceHelper::POST, subscriptionPath,
                             subscriptionBody(std::move(filters)), RequestInFlight::CHANGE,
                             "subscribeOvEvents() - create Client Request message failed!");
}

bool OrvaneService::updateSubscriptionOvEvents() {
    ORVANE_LOG(STATUS, "updateSubscriptionOvEvents()");
    {
        CriticalSection dnd(m_dndSem);
        if (!m_sync_callLog && !m_sync_dnd) {
            ORVANE_LOG(WARNING, "updateSubscriptionOvEvents() - sync features are disabled (call log, DND)");
            return false;
        }
    }
    std::string messageId;
    if (!storeNewMessageId(messageId)) {
        ORVANE_LOG(ERROR, "updateSubscriptionOvEvents() - uuid already stored!");
        return false;
    }
    // What is subscribed already stays in the list; the reply removes what the server no longer confirms.
    OrvaneJson::Value filters = buildEventFilters(SubscriptionRequest::UPDATE);
    return sendClientRequest(messageId, OrvaneServiceHelper::PUT, subscriptionPath + "/" + getSubscriptionId(),
                             subscriptionBody(std::move(filters)), RequestInFlight::CHANGE,
                             "updateSubscriptionOvEvents() - create Client Request message failed!");
}

bool OrvaneService::refreshOvEventsSubscription() {
    std::string messageId;
    if (!storeNewMessageId(messageId)) {
        ORVANE_LOG(ERROR, "refreshOvEventsSubscription() - uuid already stored!");
        return false;
    }
    return sendClientRequest(messageId, OrvaneServiceHelper::POST,
                             subscriptionPath + "/" + getSubscriptionId() + "/renew", OrvaneJson::Value(json_object()),
                             RequestInFlight::RENEWAL, "refreshOvEventsSubscription() -  create message failed!");
}

bool OrvaneService::cancelSubscriptionOvEvents() {
    if (!m_sync_callLog) {
        return false;
    }
    std::string messageId;
    if (!storeNewMessageId(messageId)) {
        ORVANE_LOG(ERROR, "cancelSubscribtionOvEvents() - uuid already stored!");
        return false;
    }
    return sendClientRequest(messageId, OrvaneServiceHelper::DELETE, subscriptionPath + "/" + getSubscriptionId(),
                             OrvaneJson::Value(json_object()), RequestInFlight::CHANGE,
                             "cancelSubscribtionOvEvents() - create Client Request message failed!");
}

OrvaneJson::Value OrvaneService::buildEventFilters(SubscriptionRequest request) {
    const std::string ownExtension = OV_EXTENSION_PATH + "~/";
    OrvaneJson::Value ownedFilters(json_array());
    json_t* filters = ownedFilters.get();
    if (m_sync_callLog) {
        const std::string presence = ownExtension + OV_EVENT_PRESENCE;
        if (addEventFilter(filters, presence, m_szUserId)) {
            ORVANE_LOG(DEBUG, "subscribeOvEvents() - ovEvent[%s], m_szUserId[%s]", presence.c_str(),
                       m_szUserId.c_str());
        }
        addEventFilter(filters, ownExtension + OV_EVENT_MESSAGE_STORE, m_szUserId);
        if (m_bcaAllowed) {
            CriticalSection bcaLines(m_bcaLineListSem);
            for (const auto& entry : m_bcaLineList) {
                addEventFilter(filters, OV_EXTENSION_PATH + entry.second.extensionId + "/" + OV_EVENT_MESSAGE_STORE,
                               OrvaneEvent::EMPTY_EXT_ID);
            }
        }
    }
    if (m_sync_dnd) {
        addEventFilter(filters, ownExtension + OV_EVENT_DND, m_szUserId);
        if (!isFpkPresenceMapEmpty()) {
            const std::string presenceLine = ownExtension + OV_EVENT_PRESENCE_LINE;
            if (!addEventFilter(filters, presenceLine, m_szUserId) && request == SubscriptionRequest::UPDATE) {
                ORVANE_LOG(ERROR, "updateSubscriptionOvEvents() - event(%s) was not added!", presenceLine.c_str());
            }
        }
    }
    return ownedFilters;
}

bool OrvaneService::addEventFilter(json_t* filters, const std::string& filter, const std::string& extensionId) {
    if (json_array_append_new(filters, json_string(filter.c_str())) != 0) {
        return false;
    }
    storeSubscribedOvEvent(filter, extensionId);
    return true;
}

bool OrvaneService::sendClientRequest(const std::string& messageId, OrvaneServiceHelper::METHOD method,
                                      const std::string& path, OrvaneJson::Value body, RequestInFlight requestInFlight,
                                      const char* failureMessage) {
    const OrvaneJson::Value frame(json_array());
    json_t* message = frame.get();
    std::string text;
    if (body && OrvaneServiceHelper::createClientRequestMsg(messageId, method, path, OrvaneServiceHelper::Multimap(),
                                                            OrvaneServiceHelper::Multimap(), body.get(), &message)) {
        static_cast<void>(body.release());
        text = OrvaneJson::dump(message);
    }
    if (text.empty()) {
        ORVANE_LOG(ERROR, "%s", failureMessage);
        findUuidMessageAndDeleteIt(messageId);
        return false;
    }
    const bool sent = sendMessageOnWebsocket(text);
    if (sent) {
        m_subscriptionRequestInFlight = requestInFlight;
    }
    return sent;
}

void OrvaneService::setSusbcriptionId(const std::string& id) {
    CriticalSection section(m_subscriptionIdSem);
    m_subscriptionId = id;
}

std::string OrvaneService::getSubscriptionId() {
    CriticalSection section(m_subscriptionIdSem);
    return m_subscriptionId;
}

void OrvaneService::storeSubscribedOvEvent(const std::string& filter, const std::string& extensionId) {
    // The id of a shared line comes from the network as well.
    if (!OrvaneEvent::isParsable(filter)) {
        ORVANE_LOG(WARNING, "storeSubscribedOvEvent() - event[%s] is malformed", filter.c_str());
        return;
    }
    OrvaneEvent event(filter, extensionId);
    m_ovEvents.add(event);
}

bool OrvaneService::isOvEventSubscribed(const std::string& filter, bool compareParameters) {
    ORVANE_LOG(DEBUG, "isOvEventSubscribed(%s,%s)", filter.c_str(), OrvaneLog::text(compareParameters));
    if (!OrvaneEvent::isParsable(filter)) {
        ORVANE_LOG(WARNING, "isOvEventSubscribed() - event[%s] is malformed", filter.c_str());
        return false;
    }
    OrvaneEvent event(filter, OrvaneEvent::EMPTY_EXT_ID);
    return m_ovEvents.isEventInList(event, compareParameters);
}
