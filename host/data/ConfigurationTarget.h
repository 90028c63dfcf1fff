#pragma once

#include <string>

/// A service's side of the configuration, as its data manager offers it to the store. Calls come on the thread that
/// configures, without any lock of the store.
class ConfigurationTarget {
public:
    virtual ~ConfigurationTarget() = default;

    /// Whether the item goes through a setter of this service.
    virtual bool hasSetter(const std::string& key) = 0;
    /// The value through its setter; false, with `error` filled, when it is refused.
    virtual bool deliverItem(const std::string& key, const std::string& value, std::string& error) = 0;
    virtual bool deliverGroup(const std::string& group, std::string& error) = 0;
    virtual bool resetUserData() = 0;
};
