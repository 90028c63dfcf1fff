#include "OrvaneServiceStrings.h"

#include <gtest/gtest.h>

using namespace OrvaneServiceStrings;

namespace {

// Written out whole, where the constants are put together: what the provider and other services are sent.
TEST(Strings, AreTheProvidersVocabulary) {
    EXPECT_EQ("application/json", std::string(OV_CONTENT_TYPE));
    EXPECT_EQ(",", std::string(OV_SEPERATOR));
    EXPECT_EQ("/restapi/v1.0/account/~/extension/", std::string(OV_EXTENSION_PATH));
    EXPECT_EQ("/restapi/v1.0/account/~/extension/~", std::string(OV_GET_EXTENSION_PATH));
    EXPECT_EQ("/auth/token", std::string(OV_GET_TOKEN_PATH));
    EXPECT_EQ("/restapi/v1.0/account/~/extension/~/call-log", std::string(OV_GET_CALL_LOG_PATH));
    EXPECT_EQ("/restapi/v1.0/account/~/extension/~/call-log-sync", std::string(OV_GET_CALL_LOG_PATH_SYNC));
    EXPECT_EQ("?syncType=FSync&recordCount=100&view=Simple&showDeleted=false&statusGroup=All",
              std::string(OV_GET_CALL_LOG_FSYNC_OPTIONS));
    EXPECT_EQ("?syncType=ISync&recordCount=100&view=Simple&showDeleted=true&syncToken=",
              std::string(OV_GET_CALL_LOG_ISYNC_OPTIONS));
    EXPECT_EQ("?syncType=FSync&recordCount=25&view=Simple&showDeleted=false&statusGroup=All",
              std::string(OV_GET_BCA_CALL_LOG_FSYNC_OPTIONS));
    EXPECT_EQ("?syncType=ISync&recordCount=25&view=Simple&showDeleted=true&syncToken=",
              std::string(OV_GET_BCA_CALL_LOG_ISYNC_OPTIONS));
    EXPECT_EQ("/restapi/v1.0/account/~/phone-number", std::string(OV_GET_PHONE_NUMBER_PATH));
    EXPECT_EQ("/restapi/v1.0/account/~/extension/~/address-book/contact", std::string(OV_GET_CONTACTS_PATH));
    EXPECT_EQ("/restapi/v1.0/account/~/extension/~/address-book-sync", std::string(OV_GET_CONTACTS_PATH_SYNC));
    EXPECT_EQ("?syncType=FSync&perPage=50", std::string(OV_GET_CONTACTS_FSYNC_OPTIONS));
    EXPECT_EQ("?syncType=ISync&perPage=50&syncToken=", std::string(OV_GET_CONTACTS_ISYNC_OPTIONS));
    EXPECT_EQ(
        "/restapi/v1.0/account/~/extension/~/"
        "message-store?availability=Alive&direction=Inbound&messageType=VoiceMail&readStatus=Unread&page=1&perPage=100",
        std::string(OV_GET_VOICEMAIL_PATH));
    EXPECT_EQ("/restapi/v1.0/account/~/extension/~/grant", std::string(OV_GET_GRANT_PATH));
    EXPECT_EQ("OV_", std::string(OV_DB_PREFIX));
    EXPECT_EQ("presence?detailedTelephonyState=true", std::string(OV_EVENT_PRESENCE));
    EXPECT_EQ("voicemail", std::string(OV_EVENT_VOICEMAIL));
    EXPECT_EQ("message-store?direction=Inbound&type=Voicemail", std::string(OV_EVENT_MESSAGE_STORE));
    EXPECT_EQ("presence/dnd", std::string(OV_EVENT_DND));
    EXPECT_EQ("presence/line/presence/dnd", std::string(OV_EVENT_PRESENCE_LINE));
    EXPECT_EQ("Active", std::string(OV_STATUS_ACTIVE));
    EXPECT_EQ("ownerId", std::string(OV_OWNER_ID));
    EXPECT_EQ("expires_in", std::string(OV_WS_EXPIRES_IN));
    EXPECT_EQ("lastName", std::string(OV_LASTNAME));
    EXPECT_EQ("ws_access_token", std::string(OV_WS_ACCESS_TOKEN));
    EXPECT_EQ("jobTitle", std::string(OV_JOBTITLE));
    EXPECT_EQ("wsc", std::string(OV_WSC));
    EXPECT_EQ("idleTimeout", std::string(OV_IDLE_TIMEOUT));
    EXPECT_EQ("uri", std::string(OV_URI));
    EXPECT_EQ("id", std::string(OV_ID));
    EXPECT_EQ("type", std::string(OV_TYPE));
    EXPECT_EQ("homePhone", std::string(OV_HOME_PHONE));
    EXPECT_EQ("totalPages", std::string(OV_TOTAL_PAGES));
    EXPECT_EQ("headers", std::string(OV_HEADERS));
    EXPECT_EQ("token", std::string(OV_TOKEN));
    EXPECT_EQ("from", std::string(OV_FROM));
    EXPECT_EQ("to", std::string(OV_TO));
    EXPECT_EQ("firstName", std::string(OV_FIRSTNAME));
    EXPECT_EQ("NoCall", std::string(OV_TELEPHONY_STATUS_NO_CALL));
    EXPECT_EQ("extensionId", std::string(OV_EXTENSION_ID));
    EXPECT_EQ("telephonyStatus", std::string(OV_TELEPHONY_STATUS));
    EXPECT_EQ("extension", std::string(OV_EXTENSION));
    EXPECT_EQ("telephonySessionId", std::string(OV_TELEPHONY_SESSION_ID));
    EXPECT_EQ("extensionNumber", std::string(OV_EXTENSION_NUMBER));
    EXPECT_EQ("syncToken", std::string(OV_SYNC_TOKEN));
    EXPECT_EQ("expiresIn", std::string(OV_EXPIRES_IN));
    EXPECT_EQ("syncInfo", std::string(OV_SYNC_INFO));
    EXPECT_EQ("expirationTime", std::string(OV_EXPIRATION_TIME));
    EXPECT_EQ("subscriptionId", std::string(OV_SUBSCRIPTION_ID));
    EXPECT_EQ("eventFilters", std::string(OV_EVENT_FILTERS));
    EXPECT_EQ("status", std::string(OV_STATUS));
    EXPECT_EQ("event", std::string(OV_EVENT));
    EXPECT_EQ("startTime", std::string(OV_STARTTIME));
    EXPECT_EQ("errorCode", std::string(OV_ERROR_CODE));
    EXPECT_EQ("sequence", std::string(OV_SEQUENCE));
    EXPECT_EQ("email", std::string(OV_EMAIL));
    EXPECT_EQ("result", std::string(OV_RESULT));
    EXPECT_EQ("duration", std::string(OV_DURATION));
    EXPECT_EQ("recoveryTimeout", std::string(OV_RECOVERY_TIMEOUT));
    EXPECT_EQ("dndStatus", std::string(OV_DND_STATUS));
    EXPECT_EQ("recoveryState", std::string(OV_RECOVERY_STATE));
    EXPECT_EQ("disabledFilters", std::string(OV_DISABLED_FILTERS));
    EXPECT_EQ("recoveryBufferSize", std::string(OV_RECOVERY_BUFFER_SIZE));
    EXPECT_EQ("direction", std::string(OV_DIRECTION));
    EXPECT_EQ("records", std::string(OV_RECORDS));
    EXPECT_EQ("deleted", std::string(OV_DELETED));
    EXPECT_EQ("readStatus", std::string(OV_READ_STATUS));
    EXPECT_EQ("delegate", std::string(OV_DELEGATE));
    EXPECT_EQ("phoneNumber", std::string(OV_PHONE_NUMBER));
    EXPECT_EQ("creationTime", std::string(OV_CREATION_TIME));
    EXPECT_EQ("page", std::string(OV_PAGE));
    EXPECT_EQ("company", std::string(OV_COMPANY));
    EXPECT_EQ("nextPageId", std::string(OV_NEXT_PAGE_ID));
    EXPECT_EQ("businessPhone2", std::string(OV_BUSINESS_PHONE_2));
    EXPECT_EQ("name", std::string(OV_NAME));
    EXPECT_EQ("businessPhone", std::string(OV_BUSINESS_PHONE));
    EXPECT_EQ("mobilePhone", std::string(OV_MOBILE_PHONE));
    EXPECT_EQ("body", std::string(OV_BODY));
    EXPECT_EQ("messageId", std::string(OV_MESSAGE_ID));
    EXPECT_EQ("availability", std::string(OV_AVAILABILITY));
    EXPECT_EQ("maxConnectionsPerSession", std::string(OV_MAX_CONNECTIONS_PER_SESSION));
    EXPECT_EQ("activeCalls", std::string(OV_ACTIVE_CALL));
}

} // namespace
