#pragma once

#include "net/FileDescriptor.h"

namespace cloudsim {

/// Ends a poll() from another thread. A wake-up stays until it is cleared.
class WakeUp {
public:
    /// Throws std::system_error when the system has no more of them.
    WakeUp();

    /// Can be read from while a wake-up is pending.
    int descriptor() const { return m_descriptor.get(); }
    void wake();
    void clear();

private:
    FileDescriptor m_descriptor;
};

} // namespace cloudsim
