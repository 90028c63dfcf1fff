#pragma once

#include "data/ConfigurationTarget.h"
#include "data/ManagedItemGetter.h"
#include "data/ManagedItemSetter.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class MgmtAgentIfc;
class ValidatorIfc;

/// The configuration items of one service with its getters and setters. Every operation may be called from any thread;
/// nothing is held while the service is called, so a setter or the validator may wait for threads that come back here.
class ServiceItems : public ConfigurationTarget {
public:
    /// One item with the names of its getter and its setter.
    struct Item {
        std::string key;
        std::string getter;
        std::string setter;
    };

    /// Neither is owned. The items are open from now on.
    void open(MgmtAgentIfc* agent, ValidatorIfc* validator);
    void addGetter(const std::string& name, std::unique_ptr<ManagedItemGetter> getter);
    void addSetter(const std::string& name, std::unique_ptr<ManagedItemSetter> setter);
    void setItems(std::vector<Item> items);
    std::vector<std::string> keys();

    /// False when no getter serves the item.
    bool read(const std::string& key, std::string& value);

    bool hasSetter(const std::string& key) override;
    bool deliverItem(const std::string& key, const std::string& value, std::string& error) override;
    bool deliverGroup(const std::string& group, std::string& error) override;
    bool resetUserData() override;

    /// The service is called no more; returns when no call of another thread is in progress.
    void close();
    /// Frees getters and setters. Behind close().
    void release();

private:
    /// One call of the service in progress, unless the items are closed.
    class Call {
    public:
        explicit Call(ServiceItems& items);
        ~Call();
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        bool isOpen() const { return m_isOpen; }

    private:
        ServiceItems& m_items;
        bool m_isOpen;
    };

    /// With m_mutex held.
    const Item* find(const std::string& key) const;
    ManagedItemSetter* setterOf(const std::string& key) const;
    ManagedItemGetter* getterOf(const std::string& key) const;

    std::mutex m_mutex;
    std::condition_variable m_callEnded;
    bool m_open = false;
    std::vector<std::thread::id> m_callers;
    MgmtAgentIfc* m_agent = nullptr;
    ValidatorIfc* m_validator = nullptr;
    std::vector<Item> m_items;
    std::map<std::string, std::unique_ptr<ManagedItemGetter>> m_getters;
    std::map<std::string, std::unique_ptr<ManagedItemSetter>> m_setters;
};
