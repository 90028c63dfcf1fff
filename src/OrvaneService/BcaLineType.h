#pragma once

#include "OrvaneServiceTypes.h"

#include <cstdint>
#include <map>
#include <string>

enum BcaLineStatus : std::int32_t {
    BCA_LINE_STATUS_DISCOVERED = 1, ///< granted by the cloud, no overview key known
    BCA_LINE_STATUS_READY = 2,      ///< matched with an overview key: has a number, its data are followed
};

/// One shared line. Copied by value: work on a line is done on a copy that is written back whole.
struct BcaLineType {
    std::string extensionId; ///< also the key of OrvaneService::m_bcaLineList
    std::string phoneNumber; ///< empty until matched
    std::string name;
    std::int32_t status = BCA_LINE_STATUS_DISCOVERED;
    std::string callLogSyncToken; ///< empty: the next synchronisation is a full one
    bool fullSyncPending = false;
    std::map<std::string, std::string> m_bcaLinesCcallLogMap; ///< record id to record text
    OrvaneServiceTypes::Voicemail voicemail;
};
