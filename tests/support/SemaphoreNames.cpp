#include "SemaphoreNames.h"

const std::vector<std::string>& SemaphoreNames::ofService() {
    static const std::vector<std::string> names = {
        "m_callLogSem",           "m_connectionSem",         "m_uuidMessagesSem",      "m_subscriptionIdSem",
        "m_telephonySessionsSem", "m_recoverWebSocketSem",   "m_webSocketStateSem",    "m_callLogSyncTokenSem",
        "m_callLogResponseSem",   "m_phonebookSyncTokenSem", "m_phonebookResponseSem", "m_dndSem",
        "m_fpkPresenceMapSem",    "m_observersSem",          "m_bcaLineListSem"};
    return names;
}
