#pragma once

#include <string>

/// Reads one managed item from the service that owns it. Called on the thread that asks the data manager.
class ManagedItemGetter {
public:
    virtual ~ManagedItemGetter() = default;

    virtual std::string get(const std::string& name) = 0;
};
