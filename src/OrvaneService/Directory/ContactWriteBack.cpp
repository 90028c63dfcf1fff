#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"

using namespace OrvaneServiceStrings;

void OrvaneService::addNewContact(const std::string& xmlData) {
    ORVANE_LOG(STATUS, "addNewContact(%s) - isRunnnig[%s], m_sync_phonebook[%s]", xmlData.c_str(),
               OrvaneLog::text(isRunning()), OrvaneLog::text(m_sync_phonebook));
    if (!isRunning() || !m_sync_phonebook) {
        return;
    }
    if (isPhonebookFull()) {
        ORVANE_LOG(ERROR, "addNewContact() - max number of contacts exceeded!");
        return;
    }
    std::string body;
    std::string id;
    if (!OrvaneServiceHelper::createContact(xmlData, body, id)) {
        ORVANE_LOG(ERROR, "addNewContact() create contact in JSON format failed!");
        return;
    }
    RestAnswer answer;
    if (sendRequest(m_apiPath + OV_GET_CONTACTS_PATH, HttpClientIfc::HTTP_POST, answer, body)) {
        ORVANE_LOG(DEBUG, "addNewContact() sent to OV successfully! Status code[%d], responseData[%s]",
                   static_cast<int>(answer.statusCode), answer.responseData.c_str());
        publishContactAnswer(answer);
        fireInformUserEvent("OV.Copied.contact.OK", OrvaneServiceTypes::USER_MSG_INFO);
    } else {
        ORVANE_LOG(ERROR, "addNewContact() sent to OV failed! Status code[%d], responseData[%s]",
                   static_cast<int>(answer.statusCode), answer.responseData.c_str());
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
    RestAnswer answer;
    if (sendRequest(m_apiPath + OV_GET_CONTACTS_PATH + "/" + id, HttpClientIfc::HTTP_PUT, answer, body)) {
        publishContactAnswer(answer);
    } else {
        ORVANE_LOG(ERROR, "updateEditedContact() sent to OV failed! Status code[%d], responseData[%s]",
                   static_cast<int>(answer.statusCode), answer.responseData.c_str());
    }
}

void OrvaneService::deleteSingleContact(const std::string& id) {
    ORVANE_LOG(STATUS, "deleteSingleContact(%s) - isRunnnig[%s], m_sync_phonebook[%s]", id.c_str(),
               OrvaneLog::text(isRunning()), OrvaneLog::text(m_sync_phonebook));
    if (!isRunning() || !m_sync_phonebook) {
        return;
    }
    RestAnswer answer;
    if (sendRequest(m_apiPath + OV_GET_CONTACTS_PATH + "/" + id, HttpClientIfc::HTTP_DELETE, answer)) {
        ORVANE_LOG(DEBUG, "deleteSingleContact(%s) - sent to OV successfully! Status code[%d], responseData[%s]",
                   id.c_str(), static_cast<int>(answer.statusCode), answer.responseData.c_str());
        publishContactAnswer(answer);
    } else {
        ORVANE_LOG(ERROR, "deleteSingleContact(%s) - sent to OV failed! Status code[%d], responseData[%s]", id.c_str(),
                   static_cast<int>(answer.statusCode), answer.responseData.c_str());
    }
}

/// What the cloud answered goes into the book and to the observers, not what was sent.
void OrvaneService::publishContactAnswer(RestAnswer& answer) {
    Records records;
    bool publishData = false;
    handlePhonebookRecordResponse(answer.statusCode, answer.responseData, records, publishData);
    if (publishData) {
        fireOrvaneIncrementalSyncEvent(records, OrvaneServiceTypes::DATA_PHONEBOOK);
    }
}
