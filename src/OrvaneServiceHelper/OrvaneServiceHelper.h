#pragma once

#include "OrvaneServiceTypes.h"

#include <jansson.h>

#include <map>
#include <set>
#include <string>
#include <vector>

/// Static functions that all subsystems use. Stateless: any thread may call them.
///
/// The typed accessors look a key up at any depth of nested objects, depth first in the object's own key order; the
/// first match of the wanted type wins, and arrays are never entered. They return true when they wrote `out`, which
/// is left alone on false. A json_t* that they hand out is borrowed.
class OrvaneServiceHelper {
public:
    /// Numbering of the methods inside a WebSocket frame; not that of HttpClientIfc::HTTPMETHOD.
    enum METHOD : int { GET = 0, PUT = 1, POST = 2, DELETE = 3, PATCH = 4, OPTIONS = 5, HEAD = 6, CONNECT = 7 };

    using Multimap = std::multimap<std::string, std::string>;

    /// Kind and number in the text form of a call record.
    static constexpr const char* DIALLED = "Dialled";
    static constexpr const char* UNKNOWN_NUMBER = "Caller.Unknown.XXX";

    // ---- JsonAccessors.cpp ------------------------------------------------------------------------------------

    static bool getStringFromJson(json_t*& object, std::string& out, const char* key);
    /// Narrows the JSON integer to int.
    static bool getIntegerFromJson(json_t*& object, int& out, const char* key);
    static bool getLongLongIntegerFromJson(json_t*& object, long long& out, const char* key);
    static bool getBooleanFromJson(json_t*& object, bool& out, const char* key);
    static bool getObjectFromJson(json_t*& object, json_t*& out, const char* key);
    static bool getArrayFromJson(json_t*& object, json_t*& out, const char* key);

    static std::string getNameFromInfoObject(json_t*& info);
    /// UNKNOWN_NUMBER when the party has none.
    static std::string getNumberFromInfoObject(json_t*& info);

    static bool addValueToJsonObject(json_t** object, const std::string& key, const std::string& value);
    /// One value is written as a plain string, several as an array; none is refused.
    static bool addArrayToJsonObject(json_t** object, const std::string& key, const std::vector<std::string>& values);

    // ---- TextHelpers.cpp --------------------------------------------------------------------------------------

    /// "[h:]mm:ss".
    static std::string getDurationFromSeconds(const int& seconds);
    static bool isActionSupported(const std::string& action);
    static std::string methodToString(METHOD method);
    static void convertStrVecIntoString(const std::vector<std::string>& in, std::string& out);
    /// Leaves in `first` what both have, in `second` what only it has, and adds to `onlyInFirst` what only `first`
    /// had. An empty `first` changes nothing.
    static void findIntersectionBetweenTwoVectors(std::vector<std::string>& first, std::vector<std::string>& second,
                                                  std::vector<std::string>& onlyInFirst);

    // ---- RestHelpers.cpp --------------------------------------------------------------------------------------

    /// Path of a Location value. Throws std::out_of_range when nothing follows the host.
    static std::string getRedirectionPath(const std::string& locationUrl);
    /// Keeps a key once, with its values joined by commas. False when nothing was added.
    static bool addKeyAndValueIntoMultimap(Multimap& map, const std::string& key, const std::string& value);

    // ---- CallLogRecord.cpp ------------------------------------------------------------------------------------

    /// Text form of one call record. False when the record does not count; the outputs then do not hold.
    static bool getCallLogRecordFromObject(std::string& recordString, std::string& id, std::string& callType,
                                           std::string& number, json_t*& record, std::set<std::string>& missedIds,
                                           bool& deleted, const std::string& lineNumber,
                                           std::string& telephonySessionId, bool isBcaLine);

    // ---- PhonebookRecord.cpp ----------------------------------------------------------------------------------

    static bool getPhonebookRecordFromObject(std::string& stringRecord, int& id, json_t*& object, bool& deleted);

    // ---- ContactMessage.cpp -----------------------------------------------------------------------------------

    /// JSON body and id of a contact given as phonebook XML.
    static bool createContact(const std::string& xmlData, std::string& json, std::string& id);

    // ---- FrameMessages.cpp ------------------------------------------------------------------------------------

    /// Fills the array `*message` with the metadata of a client request and, unless null, the body, which the array
    /// then owns.
    static bool createClientRequestMsg(const std::string& messageId, METHOD method, const std::string& path,
                                       const Multimap& query, const Multimap& headers, json_t* body, json_t** message);
    static void getHeadersFromMetadata(json_t* metadata, Multimap& headers);
    static int getStatusFromMetadata(json_t* metadata);

    // ---- PresenceMessage.cpp ----------------------------------------------------------------------------------

    static bool createUserPresenseMsg(bool dnd, std::string& out);
    /// Sets the status to DND_UNKNOWN first; false when the text is none of the four.
    static bool getDndStatus(const std::string& text, OrvaneServiceTypes::DndStatusType& status);
};
