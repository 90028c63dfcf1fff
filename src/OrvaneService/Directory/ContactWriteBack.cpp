#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"

using namespace OrvaneServiceStrings;

namespace {

constexpr std::size_t lastRoomyPhonebookSize = 249;

} // namespace

void OrvaneService::addNewContact(const std::string& xmlData) {
    ORVANE_LOG(STATUS, "addNewContact(%s) - isRunnnig[%s], m_sync_phonebook[%s]", xmlData.c_str(),
               OrvaneLog::text(isRunning()), OrvaneLog::text(m_sync_phonebook));
    if (!isRunning() || !m_sync_phonebook) {
        return;
    }
    if (m_phonebookMap.size() > lastRoomyPhonebookSize) {
        ORVANE_LOG(ERROR, "addNewContact() - max number of contacts exceeded!");
        return;
    }
    std::string body;
    std::string id;
    if (!OrvaneServiceHelper::createContact(xmlData, body, id)) {
        ORVANE_LOG(ERROR, "addNewContact() create contact in JSON format failed!");
        return;
    }
    std::string responseData;
    StatusCode statusCode = HttpClientIfc::STATUS_NONE;
    if (sendContactRequest("", body, HttpClientIfc::HTTP_POST, responseData, statusCode)) {
        ORVANE_LOG(DEBUG, "addNewContact() sent to OV successfully! Status code[%d], responseData[%s]",
                   static_cast<int>(statusCode), responseData.c_str());
        publishContactAnswer(statusCode, responseData);
        fireInformUserEvent("OV.Copied.contact.OK", OrvaneServiceTypes::USER_MSG_INFO);
    } else {
        ORVANE_LOG(ERROR, "addNewContact() sent to OV failed! Status code[%d], responseData[%s]",
                   static_cast<int>(statusCode), responseData.c_str());
        fireInformUserEvent("OV.Copied.contact.ERROR", OrvaneServiceTypes::USER_MSG_ERROR);
    }
}

void OrvaneService::updateEditedContact(const std::string& xmlData) {
    ORVANE_LOG(STATUS, "updateEditedContact(%s) - isRunnnig[%s], m_sync_phonebook[%s]", xmlData.c_str(),
               OrvaneLog::text(isRunning()), OrvaneLog::text(m_sync_phonebook));
    if (!isRunning() || !m_sync_phonebook) {
        return;
    }
    std::string body;
    std::string id;
    if (!OrvaneServiceHelper::createContact(xmlData, body, id) || id.empty()) {
        ORVANE_LOG(ERROR, "updateEditedContact() create contact in JSON format failed or empty id!");
        return;
    }
    std::string responseData;
    StatusCode statusCode = HttpClientIfc::STATUS_NONE;
    if (sendContactRequest("/" + id, body, HttpClientIfc::HTTP_PUT, responseData, statusCode)) {
        publishContactAnswer(statusCode, responseData);
    } else {
        ORVANE_LOG(ERROR, "updateEditedContact() sent to OV failed! Status code[%d], responseData[%s]",
                   static_cast<int>(statusCode), responseData.c_str());
    }
}

void OrvaneService::deleteSingleContact(const std::string& id) {
    ORVANE_LOG(STATUS, "deleteSingleContact(%s) - isRunnnig[%s], m_sync_phonebook[%s]", id.c_str(),
               OrvaneLog::text(isRunning()), OrvaneLog::text(m_sync_phonebook));
    if (!isRunning() || !m_sync_phonebook) {
        return;
    }
    std::string responseData;
    StatusCode statusCode = HttpClientIfc::STATUS_NONE;
    if (sendContactRequest("/" + id, "", HttpClientIfc::HTTP_DELETE, responseData, statusCode)) {
        ORVANE_LOG(DEBUG, "deleteSingleContact(%s) - sent to OV successfully! Status code[%d], responseData[%s]",
                   id.c_str(), static_cast<int>(statusCode), responseData.c_str());
        publishContactAnswer(statusCode, responseData);
    } else {
        ORVANE_LOG(ERROR, "deleteSingleContact(%s) - sent to OV failed! Status code[%d], responseData[%s]", id.c_str(),
                   static_cast<int>(statusCode), responseData.c_str());
    }
}

bool OrvaneService::sendContactRequest(const std::string& subpath, const std::string& body,
                                       HttpClientIfc::HTTPMETHOD method, std::string& responseData,
                                       StatusCode& statusCode) {
    Headers requestHeaders;
    Headers responseHeaders;
    return connectionHandler(m_apiPath + OV_GET_CONTACTS_PATH + subpath, body, method, responseData, requestHeaders,
                             responseHeaders, statusCode, "", 0);
}

/// What the cloud answered goes into the book and to the observers, not what was sent.
void OrvaneService::publishContactAnswer(StatusCode statusCode, std::string& responseData) {
    Records records;
    bool publishData = false;
    handlePhonebookRecordResponse(statusCode, responseData, records, publishData);
    if (publishData) {
        fireOrvaneIncrementalSyncEvent(records, OrvaneServiceTypes::DATA_PHONEBOOK);
    }
}
