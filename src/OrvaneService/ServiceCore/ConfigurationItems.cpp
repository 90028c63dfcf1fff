#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneService/ServiceCore/StringItemGetter.h"
#include "OrvaneService/ServiceCore/StringItemSetter.h"
#include "data/LocalMgmtIfc.h"
#include "data/ManageableData.h"
#include "data/PldsTags.h"
#include "data/ServiceDataManagerIfc.h"
#include "framework/Context.h"
#include "siblings/SecurityLogServiceIfc.h"
#include "utilities/ClientUtils.h"

#include <ctime>

namespace {

constexpr int lowestSyncIntervalSeconds = 30;
constexpr int highestSyncIntervalSeconds = 3600;

std::string flagText(bool value) {
    return value ? PldsTags::VALUE_TRUE : PldsTags::VALUE_FALSE;
}

} // namespace

void OrvaneService::setupDataManagement() {
    using Getter = StringItemGetter<OrvaneService>;
    using Setter = StringItemSetter<OrvaneService>;

    m_pDataManager->registerAgent(m_pSvcRTEContext, this, "OrvaneMgmtId", this);
    m_pDataManager->setLoading(true);

    // The data manager owns what is added.
    const auto addGetter = [this](const char* name, Getter::Operation operation) {
        m_pDataManager->addGetter(name, std::make_unique<Getter>(this, operation).release());
    };
    addGetter("OrvaneApiServerAddressGetter", &OrvaneService::OrvaneApiServerAddressGetter);
    addGetter("OrvaneApiSyncCallLogGetter", &OrvaneService::OrvaneApiSyncCallLogGetter);
    addGetter("OrvaneApiSyncPhonebookGetter", &OrvaneService::OrvaneApiSyncPhonebookGetter);
    addGetter("OrvaneApiSyncIntervalGetter", &OrvaneService::OrvaneApiSyncIntervalGetter);
    addGetter("OrvaneApiSyncDndGetter", &OrvaneService::OrvaneApiSyncDndGetter);

    const auto addSetter = [this](const char* name, Setter::Operation operation) {
        m_pDataManager->addSetter(name, std::make_unique<Setter>(this, operation).release());
    };
    addSetter("OrvaneApiServerAddressSetter", &OrvaneService::OrvaneApiServerAddressSetter);
    addSetter("OrvaneApiSyncCallLogSetter", &OrvaneService::OrvaneApiSyncCallLogSetter);
    addSetter("OrvaneApiSyncPhonebookSetter", &OrvaneService::OrvaneApiSyncPhonebookSetter);
    addSetter("OrvaneApiSyncIntervalSetter", &OrvaneService::OrvaneApiSyncIntervalSetter);
    addSetter("OrvaneApiSyncDndSetter", &OrvaneService::OrvaneApiSyncDndSetter);

    m_pDataManager->loadItemMap("OrvaneItemMap");
    m_pDataManager->setLoading(false);
    m_pDataManager->finishSetup();
}

std::string OrvaneService::OrvaneApiServerAddressGetter() {
    return m_server;
}

bool OrvaneService::OrvaneApiServerAddressSetter(const std::string& value, std::string&) {
    ORVANE_LOG(DEBUG, "OrvaneApiServerAddressSetter() m_server[%s] m_server_old[%s] newVal[%s]", m_server.c_str(),
               m_server_old.c_str(), value.c_str());
    addSecurityLogEntry("Orvane Service: Server address change: old[" + m_server + "], new[" + value + "]", true);
    m_server_old = m_server;
    m_server = value;
    return true;
}

std::string OrvaneService::OrvaneApiSyncCallLogGetter() {
    return flagText(m_sync_callLog);
}

bool OrvaneService::OrvaneApiSyncCallLogSetter(const std::string& value, std::string&) {
    ORVANE_LOG(DEBUG, "OrvaneApiSyncCallLogSetter() m_sync_callLog[%s] newVal[%s]", OrvaneLog::text(m_sync_callLog),
               value.c_str());
    m_sync_callLog_old = m_sync_callLog;
    m_sync_callLog = value == PldsTags::VALUE_TRUE;
    return true;
}

std::string OrvaneService::OrvaneApiSyncPhonebookGetter() {
    return flagText(m_sync_phonebook);
}

bool OrvaneService::OrvaneApiSyncPhonebookSetter(const std::string& value, std::string&) {
    ORVANE_LOG(DEBUG, "OrvaneApiSyncPhonebookSetter() m_sync_phonebook[%s] newVal[%s]",
               OrvaneLog::text(m_sync_phonebook), value.c_str());
    m_sync_phonebook_old = m_sync_phonebook;
    m_sync_phonebook = value == PldsTags::VALUE_TRUE;
    return true;
}

std::string OrvaneService::OrvaneApiSyncIntervalGetter() {
    return std::to_string(m_sync_interval);
}

bool OrvaneService::OrvaneApiSyncIntervalSetter(const std::string& value, std::string& error) {
    ORVANE_LOG(DEBUG, "OrvaneApiSyncIntervalSetter() m_sync_interval[%d] newVal[%s]", m_sync_interval, value.c_str());
    const int interval = ClientUtils::stoi(value);
    if (interval < lowestSyncIntervalSeconds || interval > highestSyncIntervalSeconds) {
        error = "out of range (30-3600)";
        return false;
    }
    m_sync_interval_old = m_sync_interval;
    m_sync_interval = interval;
    if (m_sync_interval != m_sync_interval_old && m_pSvcRTEContext->isTimerRunning(m_refreshCallLogTimer)) {
        timerEvent(m_refreshCallLogTimer);
    }
    return true;
}

std::vector<std::pair<std::string, std::string>> OrvaneService::getListValidData(const std::string&) {
    return {
        {PldsTags::ORVANE_API_SERVER_ADDRESS, m_server},
        {PldsTags::ORVANE_API_SYNC_CALL_LOG, OrvaneLog::text(m_sync_callLog)},
        {PldsTags::ORVANE_API_SYNC_PHONEBOOK, OrvaneLog::text(m_sync_phonebook)},
        {PldsTags::ORVANE_API_SYNC_INTERVAL, std::to_string(m_sync_interval)},
        {PldsTags::ORVANE_API_SYNC_DND, OrvaneLog::text(m_sync_dnd)},
    };
}

bool OrvaneService::isAnyConfigItemEmpty() {
    const bool empty = m_server.empty();
    ORVANE_LOG(DEBUG, "isAnyConfigItemEmpty() [%s]", OrvaneLog::text(empty));
    return empty;
}

bool OrvaneService::hasCallLogConfigChanged() {
    // An empty old server is the first ever value, not a change.
    const bool serverChanged = !m_server_old.empty() && m_server_old != m_server;
    const bool changed = serverChanged || m_sync_callLog_old != m_sync_callLog;
    ORVANE_LOG(DEBUG, "hasCallLogConfigChanged() [%s]", OrvaneLog::text(changed));
    return changed;
}

bool OrvaneService::hasPhonebookConfigChanged() {
    const bool serverChanged = !m_server_old.empty() && m_server_old != m_server;
    const bool changed = serverChanged || m_sync_phonebook_old != m_sync_phonebook;
    ORVANE_LOG(DEBUG, "hasPhonebookConfigChanged() [%s]", OrvaneLog::text(changed));
    return changed;
}

void OrvaneService::addSecurityLogEntry(std::string text, bool success) {
    if (m_pSecurityLogService == nullptr) {
        ORVANE_LOG(WARNING, "addSecurityLogEntry(): Cannot find SecurityLogService");
        return;
    }
    m_pSecurityLogService->addRecord(std::time(nullptr), 4, 1, 5, 3, success ? 0 : 1, text, std::string(),
                                     std::string());
}

bool OrvaneService::getPLDSValue(const std::string& key, std::string& out) {
    if (m_pLocalMgmt == nullptr) {
        return false;
    }
    ManageableData data;
    data.setRootId(key, nullptr);
    const bool answered = m_pLocalMgmt->readData(data);
    if (answered) {
        data.interogate(key, out);
    }
    return answered;
}

bool OrvaneService::setPLDSValue(const std::string& key, const std::string& value) {
    bool accepted = false;
    if (m_pLocalMgmt != nullptr) {
        ManageableData data;
        data.populate(key, key, value);
        accepted = m_pLocalMgmt->writeData(data);
    }
    ORVANE_LOG(STATUS, "setPLDSValue() key[%s] retVal[%s]", key.c_str(), OrvaneLog::text(accepted));
    return accepted;
}
