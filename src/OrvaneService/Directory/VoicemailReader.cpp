#include "OrvaneService/OrvaneService.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"

using namespace OrvaneServiceStrings;
using OrvaneServiceTypes::Voicemail;

namespace {

/// "Sales (Jane)" is Jane. A ")" in front of the "(" cuts nothing off the end.
std::string nameInParentheses(const std::string& name) {
    const std::size_t open = name.rfind('(');
    const std::size_t close = name.rfind(')');
    if (open == std::string::npos || close == std::string::npos) {
        return name;
    }
    return close > open ? name.substr(open + 1, close - open - 1) : name.substr(open + 1);
}

} // namespace

bool OrvaneService::handleVoicemailResponse(StatusCode statusCode, std::string& response, Voicemail& voicemail) {
    const OrvaneJson::Value tree = OrvaneJson::parseAnswer("handleVoicemailResponse", statusCode, response);
    if (!tree) {
        return false;
    }
    json_t* root = tree.get();
    json_t* records = nullptr;
    if (!OrvaneServiceHelper::getArrayFromJson(root, records, OV_RECORDS)) {
        ORVANE_LOG(ERROR, "handleVoicemailResponse() records not an array");
        return false;
    }
    for (std::size_t index = 0; index < json_array_size(records); ++index) {
        json_t* record = json_array_get(records, index);
        if (!json_is_null(record)) {
            handleVoicemailRecord(record, voicemail);
        }
    }
    return true;
}

bool OrvaneService::handleVoicemailRecord(json_t* record, Voicemail& voicemail) {
    std::string phoneNumber;
    std::string name;
    const bool newest = readNewestVoicemail(record, voicemail, name, phoneNumber);
    ORVANE_LOG(DEBUG, "handleVoicemailRecord() unreadVoicemailMessageCount[%d], latestMsg[%s] name[%s] phoneNumber[%s]",
               voicemail.unreadVoicemailMessageCount, voicemail.latestTimestamp.c_str(), name.c_str(),
               phoneNumber.c_str());
    return newest;
}

bool OrvaneService::readNewestVoicemail(json_t* record, Voicemail& voicemail, std::string& name,
                                        std::string& phoneNumber) {
    std::string readStatus;
    if (!OrvaneServiceHelper::getStringFromJson(record, readStatus, OV_READ_STATUS) || readStatus != "Unread") {
        return false;
    }
    // Counted before anything else can fail.
    ++voicemail.unreadVoicemailMessageCount;
    std::string creationTime;
    if (!OrvaneServiceHelper::getStringFromJson(record, creationTime, OV_CREATION_TIME) ||
        voicemail.latestTimestamp >= creationTime) {
        return false;
    }
    voicemail.latestTimestamp = creationTime;
    json_t* recipients = nullptr;
    if (!OrvaneServiceHelper::getArrayFromJson(record, recipients, OV_TO)) {
        return false;
    }
    json_t* recipient = json_array_get(recipients, 0);
    if (recipient == nullptr || json_is_null(recipient)) {
        return false;
    }
    OrvaneServiceHelper::getStringFromJson(recipient, phoneNumber, OV_PHONE_NUMBER);
    OrvaneServiceHelper::getStringFromJson(recipient, name, OV_NAME);
    voicemail.name = nameInParentheses(name);
    voicemail.number = phoneNumber;
    return true;
}
