#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "framework/Context.h"

using namespace OrvaneServiceStrings;

bool OrvaneService::handleMsgClientRequest(json_t* metadata, json_t* data) {
    ORVANE_LOG(STATUS, "handleMsgClientRequest()");
    std::string messageId;
    if (metadata == nullptr || !OrvaneServiceHelper::getStringFromJson(metadata, messageId, OV_MESSAGE_ID)) {
        ORVANE_LOG(ERROR, "handleMsgClientRequest() - message parse failed!");
        return false;
    }
    if (!findUuidMessageAndDeleteIt(messageId)) {
        ORVANE_LOG(ERROR, "handleMsgClientRequest() - messageId not found!");
        return false;
    }
    SubscriptionReply reply;
    // The reply to a cancel has no data, that to a refused request an error object.
    if (data == nullptr || !readSubscriptionReply(data, reply)) {
        m_subscriptionRequestInFlight = RequestInFlight::NONE;
        return false;
    }
    ORVANE_LOG(DETAIL,
               "handleMsgClientRequest() - id[%s], m_subscriptionOvEventsCreationTime[%s], creationTime[%s], "
               "m_subscriptionOvStatus[%s], status[%s], expirationTime[%s], expiresIn[%d]",
               reply.id.c_str(), m_subscriptionOvEventsCreationTime.c_str(), reply.creationTime.c_str(),
               m_subscriptionOvStatus.c_str(), reply.status.c_str(), reply.expirationTime.c_str(),
               reply.expiresInSeconds);
    const std::string subscriptionId = getSubscriptionId();
    if (m_subscriptionRequestInFlight == RequestInFlight::RENEWAL && reply.id != subscriptionId) {
        ORVANE_LOG(ERROR,
                   "handleMsgClientRequest() - subscription OV events renew and ID of subscription is not equeal "
                   "old(%s), new(%s). Message is not processed!",
                   subscriptionId.c_str(), reply.id.c_str());
        return false;
    }
    takeConfirmedEvents(reply);
    // A renewal that keeps the subscription's creation time ends here, and its timer is not started again.
    if (m_subscriptionOvEventsCreationTime >= reply.creationTime) {
        m_subscriptionRequestInFlight = RequestInFlight::NONE;
        return true;
    }
    setSusbcriptionId(reply.id);
    m_subscriptionOvEventsCreationTime = reply.creationTime;
    renewSubscriptionTimer(reply);
    m_subscriptionOvStatus = reply.status;
    m_subscriptionRequestInFlight = RequestInFlight::NONE;
    return true;
}

bool OrvaneService::readSubscriptionReply(json_t* data, SubscriptionReply& reply) {
    const bool complete = OrvaneServiceHelper::getStringFromJson(data, reply.id, OV_ID) &&
                          OrvaneServiceHelper::getStringFromJson(data, reply.creationTime, OV_CREATION_TIME) &&
                          OrvaneServiceHelper::getStringFromJson(data, reply.status, OV_STATUS) &&
                          OrvaneServiceHelper::getArrayFromJson(data, reply.eventFilters, OV_EVENT_FILTERS) &&
                          OrvaneServiceHelper::getStringFromJson(data, reply.expirationTime, OV_EXPIRATION_TIME) &&
                          OrvaneServiceHelper::getIntegerFromJson(data, reply.expiresInSeconds, OV_EXPIRES_IN);
    OrvaneServiceHelper::getArrayFromJson(data, reply.disabledFilters, OV_DISABLED_FILTERS);
    return complete;
}

void OrvaneService::takeConfirmedEvents(const SubscriptionReply& reply) {
    OrvaneEventList confirmed;
    OrvaneEventList dropped;
    for (std::size_t index = 0; index < json_array_size(reply.eventFilters); ++index) {
        const json_t* element = json_array_get(reply.eventFilters, index);
        if (!json_is_string(element)) {
            continue;
        }
        const std::string filter = json_string_value(element);
        if (!OrvaneEvent::isParsable(filter)) {
            ORVANE_LOG(WARNING, "handleMsgClientRequest() - orvane event[%s] is malformed", filter.c_str());
        } else if (!confirmed.add(filter)) {
            ORVANE_LOG(WARNING, "handleMsgClientRequest() - orvane event[%s] is duplicated", filter.c_str());
        }
    }
    takeDisabledFilters(reply.disabledFilters, dropped);
    m_ovEvents.merge(confirmed, dropped);
    if (!dropped.empty()) {
        ORVANE_LOG(ERROR, "handleMsgClientRequest() - OV events that were removed '%s'", dropped.toString().c_str());
    }
    if (!confirmed.empty()) {
        ORVANE_LOG(ERROR, "handleMsgClientRequest() - OV events that were not requested '%s'",
                   confirmed.toString().c_str());
    }
    m_receiveOvEventEnable = !m_ovEvents.empty();
    if (m_receiveOvEventEnable) {
        ORVANE_LOG(STATUS, "handleMsgClientRequest() - receiving of the OV events '%s' is %s",
                   m_ovEvents.toString().c_str(), "enabled");
    }
}

void OrvaneService::takeDisabledFilters(json_t* disabledFilters, OrvaneEventList& dropped) {
    for (std::size_t index = 0; index < json_array_size(disabledFilters); ++index) {
        json_t* element = json_array_get(disabledFilters, index);
        std::string filter;
        if (json_is_string(element)) {
            filter = json_string_value(element);
        } else if (json_is_object(element)) {
            std::string reason;
            std::string message;
            OrvaneServiceHelper::getStringFromJson(element, filter, "filter");
            OrvaneServiceHelper::getStringFromJson(element, reason, "reason");
            OrvaneServiceHelper::getStringFromJson(element, message, "message");
            ORVANE_LOG(STATUS, "handleMsgClientRequest() - disabledFilter[%s], reason[%s], message[%s]", filter.c_str(),
                       reason.c_str(), message.c_str());
        } else {
            ORVANE_LOG(ERROR, "handleMsgClientRequest() - cannot read item in disabledFilter!");
        }
        ORVANE_LOG(DEBUG, "handleMsgClientRequest() - index %d, input '%s'", static_cast<int>(index), filter.c_str());
        if (!OrvaneEvent::isParsable(filter)) {
            ORVANE_LOG(WARNING, "handleMsgClientRequest() - orvane event[%s] is malformed", filter.c_str());
        } else if (!filter.empty() && m_ovEvents.remove(filter)) {
            dropped.add(filter);
        }
    }
}

void OrvaneService::renewSubscriptionTimer(const SubscriptionReply& reply) {
    const bool wasActive = m_subscriptionOvStatus == OV_STATUS_ACTIVE;
    if (wasActive && reply.status != OV_STATUS_ACTIVE) {
        ORVANE_LOG(STATUS, "handleMsgClientRequest() - stop and delete timer!");
        m_refreshSubscriptionTimer = stopAndDeleteTimer(m_refreshSubscriptionTimer);
        return;
    }
    if (m_pSvcRTEContext == nullptr) {
        return;
    }
    if (m_subscriptionOvStatus.empty()) {
        m_refreshSubscriptionTimer = m_pSvcRTEContext->createTimer(this, calculateSyncTimer(reply.expiresInSeconds));
        m_pSvcRTEContext->startTimer(m_refreshSubscriptionTimer);
        m_subscriptionExpiresIn = reply.expiresInSeconds;
        ORVANE_LOG(STATUS, "handleMsgClientRequest() - start timer(%d) %d second(s)", m_refreshSubscriptionTimer,
                   m_subscriptionExpiresIn);
    } else if (wasActive) {
        m_pSvcRTEContext->stopTimer(m_refreshSubscriptionTimer);
        if (m_subscriptionExpiresIn != reply.expiresInSeconds) {
            m_pSvcRTEContext->deleteTimer(m_refreshSubscriptionTimer);
            m_refreshSubscriptionTimer =
                m_pSvcRTEContext->createTimer(this, calculateSyncTimer(reply.expiresInSeconds));
            m_subscriptionExpiresIn = reply.expiresInSeconds;
        }
        m_pSvcRTEContext->startTimer(m_refreshSubscriptionTimer);
        ORVANE_LOG(STATUS, "handleMsgClientRequest() - restart timer(%d) %d second(s)", m_refreshSubscriptionTimer,
                   m_subscriptionExpiresIn);
    }
}
