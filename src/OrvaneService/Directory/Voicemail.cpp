#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "data/LocalMgmtIfc.h"
#include "data/ManageableData.h"
#include "framework/Context.h"
#include "threads/CriticalSection.h"
#include "utilities/HardwareVersion.h"

using OrvaneServiceTypes::Voicemail;

namespace {

void logSummary(const Voicemail& voicemail) {
    ORVANE_LOG(DEBUG,
               "publishVoicemailData() - name[%s], number[%s], latestTimestamp[%s], "
               "unreadVoicemailMessageCount[%d]",
               voicemail.name.c_str(), voicemail.number.c_str(), voicemail.latestTimestamp.c_str(),
               voicemail.unreadVoicemailMessageCount);
}

} // namespace

bool OrvaneService::sipVoicemailStatusProcessed(const std::string& lineURI, const std::string& lineName,
                                                bool mwiIndicated) {
    if (!isRunning()) {
        ORVANE_LOG(DEBUG, "sipVoicemailStatusProcessed - service is not running - state: %d",
                   static_cast<int>(m_state));
        return false;
    }
    if (HardwareVersion::is_KL()) {
        ORVANE_LOG(DEBUG, "sipVoicemailStatusProcessed - not processed for KL phones");
        return false;
    }
    ORVANE_LOG(DETAIL, "sipVoicemailStatusProcessed - lineURI(%s), lineName(%s), mwiIndicated(%d)", lineURI.c_str(),
               lineName.c_str(), static_cast<int>(mwiIndicated));
    // The indication tells only whether messages wait: -1 is an unknown number of them.
    const int count = mwiIndicated ? -1 : 0;
    {
        CriticalSection bcaLines(m_bcaLineListSem);
        BcaLineType* line = nullptr;
        for (auto& entry : m_bcaLineList) {
            if (entry.second.phoneNumber == lineURI) {
                line = &entry.second;
                break;
            }
        }
        if (line != nullptr) {
            ORVANE_LOG(DEBUG, "sipVoicemailStatusProcessed - stored for BCA(%s)/name(%s)", lineURI.c_str(),
                       line->name.c_str());
            line->voicemail.number = line->phoneNumber;
            line->voicemail.name = lineName;
            line->voicemail.unreadVoicemailMessageCount = count;
        } else {
            ORVANE_LOG(DEBUG, "voicemailStatusProcessedByOVSvc - stored for the primary line");
            m_voicemailSummary.number = lineURI;
            m_voicemailSummary.name = lineName;
            m_voicemailSummary.unreadVoicemailMessageCount = count;
        }
    }
    publishVoicemailData();
    return true;
}

void OrvaneService::publishVoicemailData() {
    std::map<std::string, Voicemail> lines;
    int total = 0;
    bool unknown = false;
    const auto count = [&total, &unknown](const Voicemail& voicemail) {
        if (voicemail.unreadVoicemailMessageCount > 0) {
            total += voicemail.unreadVoicemailMessageCount;
        } else {
            unknown = true;
        }
    };
    // The summary of the user's own line is read without a lock.
    if (m_voicemailSummary.unreadVoicemailMessageCount != 0) {
        count(m_voicemailSummary);
        lines["~"] = m_voicemailSummary;
        logSummary(m_voicemailSummary);
    }
    {
        CriticalSection bcaLines(m_bcaLineListSem);
        for (const auto& [extensionId, line] : m_bcaLineList) {
            if (line.status != BCA_LINE_STATUS_READY || line.voicemail.unreadVoicemailMessageCount == 0) {
                continue;
            }
            count(line.voicemail);
            Voicemail& summary = lines[line.extensionId];
            summary = line.voicemail;
            summary.number = line.phoneNumber;
            summary.name = line.name;
            logSummary(summary);
        }
    }
    m_voicemailCount = unknown ? -1 : total;
    ORVANE_LOG(DEBUG,
               "publishVoicemailData() - total amount of voicemails[%d], number of phone lines with "
               "voicemails[%zu]",
               m_voicemailCount, lines.size());
    if (m_pLocalMgmt != nullptr) {
        ORVANE_LOG(DEBUG, "publishVoicemailData() - total amount of voicemails[%d]", m_voicemailCount);
        ManageableData data;
        data.populate("missed-logg-count", "missed-logg-count", std::to_string(m_voicemailCount));
        m_pLocalMgmt->writeData(data);
    }
    fireOrvaneVoicemail(lines);
}

void OrvaneService::getVoicemails(bool) {
    ORVANE_LOG(STATUS, "getVoicemails() - API disabled");
    publishVoicemailData();
}

void OrvaneService::refreshVoicemailEntries() {
    const bool recordsAwaited = m_pSvcRTEContext->isTimerRunning(m_refreshCallLogEventTimer);
    ORVANE_LOG(DEBUG, "refreshVoicemailEntries() m_interface_status[%s]  m_refreshCallLogEventTimer[%s]",
               OrvaneLog::text(m_interface_status), OrvaneLog::text(recordsAwaited));
    if (recordsAwaited || !m_interface_status || m_refreshVoicemailThread.running || m_callLogSyncActive) {
        return;
    }
    m_refreshVoicemailThread.running = true;
    if (!m_refreshVoicemailThread.spawn<asyncRefreshVoicemailRunner>(this)) {
        ORVANE_LOG(ERROR, "refreshVoicemailEntries() failed to create thread!");
        m_refreshVoicemailThread.ended();
        return;
    }
    m_refreshVoicemailThread.detach();
}

void* OrvaneService::asyncRefreshVoicemailRunner(OrvaneService* service) {
    ORVANE_LOG(STATUS, "asyncRefreshVoicemailRunner()");
    if (service != nullptr) {
        service->refreshVoicemailEntriesThread();
    }
    return nullptr;
}

void OrvaneService::refreshVoicemailEntriesThread() {
    getVoicemails(true);
    m_refreshVoicemailThread.ended();
}

bool OrvaneService::voicemailViaAPIEnabled() const {
    return false;
}

bool OrvaneService::getVoicemail() {
    return voicemailViaAPIEnabled();
}

bool OrvaneService::getBcaVoicemail(BcaLineType&) {
    return voicemailViaAPIEnabled();
}

bool OrvaneService::getBcaVoicemail(const std::string& extensionId) {
    if (extensionId.empty()) {
        ORVANE_LOG(WARNING, "getBcaVoicemail() - empty extensionID");
        return false;
    }
    BcaLineType line;
    if (!getCopyOfBcaLineFromList(extensionId, line)) {
        ORVANE_LOG(ERROR, "getBcaVoicemail() - BCA Line (%s) not found", extensionId.c_str());
        return false;
    }
    const bool downloaded = getBcaVoicemail(line);
    if (!replaceBcaLineInList(line)) {
        ORVANE_LOG(ERROR, "getBcaVoicemail() - BCA Line (%s) disappeared meanwhile", extensionId.c_str());
        return false;
    }
    return downloaded;
}
