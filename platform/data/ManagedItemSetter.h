#pragma once

#include <string>

/// Writes one managed item to the service that owns it. Called on the thread that delivers the configuration,
/// without any lock of the data manager or the store.
class ManagedItemSetter {
public:
    virtual ~ManagedItemSetter() = default;

    /// False when the value is refused; `error` then tells why.
    virtual bool set(const std::string& value, const std::string& other, std::string& error) = 0;
};
