#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "data/LocalMgmtIfc.h"
#include "data/ManageableData.h"
#include "data/PldsTags.h"
#include "siblings/TeamServiceIfc.h"
#include "threads/CriticalSection.h"

bool OrvaneService::getFpkConfiguration(ManageableData& data, std::string& fpk, FpkPresenceDataType& out) {
    std::string fpkFunction;
    std::string keyLabel;
    std::string blfMonitoredPhoneUri;
    const auto read = [&data, &fpk](const std::string& tag, std::string& value) {
        return data.interogate(tag + fpk, tag + fpk, value);
    };
    if (!read(PldsTags::FUNCTION_KEY_ID, fpkFunction) || !read(PldsTags::FUNCTION_KEY_LABEL, keyLabel) ||
        !read(PldsTags::BLF_DEST, blfMonitoredPhoneUri)) {
        ORVANE_LOG(ERROR,
                   "getFpkConfiguration() failed for FPK[%s] - fpkFunction[%s], keyLabel[%s], "
                   "blfMonitoredPhoneUri[%s]",
                   fpk.c_str(), fpkFunction.c_str(), keyLabel.c_str(), blfMonitoredPhoneUri.c_str());
        return false;
    }
    ORVANE_LOG(DEBUG, "getFpkConfiguration() [%s%s] = [%s], keyLabel[%s], blfMonitoredPhoneUri[%s]",
               PldsTags::FUNCTION_KEY_ID.c_str(), fpk.c_str(), fpkFunction.c_str(), keyLabel.c_str(),
               blfMonitoredPhoneUri.c_str());
    // What stands before the id is not looked at; a URI without anything behind it gives an empty id.
    const std::string extensionId = blfMonitoredPhoneUri.length() > BLF_URI_PREFIX.length()
                                        ? blfMonitoredPhoneUri.substr(BLF_URI_PREFIX.length())
                                        : std::string();
    ORVANE_LOG(DEBUG, "getFpkConfiguration() - extension id for '%s' is '%s'", blfMonitoredPhoneUri.c_str(),
               extensionId.c_str());
    out.fpk = fpk;
    out.fpkFunction = fpkFunction;
    out.extensionId = extensionId;
    out.keyLabel = keyLabel;
    out.dndStatus = OrvaneServiceTypes::DND_UNKNOWN;
    out.dndActive = false;
    return true;
}

bool OrvaneService::getFpkConfigurationFromPlds(std::string& fpk, FpkPresenceDataType& out) {
    ManageableData data;
    data.addRootId(PldsTags::FUNCTION_KEY_ID + fpk, nullptr);
    data.addRootId(PldsTags::FUNCTION_KEY_LABEL + fpk, nullptr);
    data.addRootId(PldsTags::BLF_DEST + fpk, nullptr);
    if (m_pLocalMgmt == nullptr) {
        ORVANE_LOG(WARNING, "getFpkConfigurationFromPlds() - null pointer to Local Mgmt!");
        return false;
    }
    if (!m_pLocalMgmt->readData(data)) {
        ORVANE_LOG(WARNING, "getFpkConfigurationFromPlds() - getData for FPK[%s] failed!", fpk.c_str());
        return false;
    }
    return getFpkConfiguration(data, fpk, out);
}

std::string OrvaneService::getIndexFromIndexedPldsItem(const std::string& id) {
    const std::size_t dash = id.rfind('-');
    return dash == std::string::npos ? std::string() : id.substr(dash + 1);
}

void OrvaneService::functionKeyChanged(const std::string& id, const std::string& value) {
    // Its answer plays no part: the index is all that stands behind the tag, even if that holds a "-" of its own.
    static_cast<void>(getIndexFromIndexedPldsItem(id));
    ORVANE_LOG(DEBUG, "manageableDataChanged() fpkPresenceData map size[%zu] - begin", getFpkPresenceMapSize());
    std::string index = id.substr(PldsTags::FUNCTION_KEY_ID.length());
    FpkPresenceDataType record;
    if (getFpkConfigurationFromPlds(index, record)) {
        // The record is looked up by the extension that the key names now, whichever key owns it.
        if (doesFpkPresenceDataExist(record.extensionId)) {
            watchedKeyChanged(index, value, record.extensionId);
        } else {
            unwatchedKeyChanged(index, value, record);
        }
    }
    ORVANE_LOG(DEBUG, "manageableDataChanged() fpkPresenceData map size[%zu] - end", getFpkPresenceMapSize());
}

void OrvaneService::watchedKeyChanged(const std::string& index, const std::string& value,
                                      const std::string& extensionId) {
    bool dndActive = false;
    {
        CriticalSection presence(m_fpkPresenceMapSem);
        const auto entry = m_fpkPresenceMap.find(extensionId);
        if (entry == m_fpkPresenceMap.end() || value == FPK_FUNCTION_BLF) {
            return;
        }
        ORVANE_LOG(DEBUG, "manageableDataChanged() - key[%s] is deleted as BLF[%s]", index.c_str(), value.c_str());
        dndActive = entry->second.dndActive;
        m_fpkPresenceMap.erase(entry);
    }
    if (dndActive) {
        // The bare id, and no test of the pointer: unlike setDNDStatusForBLF, on purpose.
        m_pTeamService->showDoNotDisturb(extensionId, false);
    }
    if (isFpkPresenceMapEmpty()) {
        updateSubscriptionOvEvents();
    }
}

void OrvaneService::unwatchedKeyChanged(const std::string& index, const std::string& value,
                                        const FpkPresenceDataType& record) {
    if (value != FPK_FUNCTION_BLF) {
        return;
    }
    ORVANE_LOG(DEBUG, "manageableDataChanged() - key[%s] is configured as BLF[%s]", index.c_str(), value.c_str());
    if (!insertFpkPresenceDataIntoMap(record)) {
        ORVANE_LOG(ERROR, "manageableDataChanged() fpkPresenceData structure for fpk[%s][%s] was not inserted into map",
                   index.c_str(), value.c_str());
        return;
    }
    getServerDndStatus(record.extensionId);
    if (getFpkPresenceMapSize() == 1) {
        updateSubscriptionOvEvents();
    }
}
