#pragma once

#include <string>

/// Types that the service shares with its callers. The numbers are part of the remote interface: they are sent as
/// integers.
namespace OrvaneServiceTypes {

enum EventType : int {
    EVENT_TOKEN_FAILED = 6, ///< the cloud gave no access token; the service tries again by itself
};

enum DataType : int {
    DATA_CALL_LOG = 0,
    DATA_PHONEBOOK = 5,
};

enum UserMsgType : int {
    USER_MSG_NONE = 0, ///< with an empty text: a configuration group was accepted
    USER_MSG_INFO = 1,
    USER_MSG_ERROR = 3,
};

enum DndStatusType : int {
    DND_UNKNOWN = 0,
    DND_TAKE_ALL_CALLS = 1,
    DND_DO_NOT_ACCEPT_ANY_CALLS = 2,
    DND_DO_NOT_ACCEPT_DEPARTMENT_CALLS = 3,
    DND_TAKE_DEPARTMENT_CALLS_ONLY = 4,
};

/// Waiting voicemail of one line.
struct Voicemail {
    std::string number;
    std::string name;
    std::string latestTimestamp;         ///< ISO 8601, empty when the source does not tell
    int unreadVoicemailMessageCount = 0; ///< -1: messages wait, their number is unknown
};

} // namespace OrvaneServiceTypes
