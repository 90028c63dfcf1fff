#pragma once

#include "data/ItemStore.h"
#include "data/LocalMgmtIfc.h"
#include "framework/Service.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

class ConfigurationTarget;

/// The telephone's local configuration store on a PC. Observers are told on a thread of its own, one at a time, and
/// nothing is held while they are. Every operation may be called from any thread.
class LocalMgmt : public Service, public LocalMgmtIfc {
public:
    explicit LocalMgmt(std::unique_ptr<ItemStore> items);
    ~LocalMgmt() override;

    // ---- For the service ------------------------------------------------------------------------------------------

    bool readData(ManageableData& data) override;
    bool writeData(ManageableData& data) override;
    void getStoragePath(int area, std::string& path) override;
    bool observeData(const std::list<std::string>& keys, MgmtAgentIfc* agent) override;

    // ---- For the telephone around it ------------------------------------------------------------------------------

    using WriteListener = std::function<void(const std::string& key, const std::string& value)>;
    /// Called for every write of a service, before it returns to the service. To be set before services run.
    void setWriteListener(WriteListener listener) { m_writeListener = std::move(listener); }

    std::string get(const std::string& key);
    std::map<std::string, std::string> all();
    /// Writes without telling anybody. False when the store cannot be written.
    bool preset(const std::string& key, const std::string& value);
    /// Writes, and returns when the observers of the item have been told. Not to be called from an observer. False, and
    /// nobody told, when the store cannot be written.
    bool change(const std::string& key, const std::string& value);

    /// One refused item of a configuration.
    struct Refusal {
        std::string key;
        std::string reason;
    };
    /// The items in their order through the setters (items without one are changed), then the group once. A refused
    /// item keeps its old value. The last refusal may be that of the group, with an empty key. One configuration at a
    /// time: another waits for its turn.
    std::vector<Refusal> configure(const std::vector<std::pair<std::string, std::string>>& items,
                                   const std::string& group);
    bool resetUserData();

    /// A service's configuration items. They are used as long as they exist.
    void setConfigurationTarget(const std::weak_ptr<ConfigurationTarget>& target);

    /// Tells nobody any more; returns when nobody is being told.
    void stopNotifications();

    void init(Context&) override {}
    void shutdown() override {}
    void timerEvent(int) override {}
    void run() override {}

private:
    struct Observer {
        std::set<std::string> keys;
        MgmtAgentIfc* agent;
    };
    struct Notification {
        MgmtAgentIfc* agent;
        std::string key;
        std::string value;
        unsigned long number;
    };

    /// With m_mutex held; returns the number of the last notification, 0 without one.
    unsigned long enqueue(const std::string& key, const std::string& value);
    void notify();
    std::shared_ptr<ConfigurationTarget> target();

    std::mutex m_configurationTurn; ///< held by the configuration in progress; readers and writers do not take it
    std::mutex m_mutex;
    std::unique_ptr<ItemStore> m_items;
    std::vector<Observer> m_observers;
    std::weak_ptr<ConfigurationTarget> m_target;
    WriteListener m_writeListener;

    std::condition_variable m_changed;
    std::deque<Notification> m_notifications;
    unsigned long m_lastNumber = 0;
    unsigned long m_deliveredNumber = 0;
    bool m_stopped = false;
    std::thread m_thread;
};
