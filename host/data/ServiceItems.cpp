#include "data/ServiceItems.h"

#include "data/MgmtAgentIfc.h"
#include "data/ValidatorIfc.h"

#include <algorithm>
#include <utility>

namespace {

constexpr const char* nobodyTakesIt = "no service takes it";

} // namespace

ServiceItems::Call::Call(ServiceItems& items) : m_items(items) {
    const std::lock_guard<std::mutex> lock(m_items.m_mutex);
    m_isOpen = m_items.m_open;
    if (m_isOpen) {
        m_items.m_callers.push_back(std::this_thread::get_id());
    }
}

ServiceItems::Call::~Call() {
    if (m_isOpen) {
        const std::lock_guard<std::mutex> lock(m_items.m_mutex);
        auto& callers = m_items.m_callers;
        callers.erase(std::find(callers.begin(), callers.end(), std::this_thread::get_id()));
        m_items.m_callEnded.notify_all();
    }
}

void ServiceItems::open(MgmtAgentIfc* agent, ValidatorIfc* validator) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_agent = agent;
    m_validator = validator;
    m_open = agent != nullptr;
}

void ServiceItems::addGetter(const std::string& name, std::unique_ptr<ManagedItemGetter> getter) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_getters[name] = std::move(getter);
}

void ServiceItems::addSetter(const std::string& name, std::unique_ptr<ManagedItemSetter> setter) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_setters[name] = std::move(setter);
}

void ServiceItems::setItems(std::vector<Item> items) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_items = std::move(items);
}

std::vector<std::string> ServiceItems::keys() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> keys;
    keys.reserve(m_items.size());
    for (const Item& item : m_items) {
        keys.push_back(item.key);
    }
    return keys;
}

bool ServiceItems::read(const std::string& key, std::string& value) {
    const Call call(*this);
    ManagedItemGetter* getter = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        getter = getterOf(key);
    }
    if (!call.isOpen() || getter == nullptr) {
        return false;
    }
    value = getter->get(key);
    return true;
}

bool ServiceItems::hasSetter(const std::string& key) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return setterOf(key) != nullptr;
}

bool ServiceItems::deliverItem(const std::string& key, const std::string& value, std::string& error) {
    const Call call(*this);
    ManagedItemSetter* setter = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        setter = setterOf(key);
    }
    if (!call.isOpen() || setter == nullptr) {
        error = nobodyTakesIt;
        return false;
    }
    return setter->set(value, std::string(), error);
}

bool ServiceItems::deliverGroup(const std::string& group, std::string& error) {
    const Call call(*this);
    if (!call.isOpen()) {
        error = nobodyTakesIt;
        return false;
    }
    return m_validator == nullptr || m_validator->validateGroupAndSetData(error, group);
}

bool ServiceItems::resetUserData() {
    const Call call(*this);
    return call.isOpen() && m_agent->resetUserData();
}

void ServiceItems::close() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_open = false;
    m_callEnded.wait(lock, [this] {
        return std::all_of(m_callers.begin(), m_callers.end(),
                           [](std::thread::id caller) { return caller == std::this_thread::get_id(); });
    });
}

void ServiceItems::release() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_getters.clear();
    m_setters.clear();
}

const ServiceItems::Item* ServiceItems::find(const std::string& key) const {
    const auto found =
        std::find_if(m_items.begin(), m_items.end(), [&key](const Item& item) { return item.key == key; });
    return found == m_items.end() ? nullptr : &*found;
}

ManagedItemSetter* ServiceItems::setterOf(const std::string& key) const {
    const Item* item = find(key);
    const auto setter = item == nullptr ? m_setters.end() : m_setters.find(item->setter);
    return setter == m_setters.end() ? nullptr : setter->second.get();
}

ManagedItemGetter* ServiceItems::getterOf(const std::string& key) const {
    const Item* item = find(key);
    const auto getter = item == nullptr ? m_getters.end() : m_getters.find(item->getter);
    return getter == m_getters.end() ? nullptr : getter->second.get();
}
