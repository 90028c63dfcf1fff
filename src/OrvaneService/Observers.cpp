#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "threads/CriticalSection.h"

#include <algorithm>

namespace {

/// Calls every observer on this thread, under the semaphore. The size is read anew after each call, since an
/// observer may subscribe and unsubscribe from inside it.
template <class Call>
void callObservers(Semaphore& semaphore, const std::vector<OrvaneServiceObserverIfc*>& observers, Call call) {
    CriticalSection section(semaphore);
    for (std::size_t index = 0; index < observers.size(); ++index) {
        call(*observers[index]);
    }
}

} // namespace

void OrvaneService::subscribe(OrvaneServiceObserverIfc* observer) {
    ORVANE_LOG(DEBUG, "subscribe() observer[%p]", static_cast<void*>(observer));
    {
        CriticalSection observers(m_observersSem);
        const bool known = std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end();
        if (known || observer == nullptr) {
            return;
        }
        m_observers.push_back(observer);
    }
    // The new observer is to be given all data: the next synchronisation of each kind is a full one.
    {
        CriticalSection syncToken(m_callLogSyncTokenSem);
        m_callLogSyncToken.clear();
    }
    {
        CriticalSection bcaLines(m_bcaLineListSem);
        for (auto& entry : m_bcaLineList) {
            entry.second.callLogSyncToken.clear();
        }
    }
    {
        CriticalSection syncToken(m_phonebookSyncTokenSem);
        m_phonebookSyncToken.clear();
    }
    ORVANE_LOG(DEBUG, "subscribe() added observer");
}

void OrvaneService::unsubscribe(OrvaneServiceObserverIfc* observer) {
    ORVANE_LOG(DEBUG, "unsubscribe() observer[%p]", static_cast<void*>(observer));
    CriticalSection observers(m_observersSem);
    const auto position = std::find(m_observers.begin(), m_observers.end(), observer);
    if (position != m_observers.end()) {
        m_observers.erase(position);
        ORVANE_LOG(DEBUG, "unsubscribe() removed observer");
    }
}

std::size_t OrvaneService::getNoOfObservers() {
    CriticalSection observers(m_observersSem);
    return m_observers.size();
}

void OrvaneService::fireInformUserEvent(const std::string& message, OrvaneServiceTypes::UserMsgType type) {
    callObservers(m_observersSem, m_observers,
                  [&](OrvaneServiceObserverIfc& observer) { observer.informUserEvent(message, type); });
}

void OrvaneService::fireOrvaneEvent(OrvaneServiceTypes::EventType type) {
    callObservers(m_observersSem, m_observers, [&](OrvaneServiceObserverIfc& observer) { observer.orvaneEvent(type); });
}

void OrvaneService::fireOrvaneFullSyncEvent(Records& records, OrvaneServiceTypes::DataType type) {
    callObservers(m_observersSem, m_observers, [&](OrvaneServiceObserverIfc& observer) {
        ORVANE_LOG(DEBUG, "fireOrvaneFullSyncEvent() data.size[%zu] type[%d] observer[%p]", records.size(),
                   static_cast<int>(type), static_cast<void*>(&observer));
        observer.orvaneFullSync(records, type);
    });
}

void OrvaneService::fireOrvaneIncrementalSyncEvent(Records& records, OrvaneServiceTypes::DataType type) {
    callObservers(m_observersSem, m_observers, [&](OrvaneServiceObserverIfc& observer) {
        ORVANE_LOG(DEBUG, "fireOrvaneIncrementalSyncEvent() data.size[%zu] type[%d] observer[%p]", records.size(),
                   static_cast<int>(type), static_cast<void*>(&observer));
        observer.orvaneIncrementalSync(records, type);
    });
}

void OrvaneService::fireOrvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>& data) {
    callObservers(m_observersSem, m_observers, [&](OrvaneServiceObserverIfc& observer) {
        ORVANE_LOG(DEBUG, "fireOrvaneVoicemail() data.size[%zu] observer[%p]", data.size(),
                   static_cast<void*>(&observer));
        observer.orvaneVoicemail(data);
    });
}

void OrvaneService::prepareDataForObservers(Records& records) {
    for (const auto& entry : m_phonebookMap) {
        records.push_back(entry.second);
    }
}
