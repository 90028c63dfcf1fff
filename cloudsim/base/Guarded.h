#pragma once

#include <mutex>
#include <utility>

namespace cloudsim {

/// A value that is reached under its own mutex only.
template <class Value>
class Guarded {
public:
    template <class... Arguments>
    explicit Guarded(Arguments&&... arguments) : m_value(std::forward<Arguments>(arguments)...) {}

    template <class Operation>
    decltype(auto) with(Operation&& operation) {
        std::lock_guard lock(m_mutex);
        return std::forward<Operation>(operation)(m_value);
    }

private:
    std::mutex m_mutex;
    Value m_value;
};

} // namespace cloudsim
