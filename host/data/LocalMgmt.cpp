#include "data/LocalMgmt.h"

#include "data/ConfigurationTarget.h"
#include "data/ItemNames.h"
#include "data/ManageableData.h"
#include "data/MgmtAgentIfc.h"
#include "logging/ExceptionBoundary.h"
#include "logging/HostLog.h"

#include <pthread.h>

LocalMgmt::LocalMgmt(std::unique_ptr<ItemStore> items) : m_items(std::move(items)), m_thread([this] { notify(); }) {}

LocalMgmt::~LocalMgmt() {
    stopNotifications();
}

bool LocalMgmt::readData(ManageableData& data) {
    std::vector<std::string> keys;
    data.getRootIds(keys);
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const std::string& key : keys) {
        if (ItemNames::isKnownKey(key)) {
            data.populate(key, key, m_items->get(key).value_or(std::string()));
        }
    }
    return true;
}

bool LocalMgmt::writeData(ManageableData& data) {
    std::vector<std::string> keys;
    data.getRootIds(keys);
    bool written = true;
    for (const std::string& key : keys) {
        std::string value;
        if (!ItemNames::isKnownKey(key) || !data.interogate(key, value)) {
            written = false;
            continue;
        }
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!m_items->put(key, value)) {
                written = false;
                continue;
            }
            enqueue(key, value);
        }
        if (m_writeListener) {
            m_writeListener(key, value);
        }
    }
    return written;
}

void LocalMgmt::getStoragePath(int area, std::string& path) {
    path = "/data/" + std::to_string(area) + "/";
}

bool LocalMgmt::observeData(const std::list<std::string>& keys, MgmtAgentIfc* agent) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_observers.push_back({std::set<std::string>(keys.begin(), keys.end()), agent});
    return true;
}

std::string LocalMgmt::get(const std::string& key) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_items->get(key).value_or(std::string());
}

std::map<std::string, std::string> LocalMgmt::all() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_items->all();
}

bool LocalMgmt::preset(const std::string& key, const std::string& value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_items->put(key, value);
}

bool LocalMgmt::change(const std::string& key, const std::string& value) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_items->put(key, value)) {
        return false;
    }
    const unsigned long number = enqueue(key, value);
    m_changed.wait(lock, [this, number] { return m_deliveredNumber >= number || m_stopped; });
    return true;
}

std::vector<LocalMgmt::Refusal> LocalMgmt::configure(const std::vector<std::pair<std::string, std::string>>& items,
                                                     const std::string& group) {
    const std::lock_guard<std::mutex> turn(m_configurationTurn);
    std::vector<Refusal> refusals;
    const std::shared_ptr<ConfigurationTarget> service = target();
    for (const auto& [key, value] : items) {
        std::string reason;
        const bool goesThroughSetter = service != nullptr && service->hasSetter(key);
        if (goesThroughSetter && !service->deliverItem(key, value, reason)) {
            refusals.push_back({key, reason});
        } else if (!(goesThroughSetter ? preset(key, value) : change(key, value))) {
            refusals.push_back({key, "the store cannot be written"});
        }
    }
    std::string reason;
    if (service != nullptr && !service->deliverGroup(group, reason)) {
        refusals.push_back({std::string(), reason});
    }
    return refusals;
}

bool LocalMgmt::resetUserData() {
    const std::lock_guard<std::mutex> turn(m_configurationTurn);
    const std::shared_ptr<ConfigurationTarget> service = target();
    return service != nullptr && service->resetUserData();
}

void LocalMgmt::setConfigurationTarget(const std::weak_ptr<ConfigurationTarget>& newTarget) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_target = newTarget;
}

std::shared_ptr<ConfigurationTarget> LocalMgmt::target() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_target.lock();
}

void LocalMgmt::stopNotifications() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped = true;
        m_changed.notify_all();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

unsigned long LocalMgmt::enqueue(const std::string& key, const std::string& value) {
    unsigned long number = 0;
    for (const Observer& observer : m_observers) {
        if (observer.keys.count(key) != 0) {
            number = ++m_lastNumber;
            m_notifications.push_back({observer.agent, key, value, number});
        }
    }
    if (number != 0) {
        m_changed.notify_all();
    }
    return number;
}

void LocalMgmt::notify() {
    pthread_setname_np(pthread_self(), "store");
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopped || !m_notifications.empty(); });
        if (m_stopped) {
            return;
        }
        const Notification notification = m_notifications.front();
        m_notifications.pop_front();
        lock.unlock();
        containExceptions(
            [&] {
                ManageableData data;
                data.populate(notification.key, notification.key, notification.value);
                notification.agent->manageableDataChanged(data);
            },
            [&](const char* colon, const char* text) {
                HOST_LOG(HostLog::ERROR, "observer of %s ended by an exception%s%s", notification.key.c_str(), colon,
                         text);
            });
        lock.lock();
        m_deliveredNumber = notification.number;
        m_changed.notify_all();
    }
}
