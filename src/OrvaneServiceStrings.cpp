#include "OrvaneServiceStrings.h"

namespace OrvaneServiceStrings {

const std::string OV_CONTENT_TYPE = "application/json";
const std::string OV_SEPERATOR = ",";
const std::string OV_EXTENSION_PATH = "/restapi/v1.0/account/~/extension/";
const std::string OV_GET_EXTENSION_PATH = OV_EXTENSION_PATH + "~";
const std::string OV_GET_TOKEN_PATH = "/auth/token";
const std::string OV_GET_CALL_LOG_PATH = OV_EXTENSION_PATH + "~/call-log";
const std::string OV_GET_CALL_LOG_PATH_SYNC = OV_EXTENSION_PATH + "~/call-log-sync";
const std::string OV_GET_CALL_LOG_FSYNC_OPTIONS =
    "?syncType=FSync&recordCount=100&view=Simple&showDeleted=false&statusGroup=All";
const std::string OV_GET_CALL_LOG_ISYNC_OPTIONS =
    "?syncType=ISync&recordCount=100&view=Simple&showDeleted=true&syncToken=";
const std::string OV_GET_BCA_CALL_LOG_FSYNC_OPTIONS =
    "?syncType=FSync&recordCount=25&view=Simple&showDeleted=false&statusGroup=All";
const std::string OV_GET_BCA_CALL_LOG_ISYNC_OPTIONS =
    "?syncType=ISync&recordCount=25&view=Simple&showDeleted=true&syncToken=";
const std::string OV_GET_PHONE_NUMBER_PATH = "/restapi/v1.0/account/~/phone-number";
const std::string OV_GET_CONTACTS_PATH = OV_EXTENSION_PATH + "~/address-book/contact";
const std::string OV_GET_CONTACTS_PATH_SYNC = OV_EXTENSION_PATH + "~/address-book-sync";
const std::string OV_GET_CONTACTS_FSYNC_OPTIONS = "?syncType=FSync&perPage=50";
const std::string OV_GET_CONTACTS_ISYNC_OPTIONS = "?syncType=ISync&perPage=50&syncToken=";
const std::string OV_GET_VOICEMAIL_PATH =
    OV_EXTENSION_PATH +
    "~/message-store?availability=Alive&direction=Inbound&messageType=VoiceMail&readStatus=Unread&page=1&perPage=100";
const std::string OV_GET_GRANT_PATH = OV_EXTENSION_PATH + "~/grant";
const std::string OV_DB_PREFIX = "OV_";
const std::string OV_EVENT_PRESENCE = "presence?detailedTelephonyState=true";
const std::string OV_EVENT_VOICEMAIL = "voicemail";
const std::string OV_EVENT_MESSAGE_STORE = "message-store?direction=Inbound&type=Voicemail";
const std::string OV_EVENT_DND = "presence/dnd";
const std::string OV_EVENT_PRESENCE_LINE = "presence/line/presence/dnd";

} // namespace OrvaneServiceStrings
