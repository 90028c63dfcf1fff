#include "network/HostTelephone.h"

#include "data/ItemStore.h"
#include "data/PldsTags.h"
#include "network/NetworkControl.h"
#include "utilities/DeviceIdentity.h"

#include <stdexcept>

std::size_t TimedObserver::calls() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
}

TimedObserver::Clock::time_point TimedObserver::awaitCalls(std::size_t count) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_changed.wait_for(lock, std::chrono::seconds(20), [this, count] { return m_calls >= count; })) {
        throw std::runtime_error("a call that was awaited did not reach the observer");
    }
    return m_last;
}

void TimedObserver::add(const std::vector<std::string>& data, OrvaneServiceTypes::DataType type) {
    const Clock::time_point now = Clock::now();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (type == OrvaneServiceTypes::DATA_CALL_LOG) {
        m_calls += data.size();
        m_last = now;
        m_changed.notify_all();
    }
}

HostTelephone::HostTelephone(int port, const std::string& authorities) : m_certificates(authorities, "", "") {
    std::string error;
    std::unique_ptr<ItemStore> items = ItemStore::open("", error);
    if (!items) {
        throw std::runtime_error(error);
    }
    DeviceIdentity::setModel("MODEL");
    NetworkControl::instance().setCertificates(&m_certificates);
    NetworkControl::instance().setInterfaceUp(true);
    m_store = std::make_unique<LocalMgmt>(std::move(items));
    m_store->preset(PldsTags::INTERFACE_STATUS, "up");
    m_store->preset(PldsTags::SERVER_TYPE, "7");
    m_store->preset(PldsTags::MAC_ADDRESS, "MAC1");
    m_store->preset(PldsTags::ORVANE_API_SERVER_ADDRESS, "https://127.0.0.1:" + std::to_string(port));
    for (const std::string& item :
         {PldsTags::ORVANE_API_SYNC_CALL_LOG, PldsTags::ORVANE_API_SYNC_PHONEBOOK, PldsTags::ORVANE_API_SYNC_DND}) {
        m_store->preset(item, PldsTags::VALUE_TRUE);
    }
    m_team.lampChanged = [](const std::string&, bool) {};
    m_journal.cleanedUp = [] {};
    m_securityLog.recordAdded = [](bool, const std::string&) {};
    m_context.addService("LocalMgmtIfc", m_store.get());
    m_context.addService("CertificateMgmtSvcIfc", &m_certificates);
    m_context.addService("JournalServiceIfc", &m_journal);
    m_context.addService("CommunicationsServiceIfc", &m_communications);
    m_context.addService("TeamServiceIfc", &m_team);
    m_context.addService("SecurityLogServiceIfc", &m_securityLog);
    m_service.reset(dynamic_cast<OrvaneService*>(createOrvaneService()));
    m_service->subscribe(&m_observer);
}

HostTelephone::~HostTelephone() {
    m_store->stopNotifications();
    m_context.stopDelivery();
    m_service.reset();
}
