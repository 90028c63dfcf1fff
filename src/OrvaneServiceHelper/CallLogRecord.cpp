#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceStrings.h"

#include <algorithm>
#include <array>
#include <string_view>

using namespace OrvaneServiceStrings;

namespace {

const std::string unknownName = "Unknown.Name";

const std::string unknownType = "Unknown";
const std::string received = "Received";
const std::string missed = "Missed";
const std::string dialled = OrvaneServiceHelper::DIALLED;

constexpr std::array<std::string_view, 8> missedResults = {"Missed",  "Busy",    "Rejected",         "No Answer",
                                                           "Hang Up", "Blocked", "IP Phone Offline", "Voicemail"};

/// What every record has to have.
struct CallDetails {
    std::string id;
    std::string action;
    std::string startTime;
    std::string direction;
    std::string result;
    int durationSeconds = 0;
};

/// What the direction decides.
struct CallView {
    const std::string* callType = &unknownType;
    std::string number;
    bool hasOtherParty = false; ///< without one the number is unknown; an empty number is a number
    std::string name;
    std::string lineTag;
};

bool readDetails(json_t*& record, CallDetails& details, std::string& telephonySessionId) {
    return OrvaneServiceHelper::getStringFromJson(record, details.id, OV_ID) &&
           OrvaneServiceHelper::getStringFromJson(record, details.action, OV_ACTION) &&
           OrvaneServiceHelper::getStringFromJson(record, details.startTime, OV_STARTTIME) &&
           OrvaneServiceHelper::getStringFromJson(record, details.direction, OV_DIRECTION) &&
           OrvaneServiceHelper::getStringFromJson(record, details.result, OV_RESULT) &&
           OrvaneServiceHelper::getIntegerFromJson(record, details.durationSeconds, OV_DURATION) &&
           OrvaneServiceHelper::getStringFromJson(record, telephonySessionId, OV_TELEPHONY_SESSION_ID);
}

/// Name and number of the other party, and on a shared line the name of the line's own party.
void readParties(json_t*& record, const char* otherParty, const char* ownParty, bool isBcaLine, CallView& view) {
    json_t* party = nullptr;
    if (OrvaneServiceHelper::getObjectFromJson(record, party, otherParty)) {
        view.name = OrvaneServiceHelper::getNameFromInfoObject(party);
        view.number = OrvaneServiceHelper::getNumberFromInfoObject(party);
        view.hasOtherParty = true;
    }
    if (isBcaLine && OrvaneServiceHelper::getObjectFromJson(record, party, ownParty)) {
        view.lineTag = OrvaneServiceHelper::getNameFromInfoObject(party);
    }
}

void readInbound(json_t*& record, const CallDetails& details, bool isBcaLine, std::set<std::string>& missedIds,
                 CallView& view) {
    const std::string_view result = details.result;
    if (result == "Accepted" || result == "Call connected") {
        view.callType = &received;
    } else if (std::find(missedResults.begin(), missedResults.end(), result) != missedResults.end()) {
        view.callType = &missed;
        missedIds.insert(details.id);
    }
    readParties(record, OV_FROM, OV_TO, isBcaLine, view);
}

/// False for a call that was stopped on its way out: it does not count.
bool readOutbound(json_t*& record, const CallDetails& details, bool isBcaLine, CallView& view) {
    if (details.result == "Stopped") {
        ORVANE_LOG(ERROR, "getCallLogRecordFromObject() - ignore record with 'Stopped' reason: [%s]",
                   OrvaneJson::dump(record).c_str());
        return false;
    }
    view.callType = &dialled;
    readParties(record, OV_TO, OV_FROM, isBcaLine, view);
    return true;
}

void writeRecord(std::string& recordString, std::initializer_list<const std::string*> fields) {
    std::size_t length = 2;
    for (const std::string* field : fields) {
        length += field->length() + OV_SEPERATOR.length();
    }
    recordString.reserve(length);
    recordString = "{";
    for (const std::string* field : fields) {
        if (recordString.length() > 1) {
            recordString += OV_SEPERATOR;
        }
        recordString += *field;
    }
    recordString += "}";
}

} // namespace

bool OrvaneServiceHelper::getCallLogRecordFromObject(std::string& recordString, std::string& id, std::string& callType,
                                                     std::string& number, json_t*& record,
                                                     std::set<std::string>& missedIds, bool& deleted,
                                                     const std::string& lineNumber, std::string& telephonySessionId,
                                                     bool isBcaLine) {
    recordString.clear();
    telephonySessionId.clear();
    CallDetails details;
    if (!readDetails(record, details, telephonySessionId)) {
        ORVANE_LOG(WARNING, "getCallLogRecordFromObject() data missing from [%s]", OrvaneJson::dump(record).c_str());
        return false;
    }
    json_t* delegate = nullptr;
    if (!isBcaLine && getObjectFromJson(record, delegate, OV_DELEGATE)) {
        id.clear();
        recordString.clear();
        return false;
    }
    if (!isActionSupported(details.action)) {
        ORVANE_LOG(DEBUG, "getCallLogRecordFromObject() unsupported action[%s]", details.action.c_str());
        return false;
    }
    getBooleanFromJson(record, deleted, OV_DELETED);

    CallView view;
    if (details.direction == "Outbound") {
        if (!readOutbound(record, details, isBcaLine, view)) {
            callType = unknownType;
            number = UNKNOWN_NUMBER;
            return false;
        }
    } else if (details.direction == "Inbound") {
        readInbound(record, details, isBcaLine, missedIds, view);
    }
    if (!view.hasOtherParty) {
        view.number = UNKNOWN_NUMBER;
    }
    const std::string& name = view.name.empty() ? unknownName : view.name;
    const std::string& lineTag = view.lineTag.empty() ? unknownName : view.lineTag;
    const std::string& callerNumber = lineNumber.empty() ? unknownName : lineNumber;
    const std::string durationString = getDurationFromSeconds(details.durationSeconds);

    writeRecord(recordString, {view.callType, &details.id, &details.startTime, &durationString, &view.number, &name,
                               &lineTag, &callerNumber});
    id = details.id;
    callType = *view.callType;
    number = view.number;
    ORVANE_LOG(DEBUG,
               "getCallLogRecordFromObject() result[%s] id[%s] action[%s] starttime[%s] durationString[%s] "
               "direction[%s] callType[%s] number[%s] name[%s] bca_line_tag[%s], callerNumber[%s] sessionId[%s]",
               details.result.c_str(), details.id.c_str(), details.action.c_str(), details.startTime.c_str(),
               durationString.c_str(), details.direction.c_str(), callType.c_str(), view.number.c_str(), name.c_str(),
               lineTag.c_str(), callerNumber.c_str(), telephonySessionId.c_str());
    return true;
}
