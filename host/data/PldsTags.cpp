#include "data/PldsTags.h"

const std::string PldsTags::VALUE_TRUE = "true";
const std::string PldsTags::VALUE_FALSE = "false";
const std::string PldsTags::INTERFACE_STATUS = "interface-status";
const std::string PldsTags::SERVER_TYPE = "server-type";
const std::string PldsTags::MAC_ADDRESS = "mac-address";
const std::string PldsTags::FUNCTION_KEY_ID = "function-key-id-";
const std::string PldsTags::FUNCTION_KEY_LABEL = "function-key-label-";
const std::string PldsTags::BLF_DEST = "blf-dest-";
const std::string PldsTags::LAST_DIALLED_NUMBER = "last-dialled-number";
const std::string PldsTags::CALL_DND_ACTIVATED = "call-dnd-activated";
const std::string PldsTags::ORVANE_API_SERVER_ADDRESS = "orvane-api-server-address";
const std::string PldsTags::ORVANE_API_SYNC_CALL_LOG = "orvane-api-sync-call-log";
const std::string PldsTags::ORVANE_API_SYNC_PHONEBOOK = "orvane-api-sync-phonebook";
const std::string PldsTags::ORVANE_API_SYNC_INTERVAL = "orvane-api-sync-interval";
const std::string PldsTags::ORVANE_API_SYNC_DND = "orvane-api-sync-dnd";
const std::string PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS = "orvane-api-viewed-missed-call-ids";
