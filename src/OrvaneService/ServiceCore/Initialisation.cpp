#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "data/LocalMgmtIfc.h"
#include "data/ManageableData.h"
#include "data/PldsTags.h"
#include "framework/Context.h"
#include "network/WebSocketThread.h"
#include "siblings/CertificateMgmtSvcIfc.h"
#include "siblings/CommunicationsServiceIfc.h"
#include "siblings/JournalServiceIfc.h"
#include "siblings/SecurityLogServiceIfc.h"
#include "siblings/TeamServiceIfc.h"
#include "threads/Threader.h"
#include "utilities/HardwareVersion.h"
#include "utilities/Serializer.h"
#include "utilities/Storage.h"

#include <list>

namespace {

constexpr int imagesStorageArea = 3;
constexpr int restartDelayMilliseconds = 1000;
constexpr int callLogEventDelayMilliseconds = 10000;
constexpr int reloadDelayMilliseconds = 1000;

/// The service of that name as what it is needed for, or null, which is logged and tolerated.
template <class Interface>
Interface* findService(Context& context, const char* name) {
    auto* service = dynamic_cast<Interface*>(context.getService(name));
    if (service == nullptr) {
        ORVANE_LOG(ERROR, "init() %s not available", name);
    }
    return service;
}

template <class Call>
void forEachFunctionKeyIndex(Call call) {
    for (const auto& bank : fpkIndexTable) {
        for (const std::string& index : bank) {
            call(index);
        }
    }
}

} // namespace

void OrvaneService::init(Context& context) {
    m_pSvcRTEContext = &context;
    setupDataManagement();

    m_pLocalMgmt = findService<LocalMgmtIfc>(context, "LocalMgmtIfc");
    if (m_pLocalMgmt != nullptr) {
        m_pLocalMgmt->getStoragePath(imagesStorageArea, m_imagesPath);
        std::vector<std::string> functionKeyNames;
        observeConfigurationStore(functionKeyNames);
        readConfigurationStore(functionKeyNames);
    }
    findSiblingServices();
    m_volatileStoragePath = Storage::prependWithVolatileStorageLocation("");
    createPermanentTimers();

    if (isAnyConfigItemEmpty()) {
        m_state = DECONFIGURED_ON_INIT;
    } else {
        m_state = CONFIGURED_ON_INIT;
        m_server_old = m_server;
        m_sync_callLog_old = m_sync_callLog;
        m_sync_phonebook_old = m_sync_phonebook;
    }
    if (!m_pThreader) {
        ORVANE_LOG(DEBUG, "init() - alocate thread for WebsocketThread");
        m_pThreader = std::make_unique<Threader>();
    }
    ORVANE_LOG(DEBUG, "init() m_interface_status[%s] m_state[%s] m_pThreader[%p]", OrvaneLog::text(m_interface_status),
               getStateAsText(m_state).c_str(), static_cast<void*>(m_pThreader.get()));
    WebSocketThread::setThreader(m_pThreader.get());
    asyncLogin();
}

void OrvaneService::observeConfigurationStore(std::vector<std::string>& functionKeyNames) {
    std::list<std::string> tags = {PldsTags::INTERFACE_STATUS, PldsTags::SERVER_TYPE,
                                   PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS};
    forEachFunctionKeyIndex([&](const std::string& index) {
        functionKeyNames.push_back(PldsTags::FUNCTION_KEY_ID + index);
        tags.push_back(functionKeyNames.back());
    });
    if (!m_pLocalMgmt->observeData(tags, this)) {
        ORVANE_LOG(ERROR, "init() error observing data");
    }
}

void OrvaneService::readConfigurationStore(const std::vector<std::string>& functionKeyNames) {
    ManageableData data;
    for (const std::string& tag : {PldsTags::INTERFACE_STATUS, PldsTags::SERVER_TYPE,
                                   PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, PldsTags::MAC_ADDRESS}) {
        data.addRootId(tag, nullptr);
    }
    forEachFunctionKeyIndex([&data](const std::string& index) {
        data.addRootId(PldsTags::FUNCTION_KEY_ID + index, nullptr);
        data.addRootId(PldsTags::FUNCTION_KEY_LABEL + index, nullptr);
        data.addRootId(PldsTags::BLF_DEST + index, nullptr);
    });
    if (!m_pLocalMgmt->readData(data)) {
        return;
    }
    std::string interfaceStatus;
    std::string serverType;
    data.interogate(PldsTags::INTERFACE_STATUS, interfaceStatus);
    data.interogate(PldsTags::SERVER_TYPE, serverType);
    data.interogate(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, m_viewed_missed_call_ids);
    m_interface_status = interfaceStatus == "up";
    m_ov_server_type = serverType == "7";
    Serializer::deserialize(m_viewed_missed_call_ids, m_viewedMissedCallIds);
    ORVANE_LOG(DETAIL, "init() viewedMissedCallIds.size[%d] m_viewed_missed_call_ids.length[%d]",
               static_cast<int>(m_viewedMissedCallIds.size()), static_cast<int>(m_viewed_missed_call_ids.length()));
    readFunctionKeys(data, functionKeyNames);
    buildApiPath(data);
}

void OrvaneService::readFunctionKeys(ManageableData& data, const std::vector<std::string>& functionKeyNames) {
    for (const std::string& name : functionKeyNames) {
        std::string function;
        data.interogate(name, function);
        if (function != FPK_FUNCTION_BLF) {
            continue;
        }
        std::string index = name.substr(PldsTags::FUNCTION_KEY_ID.length());
        FpkPresenceDataType record;
        if (getFpkConfiguration(data, index, record) && !insertFpkPresenceDataIntoMap(record)) {
            ORVANE_LOG(ERROR, "init() fpkPresenceData structure for fpk[%s] was not inserted into map", index.c_str());
        }
    }
    ORVANE_LOG(DEBUG, "init() fpkPresenceData map size[%zu]", getFpkPresenceMapSize());
}

void OrvaneService::buildApiPath(ManageableData& data) {
    m_apiPath = "/" + HardwareVersion::getModelAsString();
    m_bcaAllowed = HardwareVersion::is_KD24() || HardwareVersion::is_KD26() || HardwareVersion::is_KD36_any() ||
                   HardwareVersion::is_KD46_any();
    ORVANE_LOG(DETAIL, "init() BCA feature is allowed[%s]", OrvaneLog::text(m_bcaAllowed));
    std::string macAddress;
    data.interogate(PldsTags::MAC_ADDRESS, macAddress);
    m_apiPath += "/" + macAddress;
    ORVANE_LOG(DETAIL, "init() m_apiPath[%s]", m_apiPath.c_str());
}

void OrvaneService::findSiblingServices() {
    Context& context = *m_pSvcRTEContext;
    m_pCertificateMgmtService = findService<CertificateMgmtSvcIfc>(context, "CertificateMgmtSvcIfc");
    m_pJournalService = findService<JournalServiceIfc>(context, "JournalServiceIfc");
    m_pCommunicationsService = findService<CommunicationsServiceIfc>(context, "CommunicationsServiceIfc");
    if (m_pCommunicationsService != nullptr) {
        ORVANE_LOG(DEBUG, "init() - subscribe CommunicationService");
        m_pCommunicationsService->subscribe(this);
    }
    m_pTeamService = findService<TeamServiceIfc>(context, "TeamServiceIfc");
    if (m_pTeamService != nullptr) {
        ORVANE_LOG(DEBUG, "init() - subscribe %s", "TeamServiceIfc");
        m_pTeamService->subscribe(this);
    }
    m_pSecurityLogService = findService<SecurityLogServiceIfc>(context, "SecurityLogServiceIfc");
}

void OrvaneService::createPermanentTimers() {
    m_restartTimer = m_pSvcRTEContext->createTimer(this, restartDelayMilliseconds);
    m_refreshCallLogEventTimer = m_pSvcRTEContext->createTimer(this, callLogEventDelayMilliseconds);
    m_refreshCallLogTimer = m_pSvcRTEContext->createTimer(this, calculateSyncTimer(m_sync_interval));
    m_reloadAllDataTimer = m_pSvcRTEContext->createTimer(this, reloadDelayMilliseconds);
}
