#pragma once

#include <string>

/// Keys of the telephone's local configuration store, and the two texts of its boolean items. The texts belong to
/// the telephone; a service uses them as opaque keys. A tag marked "indexed" names an item only with an index
/// appended. The text of FUNCTION_KEY_ID ends in "-", so that the index is what stands behind the last "-".
class PldsTags {
public:
    static const std::string VALUE_TRUE;
    static const std::string VALUE_FALSE;

    static const std::string INTERFACE_STATUS; ///< "up" when the telephone has a network
    static const std::string SERVER_TYPE;      ///< "7" when the telephone is set up for the cloud provider
    static const std::string MAC_ADDRESS;

    static const std::string FUNCTION_KEY_ID;    ///< indexed; kind of a function key, "59" for a watched colleague
    static const std::string FUNCTION_KEY_LABEL; ///< indexed
    static const std::string BLF_DEST;           ///< indexed; "blf" and the watched extension's id

    static const std::string LAST_DIALLED_NUMBER;
    static const std::string CALL_DND_ACTIVATED;

    static const std::string ORVANE_API_SERVER_ADDRESS;
    static const std::string ORVANE_API_SYNC_CALL_LOG;
    static const std::string ORVANE_API_SYNC_PHONEBOOK;
    static const std::string ORVANE_API_SYNC_INTERVAL; ///< decimal seconds
    static const std::string ORVANE_API_SYNC_DND;
    static const std::string ORVANE_API_VIEWED_MISSED_CALL_IDS;
};
