#pragma once

#include "OrvaneServiceTypes.h"

#include <array>
#include <string>

/// One extension that a function key watches.
struct FpkPresenceDataType {
    std::string fpk; ///< the key's index, an entry of fpkIndexTable
    std::string fpkFunction;
    std::string extensionId;
    std::string keyLabel;
    OrvaneServiceTypes::DndStatusType dndStatus = OrvaneServiceTypes::DND_UNKNOWN;
    bool dndActive = false; ///< dndStatus is DND_DO_NOT_ACCEPT_ANY_CALLS
};

/// Indices of the function keys: ten banks of sixteen keys, "100" to "115", "200" to "215" and so on to "1015".
extern const std::array<std::array<std::string, 16>, 10> fpkIndexTable;

/// Value of a key's type item when the key watches a colleague.
extern const std::string FPK_FUNCTION_BLF;
/// What stands before the extension id in the URI of such a key.
extern const std::string BLF_URI_PREFIX;
