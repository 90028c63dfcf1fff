#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "framework/Context.h"
#include "threads/CriticalSection.h"

#include <boost/uuid/entropy_error.hpp>
#include <boost/uuid/uuid.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <sys/random.h>

#include <cerrno>
#include <cstdint>

using namespace OrvaneServiceStrings;

void OrvaneService::onMessage(const std::string& msg) {
    ORVANE_LOG(DEBUG, "onMessage() size[%d] msg[%s]", static_cast<int>(msg.size()), msg.c_str());
    const OrvaneJson::Value root = OrvaneJson::parse("onMessage", msg);
    if (!root) {
        return;
    }
    if (!json_is_array(root.get())) {
        ORVANE_LOG(WARNING, "onMessage() received message is not a json array");
        return;
    }
    std::string type;
    json_t* metadata = nullptr;
    json_t* data = nullptr;
    if (!getMsgTypeAndStoreWsc(type, &metadata, &data, root.get())) {
        ORVANE_LOG(DEBUG, "onMessage() getMsgTypeAndStoreWsc failed()!");
        return;
    }
    // Every valid frame counts as activity.
    if (m_pSvcRTEContext != nullptr && m_pSvcRTEContext->isTimerRunning(m_webSocketIdleTimer)) {
        m_pSvcRTEContext->resetTimer(m_webSocketIdleTimer);
    }
    if (type == "ConnectionDetails") {
        handleMsgConnectionDetails(metadata, data);
    } else if (type == "ServerNotification") {
        handleMsgServerNotification(metadata, data);
    } else if (type == "ClientRequest") {
        handleMsgClientRequest(metadata, data);
    } else if (type == "Error") {
        handleMsgError(metadata, data);
    } else if (type == "Heartbeat") {
        handleMsgHeartbeat(metadata, data);
    } else {
        ORVANE_LOG(WARNING, "onMessage() unknown message type '%s'", type.c_str());
    }
}

bool OrvaneService::getMsgTypeAndStoreWsc(std::string& type, json_t** metadata, json_t** data, const json_t* root) {
    type.clear();
    if (!json_is_array(root)) {
        ORVANE_LOG(ERROR, "parseClientRequestMsg() - message is not json array");
        return false;
    }
    const std::size_t size = json_array_size(root);
    if (size != 1 && size != 2) {
        ORVANE_LOG(ERROR,
                   "parseClientRequestMsg() - the receiving message has size %zu of the json object. It has to "
                   "contain metadata. Data are optional.",
                   size);
        return false;
    }
    *metadata = nullptr;
    *data = nullptr;
    for (std::size_t index = 0; index < size; ++index) {
        json_t* element = json_array_get(root, index);
        std::string elementType;
        std::string messageId;
        // Not the position but the content tells metadata from data.
        if (!OrvaneServiceHelper::getStringFromJson(element, elementType, OV_TYPE) ||
            !OrvaneServiceHelper::getStringFromJson(element, messageId, OV_MESSAGE_ID)) {
            *data = element;
            continue;
        }
        type = elementType;
        *metadata = element;
        storeSessionContext(element);
    }
    return *metadata != nullptr;
}

void OrvaneService::storeSessionContext(json_t* metadata) {
    int status = 0;
    if (!OrvaneServiceHelper::getIntegerFromJson(metadata, status, OV_STATUS)) {
        return;
    }
    if (status != 200) {
        ORVANE_LOG(ERROR, "getMsgTypeAndStoreWsc() - status(%d)", status);
        return;
    }
    json_t* context = nullptr;
    if (!OrvaneServiceHelper::getObjectFromJson(metadata, context, OV_WSC)) {
        return;
    }
    int sequence = 0;
    if (!OrvaneServiceHelper::getIntegerFromJson(context, sequence, OV_SEQUENCE)) {
        ORVANE_LOG(WARNING, "getMsgTypeAndStoreWsc() - WebSocket Session Context: sequence not found!");
        return;
    }
    if (m_webSocketSequence >= sequence) {
        ORVANE_LOG(WARNING,
                   "getMsgTypeAndStoreWsc() - WebSocket Session Context: sequence(%d) is not greater than last "
                   "one(%d)!",
                   sequence, m_webSocketSequence);
        return;
    }
    std::string token;
    if (!OrvaneServiceHelper::getStringFromJson(context, token, OV_TOKEN)) {
        ORVANE_LOG(WARNING, "getMsgTypeAndStoreWsc() - WebSocket Session Context: token not found!");
        return;
    }
    m_webSocketWsc = token;
    m_webSocketSequence = sequence;
    ORVANE_LOG(DEBUG, "getMsgTypeAndStoreWsc() - WebSocket Session Context: token[%s], sequence[%d]",
               m_webSocketWsc.c_str(), m_webSocketSequence);
}

std::string OrvaneService::generateUuid() {
    boost::uuids::uuid uuid;
    std::size_t filled = 0;
    while (filled < uuid.size()) {
        const ssize_t count = getrandom(uuid.begin() + filled, uuid.size() - filled, 0);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw boost::uuids::entropy_error(errno, "getrandom");
        }
        filled += static_cast<std::size_t>(count);
    }
    // Version 4, RFC 4122, section 4.4.
    uuid.data[6] = static_cast<std::uint8_t>((uuid.data[6] & 0x0F) | 0x40);
    uuid.data[8] = static_cast<std::uint8_t>((uuid.data[8] & 0x3F) | 0x80);
    return boost::uuids::to_string(uuid);
}

bool OrvaneService::storeUuidMessage(const std::string& uuid) {
    CriticalSection section(m_uuidMessagesSem);
    const bool inserted = m_uuidMessages.insert(uuid).second;
    if (!inserted) {
        ORVANE_LOG(ERROR, "storeUuidMessage(%s) already exists!", uuid.c_str());
    }
    return inserted;
}

bool OrvaneService::findUuidMessageAndDeleteIt(const std::string& uuid) {
    CriticalSection section(m_uuidMessagesSem);
    const bool erased = m_uuidMessages.erase(uuid) != 0;
    if (!erased) {
        ORVANE_LOG(ERROR, "findUuidMessageAndDeleteIt() uuid[%s] not found!", uuid.c_str());
    }
    return erased;
}

bool OrvaneService::storeNewMessageId(std::string& messageId) {
    messageId = generateUuid();
    if (storeUuidMessage(messageId)) {
        return true;
    }
    messageId = generateUuid();
    return storeUuidMessage(messageId);
}

bool OrvaneService::handleMsgError(json_t*, json_t*) {
    ORVANE_LOG(DEBUG, "handleMsgError");
    return false;
}
