#pragma once

#include <string>

/// The cloud's vocabulary: paths, queries, event filters, JSON keys and values.
namespace OrvaneServiceStrings {

extern const std::string OV_CONTENT_TYPE;
extern const std::string OV_SEPERATOR;
extern const std::string OV_EXTENSION_PATH;
extern const std::string OV_GET_EXTENSION_PATH;
extern const std::string OV_GET_TOKEN_PATH;
extern const std::string OV_GET_CALL_LOG_PATH;
extern const std::string OV_GET_CALL_LOG_PATH_SYNC;
extern const std::string OV_GET_CALL_LOG_FSYNC_OPTIONS;
extern const std::string OV_GET_CALL_LOG_ISYNC_OPTIONS;
extern const std::string OV_GET_BCA_CALL_LOG_FSYNC_OPTIONS;
extern const std::string OV_GET_BCA_CALL_LOG_ISYNC_OPTIONS;
extern const std::string OV_GET_PHONE_NUMBER_PATH;
extern const std::string OV_GET_CONTACTS_PATH;
extern const std::string OV_GET_CONTACTS_PATH_SYNC;
extern const std::string OV_GET_CONTACTS_FSYNC_OPTIONS;
extern const std::string OV_GET_CONTACTS_ISYNC_OPTIONS;
extern const std::string OV_GET_VOICEMAIL_PATH;
extern const std::string OV_GET_GRANT_PATH;
extern const std::string OV_DB_PREFIX;
extern const std::string OV_EVENT_PRESENCE;
extern const std::string OV_EVENT_VOICEMAIL;
extern const std::string OV_EVENT_MESSAGE_STORE;
extern const std::string OV_EVENT_DND;
extern const std::string OV_EVENT_PRESENCE_LINE;

constexpr const char* OV_STATUS_ACTIVE = "Active";
constexpr const char* OV_OWNER_ID = "ownerId";
constexpr const char* OV_WS_EXPIRES_IN = "expires_in";
constexpr const char* OV_LASTNAME = "lastName";
constexpr const char* OV_WS_ACCESS_TOKEN = "ws_access_token";
constexpr const char* OV_JOBTITLE = "jobTitle";
constexpr const char* OV_WSC = "wsc";
constexpr const char* OV_IDLE_TIMEOUT = "idleTimeout";
constexpr const char* OV_URI = "uri";
constexpr const char* OV_ID = "id";
constexpr const char* OV_TYPE = "type";
constexpr const char* OV_HOME_PHONE = "homePhone";
constexpr const char* OV_TOTAL_PAGES = "totalPages";
constexpr const char* OV_HEADERS = "headers";
constexpr const char* OV_TOKEN = "token";
constexpr const char* OV_FROM = "from";
constexpr const char* OV_TO = "to";
constexpr const char* OV_FIRSTNAME = "firstName";
constexpr const char* OV_TELEPHONY_STATUS_NO_CALL = "NoCall";
constexpr const char* OV_EXTENSION_ID = "extensionId";
constexpr const char* OV_TELEPHONY_STATUS = "telephonyStatus";
constexpr const char* OV_EXTENSION = "extension";
constexpr const char* OV_TELEPHONY_SESSION_ID = "telephonySessionId";
constexpr const char* OV_EXTENSION_NUMBER = "extensionNumber";
constexpr const char* OV_SYNC_TOKEN = "syncToken";
constexpr const char* OV_EXPIRES_IN = "expiresIn";
constexpr const char* OV_SYNC_INFO = "syncInfo";
constexpr const char* OV_EXPIRATION_TIME = "expirationTime";
constexpr const char* OV_SUBSCRIPTION_ID = "subscriptionId";
constexpr const char* OV_EVENT_FILTERS = "eventFilters";
constexpr const char* OV_STATUS = "status";
constexpr const char* OV_EVENT = "event";
constexpr const char* OV_STARTTIME = "startTime";
constexpr const char* OV_ERROR_CODE = "errorCode";
constexpr const char* OV_SEQUENCE = "sequence";
constexpr const char* OV_EMAIL = "email";
constexpr const char* OV_RESULT = "result";
constexpr const char* OV_DURATION = "duration";
constexpr const char* OV_RECOVERY_TIMEOUT = "recoveryTimeout";
constexpr const char* OV_DND_STATUS = "dndStatus";
constexpr const char* OV_RECOVERY_STATE = "recoveryState";
constexpr const char* OV_DISABLED_FILTERS = "disabledFilters";
constexpr const char* OV_RECOVERY_BUFFER_SIZE = "recoveryBufferSize";
constexpr const char* OV_DIRECTION = "direction";
constexpr const char* OV_RECORDS = "records";
constexpr const char* OV_DELETED = "deleted";
constexpr const char* OV_READ_STATUS = "readStatus";
constexpr const char* OV_DELEGATE = "delegate";
constexpr const char* OV_PHONE_NUMBER = "phoneNumber";
constexpr const char* OV_CREATION_TIME = "creationTime";
constexpr const char* OV_PAGE = "page";
constexpr const char* OV_COMPANY = "company";
constexpr const char* OV_NEXT_PAGE_ID = "nextPageId";
constexpr const char* OV_BUSINESS_PHONE_2 = "businessPhone2";
constexpr const char* OV_NAME = "name";
constexpr const char* OV_BUSINESS_PHONE = "businessPhone";
constexpr const char* OV_MOBILE_PHONE = "mobilePhone";
constexpr const char* OV_BODY = "body";
constexpr const char* OV_MESSAGE_ID = "messageId";
constexpr const char* OV_AVAILABILITY = "availability";
constexpr const char* OV_MAX_CONNECTIONS_PER_SESSION = "maxConnectionsPerSession";
constexpr const char* OV_ACTIVE_CALL = "activeCalls";
constexpr const char* OV_ACTION = "action";
constexpr const char* OV_ACCESS_TOKEN = "accessToken";
constexpr const char* OV_ABSOLUTE_TIMEOUT = "absoluteTimeout";

} // namespace OrvaneServiceStrings
